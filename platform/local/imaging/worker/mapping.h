// A file's bytes in memory, for reading.
#pragma once

#include "platform/local/imaging/worker/input.h"

#include <sys/mman.h>

namespace local::imaging {

// A file that somebody shortens meanwhile ends this process at the missing page, which costs the
// request at hand and no more.
class Mapping {
public:
    explicit Mapping(const FileInput& input) : size_(input.size()) {
        if (size_ > 0)
            bytes_ = mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, input.descriptor(), 0);
    }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;
    ~Mapping() {
        if (bytes_ != MAP_FAILED)
            munmap(bytes_, size_);
    }
    void* bytes() const { return bytes_ == MAP_FAILED ? nullptr : bytes_; } // null: not possible
    std::size_t size() const { return size_; }

private:
    void* bytes_ = MAP_FAILED;
    std::size_t size_;
};

} // namespace local::imaging
