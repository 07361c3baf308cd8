// Tables: WordPerfect's own table codes. Its tables do not nest: a table inside a cell joins the
// outer table's grid (the cell's columns split at its column edges, its row at its rows); one in
// another cell of a row that already holds one, or one the grid has no columns left for, becomes
// paragraphs of its cell.

#include "WordPerfectWriter.h"

#include "Properties.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>

namespace richtext::wordperfect {

using librevenge::RVNGPropertyList;

// Each column's width in WPU. Columns that give only a relative width (or none) share what the
// table's width leaves them: its own width, its share of the text area, or the whole text area.
// In a text box the text area is the box's width.
std::vector<int> WordPerfectWriter::columnWidths(const RVNGPropertyList &propList) const
{
    const librevenge::RVNGPropertyListVector *columns = propList.child("librevenge:table-columns");
    if (!columns || columns->count() == 0)
        return {};
    const bool inBox = boxDepth > 0 && !boxSizes.empty() && boxSizes.back();
    const int text =
        std::max(1200, inBox ? wpu(boxSizes.back()->first) : page.width - page.left - page.right);
    int tableWidth = text;
    if (const auto width = inchesOf(propList, "style:width"); width && *width > 0) {
        tableWidth = wpu(*width);
    } else if (const std::string share = textOf(propList, "style:rel-width"); !share.empty()) {
        double percent = 0;
        std::from_chars(share.data(), share.data() + share.size(), percent);
        if (percent > 0 && percent <= 100)
            tableWidth = static_cast<int>(std::lround(text * percent / 100.0));
    }
    std::vector<int> widths(columns->count(), 0);
    std::vector<double> shares(columns->count(), 0);
    int fixed = 0;
    double shareSum = 0;
    std::size_t unknown = 0;
    for (unsigned long i = 0; i < columns->count(); ++i) {
        const RVNGPropertyList &column = (*columns)[i];
        if (const auto width = inchesOf(column, "style:column-width"); width && *width > 0) {
            widths[i] = wpu(*width);
            fixed += widths[i];
        } else {
            ++unknown;
            const librevenge::RVNGProperty *rel = column["style:rel-column-width"];
            shares[i] = rel ? std::max(0.0, rel->getDouble()) : 0;
            shareSum += shares[i];
        }
    }
    const int left = std::max(static_cast<int>(unknown) * 120, tableWidth - fixed);
    for (unsigned long i = 0; i < columns->count(); ++i) {
        if (widths[i] > 0)
            continue;
        const double part = shareSum > 0 ? shares[i] / shareSum : 1.0 / static_cast<double>(unknown);
        widths[i] = std::max(120, static_cast<int>(std::lround(left * part)));
    }
    return widths;
}

// Where the table stands: WordPerfect aligns it with either margin, centres it, or sets it a given
// distance from the paper's edge, which is how a table indented (or pulled out) from the margin goes.
void WordPerfectWriter::placeTable(OpenTable &table, const RVNGPropertyList &propList) const
{
    const std::string align = textOf(propList, "table:align");
    if (align == "center") {
        table.position = 2;
    } else if (align == "right") {
        table.position = 1;
    } else if (align.empty() || align == "left") {
        const int margin = wpu(inchesOf(propList, "fo:margin-left").value_or(0));
        if (margin != 0 && page.left + margin >= 0) {
            table.position = 4;
            table.leftOffset = page.left + margin;
        }
    }
}

// A table inside a cell can join the outer grid: in a cell of one row, the only one of its row
// that holds tables.
bool WordPerfectWriter::nestsInGrid() const
{
    // Not from a note or box inside the cell: their text is a stream of its own.
    if (tables.empty() || tables.back().degraded || tables.back().cells.empty() ||
        tables.back().stream != streams.size())
        return false;
    const OpenTable &outer = tables.back();
    const RecordedCell &cell = outer.cells.back();
    if (cell.shape.coveredFromAbove || cell.shape.rowSpan != 1)
        return false;
    return std::none_of(outer.cells.begin(), outer.cells.end() - 1, [&](const RecordedCell &other) {
        return other.row == cell.row && !other.inners.empty();
    });
}

void WordPerfectWriter::startPart(TablePart &part)
{
    Stream &stream = streams.back();
    part.begin = part.end = stream.bytes.size();
    part.before = part.after = stream.written;
    part.spacingBefore = part.spacingAfter = stream.spacingInForce;
    part.open = true;
    part.contentAround = stream.content;
    stream.content = false;
}

void WordPerfectWriter::finishPart(TablePart &part)
{
    Stream &stream = streams.back();
    part.end = std::max(part.begin, stream.bytes.size());
    part.after = stream.written;
    part.spacingAfter = stream.spacingInForce;
    if (part.open) {
        part.open = false;
        part.content = stream.content;
        stream.content = stream.content || part.contentAround;
    }
}

void WordPerfectWriter::openTable(const RVNGPropertyList &propList)
{
    if (hidden)
        return;
    writePendingLabel(); // a list item that opens with a table
    OpenTable table;
    if (nestsInGrid()) {
        // The cell's text so far is a part of its own; the inner table's cells follow as cells,
        // whose margins stand between that text and the table.
        streams.back().spacingBelow = 0;
        endContainer();
        RecordedCell &cell = tables.back().cells.back();
        TablePart &before = cell.inners.empty() ? cell.text : cell.afters.back();
        before.textEnd = streams.back().bytes.size();
        before.paragraphAtEnd = streams.back().paragraph;
        resetParagraphFormat();
        finishPart(before);
        table.widths = columnWidths(propList);
        table.marginLeft = wpu(inchesOf(propList, "fo:margin-left").value_or(0));
        table.nested = true;
        table.stream = streams.size();
        tables.push_back(table);
        return;
    }
    if (!tables.empty()) {
        // One in another cell of the row, or in a cell that spans rows: its cells become paragraphs
        // of the cell.
        table.degraded = true;
        lose(loss::nestedTables);
        tables.push_back(table);
        return;
    }
    table.widths = columnWidths(propList);
    placeTable(table, propList);
    // A table in a centred box (a cover's title block) stays centred where the box becomes text.
    if (boxDepth > 0 && !boxPlacements.empty() && boxPlacements.back().centred)
        table.position = 2;
    tables.push_back(table);
    Stream &outer = streams.back();
    settleSpacing(0);
    flushReturns();
    closeAttributes();
    resetParagraphFormat();
    outer.started = true;
    const CharacterFormat written = outer.written;
    const int spacing = outer.spacingInForce;
    pushStream(false);
    tables.back().stream = streams.size();
    streams.back().written = written;
    streams.back().spacingInForce = spacing; // the cells carry on what the text before left in force
    streams.back().started = true;
}

void WordPerfectWriter::openTableRow(const RVNGPropertyList &propList)
{
    if (hidden || tables.empty())
        return;
    if (tables.back().degraded) {
        tables.back().column = 0;
        streams.back().joinCell = streams.back().joinedLine = false;
        streams.back().pendingBlanks.clear();
        return;
    }
    OpenTable &table = tables.back();
    if (!table.firstInRow || table.row >= 0)
        endCell();
    ++table.row;
    table.column = 0;
    table.horizontalCover = 0;
    table.firstInRow = true;
    const auto exact = inchesOf(propList, "style:row-height");
    const auto least = inchesOf(propList, "style:min-row-height");
    table.rowHeight = std::clamp(wpu(exact.value_or(least.value_or(0))), 0, 0xFFFF);
    table.rowAtLeast = !exact;
    const librevenge::RVNGProperty *header = propList["librevenge:is-header-row"];
    table.headerRow = header && header->getInt() != 0;
}

void WordPerfectWriter::beginCell(const CellShape &shape)
{
    OpenTable &table = tables.back();
    RecordedCell cell;
    cell.shape = shape;
    cell.shape.rowHeight = table.rowHeight;
    cell.shape.rowAtLeast = table.rowAtLeast;
    cell.shape.headerRow = table.headerRow;
    cell.row = table.row;
    table.firstInRow = false;
    streams.back().paragraph = ParagraphFormat();
    streams.back().pendingReturns = 0;
    streams.back().lineHeights = 0;
    startPart(cell.text);
    table.cells.push_back(cell);
}

void WordPerfectWriter::endCell()
{
    Stream &stream = streams.back();
    if (!writesParagraphSpacing() && inCellStream() && tables.back().cells.back().inners.empty()) {
        // A row is as tall as its cells' last paragraph space and at least its own height, as in
        // word processors: 5.1 has neither code, so a blank line makes up the room. The cell's
        // margins above and below its text, about 0.08 in together, give part of either; the
        // text's own height is a guess, good to about a line, so only a row well above its text is
        // made up.
        constexpr int cellMargins = 94;
        const CellShape &cell = tables.back().cells.back().shape;
        const int below = stream.spacingAt ? stream.spacingBelow + stream.spacingOwed - cellMargins : 0;
        int least = cell.rowSpan == 1 && !cell.coveredFromAbove
                        ? cell.rowHeight - cellMargins - stream.lineHeights
                        : 0;
        if (least < 240)
            least = 0;
        const int room = std::max(below, least);
        if (room >= 60 && (stream.pendingReturns > 0 || !stream.content)) {
            stream.spacingAt.reset();
            stream.spacingOwed = 0;
            CharacterFormat restored = stream.written;
            if (restored.font.empty())
                restored.font = "Times New Roman";
            if (!restored.size)
                restored.size = 600;
            writeBlankLine(room, true);
            // The next cell's text takes the font it had before, not the blank line's.
            writeFont(restored);
            stream.written.font = restored.font;
            stream.written.size = restored.size;
        }
    }
    endContainer();
    if (!tables.empty() && !tables.back().cells.empty()) {
        RecordedCell &cell = tables.back().cells.back();
        if (TablePart &part = cell.inners.empty() ? cell.text : cell.afters.back(); part.open) {
            part.textEnd = stream.bytes.size();
            part.paragraphAtEnd = stream.paragraph;
        }
    }
    resetParagraphFormat();
    if (tables.empty() || tables.back().cells.empty())
        return;
    RecordedCell &cell = tables.back().cells.back();
    finishPart(cell.inners.empty() ? cell.text : cell.afters.back());
}

void WordPerfectWriter::openTableCell(const RVNGPropertyList &propList)
{
    if (hidden || tables.empty())
        return;
    if (tables.back().degraded) {
        streams.back().joinCell = tables.back().column++ > 0;
        return;
    }
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
        const std::string &line = border.empty() ? all : border;
        if (isNone(line) || line.find("none") != std::string::npos)
            continue;
        cell.borders |= 1 << side;
        if (line.find("double") != std::string::npos)
            cell.doubleLines |= 1 << side;
        // WordPerfect gives a cell one colour for all its lines: the first drawn line's.
        std::uint32_t colour = 0;
        if (const std::size_t hash = line.find('#');
            !cell.lineColour && hash != std::string::npos && line.size() >= hash + 7 &&
            std::from_chars(line.data() + hash + 1, line.data() + hash + 7, colour, 16).ec == std::errc())
            cell.lineColour = colour;
    }
    const std::string align = textOf(propList, "style:vertical-align");
    cell.verticalAlign = align == "middle" ? 1 : align == "bottom" ? 2 : 0;
    const std::string background = textOf(propList, "fo:background-color");
    std::uint32_t rgb = 0;
    if (background.size() == 7 && background[0] == '#' &&
        std::from_chars(background.data() + 1, background.data() + 7, rgb, 16).ec == std::errc())
        cell.fill = rgb;
    beginCell(cell);
    // A table inside the cell stands where its text starts, in from the edge by the padding.
    const auto padding = inchesOf(propList, "fo:padding-left");
    table.cells.back().padding =
        std::max(0, wpu(padding.value_or(inchesOf(propList, "fo:padding").value_or(0))));
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
    if (!tables.back().degraded)
        endCell();
    OpenTable table = std::move(tables.back());
    tables.pop_back();
    if (table.degraded) {
        streams.back().joinCell = streams.back().joinedLine = false;
        streams.back().pendingBlanks.clear();
        return;
    }
    if (table.widths.empty())
        table.widths.assign(std::max(1, table.column), 1200);
    if (table.nested) {
        // The rest of the outer cell's text is a part of its own.
        OpenTable &outer = tables.back();
        RecordedCell &cell = outer.cells.back();
        cell.inners.push_back(outer.inner.size());
        outer.inner.push_back(std::move(table));
        streams.back().paragraph = ParagraphFormat();
        streams.back().pendingReturns = 0;
        cell.afters.emplace_back();
        startPart(cell.afters.back());
        return;
    }
    const std::string body = popStream(false); // the table's cells are part of the text
    streams.back().pendingReturns = 0;
    writeTable(table, body);
}

