#pragma once

#include <libxml/tree.h>

#include <vector>

namespace richtext {

// The grid of an HTML table: where each cell stands once colspan and rowspan
// have pushed the others aside, as a browser lays it out.
class HtmlTable {
public:
    struct Slot {
        const xmlNode *cell = nullptr; // null: the row ends before this column
        bool origin = false;           // the cell's top-left slot; others are covered by it
        int columns = 1;
        int rows = 1;
    };

    static HtmlTable of(const xmlNode *table);

    int rowCount() const { return static_cast<int>(grid.size()); }
    int columnCount() const { return columns; }
    Slot at(int row, int column) const;
    bool isHeaderRow(int row) const { return headerRows.at(static_cast<std::size_t>(row)); }
    // For each column, a cell that spans only that column and can say its width; null when none does.
    std::vector<const xmlNode *> columnWidthCells() const;

private:
    std::vector<std::vector<Slot>> grid;
    std::vector<bool> headerRows;
    int columns = 0;
};

} // namespace richtext
