// Decodes an OpScan page stream (the bytes after the sheet's start) into the side arrays and
// the barcode list. Pure: fed one byte at a time, no I/O, so it can be tested and fuzzed alone.
#pragma once

#include "zebreader81/SafeArray.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zebreader81 {

class OpScanPageDecoder {
public:
    static constexpr int32_t Rows = 150;
    static constexpr int32_t Columns = 48;
    /// A page longer than this is a runaway line, not a sheet (a full duplex page is ~15 kB).
    static constexpr std::size_t MaxPageBytes = 1000000;

    enum class Step {
        /// Needs another byte.
        More,
        /// CR or LF ended the page.
        Complete,
        /// A row letter followed a row that did not hold 48 values; see rowFault().
        InvalidRow,
    };

    struct RowFault {
        int side = 0;
        int32_t count = 0;
        int32_t lineNumber = 0;
    };

    /// `withSide2`: the side-2 array exists (Duplex and DuplexForm).
    explicit OpScanPageDecoder(bool withSide2);

    /// Takes the next byte. Raises RuntimeError 9 for a mark beyond row 150 or on a side-2
    /// array that does not exist, 6 when a page never ends or the barcode index overflows.
    /// Once the page is complete or invalid, further bytes are ignored.
    Step feed(uint8_t byte);

    Step step() const { return step_; }
    const RowFault& rowFault() const { return fault_; }
    /// Rows 1..150, columns 1..48.
    const SafeArray<int16_t>& side1() const { return side1_; }
    /// Empty when created without side 2.
    const SafeArray<int16_t>& side2() const { return side2_; }
    /// From index 1; a page without barcodes keeps the one element "?".
    const SafeArray<std::string>& barcodes() const { return barcodes_; }
    /// Row letters received per side.
    int32_t lines(int side) const { return cursor(side).line; }

private:
    struct Cursor {
        int32_t column = 1;
        int32_t row = 1;
        int32_t line = 0;
    };
    enum class Pending { None, RunCount, RunCharacter };

    Cursor& cursor(int side) { return cursors_[side == 2 ? 1 : 0]; }
    const Cursor& cursor(int side) const { return cursors_[side == 2 ? 1 : 0]; }
    Step rowLetter(int side);
    void data(uint8_t byte, int32_t repeat);
    void marks(uint8_t byte, int32_t repeat);
    void endBarcode();
    Step endPage();
    void store(int32_t row, int32_t column, int16_t value);

    SafeArray<int16_t> side1_;
    SafeArray<int16_t> side2_;
    SafeArray<std::string> barcodes_;
    Cursor cursors_[2];
    int side_ = 1;
    int32_t valuesSinceLetter_ = Columns;
    bool barcodeMode_ = false;
    int32_t barcodeIndex_ = 1;
    Pending pending_ = Pending::None;
    int32_t runCount_ = 1;
    std::size_t bytes_ = 0;
    Step step_ = Step::More;
    RowFault fault_;
};

/// What decoding a whole byte string gave.
struct OpScanDecodeResult {
    OpScanPageDecoder page;
    /// More when the bytes ran out before the end of page.
    OpScanPageDecoder::Step step = OpScanPageDecoder::Step::More;
    /// Bytes taken, up to and including the one that ended or broke the page.
    std::size_t consumed = 0;
    /// Run-time error raised while decoding, 0 for none.
    int32_t errorNumber = 0;
};

OpScanDecodeResult decodeOpScanPage(std::string_view stream, bool withSide2);

} // namespace zebreader81
