#include "HtmlContent.h"
#include "XmlTree.h"
#include "Base64.h"

#include "HtmlTable.h"
#include "OdtProperties.h"
#include "SymbolFonts.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <set>

namespace richtext {
namespace {

using librevenge::RVNGPropertyList;

// Deeper nesting than this is not followed: the walk recurses once per level.
constexpr int maximumDepth = 200;

using Xml::plainAttribute;
std::string tagOf(const xmlNode *node)
{
    return Xml::lowerTag(node);
}

bool isOneOf(const std::string &tag, std::initializer_list<const char *> tags)
{
    for (const char *candidate : tags)
        if (tag == candidate)
            return true;
    return false;
}

bool isBlock(const std::string &tag)
{
    return isOneOf(tag,
                   {"p",          "div",      "h1",     "h2",      "h3",   "h4",      "h5",     "h6",
                    "blockquote", "pre",      "center", "address", "dd",   "dt",      "dl",     "section",
                    "article",    "header",   "footer", "nav",     "main", "aside",   "figure", "figcaption",
                    "form",       "fieldset", "body",   "html",    "hr",   "caption", "legend"});
}

bool isSkipped(const std::string &tag)
{
    return isOneOf(tag, {"head",   "script", "style", "noscript", "template", "title",  "meta",     "link",
                         "iframe", "object", "embed", "svg",      "math",     "select", "textarea", "input",
                         "button", "map",    "area",  "frameset", "frame",    "canvas", "audio",    "video"});
}

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

// The number format and bullet of a list level from list-style-type.
void listStyle(RVNGPropertyList &level, const std::string &style, bool ordered, int depth)
{
    static const std::pair<const char *, const char *> numbers[] = {
        {"decimal", "1"},     {"lower-alpha", "a"}, {"lower-latin", "a"}, {"upper-alpha", "A"},
        {"upper-latin", "A"}, {"lower-roman", "i"}, {"upper-roman", "I"}};
    static const std::pair<const char *, const char *> bullets[] = {
        {"disc", "\xE2\x80\xA2"}, {"circle", "\xE2\x97\xA6"}, {"square", "\xE2\x96\xAA"}};
    if (ordered) {
        std::string format = "1";
        for (const auto &[name, odf] : numbers)
            if (style == name)
                format = odf;
        level.insert("style:num-format", format.c_str());
        level.insert("style:num-suffix", ".");
        return;
    }
    const char *bullet = depth == 1 ? bullets[0].second : depth == 2 ? bullets[1].second : bullets[2].second;
    for (const auto &[name, character] : bullets)
        if (style == name)
            bullet = character;
    level.insert("text:bullet-char", style == "none" ? "" : bullet);
}

} // namespace

HtmlContent::HtmlContent(const CssStyles &sheet, const HtmlNotes &notes, librevenge::RVNGTextInterface &sink,
                         bool fromLibrevenge)
    : sheet(sheet), notes(notes), sink(sink), fromLibrevenge(fromLibrevenge)
{
}

void HtmlContent::body(const xmlNode *bodyElement)
{
    const HtmlFormat format =
        bodyElement ? HtmlFormat::inside(bodyElement, HtmlFormat{}, sheet) : HtmlFormat{};
    state.blockParagraph = format.paragraph;
    for (const xmlNode *child = bodyElement ? bodyElement->children : nullptr; child; child = child->next) {
        if (child == notes.zonesStart)
            break;
        node(child, format);
    }
    endParagraph();
}

void HtmlContent::children(const xmlNode *parent, const HtmlFormat &format)
{
    if (depth >= maximumDepth)
        return;
    ++depth;
    for (const xmlNode *child = parent->children; child; child = child->next)
        node(child, format);
    --depth;
}

void HtmlContent::node(const xmlNode *node, const HtmlFormat &outer)
{
    if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE)
        characters(reinterpret_cast<const char *>(node->content), outer);
    else if (node->type == XML_ELEMENT_NODE)
        element(node, outer);
}

