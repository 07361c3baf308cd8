#include "RtfTable.h"

#include "RtfFormat.h"
#include "Units.h"

#include <algorithm>

namespace richtext {
namespace {

// Used when a table names no widths for its columns.
constexpr double defaultColumnWidth = 1.5;

std::string cellWords(const librevenge::RVNGPropertyList &cell, RtfPalette &palette)
{
    std::string words;
    const std::string align = Units::text(cell, "style:vertical-align").value_or("");
    if (align == "middle")
        words += "\\clvertalc";
    else if (align == "bottom")
        words += "\\clvertalb";
    const std::string all = Units::text(cell, "fo:border").value_or("");
    const std::pair<const char *, const char *> sides[] = {
        {"fo:border-top", "\\clbrdrt"},
        {"fo:border-left", "\\clbrdrl"},
        {"fo:border-bottom", "\\clbrdrb"},
        {"fo:border-right", "\\clbrdrr"},
    };
    for (const auto &[name, word] : sides) {
        const std::string border = RtfFormat::border(Units::text(cell, name).value_or(all), palette);
        if (!border.empty())
            words += word + border;
    }
    if (const int colour = palette.colour(Units::text(cell, "fo:background-color").value_or("")); colour > 0)
        words += "\\clcbpat" + std::to_string(colour);
    // Padding in twips (the 3 of \clpadf..). Word reads \clpadl as the top padding and \clpadt
    // as the left, and LibreOffice does as Word does.
    const std::pair<const char *, const char *> paddings[] = {
        {"fo:padding-top", "\\clpadfl3\\clpadl"},
        {"fo:padding-left", "\\clpadft3\\clpadt"},
        {"fo:padding-bottom", "\\clpadfb3\\clpadb"},
        {"fo:padding-right", "\\clpadfr3\\clpadr"},
    };
    for (const auto &[name, word] : paddings)
        if (const auto padding = Units::inches(cell, name); padding && *padding > 0)
            words += word + std::to_string(RtfFormat::twips(*padding));
    return words;
}

} // namespace

RtfTable::RtfTable(const librevenge::RVNGPropertyList &table, double textWidth)
{
    if (const librevenge::RVNGPropertyListVector *columns = table.child("librevenge:table-columns"))
        for (unsigned long n = 0; n < columns->count(); ++n)
            widths.push_back(std::max(0.01, Units::inches((*columns)[n], "style:column-width").value_or(0)));
    left = Units::inches(table, "fo:margin-left").value_or(0);
    const std::string align = Units::text(table, "table:align").value_or("");
    const double available = textWidth - left - Units::inches(table, "fo:margin-right").value_or(0);
    double total = 0;
    for (const double width : widths)
        total += width;
    if (align == "margins" && available > 0.1 && total > 0)
        for (double &width : widths)
            width *= available / total;
    if (align == "center")
        alignment = "\\trqc";
    else if (align == "right")
        alignment = "\\trqr";
}

double RtfTable::columnStart(int column) const
{
    double position = left;
    for (int n = 0; n < column; ++n)
        position +=
            n < static_cast<int>(widths.size()) ? widths[static_cast<std::size_t>(n)] : defaultColumnWidth;
    return position;
}

void RtfTable::beginRow(const librevenge::RVNGPropertyList &row)
{
    cells.clear();
    ++rows;
    nextColumn = 0;
    spanEnd = 0;
    sidewaysLeft = 0;
    rowWords.clear();
    if (const auto height = Units::inches(row, "style:row-height"))
        rowWords += "\\trrh-" + std::to_string(RtfFormat::twips(*height));
    else if (const auto least = Units::inches(row, "style:min-row-height"))
        rowWords += "\\trrh" + std::to_string(RtfFormat::twips(*least));
    if (Units::text(row, "librevenge:is-header-row").value_or("") == "true")
        rowWords += "\\trhdr";
}

void RtfTable::addCell(const librevenge::RVNGPropertyList &cell, RtfPalette &palette)
{
    CellDefinition definition;
    definition.column = Units::integer(cell, "librevenge:column").value_or(nextColumn);
    definition.span = std::max(1, Units::integer(cell, "table:number-columns-spanned").value_or(1));
    definition.words = cellWords(cell, palette);
    const int rows = std::max(1, Units::integer(cell, "table:number-rows-spanned").value_or(1));
    if (rows > 1) {
        if (vertical.size() < static_cast<std::size_t>(definition.column + 1))
            vertical.resize(static_cast<std::size_t>(definition.column + 1));
        vertical[static_cast<std::size_t>(definition.column)] = {rows - 1, definition.span, definition.words};
        definition.words = "\\clvmgf" + definition.words;
    }
    nextColumn = spanEnd = definition.column + definition.span;
    sidewaysLeft = definition.span - 1;
    cells.push_back(definition);
    cellPaddingTop =
        Units::inches(cell, "fo:padding-top").value_or(Units::inches(cell, "fo:padding").value_or(0));
}

std::optional<double> RtfTable::cellTextTop() const
{
    if (!atPageTop || rows != 1)
        return std::nullopt;
    return cellPaddingTop;
}

bool RtfTable::addCoveredCell(const librevenge::RVNGPropertyList &cell)
{
    const auto given = Units::integer(cell, "librevenge:column");
    if (!given && sidewaysLeft > 0) {
        --sidewaysLeft;
        return false;
    }
    const int column = given.value_or(nextColumn);
    nextColumn = std::max(nextColumn, column + 1);
    // Slots under the span just written need nothing; so does a slot no span covers.
    if (column < spanEnd || column >= static_cast<int>(vertical.size()) ||
        vertical[static_cast<std::size_t>(column)].rowsLeft <= 0)
        return false;
    VerticalSpan &span = vertical[static_cast<std::size_t>(column)];
    --span.rowsLeft;
    cells.push_back(CellDefinition{column, span.columns, "\\clvmrg" + span.words});
    nextColumn = spanEnd = column + span.columns;
    sidewaysLeft = span.columns - 1;
    return true;
}

std::string RtfTable::rowDefinition() const
{
    // Cells are padded by their own \clpad words only: a gap between cells
    // (\trgaph) would move the whole table left by as much in LibreOffice.
    std::string words = "\\trowd\\trleft" + std::to_string(RtfFormat::twips(left)) + alignment +
                        "\\trpaddfl3\\trpaddl0\\trpaddfr3\\trpaddr0" + rowWords;
    for (const CellDefinition &cell : cells)
        words +=
            cell.words + "\\cellx" + std::to_string(RtfFormat::twips(columnStart(cell.column + cell.span)));
    return words;
}

} // namespace richtext
