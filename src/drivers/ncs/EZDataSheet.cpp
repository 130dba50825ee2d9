#include "drivers/ncs/EZDataSheet.h"

#include "engine/basError.h"

namespace zebreader81::ezdata {

SheetDecoder::SheetDecoder(int16_t markValue) : card_(markValue, Rows, omr::CardDecoder::Bytes::SevenBit) {}

SheetDecoder::Step SheetDecoder::feed(char byte)
{
    switch (card_.feed(byte)) {
    case omr::CardDecoder::Step::More: return Step::More;
    case omr::CardDecoder::Step::End: return Step::End;
    case omr::CardDecoder::Step::Invalid: return Step::Invalid;
    case omr::CardDecoder::Step::TooLong: break;
    }
    err::raise(err::SubscriptOutOfRange);
}

} // namespace zebreader81::ezdata
