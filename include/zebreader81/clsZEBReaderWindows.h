// Read areas: blocks of mark positions to read when only parts of a sheet are wanted.
#pragma once

#include "zebreader81/export.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace zebreader81 {

/// One read area: NumRows x NumCols mark positions from (StartRow, StartCol) with the given
/// gaps, holding NumItems questions of NumChoices answers. All fields start at 0.
class ZEBREADER81_API clsZEBReaderWindow {
public:
    /// First row and number of rows; RowGap rows between them.
    int16_t StartRow() const { return startRow_; }
    void StartRow(int16_t v) { startRow_ = v; }
    int16_t NumRows() const { return numRows_; }
    void NumRows(int16_t v) { numRows_ = v; }
    int16_t RowGap() const { return rowGap_; }
    void RowGap(int16_t v) { rowGap_ = v; }
    /// First column and number of columns; ColGap columns between them.
    int16_t StartCol() const { return startCol_; }
    void StartCol(int16_t v) { startCol_ = v; }
    int16_t NumCols() const { return numCols_; }
    void NumCols(int16_t v) { numCols_ = v; }
    int16_t ColGap() const { return colGap_; }
    void ColGap(int16_t v) { colGap_ = v; }
    /// Sheet side (1 or 2).
    int16_t Page() const { return page_; }
    void Page(int16_t v) { page_ = v; }
    /// Direction in which the area is read: 1 row by row, 0 column by column.
    int16_t Orientation() const { return orientation_; }
    void Orientation(int16_t v) { orientation_ = v; }
    /// Questions in the area, and answers per question.
    int16_t NumItems() const { return numItems_; }
    void NumItems(int16_t v) { numItems_ = v; }
    int16_t NumChoices() const { return numChoices_; }
    void NumChoices(int16_t v) { numChoices_ = v; }

private:
    int16_t startRow_ = 0, numRows_ = 0, rowGap_ = 0, startCol_ = 0, numCols_ = 0, colGap_ = 0;
    int16_t page_ = 0, orientation_ = 0, numItems_ = 0, numChoices_ = 0;
};

/// 1-based collection of read areas, in the order they were added or placed.
class ZEBREADER81_API clsZEBReaderWindows {
public:
    clsZEBReaderWindows();
    ~clsZEBReaderWindows();
    clsZEBReaderWindows(const clsZEBReaderWindows&) = delete;
    clsZEBReaderWindows& operator=(const clsZEBReaderWindows&) = delete;

    /// Number of areas.
    int32_t Count() const;
    /// Appends an area, or places it before or after the given position.
    void Add(std::shared_ptr<clsZEBReaderWindow> window, std::optional<int32_t> Before = {},
             std::optional<int32_t> After = {});
    /// Removes the area at Position (a bad position is reported).
    void Remove(int32_t Position);
    /// Removes every area.
    void RemoveAll();
    /// The area at Position, or nullptr when Exists(Position) is False.
    std::shared_ptr<clsZEBReaderWindow> Item(int32_t Position) const;
    /// True when Position names an area.
    bool Exists(int32_t Position) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace zebreader81
