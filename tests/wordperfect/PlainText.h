#pragma once

#include <string>

namespace richtext::wordperfect {
class CharacterMap;
}

namespace plaintext {

// A plain-text export made comparable: whitespace collapsed, byte-order mark
// and zero-width spaces dropped; with a map, every character no WordPerfect
// set holds becomes '?', as our writers write it.
std::string normalised(const std::string &text, const richtext::wordperfect::CharacterMap *map);

} // namespace plaintext
