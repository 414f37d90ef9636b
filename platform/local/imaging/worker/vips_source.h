// A file as libvips reads it.
#pragma once

#include "platform/local/imaging/worker/input.h"
#include "platform/local/imaging/worker/mapping.h"

#include <memory>
#include <new>
#include <optional>

#include <vips/vips.h>

namespace local::imaging {

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
// The mapped file, which spares a copy of it; a file too large for that is read with pread (see
// input.h).
class VipsInput {
public:
    explicit VipsInput(const FileInput& input) : input_(input) {
        constexpr std::uint64_t kMostMapped = 1 << 30; // of at most 3 GiB that this process has
        if (input.size() <= kMostMapped)
            mapping_.emplace(input);
        if (mapping_ && mapping_->bytes())
            source_.reset(vips_source_new_from_memory(mapping_->bytes(), mapping_->size()));
        else
            source_.reset(readingSource());
        if (!source_)
            throw std::bad_alloc();
    }
    VipsSource* get() const { return source_.get(); }

private:
    VipsSource* readingSource() {
        VipsSourceCustom* custom = vips_source_custom_new();
        g_signal_connect(custom, "read", G_CALLBACK(onRead), this);
        g_signal_connect(custom, "seek", G_CALLBACK(onSeek), this);
        return VIPS_SOURCE(custom);
    }
    static gint64 onRead(VipsSourceCustom*, void* to, gint64 length, void* self) {
        auto& source = *static_cast<VipsInput*>(self);
        const auto got =
            source.input_.readAt(source.position_, to, static_cast<std::size_t>(length));
        source.position_ += got;
        return static_cast<gint64>(got);
    }
    static gint64 onSeek(VipsSourceCustom*, gint64 offset, int whence, void* self) {
        auto& source = *static_cast<VipsInput*>(self);
        const auto base = static_cast<gint64>(whence == SEEK_CUR   ? source.position_
                                              : whence == SEEK_END ? source.input_.size()
                                                                   : 0);
        if (offset > INT64_MAX - base || base + offset < 0)
            return -1;
        source.position_ = static_cast<std::uint64_t>(base + offset);
        return base + offset;
    }

    const Input& input_;
    std::uint64_t position_ = 0;
    std::optional<Mapping> mapping_;
    std::unique_ptr<VipsSource, Unref> source_;
};

} // namespace local::imaging
