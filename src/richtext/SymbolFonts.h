#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Fonts whose characters are pictures rather than letters: Word keeps their glyphs as private-use
// characters U+F020-U+F0FF (or, typed in the font, as plain codes 0x20-0xFF) and relies on the font
// to draw them. Anywhere the font is not drawn, only their Unicode meaning stands for them.
namespace richtext::SymbolFonts {

enum class Font { none, symbol, wingdings, wingdings2, zapfDingbats };

// The symbol font of a family name ("Symbol", "Wingdings 2", "'Zapf Dingbats'"...); none for others.
Font byFamily(std::string_view family);

// What a character of a run in this font means in Unicode. Private-use U+F020-U+F0FF always stand
// for the font's codes; plain codes 0x20-0xFF only when `plainCodes` (the font face is declared
// symbol-encoded). None when the font is none, the character is outside those ranges or the glyph
// has no Unicode counterpart.
std::optional<char32_t> meaning(Font font, char32_t c, bool plainCodes);

// A UTF-8 run of text in this font cut where it changes between characters that have a meaning
// (given as that meaning, `translated`) and those that do not (kept as they are). A space without
// a meaning of its own stays in the piece it stands in.
struct Piece {
    std::string text;
    bool translated;
};
std::vector<Piece> translate(Font font, std::string_view utf8, bool plainCodes);

} // namespace richtext::SymbolFonts
