#include "drivers/ezdata/EZDataSheet.h"

#include "core/basError.h"

namespace zebreader81::ezdata {

SheetDecoder::SheetDecoder(int16_t markValue)
    : card_(markValue, Rows, chatsworth::CardDecoder::Bytes::SevenBit)
{
}

SheetDecoder::Step SheetDecoder::feed(char byte)
{
    switch (card_.feed(byte)) {
    case chatsworth::CardDecoder::Step::More: return Step::More;
    case chatsworth::CardDecoder::Step::End: return Step::End;
    case chatsworth::CardDecoder::Step::Invalid: return Step::Invalid;
    case chatsworth::CardDecoder::Step::TooLong: break;
    }
    err::raise(err::SubscriptOutOfRange);
}

} // namespace zebreader81::ezdata
