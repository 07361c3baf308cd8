#include "PlainText.h"

#include "richtext/Utf8.h"
#include "richtext/wordperfect/CharacterMap.h"

namespace plaintext {

namespace {

// A list bullet is formatting, not text: LibreOffice's text export draws every bullet its own way
// (•, ·) while our files keep the document's own glyph (–, o, ▪). A bullet-like character that opens
// a line before a space or tab counts as "•" on both sides.
std::u32string unifiedBullets(std::u32string chars)
{
    bool lineStart = true;
    for (std::size_t i = 0; i < chars.size(); ++i) {
        const char32_t c = chars[i];
        if (c == U'\n') {
            lineStart = true;
            continue;
        }
        if (lineStart && (c == U' ' || c == U'\t'))
            continue;
        static const std::u32string bullets = U"o-*\u00B7\u2013\u2014\u2022\u2043\u25A0\u25A1\u25AA\u25BA"
                                              U"\u25CB\u25CF\u25E6\u2713\u2714\u27A2";
        const bool symbol = bullets.find(c) != std::u32string::npos || (c >= 0xF000 && c <= 0xF0FF);
        if (lineStart && symbol && i + 1 < chars.size() && (chars[i + 1] == U' ' || chars[i + 1] == U'\t'))
            chars[i] = U'\u2022';
        lineStart = false;
    }
    return chars;
}

// Stands for a private-use character in a normalised text.
constexpr char32_t privateUse = 0xFFFC;

} // namespace

std::string normalised(const std::string &text, const richtext::wordperfect::CharacterMap *map)
{
    const std::u32string chars = unifiedBullets(richtext::wordperfect::CharacterMap::decodeUtf8(text));
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
        using richtext::wordperfect::CharacterMap;
        if (map && c >= 0xE000 && c <= 0xF8FF) {
            richtext::Utf8::append(out, privateUse);
        } else if (map && c == 0x2011) {
            out += '-'; // WordPerfect's hard hyphen, which libwpd reads as a plain one
        } else if (map && c >= 0x7F && c != 0xAD && !map->find(std::u32string_view(chars).substr(i))) {
            // Kana the version holds in the other width are written in that width, hiragana where it
            // holds katakana only as the katakana of the same sound.
            std::u32string variant = CharacterMap::otherWidth(c);
            if ((variant.empty() || !map->holds(variant)) && c >= 0x3041 && c <= 0x3096)
                variant = CharacterMap::otherWidth(c + 0x60);
            if (!variant.empty() && map->holds(variant)) {
                for (char32_t v : variant)
                    richtext::Utf8::append(out, v);
            } else {
                out += '?';
            }
        } else {
            richtext::Utf8::append(out, c);
        }
    }
    return out;
}

std::string matchingPrivateUse(const std::string &theirs, const std::string &ours)
{
    using richtext::wordperfect::CharacterMap;
    const std::u32string a = CharacterMap::decodeUtf8(theirs);
    const std::u32string b = CharacterMap::decodeUtf8(ours);
    std::string out;
    for (std::size_t i = 0; i < a.size(); ++i)
        richtext::Utf8::append(out, a[i] == privateUse && i < b.size() ? b[i] : a[i]);
    return out;
}

} // namespace plaintext
