#include "platform/local/imaging/picture_room.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>

namespace local::imaging {

namespace {

[[noreturn]] void giveUp() {
    throw std::system_error(errno, std::generic_category());
}

} // namespace

PictureRoom::PictureRoom(Size size)
    : size_(size), memory_(memfd_create("picture", MFD_CLOEXEC | MFD_ALLOW_SEALING)) {
    const auto bytes = static_cast<off_t>(size.width) * size.height * 3;
    // Shrinking stays possible: it is how the room is emptied. Seals themselves are sealed, so
    // that nobody can take that away.
    if (!memory_ || ftruncate(memory_.get(), bytes) != 0 ||
        fcntl(memory_.get(), F_ADD_SEALS, F_SEAL_GROW | F_SEAL_SEAL) != 0)
        giveUp();
}

PictureRoom::~PictureRoom() {
    if (ftruncate(memory_.get(), 0) != 0)
        return; // then it ends with its last descriptor
}

// With pread: whatever a worker does to the memory meanwhile cannot hurt us as it could through a
// mapping.
Pixels PictureRoom::read() const {
    Pixels pixels{size_.width, size_.height, {}};
    pixels.rgb.resize(std::size_t{size_.width} * size_.height * 3);
    std::size_t done = 0;
    while (done < pixels.rgb.size()) {
        const ssize_t got = pread(memory_.get(), pixels.rgb.data() + done, pixels.rgb.size() - done,
                                  static_cast<off_t>(done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            giveUp();
        done += static_cast<std::size_t>(got);
    }
    return pixels;
}

} // namespace local::imaging
