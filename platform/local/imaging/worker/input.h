// The bytes of a file or of a part of it. Reading never moves a file offset, because the host and
// other workers may share it.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace local::imaging {

class Input {
public:
    virtual ~Input() = default;
    virtual std::uint64_t size() const = 0;
    // The number of bytes copied, fewer than `length` only at the end (or an unreadable place).
    virtual std::size_t readAt(std::uint64_t offset, void* to, std::size_t length) const = 0;
};

class FileInput final : public Input {
public:
    explicit FileInput(int fd) : fd_(fd) {
        struct stat status = {};
        // The C library's fstat is a look at a path, with an empty one, in some versions; the
        // sandbox lets nobody look at paths.
        if (syscall(SYS_fstat, fd, &status) == 0 && status.st_size > 0)
            size_ = static_cast<std::uint64_t>(status.st_size);
    }
    int descriptor() const { return fd_; }
    std::uint64_t size() const override { return size_; }
    std::size_t readAt(std::uint64_t offset, void* to, std::size_t length) const override {
        std::size_t done = 0;
        while (done < length && offset < size_) {
            const ssize_t got = pread(fd_, static_cast<char*>(to) + done, length - done,
                                      static_cast<off_t>(offset + done));
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0)
                break;
            done += static_cast<std::size_t>(got);
        }
        return done;
    }

private:
    int fd_;
    std::uint64_t size_ = 0;
};

class MemoryInput final : public Input {
public:
    MemoryInput(const void* bytes, std::size_t size) : bytes_(bytes), size_(size) {}
    std::uint64_t size() const override { return size_; }
    std::size_t readAt(std::uint64_t offset, void* to, std::size_t length) const override {
        if (offset >= size_)
            return 0;
        const auto count = std::min<std::size_t>(length, size_ - offset);
        std::memcpy(to, static_cast<const char*>(bytes_) + offset, count);
        return count;
    }

private:
    const void* bytes_;
    std::size_t size_;
};

} // namespace local::imaging
