// OpScan command bytes, and page bytes no simulated sheet carries.
#include "drivers/ncs/OpScanProtocol.h"
#include "drivers/ncs/OpScanPageDecoder.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using namespace OpScanProtocol;

// The commands a session sends are checked end to end; these are the values it does not send.
TEST(OpScanProtocol, CommandsOutsideASession)
{
    EXPECT_EQ(setModeCommand(-2), std::string("e\x04"));
    EXPECT_EQ(modeOfLetter('T'), 3);
    EXPECT_EQ(modeOfLetter('d'), 4);
    EXPECT_EQ(modeOfLetter('x'), std::nullopt);
    EXPECT_EQ(imprinterPositionCommand(24), std::string("124\x04"));
    EXPECT_EQ(imprinterPositionCommand(123), std::string("1123\x04"));
}

// A "d" ends a barcode only inside one; elsewhere it is a mark. A barcode loses its first two
// characters, and a run escape works in its text too. Side 2 data without its array is error 9.
TEST(OpScanPageDecoder, DOutsideABarcodeIsAMarkAndRunsReachIntoBarcodes)
{
    const auto mark = decodeOpScanPage("ad" + std::string(47, '0') + "\r", false);
    ASSERT_EQ(mark.step, OpScanPageDecoder::Step::Complete);
    EXPECT_EQ(mark.page.side1()(1, 1), 'd' - '7');
    EXPECT_EQ(mark.page.side1()(1, 2), 0);
    EXPECT_EQ(mark.page.barcodes()(1), "?");

    const auto code = decodeOpScanPage("c00" + std::string{NAK, 64 + 3, '7'} + "d\r", false);
    ASSERT_EQ(code.step, OpScanPageDecoder::Step::Complete);
    ASSERT_EQ(code.page.barcodes().UBound(), 1);
    EXPECT_EQ(code.page.barcodes()(1), "777");
    EXPECT_EQ(decodeOpScanPage("b" + std::string(49, '0'), false).errorNumber, 9) << "no side 2 array";
}

} // namespace
} // namespace zebreader81::test
