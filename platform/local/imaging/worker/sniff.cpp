#include "platform/local/imaging/worker/sniff.h"

#include <array>
#include <string_view>

namespace local::imaging {

namespace {

using namespace std::string_view_literals;

struct Signature {
    std::size_t offset;
    std::string_view bytes;
    FileFormat format;
};

constexpr std::array kSignatures{
    Signature{0, "\xff\xd8\xff"sv, FileFormat::jpeg},
    Signature{0, "\x89PNG\r\n\x1a\n"sv, FileFormat::png},
    Signature{0, "GIF87a"sv, FileFormat::gif},
    Signature{0, "GIF89a"sv, FileFormat::gif},
    Signature{0, "\xff\x0a"sv, FileFormat::jpegXl},
    Signature{0, "\0\0\0\x0cJXL \r\n\x87\n"sv, FileFormat::jpegXl},
    Signature{8, "CR\2\0"sv, FileFormat::canonCr2},
    Signature{0, "II\x2a\0"sv, FileFormat::tiff},
    Signature{0, "MM\0\x2a"sv, FileFormat::tiff},
    Signature{0, "II\x2b\0"sv, FileFormat::tiff},
    Signature{0, "MM\0\x2b"sv, FileFormat::tiff},
    Signature{0, "FUJIFILMCCD-RAW"sv, FileFormat::fujiRaw},
    Signature{0, "IIRO"sv, FileFormat::olympusRaw},
    Signature{0, "IIRS"sv, FileFormat::olympusRaw},
    Signature{0, "MMOR"sv, FileFormat::olympusRaw},
    Signature{0, "IIU\0"sv, FileFormat::panasonicRaw},
    Signature{6, "HEAPCCDR"sv, FileFormat::otherRaw},
    Signature{0, "FOVb"sv, FileFormat::otherRaw},
    Signature{0, "\0MRM"sv, FileFormat::otherRaw},
};

FileFormat formatOfBrand(std::string_view brand) {
    if (brand == "avif" || brand == "avis")
        return FileFormat::avif;
    if (brand == "heic" || brand == "heix" || brand == "heim" || brand == "heis" ||
        brand == "hevc" || brand == "hevx")
        return FileFormat::heic;
    if (brand == "mif1" || brand == "msf1" || brand == "mif2")
        return FileFormat::heif;
    if (brand == "crx ")
        return FileFormat::canonCr3;
    return FileFormat::unknown;
}

// The major brand decides; where it is the general one, the first compatible brand that says more.
FileFormat formatOfFileTypeBox(std::string_view head) {
    FileFormat format = formatOfBrand(head.substr(8, 4));
    if (format != FileFormat::heif)
        return format;
    const auto length = static_cast<std::size_t>(static_cast<unsigned char>(head[3]));
    for (std::size_t at = 16; at + 4 <= std::min(length, head.size()); at += 4) {
        const FileFormat compatible = formatOfBrand(head.substr(at, 4));
        if (compatible != FileFormat::unknown && compatible != FileFormat::heif)
            return compatible;
    }
    return format;
}

} // namespace

FileFormat sniffPhoto(const Input& input) {
    std::array<char, 256> bytes{};
    const std::string_view head(bytes.data(), input.readAt(0, bytes.data(), bytes.size()));
    if (head.size() < 12)
        return FileFormat::unknown;
    for (const Signature& signature : kSignatures)
        if (head.substr(signature.offset, signature.bytes.size()) == signature.bytes)
            return signature.format;
    if (head.substr(0, 4) == "RIFF" && head.substr(8, 4) == "WEBP")
        return FileFormat::webp;
    if (head.substr(4, 4) == "ftyp")
        return formatOfFileTypeBox(head);
    return FileFormat::unknown;
}

} // namespace local::imaging
