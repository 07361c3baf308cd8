#pragma once

#include <string>
#include <string_view>

// Text in RTF's escapes: code page 1252 above 0x7F as \'hh, everything else
// outside ASCII as \uN\'3f (with \uc1 in force), RTF's own characters escaped.
namespace richtext::RtfText {

std::string escape(std::string_view utf8);

// One character's escape.
std::string escapeCharacter(char32_t character);

} // namespace richtext::RtfText
