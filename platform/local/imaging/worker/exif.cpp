#include "platform/local/imaging/worker/exif.h"

#include "platform/local/imaging/wire/capture_time.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <libexif/exif-data.h>

namespace local::imaging {

namespace {

constexpr int kOffsetTime = 0x9010; // DateTime's; DateTimeOriginal's and Digitized's follow
constexpr int kSubSecTime = 0x9290;
constexpr int kLensModel = 0xa434;

std::string textOf(ExifData* data, ExifIfd directory, int tag) {
    const ExifEntry* entry =
        exif_content_get_entry(data->ifd[directory], static_cast<ExifTag>(tag));
    if (!entry || !entry->data || entry->size == 0 || entry->size > 1024)
        return {};
    std::string text(reinterpret_cast<const char*>(entry->data), entry->size);
    while (!text.empty() && (text.back() == '\0' || text.back() == ' '))
        text.pop_back();
    return text;
}

int orientationOf(ExifData* data) {
    const ExifEntry* entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (!entry || entry->format != EXIF_FORMAT_SHORT || entry->size < 2)
        return 1;
    const int value = exif_get_short(entry->data, exif_data_get_byte_order(data));
    return value >= 1 && value <= 8 ? value : 1;
}

std::optional<CaptureTime> capturedOf(ExifData* data) {
    struct Source {
        ExifIfd directory;
        int dateTag;
        int companion; // of the offset and fraction tags: 0 DateTime, 1 Original, 2 Digitized
    };
    constexpr std::array<Source, 3> kSources{{{EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_ORIGINAL, 1},
                                              {EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_DIGITIZED, 2},
                                              {EXIF_IFD_0, EXIF_TAG_DATE_TIME, 0}}};
    for (const Source& source : kSources)
        if (auto time = captureTime(textOf(data, source.directory, source.dateTag),
                                    textOf(data, EXIF_IFD_EXIF, kOffsetTime + source.companion),
                                    textOf(data, EXIF_IFD_EXIF, kSubSecTime + source.companion)))
            return time;
    return std::nullopt;
}

std::optional<int> offsetMinutes(std::string_view text) {
    if (text == "Z")
        return 0;
    const std::string copy(text);
    char sign = 0;
    int hours = 0;
    int minutes = 0;
    int used = 0;
    if (std::sscanf(copy.c_str(), "%c%2d:%2d%n", &sign, &hours, &minutes, &used) != 3 ||
        used != static_cast<int>(copy.size()) || (sign != '+' && sign != '-') || hours < 0 ||
        minutes < 0 || minutes > 59)
        return std::nullopt;
    return (sign == '-' ? -1 : 1) * (hours * 60 + minutes);
}

int milliseconds(std::string_view fraction) {
    int value = 0;
    int digits = 0;
    for (const char c : fraction) {
        if (c < '0' || c > '9')
            break;
        if (++digits > 3)
            break;
        value = value * 10 + (c - '0');
    }
    for (; digits > 0 && digits < 3; ++digits)
        value *= 10;
    return value;
}

} // namespace

std::optional<CaptureTime> captureTime(std::string_view date, std::string_view offset,
                                       std::string_view fraction) {
    const std::string copy(date.substr(0, 19));
    CaptureTime time;
    char separator = 0;
    if (std::sscanf(copy.c_str(), "%4d%*1[:-]%2d%*1[:-]%2d%c%2d:%2d:%2d", &time.year, &time.month,
                    &time.day, &separator, &time.hour, &time.minute, &time.second) != 7 ||
        (separator != ' ' && separator != 'T'))
        return std::nullopt;
    time.millisecond = milliseconds(fraction);
    time.offsetMinutes = offsetMinutes(offset);
    return existing(time);
}

bool isFrontLens(std::string_view lensModel) {
    return lensModel.find(" front ") != std::string_view::npos &&
           lensModel.find("camera") != std::string_view::npos;
}

ExifFacts readExif(std::span<const std::uint8_t> block) {
    ExifFacts facts;
    const std::unique_ptr<ExifData, decltype(&exif_data_unref)> data(exif_data_new(),
                                                                     &exif_data_unref);
    if (!data || block.size() > (1 << 20))
        return facts;
    // libexif wants the prefix that HEIF and PNG leave out.
    constexpr std::string_view kPrefix("Exif\0\0", 6);
    std::vector<std::uint8_t> prefixed;
    if (block.size() < kPrefix.size() || block[0] != 'E') {
        prefixed.assign(kPrefix.begin(), kPrefix.end());
        prefixed.insert(prefixed.end(), block.begin(), block.end());
        block = prefixed;
    }
    // Reading as it stands: "fixing" would add tags, DateTime with the present time among them.
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_IGNORE_UNKNOWN_TAGS);
    exif_data_load_data(data.get(), block.data(), static_cast<unsigned>(block.size()));
    facts.orientation = orientationOf(data.get());
    facts.captured = capturedOf(data.get());
    facts.adobeRgb = textOf(data.get(), EXIF_IFD_INTEROPERABILITY, 1) == "R03";
    // The eight bytes in front name the character set.
    const std::string comment = textOf(data.get(), EXIF_IFD_EXIF, EXIF_TAG_USER_COMMENT);
    facts.screenshot = comment.size() > 8 && comment.substr(8) == "Screenshot";
    facts.selfie = isFrontLens(textOf(data.get(), EXIF_IFD_EXIF, kLensModel));
    return facts;
}

} // namespace local::imaging
