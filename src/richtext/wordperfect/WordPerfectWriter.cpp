#include "WordPerfectWriter.h"

#include "Wp5Writer.h"
#include "Wp6Writer.h"

#include "CharacterMap.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace richtext::wordperfect {

namespace {

using librevenge::RVNGPropertyList;

std::string textOf(const RVNGPropertyList &list, const char *name)
{
    const librevenge::RVNGProperty *property = list[name];
    return property ? property->getStr().cstr() : std::string();
}

// A length in inches from librevenge's text form ("0.5in", "12pt", "2.54cm", "720*" twips).
std::optional<double> inchesOf(const RVNGPropertyList &list, const char *name)
{
    const std::string value = textOf(list, name);
    if (value.empty())
        return std::nullopt;
    char *end = nullptr;
    const double number = std::strtod(value.c_str(), &end);
    if (end == value.c_str())
        return std::nullopt;
    const std::string unit(end);
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
    if (!isNone(textOf(list, "style:text-line-through-style")) || !isNone(textOf(list, "style:text-line-through-type")))
        set(strikeout);
    const std::string position = textOf(list, "style:text-position");
    if (position.rfind("super", 0) == 0 || (!position.empty() && std::strtod(position.c_str(), nullptr) > 0))
        set(superscript);
    else if (position.rfind("sub", 0) == 0 || (!position.empty() && std::strtod(position.c_str(), nullptr) < 0))
        set(subscript);
    if (textOf(list, "fo:font-variant") == "small-caps")
        set(smallCaps);
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
        const double ratio = std::strtod(height.c_str(), nullptr) / 100.0;
        if (ratio > 0.2 && ratio < 10)
            format.lineSpacing = static_cast<int>(std::lround(ratio * 65536.0));
    }
    if (const librevenge::RVNGPropertyListVector *tabs = list.child("style:tab-stops")) {
        for (unsigned long i = 0; i < tabs->count(); ++i) {
            TabStop stop;
            stop.position = wpu(inchesOf((*tabs)[i], "style:position").value_or(0));
            const std::string type = textOf((*tabs)[i], "style:type");
            stop.kind = type == "center" ? 1 : type == "right" ? 2 : type == "char" ? 3 : 0;
            format.tabs.push_back(stop);
        }
    }
    return format;
}

} // namespace

std::unique_ptr<WordPerfectWriter> WordPerfectWriter::create(Version version)
{
    if (version == Version::wp5)
        return std::make_unique<Wp5Writer>();
    return std::make_unique<Wp6Writer>();
}

WordPerfectWriter::WordPerfectWriter()
{
    streams.emplace_back();
}

WordPerfectWriter::~WordPerfectWriter() = default;

void WordPerfectWriter::setDocumentMetaData(const RVNGPropertyList &propList)
{
    documentTitle = textOf(propList, "dc:title");
    documentAuthor = textOf(propList, "meta:initial-creator");
    if (documentAuthor.empty())
        documentAuthor = textOf(propList, "dc:creator");
}

void WordPerfectWriter::endDocument()
{
    while (streams.size() > 1)
        streams.pop_back(); // an unbalanced stream: keep what the document itself holds
    closeAttributes();
    // A final HRt adds no paragraph for libwpd, so every empty paragraph at the end survives.
    flushReturns();
    file = assemble(streams.back().bytes);
}

void WordPerfectWriter::openPageSpan(const RVNGPropertyList &propList)
{
    if (pageSetupKnown)
        return; // WordPerfect keeps one page setup unless the codes change it; the first one rules
    pageSetupKnown = true;
    auto set = [&](const char *name, int &field) {
        if (const auto value = inchesOf(propList, name))
            field = wpu(*value);
    };
    set("fo:page-width", page.width);
    set("fo:page-height", page.height);
    set("fo:margin-top", page.top);
    set("fo:margin-bottom", page.bottom);
    set("fo:margin-left", page.left);
    set("fo:margin-right", page.right);
    if (streams.size() == 1 && !streams.back().started)
        writePageSetup();
}

void WordPerfectWriter::pushStream(bool subDocument)
{
    const bool inherited = streams.back().subDocument;
    streams.emplace_back();
    streams.back().subDocument = subDocument || inherited;
}

void WordPerfectWriter::endContainer()
{
    // The cell or note ends its last paragraph itself; only the empty ones before it need an HRt.
    Stream &stream = streams.back();
    if (stream.pendingReturns > 0)
        --stream.pendingReturns;
    flushReturns();
    closeAttributes();
}

