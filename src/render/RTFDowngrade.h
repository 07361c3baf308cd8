#pragma once

#include <string>

// Rewrites the RTF of our rich-text writer into classic RTF: the writer's
// own control words, tab defaults and flat ignorable groups go, and under
// `mac` the 8-bit escapes and the header move from Windows-1252 to Mac OS Roman.
// A pure transformation: where it cannot work it returns its input unchanged.
namespace RTFDowngrade {

enum class Charset { ansi, mac };

// `unmapped`, when given, counts the characters that became '?' because the
// charset has no byte for them.
std::string classic(const std::string &rtf, Charset charset, int *unmapped = nullptr);

} // namespace RTFDowngrade
