// The VMR138 wire protocol on bytes: row count, threshold reply and the sheet stream.
#include "drivers/pdi/PdiProtocol.h"
#include "core/basError.h"

#include <gtest/gtest.h>

namespace zebreader81::pdi {
namespace {

TEST(PdiProtocol, RowCountRoundsHalvesToEven)
{
    // (waiting - 1) / 2: -0.5, 0.5, 1.5, 2.5 and 3.5 go to the even neighbour.
    const std::pair<int32_t, int32_t> cases[] = {{0, 0}, {1, 0}, {2, 0}, {3, 1},     {4, 2},
                                                 {6, 2}, {8, 4}, {9, 4}, {1001, 500}};
    for (const auto& [waiting, rows] : cases)
        EXPECT_EQ(rowCount(waiting), rows) << waiting;
}

TEST(PdiProtocol, ThresholdReplyIsUpperCaseHexadecimal)
{
    EXPECT_EQ(parseThreshold("F0"), 240);
    EXPECT_EQ(parseThreshold("0A"), 10);
    for (const char* bad : {"", "f0", "G1", " 1"})
        EXPECT_FALSE(parseThreshold(bad)) << bad;
    // Found by fuzz_pdi_protocol: a long run of digits overflowed the value.
    EXPECT_EQ(parseThreshold("7FFFFFFF"), 0x7FFFFFFF);
    EXPECT_FALSE(parseThreshold("8888888888888888F"));
    EXPECT_FALSE(parseThreshold("80000000"));
    EXPECT_EQ(thresholdSteps(247, 240), "+++++++");
    EXPECT_EQ(thresholdSteps(199, 202), "---");
}

} // namespace
} // namespace zebreader81::pdi
