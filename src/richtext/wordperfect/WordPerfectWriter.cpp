#include "WordPerfectWriter.h"

#include "Wp5Writer.h"
#include "Wp6Writer.h"

#include "CharacterMap.h"
#include "Properties.h"
#include "WpgImage.h"
#include "richtext/Base64.h"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace richtext::wordperfect {

using librevenge::RVNGPropertyList;

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

void WordPerfectWriter::startDocument(const RVNGPropertyList &propList)
{
    largerSpacingOnly = textOf(propList, "librevenge:paragraph-spacing") == "larger";
}

void WordPerfectWriter::endDocument()
{
    while (streams.size() > 1)
        streams.pop_back(); // an unbalanced stream: keep what the document itself holds
    closeAttributes();
    settleSpacing(0);
    // A final HRt adds no paragraph for libwpd, so every empty paragraph at the end survives.
    flushReturns();
    endFirstPage(false);
    file = assemble(streams.back().bytes);
}

void WordPerfectWriter::openPageSpan(const RVNGPropertyList &propList)
{
    if (streams.size() == 1 && streams.back().started) {
        // A new page style starts a new page. The break goes before its header and footer codes:
        // they apply from the page they stand on, and before it they would replace the last page's.
        breakPage();
        pageJustBroken = true;
    }
    setPageColumns(propList);
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
    if (pageColumns.count > 1 && sectionColumns.empty())
        setColumns(pageColumns);
}

// A page style set in columns: its text runs in them, outside the sections that set their own.
void WordPerfectWriter::setPageColumns(const RVNGPropertyList &propList)
{
    if (streams.size() != 1)
        return;
    const librevenge::RVNGProperty *count = propList["fo:column-count"];
    const int columns = count ? std::clamp(count->getInt(), 1, 24) : 1;
    const TextColumns before = pageColumns;
    pageColumns.count = columns;
    if (columns > 1)
        pageColumns.gap = wpu(inchesOf(propList, "fo:column-gap").value_or(0.5));
    // A later page style with other columns changes them where it starts; the first one's are set
    // with the page setup, before any text.
    if (before != pageColumns && pageSetupKnown && sectionColumns.empty())
        setColumns(pageColumns);
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
    settleSpacing(0);
    flushReturns();
    closeAttributes();
}

std::string WordPerfectWriter::popStream(bool separateText)
{
    endContainer();
    // A note's, header's or box's text is its own in WordPerfect, but libwpd carries its last colour
    // on into the text around it: the colour goes back to black before the text ends.
    if (separateText && streams.back().written.colour != 0) {
        writeColour(0);
        streams.back().written.colour = 0;
    }
    std::string bytes = std::move(streams.back().bytes);
    const bool content = streams.back().content;
    streams.pop_back();
    if (!separateText && content) // a table's cells are content of the text around them
        streams.back().content = streams.back().paragraphContent = true;
    return bytes;
}

void WordPerfectWriter::openHeaderFooter(const RVNGPropertyList &propList, bool footer)
{
    headerOccurrence.push_back(textOf(propList, "librevenge:occurrence"));
    HeaderRoom room;
    room.minimum = std::max(0, wpu(inchesOf(propList, "fo:min-height").value_or(0)));
    room.spacing =
        std::max(0, wpu(inchesOf(propList, footer ? "fo:margin-top" : "fo:margin-bottom").value_or(0)));
    room.spacingInMinimum = textOf(propList, "style:dynamic-spacing") == "true";
    pushStream(true);
    writeSideMargins();
    room.start = out().size();
    headerRooms.push_back(room);
}

void WordPerfectWriter::closeHeaderFooter(bool footer)
{
    if (streams.size() < 2 || headerOccurrence.empty())
        return;
    if (!headerRooms.empty()) {
        // Readers drop a header's last paragraph spacing: the room between a header and the text
        // is a blank line of its own, below the header's lines (above a footer's).
        const HeaderRoom room = headerRooms.back();
        headerRooms.pop_back();
        Stream &stream = streams.back();
        stream.spacingAt.reset();
        const int lines = stream.lineHeights;
        const int blank =
            room.spacingInMinimum ? room.minimum - lines : std::max(room.minimum - lines, room.spacing);
        // A header with no text of its own (Word's empty one) still takes its room on every page;
        // one for the first page only would push that page's text down instead.
        const bool emptyWithRoom = !stream.content && blank >= 60 && headerOccurrence.back() != "first";
        // A header that ends in an empty paragraph (as Word's do) keeps it: its line is part of the
        // header's height.
        if (!stream.paragraphContent && (stream.content || emptyWithRoom) && stream.pendingReturns > 0)
            flushReturns();
        if (emptyWithRoom)
            stream.content = true;
        if (stream.content && blank >= 60) {
            if (footer) {
                flushReturns();
                const std::size_t end = out().size();
                writeBlankLine(blank, false);
                const std::string line = out().substr(end);
                out().resize(end);
                out().insert(std::min(room.start, end), line);
            } else {
                writeBlankLine(blank, true);
            }
        }
        // A footer's last paragraph keeps its space below inside the footer, as Word and Writer
        // count it: the footer's text stands that much above the margin.
        if (footer && stream.content && stream.lastBelow >= 60) {
            flushReturns();
            writeBlankLine(stream.lastBelow, true);
        }
    }
    // Formatting codes with nothing to show are no header to libwpd, which keeps the one before
    // on the pages that should have an empty one: such a header is written as empty.
    const bool content = streams.back().content;
    std::string body = popStream();
    if (!content)
        body.clear();
    const std::string occurrence = headerOccurrence.back();
    headerOccurrence.pop_back();
    FirstPageOnly &first = firstPageOnly[footer ? 1 : 0];
    const bool firstPageStyle = streams.size() == 1 && !streams.back().started && !firstPageEnded;
    if (occurrence == "first") {
        if (body.empty() || streams.size() != 1)
            return;
        if (firstPageStyle && first.body.empty()) {
            first.body = body;
            first.from = out().size();
            writeHeaderFooter(footer, "all", body);
            first.to = out().size();
            return;
        }
        // WordPerfect has no header for one page that libwpd reads, and as a header for every page
        // it would replace the regular one: its text opens the page instead, where it shows.
        flushReturns();
        out() += body;
        writeHardReturn();
        streams.back().started = true;
        lose(loss::firstPageHeaders);
        return;
    }
    if (firstPageStyle)
        first.regular.emplace_back(occurrence.empty() ? "all" : occurrence, body);
    if (!firstPageStyle || first.body.empty())
        writeHeaderFooter(footer, occurrence.empty() ? "all" : occurrence, body);
}

