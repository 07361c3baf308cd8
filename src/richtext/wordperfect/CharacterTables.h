#pragma once

#include <span>

namespace richtext::wordperfect {

// One WordPerfect character as libwpd reads it: the pair and the Unicode text it becomes
// (usually one code point, a few pairs read as two or three; unused places are 0).
struct CharacterEntry {
    unsigned char set;
    unsigned char number;
    char32_t text[3];
};

std::span<const CharacterEntry> wp6CharacterEntries();
std::span<const CharacterEntry> wp5CharacterEntries();

} // namespace richtext::wordperfect
