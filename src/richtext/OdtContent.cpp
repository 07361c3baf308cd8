#include "OdtContent.h"

#include "ListNumbering.h"
#include "OdfNames.h"
#include "OdtInline.h"
#include "OdtProperties.h"
#include "OdtTableGrid.h"
#include "Units.h"
#include "XmlTree.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace richtext {
namespace {

using namespace OdfNames;
using librevenge::RVNGPropertyList;

// Past this nesting the walk stops descending; libxml2 allows deeper trees
// than a recursive walk should follow on the main thread's stack.
constexpr int maximumDepth = 200;
// Repeated rows, columns and cells let a small file describe a huge table.
// Writer tables end at 1024 columns; past these bounds the walk gives up.
constexpr long maximumElements = 2'000'000;
constexpr long maximumCellsPerTable = 100'000;
constexpr int maximumRepeat = 1024;

// Whether two headers or footers hold the same: the same elements, attributes and text, apart from
// the stacking order and names Word numbers its pictures by.
bool sameContent(const xmlNode *a, const xmlNode *b, int depth = 0)
{
    if (depth > maximumDepth)
        return false;
    const xmlNode *x = a ? a->children : nullptr;
    const xmlNode *y = b ? b->children : nullptr;
    for (; x && y; x = x->next, y = y->next) {
        if (x->type != y->type || xmlStrcmp(x->name, y->name) != 0)
            return false;
        if (x->type == XML_TEXT_NODE && xmlStrcmp(x->content, y->content) != 0)
            return false;
        if (x->type != XML_ELEMENT_NODE)
            continue;
        auto attributes = [](const xmlNode *node) {
            std::vector<std::pair<std::string, std::string>> list;
            for (const xmlAttr *attribute = node->properties; attribute; attribute = attribute->next) {
                const std::string name = reinterpret_cast<const char *>(attribute->name);
                if (name == "z-index" || name == "name")
                    continue;
                xmlChar *value = xmlNodeGetContent(attribute->children);
                list.emplace_back(name, value ? reinterpret_cast<const char *>(value) : "");
                xmlFree(value);
            }
            return list;
        };
        if (attributes(x) != attributes(y) || !sameContent(x, y, depth + 1))
            return false;
    }
    return !x && !y;
}

int number(const xmlNode *node, const char *nameSpace, const char *name, int fallback)
{
    const auto value = Xml::attribute(node, nameSpace, name);
    if (!value)
        return fallback;
    const int parsed = std::atoi(value->c_str());
    return parsed > 0 ? std::min(parsed, maximumRepeat) : fallback;
}

std::string styleName(const xmlNode *node, const char *nameSpace = text)
{
    return Xml::attribute(node, nameSpace, "style-name").value_or("");
}

// Elements that hold no text of the document, or text it does not show.
bool holdsNoText(const xmlNode *node)
{
    static const char *const skipped[] = {
        "tracked-changes",
        "sequence-decls",
        "variable-decls",
        "user-field-decls",
        "dde-connection-decls",
        "forms",
        "soft-page-break",
        "table-of-content-source",
        "alphabetical-index-source",
        "illustration-index-source",
        "table-index-source",
        "object-index-source",
        "user-index-source",
        "bibliography-source",
        "index-title-template",
        "named-expressions",
        "annotation",
        "annotation-end",
    };
    const char *name = Xml::localName(node);
    return std::any_of(std::begin(skipped), std::end(skipped),
                       [&](const char *skip) { return std::strcmp(name, skip) == 0; });
}

} // namespace

OdtContent::OdtContent(const OdtStyles &styles, librevenge::RVNGTextInterface &sink, PictureSource pictures)
    : sheet(styles), sink(sink), pictures(std::move(pictures)), budget(maximumElements)
{
}

bool OdtContent::enter()
{
    if (depth >= maximumDepth || budget <= 0)
        return false;
    ++depth;
    --budget;
    return true;
}