namespace {

// The index of the edge nearest x.
int nearestEdge(const std::vector<int> &edges, int x)
{
    const auto at = std::lower_bound(edges.begin(), edges.end(), x);
    if (at == edges.end())
        return static_cast<int>(edges.size()) - 1;
    if (at != edges.begin() && x - *(at - 1) < *at - x)
        return static_cast<int>(at - edges.begin()) - 1;
    return static_cast<int>(at - edges.begin());
}

// libwpd settles each edge between a 6 table's cells before drawing them: a cell's right (bottom)
// line goes to the cells next to it, which keep theirs only where it had it, and the cell itself
// then draws none. It finds those cells by their place in their row's list of cells, as if that
// were their column, and leaves out cells covered from above: past a cell spanning rows or
// columns, it pairs cells that do not touch, and a lineless one there takes the lines of others.
// So every cell that has such neighbours gets its right and bottom line on, which takes nothing
// from them, and each edge is drawn by the cell right of or below it, on where either side
// wants it; the table's right and bottom edge stays with the cells there.
void settleLinesForLibwpd(std::vector<std::vector<CellShape>> &rows, int columns)
{
    const int rowCount = static_cast<int>(rows.size());
    std::vector<std::vector<const CellShape *>> listed(rows.size()); // as libwpd lists them
    std::vector<std::vector<const CellShape *>> owner(
        rows.size(), std::vector<const CellShape *>(static_cast<std::size_t>(std::max(columns, 0)), nullptr));
    for (int r = 0; r < rowCount; ++r) {
        for (const CellShape &cell : rows[static_cast<std::size_t>(r)]) {
            if (cell.coveredFromAbove)
                continue;
            listed[static_cast<std::size_t>(r)].push_back(&cell);
            for (int rr = r; rr < std::min(rowCount, r + cell.rowSpan); ++rr)
                for (int c = std::max(0, cell.column); c < std::min(columns, cell.column + cell.columnSpan);
                     ++c)
                    owner[static_cast<std::size_t>(rr)][static_cast<std::size_t>(c)] = &cell;
        }
    }
    // Whether a cell in these rows and columns has the line on this side.
    auto wanted = [&](int fromRow, int toRow, int fromColumn, int toColumn, int side) {
        for (int r = std::max(0, fromRow); r < std::min(rowCount, toRow); ++r)
            for (int c = std::max(0, fromColumn); c < std::min(columns, toColumn); ++c)
                if (const CellShape *other = owner[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)];
                    other && (other->borders & side))
                    return true;
        return false;
    };
    auto touches = [&](int fromRow, int toRow, int fromColumn, int toColumn) {
        for (int r = std::max(0, fromRow); r < std::min(rowCount, toRow); ++r)
            for (int c = std::max(0, fromColumn); c < std::min(columns, toColumn); ++c)
                if (owner[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)])
                    return true;
        return false;
    };
    std::vector<std::vector<int>> settled(rows.size());
    for (int r = 0; r < rowCount; ++r) {
        const std::vector<const CellShape *> &list = listed[static_cast<std::size_t>(r)];
        for (std::size_t j = 0; j < list.size(); ++j) {
            const CellShape &cell = *list[j];
            const int top = r, bottom = r + cell.rowSpan;
            const int left = cell.column, right = cell.column + cell.columnSpan;
            int lines = cell.borders;
            if (wanted(top, bottom, left - 1, left, 2))
                lines |= 1;
            if (wanted(top - 1, top, left, right, 8))
                lines |= 4;
            bool listedRight = false;
            for (int i = 0; i < rowCount && !listedRight; ++i) {
                const std::vector<const CellShape *> &other = listed[static_cast<std::size_t>(i)];
                listedRight = other.size() > j + 1 && i + other[j + 1]->rowSpan > r && i < bottom;
            }
            // Where the cells beside it draw the edge, the cell's own line would double it.
            if (listedRight)
                lines |= 2;
            else if (touches(top, bottom, right, right + 1))
                lines &= ~2;
            bool listedBelow = false;
            if (bottom < rowCount) {
                const std::vector<const CellShape *> &below = listed[static_cast<std::size_t>(bottom)];
                for (std::size_t k = 0; k < below.size() && !listedBelow; ++k)
                    listedBelow = static_cast<int>(k) + below[k]->columnSpan > static_cast<int>(j) &&
                                  k < j + static_cast<std::size_t>(cell.columnSpan);
            }
            if (listedBelow)
                lines |= 8;
            else if (touches(bottom, bottom + 1, left, right))
                lines &= ~8;
            settled[static_cast<std::size_t>(r)].push_back(lines);
        }
    }
    for (int r = 0; r < rowCount; ++r) {
        std::size_t j = 0;
        for (CellShape &cell : rows[static_cast<std::size_t>(r)])
            if (!cell.coveredFromAbove)
                cell.borders = settled[static_cast<std::size_t>(r)][j++];
    }
}

} // namespace

