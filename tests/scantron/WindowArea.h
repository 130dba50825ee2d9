// One area of a window form, as the host adds it.
#pragma once

#include "zebreader81/clsZEBReaderWindows.h"

#include <memory>

namespace zebreader81::test {

inline std::shared_ptr<clsZEBReaderWindow> area(int16_t startRow, int16_t numRows, int16_t rowGap,
                                                int16_t startCol, int16_t numCols, int16_t colGap,
                                                int16_t page = 1, int16_t orientation = 1)
{
    auto w = std::make_shared<clsZEBReaderWindow>();
    w->StartRow(startRow), w->NumRows(numRows), w->RowGap(rowGap);
    w->StartCol(startCol), w->NumCols(numCols), w->ColGap(colGap);
    w->Page(page), w->Orientation(orientation);
    return w;
}

} // namespace zebreader81::test
