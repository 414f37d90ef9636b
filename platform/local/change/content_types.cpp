#include "platform/local/change/content_types.h"

#include <algorithm>
#include <array>

namespace local {

namespace {

struct KnownEnding {
    std::string_view ending;
    std::string_view type;
    bool movie = false;
};

// Identifiers as the systems that use them publish them.
constexpr std::array knownEndings{
    KnownEnding{"jpg", "public.jpeg"},
    KnownEnding{"jpeg", "public.jpeg"},
    KnownEnding{"jpe", "public.jpeg"},
    KnownEnding{"png", "public.png"},
    KnownEnding{"heic", "public.heic"},
    KnownEnding{"heif", "public.heif"},
    KnownEnding{"hif", "public.heif"},
    KnownEnding{"avif", "public.avif"},
    KnownEnding{"webp", "org.webmproject.webp"},
    KnownEnding{"gif", "com.compuserve.gif"},
    KnownEnding{"tif", "public.tiff"},
    KnownEnding{"tiff", "public.tiff"},
    KnownEnding{"jxl", "public.jpeg-xl"},
    KnownEnding{"bmp", "com.microsoft.bmp"},
    KnownEnding{"dng", "com.adobe.raw-image"},
    KnownEnding{"cr2", "com.canon.cr2-raw-image"},
    KnownEnding{"cr3", "com.canon.cr3-raw-image"},
    KnownEnding{"crw", "com.canon.crw-raw-image"},
    KnownEnding{"nef", "com.nikon.raw-image"},
    KnownEnding{"nrw", "com.nikon.nrw-raw-image"},
    KnownEnding{"arw", "com.sony.arw-raw-image"},
    KnownEnding{"raf", "com.fuji.raw-image"},
    KnownEnding{"orf", "com.olympus.raw-image"},
    KnownEnding{"rw2", "com.panasonic.rw2-raw-image"},
    KnownEnding{"pef", "com.pentax.raw-image"},
    KnownEnding{"srw", "com.samsung.raw-image"},
    KnownEnding{"3fr", "com.hasselblad.3fr-raw-image"},
    KnownEnding{"iiq", "com.phaseone.raw-image"},
    KnownEnding{"mov", "com.apple.quicktime-movie", true},
    KnownEnding{"qt", "com.apple.quicktime-movie", true},
    KnownEnding{"mp4", "public.mpeg-4", true},
    KnownEnding{"m4v", "com.apple.m4v-video", true},
    KnownEnding{"3gp", "public.3gpp", true},
    KnownEnding{"3g2", "public.3gpp2", true},
    KnownEnding{"avi", "public.avi", true},
    KnownEnding{"mpg", "public.mpeg", true},
    KnownEnding{"mpeg", "public.mpeg", true},
    KnownEnding{"m2v", "public.mpeg-2-video", true},
    KnownEnding{"ts", "public.mpeg-2-transport-stream", true},
    KnownEnding{"mts", "public.avchd-mpeg-2-transport-stream", true},
    KnownEnding{"m2ts", "public.avchd-mpeg-2-transport-stream", true},
    KnownEnding{"mkv", "org.matroska.mkv", true},
    KnownEnding{"webm", "org.webmproject.webm", true},
    KnownEnding{"wmv", "com.microsoft.windows-media-wmv", true},
    KnownEnding{"ogv", "org.xiph.ogg-video", true},
};

std::string lowerCaseEnding(std::string_view name) {
    const std::size_t slash = name.rfind('/');
    if (slash != std::string_view::npos)
        name.remove_prefix(slash + 1);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return {};
    std::string ending(name.substr(dot + 1));
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return ending;
}

} // namespace

std::optional<std::string> contentTypeOfName(std::string_view name) {
    const std::string ending = lowerCaseEnding(name);
    const auto* known = std::find_if(knownEndings.begin(), knownEndings.end(),
                                     [&](const KnownEnding& k) { return k.ending == ending; });
    if (known == knownEndings.end())
        return std::nullopt;
    return std::string(known->type);
}

bool isMovieType(std::string_view contentType) {
    return std::any_of(knownEndings.begin(), knownEndings.end(),
                       [&](const KnownEnding& k) { return k.movie && k.type == contentType; });
}

std::string storableEnding(std::string_view name) {
    std::string ending = lowerCaseEnding(name);
    const auto fit = [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); };
    if (ending.size() > 10 || !std::all_of(ending.begin(), ending.end(), fit))
        return {};
    return ending;
}

} // namespace local
