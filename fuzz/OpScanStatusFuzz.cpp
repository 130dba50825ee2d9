// "s0" and "s1" replies as the OpScan driver collects them (unread positions stay 0).
#include "FuzzSupport.h"
#include "drivers/ncs/OpScanProtocol.h"

#include <algorithm>
#include <cstring>

using namespace zebreader81;
namespace proto = zebreader81::OpScanProtocol;

ZEBREADER_FUZZ(in)
{
    proto::Reply reply{};
    const auto bytes = in.all();
    std::memcpy(reply.data(), bytes.data(), std::min(bytes.size(), reply.size()));

    const auto full = proto::parseFullStatus(reply);
    FUZZ_CHECK(full.state.size() == 1);
    FUZZ_CHECK(!full.mode || (*full.mode >= 1 && *full.mode <= 6));
    if (full.mode)
        FUZZ_CHECK(proto::setModeCommand(*full.mode).size() == 3);

    const auto fault = proto::classifyStatus(reply);
    const auto message = proto::faultMessage(fault);
    const bool reported = fault != proto::StatusFault::None && fault != proto::StatusFault::Unreported;
    FUZZ_CHECK((std::strlen(message.text) > 0) == reported);
    FUZZ_CHECK((std::strlen(message.title) > 0) == reported);
    if (fault == proto::StatusFault::None)
        FUZZ_CHECK((((reply[1] & 3) | reply[2]) & 15) == 0);
}