void OdtContent::body(const xmlNode *officeText)
{
    if (const xmlNode *changes = Xml::child(officeText, text, "tracked-changes")) {
        for (const xmlNode *region : Xml::children(changes)) {
            const xmlNode *deletion = Xml::child(region, text, "deletion");
            const auto id = Xml::attribute(region, text, "id");
            if (deletion && id)
                deletions[*id] = deletion;
        }
    }
    for (const xmlNode *element : Xml::children(officeText)) {
        if (holdsNoText(element))
            continue;
        const std::string master = masterPageFor(element);
        if (!pageSpanOpen || !master.empty()) {
            const OdtStyles::MasterPage *page = sheet.masterPage(master);
            openPageSpan(page ? page : sheet.defaultMasterPage(), element);
        }
        block(element);
    }
    if (!pageSpanOpen)
        openPageSpan(sheet.defaultMasterPage());
    sink.closePageSpan();
}

const xmlNode *OdtContent::takeDeletion(const std::string &id)
{
    const auto found = deletions.find(id);
    if (found == deletions.end() || !found->second)
        return nullptr;
    const xmlNode *node = found->second;
    found->second = nullptr; // a change that refers to itself is shown once
    return node;
}

std::string OdtContent::masterPageFor(const xmlNode *element) const
{
    if (Xml::is(element, text, "p") || Xml::is(element, text, "h"))
        return sheet.masterPageOf("paragraph", styleName(element), currentScope);
    if (Xml::is(element, table, "table"))
        return sheet.masterPageOf("table", styleName(element, table), currentScope);
    if (Xml::is(element, text, "list") || Xml::is(element, text, "list-item") ||
        Xml::is(element, text, "section"))
        for (const xmlNode *child : Xml::children(element))
            return masterPageFor(child);
    return {};
}

std::optional<int> OdtContent::pageNumberOf(const xmlNode *element) const
{
    OdfProperties properties;
    if (Xml::is(element, text, "p") || Xml::is(element, text, "h"))
        properties = sheet.resolve("paragraph", styleName(element), "paragraph-properties", currentScope);
    else if (Xml::is(element, table, "table"))
        properties = sheet.resolve("table", styleName(element, table), "table-properties", currentScope);
    else if (Xml::is(element, text, "list") || Xml::is(element, text, "list-item") ||
             Xml::is(element, text, "section"))
        for (const xmlNode *child : Xml::children(element))
            return pageNumberOf(child);
    const auto number = properties.find("style:page-number");
    int value = 0;
    // "auto", or nothing: the numbers run on.
    if (number == properties.end() ||
        std::from_chars(number->second.data(), number->second.data() + number->second.size(), value).ec !=
            std::errc())
        return std::nullopt;
    return value;
}

void OdtContent::openPageSpan(const OdtStyles::MasterPage *master, const xmlNode *first)
{
    if (pageSpanOpen)
        sink.closePageSpan();
    pageSpanOpen = true;
    const std::string layout = master ? master->pageLayout : std::string();
    RVNGPropertyList span = OdtProperties::pageSpan(sheet.pageLayout(layout, "page"));
    if (const std::optional<int> number = first ? pageNumberOf(first) : std::nullopt)
        span.insert("style:page-number", *number);
    sink.openPageSpan(span);
    if (master)
        headersAndFooters(*master);
}

