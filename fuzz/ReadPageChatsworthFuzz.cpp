// A whole ReadPage of the Chatsworth family against a peer that answers with the fuzzer's bytes.
#include "ReadPageHarness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    return zebreader81::fuzz::runReadPage(zebreader81::fuzz::Family::Chatsworth, data, size);
}
