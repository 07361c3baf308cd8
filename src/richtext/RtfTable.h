#pragma once

#include <librevenge/librevenge.h>

#include <optional>
#include <string>
#include <vector>

namespace richtext {

class RtfPalette;

// One table being written: the column grid, which cells continue a vertical
// span, and the \trowd...\cellx definition of the row being collected. RTF
// wants a row's cell boundaries before its content, so rows are buffered.
class RtfTable {
public:
    // `textWidth`: the width between the page margins, which a table aligned
    // to the margins fills whatever its columns say.
    explicit RtfTable(const librevenge::RVNGPropertyList &table, double textWidth = 0);

    void beginRow(const librevenge::RVNGPropertyList &row);
    // A cell with content follows.
    void addCell(const librevenge::RVNGPropertyList &cell, RtfPalette &palette);
    // A covered cell: true when it continues a vertical span and so needs an empty \clvmrg cell.
    bool addCoveredCell(const librevenge::RVNGPropertyList &cell);

    // \trowd, the row's properties and every \cellx, for the cells added since beginRow.
    std::string rowDefinition() const;

    // Nothing stands before the table on its page: its first row starts at the top of the text area.
    void setAtPageTop() { atPageTop = true; }
    // How far below the top of the text area the last cell's text starts, when that is known.
    std::optional<double> cellTextTop() const;

private:
    struct CellDefinition {
        int column = 0;
        int span = 1;
        std::string words; // merge, alignment, borders, shading
    };
    struct VerticalSpan {
        int rowsLeft = 0;
        int columns = 1;
        std::string words;
    };

    double columnStart(int column) const;

    std::vector<double> widths;
    double left = 0;
    std::string alignment;
    std::string rowWords;
    int nextColumn = 0;
    int spanEnd = 0;      // the column after the last cell's span
    int sidewaysLeft = 0; // unlisted slots of that span that covered cells without a column may fill
    std::vector<CellDefinition> cells;
    std::vector<VerticalSpan> vertical;
    bool atPageTop = false;
    int rows = 0;
    double cellPaddingTop = 0;
};

} // namespace richtext
