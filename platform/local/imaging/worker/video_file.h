// An opened video: demuxer and the stream that is shown. Used by video.cpp alone.
#pragma once

#include "platform/local/imaging/worker/input.h"
#include "platform/local/imaging/worker/picture.h"

#include <memory>
#include <string_view>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace local::imaging {

class VideoFile {
public:
    explicit VideoFile(const FileInput& input); // throws Failure
    VideoFile(const VideoFile&) = delete;
    VideoFile& operator=(const VideoFile&) = delete;

    AVFormatContext* format() const { return format_.get(); }
    AVStream* stream() const { return stream_; }
    int orientation() const;                           // from the display matrix, as EXIF has it
    Size displayed() const;                            // pixels made square, then turned
    Size square() const;                               // pixels made square
    std::string_view metadata(const char* name) const; // of the file, else of the stream

private:
    struct Reader {
        const FileInput* input;
        std::int64_t position;
    };
    static int read(void* reader, std::uint8_t* to, int length);
    static std::int64_t seek(void* reader, std::int64_t offset, int whence);
    static int refuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**);

    struct CloseIo {
        void operator()(AVIOContext* io) const {
            av_freep(&io->buffer);
            avio_context_free(&io);
        }
    };
    struct CloseFormat {
        void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
    };
    Reader reader_;
    std::unique_ptr<AVIOContext, CloseIo> io_;
    std::unique_ptr<AVFormatContext, CloseFormat> format_;
    AVStream* stream_ = nullptr;
};

} // namespace local::imaging
