#include "OdtProperties.h"

#include "Units.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <vector>

namespace richtext::OdtProperties {
namespace {

using librevenge::RVNGPropertyList;

const OdfProperties::mapped_type *find(const OdfProperties &properties, const std::string &name)
{
    const auto found = properties.find(name);
    return found == properties.end() ? nullptr : &found->second;
}

void addLength(RVNGPropertyList &into, const OdfProperties &from, const std::string &name,
               const char *as = nullptr)
{
    if (const auto *value = find(from, name))
        if (const auto inches = Units::parseInches(*value))
            into.insert(as ? as : name.c_str(), *inches);
}

void addText(RVNGPropertyList &into, const OdfProperties &from, const std::string &name)
{
    if (const auto *value = find(from, name))
        into.insert(name.c_str(), value->c_str());
}

// fo:margin, fo:border and fo:padding shorthands, spelled out per side.
OdfProperties expanded(const OdfProperties &properties)
{
    OdfProperties result = properties;
    for (const char *shorthand : {"fo:margin", "fo:border", "fo:padding"}) {
        const auto *value = find(properties, shorthand);
        if (!value)
            continue;
        for (const char *side : {"-left", "-right", "-top", "-bottom"})
            result.emplace(std::string(shorthand) + side, *value);
    }
    return result;
}

// Columns as librevenge gives them: the count and the gap always, and "style:columns" with one
// entry per column (its relative width and indents) when the columns give their widths.
void addColumns(RVNGPropertyList &list, const OdfProperties &odf)
{
    librevenge::RVNGPropertyListVector columns;
    for (int number = 1;; ++number) {
        const std::string prefix = "column" + std::to_string(number) + "/";
        if (!odf.count(prefix + "style:rel-width"))
            break;
        OdfProperties column;
        for (const char *name : {"style:rel-width", "fo:start-indent", "fo:end-indent"})
            if (const auto found = odf.find(prefix + name); found != odf.end())
                column[name] = found->second;
        RVNGPropertyList entry;
        addLength(entry, column, "fo:start-indent");
        addLength(entry, column, "fo:end-indent");
        addText(entry, column, "style:rel-width");
        columns.append(entry);
    }
    const auto count = odf.find("columns/fo:column-count");
    if (count != odf.end() && std::atoi(count->second.c_str()) > 1) {
        list.insert("fo:column-count", std::atoi(count->second.c_str()));
        addLength(list, odf, "columns/fo:column-gap", "fo:column-gap");
    }
    if (columns.count() > 1)
        list.insert("style:columns", columns);
}

} // namespace

void addParagraph(RVNGPropertyList &into, const OdfProperties &odf,
                  const std::vector<OdtStyles::TabStop> &tabStops)
{
    const OdfProperties paragraph = expanded(odf);
    if (const auto *align = find(paragraph, "fo:text-align"))
        into.insert("fo:text-align", align->c_str());
    for (const char *name : {"fo:margin-left", "fo:margin-right", "fo:margin-top", "fo:margin-bottom",
                             "fo:text-indent", "style:line-height-at-least", "style:tab-stop-distance"})
        addLength(into, paragraph, name);
    if (const auto *height = find(paragraph, "fo:line-height")) {
        if (const auto share = Units::parsePercent(*height))
            into.insert("fo:line-height", *share, librevenge::RVNG_PERCENT);
        else if (const auto inches = Units::parseInches(*height))
            into.insert("fo:line-height", *inches);
    }
    for (const char *name :
         {"fo:break-before", "fo:break-after", "fo:keep-with-next", "fo:keep-together", "fo:widows",
          "fo:orphans", "fo:background-color", "fo:border-left", "fo:border-right", "fo:border-top",
          "fo:border-bottom", "style:writing-mode", "style:contextual-spacing"})
        addText(into, paragraph, name);
    if (!tabStops.empty()) {
        librevenge::RVNGPropertyListVector stops;
        for (const OdtStyles::TabStop &stop : tabStops) {
            RVNGPropertyList tab;
            addLength(tab, stop.properties, "style:position");
            for (const char *name : {"style:type", "style:char", "style:leader-text"})
                addText(tab, stop.properties, name);
            const auto *leader = find(stop.properties, "style:leader-style");
            if (leader && *leader != "none" && !find(stop.properties, "style:leader-text"))
                tab.insert("style:leader-text", ".");
            stops.append(tab);
        }
        into.insert("librevenge:tab-stops", stops);
    }
}

void addText(RVNGPropertyList &into, const OdfProperties &text, const OdtStyles &styles)
{
    if (const auto *name = find(text, "style:font-name"))
        into.insert("style:font-name", styles.fontFamily(*name).c_str());
    else if (const auto *family = find(text, "fo:font-family"))
        into.insert("style:font-name", styles.fontFamily(*family).c_str());
    if (const auto *size = find(text, "fo:font-size"))
        if (const auto inches = Units::parseInches(*size))
            into.insert("fo:font-size", *inches * 72, librevenge::RVNG_POINT);
    for (const char *name :
         {"fo:font-weight", "fo:font-style", "style:text-underline-type", "style:text-underline-style",
          "style:text-underline-mode", "style:text-underline-width", "style:text-line-through-type",
          "style:text-line-through-style", "style:text-position", "fo:font-variant", "fo:text-transform",
          "fo:color", "style:text-outline", "fo:text-shadow", "text:display", "style:font-relief",
          "style:text-scale", "fo:language", "fo:country"})
        addText(into, text, name);
    if (const auto *background = find(text, "fo:background-color");
        background && *background != "transparent")
        into.insert("fo:background-color", background->c_str());
    addLength(into, text, "fo:letter-spacing");
}

Script scriptOf(char32_t c)
{
    if (c < 0x80)
        return (c | 0x20) >= 'a' && (c | 0x20) <= 'z' ? Script::western : Script::neutral;
    if ((c >= 0x00A0 && c <= 0x00BF) || c == 0x00D7 || c == 0x00F7 || (c >= 0x2000 && c <= 0x2BFF) ||
        (c >= 0xF000 && c <= 0xF0FF) || (c >= 0xFE00 && c <= 0xFE0F))
        return Script::neutral; // punctuation, symbols and spaces take the script around them
    if ((c >= 0x0590 && c <= 0x08FF) || (c >= 0x0900 && c <= 0x0DFF) || (c >= 0x0E00 && c <= 0x0FFF) ||
        (c >= 0x1000 && c <= 0x109F) || (c >= 0x1780 && c <= 0x17FF) || (c >= 0xFB1D && c <= 0xFDFF) ||
        (c >= 0xFE70 && c <= 0xFEFF))
        return Script::complex;
    if ((c >= 0x1100 && c <= 0x11FF) || (c >= 0x2E80 && c <= 0x9FFF) || (c >= 0xA000 && c <= 0xA4CF) ||
        (c >= 0xAC00 && c <= 0xD7AF) || (c >= 0xF900 && c <= 0xFAFF) || (c >= 0xFE30 && c <= 0xFE4F) ||
        (c >= 0xFF00 && c <= 0xFFEF) || c >= 0x20000)
        return Script::asian;
    return Script::western;
}

OdfProperties forScript(const OdfProperties &text, Script script)
{
    if (script != Script::asian && script != Script::complex)
        return text;
    const std::string suffix = script == Script::asian ? "-asian" : "-complex";
    OdfProperties own = text;
    const auto take = [&](const std::string &western, const std::string &scripts) {
        if (const auto found = text.find(scripts + suffix); found != text.end())
            own[western] = found->second;
    };
    if (text.count("style:font-name" + suffix) || text.count("style:font-family" + suffix)) {
        own.erase("style:font-name");
        own.erase("fo:font-family");
    }
    take("style:font-name", "style:font-name");
    take("fo:font-family", "style:font-family");
    take("fo:font-size", "style:font-size");
    take("fo:font-weight", "style:font-weight");
    take("fo:font-style", "style:font-style");
    take("fo:language", "style:language");
    take("fo:country", "style:country");
    return own;
}

RVNGPropertyList pageSpan(const OdfProperties &odf)
{
    const OdfProperties page = expanded(odf);
    RVNGPropertyList list;
    for (const char *name : {"fo:page-width", "fo:page-height", "fo:margin-left", "fo:margin-right",
                             "fo:margin-top", "fo:margin-bottom"})
        addLength(list, page, name);
    addText(list, page, "style:print-orientation");
    addText(list, page, "style:num-format");
    addColumns(list, page);
    return list;
}

RVNGPropertyList headerFooter(const OdfProperties &odf, const std::string &occurrence)
{
    const OdfProperties properties = expanded(odf);
    RVNGPropertyList list;
    list.insert("librevenge:occurrence", occurrence.c_str());
    for (const char *name :
         {"fo:min-height", "fo:margin-bottom", "fo:margin-top", "fo:margin-left", "fo:margin-right"})
        addLength(list, properties, name);
    // Word's headers: the spacing shrinks as the header grows, within the least height.
    addText(list, properties, "style:dynamic-spacing");
    return list;
}

namespace {

// LibreOffice spells a label out whole ("%1%.%2%)": levels 1 and 2, then a parenthesis) and leaves
// display-levels at a value it no longer uses; the pattern decides when it is there and names the
// levels just above this one, as labels do.
void applyLabelPattern(RVNGPropertyList &list, const std::string &pattern, int depth)
{
    std::vector<int> levels;
    std::size_t first = std::string::npos, last = 0;
    for (std::size_t at = pattern.find('%'); at != std::string::npos; at = pattern.find('%', at + 1)) {
        const std::size_t close = pattern.find('%', at + 1);
        if (close == std::string::npos || close == at + 1 || close - at > 3)
            break;
        const std::string digits = pattern.substr(at + 1, close - at - 1);
        if (digits.find_first_not_of("0123456789") != std::string::npos)
            continue;
        levels.push_back(std::atoi(digits.c_str()));
        first = std::min(first, at);
        last = close + 1;
        at = close;
    }
    if (levels.empty() || levels.back() != depth)
        return;
    for (std::size_t i = 1; i < levels.size(); ++i)
        if (levels[i] != levels[i - 1] + 1)
            return;
    list.insert("text:display-levels", static_cast<int>(levels.size()));
    list.insert("style:num-prefix", pattern.substr(0, first).c_str());
    list.insert("style:num-suffix", pattern.substr(last).c_str());
}

} // namespace

RVNGPropertyList listLevel(const OdtStyles::ListLevel &level, int depth, int listId, std::optional<int> start)
{
    RVNGPropertyList list;
    list.insert("librevenge:list-id", listId);
    list.insert("librevenge:level", depth);
    const OdfProperties &odf = level.properties;
    if (level.ordered) {
        for (const char *name : {"style:num-format", "style:num-prefix", "style:num-suffix"})
            addText(list, odf, name);
        if (!find(odf, "style:num-format"))
            list.insert("style:num-format", "1");
        if (const auto *levels = find(odf, "text:display-levels"))
            list.insert("text:display-levels", std::atoi(levels->c_str()));
        const auto *given = find(odf, "text:start-value");
        list.insert("text:start-value", start.value_or(given ? std::atoi(given->c_str()) : 1));
        if (const auto *pattern = find(odf, "loext:num-list-format"))
            applyLabelPattern(list, *pattern, depth);
    } else {
        const auto *bullet = find(odf, "text:bullet-char");
        list.insert("text:bullet-char", bullet && !bullet->empty() ? bullet->c_str() : "\xE2\x80\xA2");
    }
    // ODF 1.2 lists place the label by margin and indent; older ones by space-before and label width.
    if (const auto *margin = find(odf, "label-alignment/fo:margin-left")) {
        const double left = Units::parseInches(*margin).value_or(0);
        const auto *indent = find(odf, "label-alignment/fo:text-indent");
        const double width = indent ? -Units::parseInches(*indent).value_or(0) : 0.25;
        list.insert("text:space-before", left - width);
        list.insert("text:min-label-width", width);
    } else {
        addLength(list, odf, "text:space-before");
        addLength(list, odf, "text:min-label-width");
    }
    return list;
}

RVNGPropertyList table(const OdfProperties &odf, const std::vector<double> &columnWidths,
                       const std::vector<double> &relativeWidths)
{
    const OdfProperties properties = expanded(odf);
    RVNGPropertyList list;
    for (const char *name :
         {"style:width", "fo:margin-left", "fo:margin-right", "fo:margin-top", "fo:margin-bottom"})
        addLength(list, properties, name);
    addText(list, properties, "table:align");
    addText(list, properties, "fo:break-before");
    addText(list, properties, "style:rel-width");
    librevenge::RVNGPropertyListVector columns;
    for (std::size_t i = 0; i < columnWidths.size(); ++i) {
        RVNGPropertyList column;
        if (columnWidths[i] > 0)
            column.insert("style:column-width", columnWidths[i]);
        if (i < relativeWidths.size() && relativeWidths[i] > 0)
            column.insert("style:rel-column-width", relativeWidths[i], librevenge::RVNG_GENERIC);
        columns.append(column);
    }
    list.insert("librevenge:table-columns", columns);
    return list;
}

RVNGPropertyList row(const OdfProperties &odf, bool header)
{
    RVNGPropertyList list;
    addLength(list, odf, "style:row-height");
    addLength(list, odf, "style:min-row-height");
    if (header)
        list.insert("librevenge:is-header-row", true);
    return list;
}

RVNGPropertyList cell(const OdfProperties &odf, int column, int row, int columns, int rows)
{
    const OdfProperties properties = expanded(odf);
    RVNGPropertyList list;
    list.insert("librevenge:column", column);
    list.insert("librevenge:row", row);
    if (columns > 0)
        list.insert("table:number-columns-spanned", columns);
    if (rows > 0)
        list.insert("table:number-rows-spanned", rows);
    for (const char *name :
         {"fo:border-left", "fo:border-right", "fo:border-top", "fo:border-bottom", "style:vertical-align"})
        addText(list, properties, name);
    if (const auto *background = find(properties, "fo:background-color");
        background && *background != "transparent")
        list.insert("fo:background-color", background->c_str());
    for (const char *name : {"fo:padding-left", "fo:padding-right", "fo:padding-top", "fo:padding-bottom"})
        addLength(list, properties, name);
    return list;
}

RVNGPropertyList frame(const OdfProperties &odf)
{
    RVNGPropertyList list;
    for (const char *name : {"svg:width", "svg:height", "svg:x", "svg:y", "fo:min-width", "fo:min-height"})
        addLength(list, odf, name);
    for (const char *name : {"text:anchor-type", "style:wrap", "style:horizontal-pos", "style:horizontal-rel",
                             "style:vertical-pos", "style:vertical-rel"})
        addText(list, odf, name);
    return list;
}

RVNGPropertyList section(const OdfProperties &odf)
{
    RVNGPropertyList list;
    for (const char *name : {"fo:margin-left", "fo:margin-right"})
        addLength(list, odf, name);
    addText(list, odf, "text:dont-balance-text-columns");
    addColumns(list, odf);
    return list;
}

} // namespace richtext::OdtProperties
