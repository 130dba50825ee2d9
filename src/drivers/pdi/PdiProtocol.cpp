#include "drivers/pdi/PdiProtocol.h"

#include "core/basError.h"

#include <limits>

namespace zebreader81::pdi {

namespace {
constexpr int MarkBits[] = {1, 2, 4, 8, 16, 32};
} // namespace

std::optional<std::string> statusFault(int status1)
{
    if (status1 & FrontSensor)
        return "The PDI scanner reports a front sensor error.  Either a form is present or the scanner is "
               "improperly closed. Please clear any form from the front of the scanner and try again.";
    if (status1 & BackSensor)
        return "The PDI scanner reports a back sensor error.  Either a form is present or the scanner is "
               "improperly closed.  Please clear any form from inside the scanner and try again.";
    if (status1 & PaperJam)
        return "The PDI scanner reports a paper jam.  Clear the form from the paper transport and retry.";
    return std::nullopt;
}

int32_t rowCount(int32_t waiting)
{
    const int32_t twice = waiting - 1;
    int32_t half = twice / 2;
    if (twice % 2 == 0)
        return half;
    if (twice < 0)
        --half; // floor
    return half % 2 == 0 ? half : half + 1;
}

std::optional<int32_t> parseThreshold(std::string_view reply)
{
    if (reply.empty())
        return std::nullopt;
    int32_t value = 0;
    for (const char c : reply) {
        int digit;
        if (c >= '0' && c <= '9')
            digit = c - '0';
        else if (c >= 'A' && c <= 'F')
            digit = c - 'A' + 10;
        else
            return std::nullopt;
        // Too many digits for any threshold: not a reading, and no overflow.
        if (value > (std::numeric_limits<int32_t>::max() - digit) / 16)
            return std::nullopt;
        value = value * 16 + digit;
    }
    return value;
}

std::string thresholdSteps(int32_t current, int32_t wanted)
{
    if (wanted < current)
        return std::string(static_cast<std::size_t>(current - wanted), CmdThresholdDown[0]);
    return std::string(static_cast<std::size_t>(wanted - current), CmdThresholdUp[0]);
}

SheetDecoder::SheetDecoder(int16_t markValue)
    : markValue_(markValue), marks_(SafeArray<int16_t>::matrix(1, MaxRows, 1, MaxCols))
{
}

void SheetDecoder::start(int32_t rows)
{
    started_ = true;
    row_ = rows;
}

void SheetDecoder::add(unsigned char c)
{
    if (c != EmptyHalfRow) {
        const int firstColumn = secondByte_ ? 7 : 1;
        for (int i = 0; i < 6; ++i)
            if (c & MarkBits[i]) {
                if (row_ < 1 || row_ > MaxRows)
                    err::raise(err::SubscriptOutOfRange);
                marks_(row_, firstColumn + i) = markValue_;
            }
    }
    if (secondByte_)
        --row_;
    secondByte_ = !secondByte_;
}

} // namespace zebreader81::pdi
