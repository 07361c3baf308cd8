#include "HtmlFormat.h"
#include "XmlTree.h"
#include "Numbers.h"

#include "Units.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace richtext {
namespace {

using Xml::plainAttribute;
std::string lower(std::string text)
{
    return Xml::lowerAscii(std::move(text));
}

double fontPoints(const OdfProperties &text)
{
    const auto found = text.find("fo:font-size");
    return found == text.end() ? 12.0 : Units::parseInches(found->second).value_or(1.0 / 6) * 72;
}

std::string points(double value)
{
    return Numbers::fixed(value, 2) + "pt";
}

std::string inches(double value)
{
    return Numbers::fixed(value, 4) + "in";
}

void setBold(HtmlFormat &format)
{
    format.text["fo:font-weight"] = "bold";
}

// What the tag means before any style sheet speaks, as browsers show it.
void tagDefaults(const std::string &tag, const xmlNode *element, HtmlFormat &format)
{
    static const std::pair<const char *, double> headings[] = {{"h1", 24}, {"h2", 18}, {"h3", 14},
                                                               {"h4", 12}, {"h5", 10}, {"h6", 8}};
    for (const auto &[name, size] : headings)
        if (tag == name) {
            setBold(format);
            format.text["fo:font-size"] = points(size);
            format.paragraph["fo:margin-top"] = format.paragraph["fo:margin-bottom"] = inches(size / 144);
        }
    if (tag == "b" || tag == "strong" || tag == "th")
        setBold(format);
    if (tag == "i" || tag == "em" || tag == "cite" || tag == "var" || tag == "dfn" || tag == "address")
        format.text["fo:font-style"] = "italic";
    if (tag == "u" || tag == "ins") {
        format.text["style:text-underline-type"] = "single";
        format.text["style:text-underline-style"] = "solid";
    }
    if (tag == "s" || tag == "strike" || tag == "del") {
        format.text["style:text-line-through-type"] = "single";
        format.text["style:text-line-through-style"] = "solid";
    }
    if (tag == "sup")
        format.text["style:text-position"] = "super 58%";
    if (tag == "sub")
        format.text["style:text-position"] = "sub 58%";
    if (tag == "code" || tag == "tt" || tag == "kbd" || tag == "samp" || tag == "pre")
        format.text["style:font-name"] = "Courier New";
    if (tag == "pre")
        format.preformatted = true;
    if (tag == "small")
        format.text["fo:font-size"] = points(fontPoints(format.text) * 5 / 6);
    if (tag == "big")
        format.text["fo:font-size"] = points(fontPoints(format.text) * 6 / 5);
    if (tag == "center" || tag == "th")
        format.paragraph["fo:text-align"] = "center";
    if (tag == "blockquote")
        format.paragraph["fo:margin-left"] = format.paragraph["fo:margin-right"] = "0.5in";
    if (tag == "p")
        format.paragraph["fo:margin-bottom"] = "0.1667in";
    if (const std::string align = lower(plainAttribute(element, "align")); !align.empty())
        format.paragraph["fo:text-align"] = align == "middle" ? "center" : align;
    if (tag == "font") {
        if (const std::string face = plainAttribute(element, "face"); !face.empty())
            format.text["style:font-name"] = face.substr(0, face.find(','));
        if (const std::string colour = HtmlFormat::cssColour(plainAttribute(element, "color"));
            !colour.empty())
            format.text["fo:color"] = colour;
        // <font size> counts 1 to 7, 3 being the normal size; "+1" and "-1" move from it.
        if (const std::string size = plainAttribute(element, "size"); !size.empty()) {
            static const double sizes[] = {8, 10, 12, 14, 18, 24, 36};
            int step = std::atoi(size.c_str());
            if (size[0] == '+' || size[0] == '-')
                step += 3;
            format.text["fo:font-size"] = points(sizes[std::clamp(step, 1, 7) - 1]);
        }
    }
    if (tag == "ol" || tag == "ul") {
        // The type attribute of lists is case-sensitive: "a" and "A" differ.
        static const std::pair<const char *, const char *> types[] = {
            {"1", "decimal"},     {"a", "lower-alpha"}, {"A", "upper-alpha"}, {"i", "lower-roman"},
            {"I", "upper-roman"}, {"disc", "disc"},     {"circle", "circle"}, {"square", "square"}};
        const std::string type = plainAttribute(element, "type");
        for (const auto &[given, style] : types)
            if (type == given)
                format.listStyle = style;
    }
    if (tag == "td" || tag == "th") {
        if (const std::string colour = HtmlFormat::cssColour(plainAttribute(element, "bgcolor"));
            !colour.empty())
            format.cell["fo:background-color"] = colour;
        if (const std::string valign = lower(plainAttribute(element, "valign")); !valign.empty())
            format.cell["style:vertical-align"] = valign == "center" ? "middle" : valign;
        // width="120" counts pixels; a percentage says nothing about the column itself.
        if (const std::string width = plainAttribute(element, "width"); !width.empty() && width.back() != '%')
            if (const auto length = HtmlFormat::cssInches(
                    width + (std::isdigit(static_cast<unsigned char>(width.back())) ? "px" : ""), 12))
                format.cell["style:width"] = inches(*length);
    }
}

void textDecoration(const std::string &value, HtmlFormat &format)
{
    const std::string decoration = lower(value);
    if (decoration.find("none") != std::string::npos) {
        format.text["style:text-underline-style"] = "none";
        format.text["style:text-line-through-style"] = "none";
    }
    if (decoration.find("underline") != std::string::npos) {
        format.text["style:text-underline-type"] = "single";
        format.text["style:text-underline-style"] = "solid";
    }
    if (decoration.find("line-through") != std::string::npos) {
        format.text["style:text-line-through-type"] = "single";
        format.text["style:text-line-through-style"] = "solid";
    }
}

// margin: 1 to 4 lengths, as CSS spreads them over top, right, bottom, left.
void margins(const std::string &value, HtmlFormat &format, double size)
{
    std::istringstream parts(value);
    std::vector<std::string> lengths;
    for (std::string part; parts >> part;)
        lengths.push_back(part);
    if (lengths.empty() || lengths.size() > 4)
        return;
    // Sides left out copy others, as CSS says: right and bottom from top, left from right.
    while (lengths.size() < 4)
        lengths.push_back(lengths[lengths.size() == 3 ? 1 : 0]);
    const char *sides[] = {"fo:margin-top", "fo:margin-right", "fo:margin-bottom", "fo:margin-left"};
    for (int i = 0; i < 4; ++i)
        if (const auto length = HtmlFormat::cssInches(lengths[static_cast<std::size_t>(i)], size))
            format.paragraph[sides[i]] = inches(*length);
}

void declaration(const std::string &name, const std::string &rawValue, HtmlFormat &format, bool &raised,
                 bool &lowered)
{
    const std::string value = lower(rawValue);
    const double size = fontPoints(format.text);
    if (name == "font-weight") {
        const int weight = std::atoi(value.c_str());
        format.text["fo:font-weight"] =
            value == "bold" || value == "bolder" || weight >= 600 ? "bold" : "normal";
    } else if (name == "font-style") {
        format.text["fo:font-style"] = value == "italic" || value == "oblique" ? "italic" : "normal";
    } else if (name == "text-decoration" || name == "text-decoration-line") {
        textDecoration(value, format);
    } else if (name == "font-size") {
        if (const auto percent = Units::parsePercent(value))
            format.text["fo:font-size"] = points(size * *percent);
        else if (const auto length = HtmlFormat::cssInches(value, size))
            format.text["fo:font-size"] = points(*length * 72);
    } else if (name == "font-family") {
        std::string family = rawValue.substr(0, rawValue.find(','));
        std::erase_if(family, [](char c) { return c == '\'' || c == '"'; });
        format.text["style:font-name"] = family;
    } else if (name == "color") {
        if (const std::string colour = HtmlFormat::cssColour(value); !colour.empty())
            format.text["fo:color"] = colour;
    } else if (name == "background-color" || name == "background") {
        if (const std::string colour = HtmlFormat::cssColour(value.substr(0, value.find(' ')));
            !colour.empty())
            format.cell["fo:background-color"] = format.text["fo:background-color"] = colour;
    } else if (name == "vertical-align") {
        if (value == "super" || value == "sub")
            format.text["style:text-position"] = value + " 58%";
        else if (value == "top" || value == "middle" || value == "bottom")
            format.cell["style:vertical-align"] = value;
    } else if (name == "top" && format.text.count("html:position-relative")) {
        // A relatively raised or lowered run is how some generators write super- and subscript.
        const auto number = Numbers::leading(value);
        const double offset = number ? number->value : 0;
        raised = raised || offset < 0;
        lowered = lowered || offset > 0;
    } else if (name == "position") {
        if (value == "relative")
            format.text["html:position-relative"] = "true";
    } else if (name == "text-transform") {
        format.text["fo:text-transform"] = value;
    } else if (name == "font-variant") {
        format.text["fo:font-variant"] = value == "small-caps" ? "small-caps" : "normal";
    } else if (name == "text-align") {
        format.paragraph["fo:text-align"] = value;
    } else if (name == "margin") {
        margins(value, format, size);
    } else if (name.rfind("margin-", 0) == 0 || name == "text-indent") {
        if (const auto length = HtmlFormat::cssInches(value, size))
            format.paragraph[name == "text-indent" ? "fo:text-indent" : "fo:" + name] = inches(*length);
    } else if (name == "line-height") {
        if (const auto percent = Units::parsePercent(value))
            format.paragraph["fo:line-height"] = value;
        else if (value.find_first_not_of("0123456789.") == std::string::npos && !value.empty())
            format.paragraph["fo:line-height"] =
                Numbers::shortest(Numbers::leading(value).value_or(Numbers::Leading{1, 0}).value * 100) + "%";
        else if (const auto length = HtmlFormat::cssInches(value, size))
            format.paragraph["fo:line-height"] = inches(*length);
    } else if (name == "page-break-before" || name == "break-before") {
        if (value == "always" || value == "page")
            format.paragraph["fo:break-before"] = "page";
    } else if (name == "list-style-type" || name == "list-style") {
        format.listStyle = value.substr(0, value.find(' '));
    } else if (name == "display") {
        format.hidden = value == "none";
    } else if (name == "visibility") {
        format.hidden = value == "hidden";
    } else if (name == "white-space") {
        format.preformatted = value == "pre" || value == "pre-wrap";
    } else if (name.rfind("border", 0) == 0) {
        format.cell["fo:" + name] = value;
    } else if (name == "width") {
        if (const auto length = HtmlFormat::cssInches(value, size))
            format.cell["style:width"] = inches(*length);
    }
}

} // namespace

