#pragma once

#include "WordPerfectWriter.h"

#include <optional>
#include <string>

// librevenge's property lists read as WordPerfect values: lengths in WPU, formats.
namespace richtext::wordperfect {

std::string textOf(const librevenge::RVNGPropertyList &list, const char *name);
// A length in inches from librevenge's text form ("0.5in", "12pt", "2.54cm", "720*" twips).
std::optional<double> inchesOf(const librevenge::RVNGPropertyList &list, const char *name);
int wpu(double inches);
bool isNone(const std::string &value);
CharacterFormat characterFormatOf(const librevenge::RVNGPropertyList &list);
ParagraphFormat paragraphFormatOf(const librevenge::RVNGPropertyList &list);

} // namespace richtext::wordperfect
