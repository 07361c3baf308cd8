#include "RtfFormat.h"

#include "RtfText.h"
#include "Units.h"

#include <cmath>
#include <cstdio>
#include <map>
#include <sstream>

namespace richtext {

using librevenge::RVNGPropertyList;

RtfPalette::RtfPalette()
{
    // \deff0 is what \plain returns to, and so the font of a line that holds no text. Our
    // ODT of a WordPerfect document, like LibreOffice's own import, sets such a line in the
    // reader's default serif at 12 points; so does the RTF, not in whichever font came first.
    font("Times New Roman");
}

int RtfPalette::font(const std::string &name)
{
    const auto [at, added] = fontIndex.emplace(name, static_cast<int>(fonts.size()));
    if (added)
        fonts.push_back(name);
    return at->second;
}

int RtfPalette::colour(const std::string &hex)
{
    if (hex.size() != 7 || hex[0] != '#')
        return -1;
    unsigned value = 0;
    for (std::size_t i = 1; i < 7; ++i) {
        const char c = hex[i];
        const int digit = c >= '0' && c <= '9'   ? c - '0'
                          : c >= 'a' && c <= 'f' ? c - 'a' + 10
                          : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                 : -1;
        if (digit < 0)
            return -1;
        value = value * 16 + static_cast<unsigned>(digit);
    }
    const auto [at, added] = colourIndex.emplace(value, static_cast<int>(colours.size()) + 1);
    if (added)
        colours.push_back(value);
    return at->second;
}

std::string RtfPalette::fontTable() const
{
    std::string table = "{\\fonttbl";
    for (std::size_t i = 0; i < fonts.size(); ++i)
        table += "{\\f" + std::to_string(i) + "\\fnil " + RtfText::escape(fonts[i]) + ";}";
    return table + "}";
}

std::string RtfPalette::colourTable() const
{
    std::string table = "{\\colortbl;";
    for (const unsigned value : colours)
        table += "\\red" + std::to_string(value >> 16) + "\\green" + std::to_string((value >> 8) & 0xFF) +
                 "\\blue" + std::to_string(value & 0xFF) + ";";
    return table + "}";
}

namespace RtfFormat {
namespace {

std::string text(const RVNGPropertyList &list, const char *name)
{
    return Units::text(list, name).value_or("");
}

std::string number(const char *word, double inches)
{
    return std::string(word) + std::to_string(twips(inches));
}

std::string underline(const RVNGPropertyList &span)
{
    const std::string type = text(span, "style:text-underline-type");
    const std::string style = text(span, "style:text-underline-style");
    if (type == "none" || style == "none" || (type.empty() && style.empty()))
        return {};
    if (type == "double")
        return "\\uldb";
    if (text(span, "style:text-underline-mode") == "skip-white-space")
        return "\\ulw";
    if (style == "dotted")
        return "\\uld";
    if (style == "dash" || style == "long-dash")
        return "\\uldash";
    if (style == "wave")
        return "\\ulwave";
    return "\\ul";
}

std::string strikeThrough(const RVNGPropertyList &span)
{
    const std::string type = text(span, "style:text-line-through-type");
    const std::string style = text(span, "style:text-line-through-style");
    if (type == "none" || style == "none" || (type.empty() && style.empty()))
        return {};
    return type == "double" ? "\\striked1" : "\\strike";
}

// "super 58%", "sub", "33% 58%", "-33%": raised, lowered or neither.
std::string position(const RVNGPropertyList &span)
{
    const std::string value = text(span, "style:text-position");
    if (value.rfind("super", 0) == 0)
        return "\\super";
    if (value.rfind("sub", 0) == 0)
        return "\\sub";
    const auto first = Units::parsePercent(value.substr(0, value.find(' ')));
    if (first && *first > 0)
        return "\\super";
    if (first && *first < 0)
        return "\\sub";
    return {};
}

bool isBold(const std::string &weight)
{
    if (weight == "bold" || weight == "bolder")
        return true;
    int numeric = 0;
    return std::sscanf(weight.c_str(), "%d", &numeric) == 1 && numeric >= 600;
}

std::string tabStops(const RVNGPropertyList &paragraph)
{
    const librevenge::RVNGPropertyListVector *stops = paragraph.child("librevenge:tab-stops");
    if (!stops)
        return {};
    // ODF measures tab stops from the paragraph's indent, RTF from the margin.
    const double indent = Units::inches(paragraph, "fo:margin-left").value_or(0);
    std::string words;
    for (unsigned long i = 0; i < stops->count(); ++i) {
        const RVNGPropertyList &stop = (*stops)[i];
        const auto at = Units::inches(stop, "style:position");
        if (!at)
            continue;
        // A left stop and a stop without leader need no word of their own.
        static const std::map<std::string, std::string> alignments{
            {"right", "\\tqr"}, {"center", "\\tqc"}, {"char", "\\tqdec"}};
        static const std::map<std::string, std::string> leaders{
            {".", "\\tldot"}, {"-", "\\tlhyph"}, {"_", "\\tlul"}, {"\xC2\xB7", "\\tlmdot"}};
        if (const auto alignment = alignments.find(text(stop, "style:type")); alignment != alignments.end())
            words += alignment->second;
        if (const auto leader = leaders.find(text(stop, "style:leader-text")); leader != leaders.end())
            words += leader->second;
        words += number("\\tx", indent + *at);
    }
    return words;
}

std::string lineSpacing(const RVNGPropertyList &paragraph)
{
    if (const auto share = Units::fraction(paragraph, "fo:line-height")) {
        if (std::abs(*share - 1.0) < 1e-6)
            return {};
        return "\\sl" + std::to_string(static_cast<int>(std::lround(240 * *share))) + "\\slmult1";
    }
    if (const auto exact = Units::inches(paragraph, "fo:line-height"))
        return number("\\sl-", *exact);
    if (const auto least = Units::inches(paragraph, "style:line-height-at-least"))
        return number("\\sl", *least) + "\\slmult0";
    return {};
}

} // namespace

int twips(double inches)
{
    if (!std::isfinite(inches))
        return 0;
    const double value = std::round(inches * 1440);
    return static_cast<int>(std::max(-32767.0 * 64, std::min(32767.0 * 64, value)));
}

std::string character(const RVNGPropertyList &span, RtfPalette &palette)
{
    std::string words;
    if (const auto name = Units::text(span, "style:font-name"); name && !name->empty())
        words += "\\f" + std::to_string(palette.font(*name));
    // Text in complex scripts (Tibetan, Hebrew, Thai...) takes its size and
    // weight from the associated words that \rtlch introduces; without them
    // readers use their defaults. \ltrch turns the run's direction back.
    std::string complex;
    if (const auto size = Units::points(span, "fo:font-size"); size && *size > 0 && *size < 1638) {
        const std::string halfPoints = std::to_string(static_cast<int>(std::lround(*size * 2)));
        words += "\\fs" + halfPoints;
        complex += "\\afs" + halfPoints;
    }
    if (isBold(text(span, "fo:font-weight"))) {
        words += "\\b";
        complex += "\\ab";
    }
    const std::string style = text(span, "fo:font-style");
    if (style == "italic" || style == "oblique") {
        words += "\\i";
        complex += "\\ai";
    }
    if (!complex.empty())
        words = "\\rtlch" + complex + "\\ltrch" + words;
    words += underline(span);
    words += strikeThrough(span);
    words += position(span);
    if (text(span, "fo:font-variant") == "small-caps")
        words += "\\scaps";
    if (text(span, "fo:text-transform") == "uppercase")
        words += "\\caps";
    if (const int colour = palette.colour(text(span, "fo:color")); colour > 0)
        words += "\\cf" + std::to_string(colour);
    if (const int colour = palette.colour(text(span, "fo:background-color")); colour > 0)
        words += "\\chcbpat" + std::to_string(colour);
    if (text(span, "style:text-outline") == "true")
        words += "\\outl";
    if (const std::string shadow = text(span, "fo:text-shadow"); !shadow.empty() && shadow != "none")
        words += "\\shad";
    if (text(span, "text:display") == "none")
        words += "\\v";
    if (const auto spacing = Units::inches(span, "fo:letter-spacing"); spacing && *spacing != 0)
        words += number("\\expndtw", *spacing);
    return words;
}

std::string paragraph(const RVNGPropertyList &paragraph, RtfPalette &palette)
{
    std::string words;
    const std::string align = text(paragraph, "fo:text-align");
    if (align == "center")
        words += "\\qc";
    else if (align == "right" || align == "end")
        words += "\\qr";
    else if (align == "justify" || align == "full")
        words += "\\qj";
    else
        words += "\\ql";
    if (const auto value = Units::inches(paragraph, "fo:margin-left"))
        words += number("\\li", *value);
    if (const auto value = Units::inches(paragraph, "fo:margin-right"))
        words += number("\\ri", *value);
    if (const auto value = Units::inches(paragraph, "fo:text-indent"))
        words += number("\\fi", *value);
    if (const auto value = Units::inches(paragraph, "fo:margin-top"))
        words += number("\\sb", *value);
    if (const auto value = Units::inches(paragraph, "fo:margin-bottom"))
        words += number("\\sa", *value);
    words += lineSpacing(paragraph);
    if (text(paragraph, "fo:break-before") == "page")
        words += "\\pagebb";
    if (text(paragraph, "fo:keep-with-next") == "always")
        words += "\\keepn";
    if (text(paragraph, "fo:keep-together") == "always")
        words += "\\keep";
    if (const auto level = Units::integer(paragraph, "text:outline-level");
        level && *level >= 1 && *level <= 9)
        words += "\\outlinelevel" + std::to_string(*level - 1);
    if (const int colour = palette.colour(text(paragraph, "fo:background-color")); colour > 0)
        words += "\\cbpat" + std::to_string(colour);
    words += tabStops(paragraph);
    return words;
}

std::string field(const std::string &librevengeType, const std::string &numberFormat)
{
    const char *format = numberFormat == "i"   ? "roman"
                         : numberFormat == "I" ? "ROMAN"
                         : numberFormat == "a" ? "alphabetic"
                         : numberFormat == "A" ? "ALPHABETIC"
                                               : nullptr;
    if (librevengeType == "text:page-number" && format)
        return std::string("{\\field{\\*\\fldinst{ PAGE \\\\* ") + format + " }}{\\fldrslt{}}}";
    if (librevengeType == "text:page-number")
        return "{\\chpgn}";
    // Fields show their last value until a reader updates them; they start with none.
    const char *instruction = librevengeType == "text:page-count" ? "NUMPAGES"
                              : librevengeType == "text:date"     ? "DATE"
                              : librevengeType == "text:time"     ? "TIME"
                                                                  : nullptr;
    if (!instruction)
        return {};
    return std::string("{\\field{\\*\\fldinst{ ") + instruction + " }}{\\fldrslt{}}}";
}

std::string border(const std::string &odfBorder, RtfPalette &palette)
{
    std::istringstream parts(odfBorder);
    std::string part;
    std::string style = "\\brdrs";
    double width = 1.0 / 1440;
    int colour = -1;
    bool none = odfBorder.empty();
    while (parts >> part) {
        if (part == "none" || part == "hidden")
            none = true;
        else if (part == "double")
            style = "\\brdrdb";
        else if (part == "dotted")
            style = "\\brdrdot";
        else if (part == "dashed")
            style = "\\brdrdash";
        else if (part[0] == '#')
            colour = palette.colour(part);
        else if (const auto inches = Units::parseInches(part))
            width = *inches;
    }
    if (none || width <= 0)
        return {};
    // ODF gives a double line's whole width, both lines and the gap between; RTF the width of one
    // line, the gap as wide.
    if (style == "\\brdrdb")
        width /= 3;
    std::string words = style + "\\brdrw" + std::to_string(std::max(1, std::min(255, twips(width))));
    if (colour > 0)
        words += "\\brdrcf" + std::to_string(colour);
    return words;
}

std::string page(const RVNGPropertyList &pageSpan, bool section)
{
    const std::pair<const char *, std::pair<const char *, const char *>> sizes[] = {
        {"fo:page-width", {"\\pgwsxn", "\\paperw"}},   {"fo:page-height", {"\\pghsxn", "\\paperh"}},
        {"fo:margin-left", {"\\marglsxn", "\\margl"}}, {"fo:margin-right", {"\\margrsxn", "\\margr"}},
        {"fo:margin-top", {"\\margtsxn", "\\margt"}},  {"fo:margin-bottom", {"\\margbsxn", "\\margb"}},
    };
    std::string words;
    for (const auto &[name, rtfWords] : sizes)
        if (const auto value = Units::inches(pageSpan, name))
            words += number(section ? rtfWords.first : rtfWords.second, *value);
    if (text(pageSpan, "style:print-orientation") == "landscape")
        words += section ? "\\lndscpsxn" : "\\landscape";
    if (!section)
        return words;
    const std::string format = text(pageSpan, "style:num-format");
    words += format == "i"   ? "\\pgnlcrm"
             : format == "I" ? "\\pgnucrm"
             : format == "a" ? "\\pgnlcltr"
             : format == "A" ? "\\pgnucltr"
                             : "\\pgndec";
    return words;
}

std::string tabStop(double inches)
{
    return number("\\tx", std::max(0.0, inches));
}

std::string pageNumberRestart(const RVNGPropertyList &pageSpan)
{
    const std::optional<int> first = Units::integer(pageSpan, "style:page-number");
    if (!first || *first < 0)
        return {};
    // The start first: LibreOffice restarts at the number it holds when it reads \pgnrestart.
    return "\\pgnstarts" + std::to_string(*first) + "\\pgnrestart";
}

std::string columns(const RVNGPropertyList &section)
{
    int count = Units::integer(section, "fo:column-count").value_or(1);
    double gap = Units::inches(section, "fo:column-gap").value_or(0.5);
    if (const librevenge::RVNGPropertyListVector *each = section.child("style:columns");
        each && each->count() > 1) {
        count = static_cast<int>(each->count());
        // The space between two columns is the first's end indent and the second's start indent.
        gap = Units::inches((*each)[0], "fo:end-indent").value_or(0) +
              Units::inches((*each)[1], "fo:start-indent").value_or(0);
    }
    if (count < 2)
        return {};
    return "\\cols" + std::to_string(std::min(count, 99)) + number("\\colsx", gap);
}

} // namespace RtfFormat
} // namespace richtext
