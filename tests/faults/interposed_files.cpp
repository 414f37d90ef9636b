// The functions of libc that take open files; see interposed_paths.cpp.
#include "tests/faults/interposed.h"

#include <cerrno>
#include <cstdarg>
#include <dirent.h>
#include <dlfcn.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>

namespace faults {

namespace {

// Whether the call is to fail; what is not in the library passes.
bool failsOn(const char* function, int file, unsigned does) {
    const std::string path = raw::pathOf(file);
    return watches(path) && fails(function, path, does);
}

bool isWatched(int file) {
    return watches(raw::pathOf(file));
}

ssize_t writeAt(const char* function, int file, const void* bytes, std::size_t size, off_t offset,
                bool moves) {
    const std::scoped_lock lock(oneAtATime());
    if (isWatched(file)) {
        if (failsOn(function, file, needsSpace | writesBytes | changes))
            return -1;
        size = lengthToWrite(size);
        powerCut().willWrite(file, offset, size);
    }
    return moves ? raw::call(SYS_write, file, bytes, size)
                 : raw::call(SYS_pwrite64, file, bytes, size, offset);
}

int sync(const char* function, long number, int file) {
    const std::scoped_lock lock(oneAtATime());
    if (!isWatched(file))
        return static_cast<int>(raw::call(number, file));
    if (failsOn(function, file, needsSpace | changes)) {
        powerCut().syncFailed(file);
        return -1;
    }
    // The file system below is memory, or is left alone: what counts is noted.
    powerCut().synced(file);
    return 0;
}

int setLength(int file, off_t size) {
    const std::scoped_lock lock(oneAtATime());
    if (isWatched(file)) {
        if (failsOn("ftruncate", file, needsSpace | changes))
            return -1;
        powerCut().willTruncate(file, size);
    }
    return static_cast<int>(raw::call(SYS_ftruncate, file, size));
}

int control(int file, int command, void* argument) {
    const bool locking = command == F_SETLK || command == F_SETLKW;
    // A lock can always be given back.
    const bool unlocking = locking && static_cast<const struct flock*>(argument)->l_type == F_UNLCK;
    if (!unlocking && failsOn("fcntl", file, locking ? locks : reads))
        return -1;
    return static_cast<int>(raw::call(SYS_fcntl, file, command, argument));
}

void* map(void* where, std::size_t length, int protection, int flags, int file, off_t offset) {
    if (file >= 0 && failsOn("mmap", file, reads))
        return MAP_FAILED;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): that is how the system answers
    return reinterpret_cast<void*>(
        raw::call(SYS_mmap, where, length, protection, flags, file, offset));
}

template <class Function>
Function* nextOf(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

} // namespace faults

using namespace faults;

extern "C" {

ssize_t read(int file, void* bytes, std::size_t size) {
    if (failsOn("read", file, reads))
        return -1;
    return raw::call(SYS_read, file, bytes, size);
}
ssize_t pread(int file, void* bytes, std::size_t size, off_t offset) {
    if (failsOn("pread", file, reads))
        return -1;
    return raw::call(SYS_pread64, file, bytes, size, offset);
}
ssize_t pread64(int file, void* bytes, std::size_t size, off64_t offset) {
    return pread(file, bytes, size, offset);
}

ssize_t write(int file, const void* bytes, std::size_t size) {
    return writeAt("write", file, bytes, size, raw::call(SYS_lseek, file, 0, SEEK_CUR), true);
}
ssize_t pwrite(int file, const void* bytes, std::size_t size, off_t offset) {
    return writeAt("pwrite", file, bytes, size, offset, false);
}
ssize_t pwrite64(int file, const void* bytes, std::size_t size, off64_t offset) {
    return writeAt("pwrite", file, bytes, size, offset, false);
}

int fsync(int file) {
    return sync("fsync", SYS_fsync, file);
}
int fdatasync(int file) {
    return sync("fdatasync", SYS_fdatasync, file);
}

int ftruncate(int file, off_t size) noexcept {
    return setLength(file, size);
}
int ftruncate64(int file, off64_t size) noexcept {
    return setLength(file, size);
}

int flock(int file, int command) noexcept {
    if ((command & LOCK_UN) == 0 && failsOn("flock", file, locks))
        return -1;
    return static_cast<int>(raw::call(SYS_flock, file, command));
}

int fcntl(int file, int command, ...) {
    std::va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return control(file, command, argument);
}
int fcntl64(int file, int command, ...) {
    std::va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return control(file, command, argument);
}

int ioctl(int file, unsigned long request, ...) noexcept {
    std::va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request == FICLONE && isWatched(file)) {
        errno = EOPNOTSUPP; // so that a copy goes through write, wherever the sweep is run
        return -1;
    }
    return static_cast<int>(raw::call(SYS_ioctl, file, request, argument));
}

void* mmap(void* where, std::size_t length, int protection, int flags, int file,
           off_t offset) noexcept {
    return map(where, length, protection, flags, file, offset);
}
void* mmap64(void* where, std::size_t length, int protection, int flags, int file,
             off64_t offset) noexcept {
    return map(where, length, protection, flags, file, offset);
}

// A file is closed whatever is reported.
int close(int file) {
    const bool failed = failsOn("close", file, reads);
    const int error = errno;
    const int done = static_cast<int>(raw::call(SYS_close, file));
    if (failed)
        errno = error;
    return failed ? -1 : done;
}

dirent* readdir(DIR* folder) {
    static auto* const next = nextOf<dirent*(DIR*)>("readdir");
    return failsOn("readdir", dirfd(folder), reads) ? nullptr : next(folder);
}
dirent64* readdir64(DIR* folder) {
    static auto* const next = nextOf<dirent64*(DIR*)>("readdir64");
    return failsOn("readdir", dirfd(folder), reads) ? nullptr : next(folder);
}

} // extern "C"
