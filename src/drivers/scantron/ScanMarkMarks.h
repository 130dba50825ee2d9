// Where each character of a ScanMark mark-data reply goes: page mode fills rows of 48
// characters, window mode walks the read areas of the form definition from their low corners.
#pragma once

#include "drivers/scantron/ScanMarkCommands.h"
#include "zebreader81/SafeArray.h"

#include <cstdint>
#include <vector>

namespace zebreader81::scanmark {

/// A side array (rows x cols, both from 1); empty sizes give an array without cells.
SafeArray<int16_t> sideArray(int16_t rows, int16_t cols);

/// Stores value at (row, col) when the array has that cell; a cell outside is dropped.
void storeMark(SafeArray<int16_t>& side, int32_t row, int32_t col, int16_t value);

/// Page-mode position: every row of the reply is 48 characters, whatever the form's width.
class PageCursor {
public:
    explicit PageCursor(int16_t rows) : rows_(rows) {}
    bool done() const { return row_ > rows_; }
    int32_t row() const { return row_; }
    int32_t col() const { return col_; }
    void advance();

private:
    int32_t rows_;
    int32_t row_ = 1, col_ = 1;
};

/// One cell of a window-mode reply.
struct WindowCell {
    int16_t side = 1;
    int32_t row = 0, col = 0;
};

/// Window-mode position over the downloaded field records, in their order. Each area sends
/// NumRows x NumCols characters, row by row when its Orientation is non-zero, else column by
/// column, from the low corner.
class WindowCursor {
public:
    /// Raises 6 when an area's geometry overflows 16 bits.
    explicit WindowCursor(const std::vector<FieldEntry>& plan);
    bool done() const { return area_ >= areas_.size(); }
    WindowCell cell() const;
    void advance();

private:
    struct Area {
        int16_t side;
        AreaGeometry geometry;
        int32_t rows, cols;
        bool byRow;
    };
    void skipEmpty();
    std::vector<Area> areas_;
    std::size_t area_ = 0;
    int32_t outer_ = 0, inner_ = 0;
};

} // namespace zebreader81::scanmark
