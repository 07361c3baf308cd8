#pragma once

#include "OdtStyles.h"

#include <librevenge/librevenge.h>
#include <libxml/tree.h>

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace richtext {

class OdtTableGrid;

// Walks the body of an OpenDocument text and tells a RVNGTextInterface what
// it finds: page spans from master pages (with their headers and footers),
// paragraphs, lists, tables, sections. Elements it does not know are looked
// into for text; those that hold none (declarations) are skipped. Text a tracked change deleted
// is shown struck out where it stood, as WordPerfect's document compare marks it.
class OdtContent {
public:
    // The bytes of a picture inside the package ("Pictures/1.png"); none when absent.
    using PictureSource = std::function<std::optional<std::string>(const std::string &href)>;

    OdtContent(const OdtStyles &styles, librevenge::RVNGTextInterface &sink, PictureSource pictures);

    void body(const xmlNode *officeText);

    // Used by the inline walker for note bodies, text boxes and comments.
    void blocks(const xmlNode *parent);
    const OdtStyles &styles() const { return sheet; }
    OdtStyles::Scope scope() const { return currentScope; }
    librevenge::RVNGTextInterface &output() { return sink; }
    std::optional<std::string> picture(const std::string &href) const { return pictures(href); }
    // The content a tracked change removed (its text:deletion element), by change id; none when
    // the id names no deletion or that deletion is already being shown.
    const xmlNode *takeDeletion(const std::string &id);
    void returnDeletion(const std::string &id, const xmlNode *node) { deletions[id] = node; }
    // False once the document is too deep or too large to follow further.
    bool enter();
    void leave() { --depth; }

private:
    void block(const xmlNode *element);
    // levelListStyle: the list style whose level places the item's label (empty: none does).
    void emitParagraph(const xmlNode *element, bool listElement, std::optional<int> startValue = std::nullopt,
                       const std::string &levelListStyle = {});
    void emitList(const xmlNode *element, int level, const std::string &inheritedStyle,
                  const std::string &inheritedChain);
    void emitTable(const xmlNode *element);
    void emitRows(const xmlNode *parent, bool header, int &rowIndex, OdtTableGrid &grid);
    void emitRow(const xmlNode *element, bool header, int rowIndex, OdtTableGrid &grid);
    void openPageSpan(const OdtStyles::MasterPage *master, const xmlNode *first = nullptr);
    // The page number that the element starts its page span with, when it restarts them.
    std::optional<int> pageNumberOf(const xmlNode *element) const;
    void headersAndFooters(const OdtStyles::MasterPage &master);
    std::string masterPageFor(const xmlNode *element) const;

    const OdtStyles &sheet;
    librevenge::RVNGTextInterface &sink;
    PictureSource pictures;
    OdtStyles::Scope currentScope = OdtStyles::Scope::body;
    bool pageSpanOpen = false;
    int depth = 0;
    long budget; // elements left to walk before the document counts as too large
    int nextListId = 1;
    std::map<std::string, std::map<int, int>> listValues; // per chain of lists: the number each level reached
    std::map<std::string, std::string> chainOfList;       // a list's xml:id to the chain it counts in
    std::map<std::string, const xmlNode *> deletions;
    std::map<int, int> outlineValues; // the number each heading level reached
    std::string headingLabel(int level, std::string &followedBy);
};

} // namespace richtext
