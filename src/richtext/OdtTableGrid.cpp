#include "OdtTableGrid.h"

#include <algorithm>

namespace richtext {

void OdtTableGrid::beginRow(int index)
{
    row = index;
    column = 0;
    sideways = 0;
}

bool OdtTableGrid::covered(int at) const
{
    return at < static_cast<int>(coveredUntil.size()) && coveredUntil[static_cast<std::size_t>(at)] >= row;
}

int OdtTableGrid::placeCovered()
{
    if (sideways > 0)
        --sideways;
    return column++;
}

int OdtTableGrid::placeCell(int columns, int rows, std::vector<int> &missing)
{
    for (; sideways > 0; --sideways)
        missing.push_back(column++);
    while (covered(column))
        missing.push_back(column++);
    const int own = column;
    if (coveredUntil.size() < static_cast<std::size_t>(own + columns))
        coveredUntil.resize(static_cast<std::size_t>(own + columns), -1);
    for (int k = own; k < own + columns; ++k)
        coveredUntil[static_cast<std::size_t>(k)] =
            std::max(coveredUntil[static_cast<std::size_t>(k)], row + rows - 1);
    sideways = columns - 1;
    column = own + 1;
    return own;
}

std::vector<int> OdtTableGrid::endRow()
{
    std::vector<int> missing;
    for (; sideways > 0; --sideways)
        missing.push_back(column++);
    for (; column < static_cast<int>(coveredUntil.size()); ++column)
        if (covered(column))
            missing.push_back(column);
    return missing;
}

} // namespace richtext