// The first page ends: at a hard page break the regular headers and footers follow the first page's
// own, when the text before it is about a page; otherwise (a first page that runs on, or the
// document's end) the first page's own stand as text where the page opens.
void WordPerfectWriter::endFirstPage(bool atBreak)
{
    if (firstPageEnded || streams.size() != 1)
        return;
    firstPageEnded = true;
    const int room = page.height - page.top - page.bottom;
    const bool onePage = streams.back().lineHeights <= room;
    if (!atBreak && onePage)
        return; // the first page's own hold for the whole of a one-page document
    // The later codes move first, so that the earlier ones stay where they were written.
    const int later = firstPageOnly[1].from >= firstPageOnly[0].from ? 1 : 0;
    for (const int kind : {later, 1 - later}) {
        FirstPageOnly &first = firstPageOnly[kind];
        if (first.body.empty())
            continue;
        const std::size_t end = out().size();
        const bool follows = atBreak && onePage; // the regular ones follow the break
        if (follows && first.regular.empty())
            writeHeaderFooter(kind == 1, "all", {});
        for (const auto &[occurrence, body] : first.regular)
            writeHeaderFooter(kind == 1, occurrence, body);
        if (follows)
            continue;
        out() += first.body;
        writeHardReturn();
        const std::string codes = out().substr(end);
        out().resize(end);
        out().replace(first.from, first.to - first.from, codes);
        lose(loss::firstPageHeaders);
    }
}

void WordPerfectWriter::openHeader(const RVNGPropertyList &propList)
{
    openHeaderFooter(propList, false);
}
void WordPerfectWriter::closeHeader()
{
    closeHeaderFooter(false);
}
void WordPerfectWriter::openFooter(const RVNGPropertyList &propList)
{
    openHeaderFooter(propList, true);
}
void WordPerfectWriter::closeFooter()
{
    closeHeaderFooter(true);
}

void WordPerfectWriter::breakPage()
{
    // A hard page ends the paragraph before it, as WordPerfect writes it: it takes an HRt's place.
    Stream &stream = streams.back();
    if (stream.pendingReturns > 0)
        --stream.pendingReturns;
    settleSpacing(0); // space before a page's first paragraph is lost at the top of the page
    flushReturns();
    writePageBreak();
    endFirstPage(true);
}

void WordPerfectWriter::breakColumn()
{
    // The paragraph before keeps its HRt: wp2latex runs a column break's two lines together without.
    settleSpacing(0);
    flushReturns();
    writeColumnBreak();
}

// A section set in columns: WordPerfect's newspaper columns, equal shares of the text area, from
// the section's first paragraph to its end, where the columns before it return.
void WordPerfectWriter::openSection(const RVNGPropertyList &propList)
{
    const librevenge::RVNGProperty *count = propList["fo:column-count"];
    const int columns = count && !hidden && streams.size() == 1 ? std::clamp(count->getInt(), 1, 24) : 1;
    const librevenge::RVNGProperty *unbalanced = propList["text:dont-balance-text-columns"];
    const TextColumns own{columns, wpu(inchesOf(propList, "fo:column-gap").value_or(0.5)),
                          !unbalanced || unbalanced->getStr() != "true"};
    const TextColumns outer = columnsInForce();
    sectionColumns.push_back(columns > 1 || outer.count == 1 ? own : outer);
    if (columns > 1)
        setColumns(own);
}

void WordPerfectWriter::closeSection()
{
    if (sectionColumns.empty())
        return;
    const TextColumns inner = sectionColumns.back();
    sectionColumns.pop_back();
    const TextColumns &outer = columnsInForce();
    if (inner != outer && streams.size() == 1)
        setColumns(outer);
}

void WordPerfectWriter::setColumns(const TextColumns &columns)
{
    // The codes start a paragraph: the one before ends first.
    flushReturns();
    writeColumns(columns);
}

