#include "platform/local/imaging/worker/video_file.h"

#include <cmath>

extern "C" {
#include <libavutil/display.h>
}

namespace local::imaging {

namespace {

// Containers that hold a whole video. None that lists, concatenates or numbers other files.
constexpr const char* kDemuxers = "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm,avi,mpegts,mpeg,asf,flv,"
                                  "ogg";
constexpr int kBufferSize = 64 * 1024;

const std::uint8_t* displayMatrix(const AVStream& stream) {
#if LIBAVFORMAT_VERSION_INT >= AV_VERSION_INT(60, 15, 100)
    const AVCodecParameters& all = *stream.codecpar;
    const AVPacketSideData* found = av_packet_side_data_get(
        all.coded_side_data, all.nb_coded_side_data, AV_PKT_DATA_DISPLAYMATRIX);
    return found ? found->data : nullptr;
#else
    return av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
#endif
}

} // namespace

int VideoFile::read(void* opaque, std::uint8_t* to, int length) {
    auto& reader = *static_cast<Reader*>(opaque);
    const auto got = reader.input->readAt(static_cast<std::uint64_t>(reader.position), to,
                                          static_cast<std::size_t>(length));
    reader.position += static_cast<std::int64_t>(got);
    return got == 0 ? AVERROR_EOF : static_cast<int>(got);
}

std::int64_t VideoFile::seek(void* opaque, std::int64_t offset, int whence) {
    auto& reader = *static_cast<Reader*>(opaque);
    const auto size = static_cast<std::int64_t>(reader.input->size());
    if (whence & AVSEEK_SIZE)
        return size;
    whence &= ~AVSEEK_FORCE;
    const std::int64_t base = whence == SEEK_CUR ? reader.position : whence == SEEK_END ? size : 0;
    if (offset > INT64_MAX - base || base + offset < 0)
        return AVERROR(EINVAL);
    return reader.position = base + offset;
}

int VideoFile::refuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EACCES);
}

VideoFile::VideoFile(const FileInput& input) : reader_{&input, 0} {
    av_log_set_level(AV_LOG_QUIET);
    auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
    io_.reset(avio_alloc_context(buffer, kBufferSize, 0, &reader_, read, nullptr, seek));
    AVFormatContext* context = avformat_alloc_context();
    if (!buffer || !io_ || !context)
        throw std::bad_alloc();
    context->pb = io_.get();
    context->io_open = refuseToOpen;
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    context->format_whitelist = av_strdup(kDemuxers);
    context->protocol_whitelist = av_strdup("");
    context->max_streams = 64;
    // Frees the context when it fails.
    if (avformat_open_input(&context, "", nullptr, nullptr) < 0)
        throw Failure{Outcome::notAVideo};
    format_.reset(context);
    const int best = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (best >= 0)
        stream_ = context->streams[best];
    // Most headers tell all; decoding some of the video to learn more costs many times as much.
    const bool complete = stream_ && stream_->codecpar->width > 0 && stream_->codecpar->height > 0;
    if (!complete) {
        context->max_analyze_duration = AV_TIME_BASE;
        if (avformat_find_stream_info(context, nullptr) < 0)
            throw Failure{Outcome::notAVideo};
        const int found = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        stream_ = found >= 0 ? context->streams[found] : nullptr;
    }
    // A song's cover is no video.
    if (!stream_ || (stream_->disposition & AV_DISPOSITION_ATTACHED_PIC) ||
        stream_->codecpar->width <= 0 || stream_->codecpar->height <= 0)
        throw Failure{Outcome::noVideoTrack};
}

int VideoFile::orientation() const {
    const std::uint8_t* data = displayMatrix(*stream_);
    if (!data)
        return 1;
    const auto* matrix = reinterpret_cast<const std::int32_t*>(data);
    const double degrees = av_display_rotation_get(matrix); // counter-clockwise
    if (std::isnan(degrees))
        return 1;
    const auto quarters = ((std::lround(degrees / 90) % 4) + 4) % 4;
    const bool mirrored = std::int64_t{matrix[0]} * matrix[4] < std::int64_t{matrix[1]} * matrix[3];
    constexpr int kTurned[] = {1, 8, 3, 6};
    constexpr int kMirrored[] = {2, 7, 4, 5};
    return mirrored ? kMirrored[quarters] : kTurned[quarters];
}

Size VideoFile::square() const {
    const AVCodecParameters& parameters = *stream_->codecpar;
    AVRational aspect = stream_->sample_aspect_ratio;
    if (aspect.num <= 0 || aspect.den <= 0)
        aspect = parameters.sample_aspect_ratio;
    double width = parameters.width;
    if (aspect.num > 0 && aspect.den > 0)
        width *= av_q2d(aspect);
    if (!(width >= 1 && width <= 16.0 * parameters.width))
        width = parameters.width;
    return {static_cast<std::uint32_t>(std::lround(width)),
            static_cast<std::uint32_t>(parameters.height)};
}

Size VideoFile::displayed() const {
    return oriented(square(), orientation());
}

std::string_view VideoFile::metadata(const char* name) const {
    for (const AVDictionary* dictionary : {format_->metadata, stream_->metadata})
        if (const auto* entry = av_dict_get(dictionary, name, nullptr, 0))
            return entry->value;
    return {};
}

} // namespace local::imaging
