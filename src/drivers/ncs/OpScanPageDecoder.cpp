#include "drivers/ncs/OpScanPageDecoder.h"

#include "core/basError.h"
#include "drivers/ncs/OpScanProtocol.h"

#include <limits>

namespace zebreader81 {

namespace {
constexpr uint8_t NAK = static_cast<uint8_t>(OpScanProtocol::NAK);
constexpr uint8_t CR = static_cast<uint8_t>(OpScanProtocol::CR);
constexpr uint8_t LF = static_cast<uint8_t>(OpScanProtocol::LF);
} // namespace

OpScanPageDecoder::OpScanPageDecoder(bool withSide2)
    : side1_(SafeArray<int16_t>::matrix(1, Rows, 1, Columns)),
      side2_(withSide2 ? SafeArray<int16_t>::matrix(1, Rows, 1, Columns) : SafeArray<int16_t>()),
      barcodes_(SafeArray<std::string>::vector(1, 1))
{
    barcodes_(1).assign(1, '?');
}

OpScanPageDecoder::Step OpScanPageDecoder::feed(uint8_t byte)
{
    if (step_ != Step::More)
        return step_;
    if (++bytes_ > MaxPageBytes)
        err::raise(err::Overflow);

    switch (pending_) {
    case Pending::RunCount:
        runCount_ = static_cast<int32_t>(byte) - 64;
        pending_ = Pending::RunCharacter;
        return step_;
    case Pending::RunCharacter:
        // The repeated byte is always data, even where it would otherwise be a letter.
        pending_ = Pending::None;
        data(byte, runCount_);
        runCount_ = 1;
        return step_;
    case Pending::None: break;
    }

    switch (byte) {
    case 'a': return rowLetter(1);
    case 'b': return rowLetter(2);
    case 'c':
        // Barcode text runs to the end of the page; a second "c" starts over at element 1.
        barcodeIndex_ = 1;
        barcodes_(1).clear();
        barcodeMode_ = true;
        return step_;
    case NAK: pending_ = Pending::RunCount; return step_;
    case CR:
    case LF: return endPage();
    case 'd':
        if (barcodeMode_) {
            endBarcode();
            return step_;
        }
        break;
    default: break;
    }
    data(byte, 1);
    return step_;
}

OpScanPageDecoder::Step OpScanPageDecoder::rowLetter(int side)
{
    // One count for both sides: a short row is caught by whichever letter follows it.
    if (valuesSinceLetter_ != Columns) {
        fault_ = {side, valuesSinceLetter_, cursor(side).line};
        return step_ = Step::InvalidRow;
    }
    ++cursor(side).line;
    side_ = side;
    valuesSinceLetter_ = 0;
    return step_;
}

void OpScanPageDecoder::data(uint8_t byte, int32_t repeat)
{
    if (!barcodeMode_) {
        marks(byte, repeat);
        return;
    }
    auto& text = barcodes_(barcodeIndex_);
    for (int32_t i = 0; i < repeat; ++i)
        text.push_back(static_cast<char>(byte));
}

void OpScanPageDecoder::marks(uint8_t byte, int32_t repeat)
{
    for (int32_t i = 0; i < repeat; ++i) {
        Cursor& at = cursor(side_);
        if (byte <= '9')
            store(at.row, at.column, static_cast<int16_t>(byte - '0'));
        else if (byte >= 'A')
            store(at.row, at.column, static_cast<int16_t>(byte - 55));
        ++at.column;
        ++valuesSinceLetter_;
        if (at.column > Columns) {
            // The last column carries no mark; the scanner's value there is dropped.
            store(at.row, Columns, 0);
            at.column = 1;
            ++at.row;
        }
    }
}

void OpScanPageDecoder::store(int32_t row, int32_t column, int16_t value)
{
    SafeArray<int16_t>& side = side_ == 2 ? side2_ : side1_;
    if (side.empty() || row > Rows)
        err::raise(err::SubscriptOutOfRange);
    side(row, column) = value;
}

void OpScanPageDecoder::endBarcode()
{
    auto& text = barcodes_(barcodeIndex_);
    text.erase(0, std::min<std::size_t>(2, text.size()));
    if (barcodeIndex_ >= std::numeric_limits<int16_t>::max())
        err::raise(err::Overflow);
    ++barcodeIndex_;
    barcodes_.redimPreserve(barcodeIndex_);
}

OpScanPageDecoder::Step OpScanPageDecoder::endPage()
{
    if (barcodeMode_ && barcodeIndex_ > 1) {
        // Drop the empty element that the last "d" opened.
        --barcodeIndex_;
        barcodes_.redimPreserve(barcodeIndex_);
    }
    return step_ = Step::Complete;
}

OpScanDecodeResult decodeOpScanPage(std::string_view stream, bool withSide2)
{
    OpScanDecodeResult result{OpScanPageDecoder(withSide2)};
    try {
        for (char c : stream) {
            ++result.consumed;
            result.step = result.page.feed(static_cast<uint8_t>(c));
            if (result.step != OpScanPageDecoder::Step::More)
                break;
        }
    } catch (const RuntimeError& e) {
        result.errorNumber = e.number();
    }
    return result;
}

} // namespace zebreader81
