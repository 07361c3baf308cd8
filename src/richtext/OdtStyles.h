#pragma once

#include "SymbolFonts.h"

#include <libxml/tree.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace richtext {

// ODF properties by their prefixed names ("fo:font-weight" = "bold").
using OdfProperties = std::map<std::string, std::string>;

// The styles of an OpenDocument text: default styles, named styles, the two
// sets of automatic styles (those of content.xml for the body, those of
// styles.xml for headers and footers), list styles, page layouts and master
// pages. Resolves a style through its parent chain down from the default style.
class OdtStyles {
public:
    enum class Scope { body, masterPages };

    struct TabStop {
        OdfProperties properties;
    };
    struct ListLevel {
        bool ordered = false;
        OdfProperties properties; // the level element's and its list-level(-label-alignment) properties
    };
    struct MasterPage {
        std::string name;
        std::string pageLayout;
        std::string nextStyle; // the master page of the pages after the first ("" or its own name: itself)
        // style:header, style:header-left, style:header-first, and the same for footers.
        std::map<std::string, xmlNode *> parts;
    };

    // Reads the style elements below an office:document, office:document-styles
    // or office:document-content root. The tree must outlive this object.
    void load(const xmlNode *root, Scope automaticScope);

    // A property group ("text-properties", "paragraph-properties", ...) of a
    // style, resolved through parents and the family's default style.
    OdfProperties resolve(const std::string &family, const std::string &name, const char *group,
                          Scope scope) const;
    std::vector<TabStop> tabStops(const std::string &name, Scope scope) const;
    // style:master-page-name and style:list-style-name of a style (not inherited / inherited).
    std::string masterPageOf(const std::string &family, const std::string &name, Scope scope) const;
    std::string listStyleOf(const std::string &name, Scope scope) const;
    // Whether a list paragraph of this style keeps its own indents rather than its list level's, as
    // Writer decides: indents set on the paragraph itself win, and those of its named styles win
    // when they come before the style that gives the list (`listStyle`, the list's own).
    bool ownIndentsOverList(const std::string &name, const std::string &listStyle, Scope scope) const;

    // Level 1..10 of a list style; a level the style does not define is made up as ODF readers do.
    ListLevel listLevel(const std::string &listStyle, int level, Scope scope) const;
    // How headings of an outline level are numbered (text:outline-style); none when not at all.
    std::optional<ListLevel> outlineLevel(int level) const;

    const MasterPage *masterPage(const std::string &name) const;
    // The master page that the first page uses when nothing names one.
    const MasterPage *defaultMasterPage() const;
    OdfProperties pageLayout(const std::string &name, const char *group) const;

    // The family name of a declared font face ("Times New Roman" for style:font-name="Times New Roman1").
    std::string fontFamily(const std::string &fontName) const;

    // Whether text properties set a symbol font, and whether its face is declared symbol-encoded
    // (then plain codes are the font's codes too).
    struct SymbolEncoding {
        SymbolFonts::Font font = SymbolFonts::Font::none;
        bool plainCodes = false;
    };
    SymbolEncoding symbolEncoding(const OdfProperties &text) const;

private:
    struct Style {
        std::string family;
        std::string parent;
        std::string masterPage;
        std::string listStyle;
        std::map<std::string, OdfProperties> groups;
        bool hasTabStops = false;
        std::vector<TabStop> tabStops;
    };
    using StyleMap = std::map<std::string, Style>; // keyed by family + '\n' + name
    using ListStyles = std::map<std::string, std::map<int, ListLevel>>;

    void loadStyles(const xmlNode *container, StyleMap &into, bool defaults);
    void loadListStyle(const xmlNode *element, ListStyles &into);
    ListLevel withUnicodeBullet(ListLevel level, Scope scope) const;
    std::map<int, ListLevel> outline;
    const Style *find(const std::string &family, const std::string &name, Scope scope) const;
    std::vector<const Style *> chain(const std::string &family, const std::string &name, Scope scope) const;

    StyleMap defaults;
    StyleMap named;
    StyleMap automaticBody;
    StyleMap automaticMaster;
    ListStyles namedLists;
    ListStyles bodyLists;
    ListStyles masterLists;
    std::map<std::string, std::map<std::string, OdfProperties>> pageLayouts;
    std::map<std::string, MasterPage> masterPages;
    std::string firstMasterPage;
    std::map<std::string, std::string> fontFamilies;
    std::set<std::string> symbolEncodedFaces; // style:font-charset="x-symbol"
};

} // namespace richtext
