// JSON text: what is written reads back as it was, by a reader that is not ours.
#include "bridge/json_text.h"
#include "bridge/utf8.h"

#include <nlohmann/json.hpp>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string written = "[";
    appendJsonString(written, text);
    written += ',';
    appendJsonNumber(written, static_cast<long long>(size) - 5);
    written += ']';
    if (!isValidUtf8(text))
        return 0; // no text in the library is
    const auto read = nlohmann::json::parse(written);
    if (read[0].get<std::string>() != text ||
        read[1].get<long long>() != static_cast<long long>(size) - 5)
        std::abort();
    return 0;
}