void HtmlContent::element(const xmlNode *element, const HtmlFormat &outer)
{
    const std::string tag = tagOf(element);
    if (isSkipped(tag) || HtmlNotes::isDataLabel(element))
        return;
    const HtmlFormat format = HtmlFormat::inside(element, outer, sheet);
    if (format.hidden)
        return;
    if (const std::string label = notes.calledLabel(element); !label.empty())
        note(label, format);
    else if (tag == "br")
        lineBreak(format);
    else if (tag == "ul" || tag == "ol" || tag == "menu" || tag == "dir")
        list(element, format, tag == "ol");
    else if (tag == "li")
        listItem(element, format);
    else if (tag == "table")
        table(element, format);
    else if (tag == "img")
        image(element, format);
    else if (tag == "a" && !plainAttribute(element, "href").empty())
        link(element, format);
    else if (isBlock(tag))
        block(element, format);
    else
        children(element, format);
}

void HtmlContent::lineBreak(const HtmlFormat &format)
{
    ensureParagraph();
    ensureSpan(format);
    sink.insertLineBreak();
    state.pendingSpace = false;
    state.anyText = false;
}

void HtmlContent::block(const xmlNode *element, const HtmlFormat &format)
{
    endParagraph();
    const OdfProperties saved = state.blockParagraph;
    state.blockParagraph = format.paragraph;
    const std::string tag = tagOf(element);
    if (tag.size() == 2 && tag[0] == 'h' && tag[1] >= '1' && tag[1] <= '6')
        state.blockParagraph["text:outline-level"] = tag.substr(1);
    children(element, format);
    endParagraph();
    state.blockParagraph = saved;
}

void HtmlContent::characters(const char *text, const HtmlFormat &format)
{
    if (!text)
        return;
    if (fromLibrevenge && !format.preformatted) {
        librevengeCharacters(text, format);
        return;
    }
    std::string run;
    if (format.preformatted) {
        for (const char *c = text; *c; ++c) {
            if (*c == '\n' || *c == '\t') {
                emit(run, format);
                run.clear();
                ensureParagraph();
                ensureSpan(format);
                *c == '\n' ? sink.insertLineBreak() : sink.insertTab();
            } else if (*c != '\r') {
                run += *c;
            }
        }
        emit(run, format);
        return;
    }
    for (const char *c = text; *c; ++c) {
        if (isSpace(*c)) {
            state.pendingSpace = state.anyText || !run.empty();
            continue;
        }
        if (state.pendingSpace && !run.empty())
            run += ' ';
        else if (state.pendingSpace)
            emit(" ", format);
        state.pendingSpace = false;
        run += *c;
    }
    emit(run, format);
}

void HtmlContent::librevengeCharacters(const char *text, const HtmlFormat &format)
{
    std::string run;
    for (const char *c = text; *c; ++c) {
        if (*c == '\n' || *c == '\r')
            continue;
        const bool tab = *c == '\t';
        // U+FDD0, how the reader marked librevenge's explicit spaces.
        const bool space = c[0] == '\xEF' && c[1] == '\xB7' && c[2] == '\x90';
        if (!tab && !space) {
            run += *c;
            continue;
        }
        emit(run, format);
        run.clear();
        ensureParagraph();
        ensureSpan(format);
        tab ? sink.insertTab() : sink.insertSpace();
        state.anyText = true;
        c += space ? 2 : 0;
    }
    emit(run, format);
}

