// Which library a call is about: the one at the user's place, opened once and kept.
#include "platform/local/library/discarded_files.h"
#include "platform/local/library/library.h"
#include "platform/local/library/library_location.h"

#include <cerrno>
#include <mutex>

namespace local {

namespace {

thread_local int callDepth = 0;
thread_local std::shared_ptr<Library> libraryOfCall;

} // namespace

void Library::beginCall() noexcept {
    ++callDepth;
}

void Library::endCall() noexcept {
    if (--callDepth == 0)
        libraryOfCall.reset();
}

std::shared_ptr<Library> Library::open() {
    if (callDepth == 0)
        return openAnew();
    if (!libraryOfCall)
        libraryOfCall = openAnew();
    return libraryOfCall;
}

// SQLite's locks belong to the process that took them, and what it remembers of them is wrong in a
// copy of that process: there its connections may neither be used nor closed, nor may others to the
// same file be opened.
void Library::leaveToForkedFrom(std::shared_ptr<Library>& kept, const std::string& path) {
    if (kept->stillAt(path))
        throw LibraryError(posixErrorDomain, EBUSY,
                           "The photo library is open in the process that this one was forked "
                           "from, so it cannot be used here.");
    new std::shared_ptr<Library>(std::move(kept)); // never destroyed
}

std::shared_ptr<Library> Library::openAnew() {
    const std::optional<std::string> path = libraryPath();
    if (!path)
        throw LibraryError(posixErrorDomain, ENOENT,
                           "There is no photo library, because the home folder is not known "
                           "(HOME is not set).");
    // Never destroyed: worker threads may outlive the end of the process's main function.
    static std::mutex* const mutex = new std::mutex;
    static std::shared_ptr<Library>* const kept = new std::shared_ptr<Library>;
    const std::scoped_lock lock(*mutex);
    if (*kept && (*kept)->process_ != getpid())
        leaveToForkedFrom(*kept, *path);
    if (!*kept || !(*kept)->stillAt(*path)) {
        kept->reset();
        *kept = std::make_shared<Library>(*path);
        if (!(*kept)->readOnly_)
            removeDiscardedFiles(**kept);
    }
    return *kept;
}

} // namespace local
