#include "RtfText.h"

#include "CodePages.h"
#include "Utf8.h"

#include <cstdio>

namespace richtext::RtfText {
namespace {

std::string unicodeEscape(char16_t unit)
{
    // \u takes a signed 16-bit number; \'3f is what readers without Unicode show.
    return "\\u" + std::to_string(static_cast<int16_t>(unit)) + "\\'3f";
}

} // namespace

std::string escapeCharacter(char32_t character)
{
    switch (character) {
    case '\\':
        return "\\\\";
    case '{':
        return "\\{";
    case '}':
        return "\\}";
    case '\t':
        return "\\tab ";
    case '\n':
    case 0x2028:
        return "\\line ";
    case 0x2029:
        return "\\par ";
    default:
        break;
    }
    if (character < 0x20 || character == 0x7F)
        return {};
    if (character < 0x80)
        return std::string(1, static_cast<char>(character));
    if (const auto byte = CodePages::toWindows1252(character)) {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\'%02x", *byte);
        return escape;
    }
    if (character <= 0xFFFF)
        return unicodeEscape(static_cast<char16_t>(character));
    const char32_t offset = character - 0x10000;
    return unicodeEscape(static_cast<char16_t>(0xD800 + (offset >> 10))) +
           unicodeEscape(static_cast<char16_t>(0xDC00 + (offset & 0x3FF)));
}

std::string escape(std::string_view utf8)
{
    std::string result;
    result.reserve(utf8.size() + utf8.size() / 8);
    for (const char32_t character : Utf8::decode(utf8))
        result += escapeCharacter(character);
    return result;
}

} // namespace richtext::RtfText