void HtmlContent::emit(const std::string &text, const HtmlFormat &format)
{
    if (text.empty())
        return;
    const auto font = format.text.find("style:font-name");
    const SymbolFonts::Font symbols =
        font == format.text.end() ? SymbolFonts::Font::none : SymbolFonts::byFamily(font->second);
    if (symbols != SymbolFonts::Font::none) {
        // Pages written for a symbol font hold its codes as plain characters (Word's "·" bullet in
        // Symbol). What they show goes in the font around them, as the ODT reader does it.
        HtmlFormat plain = format;
        plain.text.erase("style:font-name");
        for (const auto &piece : SymbolFonts::translate(symbols, text, !fromLibrevenge))
            emitText(piece.text, piece.translated ? plain : format);
        return;
    }
    emitText(text, format);
}

void HtmlContent::emitText(const std::string &text, const HtmlFormat &format)
{
    ensureParagraph();
    ensureSpan(format);
    sink.insertText(librevenge::RVNGString(text.c_str()));
    state.anyText = true;
}

void HtmlContent::ensureParagraph()
{
    if (state.paragraphOpen)
        return;
    RVNGPropertyList properties;
    OdtProperties::addParagraph(properties, state.blockParagraph, {});
    if (const auto level = state.blockParagraph.find("text:outline-level");
        level != state.blockParagraph.end())
        properties.insert("text:outline-level", std::atoi(level->second.c_str()));
    state.paragraphOpen = true;
    state.anyText = false;
    state.listElement = state.listElementOwed;
    state.listElementOwed = false;
    state.listElement ? sink.openListElement(properties) : sink.openParagraph(properties);
}

void HtmlContent::ensureSpan(const HtmlFormat &format)
{
    if (state.spanOpen && state.spanFormat == format.text)
        return;
    closeSpan();
    RVNGPropertyList properties;
    OdtProperties::addText(properties, format.text, noFonts);
    sink.openSpan(properties);
    state.spanOpen = true;
    state.spanFormat = format.text;
}

void HtmlContent::closeSpan()
{
    if (!state.spanOpen)
        return;
    sink.closeSpan();
    state.spanOpen = false;
}

void HtmlContent::endParagraph()
{
    if (!state.paragraphOpen)
        return;
    closeSpan();
    state.paragraphOpen = false;
    state.pendingSpace = false;
    state.anyText = false;
    state.listElement ? sink.closeListElement() : sink.closeParagraph();
}

void HtmlContent::list(const xmlNode *element, const HtmlFormat &format, bool ordered)
{
    endParagraph();
    if (state.listElementOwed) {
        // An item whose first content is a sublist still has its own number.
        ensureParagraph();
        endParagraph();
    }
    ++listDepth;
    RVNGPropertyList level;
    level.insert("librevenge:list-id", nextListId++);
    level.insert("librevenge:level", listDepth);
    level.insert("text:space-before", 0.25 * (listDepth - 1));
    level.insert("text:min-label-width", 0.25);
    listStyle(level, format.listStyle, ordered, listDepth);
    if (ordered)
        if (const std::string start = plainAttribute(element, "start"); !start.empty())
            level.insert("text:start-value", std::atoi(start.c_str()));
    ordered ? sink.openOrderedListLevel(level) : sink.openUnorderedListLevel(level);
    const OdfProperties saved = state.blockParagraph;
    state.blockParagraph = format.paragraph;
    children(element, format);
    endParagraph();
    state.blockParagraph = saved;
    ordered ? sink.closeOrderedListLevel() : sink.closeUnorderedListLevel();
    --listDepth;
}

void HtmlContent::listItem(const xmlNode *element, const HtmlFormat &format)
{
    if (listDepth == 0) {
        block(element, format);
        return;
    }
    endParagraph();
    const OdfProperties saved = state.blockParagraph;
    state.blockParagraph = format.paragraph;
    state.listElementOwed = true;
    children(element, format);
    if (state.listElementOwed)
        ensureParagraph();
    endParagraph();
    state.blockParagraph = saved;
}

