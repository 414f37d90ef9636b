// Where an edit is rendered.
#pragma once

#include "platform/local/store/file_store.h"

namespace local {

// A folder for one edit's rendered picture, "incoming/<uuid>.edit", until the edit is over. Held
// locked (flock), so that a sweep can tell it from a dead one's.
class EditFolder {
public:
    explicit EditFolder(const FileStore& store); // throws when it cannot be made
    ~EditFolder();                               // with all that is in it
    EditFolder(const EditFolder&) = delete;
    EditFolder& operator=(const EditFolder&) = delete;

    int descriptor() const { return opened_.get(); }

private:
    const FileStore& store_;
    std::string path_;
    UniqueFd opened_;
};

} // namespace local
