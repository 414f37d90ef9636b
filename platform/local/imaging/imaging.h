// What the embedded library asks of the imaging process, which alone decodes strangers' files.
//
// The process (photos-kit-imaging, found beside the shared library that holds this code) is
// started on demand and kept, a few at most; it gets a file as an open descriptor and nothing
// else. One that crashes or overruns its time costs the request at hand, which then fails, and
// the next request gets a fresh one. Nothing that comes back is trusted: sizes, counts and text
// are checked here before anybody uses them.
//
// All functions may be called from any thread, wait for their answer, and never throw.
#pragma once

#include "platform/local/imaging/wire/media.h"
#include "platform/local/system/unique_fd.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace local {

struct ImagingFailure {
    enum class Cause {
        badFile,     // the file cannot be read as what it should be
        crashed,     // the imaging process died of it or was stopped for overrunning its bounds
        unavailable, // the imaging process could not be started
    };
    Cause cause = Cause::badFile;
    std::string sentence; // for people, ends in a full stop, one line, at most 300 bytes
};

// Reads the header of a file. In two halves so that the caller can do something else (write the
// file through to the disk) while the imaging process reads; `finish` waits for the answer.
// A photo needs a header that its decoder reads, with sizes above zero; a video must open and
// hold a video stream.
class Inspection {
public:
    Inspection(int fd, MediaKind kind); // `fd` is borrowed for the length of this call
    Inspection(const Inspection&) = delete;
    Inspection& operator=(const Inspection&) = delete;
    ~Inspection();

    std::variant<MediaInfo, ImagingFailure> finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

// Where a picture comes from.
struct PictureSource {
    MediaKind kind = MediaKind::photo;
    std::string contentKey; // lower-case hexadecimal hash of the file's bytes: names the derivative
                            // and remembers a file that killed its reader
    std::function<UniqueFd()> open; // opens the file for reading; an empty answer: it cannot
    // The folder "derivatives"; null or empty: there is none.
    std::function<std::shared_ptr<const UniqueFd>()> derivativesFolder;
    // How many bytes its files may take together; nothing: nobody can tell now, so none is made.
    std::function<std::optional<std::uint64_t>()> derivativesRoom;
};

// A picture that covers the target (in pixels) with its aspect ratio kept, upright, enlarged
// when the source is smaller, within a cap on pixels; (-1, -1) is full size; any other size with
// a side not above zero gives nothing. Served from the kept derivative when that is enough;
// otherwise decoded, and a derivative is made later, when no caller is waiting.
std::optional<Pixels> coverPicture(const PictureSource& source, double targetWidth,
                                   double targetHeight);

// Whether the file is a JPEG that decodes from its first byte to its last; what its header tells,
// or why it is not. `fd` is borrowed.
std::variant<MediaInfo, ImagingFailure> checkWholeJpeg(int fd);

// A complete JPEG stream at a quality of 1 to 100; nothing when it cannot be encoded.
std::optional<std::vector<std::uint8_t>> encodeJpeg(const Pixels& pixels, int quality);

} // namespace local

namespace local::imaging {

// Goes over the whole folder: marks it as a cache for backup programs (CACHEDIR.TAG), removes what
// writers left that died, and when the derivatives take more bytes than `room`, as many as it takes
// to free a tenth of it. Answers what the rest takes.
std::uint64_t tidyDerivatives(int folder, std::uint64_t room);

} // namespace local::imaging