// The cell's text with what it took for granted set first: the font, colour and paragraph spacing
// its neighbour in the stream left, which the neighbour written before it need not have.
void WordPerfectWriter::writePart(const TablePart &part, const std::string &body, CharacterFormat &format,
                                  int &spacing)
{
    if (!part.before.font.empty() && (part.before.font != format.font || part.before.size != format.size))
        writeFont(part.before);
    if (part.before.colour != format.colour)
        writeColour(part.before.colour);
    if (writesParagraphSpacing() && part.spacingBefore != spacing)
        writeParagraphSpacing(part.spacingBefore);
    out().append(body, part.begin, part.end - part.begin);
    format = part.after;
    spacing = part.spacingAfter;
}

// The table's cells on one grid: a table inside a cell (itself so laid out first) splits the cell's
// columns at its column edges and the cell's row at its rows; the text before it and after it take
// rows of their own, and the room either side of it a cell each. WordPerfect sets at most 32
// columns: a table inside that would need more becomes paragraphs of its cell.
WordPerfectWriter::TableGrid WordPerfectWriter::gridOf(const OpenTable &table) const
{
    std::vector<int> outerEdges{0};
    for (int width : table.widths)
        outerEdges.push_back(outerEdges.back() + std::max(1, width));
    const int columns = static_cast<int>(table.widths.size());
    auto outerEdge = [&](int column) { return outerEdges[std::clamp(column, 0, columns)]; };
    std::vector<int> merged = outerEdges;
    std::vector<TableGrid> inner(table.inner.size());
    std::vector<bool> joins(table.inner.size(), false);
    for (const RecordedCell &cell : table.cells) {
        for (const std::size_t at : cell.inners) {
            inner[at] = gridOf(table.inner[at]);
            const int left = outerEdge(cell.shape.column);
            const int right = outerEdge(cell.shape.column + cell.shape.columnSpan);
            // Wider than its cell (as columns that share out the page come out): narrowed to fit.
            const int inset = cell.padding + std::max(0, table.inner[at].marginLeft);
            const int room = right - left - inset;
            const double wide = std::accumulate(inner[at].widths.begin(), inner[at].widths.end(), 0.0);
            if (room > 0 && wide > room) {
                for (int &width : inner[at].widths)
                    width = std::max(1, static_cast<int>(std::lround(width * room / wide)));
            }
            std::vector<int> edges = merged;
            int x = left + inset;
            for (std::size_t i = 0; i <= inner[at].widths.size(); ++i) {
                const int edge = std::clamp(x, left, right);
                // An edge closer than this to one there already is that one.
                if (std::none_of(edges.begin(), edges.end(), [&](int e) { return std::abs(e - edge) <= 30; }))
                    edges.insert(std::upper_bound(edges.begin(), edges.end(), edge), edge);
                if (i < inner[at].widths.size())
                    x += std::max(1, inner[at].widths[i]);
            }
            if (edges.size() > 33)
                joins[at] = true;
            else
                merged = std::move(edges);
        }
    }
    const int gridColumns = static_cast<int>(merged.size()) - 1;
    auto span = [&](int left, int right) {
        const int from = nearestEdge(merged, left);
        return std::pair{from, std::max(from + 1, nearestEdge(merged, right))};
    };

    // Rows: an outer row with tables inside becomes the text before them, and each one's rows and
    // the text after it.
    const int rows = table.row + 1;
    std::vector<int> rowCount(static_cast<std::size_t>(std::max(0, rows)), 1);
    // Text before a table inside a cell has a row of its own; after it, only text that shows does.
    auto hasText = [](const TablePart &part) { return part.end > part.begin; };
    auto showsText = [](const TablePart &part) { return part.content; };
    auto merges = [&](const RecordedCell &cell) {
        return !cell.inners.empty() && std::none_of(cell.inners.begin(), cell.inners.end(),
                                                    [&](std::size_t at) { return joins[at]; });
    };
    for (const RecordedCell &cell : table.cells) {
        if (!merges(cell) || cell.row < 0 || cell.row >= rows)
            continue;
        int count = hasText(cell.text);
        for (std::size_t n = 0; n < cell.inners.size(); ++n)
            count += inner[cell.inners[n]].rows + showsText(cell.afters[n]);
        rowCount[static_cast<std::size_t>(cell.row)] = std::max(1, count);
    }
    std::vector<int> firstRow{0};
    for (int count : rowCount)
        firstRow.push_back(firstRow.back() + count);
    auto rowStart = [&](int row) { return firstRow[static_cast<std::size_t>(std::clamp(row, 0, rows))]; };

    TableGrid grid;
    grid.rows = firstRow.back();
    grid.joined = std::find(joins.begin(), joins.end(), true) != joins.end() ||
                  std::any_of(inner.begin(), inner.end(), [](const TableGrid &held) { return held.joined; });
    for (int c = 0; c < gridColumns; ++c)
        grid.widths.push_back(merged[static_cast<std::size_t>(c) + 1] - merged[static_cast<std::size_t>(c)]);
    std::vector<GridCell> &cells = grid.cells;
    auto coverBelow = [&](int fromRow, int toRow, int fromColumn, int toColumn) {
        GridCell covered;
        covered.shape.coveredFromAbove = true;
        for (int r = fromRow; r < toRow; ++r) {
            for (int c = fromColumn; c < toColumn; ++c) {
                covered.row = r;
                covered.column = c;
                cells.push_back(covered);
            }
        }
    };
    for (const RecordedCell &cell : table.cells) {
        const auto [from, to] =
            span(outerEdge(cell.shape.column), outerEdge(cell.shape.column + cell.shape.columnSpan));
        GridCell outer;
        outer.row = rowStart(cell.row);
        outer.column = from;
        outer.columnSpan = to - from;
        outer.shape = cell.shape;
        if (rowCount[static_cast<std::size_t>(std::clamp(cell.row, 0, rows - 1))] > 1)
            outer.shape.rowHeight = 0; // a row a table inside splits has the room its rows need
        outer.texts = {&cell.text};
        if (cell.shape.coveredFromAbove) {
            outer.shape.rowHeight = cell.shape.rowHeight;
            coverBelow(outer.row, rowStart(cell.row + 1), from, to); // a covered cell per column
            continue;
        }
        if (!merges(cell)) {
            for (std::size_t n = 0; n < cell.inners.size(); ++n) {
                for (const GridCell &innerCell : inner[cell.inners[n]].cells)
                    outer.texts.insert(outer.texts.end(), innerCell.texts.begin(), innerCell.texts.end());
                outer.texts.push_back(&cell.afters[n]);
            }
            outer.rowSpan = rowStart(cell.row + cell.shape.rowSpan) - outer.row;
            cells.push_back(outer);
            // Beside a table inside another cell of its row, it reaches down past that table's rows.
            coverBelow(outer.row + 1, rowStart(cell.row + 1), from, to);
            continue;
        }
        // The cell that holds tables: its text, then each table with room either side and the text
        // after it.
        int row = outer.row;
        if (hasText(cell.text)) {
            GridCell before = outer;
            before.shape.borders = cell.shape.borders & ~8;
            cells.push_back(before);
            ++row;
        }
        for (std::size_t n = 0; n < cell.inners.size(); ++n) {
            const TableGrid &held = inner[cell.inners[n]];
            const TablePart &after = cell.afters[n];
            const bool last = n + 1 == cell.inners.size();
            // The room beside the table keeps the cell's own line above and below it where no text
            // of the cell stands there: a reader draws an edge only where the cells on both sides
            // of it do.
            const bool textAbove = n > 0 ? showsText(cell.afters[n - 1]) : hasText(cell.text);
            const int edges = (textAbove || n > 0 ? 0 : 4) | (showsText(after) || !last ? 0 : 8);
            const int left = outerEdge(cell.shape.column) + cell.padding +
                             std::max(0, table.inner[cell.inners[n]].marginLeft);
            std::vector<int> innerEdges{left};
            for (int width : held.widths)
                innerEdges.push_back(innerEdges.back() + width);
            const int innerColumns = static_cast<int>(held.widths.size());
            auto innerEdge = [&](int column) { return innerEdges[std::clamp(column, 0, innerColumns)]; };
            const auto [innerFrom, innerTo] = span(innerEdge(0), innerEdge(innerColumns));
            auto room = [&](int fromColumn, int toColumn, int borders) {
                if (toColumn <= fromColumn || held.rows <= 0)
                    return;
                GridCell filler = outer;
                filler.row = row;
                filler.column = fromColumn;
                filler.columnSpan = toColumn - fromColumn;
                filler.rowSpan = held.rows;
                filler.shape.borders = cell.shape.borders & (borders | edges);
                filler.texts.clear();
                cells.push_back(filler);
                coverBelow(row + 1, row + held.rows, fromColumn, toColumn);
            };
            room(from, std::min(innerFrom, to), 1);
            room(std::max(innerTo, from), to, 2);
            for (const GridCell &innerCell : held.cells) {
                const auto [cellFrom, cellTo] =
                    span(innerEdge(innerCell.column), innerEdge(innerCell.column + innerCell.columnSpan));
                GridCell part = innerCell;
                part.row = row + std::clamp(innerCell.row, 0, held.rows - 1);
                part.column = std::clamp(cellFrom, from, to - 1);
                part.shape.rowHeight = 0;
                if (innerCell.shape.coveredFromAbove) {
                    for (int c = part.column; c < std::min(cellTo, to); ++c) {
                        part.column = c;
                        cells.push_back(part);
                    }
                    continue;
                }
                part.columnSpan = std::max(1, std::min(cellTo, to) - part.column);
                part.rowSpan = std::clamp(innerCell.rowSpan, 1, row + held.rows - part.row);
                cells.push_back(part);
            }
            row += held.rows;
            if (showsText(after)) {
                GridCell text = outer;
                text.row = row;
                text.shape.borders = cell.shape.borders & ~4 & (last ? ~0 : ~8);
                text.texts = {&after};
                cells.push_back(text);
                ++row;
            }
        }
    }
    std::stable_sort(cells.begin(), cells.end(), [](const GridCell &a, const GridCell &b) {
        return a.row != b.row ? a.row < b.row : a.column < b.column;
    });
    return grid;
}

