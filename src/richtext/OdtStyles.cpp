#include "OdtStyles.h"
#include "Numbers.h"

#include "OdfNames.h"
#include "Units.h"
#include "Utf8.h"
#include "XmlTree.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <set>

namespace richtext {
namespace {

using namespace OdfNames;

std::string key(const std::string &family, const std::string &name)
{
    return family + '\n' + name;
}

bool endsWith(const std::string &text, const char *suffix)
{
    const std::size_t length = std::strlen(suffix);
    return text.size() >= length && text.compare(text.size() - length, length, suffix) == 0;
}

OdfProperties attributesOf(const xmlNode *node)
{
    OdfProperties properties;
    for (auto &[name, value] : Xml::attributes(node))
        properties[name] = std::move(value);
    return properties;
}

// A section's or page layout's columns as "columns/fo:column-count" and "column1/fo:start-indent"...,
// numbered from 1.
void addColumns(const xmlNode *group, OdfProperties &properties)
{
    const xmlNode *columns = Xml::child(group, style, "columns");
    if (!columns)
        return;
    for (auto &[name, value] : attributesOf(columns))
        properties["columns/" + name] = value;
    int number = 0;
    for (const xmlNode *column : Xml::children(columns)) {
        if (!Xml::is(column, style, "column"))
            continue;
        const std::string prefix = "column" + std::to_string(++number) + "/";
        for (auto &[name, value] : attributesOf(column))
            properties[prefix + name] = value;
    }
}

// The first family of a CSS font list ("'Nimbus Mono L', 'Courier New'" -> "Nimbus Mono L"): the one
// the writer chose; the rest are its own fallbacks, and a target format holds one name.
std::string firstFamily(const std::string &families)
{
    std::string family;
    char quote = 0;
    for (const char c : families) {
        if (quote) {
            if (c == quote)
                quote = 0;
            else
                family += c;
        } else if (c == '\'' || c == '"') {
            quote = c;
        } else if (c == ',') {
            break;
        } else {
            family += c;
        }
    }
    const auto first = family.find_first_not_of(" \t");
    if (first == std::string::npos)
        return families;
    return family.substr(first, family.find_last_not_of(" \t") + 1 - first);
}

// A relative font size ("80%") becomes points against what it inherits.
void mergeText(OdfProperties &into, const OdfProperties &from)
{
    for (const auto &[name, value] : from) {
        if (name == "fo:font-size" && endsWith(value, "%")) {
            const double base =
                Units::parseInches(into.count(name) ? into[name] : "12pt").value_or(1.0 / 6) * 72;
            into[name] = Numbers::shortest(base * Units::parsePercent(value).value_or(1)) + "pt";
        } else if (name == "style:use-window-font-color" && value == "true") {
            into.erase("fo:color"); // the automatic colour, over any the parent style gives
        } else {
            into[name] = value;
        }
    }
}

} // namespace

void OdtStyles::load(const xmlNode *root, Scope automaticScope)
{
    for (const xmlNode *part : Xml::children(root)) {
        if (Xml::is(part, office, "font-face-decls")) {
            for (const xmlNode *face : Xml::children(part))
                if (const auto name = Xml::attribute(face, style, "name")) {
                    fontFamilies[*name] =
                        firstFamily(Xml::attribute(face, svg, "font-family").value_or(*name));
                    if (Xml::attribute(face, style, "font-charset").value_or("") == "x-symbol")
                        symbolEncodedFaces.insert(*name);
                }
        } else if (Xml::is(part, office, "styles")) {
            loadStyles(part, named, true);
            for (const xmlNode *element : Xml::children(part)) {
                if (Xml::is(element, text, "list-style"))
                    loadListStyle(element, namedLists);
                if (Xml::is(element, text, "outline-style")) {
                    ListStyles outlines;
                    loadListStyle(element, outlines);
                    if (!outlines.empty())
                        outline = outlines.begin()->second;
                }
            }
        } else if (Xml::is(part, office, "automatic-styles")) {
            loadStyles(part, automaticScope == Scope::body ? automaticBody : automaticMaster, false);
            for (const xmlNode *element : Xml::children(part)) {
                if (Xml::is(element, text, "list-style"))
                    loadListStyle(element, automaticScope == Scope::body ? bodyLists : masterLists);
                if (Xml::is(element, style, "page-layout")) {
                    auto &layout = pageLayouts[Xml::attribute(element, style, "name").value_or("")];
                    for (const xmlNode *group : Xml::children(element)) {
                        if (Xml::is(group, style, "page-layout-properties")) {
                            layout["page"] = attributesOf(group);
                            addColumns(group, layout["page"]);
                        } else if (Xml::is(group, style, "header-style") ||
                                   Xml::is(group, style, "footer-style"))
                            layout[Xml::localName(group)] =
                                attributesOf(Xml::child(group, style, "header-footer-properties"));
                    }
                }
            }
        } else if (Xml::is(part, office, "master-styles")) {
            for (const xmlNode *element : Xml::children(part)) {
                if (!Xml::is(element, style, "master-page"))
                    continue;
                MasterPage master;
                master.name = Xml::attribute(element, style, "name").value_or("");
                master.pageLayout = Xml::attribute(element, style, "page-layout-name").value_or("");
                master.nextStyle = Xml::attribute(element, style, "next-style-name").value_or("");
                for (xmlNode *content : Xml::children(element)) {
                    const std::string ns = Xml::nameSpaceOf(content);
                    if (ns == style || ns == loext)
                        master.parts[Xml::localName(content)] = content;
                }
                if (firstMasterPage.empty())
                    firstMasterPage = master.name;
                masterPages[master.name] = std::move(master);
            }
        }
    }
}

void OdtStyles::loadStyles(const xmlNode *container, StyleMap &into, bool withDefaults)
{
    for (const xmlNode *element : Xml::children(container)) {
        const bool isDefault = Xml::is(element, style, "default-style");
        if (!Xml::is(element, style, "style") && !(withDefaults && isDefault))
            continue;
        Style entry;
        entry.family = Xml::attribute(element, style, "family").value_or("");
        entry.parent = Xml::attribute(element, style, "parent-style-name").value_or("");
        entry.masterPage = Xml::attribute(element, style, "master-page-name").value_or("");
        entry.listStyle = Xml::attribute(element, style, "list-style-name").value_or("");
        for (const xmlNode *group : Xml::children(element)) {
            const std::string groupName = Xml::localName(group);
            if (!endsWith(groupName, "-properties"))
                continue;
            OdfProperties &properties = entry.groups[groupName];
            for (auto &[name, value] : attributesOf(group))
                properties[name] = value;
            addColumns(group, properties);
            if (const xmlNode *stops = Xml::child(group, style, "tab-stops")) {
                entry.hasTabStops = true;
                for (const xmlNode *stop : Xml::children(stops))
                    if (Xml::is(stop, style, "tab-stop"))
                        entry.tabStops.push_back(TabStop{attributesOf(stop)});
            }
        }
        const std::string name = isDefault ? "" : Xml::attribute(element, style, "name").value_or("");
        (isDefault ? defaults : into)[key(entry.family, name)] = std::move(entry);
    }
}

void OdtStyles::loadListStyle(const xmlNode *element, ListStyles &into)
{
    auto &levels = into[Xml::attribute(element, style, "name").value_or("")];
    for (const xmlNode *levelStyle : Xml::children(element)) {
        const bool number = Xml::is(levelStyle, text, "list-level-style-number") ||
                            Xml::is(levelStyle, text, "outline-level-style");
        // A picture bullet is a bullet all the same; the default bullet character stands in for it.
        if (!number && !Xml::is(levelStyle, text, "list-level-style-bullet") &&
            !Xml::is(levelStyle, text, "list-level-style-image"))
            continue;
        ListLevel level;
        level.ordered = number;
        level.properties = attributesOf(levelStyle);
        if (const xmlNode *properties = Xml::child(levelStyle, style, "list-level-properties")) {
            for (auto &[name, value] : attributesOf(properties))
                level.properties[name] = value;
            for (auto &[name, value] :
                 attributesOf(Xml::child(properties, style, "list-level-label-alignment")))
                level.properties["label-alignment/" + name] = value;
        }
        // A picture bullet's picture, where the flat form holds it in the level itself.
        if (const xmlNode *inlined = Xml::child(levelStyle, office, "binary-data")) {
            std::string base64 = Xml::text(inlined);
            std::erase_if(base64, [](char c) { return std::isspace(static_cast<unsigned char>(c)); });
            level.properties["office:binary-data"] = std::move(base64);
        }
        // The bullet's own font, read when the bullet is looked up (the font faces may come later).
        for (auto &[name, value] : attributesOf(Xml::child(levelStyle, style, "text-properties")))
            level.properties["text-properties/" + name] = value;
        const int index = std::atoi(level.properties["text:level"].c_str());
        levels[std::max(1, std::min(index, 10))] = std::move(level);
    }
}

const OdtStyles::Style *OdtStyles::find(const std::string &family, const std::string &name, Scope scope) const
{
    const std::string wanted = key(family, name);
    const StyleMap *order[] = {scope == Scope::masterPages ? &automaticMaster : &automaticBody,
                               &automaticBody, &named};
    for (const StyleMap *map : order)
        if (const auto found = map->find(wanted); found != map->end())
            return &found->second;
    return nullptr;
}

std::vector<const OdtStyles::Style *> OdtStyles::chain(const std::string &family, const std::string &name,
                                                       Scope scope) const
{
    // From the style up to its last ancestor; a loop or a very deep chain stops early.
    std::vector<const Style *> styles;
    std::set<std::string> seen;
    const Style *current = name.empty() ? nullptr : find(family, name, scope);
    while (current && styles.size() < 64 && seen.insert(current->parent).second) {
        styles.push_back(current);
        if (current->parent.empty())
            break;
        const auto parent = named.find(key(family, current->parent));
        current = parent != named.end() ? &parent->second : find(family, current->parent, scope);
    }
    return styles;
}

OdfProperties OdtStyles::resolve(const std::string &family, const std::string &name, const char *group,
                                 Scope scope) const
{
    OdfProperties result;
    auto merge = [&](const Style &style) {
        const auto found = style.groups.find(group);
        if (found == style.groups.end())
            return;
        if (std::strcmp(group, "text-properties") == 0)
            mergeText(result, found->second);
        else
            for (const auto &[property, value] : found->second)
                result[property] = value;
    };
    if (const auto fallback = defaults.find(key(family, "")); fallback != defaults.end())
        merge(fallback->second);
    const std::vector<const Style *> styles = chain(family, name, scope);
    for (auto style = styles.rbegin(); style != styles.rend(); ++style)
        merge(**style);
    return result;
}

std::vector<OdtStyles::TabStop> OdtStyles::tabStops(const std::string &name, Scope scope) const
{
    for (const Style *style : chain("paragraph", name, scope))
        if (style->hasTabStops)
            return style->tabStops;
    return {};
}

std::string OdtStyles::masterPageOf(const std::string &family, const std::string &name, Scope scope) const
{
    const Style *found = find(family, name, scope);
    return found ? found->masterPage : std::string();
}

std::string OdtStyles::listStyleOf(const std::string &name, Scope scope) const
{
    for (const Style *style : chain("paragraph", name, scope))
        if (!style->listStyle.empty())
            return style->listStyle;
    return {};
}

bool OdtStyles::ownIndentsOverList(const std::string &name, const std::string &listStyle, Scope scope) const
{
    const auto setsIndents = [](const Style &style) {
        const auto found = style.groups.find("paragraph-properties");
        if (found == style.groups.end())
            return false;
        for (const char *property : {"fo:margin-left", "fo:margin-right", "fo:text-indent", "fo:margin"})
            if (found->second.count(property))
                return true;
        return false;
    };
    const std::vector<const Style *> styles = chain("paragraph", name, scope);
    std::size_t from = 0;
    // An automatic style is the paragraph's own formatting.
    const StyleMap &automatic = scope == Scope::masterPages ? automaticMaster : automaticBody;
    if (!styles.empty() && automatic.count(key("paragraph", name))) {
        if (setsIndents(*styles[0]))
            return true;
        if (!styles[0]->listStyle.empty())
            return false;
        from = 1;
    }
    // A list of another style than the paragraph's styles give is set on the paragraph itself.
    if (!listStyle.empty() && listStyle != listStyleOf(name, scope))
        return false;
    for (std::size_t i = from; i < styles.size(); ++i) {
        if (setsIndents(*styles[i]))
            return true;
        if (!styles[i]->listStyle.empty())
            return false;
    }
    return false;
}

std::optional<OdtStyles::ListLevel> OdtStyles::outlineLevel(int level) const
{
    const auto found = outline.find(level);
    if (found == outline.end())
        return std::nullopt;
    const auto format = found->second.properties.find("style:num-format");
    if (format == found->second.properties.end() || format->second.empty())
        return std::nullopt;
    return found->second;
}

OdtStyles::ListLevel OdtStyles::listLevel(const std::string &listStyle, int level, Scope scope) const
{
    const ListStyles *order[] = {scope == Scope::masterPages ? &masterLists : &bodyLists, &bodyLists,
                                 &namedLists};
    for (const auto *lists : order) {
        const auto list = lists->find(listStyle);
        if (list == lists->end())
            continue;
        if (const auto found = list->second.find(level); found != list->second.end())
            return withUnicodeBullet(found->second, scope);
        break;
    }
    // A level the list style does not define is numbered "1.", as LibreOffice numbers it.
    ListLevel made;
    made.ordered = true;
    made.properties["style:num-format"] = "1";
    made.properties["style:num-suffix"] = ".";
    return made;
}

const OdtStyles::MasterPage *OdtStyles::masterPage(const std::string &name) const
{
    const auto found = masterPages.find(name);
    return found == masterPages.end() ? nullptr : &found->second;
}

const OdtStyles::MasterPage *OdtStyles::defaultMasterPage() const
{
    if (const MasterPage *standard = masterPage("Standard"))
        return standard;
    return masterPage(firstMasterPage);
}

OdfProperties OdtStyles::pageLayout(const std::string &name, const char *group) const
{
    const auto layout = pageLayouts.find(name);
    if (layout == pageLayouts.end())
        return {};
    const auto found = layout->second.find(group);
    return found == layout->second.end() ? OdfProperties{} : found->second;
}

// A bullet of a symbol font (Word's Wingdings square, Symbol's dot) as the character it shows: the
// label's font is that of its item's text where WordPerfect and RTF write it.
OdtStyles::ListLevel OdtStyles::withUnicodeBullet(ListLevel level, Scope scope) const
{
    const auto bullet = level.properties.find("text:bullet-char");
    if (level.ordered || bullet == level.properties.end())
        return level;
    OdfProperties font;
    for (const auto &[name, value] : level.properties)
        if (name.rfind("text-properties/", 0) == 0)
            font[name.substr(std::strlen("text-properties/"))] = value;
    // The level's own font first, then that of its character style.
    if (!font.count("style:font-name") && !font.count("fo:font-family")) {
        const auto characterStyle = level.properties.find("text:style-name");
        if (characterStyle != level.properties.end())
            font = resolve("text", characterStyle->second, "text-properties", scope);
    }
    const SymbolEncoding encoding = symbolEncoding(font);
    if (encoding.font == SymbolFonts::Font::none)
        return level;
    std::string unicode;
    for (const char32_t c : Utf8::decode(bullet->second))
        Utf8::append(unicode, SymbolFonts::meaning(encoding.font, c, encoding.plainCodes).value_or(c));
    bullet->second = unicode;
    return level;
}

OdtStyles::SymbolEncoding OdtStyles::symbolEncoding(const OdfProperties &text) const
{
    std::string face;
    if (const auto name = text.find("style:font-name"); name != text.end())
        face = name->second;
    else if (const auto family = text.find("fo:font-family"); family != text.end())
        face = family->second;
    const auto charset = text.find("style:font-charset");
    return {SymbolFonts::byFamily(fontFamily(face)),
            symbolEncodedFaces.count(face) || (charset != text.end() && charset->second == "x-symbol")};
}

std::string OdtStyles::fontFamily(const std::string &fontName) const
{
    const auto found = fontFamilies.find(fontName);
    return found == fontFamilies.end() ? firstFamily(fontName) : found->second;
}

} // namespace richtext