std::string WordPerfectWriter::popStream()
{
    endContainer();
    std::string bytes = std::move(streams.back().bytes);
    streams.pop_back();
    return bytes;
}

void WordPerfectWriter::openHeaderFooter(const RVNGPropertyList &propList, bool)
{
    headerOccurrence.push_back(textOf(propList, "librevenge:occurrence"));
    pushStream(true);
}

void WordPerfectWriter::closeHeaderFooter(bool footer)
{
    if (streams.size() < 2 || headerOccurrence.empty())
        return;
    const std::string body = popStream();
    const std::string occurrence = headerOccurrence.back();
    headerOccurrence.pop_back();
    writeHeaderFooter(footer, occurrence.empty() ? "all" : occurrence, body);
}

void WordPerfectWriter::openHeader(const RVNGPropertyList &propList) { openHeaderFooter(propList, false); }
void WordPerfectWriter::closeHeader() { closeHeaderFooter(false); }
void WordPerfectWriter::openFooter(const RVNGPropertyList &propList) { openHeaderFooter(propList, true); }
void WordPerfectWriter::closeFooter() { closeHeaderFooter(true); }

void WordPerfectWriter::flushReturns()
{
    Stream &stream = streams.back();
    while (stream.pendingReturns > 0) {
        --stream.pendingReturns;
        writeHardReturn();
    }
}

void WordPerfectWriter::startParagraph(const RVNGPropertyList &propList, const std::string &label)
{
    if (hidden)
        return;
    Stream &stream = streams.back();
    if (textOf(propList, "fo:break-before") == "page" && streams.size() == 1 && stream.started) {
        // A hard page ends the paragraph before it, as WordPerfect writes it: it takes an HRt's place.
        if (stream.pendingReturns > 0)
            --stream.pendingReturns;
        flushReturns();
        writePageBreak();
    }
    flushReturns();
    ParagraphFormat format = paragraphFormatOf(propList);
    if (!(format == stream.paragraph)) {
        writeParagraphFormat(stream.paragraph, format);
        stream.paragraph = format;
    }
    stream.started = true;
    stream.wanted.attributes = 0;
    if (!label.empty()) {
        text(CharacterMap::decodeUtf8(label));
        writeTab();
    }
}

void WordPerfectWriter::openParagraph(const RVNGPropertyList &propList)
{
    startParagraph(propList, {});
}

void WordPerfectWriter::closeParagraph()
{
    if (hidden)
        return;
    closeAttributes();
    Stream &stream = streams.back();
    ++stream.pendingReturns;
    if (stream.boxes.empty())
        return;
    flushReturns();
    resetParagraphFormat();
    for (std::size_t i = 0; i < stream.boxes.size(); ++i) {
        out() += stream.boxes[i];
        if (i + 1 < stream.boxes.size())
            writeHardReturn();
    }
    stream.boxes.clear();
    stream.pendingReturns = 1; // the last box's paragraph ends like any other
}

void WordPerfectWriter::openSpan(const RVNGPropertyList &propList)
{
    if (!hidden)
        streams.back().wanted = characterFormatOf(propList);
}

void WordPerfectWriter::closeSpan()
{
    if (!hidden)
        streams.back().wanted.attributes = 0;
}

void WordPerfectWriter::closeAttributes()
{
    Stream &stream = streams.back();
    for (int attribute = 0; attribute < 32; ++attribute) {
        if (stream.written.attributes & (1u << attribute))
            writeAttribute(attribute, false);
    }
    stream.written.attributes = 0;
}

void WordPerfectWriter::applyCharacterFormat()
{
    Stream &stream = streams.back();
    const CharacterFormat &wanted = stream.wanted;
    CharacterFormat &written = stream.written;
    if (!wanted.font.empty() || wanted.size) {
        CharacterFormat font = written;
        if (!wanted.font.empty())
            font.font = wanted.font;
        if (wanted.size)
            font.size = wanted.size;
        if (font.font.empty())
            font.font = "Times New Roman";
        if (!font.size)
            font.size = 600;
        if (font.font != written.font || font.size != written.size) {
            writeFont(font);
            written.font = font.font;
            written.size = font.size;
        }
    }
    if (wanted.colour != written.colour) {
        writeColour(wanted.colour);
        written.colour = wanted.colour;
    }
    for (int attribute = 0; attribute < 32; ++attribute) {
        const std::uint32_t bit = 1u << attribute;
        if ((written.attributes & bit) && !(wanted.attributes & bit))
            writeAttribute(attribute, false);
    }
    for (int attribute = 0; attribute < 32; ++attribute) {
        const std::uint32_t bit = 1u << attribute;
        if (!(written.attributes & bit) && (wanted.attributes & bit))
            writeAttribute(attribute, true);
    }
    written.attributes = wanted.attributes;
}