// Word processors put the paragraph's own space below it and the next one's space above it between
// the two; WordPerfect has only the space after a paragraph, so it takes both, written at the start
// of the paragraph it follows once the next is known.
void WordPerfectWriter::settleSpacing(int above, bool listItem, bool between)
{
    Stream &stream = streams.back();
    if (!stream.spacingAt)
        return;
    const std::size_t at = *stream.spacingAt;
    stream.spacingAt.reset();
    // Paragraphs that leave the space out between them when they share a style; the reader hands
    // no style name over, so equal spacing stands for the same style.
    const bool sameList = listItem && stream.spacingListItem && above == stream.spacingAbove;
    const int gap = largerSpacingOnly ? std::max(stream.spacingBelow, above) : stream.spacingBelow + above;
    const int spacing = sameList ? 0 : std::clamp(gap, 0, 0x7FFF);
    if (!writesParagraphSpacing()) {
        // 5.1 has no such code: its users typed an empty line, here one as high as the space. Spaces
        // too small for a line of their own add up until they make one, so the text below stays
        // where it stood.
        if (!between || stream.pendingReturns == 0 || stream.subDocument) {
            stream.spacingOwed = 0;
            return;
        }
        const int room = spacing + stream.spacingOwed;
        stream.spacingOwed = room < 60 ? room : 0;
        if (room >= 60)
            writeBlankLine(room, false);
        return;
    }
    if (spacing == stream.spacingInForce || at > out().size())
        return;
    const std::size_t end = out().size();
    writeParagraphSpacing(spacing);
    std::string code = out().substr(end);
    out().resize(end);
    out().insert(at, code);
    stream.spacingInForce = spacing;
}

namespace {

// A line is about 1.15 times its font's size; WPU times 3 is 1/50 point, the unit of font sizes.
constexpr double lineToFont = 1.15 / 3;

// The height of a line in the font last written (12 point when none is), WPU.
int lineHeightOf(int fontSize)
{
    return static_cast<int>(std::lround((fontSize ? fontSize : 600) * lineToFont));
}

} // namespace

// A line of nothing but a hard space in a font as high as the room it stands for. Readers size a line with
// nothing in it (an ordinary space counts as nothing) by the paragraph's default font, whatever codes it
// holds. Closing: the text ends on it, with no return and no font to restore.
void WordPerfectWriter::writeBlankLine(int height, bool closing)
{
    Stream &stream = streams.back();
    flushReturns();
    CharacterFormat restored = stream.written;
    if (restored.font.empty())
        restored.font = "Times New Roman";
    if (!restored.size)
        restored.size = 600;
    CharacterFormat blank = restored;
    if (inCellStream())
        stream.lineHeights += height;
    // The line spacing in force stretches the blank line as it does every other, but not the last
    // line of a header (LibreOffice leaves it as its font sets it): a closing one, a header's or a
    // cell's, is single spaced.
    if (closing && stream.paragraph.lineSpacing != 0x10000) {
        ParagraphFormat single = stream.paragraph;
        single.lineSpacing = 0x10000;
        writeParagraphFormat(stream.paragraph, single);
        stream.paragraph = single;
    }
    const double spacing = std::max(0.25, stream.paragraph.lineSpacing / 65536.0);
    blank.size = std::clamp(static_cast<int>(std::lround(height / lineToFont / spacing)), 100, 7200);
    // With no font chosen yet, the first one written is the document's own for libwpd.
    if (stream.written.font.empty() || !stream.written.size)
        writeFont(restored);
    writeFont(blank);
    writeHardSpace();
    if (closing) {
        stream.written.font = blank.font;
        stream.written.size = blank.size;
        return;
    }
    writeHardReturn();
    writeFont(restored); // the next paragraph's text has the font it had before
    stream.written.font = restored.font;
    stream.written.size = restored.size;
}

void WordPerfectWriter::flushReturns()
{
    Stream &stream = streams.back();
    while (stream.pendingReturns > 0) {
        --stream.pendingReturns;
        writeHardReturn();
    }
}

