// Tables: WordPerfect's own table codes for the outer table, paragraphs for nested ones.

#include "WordPerfectWriter.h"

#include "Properties.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace richtext::wordperfect {

using librevenge::RVNGPropertyList;

// Each column's width in WPU. Columns that give only a relative width (or none) share what the
// table's width leaves them: its own width, its share of the text area, or the whole text area.
std::vector<int> WordPerfectWriter::columnWidths(const RVNGPropertyList &propList) const
{
    const librevenge::RVNGPropertyListVector *columns = propList.child("librevenge:table-columns");
    if (!columns || columns->count() == 0)
        return {};
    const int text = std::max(1200, page.width - page.left - page.right);
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

void WordPerfectWriter::openTable(const RVNGPropertyList &propList)
{
    if (hidden)
        return;
    OpenTable table;
    if (!tables.empty()) {
        // WordPerfect tables do not nest: an inner table's cells become paragraphs of the outer cell.
        table.degraded = true;
        lose(loss::nestedTables);
        tables.push_back(table);
        return;
    }
    table.widths = columnWidths(propList);
    placeTable(table, propList);
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
    CellShape cell = shape;
    cell.rowHeight = table.rowHeight;
    cell.rowAtLeast = table.rowAtLeast;
    cell.headerRow = table.headerRow;
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
        if (!isNone(border.empty() ? all : border) &&
            (border.empty() ? all : border).find("none") == std::string::npos)
            cell.borders |= 1 << side;
    }
    const std::string align = textOf(propList, "style:vertical-align");
    cell.verticalAlign = align == "middle" ? 1 : align == "bottom" ? 2 : 0;
    const std::string background = textOf(propList, "fo:background-color");
    std::uint32_t rgb = 0;
    if (background.size() == 7 && background[0] == '#' &&
        std::from_chars(background.data() + 1, background.data() + 7, rgb, 16).ec == std::errc())
        cell.fill = rgb;
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
    if (table.degraded) {
        streams.back().joinCell = streams.back().joinedLine = false;
        streams.back().pendingBlanks.clear();
        return;
    }
    endCell();
    const CharacterFormat written = streams.back().written;
    const int spacing = streams.back().spacingInForce;
    const std::string body = popStream(false); // the table's cells are part of the text
    streams.back().spacingInForce = spacing;
    std::vector<int> widths = table.widths;
    if (widths.empty())
        widths.assign(std::max(1, table.column), 1200);
    writeTableStart(widths, table.position, table.leftOffset);
    out() += body;
    writeTableEnd();
    streams.back().written = written;
    streams.back().pendingReturns = 0;
}

} // namespace richtext::wordperfect
