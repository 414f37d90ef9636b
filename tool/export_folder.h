// The folder that assets are exported into. A file appears in it under its name when it is whole
// and known to be right, and never takes the place of another one.
#pragma once

#include "platform/asset.h"
#include "platform/local/system/unique_fd.h"
#include "tool/interruption.h"

#include <atomic>
#include <functional>
#include <string>
#include <unordered_map>

namespace tool {

class ExportFolder {
public:
    // Makes the folder where it is missing. Throws Failure or LibraryError; the photo library's own
    // folder is refused.
    explicit ExportFolder(const std::string& path);

    // Writes the resource's bytes as a file called `name`, or with a number when that is taken, and
    // dates it `created` (milliseconds since 1970). Answers the name. Throws LibraryError (damaged
    // bytes among them) or Stopped, and then leaves nothing. `written` is told the bytes so far, on
    // this thread, now and then. While the file is written it is called .photos-kit-*.part, and
    // only a process that was killed leaves one behind.
    std::string write(const platform::PHAssetResource& resource, const std::string& name,
                      std::int64_t created, const std::function<void(std::int64_t)>& written);

    // To be called once after the last file: from then on their names survive a power failure.
    void sync() const;

private:
    std::string giveName(const std::string& partName, const std::string& name);

    local::UniqueFd folder_;
    std::unordered_map<std::string, unsigned> lastNumbers_; // by name
};

} // namespace tool
