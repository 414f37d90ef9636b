#include "platform/local/store/edit_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

namespace local {

EditFolder::EditFolder(const FileStore& store) : store_(store) {
    for (;;) {
        path_ = "incoming/" + uppercaseText(randomUuid()) + std::string(editFolderEnding);
        if (mkdirat(store_.folder(), path_.c_str(), 0700) != 0)
            throw systemError("There is no place for an edit", errno);
        opened_.reset(openat(store_.folder(), path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!opened_ && errno != ENOENT)
            throw systemError("The place for an edit could not be opened", errno);
        // A sweep may have taken it for a dead one's before it is locked.
        const bool locked = opened_ && flock(opened_.get(), LOCK_EX | LOCK_NB) == 0;
        const int error = errno;
        if (opened_ && !locked && error != EWOULDBLOCK) {
            removeEditFolder(store_.folder(), path_);
            throw systemError("The place for an edit could not be locked", error);
        }
        if (locked && isLinked(opened_.get()))
            return;
    }
}

EditFolder::~EditFolder() {
    removeEditFolder(store_.folder(), path_);
}

} // namespace local
