#include "drivers/scantron/ScanMarkMarks.h"

#include "zebreader81/clsZEBReaderWindows.h"

namespace zebreader81::scanmark {

SafeArray<int16_t> sideArray(int16_t rows, int16_t cols)
{
    return SafeArray<int16_t>::matrix(1, rows > 0 ? rows : 0, 1, cols > 0 ? cols : 0);
}

void storeMark(SafeArray<int16_t>& side, int32_t row, int32_t col, int16_t value)
{
    if (side.dims() != 2 || row < side.LBound(1) || row > side.UBound(1) || col < side.LBound(2) ||
        col > side.UBound(2))
        return;
    side(row, col) = value;
}

void PageCursor::advance()
{
    if (++col_ > PageRowWidth) {
        col_ = 1;
        ++row_;
    }
}

WindowCursor::WindowCursor(const std::vector<FieldEntry>& plan)
{
    for (const auto& entry : plan) {
        const auto& w = *entry.window;
        areas_.push_back({entry.side, areaGeometry(w), w.NumRows(), w.NumCols(), w.Orientation() != 0});
    }
    skipEmpty();
}

WindowCell WindowCursor::cell() const
{
    const Area& a = areas_.at(area_);
    const int32_t i = a.byRow ? outer_ : inner_;
    const int32_t j = a.byRow ? inner_ : outer_;
    return {a.side, a.geometry.firstRow + i * a.geometry.rowStep,
            a.geometry.firstCol + j * a.geometry.colStep};
}

void WindowCursor::advance()
{
    if (done())
        return;
    const Area& a = areas_[area_];
    const int32_t innerCount = a.byRow ? a.cols : a.rows;
    const int32_t outerCount = a.byRow ? a.rows : a.cols;
    if (++inner_ < innerCount)
        return;
    inner_ = 0;
    if (++outer_ < outerCount)
        return;
    outer_ = 0;
    ++area_;
    skipEmpty();
}

void WindowCursor::skipEmpty()
{
    while (area_ < areas_.size() && (areas_[area_].rows <= 0 || areas_[area_].cols <= 0))
        ++area_;
}

} // namespace zebreader81::scanmark
