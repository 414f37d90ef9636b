// photos-kit-imaging: decodes strangers' files for the embedded photo library, one request after
// another, in a sandbox. Started by the library, never by people. Ends when the host does, because
// then its socket does.
#include "platform/local/imaging/wire/capture_time.h"
#include "platform/local/imaging/wire/packet.h"
#include "platform/local/imaging/worker/colour.h"
#include "platform/local/imaging/worker/orient.h"
#include "platform/local/imaging/worker/photo.h"
#include "platform/local/imaging/worker/request.h"
#include "platform/local/imaging/worker/sandbox.h"
#include "platform/local/imaging/worker/video.h"
#include "platform/local/imaging/worker/vips_picture.h"

#include <array>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <new>
#include <string_view>

#include <fcntl.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>

#ifdef __SANITIZE_THREAD__
// GLib and libvips were not built with the sanitizer, which takes their locks for missing.
extern "C" const char* __tsan_default_options() {
    return "ignore_noninstrumented_modules=1";
}
#endif

namespace local::imaging {

namespace {

UniqueFd g_memoryUse; // /proc/self/statm, opened while files could be

std::uint32_t residentKiB() {
    std::array<char, 64> text{};
    if (pread(g_memoryUse.get(), text.data(), text.size() - 1, 0) <= 0)
        return 0;
    const char* resident = std::strchr(text.data(), ' ');
    return resident ? static_cast<std::uint32_t>(std::strtoul(resident, nullptr, 10) * 4) : 0;
}

void describe(const Info& info, Answer& answer) {
    answer.width = info.displayed.width;
    answer.height = info.displayed.height;
    answer.format = info.format;
    answer.durationSeconds = info.durationSeconds;
    const auto flag = [&answer](bool set, AnswerFlag which) { answer.flags |= set ? which : 0U; };
    flag(info.animated, kAnimated);
    flag(info.raw, kRaw);
    flag(info.screenshot, kScreenshot);
    flag(info.selfie, kSelfie);
    flag(info.captured.has_value(), kHasCaptureTime);
    if (!info.captured)
        return;
    const CaptureTime& time = *info.captured;
    flag(time.offsetMinutes.has_value(), kHasOffset);
    answer.year = time.year;
    answer.month = time.month;
    answer.day = time.day;
    answer.hour = time.hour;
    answer.minute = time.minute;
    answer.second = time.second;
    answer.millisecond = time.millisecond;
    answer.offsetMinutes = time.offsetMinutes.value_or(0);
}

// Room for a picture of this size, from the host.
UniqueFd askForRoom(Size size) {
    const PictureSize words{kPictureMark, size.width, size.height};
    std::uint32_t mark = 0;
    UniqueFd room;
    if (!sendPacket(kWorkerSocket, &words, sizeof words, -1) ||
        receivePacket(kWorkerSocket, &mark, sizeof mark, room) != sizeof mark ||
        mark != kRoomMark || !room)
        std::_Exit(0); // nobody is left to answer
    return room;
}

void handOver(const Picture& picture, Answer& answer) {
    const Size size = oriented(picture.size, picture.orientation);
    answer.width = size.width;
    answer.height = size.height;
    answer.sourceWidth = picture.source.width;
    answer.sourceHeight = picture.source.height;
    const UniqueFd room = askForRoom(size);
    void* const mapped =
        mmap(nullptr, picture.rgb.size(), PROT_READ | PROT_WRITE, MAP_SHARED, room.get(), 0);
    if (mapped == MAP_FAILED)
        throw std::bad_alloc();
    writeUpright(picture, static_cast<std::uint8_t*>(mapped));
    munmap(mapped, picture.rgb.size());
}

// The header alone is not enough for a picture that is to stand for another. At full size nothing
// of the file is left out.
Info inspectWholeJpeg(const FileInput& input) {
    Info info = inspectPhoto(input);
    if (info.format == FileFormat::jpeg)
        photoPicture(input, {-1, -1, true});
    return info;
}

void carryOut(const Request& request, const FileInput& input, Answer& answer) {
    const Target target{request.targetWidth, request.targetHeight,
                        (request.flags & kCoveredOnly) != 0};
    switch (request.task) {
    case Task::inspectPhoto:
        describe(inspectPhoto(input), answer);
        break;
    case Task::inspectVideo:
        describe(inspectVideo(input), answer);
        break;
    case Task::inspectWholeJpeg:
        describe(inspectWholeJpeg(input), answer);
        break;
    case Task::photoPicture:
        handOver(photoPicture(input, target), answer);
        break;
    case Task::videoPicture:
        handOver(videoPicture(input, target), answer);
        break;
    }
}

void serve(const Request& request, UniqueFd file) {
    Answer answer{kAnswerMark};
    try {
        carryOut(request, FileInput(file.get()), answer);
    } catch (const Failure& failure) {
        answer.outcome = failure.outcome;
    } catch (const std::bad_alloc&) {
        answer.outcome = Outcome::tooLarge;
    } catch (const std::exception&) {
        answer.outcome = Outcome::damaged;
    }
    file.reset();
    answer.residentKiB = residentKiB();
    if (answer.residentKiB > 128 * 1024) {
        malloc_trim(0);
        answer.residentKiB = residentKiB();
    }
    if (isWornOut())
        answer.residentKiB = UINT32_MAX; // so that the host takes a fresh one
    if (!sendPacket(kWorkerSocket, &answer, sizeof answer, -1))
        std::_Exit(0); // nobody is left to answer
}

// Everything that reads files of the system, done while it still can.
bool prepare() {
    tzset();
    mallopt(M_ARENA_MAX, 2); // each arena takes 64 MiB of the bounded addresses
    // Pages that go back to the system after one picture have to be cleared again for the next;
    // serve() gives back what is too much.
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 128 << 20);
    std::array<std::uint8_t, 3> black{};
    convertAdobeRgbToSrgb(black);
    g_memoryUse = UniqueFd(open("/proc/self/statm", O_RDONLY | O_CLOEXEC));
    // When memory runs out, this process should go, not the application that it serves.
    const UniqueFd score(open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC));
    if (score && write(score.get(), "1000", 4) < 0)
        return false;
    return startVips();
}

int run() {
    if (!enterSandbox() || !sendPacket(kWorkerSocket, &kHelloMark, sizeof kHelloMark, -1))
        return EXIT_FAILURE;
    for (;;) {
        std::array<std::byte, sizeof(Request) + 1> bytes{};
        UniqueFd file;
        const auto size = receivePacket(kWorkerSocket, bytes.data(), bytes.size(), file);
        const auto request =
            size > 0 ? checkRequest(bytes.data(), static_cast<std::size_t>(size)) : std::nullopt;
        if (!request || !file)
            return EXIT_SUCCESS;
        serve(*request, std::move(file));
    }
}

} // namespace

} // namespace local::imaging

int main(int count, char** arguments) {
    using namespace local::imaging;
    const std::string_view option = count > 1 ? arguments[1] : "";
    if (option == "--background")
        setpriority(PRIO_PROCESS, 0, 19);
    if (chdir("/") != 0)
        return EXIT_FAILURE;
    limitResources();
    if (!prepare())
        return EXIT_FAILURE;
    if (option == "--probe-sandbox")
        return probeSandbox() ? EXIT_SUCCESS : EXIT_FAILURE;
    // Destructors of a hundred libraries have nothing to say here.
    std::_Exit(run());
}