void WordPerfectWriter::startParagraph(const RVNGPropertyList &propList, const std::string &label,
                                       bool listItem)
{
    if (hidden)
        return;
    Stream &stream = streams.back();
    // Neither version has a right-to-left paragraph: its words stay, set from the left.
    rightToLeft = textOf(propList, "style:writing-mode").starts_with("rl");
    if (stream.joinCell) {
        // The next cell of a flattened row: its first paragraph goes on the row's line after a tab.
        stream.joinCell = false;
        if (stream.pendingReturns > 0) {
            --stream.pendingReturns;
            stream.pendingStart.reset();
            stream.joinedLine = true;
            text(U"\t");
            if (!label.empty()) {
                text(CharacterMap::decodeUtf8(label));
                tab();
            }
            return;
        }
    }
    stream.joinedLine = false;
    stream.pendingBlanks.clear();
    paragraphOpensPage = false;
    if (streams.size() == 1) {
        const std::string breakBefore = textOf(propList, "fo:break-before");
        paragraphOpensPage = !stream.started || pageJustBroken || breakBefore == "page";
        if (breakBefore == "page" && stream.started && !pageJustBroken)
            breakPage();
        else if (breakBefore == "column" && stream.started && columnsInForce().count > 1)
            breakColumn();
        pageJustBroken = false;
    }
    const int above = std::max(0, wpu(inchesOf(propList, "fo:margin-top").value_or(0)));
    const int below = std::max(0, wpu(inchesOf(propList, "fo:margin-bottom").value_or(0)));
    // Space left out between paragraphs of one style (Word's list paragraphs); where the source
    // does not say, list items are taken to share a style.
    const std::string contextualSpacing = textOf(propList, "style:contextual-spacing");
    const bool contextual = contextualSpacing == "true" || (contextualSpacing.empty() && listItem);
    settleSpacing(above, contextual && below == stream.spacingBelow, true);
    stream.lastBelow = below;
    flushReturns();
    if (paragraphOpensPage && above >= 60) {
        // Word and Writer keep the space above a paragraph that opens the document or that a hard
        // break puts at a page's top; WordPerfect has only the space after a paragraph: an empty
        // line as high, with none after.
        if (writesParagraphSpacing() && stream.spacingInForce != 0) {
            writeParagraphSpacing(0);
            stream.spacingInForce = 0;
        }
        writeBlankLine(above, false);
    }
    if (writesParagraphSpacing() || !stream.subDocument) {
        stream.spacingAt = out().size();
        stream.spacingBelow = below;
        stream.spacingAbove = above;
        stream.spacingListItem = contextual;
    }
    ParagraphFormat format = paragraphFormatOf(propList);
    if (stream.centreLines && format.justification < 2)
        format.justification = 2;
    // Stops closer or wider than WordPerfect's own half inch have to be set, or every tab lands
    // elsewhere than in Word or LibreOffice; their half inch (or 1.25 cm) is left to WordPerfect's.
    if (std::abs(format.tabSpacing - defaultTabSpacing) <= 12)
        format.tabSpacing = 0;
    if (format.tabs.empty() && format.tabSpacing)
        format.tabs = defaultTabStops(format);
    if (format.firstLine < 0) {
        // A hanging line's first tab goes to the paragraph's indent, which word processors treat as
        // a stop; WordPerfect needs it in the tab set (its own stops are every half inch from the
        // paper's edge), and readers drop a tab to a position the set lacks.
        if (format.tabs.empty())
            format.tabs = defaultTabStops(format);
        const int indent = page.left + format.leftIndent - tabOrigin(format);
        const auto at =
            std::lower_bound(format.tabs.begin(), format.tabs.end(), indent,
                             [](const TabStop &stop, int position) { return stop.position < position; });
        if (at == format.tabs.end() || at->position != indent)
            format.tabs.insert(at, TabStop{indent, 0, false});
    }
    if (!(format == stream.paragraph)) {
        writeParagraphFormat(stream.paragraph, format);
        stream.paragraph = format;
    }
    stream.pendingStart = format;
    stream.paragraphContent = false;
    stream.lineAfterPicture = false;
    stream.paragraphCharacters = 0;
    startLine(page.left + format.leftIndent + format.firstLine);
    stream.started = true;
    stream.wanted.attributes = 0;
    stream.wanted.capitals = false;
    stream.pendingLabel = label;
    stream.pendingPicture = false;
}

void WordPerfectWriter::writePendingLabel()
{
    Stream &stream = streams.back();
    if (stream.pendingPicture) {
        // A picture bullet stands in the label's place as a picture in the line.
        stream.pendingPicture = false;
        stream.pendingLabel.clear();
        const BulletPicture &level = listPictures.back();
        text(U"");
        writeImage(*level.raster, level.width, level.height);
        tab();
        return;
    }
    if (stream.pendingLabel.empty())
        return;
    const std::string label = std::move(stream.pendingLabel);
    stream.pendingLabel.clear();
    const bool capitals = stream.wanted.capitals; // a label is numbered as its list says
    stream.wanted.capitals = false;
    text(CharacterMap::decodeUtf8(label));
    tab();
    stream.wanted.capitals = capitals;
}

void WordPerfectWriter::openParagraph(const RVNGPropertyList &propList)
{
    startParagraph(propList, {});
}

