// ScanMark answers to QSTS, however long or strange.
#include "FuzzSupport.h"
#include "drivers/scantron/ScanMarkStatus.h"

using namespace zebreader81;

ZEBREADER_FUZZ(in)
{
    const std::string reply(in.all());
    const auto d = scanmark::decodeStatus(reply);
    FUZZ_CHECK(d.result >= -1 && d.result <= 1);
    if (d.reports())
        FUZZ_CHECK(d.result == -1 && !d.title.empty() && !d.location.empty());
    if (reply.size() < scanmark::StatusReplyLength)
        FUZZ_CHECK(d.result == -1 && !d.reports());
}
