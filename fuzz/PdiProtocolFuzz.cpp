// PDI answers: status bytes, the threshold reply, and the sheet bytes after the LF.
#include "FuzzSupport.h"
#include "core/basError.h"
#include "drivers/pdi/PdiProtocol.h"

#include <stdexcept>

using namespace zebreader81;

ZEBREADER_FUZZ(in)
{
    const uint8_t status1 = in.byte();
    const auto fault = pdi::statusFault(status1);
    FUZZ_CHECK(fault.has_value() == ((status1 & (pdi::FrontSensor | pdi::BackSensor | pdi::PaperJam)) != 0));

    // The threshold answer as the driver reads it (two characters), and any longer text.
    const auto reply = in.bytes(pdi::ThresholdReplyLength);
    const int16_t wanted = in.int16();
    if (const auto current = pdi::parseThreshold(reply)) {
        FUZZ_CHECK(*current >= 0 && *current <= 0xFF);
        const auto steps = pdi::thresholdSteps(*current, wanted);
        FUZZ_CHECK(steps.find_first_not_of(*current > wanted ? '+' : '-') == std::string::npos);
    }
    const auto text = in.bytes(in.byte() % 24);
    if (const auto any = pdi::parseThreshold(text))
        FUZZ_CHECK(*any >= 0);

    // Sheet bytes: the row count comes from what was waiting at the LF (0 to 32767).
    const int32_t waiting = static_cast<uint16_t>(in.int16()) % 32768;
    const int32_t rows = pdi::rowCount(waiting);
    FUZZ_CHECK(rows >= -1 && rows <= waiting / 2 + 1);
    pdi::SheetDecoder sheet(static_cast<int16_t>(in.int16()));
    sheet.start(rows);
    try {
        for (const char c : in.rest())
            sheet.add(static_cast<unsigned char>(c));
    } catch (const RuntimeError& e) {
        FUZZ_CHECK(e.number() == err::SubscriptOutOfRange);
    }
    FUZZ_CHECK(sheet.marks().UBound(1) == pdi::MaxRows && sheet.marks().UBound(2) == pdi::MaxCols);
}
