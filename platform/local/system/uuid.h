// Identifiers of 16 random bytes, and their text.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace local {

using Uuid = std::array<std::uint8_t, 16>;

std::string uppercaseText(const Uuid& uuid); // 8-4-4-4-12
// Reads what uppercaseText writes; nothing for any other text.
std::optional<Uuid> uuidFromText(std::string_view text);
Uuid randomUuid();

} // namespace local
