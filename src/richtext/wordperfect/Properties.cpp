#include "Properties.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace richtext::wordperfect {

using librevenge::RVNGPropertyList;

std::string textOf(const RVNGPropertyList &list, const char *name)
{
    const librevenge::RVNGProperty *property = list[name];
    return property ? property->getStr().cstr() : std::string();
}

namespace {

// The number a property's text starts with, whatever the user's locale: "0.5000in", "-58%".
std::optional<double> leadingNumber(const std::string &text, std::string *rest = nullptr)
{
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc())
        return std::nullopt;
    if (rest)
        *rest = std::string(end, text.data() + text.size());
    return number;
}

} // namespace

std::optional<double> inchesOf(const RVNGPropertyList &list, const char *name)
{
    const std::string value = textOf(list, name);
    std::string unit;
    const std::optional<double> parsed = leadingNumber(value, &unit);
    if (!parsed)
        return std::nullopt;
    const double number = *parsed;
    if (unit == "pt")
        return number / 72.0;
    if (unit == "cm")
        return number / 2.54;
    if (unit == "mm")
        return number / 25.4;
    if (unit == "*")
        return number / 1440.0;
    if (unit == "pc")
        return number / 6.0;
    return number;
}

int wpu(double inches)
{
    return static_cast<int>(std::lround(inches * 1200.0));
}

int lightness(std::uint32_t rgb)
{
    return static_cast<int>((299 * ((rgb >> 16) & 0xFF) + 587 * ((rgb >> 8) & 0xFF) + 114 * (rgb & 0xFF)) /
                            255);
}

bool isNone(const std::string &value)
{
    return value.empty() || value == "none";
}

CharacterFormat characterFormatOf(const RVNGPropertyList &list)
{
    CharacterFormat format;
    auto set = [&](int attribute) { format.attributes |= 1u << attribute; };
    const std::string weight = textOf(list, "fo:font-weight");
    if (weight == "bold" || weight == "bolder" || std::atoi(weight.c_str()) >= 600)
        set(bold);
    const std::string style = textOf(list, "fo:font-style");
    if (style == "italic" || style == "oblique")
        set(italic);
    const std::string underlineType = textOf(list, "style:text-underline-type");
    const std::string underlineStyle = textOf(list, "style:text-underline-style");
    if (underlineType == "double")
        set(doubleUnderline);
    else if (!isNone(underlineStyle) || (!isNone(underlineType) && !underlineType.empty()))
        set(underline);
    if (!isNone(textOf(list, "style:text-line-through-style")) ||
        !isNone(textOf(list, "style:text-line-through-type")))
        set(strikeout);
    const std::string position = textOf(list, "style:text-position");
    if (position.rfind("super", 0) == 0 || (!position.empty() && leadingNumber(position).value_or(0) > 0))
        set(superscript);
    else if (position.rfind("sub", 0) == 0 || (!position.empty() && leadingNumber(position).value_or(0) < 0))
        set(subscript);
    if (textOf(list, "fo:font-variant") == "small-caps")
        set(smallCaps);
    format.capitals = textOf(list, "fo:text-transform") == "uppercase";
    if (textOf(list, "style:text-outline") == "true")
        set(outline);
    if (!isNone(textOf(list, "fo:text-shadow")))
        set(shadow);
    format.font = textOf(list, "style:font-name");
    if (const auto size = inchesOf(list, "fo:font-size"))
        format.size = static_cast<int>(std::lround(*size * 72.0 * 50.0));
    const std::string colour = textOf(list, "fo:color");
    if (colour.size() == 7 && colour[0] == '#')
        format.colour = static_cast<std::uint32_t>(std::strtoul(colour.c_str() + 1, nullptr, 16));
    const std::string background = textOf(list, "fo:background-color");
    if (background.size() == 7 && background[0] == '#')
        format.highlight = static_cast<std::uint32_t>(std::strtoul(background.c_str() + 1, nullptr, 16));
    return format;
}

ParagraphFormat paragraphFormatOf(const RVNGPropertyList &list)
{
    ParagraphFormat format;
    const std::string align = textOf(list, "fo:text-align");
    if (align == "center")
        format.justification = 2;
    else if (align == "end" || align == "right")
        format.justification = 3;
    else if (align == "justify")
        format.justification = 1;
    format.leftIndent = wpu(inchesOf(list, "fo:margin-left").value_or(0));
    format.rightIndent = wpu(inchesOf(list, "fo:margin-right").value_or(0));
    format.firstLine = wpu(inchesOf(list, "fo:text-indent").value_or(0));
    const std::string height = textOf(list, "fo:line-height");
    if (!height.empty() && height.back() == '%') {
        const double ratio = leadingNumber(height).value_or(0) / 100.0;
        if (ratio > 0.2 && ratio < 10)
            format.lineSpacing = static_cast<int>(std::lround(ratio * 65536.0));
    }
    if (const auto spacing = inchesOf(list, "style:tab-stop-distance"); spacing && *spacing > 0.01)
        format.tabSpacing = wpu(*spacing);
    // Our readers name the stops as librevenge does; libwpd, and so older callers, as ODF does.
    const librevenge::RVNGPropertyListVector *tabs = list.child("librevenge:tab-stops");
    if (!tabs)
        tabs = list.child("style:tab-stops");
    if (tabs) {
        for (unsigned long i = 0; i < tabs->count(); ++i) {
            TabStop stop;
            stop.position = wpu(inchesOf((*tabs)[i], "style:position").value_or(0));
            const std::string type = textOf((*tabs)[i], "style:type");
            stop.kind = type == "center" ? 1 : type == "right" ? 2 : type == "char" ? 3 : 0;
            const std::string leader = textOf((*tabs)[i], "style:leader-text");
            stop.dotLeader = !leader.empty() && leader != " ";
            format.tabs.push_back(stop);
        }
    }
    return format;
}

} // namespace richtext::wordperfect