// A master page whose next style is another one is a first page: Word's "different first page"
// comes from LibreOffice so. Its headers and footers are the first page's, the next style's are
// those of the pages after it, all in one page span since the reader does not lay out pages.
void OdtContent::headersAndFooters(const OdtStyles::MasterPage &master)
{
    const OdtStyles::MasterPage *next = master.nextStyle.empty() || master.nextStyle == master.name
                                            ? nullptr
                                            : sheet.masterPage(master.nextStyle);
    // Left and right page styles that name each other alternate; only a next style that goes on
    // by itself makes the first page one of its own.
    if (next && !next->nextStyle.empty() && next->nextStyle != next->name)
        next = nullptr;
    const OdtStyles::MasterPage &regular = next ? *next : master;
    auto shown = [](const OdtStyles::MasterPage &page, const std::string &part) -> const xmlNode * {
        const auto found = page.parts.find(part);
        if (found == page.parts.end() ||
            Xml::attribute(found->second, style, "display").value_or("") == "false")
            return nullptr;
        return found->second;
    };
    const OdtStyles::Scope saved = currentScope;
    currentScope = OdtStyles::Scope::masterPages;
    for (const bool footer : {false, true}) {
        const std::string kind = footer ? "footer" : "header";
        auto emit = [&](const OdtStyles::MasterPage &page, const xmlNode *content, const char *occurrence) {
            const RVNGPropertyList properties = OdtProperties::headerFooter(
                sheet.pageLayout(page.pageLayout, footer ? "footer-style" : "header-style"), occurrence);
            footer ? sink.openFooter(properties) : sink.openHeader(properties);
            if (content)
                blocks(content);
            footer ? sink.closeFooter() : sink.closeHeader();
        };
        const xmlNode *left = shown(regular, kind + "-left");
        if (const xmlNode *every = shown(regular, kind))
            emit(regular, every, left ? "odd" : "all");
        if (left)
            emit(regular, left, "even");
        // A first page's header that holds what the next pages' does is no header of its own.
        const xmlNode *odd = shown(regular, kind);
        auto sameAsRegular = [&](const xmlNode *first) {
            return first && odd && master.pageLayout == regular.pageLayout && sameContent(first, odd);
        };
        if (!next) {
            if (const xmlNode *first = shown(master, kind + "-first"); first && !sameAsRegular(first))
                emit(master, first, "first");
            continue;
        }
        const xmlNode *first = shown(master, kind + "-first");
        if (!first)
            first = shown(master, kind);
        // An empty one keeps the later pages' header off the first page.
        if ((first || odd || left) && !sameAsRegular(first))
            emit(master, first, "first");
    }
    currentScope = saved;
}

void OdtContent::blocks(const xmlNode *parent)
{
    for (const xmlNode *element : Xml::children(parent))
        block(element);
}

void OdtContent::block(const xmlNode *element)
{
    // Where LibreOffice could not save a drawing (Word's grouped shapes, some of them), it leaves
    // an empty paragraph with the drawing's anchor and stacking order: a drawing lost.
    if ((Xml::is(element, text, "p") || Xml::is(element, text, "h")) &&
        Xml::attribute(element, draw, "z-index"))
        sink.drawPath({});
    if (holdsNoText(element) || !enter())
        return;
    if (Xml::is(element, text, "p") || Xml::is(element, text, "h")) {
        emitParagraph(element, false);
    } else if (Xml::is(element, text, "list")) {
        emitList(element, 1, {}, {});
    } else if (Xml::is(element, table, "table")) {
        emitTable(element);
    } else if (Xml::is(element, text, "section")) {
        sink.openSection(OdtProperties::section(
            sheet.resolve("section", styleName(element), "section-properties", currentScope)));
        blocks(element);
        sink.closeSection();
    } else if (OdtInline::isShape(element) && !OdtInline::holdsWords(element)) {
        // A drawing anchored to the page, with no words: only a loss to report.
        OdtInline pieces(*this, {});
        pieces.element(element);
    } else if (Xml::is(element, draw, "frame") || Xml::is(element, draw, "a") ||
               OdtInline::isShape(element)) {
        // A frame anchored to the page stands outside any paragraph; give it one.
        sink.openParagraph({});
        OdtInline pieces(*this, {});
        pieces.element(element);
        pieces.finish();
        sink.closeParagraph();
    } else if (std::strcmp(Xml::nameSpaceOf(element), draw) != 0) {
        // Indexes, index bodies and the like: their paragraphs are the text.
        blocks(element);
    }
    leave();
}

