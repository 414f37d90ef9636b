// Standard UTF-8, by the strict rules.
#pragma once

#include <string_view>

// Whether the bytes are well-formed UTF-8: no overlong form, no encoded surrogate, nothing above
// U+10FFFF, no sequence cut short.
bool isValidUtf8(std::string_view bytes);
