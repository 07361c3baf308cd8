#pragma once

#include <cstdint>
#include <optional>

// The two 8-bit code pages that classic RTF speaks, from their published
// mapping tables: Windows-1252 and Mac OS Roman (the current table, in which
// 0xDB is the euro sign).
namespace richtext::CodePages {

// The character of a Windows-1252 byte; none for 0x81, 0x8D, 0x8F, 0x90, 0x9D.
std::optional<char32_t> fromWindows1252(std::uint8_t byte);
std::optional<std::uint8_t> toWindows1252(char32_t character);

std::optional<char32_t> fromMacRoman(std::uint8_t byte);
std::optional<std::uint8_t> toMacRoman(char32_t character);

} // namespace richtext::CodePages