void OdtContent::emitParagraph(const xmlNode *element, bool listElement, std::optional<int> startValue,
                               const std::string &levelListStyle)
{
    const std::string name = styleName(element);
    RVNGPropertyList properties;
    OdtProperties::addParagraph(properties,
                                sheet.resolve("paragraph", name, "paragraph-properties", currentScope),
                                sheet.tabStops(name, currentScope));
    // The list level's indents, where they win over those the paragraph's styles give.
    if (listElement && !levelListStyle.empty() &&
        !sheet.ownIndentsOverList(name, levelListStyle, currentScope)) {
        properties.remove("fo:margin-left");
        properties.remove("fo:text-indent");
    }
    if (Xml::is(element, text, "h"))
        properties.insert("text:outline-level", number(element, text, "outline-level", 1));
    if (startValue)
        properties.insert("text:start-value", *startValue);
    listElement ? sink.openListElement(properties) : sink.openParagraph(properties);
    OdtInline pieces(*this, sheet.resolve("paragraph", name, "text-properties", currentScope));
    if (Xml::is(element, text, "h") && !listElement &&
        Xml::attribute(element, text, "is-list-header").value_or("") != "true") {
        std::string followedBy;
        const std::string label = headingLabel(number(element, text, "outline-level", 1), followedBy);
        if (!label.empty())
            pieces.label(label, followedBy);
    }
    pieces.walk(element);
    pieces.finish();
    listElement ? sink.closeListElement() : sink.closeParagraph();
}

// Headings number themselves from the outline style, as chapters do: "2.3" counts the third heading
// of level 2 since the second of level 1.
std::string OdtContent::headingLabel(int level, std::string &followedBy)
{
    level = std::clamp(level, 1, 10);
    const auto definition = sheet.outlineLevel(level);
    if (!definition)
        return {};
    outlineValues.erase(outlineValues.upper_bound(level), outlineValues.end());
    const RVNGPropertyList properties = OdtProperties::listLevel(*definition, level, 0, std::nullopt);
    const int start = Units::integer(properties, "text:start-value").value_or(1);
    outlineValues[level] = outlineValues.count(level) ? outlineValues[level] + 1 : start;
    const int shown = std::clamp(Units::integer(properties, "text:display-levels").value_or(1), 1, level);
    std::string number;
    for (int at = level - shown + 1; at <= level; ++at) {
        const auto above = sheet.outlineLevel(at);
        const std::string format =
            above ? Units::text(OdtProperties::listLevel(*above, at, 0, std::nullopt), "style:num-format")
                        .value_or("1")
                  : "1";
        if (!number.empty())
            number += '.';
        const auto reached = outlineValues.find(at);
        number += ListNumbering::formatNumber(reached == outlineValues.end() ? 1 : reached->second, format);
    }
    const auto follows = definition->properties.find("label-alignment/text:label-followed-by");
    followedBy = follows == definition->properties.end() ? "space" : follows->second;
    return Units::text(properties, "style:num-prefix").value_or("") + number +
           Units::text(properties, "style:num-suffix").value_or("");
}

