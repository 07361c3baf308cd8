// Tables: WordPerfect's own table codes for the outer table, paragraphs for nested ones.

#include "WordPerfectWriter.h"

#include "Properties.h"

#include <algorithm>

namespace richtext::wordperfect {

using librevenge::RVNGPropertyList;

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
