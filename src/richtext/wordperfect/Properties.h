#pragma once

#include "WordPerfectWriter.h"

#include <cstdint>
#include <optional>
#include <string>

// librevenge's property lists read as WordPerfect values: lengths in WPU, formats.
namespace richtext::wordperfect {

std::string textOf(const librevenge::RVNGPropertyList &list, const char *name);
// A length in inches from librevenge's text form ("0.5in", "12pt", "2.54cm", "720*" twips).
std::optional<double> inchesOf(const librevenge::RVNGPropertyList &list, const char *name);
int wpu(double inches);
bool isNone(const std::string &value);
// How light a 0xRRGGBB colour looks, 0 (black) to 1000 (white), the primaries weighed as the eye does.
int lightness(std::uint32_t rgb);
CharacterFormat characterFormatOf(const librevenge::RVNGPropertyList &list);
ParagraphFormat paragraphFormatOf(const librevenge::RVNGPropertyList &list);

} // namespace richtext::wordperfect