void OdtContent::emitList(const xmlNode *element, int level, const std::string &inheritedStyle,
                          const std::string &inheritedChain)
{
    const std::string listStyle = Xml::attribute(element, text, "style-name").value_or(inheritedStyle);
    const OdtStyles::ListLevel definition = sheet.listLevel(listStyle, std::min(level, 10), currentScope);
    // Lists that continue one another count on together, level by level; a number given to an item
    // restarts every level below it, as ODF numbers lists.
    std::string chain = inheritedChain;
    if (level == 1) {
        const auto continued = Xml::attribute(element, text, "continue-list");
        const bool continues =
            continued || Xml::attribute(element, text, "continue-numbering").value_or("") == "true";
        chain = continued && chainOfList.count(*continued) ? chainOfList[*continued] : listStyle;
        if (!continues)
            listValues[chain].clear();
        if (const auto id = Xml::attribute(element, xml, "id"))
            chainOfList[*id] = chain;
    }
    std::map<int, int> &reached = listValues[chain];
    std::optional<int> start;
    if (reached.count(level))
        start = reached[level] + 1;
    RVNGPropertyList properties = OdtProperties::listLevel(definition, level, nextListId++, start);
    const bool levelPlacesLabel = definition.properties.count("label-alignment/fo:margin-left") ||
                                  definition.properties.count("text:space-before") ||
                                  definition.properties.count("text:min-label-width");
    if (start)
        properties.insert("librevenge:continued", true); // the start is where an earlier list stopped
    // A picture bullet: its picture and size go with the level, for a writer that can set it.
    const auto href = definition.properties.find("xlink:href");
    const auto inlined = definition.properties.find("office:binary-data");
    std::optional<std::string> bytes;
    if (href != definition.properties.end())
        bytes = picture(href->second);
    if (!definition.ordered && (bytes || inlined != definition.properties.end())) {
        if (bytes)
            properties.insert("librevenge:bullet-picture",
                              librevenge::RVNGBinaryData(
                                  reinterpret_cast<const unsigned char *>(bytes->data()), bytes->size()));
        else // base64 as it stands, which is how the property carries it
            properties.insert("librevenge:bullet-picture", inlined->second.c_str());
        for (const char *name : {"fo:width", "fo:height"})
            if (const auto size = definition.properties.find(name); size != definition.properties.end())
                if (const auto inches = Units::parseInches(size->second))
                    properties.insert(name, *inches, librevenge::RVNG_INCH);
    }
    definition.ordered ? sink.openOrderedListLevel(properties) : sink.openUnorderedListLevel(properties);

    int value = Units::integer(properties, "text:start-value").value_or(1) - 1;
    const auto styled = definition.properties.find("text:start-value");
    const int first =
        styled == definition.properties.end() ? 1 : std::max(1, std::atoi(styled->second.c_str()));
    bool told = true; // whether the consumer's count of this level agrees with ours
    for (const xmlNode *item : Xml::children(element)) {
        const bool header = Xml::is(item, text, "list-header");
        if (!header && !Xml::is(item, text, "list-item"))
            continue;
        bool labelled = header;
        std::optional<int> restart;
        if (const auto at = Xml::attribute(item, text, "start-value"))
            restart = value = std::atoi(at->c_str()) - 1;
        else if (!told)
            restart = value;
        const auto parts = Xml::children(item);
        const bool numbered = std::any_of(parts.begin(), parts.end(), [](const xmlNode *part) {
            return Xml::is(part, text, "p") || Xml::is(part, text, "h");
        });
        if (!header && !numbered && value < first) {
            // An item that holds only a deeper list takes the level's first number without showing
            // it ("1.1.1" below it), and the next item counts on from there.
            value = first;
            listValues[chain].erase(listValues[chain].upper_bound(level), listValues[chain].end());
            listValues[chain][level] = value;
            told = false;
        }
        for (const xmlNode *child : parts) {
            if (!enter())
                continue;
            if (Xml::is(child, text, "list")) {
                emitList(child, level + 1, listStyle, chain);
            } else if (!labelled && (Xml::is(child, text, "p") || Xml::is(child, text, "h"))) {
                labelled = true;
                ++value;
                listValues[chain].erase(listValues[chain].upper_bound(level), listValues[chain].end());
                listValues[chain][level] = value;
                emitParagraph(child, true, restart ? std::optional<int>(*restart + 1) : std::nullopt,
                              levelPlacesLabel ? listStyle : std::string());
                told = true;
            } else {
                block(child);
            }
            leave();
        }
    }
    definition.ordered ? sink.closeOrderedListLevel() : sink.closeUnorderedListLevel();
}