std::optional<double> HtmlFormat::cssInches(const std::string &value, double fontPoints)
{
    const std::string text = lower(value);
    if (text.size() > 2 && text.compare(text.size() - 2, 2, "em") == 0 &&
        text.find("rem") == std::string::npos) {
        const auto count = Units::parseInches(text.substr(0, text.size() - 2));
        return count ? std::optional<double>(*count * fontPoints / 72) : std::nullopt;
    }
    if (text == "0")
        return 0.0;
    if (text.find_first_not_of("0123456789.+-") == std::string::npos)
        return std::nullopt; // a unitless length means nothing in CSS
    return Units::parseInches(text);
}

std::string HtmlFormat::cssColour(const std::string &value)
{
    std::string text = lower(value);
    std::erase_if(text, [](char c) { return std::isspace(static_cast<unsigned char>(c)); });
    static const std::pair<const char *, const char *> names[] = {
        {"black", "#000000"},  {"white", "#ffffff"},  {"red", "#ff0000"},    {"green", "#008000"},
        {"blue", "#0000ff"},   {"yellow", "#ffff00"}, {"gray", "#808080"},   {"grey", "#808080"},
        {"silver", "#c0c0c0"}, {"maroon", "#800000"}, {"purple", "#800080"}, {"fuchsia", "#ff00ff"},
        {"lime", "#00ff00"},   {"olive", "#808000"},  {"navy", "#000080"},   {"teal", "#008080"},
        {"aqua", "#00ffff"},   {"orange", "#ffa500"},
    };
    for (const auto &[name, hex] : names)
        if (text == name)
            return hex;
    const bool hex = !text.empty() && text[0] == '#' && std::all_of(text.begin() + 1, text.end(), [](char c) {
        return std::isxdigit(static_cast<unsigned char>(c));
    });
    if (hex && text.size() == 7)
        return text;
    if (hex && text.size() == 4)
        return std::string("#") + text[1] + text[1] + text[2] + text[2] + text[3] + text[3];
    int red = 0, green = 0, blue = 0;
    if (std::sscanf(text.c_str(), "rgb(%d,%d,%d)", &red, &green, &blue) == 3 ||
        std::sscanf(text.c_str(), "rgba(%d,%d,%d", &red, &green, &blue) == 3) {
        char result[8];
        std::snprintf(result, sizeof result, "#%02x%02x%02x", std::clamp(red, 0, 255),
                      std::clamp(green, 0, 255), std::clamp(blue, 0, 255));
        return result;
    }
    return {};
}

