// Which bytes are text: the same ones as the C library's converter has it.
#include "bridge/utf8.h"

#include <cstdlib>
#include <vector>

#include <iconv.h>

namespace {

bool convertsToUtf32(const std::uint8_t* data, std::size_t size) {
    static const iconv_t converter = iconv_open("UTF-32LE", "UTF-8");
    std::vector<char> input(data, data + size);
    std::vector<char> output(size * 4 + 4);
    char* from = input.data();
    char* to = output.data();
    std::size_t left = size;
    std::size_t room = output.size();
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    return iconv(converter, &from, &left, &to, &room) != static_cast<std::size_t>(-1) && left == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (isValidUtf8(text) != convertsToUtf32(data, size))
        std::abort();
    return 0;
}
