#pragma once

#include <string>
#include <string_view>

namespace richtext::Utf8 {

// The characters of a UTF-8 text; each malformed byte becomes U+FFFD.
std::u32string decode(std::string_view text);
bool isValid(std::string_view text);
void append(std::string &text, char32_t character);

} // namespace richtext::Utf8
