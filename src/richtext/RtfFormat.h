#pragma once

#include <librevenge/librevenge.h>

#include <map>
#include <string>
#include <vector>

// Turns librevenge's ODF-named properties into RTF control words, and keeps
// the font and colour tables that those words refer to.
namespace richtext {

class RtfPalette {
public:
    RtfPalette();
    // The index of a font in \fonttbl, added on first use.
    int font(const std::string &name);
    // The index of "#rrggbb" in \colortbl (1-based: 0 is the automatic colour); -1 if not a colour.
    int colour(const std::string &hex);

    std::string fontTable() const;
    std::string colourTable() const;

private:
    std::vector<std::string> fonts;
    std::map<std::string, int> fontIndex;
    std::vector<unsigned> colours;
    std::map<unsigned, int> colourIndex;
};

namespace RtfFormat {

// A paragraph one point high, without its \par: for where readers want a
// paragraph (after a table, in a header) and the page wants none.
inline constexpr const char *hairline = "\\pard\\plain\\fs2\\sl-20\\slmult0";

int twips(double inches);

// \f, \fs, \b, \i, \ul..., \strike, \super/\sub, \scaps, \caps, \cf... for a span.
std::string character(const librevenge::RVNGPropertyList &span, RtfPalette &palette);

// \q*, \li, \ri, \fi, \sb, \sa, \sl, \tx..., \pagebb, \keepn... for a paragraph.
std::string paragraph(const librevenge::RVNGPropertyList &paragraph, RtfPalette &palette);

// \txN for a left tab stop this far from the margin.
std::string tabStop(double inches);

// A page number, page count, date or time field; empty for other kinds. A
// page number in letters or roman figures ("a", "I"...) says so itself.
std::string field(const std::string &librevengeType, const std::string &numberFormat = "1");

// \brdrs\brdrwN\brdrcfK for an ODF border such as "0.0007in solid #000000"; empty for none.
std::string border(const std::string &odfBorder, RtfPalette &palette);

// \pgwsxn... \marglsxn... for a page span's section, or \paperw... \margl... for the document.
// A section's also carry its page number format (\pgnlcrm...).
std::string page(const librevenge::RVNGPropertyList &pageSpan, bool section);

// \pgnstartsN\pgnrestart when the page span starts its page numbers anew.
std::string pageNumberRestart(const librevenge::RVNGPropertyList &pageSpan);

// \colsN\colsxM for a section's columns; empty for one column.
std::string columns(const librevenge::RVNGPropertyList &section);

} // namespace RtfFormat
} // namespace richtext
