#include "HtmlTable.h"
#include "XmlTree.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string>

namespace richtext {
namespace {

// A few thousand columns or a million cells is far beyond any real table;
// the bounds keep a hostile colspan or rowspan from exhausting memory.
constexpr int maximumColumns = 1000;
constexpr std::size_t maximumCells = 1'000'000;

bool named(const xmlNode *node, const char *name)
{
    return Xml::lowerTag(node) == name;
}

int span(const xmlNode *cell, const char *name, int maximum)
{
    const std::string value = Xml::plainAttribute(cell, name);
    const int number = value.empty() ? 1 : std::atoi(value.c_str());
    return std::clamp(number, 1, maximum);
}

// The rows of the table itself, not of tables nested in its cells.
void collectRows(const xmlNode *parent, bool header, std::vector<std::pair<const xmlNode *, bool>> &rows)
{
    for (const xmlNode *child = parent->children; child; child = child->next) {
        if (named(child, "tr"))
            rows.emplace_back(child, header);
        else if (named(child, "thead"))
            collectRows(child, true, rows);
        else if (named(child, "tbody") || named(child, "tfoot"))
            collectRows(child, false, rows);
    }
}

} // namespace

HtmlTable HtmlTable::of(const xmlNode *table)
{
    HtmlTable result;
    std::vector<std::pair<const xmlNode *, bool>> rows;
    collectRows(table, false, rows);
    std::size_t cells = 0;
    auto ensureRow = [&](std::size_t row) {
        if (result.grid.size() <= row) {
            result.grid.resize(row + 1);
            result.headerRows.resize(row + 1, false);
        }
    };
    for (std::size_t row = 0; row < rows.size(); ++row) {
        ensureRow(row);
        result.headerRows[row] = rows[row].second;
        int column = 0;
        for (const xmlNode *cell = rows[row].first->children; cell; cell = cell->next) {
            if (!named(cell, "td") && !named(cell, "th"))
                continue;
            auto &line = result.grid[row];
            while (column < static_cast<int>(line.size()) && line[static_cast<std::size_t>(column)].cell)
                ++column;
            const int columns = span(cell, "colspan", maximumColumns - column);
            const int rowSpan = span(cell, "rowspan", static_cast<int>(rows.size() - row));
            if (column >= maximumColumns ||
                cells + static_cast<std::size_t>(columns * rowSpan) > maximumCells)
                break;
            cells += static_cast<std::size_t>(columns * rowSpan);
            for (int down = 0; down < rowSpan; ++down) {
                ensureRow(row + static_cast<std::size_t>(down));
                auto &target = result.grid[row + static_cast<std::size_t>(down)];
                if (target.size() < static_cast<std::size_t>(column + columns))
                    target.resize(static_cast<std::size_t>(column + columns));
                for (int across = 0; across < columns; ++across)
                    target[static_cast<std::size_t>(column + across)] = Slot{cell, false, columns, rowSpan};
            }
            result.grid[row][static_cast<std::size_t>(column)].origin = true;
            column += columns;
            result.columns = std::max(result.columns, column);
        }
    }
    return result;
}

HtmlTable::Slot HtmlTable::at(int row, int column) const
{
    const auto &line = grid.at(static_cast<std::size_t>(row));
    return column < static_cast<int>(line.size()) ? line[static_cast<std::size_t>(column)] : Slot{};
}

std::vector<const xmlNode *> HtmlTable::columnWidthCells() const
{
    std::vector<const xmlNode *> cells(static_cast<std::size_t>(columns), nullptr);
    for (const auto &line : grid)
        for (std::size_t column = 0; column < line.size(); ++column)
            if (!cells[column] && line[column].origin && line[column].columns == 1)
                cells[column] = line[column].cell;
    return cells;
}

} // namespace richtext
