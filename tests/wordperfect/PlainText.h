#pragma once

#include <string>

namespace richtext::wordperfect {
class CharacterMap;
}

namespace plaintext {

// A plain-text export made comparable: whitespace collapsed, byte-order mark and zero-width spaces
// dropped; with a map, every character no WordPerfect set holds becomes '?', as our writers write it
// (kana the set holds in the other width in that width, hiragana a set holds only as katakana as those,
// a non-breaking hyphen as the '-' libwpd reads). Private-use characters mean nothing a comparison can
// judge (Symbol-font codes, which our writers spell as what they draw): with a map each becomes a
// placeholder, and matchingPrivateUse lets it stand for any one character.
std::string normalised(const std::string &text, const richtext::wordperfect::CharacterMap *map);

// `theirs` with each placeholder replaced by the character of `ours` at the
// same place, so that only the other characters are compared.
std::string matchingPrivateUse(const std::string &theirs, const std::string &ours);

} // namespace plaintext
