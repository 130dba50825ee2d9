// ScanMark answers to QSTS, however long or strange.
#include "FuzzSupport.h"
#include "drivers/scantron/ScanMarkStatus.h"

using namespace zebreader81;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    const std::string reply(reinterpret_cast<const char*>(data), size);
    const auto d = scanmark::decodeStatus(reply);
    FUZZ_CHECK(d.result >= -1 && d.result <= 1);
    if (d.reports())
        FUZZ_CHECK(d.result == -1 && !d.title.empty() && !d.location.empty());
    if (reply.size() < scanmark::StatusReplyLength)
        FUZZ_CHECK(d.result == -1 && !d.reports());
    return 0;
}