void WordPerfectWriter::text(std::u32string_view text)
{
    Stream &stream = streams.back();
    if (!stream.started) {
        flushReturns();
        stream.started = true;
    }
    applyCharacterFormat();
    for (std::size_t i = 0; i < text.size();) {
        const char32_t c = text[i];
        std::size_t used = 1;
        if (c == U'\t')
            writeTab();
        else if (c == U'\n' || c == U'\r')
            writeLineBreak();
        else if (c == U' ')
            writeSpace();
        else if (c > 0x20 && c < 0x7F)
            writeAscii(static_cast<char>(c));
        else if (c < 0x20 || c == 0xFEFF || (c >= 0x200B && c <= 0x200D))
            ; // controls and invisible marks carry nothing WordPerfect can show
        else if (!writeCharacter(text.substr(i), used)) {
            writeAscii('?');
            ++substituted;
            used = 1;
        }
        i += used;
    }
}

void WordPerfectWriter::insertText(const librevenge::RVNGString &value)
{
    if (!hidden)
        text(CharacterMap::decodeUtf8(value.cstr()));
}

void WordPerfectWriter::insertTab()
{
    if (!hidden)
        text(U"\t");
}

void WordPerfectWriter::insertSpace()
{
    if (!hidden)
        text(U" ");
}

void WordPerfectWriter::insertLineBreak()
{
    if (!hidden)
        text(U"\n");
}

void WordPerfectWriter::insertField(const RVNGPropertyList &propList)
{
    if (hidden)
        return;
    if (textOf(propList, "librevenge:field-type") == "text:page-number") {
        text(U"");
        writePageNumber();
    }
}

void WordPerfectWriter::openListLevel(const RVNGPropertyList &propList, bool ordered)
{
    numbering.openLevel(propList, ordered);
    const double before = inchesOf(propList, "text:space-before").value_or(0.25 * (numbering.depth() - 1));
    const double width = inchesOf(propList, "text:min-label-width").value_or(0.25);
    listIndents.push_back({wpu(before + width), wpu(width)});
}

void WordPerfectWriter::closeListLevel()
{
    numbering.closeLevel();
    if (!listIndents.empty())
        listIndents.pop_back();
}

void WordPerfectWriter::openOrderedListLevel(const RVNGPropertyList &propList) { openListLevel(propList, true); }
void WordPerfectWriter::openUnorderedListLevel(const RVNGPropertyList &propList) { openListLevel(propList, false); }
void WordPerfectWriter::closeOrderedListLevel() { closeListLevel(); }
void WordPerfectWriter::closeUnorderedListLevel() { closeListLevel(); }

void WordPerfectWriter::openListElement(const RVNGPropertyList &propList)
{
    RVNGPropertyList properties(propList);
    // WordPerfect has no list of its own that libwpd reads back: the label is text hanging in the
    // level's indent, as a list paragraph is laid out.
    if (!listIndents.empty()) {
        const double paragraphLeft = inchesOf(propList, "fo:margin-left").value_or(0);
        properties.insert("fo:margin-left", paragraphLeft + listIndents.back().first / 1200.0, librevenge::RVNG_INCH);
        properties.insert("fo:text-indent", -listIndents.back().second / 1200.0, librevenge::RVNG_INCH);
    }
    startParagraph(properties, numbering.depth() > 0 ? numbering.nextLabel() : std::string());
}

void WordPerfectWriter::openNote(bool)
{
    if (!hidden)
        pushStream(true);
}

void WordPerfectWriter::closeNote(bool endnote)
{
    if (hidden || streams.size() < 2)
        return;
    const std::string body = popStream();
    writeNote(endnote, endnote ? ++endnotes : ++footnotes, body);
}

void WordPerfectWriter::openFootnote(const RVNGPropertyList &) { openNote(false); }
void WordPerfectWriter::closeFootnote() { closeNote(false); }
void WordPerfectWriter::openEndnote(const RVNGPropertyList &) { openNote(true); }
void WordPerfectWriter::closeEndnote() { closeNote(true); }
void WordPerfectWriter::openComment(const RVNGPropertyList &) { ++hidden; }
void WordPerfectWriter::closeComment() { --hidden; }
// A text box (an image's caption, a side note) has no place inside a WordPerfect paragraph that
// libwpd reads back: its paragraphs follow the paragraph it is anchored in.
void WordPerfectWriter::openTextBox(const RVNGPropertyList &)
{
    if (hidden)
        return;
    ++boxDepth;
    pushStream(false);
}

