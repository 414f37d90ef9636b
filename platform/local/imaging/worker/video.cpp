#include "platform/local/imaging/worker/video.h"

#include "platform/local/imaging/worker/exif.h"
#include "platform/local/imaging/worker/movie_time.h"
#include "platform/local/imaging/worker/video_file.h"

#include <array>
#include <string>

extern "C" {
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

namespace local::imaging {

namespace {

// The tags that libav reads can hold another file's brand, so the bytes themselves.
FileFormat formatOfFileTypeBox(const FileInput& input) {
    std::array<char, 12> head{};
    const std::string_view text(head.data(), input.readAt(0, head.data(), head.size()));
    if (text.size() < 12 || text.substr(4, 4) != "ftyp")
        return FileFormat::quickTime; // older than brands
    const std::string_view brand = text.substr(8);
    if (brand == "qt  ")
        return FileFormat::quickTime;
    if (brand.substr(0, 3) == "M4V")
        return FileFormat::appleMpeg4;
    if (brand.substr(0, 3) == "3g2")
        return FileFormat::threeGpp2;
    if (brand.substr(0, 3) == "3gp")
        return FileFormat::threeGpp;
    return FileFormat::mpeg4;
}

// libav has one demuxer for both.
FileFormat matroskaOrWebm(const FileInput& input) {
    std::array<char, 64> head{};
    const std::string_view text(head.data(), input.readAt(0, head.data(), head.size()));
    return text.find("webm") != std::string_view::npos ? FileFormat::webm : FileFormat::matroska;
}

FileFormat formatOf(const VideoFile& video, const FileInput& input) {
    const std::string_view demuxer = video.format()->iformat->name;
    if (demuxer.find("mp4") != std::string_view::npos)
        return formatOfFileTypeBox(input);
    if (demuxer.find("matroska") != std::string_view::npos)
        return matroskaOrWebm(input);
    struct Known {
        std::string_view demuxer;
        FileFormat format;
    };
    constexpr std::array kKnown{
        Known{"avi", FileFormat::avi},          Known{"mpegts", FileFormat::mpegTransport},
        Known{"mpeg", FileFormat::mpegProgram}, Known{"asf", FileFormat::windowsMedia},
        Known{"flv", FileFormat::flashVideo},   Known{"ogg", FileFormat::ogg}};
    for (const Known& known : kKnown)
        if (demuxer == known.demuxer)
            return known.format;
    return FileFormat::unknown;
}

// "2024-05-06T07:08:09+0200" or "2024-05-06T07:08:09.123000Z".
std::optional<CaptureTime> isoTime(std::string_view text) {
    if (text.size() < 19)
        return std::nullopt;
    std::string_view rest = text.substr(19);
    std::string_view fraction;
    if (!rest.empty() && rest.front() == '.') {
        fraction = rest.substr(1);
        const auto zone = rest.find_first_of("Z+-");
        rest = zone == std::string_view::npos ? std::string_view() : rest.substr(zone);
    }
    const bool compact = rest.size() == 5;
    const std::string offset =
        compact ? std::string(rest.substr(0, 3)) + ':' + std::string(rest.substr(3))
                : std::string(rest);
    return captureTime(text.substr(0, 19), offset, fraction);
}

// The time on the camera's clock is better than UTC, whose local date may be another.
std::optional<CaptureTime> capturedOf(const VideoFile& video, const FileInput& input) {
    if (auto time = isoTime(video.metadata("com.apple.quicktime.creationdate")))
        return time;
    auto time = isoTime(video.metadata("creation_time"));
    // Devices that do not know the time write the start of the QuickTime or Unix calendar.
    if (!time || time->year <= 1970)
        return std::nullopt;
    if (time->year == 2036 && time->month == 1 && time->day == 1 && saysEndOf1969(input))
        return std::nullopt;
    return time;
}

template <class Object, void (*Free)(Object**)>
struct FreeBy {
    void operator()(Object* object) const { Free(&object); }
};
using Codec = std::unique_ptr<AVCodecContext, FreeBy<AVCodecContext, avcodec_free_context>>;
using Packet = std::unique_ptr<AVPacket, FreeBy<AVPacket, av_packet_free>>;
using Frame = std::unique_ptr<AVFrame, FreeBy<AVFrame, av_frame_free>>;
using Scaler = std::unique_ptr<SwsContext, decltype(&sws_freeContext)>;

Codec openCodec(const VideoFile& video) {
    const AVCodecParameters* parameters = video.stream()->codecpar;
    const AVCodec* decoder = avcodec_find_decoder(parameters->codec_id);
    Codec codec(decoder ? avcodec_alloc_context3(decoder) : nullptr);
    if (!codec || avcodec_parameters_to_context(codec.get(), parameters) < 0)
        throw Failure{Outcome::damaged};
    codec->skip_frame = AVDISCARD_NONKEY;
    codec->thread_count = 1; // threads decode several frames; one is wanted
    codec->max_pixels = 200'000'000;
    if (avcodec_open2(codec.get(), decoder, nullptr) < 0)
        throw Failure{Outcome::damaged};
    return codec;
}

bool decodeKeyFrame(const VideoFile& video, AVCodecContext* codec, AVFrame* frame) {
    constexpr int kMostPackets = 20'000; // then there is no key frame worth waiting for
    const Packet packet(av_packet_alloc());
    for (int i = 0; packet && i < kMostPackets; ++i) {
        const int status = av_read_frame(video.format(), packet.get());
        if (status < 0) {
            avcodec_send_packet(codec, nullptr); // brings out what it holds back
            return avcodec_receive_frame(codec, frame) >= 0;
        }
        const bool ours = packet->stream_index == video.stream()->index;
        // Not every container marks key frames, but where some are marked the others are not.
        if (ours && (packet->flags & AV_PKT_FLAG_KEY)) {
            avcodec_send_packet(codec, packet.get());
            // A decoder that reorders would wait for further frames, of which there are none.
            avcodec_send_packet(codec, nullptr);
            if (avcodec_receive_frame(codec, frame) >= 0)
                return true;
            avcodec_flush_buffers(codec);
        }
        av_packet_unref(packet.get());
    }
    return false;
}

// A tenth into the video, past a fade from black, when it can be got there; else the first.
Frame keyFrame(const VideoFile& video) {
    for (unsigned i = 0; i < video.format()->nb_streams; ++i)
        if (video.format()->streams[i] != video.stream())
            video.format()->streams[i]->discard = AVDISCARD_ALL;
    const Codec codec = openCodec(video);
    Frame frame(av_frame_alloc());
    const std::int64_t duration = video.format()->duration;
    const bool moved =
        duration > 0 && av_seek_frame(video.format(), -1, duration / 10, AVSEEK_FLAG_BACKWARD) >= 0;
    if (frame && decodeKeyFrame(video, codec.get(), frame.get()))
        return frame;
    avcodec_flush_buffers(codec.get());
    if (moved && av_seek_frame(video.format(), -1, 0, AVSEEK_FLAG_BACKWARD) >= 0 &&
        decodeKeyFrame(video, codec.get(), frame.get()))
        return frame;
    throw Failure{Outcome::damaged};
}

int colourMatrix(const AVFrame& frame) {
    switch (frame.colorspace) {
    case AVCOL_SPC_BT709:
        return SWS_CS_ITU709;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
        return SWS_CS_BT2020;
    case AVCOL_SPC_SMPTE240M:
        return SWS_CS_SMPTE240M;
    case AVCOL_SPC_UNSPECIFIED:
        return frame.height >= 720 ? SWS_CS_ITU709 : SWS_CS_ITU601;
    default:
        return SWS_CS_ITU601;
    }
}

// The yuvj formats say "full range" in their name, which swscale no longer wants to hear.
AVPixelFormat withoutRange(AVPixelFormat format, bool& full) {
    switch (format) {
    case AV_PIX_FMT_YUVJ420P:
        full = true;
        return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P:
        full = true;
        return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
        full = true;
        return AV_PIX_FMT_YUV444P;
    default:
        return format;
    }
}

void convert(const AVFrame& frame, Picture& picture) {
    bool full = frame.color_range == AVCOL_RANGE_JPEG;
    const AVPixelFormat format = withoutRange(static_cast<AVPixelFormat>(frame.format), full);
    const auto width = static_cast<int>(picture.size.width);
    const auto height = static_cast<int>(picture.size.height);
    const Scaler scaler(
        sws_getContext(frame.width, frame.height, format, width, height, AV_PIX_FMT_RGB24,
                       SWS_AREA | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr),
        &sws_freeContext);
    if (!scaler)
        throw Failure{Outcome::damaged};
    const int* matrix = sws_getCoefficients(colourMatrix(frame));
    sws_setColorspaceDetails(scaler.get(), matrix, full ? 1 : 0,
                             sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);
    // swscale's vector code may write past the end of a row, of the last one too.
    constexpr std::size_t kSlack = 64;
    picture.rgb.resize(std::size_t{picture.size.width} * picture.size.height * 3 + kSlack);
    std::uint8_t* const rows[] = {picture.rgb.data(), nullptr, nullptr, nullptr};
    const int strides[] = {width * 3, 0, 0, 0};
    if (sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, rows, strides) !=
        height)
        throw Failure{Outcome::damaged};
    picture.rgb.resize(picture.rgb.size() - kSlack);
}

} // namespace

Info inspectVideo(const FileInput& input) {
    const VideoFile video(input);
    Info info;
    info.displayed = video.displayed();
    info.captured = capturedOf(video, input);
    info.format = formatOf(video, input);
    if (video.format()->duration > 0)
        info.durationSeconds = double(video.format()->duration) / AV_TIME_BASE;
    return info;
}

Picture videoPicture(const FileInput& input, const Target& target) {
    const VideoFile video(input);
    const Frame frame = keyFrame(video);
    Picture picture;
    picture.orientation = video.orientation();
    picture.source = video.displayed();
    picture.size = oriented(outputSize(picture.source, target), picture.orientation);
    convert(*frame, picture);
    return picture;
}

} // namespace local::imaging
