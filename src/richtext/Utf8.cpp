#include "Utf8.h"

namespace richtext::Utf8 {
namespace {

constexpr char32_t replacement = 0xFFFD;

} // namespace

std::u32string decode(std::string_view utf8)
{
    std::u32string result;
    result.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        int extra = 0;
        char32_t character = 0;
        if (lead < 0x80) {
            character = lead;
        } else if (lead >= 0xC2 && lead <= 0xDF) {
            extra = 1;
            character = lead & 0x1F;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            extra = 2;
            character = lead & 0x0F;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            extra = 3;
            character = lead & 0x07;
        } else {
            result += replacement;
            ++i;
            continue;
        }
        if (i + static_cast<std::size_t>(extra) >= utf8.size()) {
            result += replacement;
            ++i;
            continue;
        }
        bool valid = true;
        for (int k = 1; k <= extra; ++k) {
            const auto next = static_cast<unsigned char>(utf8[i + static_cast<std::size_t>(k)]);
            if ((next & 0xC0) != 0x80) {
                valid = false;
                break;
            }
            character = (character << 6) | (next & 0x3F);
        }
        const bool overlong = (extra == 2 && character < 0x800) || (extra == 3 && character < 0x10000);
        if (!valid || overlong || character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF)) {
            result += replacement;
            ++i;
            continue;
        }
        result += character;
        i += static_cast<std::size_t>(extra) + 1;
    }
    return result;
}

bool isValid(std::string_view text)
{
    // Decoding marks each malformed byte; a U+FFFD the text itself holds is three valid bytes.
    std::size_t marks = 0;
    for (const char32_t character : decode(text))
        marks += character == replacement;
    std::size_t own = 0;
    for (std::size_t at = 0; (at = text.find("\xEF\xBF\xBD", at)) != std::string_view::npos; at += 3)
        ++own;
    return marks == own;
}

void append(std::string &text, char32_t character)
{
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0 | (character >> 6));
        text += static_cast<char>(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        text += static_cast<char>(0xE0 | (character >> 12));
        text += static_cast<char>(0x80 | ((character >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (character & 0x3F));
    } else {
        text += static_cast<char>(0xF0 | (character >> 18));
        text += static_cast<char>(0x80 | ((character >> 12) & 0x3F));
        text += static_cast<char>(0x80 | ((character >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (character & 0x3F));
    }
}

} // namespace richtext::Utf8