// Readers draw every line of every 5.1 cell: what shows no line is better as paragraphs, or left
// out where it holds nothing, than boxed in a grid. True when the whole table became paragraphs;
// otherwise the grid keeps what is still a table, and where it stands.
bool WordPerfectWriter::unboxLineless(const OpenTable &table, const std::string &body, TableGrid &grid,
                                      int &position, int &leftOffset)
{
    std::vector<GridCell> &cells = grid.cells;
    const int gridRows = grid.rows;
    const int gridColumns = static_cast<int>(grid.widths.size());
    const int textWidth = page.width - page.left - page.right;
    const int tableWidth = std::accumulate(grid.widths.begin(), grid.widths.end(), 0);
    // The table's left edge, from the margin; readers pull a table at the margin out by its
    // gutter (0.075 in), so that its text lines up with the margin.
    int left = -90;
    if (table.position == 2)
        left = (textWidth - tableWidth) / 2;
    else if (table.position == 1)
        left = textWidth - tableWidth;
    else if (table.position == 4)
        left = table.leftOffset - page.left;
    CharacterFormat format = streams.back().written;
    int spacing = streams.back().spacingInForce;
    // The paragraphs stand where the cells' text stood, in from their edges by the cell's
    // margin. Each cell's text starts with the format the text around the table has, and its
    // last paragraph's format stays until the return that ends it: readers end a paragraph at
    // a change of alignment.
    ParagraphFormat inForce;
    auto paragraphsOf = [&](const std::vector<const GridCell *> &from, int edge, int width) {
        constexpr int cellMargin = 0x53;
        ParagraphFormat inside;
        inside.leftIndent = std::max(0, left + edge + cellMargin);
        inside.rightIndent = std::max(0, textWidth - left - edge - width + cellMargin);
        for (std::size_t i = 0; i < from.size(); ++i) {
            if (i > 0)
                writeHardReturn();
            for (const TablePart *text : from[i]->texts) {
                if (!text)
                    continue;
                writeParagraphFormat(inForce, inside);
                TablePart head = *text;
                head.end = std::clamp(text->textEnd, text->begin, text->end);
                writePart(head, body, format, spacing);
                inForce = text->paragraphAtEnd;
                inForce.leftIndent = inside.leftIndent;
                inForce.rightIndent = inside.rightIndent;
            }
        }
    };
    auto hasText = [](const GridCell &cell) {
        return std::any_of(cell.texts.begin(), cell.texts.end(),
                           [](const TablePart *text) { return text && text->content; });
    };
    // A table with neither lines nor text shows only the room its rows take: a line each.
    const bool blank = std::none_of(cells.begin(), cells.end(),
                                    [](const GridCell &cell) { return cell.shape.borders != 0; }) &&
                       std::none_of(cells.begin(), cells.end(), hasText);
    if ((gridColumns == 1 || blank) && table.inner.empty() &&
        std::none_of(cells.begin(), cells.end(),
                     [](const GridCell &cell) { return cell.shape.borders & 0x0C; })) {
        // A column of cells with no line above or below them (a cover's title block, perhaps
        // with a rule beside it) is its paragraphs, which look as it does but for such a rule.
        if (std::any_of(cells.begin(), cells.end(),
                        [](const GridCell &cell) { return cell.shape.borders != 0; }))
            lose(loss::cellBorders);
        std::vector<const GridCell *> all;
        for (const GridCell &cell : cells)
            if (gridColumns == 1 ||
                (!cell.shape.coveredFromAbove && (all.empty() || all.back()->row != cell.row)))
                all.push_back(&cell);
        paragraphsOf(all, 0, tableWidth);
        streams.back().written = format;
        streams.back().spacingInForce = spacing;
        streams.back().paragraph = inForce; // the next paragraph's format follows its return
        streams.back().pendingReturns = 1;
        return true;
    }
    std::vector<int> edges{0};
    for (int width : grid.widths)
        edges.push_back(edges.back() + width);
    // Columns at either side that hold nothing and show no line but the table's edge are room
    // beside the table; rows at the top with no line and at most one cell of text (a heading
    // over a form's boxes) are that cell's paragraphs above it.
    int firstRow = 0;
    int firstColumn = 0;
    int endColumn = gridColumns;
    auto inside = [&](const GridCell &cell) {
        return cell.row >= firstRow && cell.column + cell.columnSpan > firstColumn && cell.column < endColumn;
    };
    auto empty = [&](int column, int edgeLine) {
        return std::all_of(cells.begin(), cells.end(), [&](const GridCell &cell) {
            if (!inside(cell) || column < cell.column || column >= cell.column + cell.columnSpan)
                return true;
            return cell.column == column && cell.columnSpan == 1 && (cell.shape.borders & ~edgeLine) == 0 &&
                   !hasText(cell);
        });
    };
    for (bool changed = true; changed;) {
        changed = false;
        while (endColumn - firstColumn > 1 && empty(firstColumn, 2)) {
            ++firstColumn;
            changed = true;
        }
        while (endColumn - firstColumn > 1 && empty(endColumn - 1, 1)) {
            --endColumn;
            changed = true;
        }
        if (firstRow + 1 >= gridRows)
            break;
        std::vector<const GridCell *> row;
        bool plain = true;
        for (const GridCell &cell : cells) {
            if (cell.row != firstRow || !inside(cell))
                continue;
            plain = plain && cell.shape.borders == 0 && cell.rowSpan == 1 && !cell.shape.coveredFromAbove &&
                    cell.column >= firstColumn && cell.column + cell.columnSpan <= endColumn;
            if (hasText(cell))
                row.push_back(&cell);
        }
        if (!plain || row.size() > 1)
            break;
        if (!row.empty()) {
            const GridCell &only = *row.front();
            const int edge = edges[static_cast<std::size_t>(only.column)];
            paragraphsOf(row, edge, edges[static_cast<std::size_t>(only.column + only.columnSpan)] - edge);
        }
        writeHardReturn();
        ++firstRow;
        changed = true;
    }
    if (firstRow > 0 || firstColumn > 0 || endColumn < gridColumns) {
        std::vector<GridCell> kept;
        for (GridCell cell : cells) {
            if (!inside(cell))
                continue;
            cell.row -= firstRow;
            cell.column -= firstColumn;
            kept.push_back(cell);
        }
        cells = std::move(kept);
        grid.widths = std::vector<int>(grid.widths.begin() + firstColumn, grid.widths.begin() + endColumn);
        grid.rows -= firstRow;
        if (firstColumn > 0 || endColumn < static_cast<int>(edges.size()) - 1) {
            position = 4; // where the kept columns stood
            leftOffset = std::max(0, page.left + left + edges[static_cast<std::size_t>(firstColumn)]);
        }
    }
    writeParagraphFormat(inForce, ParagraphFormat());
    streams.back().written = format;
    streams.back().spacingInForce = spacing;
    return false;
}

