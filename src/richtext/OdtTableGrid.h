#pragma once

#include <vector>

namespace richtext {

// Where the cells of an ODF table go. Producers differ: proper ODF lists a
// covered cell for every slot that a span covers, libodfgen lists none. A
// cell goes where LibreOffice puts it, in the next slot no span covers, and
// the slots a document left out are named so that covered cells can stand there.
class OdtTableGrid {
public:
    void beginRow(int row);
    // The column of a covered cell the document lists.
    int placeCovered();
    // The column of a cell spanning `columns` and `rows`; `missing` gets the
    // slots before it that spans cover but the document did not list.
    int placeCell(int columns, int rows, std::vector<int> &missing);
    // The covered slots after the row's last cell that the document did not list.
    std::vector<int> endRow();

private:
    bool covered(int column) const;

    std::vector<int> coveredUntil; // per column, the last row a span covers
    int row = 0;
    int column = 0;
    int sideways = 0; // slots right of the last cell that its span covers
};

} // namespace richtext