void WordPerfectWriter::closeParagraph()
{
    if (hidden)
        return;
    writePendingLabel();
    endLine();
    Stream &stream = streams.back();
    // A paragraph that only anchors boxes (a footer's frame) gives its line to the boxes' text.
    const bool onlyBoxes = !stream.paragraphContent && !stream.boxes.empty();
    if (!onlyBoxes && !stream.paragraphContent && stream.wanted.size && stream.wanted.size != 600) {
        // Readers size an empty line by their default font: a hard space keeps it as tall as the
        // paragraph's own font, so a page of small print holds the lines it held.
        stream.wanted.attributes = 0;
        stream.wanted.highlight.reset();
        const bool content = stream.content;
        text(U"\u00A0");
        // After a table inside a cell it is the paragraph a cell ends with, as at any size: not
        // text of its own.
        if (!tables.empty() && tables.back().stream == streams.size() && !tables.back().degraded &&
            !tables.back().cells.empty() && !tables.back().cells.back().inners.empty())
            stream.content = content;
    }
    closeAttributes();
    stream.pendingStart.reset();
    if (!onlyBoxes)
        ++stream.pendingReturns;
    // The paragraph's line at the font it ended in, as its line spacing stretches it.
    const double spacing = std::max(0.25, stream.paragraph.lineSpacing / 65536.0);
    const int line = static_cast<int>(std::lround(lineHeightOf(stream.written.size) * spacing));
    if (!inCellStream()) // a cell counts the lines its paragraph wraps into, below
        stream.lineHeights += line;
    if (stream.subDocument && !onlyBoxes) {
        // A header's long paragraph wraps: its further lines count towards the header's height,
        // at half an em a character, a little less in a serif face.
        const int em = (stream.written.size ? stream.written.size : 600) / 3;
        const std::string &font = stream.written.font;
        const bool serif = font.empty() || font.find("Times") != std::string::npos ||
                           font.find("Roman") != std::string::npos || font.find("Serif") != std::string::npos;
        const int perCharacter = serif ? em * 9 / 20 : em / 2;
        const int width = std::max(1200, page.width - page.left - page.right - stream.paragraph.leftIndent -
                                             stream.paragraph.rightIndent);
        const int lines = (stream.paragraphCharacters * perCharacter + width - 1) / width;
        if (lines > 1)
            stream.lineHeights += (lines - 1) * line;
    } else if (inCellStream()) {
        // A cell's paragraph wraps in the cell's width, at half an em a character, in the font it
        // ends in: the cell's height, for a row's least height.
        const OpenTable &table = tables.back();
        const CellShape &cell = table.cells.back().shape;
        int width = 0;
        for (int column = cell.column;
             column < cell.column + cell.columnSpan && column < static_cast<int>(table.widths.size());
             ++column)
            width += table.widths[static_cast<std::size_t>(column)];
        width = std::max(600, width - 166 - stream.paragraph.leftIndent - stream.paragraph.rightIndent);
        const int em = (stream.written.size ? stream.written.size : 600) / 3;
        const int lines = std::max(1, (stream.paragraphCharacters * em / 2 + width - 1) / width);
        stream.lineHeights += lines * line;
    }
    if (stream.boxes.empty())
        return;
    flushReturns();
    resetParagraphFormat();
    for (std::size_t i = 0; i < stream.boxes.size(); ++i) {
        // A box's text stands as low as the box stood: a blank line for what the paragraph's own
        // line leaves of the drop (a cover's title block).
        const int drop = i < stream.boxDrops.size()
                             ? stream.boxDrops[i] - (onlyBoxes ? 0 : lineHeightOf(stream.written.size))
                             : 0;
        if (drop >= 60)
            writeBlankLine(drop, false);
        out() += stream.boxes[i];
        if (i + 1 < stream.boxes.size())
            writeHardReturn();
    }
    stream.boxes.clear();
    stream.boxDrops.clear();
    stream.pendingReturns = 1; // the last box's paragraph ends like any other
    stream.paragraphContent = true;
    // The words of a box that stood beside the text take the room of the space below: what
    // follows stays about where it stood.
    if (!writesParagraphSpacing())
        stream.spacingOwed -= stream.boxesBeside;
    stream.boxesBeside = 0;
}

void WordPerfectWriter::openSpan(const RVNGPropertyList &propList)
{
    if (!hidden)
        streams.back().wanted = characterFormatOf(propList);
}

void WordPerfectWriter::closeSpan()
{
    if (!hidden) {
        streams.back().wanted.attributes = 0;
        streams.back().wanted.capitals = false;
    }
}