void WordPerfectWriter::writeTable(const OpenTable &table, const std::string &body)
{
    TableGrid grid = gridOf(table);
    if (grid.joined)
        lose(loss::nestedTables);
    int position = table.position;
    int leftOffset = table.leftOffset;
    if (!writesCellBorders() && unboxLineless(table, body, grid, position, leftOffset))
        return;
    std::vector<GridCell> &cells = grid.cells;
    const int gridRows = grid.rows;
    const int gridColumns = static_cast<int>(grid.widths.size());

    // Between a table inside a cell and the room around it, a line shows when either cell has it:
    // in 5.1 both get it (a 6 table's edges are settled once the cells are placed).
    std::vector<std::vector<int>> owner(static_cast<std::size_t>(gridRows),
                                        std::vector<int>(static_cast<std::size_t>(gridColumns), -1));
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const GridCell &cell = cells[i];
        if (cell.shape.coveredFromAbove)
            continue;
        for (int r = cell.row; r < std::min(gridRows, cell.row + cell.rowSpan); ++r) {
            for (int c = cell.column; c < std::min(gridColumns, cell.column + cell.columnSpan); ++c)
                owner[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)] = static_cast<int>(i);
        }
    }
    std::vector<int> wanted;
    for (const GridCell &cell : cells)
        wanted.push_back(cell.shape.borders);
    auto share = [&](std::size_t at, int r, int c, int side, int opposite) {
        if (r >= gridRows || c >= gridColumns)
            return;
        const int other = owner[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)];
        if (other < 0 || static_cast<std::size_t>(other) == at)
            return;
        // The upper or left cell's line on leaves each piece of the edge to the cell beyond.
        if ((wanted[at] & side) || (wanted[static_cast<std::size_t>(other)] & opposite))
            cells[at].shape.borders |= side;
        if (wanted[at] & side)
            cells[static_cast<std::size_t>(other)].shape.borders |= opposite;
    };
    for (std::size_t at = 0; at < cells.size() && !table.inner.empty() && !writesCellBorders(); ++at) {
        const GridCell &cell = cells[at];
        if (cell.shape.coveredFromAbove)
            continue;
        for (int r = cell.row; r < cell.row + cell.rowSpan; ++r)
            share(at, r, cell.column + cell.columnSpan, 2, 1);
        for (int c = cell.column; c < cell.column + cell.columnSpan; ++c)
            share(at, cell.row + cell.rowSpan, c, 8, 4);
    }

    // Written row by row, left to right; a covered column takes a cell of its own, and a cell
    // too close to the one before it to tell their edges apart gives its text to that one.
    struct Placed {
        CellShape shape;
        const GridCell *cell = nullptr;      // none: a column the row's cells leave empty
        std::vector<const GridCell *> added; // text that joins this cell's
    };
    std::vector<std::vector<Placed>> plan(static_cast<std::size_t>(std::max(gridRows, 0)));
    auto cellAt = cells.begin();
    for (int row = 0; row < gridRows; ++row) {
        std::vector<Placed> &placed = plan[static_cast<std::size_t>(row)];
        int column = 0;
        auto place = [&](const GridCell &cell, const GridCell *source) {
            CellShape shape = cell.shape;
            shape.column = cell.column;
            shape.columnSpan = cell.columnSpan;
            shape.rowSpan = cell.rowSpan;
            placed.push_back(Placed{shape, source, {}});
            column = cell.column + (shape.coveredFromAbove ? 1 : cell.columnSpan);
        };
        for (; cellAt != cells.end() && cellAt->row == row; ++cellAt) {
            if (cellAt->column < column) {
                if (!placed.empty() && !cellAt->texts.empty() &&
                    cellAt->texts.front()->end > cellAt->texts.front()->begin)
                    placed.back().added.push_back(&*cellAt);
                continue;
            }
            while (column < cellAt->column) {
                GridCell room;
                room.row = row;
                room.column = column;
                place(room, nullptr);
            }
            place(*cellAt, &*cellAt);
        }
    }
    std::vector<std::vector<CellShape>> shapes;
    for (const std::vector<Placed> &row : plan) {
        shapes.emplace_back();
        for (const Placed &placed : row)
            shapes.back().push_back(placed.shape);
    }
    if (writesCellBorders()) {
        settleLinesForLibwpd(shapes, gridColumns);
        for (std::size_t r = 0; r < plan.size(); ++r)
            for (std::size_t k = 0; k < plan[r].size(); ++k)
                plan[r][k].shape.borders = shapes[r][k].borders;
    }
    writeTableStart(grid.widths, position, leftOffset, shapes);
    CharacterFormat format = streams.back().written;
    int spacing = streams.back().spacingInForce;
    auto writeTexts = [&](const GridCell &cell) {
        bool first = true;
        for (const TablePart *text : cell.texts) {
            if (!text || (!first && text->end == text->begin))
                continue;
            if (!first)
                writeHardReturn();
            writePart(*text, body, format, spacing);
            first = false;
        }
    };
    for (const std::vector<Placed> &row : plan) {
        bool firstInRow = true;
        for (const Placed &placed : row) {
            writeCell(placed.shape, firstInRow);
            firstInRow = false;
            if (placed.cell)
                writeTexts(*placed.cell);
            for (const GridCell *added : placed.added) {
                writeHardReturn();
                writeTexts(*added);
            }
        }
    }
    writeTableEnd();
    streams.back().written = format;
    streams.back().spacingInForce = spacing;
}

} // namespace richtext::wordperfect