void WordPerfectWriter::closeTextBox()
{
    if (hidden || boxDepth == 0 || streams.size() < 2)
        return;
    --boxDepth;
    endContainer();
    resetParagraphFormat();
    const std::string body = popStream();
    if (!body.empty())
        streams.back().boxes.push_back(body);
}

void WordPerfectWriter::resetParagraphFormat()
{
    Stream &stream = streams.back();
    const ParagraphFormat plain;
    if (!(stream.paragraph == plain)) {
        writeParagraphFormat(stream.paragraph, plain);
        stream.paragraph = plain;
    }
}

void WordPerfectWriter::openTable(const RVNGPropertyList &propList)
{
    if (hidden)
        return;
    OpenTable table;
    if (!tables.empty()) {
        // WordPerfect tables do not nest: an inner table's cells become paragraphs of the outer cell.
        table.degraded = true;
        tables.push_back(table);
        return;
    }
    if (const librevenge::RVNGPropertyListVector *columns = propList.child("librevenge:table-columns")) {
        for (unsigned long i = 0; i < columns->count(); ++i)
            table.widths.push_back(wpu(inchesOf((*columns)[i], "style:column-width").value_or(1.0)));
    }
    tables.push_back(table);
    Stream &outer = streams.back();
    flushReturns();
    closeAttributes();
    resetParagraphFormat();
    outer.started = true;
    const CharacterFormat written = outer.written;
    pushStream(false);
    streams.back().written = written;
    streams.back().started = true;
}

void WordPerfectWriter::openTableRow(const RVNGPropertyList &)
{
    if (hidden || tables.empty() || tables.back().degraded)
        return;
    OpenTable &table = tables.back();
    if (!table.firstInRow || table.row >= 0)
        endCell();
    ++table.row;
    table.column = 0;
    table.horizontalCover = 0;
    table.firstInRow = true;
}

void WordPerfectWriter::beginCell(const CellShape &cell)
{
    OpenTable &table = tables.back();
    writeCell(cell, table.firstInRow);
    table.firstInRow = false;
    streams.back().paragraph = ParagraphFormat();
    streams.back().pendingReturns = 0;
}

void WordPerfectWriter::endCell()
{
    endContainer();
    resetParagraphFormat();
}

void WordPerfectWriter::openTableCell(const RVNGPropertyList &propList)
{
    if (hidden || tables.empty() || tables.back().degraded)
        return;
    OpenTable &table = tables.back();
    CellShape cell;
    cell.column = table.column;
    if (const librevenge::RVNGProperty *span = propList["table:number-columns-spanned"])
        cell.columnSpan = std::max(1, span->getInt());
    if (const librevenge::RVNGProperty *span = propList["table:number-rows-spanned"])
        cell.rowSpan = std::max(1, span->getInt());
    const char *sides[] = {"fo:border-left", "fo:border-right", "fo:border-top", "fo:border-bottom"};
    const std::string all = textOf(propList, "fo:border");
    for (int side = 0; side < 4; ++side) {
        const std::string border = textOf(propList, sides[side]);
        if (!isNone(border.empty() ? all : border) && (border.empty() ? all : border).find("none") == std::string::npos)
            cell.borders |= 1 << side;
    }
    beginCell(cell);
    table.column += cell.columnSpan;
    table.horizontalCover = cell.columnSpan - 1;
}

void WordPerfectWriter::closeTableCell()
{
    if (hidden || tables.empty() || tables.back().degraded)
        return;
    endCell();
}

void WordPerfectWriter::insertCoveredTableCell(const RVNGPropertyList &)
{
    if (hidden || tables.empty() || tables.back().degraded)
        return;
    OpenTable &table = tables.back();
    if (table.horizontalCover > 0) {
        --table.horizontalCover;
        return; // WordPerfect writes nothing for the columns a cell spans
    }
    CellShape cell;
    cell.column = table.column;
    cell.coveredFromAbove = true;
    beginCell(cell);
    endCell();
    ++table.column;
}

void WordPerfectWriter::closeTable()
{
    if (hidden || tables.empty())
        return;
    const OpenTable table = tables.back();
    tables.pop_back();
    if (table.degraded)
        return;
    endCell();
    const CharacterFormat written = streams.back().written;
    const std::string body = popStream();
    std::vector<int> widths = table.widths;
    if (widths.empty())
        widths.assign(std::max(1, table.column), 1200);
    writeTableStart(widths);
    out() += body;
    writeTableEnd();
    streams.back().written = written;
    streams.back().pendingReturns = 0;
}

} // namespace richtext::wordperfect
