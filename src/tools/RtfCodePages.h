#pragma once

#include <string>

// pandoc's RTF reader takes every 8-bit character as Windows-1252 and the
// file as UTF-8, whatever the document's code page and its fonts' character
// sets say: Czech, Greek, Hebrew or Japanese text comes out as Western
// letters or not at all. This rewrite spells each such character as the
// \uN escape every RTF reader follows, decoded with the code page in force.
namespace RtfCodePages {

// The RTF with its \'hh escapes (and raw 8-bit bytes) outside Unicode
// fallbacks and binary data written as \uN. Never throws: text it cannot
// decode is left as it was.
std::string unicodeEscaped(const std::string &rtf);

} // namespace RtfCodePages
