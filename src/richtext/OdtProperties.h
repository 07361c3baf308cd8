#pragma once

#include "OdtStyles.h"

#include <librevenge/librevenge.h>

#include <optional>
#include <string>
#include <vector>

// ODF style properties as librevenge carries them: lengths in inches, font
// sizes in points, line heights as fractions, the rest as their ODF text.
namespace richtext::OdtProperties {

void addParagraph(librevenge::RVNGPropertyList &into, const OdfProperties &paragraph,
                  const std::vector<OdtStyles::TabStop> &tabStops);
void addText(librevenge::RVNGPropertyList &into, const OdfProperties &text, const OdtStyles &styles);

// ODF gives Asian (CJK) and complex (right-to-left and Indic) scripts fonts, sizes, weights and
// languages of their own; a character takes those of its script.
enum class Script { western, asian, complex, neutral };
Script scriptOf(char32_t c);
// The text properties for characters of `script`: its own where the style gives them.
OdfProperties forScript(const OdfProperties &text, Script script);

librevenge::RVNGPropertyList pageSpan(const OdfProperties &page);
librevenge::RVNGPropertyList headerFooter(const OdfProperties &properties, const std::string &occurrence);
librevenge::RVNGPropertyList listLevel(const OdtStyles::ListLevel &level, int depth, int listId,
                                       std::optional<int> start);
// Column widths in inches (0: not given) and relative widths (0: not given).
librevenge::RVNGPropertyList table(const OdfProperties &table, const std::vector<double> &columnWidths,
                                   const std::vector<double> &relativeWidths = {});
librevenge::RVNGPropertyList row(const OdfProperties &row, bool header);
librevenge::RVNGPropertyList cell(const OdfProperties &cell, int column, int row, int columns, int rows);
librevenge::RVNGPropertyList frame(const OdfProperties &frame);
// A section's margins and its columns as librevenge gives them: "style:columns",
// one entry per column with its relative width and indents.
librevenge::RVNGPropertyList section(const OdfProperties &section);

} // namespace richtext::OdtProperties
