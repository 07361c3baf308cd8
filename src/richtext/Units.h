#pragma once

#include <librevenge/librevenge.h>

#include <optional>
#include <string>
#include <string_view>

// Lengths and property values as librevenge carries them: lengths in inches
// (or points, twips, percent), everything else as text.
namespace richtext::Units {

// "2.54cm", "1in", "12pt", "10mm", "1pc", "96px", "720*" (twips) in inches.
// A bare number counts as inches, as librevenge's generic values do.
std::optional<double> parseInches(std::string_view length);

// "58%" as 0.58.
std::optional<double> parsePercent(std::string_view value);

std::optional<std::string> text(const librevenge::RVNGPropertyList &list, const char *name);

// A length property in inches, whatever unit it was given in; none for percentages.
std::optional<double> inches(const librevenge::RVNGPropertyList &list, const char *name);

// A font size or other point value.
std::optional<double> points(const librevenge::RVNGPropertyList &list, const char *name);

// A percentage property as a fraction (1.0 = 100 %).
std::optional<double> fraction(const librevenge::RVNGPropertyList &list, const char *name);

std::optional<int> integer(const librevenge::RVNGPropertyList &list, const char *name);

} // namespace richtext::Units