void OdtContent::emitTable(const xmlNode *element)
{
    std::vector<double> widths;
    std::vector<double> shares; // relative widths ("1000*"), where a column gives one
    std::function<void(const xmlNode *)> columns = [&](const xmlNode *parent) {
        for (const xmlNode *child : Xml::children(parent)) {
            if (Xml::is(child, table, "table-column")) {
                const OdfProperties column = sheet.resolve("table-column", styleName(child, table),
                                                           "table-column-properties", currentScope);
                const auto width = column.count("style:column-width")
                                       ? Units::parseInches(column.at("style:column-width"))
                                       : std::nullopt;
                double share = 0;
                if (const auto rel = column.find("style:rel-column-width"); rel != column.end())
                    std::from_chars(rel->second.data(), rel->second.data() + rel->second.size(), share);
                for (int n = number(child, table, "number-columns-repeated", 1);
                     n > 0 && widths.size() < 1024; --n) {
                    widths.push_back(width.value_or(0));
                    shares.push_back(share);
                }
            } else if (Xml::is(child, table, "table-columns") ||
                       Xml::is(child, table, "table-header-columns") ||
                       Xml::is(child, table, "table-column-group")) {
                columns(child);
            }
        }
    };
    columns(element);
    sink.openTable(OdtProperties::table(
        sheet.resolve("table", styleName(element, table), "table-properties", currentScope), widths, shares));
    int rowIndex = 0;
    const long outside = budget;
    const long allowed = std::min(budget, maximumCellsPerTable);
    budget = allowed;
    OdtTableGrid grid;
    emitRows(element, false, rowIndex, grid);
    budget = std::max(0L, outside - (allowed - budget));
    sink.closeTable();
}

void OdtContent::emitRows(const xmlNode *parent, bool header, int &rowIndex, OdtTableGrid &grid)
{
    for (const xmlNode *child : Xml::children(parent)) {
        if (Xml::is(child, table, "table-row")) {
            for (int n = number(child, table, "number-rows-repeated", 1); n > 0 && budget > 0; --n)
                emitRow(child, header, rowIndex++, grid);
        } else if (Xml::is(child, table, "table-header-rows")) {
            emitRows(child, true, rowIndex, grid);
        } else if (Xml::is(child, table, "table-rows") || Xml::is(child, table, "table-row-group")) {
            emitRows(child, header, rowIndex, grid);
        }
    }
}

void OdtContent::emitRow(const xmlNode *element, bool header, int rowIndex, OdtTableGrid &grid)
{
    sink.openTableRow(OdtProperties::row(
        sheet.resolve("table-row", styleName(element, table), "table-row-properties", currentScope), header));
    grid.beginRow(rowIndex);
    auto coveredCell = [&](int column) {
        RVNGPropertyList position;
        position.insert("librevenge:column", column);
        position.insert("librevenge:row", rowIndex);
        sink.insertCoveredTableCell(position);
    };
    for (const xmlNode *cell : Xml::children(element)) {
        const bool covered = Xml::is(cell, table, "covered-table-cell");
        if (!covered && !Xml::is(cell, table, "table-cell"))
            continue;
        for (int n = number(cell, table, "number-columns-repeated", 1); n > 0 && budget-- > 0; --n) {
            if (covered) {
                coveredCell(grid.placeCovered());
                continue;
            }
            const int columns = number(cell, table, "number-columns-spanned", 1);
            const int rows = number(cell, table, "number-rows-spanned", 1);
            std::vector<int> missing;
            const int column = grid.placeCell(columns, rows, missing);
            for (const int slot : missing)
                coveredCell(slot);
            sink.openTableCell(OdtProperties::cell(
                sheet.resolve("table-cell", styleName(cell, table), "table-cell-properties", currentScope),
                column, rowIndex, columns, rows));
            blocks(cell);
            sink.closeTableCell();
        }
    }
    for (const int slot : grid.endRow())
        coveredCell(slot);
    sink.closeTableRow();
}

} // namespace richtext
