#include "platform/local/imaging/worker/colour.h"

#include <algorithm>
#include <list>
#include <memory>
#include <vector>

#include <lcms2.h>

namespace local::imaging {

namespace {

struct Deleter {
    using pointer = void*;
    void operator()(void* handle) const { cmsDeleteTransform(handle); }
};
struct ProfileCloser {
    using pointer = void*;
    void operator()(void* handle) const { cmsCloseProfile(handle); }
};
using Transform = std::unique_ptr<void, Deleter>;
using Profile = std::unique_ptr<void, ProfileCloser>;

struct Conversion {
    std::vector<std::uint8_t> profile; // the whole of it: a hash alone could be made to collide
    bool grey = false;
    Transform transform;
};

Conversion makeConversion(cmsHPROFILE from) {
    Conversion conversion;
    const cmsColorSpaceSignature space = from ? cmsGetColorSpace(from) : cmsSigCmykData;
    conversion.grey = space == cmsSigGrayData;
    if (!conversion.grey && space != cmsSigRgbData)
        return conversion;
    const Profile srgb(cmsCreate_sRGBProfile());
    conversion.transform.reset(cmsCreateTransform(from, conversion.grey ? TYPE_GRAY_8 : TYPE_RGB_8,
                                                  srgb.get(), TYPE_RGB_8,
                                                  INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOCACHE));
    return conversion;
}

void convertWith(const Conversion& conversion, std::span<std::uint8_t> rgb) {
    if (!conversion.transform)
        return;
    constexpr std::size_t kPart = 16384; // pixels at a time: lcms counts in 32 bits
    std::vector<std::uint8_t> grey;
    for (std::size_t at = 0; at < rgb.size(); at += kPart * 3) {
        const auto part = rgb.subspan(at, std::min(kPart * 3, rgb.size() - at));
        const auto count = static_cast<cmsUInt32Number>(part.size() / 3);
        const void* in = part.data();
        if (conversion.grey) {
            grey.resize(count);
            for (std::size_t i = 0; i < count; ++i)
                grey[i] = part[i * 3];
            in = grey.data();
        }
        cmsDoTransform(conversion.transform.get(), in, part.data(), count);
    }
}

} // namespace

void convertToSrgb(std::span<std::uint8_t> rgb, std::span<const std::uint8_t> profile) {
    constexpr std::size_t kKept = 8; // a library's pictures come from a few cameras
    constexpr std::size_t kLargest = 4 << 20;
    static std::list<Conversion> kept; // the one used last in front
    if (profile.empty() || profile.size() > kLargest)
        return;
    const auto known = std::find_if(kept.begin(), kept.end(), [&](const Conversion& conversion) {
        return std::ranges::equal(conversion.profile, profile);
    });
    if (known != kept.end()) {
        kept.splice(kept.begin(), kept, known);
    } else {
        const Profile opened(
            cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size())));
        kept.push_front(makeConversion(opened.get()));
        kept.front().profile.assign(profile.begin(), profile.end());
        if (kept.size() > kKept)
            kept.pop_back();
    }
    convertWith(kept.front(), rgb);
}

void convertAdobeRgbToSrgb(std::span<std::uint8_t> rgb) {
    static const Conversion conversion = [] {
        const cmsCIExyY white{0.3127, 0.3290, 1};
        const cmsCIExyYTRIPLE primaries{{0.64, 0.33, 1}, {0.21, 0.71, 1}, {0.15, 0.06, 1}};
        cmsToneCurve* curve = cmsBuildGamma(nullptr, 563.0 / 256);
        cmsToneCurve* const curves[] = {curve, curve, curve};
        const Profile adobe(cmsCreateRGBProfile(&white, &primaries, curves));
        cmsFreeToneCurve(curve);
        return makeConversion(adobe.get());
    }();
    convertWith(conversion, rgb);
}

} // namespace local::imaging
