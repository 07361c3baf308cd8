#include "PlainText.h"

#include "richtext/Utf8.h"
#include "richtext/wordperfect/CharacterMap.h"

namespace plaintext {

std::string normalised(const std::string &text, const richtext::wordperfect::CharacterMap *map)
{
    const std::u32string chars = richtext::wordperfect::CharacterMap::decodeUtf8(text);
    std::string out;
    bool space = false;
    for (std::size_t i = 0; i < chars.size(); ++i) {
        const char32_t c = chars[i];
        if (c == 0xFEFF || c == 0x200B)
            continue;
        if (c == U' ' || c == U'\t' || c == U'\n' || c == U'\r' || c == 0xA0 || c == 0x0C) {
            space = !out.empty();
            continue;
        }
        if (space)
            out += ' ';
        space = false;
        if (map && c >= 0x7F && !map->find(std::u32string_view(chars).substr(i)))
            out += '?';
        else
            richtext::Utf8::append(out, c);
    }
    return out;
}

} // namespace plaintext