void WordPerfectWriter::closeAttributes()
{
    Stream &stream = streams.back();
    for (int attribute = 0; attribute < 32; ++attribute) {
        if (stream.written.attributes & (1u << attribute))
            writeAttribute(attribute, false);
    }
    stream.written.attributes = 0;
    if (stream.written.highlight) {
        writeHighlight(std::nullopt);
        stream.written.highlight.reset();
    }
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
    std::uint32_t colour = wanted.colour;
    // Light text on a dark cell fill or highlight the version cannot show would vanish on the paper:
    // it takes the fill's colour instead.
    std::optional<std::uint32_t> fill;
    if (!writesCellFills() && !tables.empty() && tables.back().stream == streams.size() &&
        !tables.back().cells.empty())
        fill = tables.back().cells.back().shape.fill;
    if (!writesHighlight() && wanted.highlight)
        fill = wanted.highlight;
    if (fill && lightness(*fill) < 500 && lightness(colour) > 800)
        colour = *fill;
    if (colour != written.colour) {
        writeColour(colour);
        written.colour = colour;
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
    if (writesHighlight() && wanted.highlight != written.highlight) {
        if (written.highlight)
            writeHighlight(std::nullopt);
        if (wanted.highlight)
            writeHighlight(wanted.highlight);
        written.highlight = wanted.highlight;
    }
}

namespace {

// A private-use glyph whose font the reader did not know (readers give the glyphs of the symbol
// fonts they know as what they show): most often a list bullet whose font was lost, so the bullets
// of Word's gallery, by the glyph each shows in the font the gallery sets it in.
std::optional<char32_t> bulletGalleryGlyph(char32_t c)
{
    switch (c) {
    case 0xF0B7:
        return U'\u2022'; // Symbol
    case 0xF0A8:
        return U'\u2666'; // Symbol
    case 0xF0A7:
        return U'\u25AA'; // Wingdings from here on
    case 0xF06E:
        return U'\u25A0';
    case 0xF06F:
        return U'\u25A1';
    case 0xF071:
        return U'\u2751';
    case 0xF076:
        return U'\u2756';
    case 0xF0D8:
        return U'\u27A2';
    case 0xF0E8:
        return U'\u2794';
    case 0xF0FC:
        return U'\u2713';
    default:
        return std::nullopt;
    }
}

// Ornaments a version has no code for, and the nearest shape that WordPerfect 5.1 has: a bullet in
// the shape of its kind reads better than a question mark.
struct StandIn {
    char32_t ornament;
    char32_t nearest;
};
constexpr StandIn ornamentStandIns[] = {
    {0x25FB, 0x25A1}, {0x25FC, 0x25A0}, {0x2714, 0x2713}, {0x2726, 0x2605}, {0x2751, 0x25A1},
    {0x2752, 0x25A1}, {0x2756, 0x25C6}, {0x2794, 0x2192}, {0x27A1, 0x2192}, {0x27A2, 0x25B8},
    {0x29EB, 0x25C6}, {0x2B25, 0x25C6}, {0x2B27, 0x25C6},
};

std::optional<char32_t> nearestOrnament(char32_t c)
{
    for (const StandIn &standIn : ornamentStandIns)
        if (standIn.ornament == c)
            return standIn.nearest;
    return std::nullopt;
}

} // namespace

bool WordPerfectWriter::writeSymbolFontCharacter(char32_t c)
{
    const auto bullet = bulletGalleryGlyph(c);
    const char32_t glyph = bullet.value_or(c);
    const auto nearest = nearestOrnament(glyph);
    if (!bullet && !nearest)
        return false;
    std::size_t used = 1;
    for (const char32_t candidate : {glyph, nearest.value_or(glyph), char32_t(bullet ? 0x2022 : glyph)})
        if (writeCharacter(std::u32string_view(&candidate, 1), used))
            return true;
    return false;
}

// Hiragana, where the version's Japanese set holds katakana only: the same sounds in the other script.
bool WordPerfectWriter::writeAsKatakana(char32_t c)
{
    return c >= 0x3041 && c <= 0x3096 && writeOtherWidth(c + 0x60);
}

// Kana the version's Japanese set holds only in the other width.
bool WordPerfectWriter::writeOtherWidth(char32_t c)
{
    const std::u32string variant = CharacterMap::otherWidth(c);
    if (variant.empty() || !characters().holds(variant))
        return false;
    for (std::size_t i = 0; i < variant.size();) {
        std::size_t used = 1;
        writeCharacter(std::u32string_view(variant).substr(i), used);
        i += used;
    }
    return true;
}

void WordPerfectWriter::text(std::u32string_view text)
{
    writePendingLabel();
    Stream &stream = streams.back();
    std::u32string capitals;
    if (stream.wanted.capitals) {
        // glib's case table: the same upper case whatever the user's locale.
        for (const char32_t c : text)
            capitals += static_cast<char32_t>(g_unichar_toupper(static_cast<gunichar>(c)));
        text = capitals;
    }
    if (!stream.started) {
        flushReturns();
        stream.started = true;
    }
    if (text.empty())
        beginContent(); // a picture, note or field follows
    bool begun = false; // the format cannot change within one call: apply it once
    for (std::size_t i = 0; i < text.size();) {
        const char32_t c = text[i];
        std::size_t used = 1;
        if (c == U'\t' || (c == U' ' && !stream.pendingBlanks.empty())) {
            if (stream.pendingBlanks.empty())
                stream.blanksFormat = stream.wanted;
            stream.pendingBlanks += c;
            ++i;
            continue;
        }
        if (c == U'\n' || c == U'\r') {
            endLine();
            writeLineBreak();
            startLine(page.left + stream.paragraph.leftIndent);
            ++i;
            continue;
        }
        if (stream.lineAfterPicture) {
            stream.lineAfterPicture = false;
            stream.pendingBlanks.clear();
            endLine();
            writeLineBreak();
            startLine(page.left + stream.paragraph.leftIndent);
        }
        if (!begun || !stream.pendingBlanks.empty()) {
            beginContent();
            begun = true;
        }
        if (c == U' ')
            writeSpace();
        else if (c == 0x00A0 || c == 0x2007 || c == 0x202F)
            writeHardSpace();
        else if (c == 0x00AD)
            writeSoftHyphen();
        else if (c == 0x2011)
            writeHardHyphen();
        else if (c > 0x20 && c < 0x7F)
            writeAscii(static_cast<char>(c));
        else if (c < 0x20 || c == 0xFEFF || (c >= 0x200B && c <= 0x200D))
            ; // controls and invisible marks carry nothing WordPerfect can show
        else if (!writeCharacter(text.substr(i), used) && !writeSymbolFontCharacter(c) &&
                 !writeOtherWidth(c)) {
            if (writeAsKatakana(c)) {
                lose(loss::hiraganaAsKatakana);
            } else {
                writeAscii('?');
                lose(loss::charactersWordPerfect);
            }
            used = 1;
        }
        ++stream.lineCharacters;
        ++stream.paragraphCharacters;
        i += used;
    }
}

// What comes before a paragraph's first content, and the tabs and spaces before the next: held
// back until something follows them, since readers take a line that ends in a tab for damage.
void WordPerfectWriter::beginContent()
{
    Stream &stream = streams.back();
    stream.content = true;
    stream.paragraphContent = true;
    if (stream.pendingStart) {
        writeParagraphStart(*stream.pendingStart);
        stream.pendingStart.reset();
    }
    const std::u32string blanks = std::move(stream.pendingBlanks);
    stream.pendingBlanks.clear();
    if (!blanks.empty()) {
        // In their own format: a tab before a link is not underlined with it.
        std::swap(stream.wanted, stream.blanksFormat);
        applyCharacterFormat();
        std::swap(stream.wanted, stream.blanksFormat);
    }
    for (char32_t c : blanks) {
        if (c == U'\t') {
            tab();
        } else {
            writeSpace();
            ++stream.lineCharacters;
        }
    }
    applyCharacterFormat();
}

// Tabs and spaces that end a line show nothing, unless a leader or a line drawn under them does.
void WordPerfectWriter::endLine()
{
    Stream &stream = streams.back();
    if (stream.pendingBlanks.empty() || stream.joinedLine)
        return;
    constexpr std::uint32_t drawn = (1u << underline) | (1u << doubleUnderline) | (1u << strikeout);
    const bool leader = std::any_of(stream.paragraph.tabs.begin(), stream.paragraph.tabs.end(),
                                    [](const TabStop &stop) { return stop.dotLeader; });
    if (leader || (stream.wanted.attributes & drawn))
        beginContent();
    stream.pendingBlanks.clear();
}

std::vector<TabStop> WordPerfectWriter::defaultTabStops(const ParagraphFormat &format) const
{
    const int origin = tabOrigin(format);
    std::vector<TabStop> stops;
    // WordPerfect counts its own stops from the paper's edge; Word and LibreOffice theirs from the margin.
    const int spacing = format.tabSpacing ? format.tabSpacing : defaultTabSpacing;
    for (int at = format.tabSpacing ? page.left + spacing : spacing; at < page.width && stops.size() < 40;
         at += spacing) {
        if (at > origin)
            stops.push_back({at - origin, 0, false});
    }
    return stops;
}

void WordPerfectWriter::startLine(int at)
{
    Stream &stream = streams.back();
    stream.lineAt = at;
    stream.lineAlignment = 0;
    stream.lineCharacters = 0;
}

// WordPerfect codes a tab with the stop it goes to, and readers lay the line out from that (wp2latex
// runs the words of a line together without it). Which stop a tab reaches depends on the width of
// the text before it, estimated here from its length at half an em a character: enough to pick the
// stop in the lines tabs make (leaders to page numbers, label and text, aligned columns).
void WordPerfectWriter::tab()
{
    Stream &stream = streams.back();
    const ParagraphFormat &format = stream.paragraph;
    const int em = (stream.written.size ? stream.written.size : 600) * 1200 / 3600;
    const int width = stream.lineCharacters * em / 2;
    const int at = stream.lineAt + (stream.lineAlignment == 0   ? width
                                    : stream.lineAlignment == 1 ? width / 2
                                                                : 0);
    std::optional<TabStop> next;
    auto consider = [&](TabStop stop) {
        if (stop.position > at && (!next || stop.position < next->position))
            next = stop;
    };
    for (TabStop stop : format.tabs) {
        stop.position += tabOrigin(format);
        consider(stop);
    }
    if (format.firstLine < 0) // a hanging line's first tab goes to the paragraph's indent
        consider({page.left + format.leftIndent, 0, false});
    if (!next) // past the last stop: WordPerfect's default stops, every half inch from the edge
        next = TabStop{(std::max(0, at) / defaultTabSpacing + 1) * defaultTabSpacing, 0, false};
    writeTab(*next);
    stream.lineAt = next->position;
    stream.lineAlignment = next->kind;
    stream.lineCharacters = 0;
}

void WordPerfectWriter::insertText(const librevenge::RVNGString &value)
{
    if (hidden)
        return;
    if (rightToLeft && value.size() > 0)
        lose(loss::rightToLeft);
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
    const std::string type = textOf(propList, "librevenge:field-type");
    if (type == "text:page-number") {
        text(U"");
        writePageNumber();
    } else if (type == "text:page-count") {
        text(U"");
        writePageCount(textOf(propList, "office:string-value"));
    }
}

void WordPerfectWriter::writePageCount(const std::string &shown)
{
    text(CharacterMap::decodeUtf8(shown));
}

void WordPerfectWriter::openListLevel(const RVNGPropertyList &propList, bool ordered)
{
    numbering.openLevel(propList, ordered);
    const double before = inchesOf(propList, "text:space-before").value_or(0.25 * (numbering.depth() - 1));
    const double width = inchesOf(propList, "text:min-label-width").value_or(0.25);
    listIndents.push_back({wpu(before + width), wpu(width)});
    BulletPicture picture;
    if (const librevenge::RVNGProperty *bytes = propList["librevenge:bullet-picture"]; bytes && !ordered) {
        const librevenge::RVNGBinaryData data = richtext::decodeBase64(bytes->getStr().cstr());
        if (data.getDataBuffer()) {
            if (auto raster = decodeRaster(
                    std::string_view(reinterpret_cast<const char *>(data.getDataBuffer()), data.size()))) {
                // Without a size of its own the picture keeps its own.
                const auto size = [&](const char *name, int pixels) {
                    const auto given = inchesOf(propList, name);
                    return std::max(1, wpu(given && *given > 0 ? *given : pixels / raster->pixelsPerInch));
                };
                picture.width = size("fo:width", raster->width);
                picture.height = size("fo:height", raster->height);
                picture.raster = std::make_shared<const Raster>(std::move(*raster));
            }
        }
    }
    listPictures.push_back(std::move(picture));
}

void WordPerfectWriter::closeListLevel()
{
    numbering.closeLevel();
    if (!listIndents.empty())
        listIndents.pop_back();
    if (!listPictures.empty())
        listPictures.pop_back();
}

void WordPerfectWriter::openOrderedListLevel(const RVNGPropertyList &propList)
{
    openListLevel(propList, true);
}
void WordPerfectWriter::openUnorderedListLevel(const RVNGPropertyList &propList)
{
    openListLevel(propList, false);
}
void WordPerfectWriter::closeOrderedListLevel()
{
    closeListLevel();
}
void WordPerfectWriter::closeUnorderedListLevel()
{
    closeListLevel();
}

void WordPerfectWriter::openListElement(const RVNGPropertyList &propList)
{
    RVNGPropertyList properties(propList);
    // WordPerfect has no list of its own that libwpd reads back: the label is text hanging in the
    // level's indent, as a list paragraph is laid out.
    // A list paragraph's own indent, where its style gives one, takes the place of its level's.
    if (!listIndents.empty() && !propList["fo:margin-left"]) {
        properties.insert("fo:margin-left", listIndents.back().first / 1200.0, librevenge::RVNG_INCH);
        properties.insert("fo:text-indent", -listIndents.back().second / 1200.0, librevenge::RVNG_INCH);
    } else if (!listIndents.empty() && !propList["fo:text-indent"]) {
        properties.insert("fo:text-indent", -listIndents.back().second / 1200.0, librevenge::RVNG_INCH);
    }
    if (const librevenge::RVNGProperty *restart = propList["text:start-value"];
        restart && numbering.depth() > 0)
        numbering.restartAt(restart->getInt());
    startParagraph(properties, numbering.depth() > 0 ? numbering.nextLabel() : std::string(), true);
    if (!hidden && !listPictures.empty() && listPictures.back().raster)
        streams.back().pendingPicture = true;
}

void WordPerfectWriter::openNote(const RVNGPropertyList &propList)
{
    if (hidden)
        return;
    const std::string citation = textOf(propList, "text:label");
    const bool own = citation.size() == 1 && citation[0] > ' ' && citation[0] < 0x7F &&
                     !(citation[0] >= '0' && citation[0] <= '9');
    noteMarks.push_back(own ? citation[0] : '\0');
    pushStream(true);
}

void WordPerfectWriter::closeNote(bool endnote)
{
    if (hidden || streams.size() < 2 || noteMarks.empty())
        return;
    const std::string body = popStream();
    const char mark = noteMarks.back();
    noteMarks.pop_back();
    const int number = mark ? 0 : endnote ? ++endnotes : ++footnotes; // a marked note takes no number
    text(U"");
    writeNote(endnote, number, body, mark);
}

void WordPerfectWriter::openFootnote(const RVNGPropertyList &propList)
{
    openNote(propList);
}
void WordPerfectWriter::closeFootnote()
{
    closeNote(false);
}
void WordPerfectWriter::openEndnote(const RVNGPropertyList &propList)
{
    openNote(propList);
}
void WordPerfectWriter::closeEndnote()
{
    closeNote(true);
}
void WordPerfectWriter::openComment(const RVNGPropertyList &)
{
    // libwpd reads no comment back from either version.
    lose(loss::comments);
    ++hidden;
}
void WordPerfectWriter::closeComment()
{
    --hidden;
}
// A text box (an image's caption, a side note) becomes a WordPerfect text box where the format has
// one libwpd reads back (6); elsewhere its paragraphs follow the paragraph it is anchored in.
void WordPerfectWriter::openTextBox(const RVNGPropertyList &)
{
    if (hidden)
        return;
    ++boxDepth;
    boxSizes.push_back(frameSize);
    boxPlacements.push_back(framePlacement);
    pushStream(false);
    streams.back().centreLines = framePlacement.centred && !frameSize;
}

void WordPerfectWriter::closeTextBox()
{
    if (hidden || boxDepth == 0 || streams.size() < 2)
        return;
    --boxDepth;
    endContainer();
    resetParagraphFormat();
    const bool content = streams.back().content;
    const bool opensParagraph = !streams[streams.size() - 2].paragraphContent;
    const int lines = streams.back().lineHeights;
    const std::string body = popStream();
    const auto size = boxSizes.back();
    boxSizes.pop_back();
    const BoxPlacement where = boxPlacements.back();
    boxPlacements.pop_back();
    if (body.empty())
        return;
    // A header whose only text stands in a box still has something to show.
    if (content)
        streams.back().content = streams.back().paragraphContent = true;
    const int width = size ? std::max(1, wpu(size->first)) : 2400;
    const int height = size ? std::max(0, wpu(size->second)) : 0; // 0: as high as its text
    // A box inside a box, a header or a note stays text: libwpd reads no box there.
    if (writesTextBoxes() && boxDepth == 0 && !inSubDocument()) {
        Stream &stream = streams.back();
        if (where.drop >= 120 && opensParagraph && writesParagraphSpacing()) {
            // A wide box lower in its paragraph than the paragraph's first line (a cover's title
            // block): an empty line before it, with the rest of the drop as its space after. No
            // font code: at a document's start the first one would become the document's own.
            flushReturns();
            writeParagraphSpacing(std::max(0, where.drop - lineHeightOf(stream.written.size)));
            writeHardReturn();
            writeParagraphSpacing(stream.spacingInForce);
            if (stream.spacingAt)
                stream.spacingAt = out().size();
        }
        text(U"");
        placement = where;
        writeTextBox(body, width, height);
        placement = BoxPlacement();
        return;
    }
    lose(loss::textBoxes);
    streams.back().paragraphContent = !opensParagraph; // the box's text follows the paragraph
    streams.back().boxes.push_back(body);
    streams.back().boxDrops.push_back(opensParagraph && boxDepth == 0 && !inSubDocument() ? where.drop : 0);
    if (where.anchor != BoxPlacement::Anchor::character)
        streams.back().boxesBeside += lines;
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

} // namespace richtext::wordperfect
