#include "drivers/scantron/ScanMarkStatus.h"

namespace zebreader81::scanmark {

namespace {
constexpr const char* location = "ZEBReader81 - basScantron.CheckStatusST";
// The timing line message has always carried this clipped procedure name; hosts match on it.
constexpr const char* timingLineLocation = "ZEBReader81 - basScantron.heckStatusST";
constexpr unsigned char jamBit = 0x40;
constexpr unsigned char doubleFeedBit = 0x10;
} // namespace

StatusDecision decodeStatus(const std::string& reply)
{
    StatusDecision d;
    if (reply.size() < StatusReplyLength)
        return d;
    switch (reply[1]) {
    case '0': {
        const auto code = static_cast<unsigned char>(reply[8]);
        if (code & jamBit)
            d = {-1, "The Scantron scanner reports a paper jam. Please clear the jam and try again.",
                 "Paper Jam", location};
        else if (code & doubleFeedBit)
            d = {-1, "The Scantron scanner reports a double feed. Please rescan the page.", "Double Feed",
                 location};
        else
            d.result = static_cast<int16_t>(code & 1);
        break;
    }
    case '1':
        if (reply[2] == ' ')
            d = {-1,
                 "The Scantron scanner reported a timing line error. Make sure that the form corresponds to "
                 "the "
                 "open template and that it was not skewed when scanning. Please rescan.",
                 "Initialize Error", timingLineLocation};
        break;
    case '2':
        // The number is the code of the state digit itself, so always 50.
        d = {-1,
             "Your Scantron scanner reported a command error. Error #" +
                 std::to_string(static_cast<unsigned char>(reply[1])),
             "Command Error", location};
        break;
    default: break;
    }
    return d;
}

} // namespace zebreader81::scanmark