void HtmlContent::table(const xmlNode *element, const HtmlFormat &format)
{
    endParagraph();
    const HtmlTable grid = HtmlTable::of(element);
    std::vector<double> widths;
    for (const xmlNode *cell : grid.columnWidthCells())
        widths.push_back(
            cell ? HtmlFormat::cssInches(HtmlFormat::inside(cell, format, sheet).cell["style:width"], 12)
                       .value_or(0)
                 : 0);
    sink.openTable(OdtProperties::table({}, widths));
    const State saved = state;
    for (int row = 0; row < grid.rowCount(); ++row) {
        sink.openTableRow(OdtProperties::row({}, grid.isHeaderRow(row)));
        for (int column = 0; column < grid.columnCount(); ++column) {
            const HtmlTable::Slot slot = grid.at(row, column);
            if (!slot.cell)
                continue;
            if (!slot.origin) {
                RVNGPropertyList position;
                position.insert("librevenge:column", column);
                position.insert("librevenge:row", row);
                sink.insertCoveredTableCell(position);
                continue;
            }
            const HtmlFormat cellFormat = HtmlFormat::inside(slot.cell, format, sheet);
            sink.openTableCell(OdtProperties::cell(cellFormat.cell, column, row, slot.columns, slot.rows));
            state = State{};
            state.blockParagraph = cellFormat.paragraph;
            children(slot.cell, cellFormat);
            endParagraph();
            sink.closeTableCell();
        }
        sink.closeTableRow();
    }
    state = saved;
    sink.closeTable();
}

void HtmlContent::image(const xmlNode *element, const HtmlFormat &format)
{
    // Only pictures carried inside the document: nothing is ever fetched.
    const std::string source = plainAttribute(element, "src");
    const std::size_t comma = source.find(',');
    if (source.rfind("data:", 0) != 0 || comma == std::string::npos ||
        source.substr(0, comma).find(";base64") == std::string::npos)
        return;
    std::string base64 = source.substr(comma + 1);
    std::erase_if(base64, isSpace);
    const librevenge::RVNGBinaryData data = decodeBase64(base64);
    if (data.empty())
        return;
    RVNGPropertyList frame;
    for (const char *side : {"width", "height"})
        if (const auto inches = HtmlFormat::cssInches(plainAttribute(element, side) + "px", 12))
            frame.insert((std::string("svg:") + side).c_str(), *inches);
    RVNGPropertyList object;
    object.insert("librevenge:mime-type", source.substr(5, source.find(';') - 5).c_str());
    object.insert("office:binary-data", data);
    ensureParagraph();
    ensureSpan(format);
    sink.openFrame(frame);
    sink.insertBinaryObject(object);
    sink.closeFrame();
    state.anyText = true;
}

void HtmlContent::link(const xmlNode *element, const HtmlFormat &format)
{
    ensureParagraph();
    closeSpan();
    RVNGPropertyList properties;
    properties.insert("xlink:type", "simple");
    properties.insert("xlink:href", plainAttribute(element, "href").c_str());
    sink.openLink(properties);
    children(element, format);
    closeSpan();
    sink.closeLink();
}

void HtmlContent::note(const std::string &label, const HtmlFormat &format)
{
    if (depth >= maximumDepth)
        return;
    ++depth;
    ensureParagraph();
    ensureSpan(format);
    const char kind = label[0];
    if (kind == 'F')
        sink.openFootnote({});
    else if (kind == 'E')
        sink.openEndnote({});
    else if (kind == 'C')
        sink.openComment({});
    else {
        sink.openFrame({});
        sink.openTextBox({});
    }
    const State saved = state;
    state = State{};
    for (const xmlNode *part : notes.bodies.at(label))
        node(part, HtmlFormat{});
    endParagraph();
    state = saved;
    if (kind == 'F')
        sink.closeFootnote();
    else if (kind == 'E')
        sink.closeEndnote();
    else if (kind == 'C')
        sink.closeComment();
    else {
        sink.closeTextBox();
        sink.closeFrame();
    }
    state.anyText = true;
    --depth;
}

} // namespace richtext