HtmlFormat HtmlFormat::inside(const xmlNode *element, const HtmlFormat &outer, const CssStyles &sheet)
{
    HtmlFormat format;
    format.text = outer.text;
    format.text.erase("html:position-relative");
    format.preformatted = outer.preformatted;
    format.listStyle = outer.listStyle;
    if (const auto align = outer.paragraph.find("fo:text-align"); align != outer.paragraph.end())
        format.paragraph["fo:text-align"] = align->second;

    const std::string tag = lower(reinterpret_cast<const char *>(element->name));
    tagDefaults(tag, element, format);
    std::vector<std::string> classes;
    std::istringstream names(plainAttribute(element, "class"));
    for (std::string name; names >> name;)
        classes.push_back(lower(name));
    std::vector<CssDeclaration> declarations = sheet.declarationsFor(tag, classes);
    const std::vector<CssDeclaration> own = CssStyles::parseDeclarations(plainAttribute(element, "style"));
    declarations.insert(declarations.end(), own.begin(), own.end());

    // A raised run's em-sized font follows its position; keep the size it had.
    bool raised = false;
    bool lowered = false;
    const std::string sizeBefore = format.text.count("fo:font-size") ? format.text["fo:font-size"] : "";
    for (const auto &[name, value] : declarations)
        declaration(name, value, format, raised, lowered);
    if (raised || lowered) {
        format.text["style:text-position"] = raised ? "super 58%" : "sub 58%";
        std::string size = sizeBefore;
        for (const auto &[name, value] : declarations)
            if (name == "font-size" && !Units::parsePercent(value) &&
                lower(value).find("em") == std::string::npos)
                if (const auto length = cssInches(value, 12))
                    size = points(*length * 72);
        if (size.empty())
            format.text.erase("fo:font-size");
        else
            format.text["fo:font-size"] = size;
    }
    return format;
}

} // namespace richtext
