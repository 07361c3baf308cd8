#pragma once

#include <string>

// The copy of an RTF file pandoc reads when LibreOffice is missing, written
// around its RTF reader's faults:
// - it takes every 8-bit character as Windows-1252, whatever the code page
//   or the font's character set says (Czech comes out Western, Hebrew and
//   Japanese mostly vanish): such characters become \uN escapes, decoded
//   with the code page in force;
// - it drops every field's result but a simple hyperlink's: fields become
//   their result, and a hyperlink's instruction plain text;
// - it shows table-of-contents and index entries, which are never shown:
//   they are left out;
// - it repeats a style name holding an escaped character before every
//   paragraph: style names are spelled in plain ASCII.
namespace PandocRtf {

// The RTF so rewritten. Never throws: what it cannot make out is left as it
// was.
std::string prepared(const std::string &rtf);

} // namespace PandocRtf
