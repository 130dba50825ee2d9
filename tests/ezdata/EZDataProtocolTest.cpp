// The EZData wire protocol on bytes: frames, the configuration text, answers, the sheet stream.
#include "drivers/ezdata/EZDataProtocol.h"
#include "core/basError.h"
#include "drivers/ezdata/EZDataSheet.h"
#include "drivers/ezdata/basNCSEZData.h"

#include <gtest/gtest.h>

namespace zebreader81::ezdata {
namespace {

TEST(EZDataProtocol, ThresholdCodesStandForZeroToNine)
{
    for (int16_t t = 0; t <= 9; ++t) {
        const std::string code = std::to_string(60 + 2 * t);
        EXPECT_EQ(thresholdOfCode(code), t) << code;
        EXPECT_TRUE(basNCSEZData::CheckThresholdNCSEZ(t, code)) << code;
        EXPECT_FALSE(basNCSEZData::CheckThresholdNCSEZ(static_cast<int16_t>((t + 1) % 10), code)) << code;
    }
    for (const char* other : {"61", "58", "80", "79", "6", "", "6A", " 60"}) {
        EXPECT_EQ(thresholdOfCode(other), std::nullopt) << other;
        // Any other code stands for the wanted value itself.
        EXPECT_TRUE(basNCSEZData::CheckThresholdNCSEZ(4, other)) << other;
    }
}

} // namespace
} // namespace zebreader81::ezdata
