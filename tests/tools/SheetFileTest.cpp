// The hand-written sheet file format of the simulators.
#include "sim/SheetFile.h"

#include <gtest/gtest.h>

namespace zebreader81::sim {
namespace {

TEST(SheetFile, ReadsSidesMarksBarcodesAndBlankRows)
{
    const auto sheets = parseSheets(R"(# two sheets
sheet first
barcode 00 12#3
side 1
| .1 9A |  note: blanks and text after the bar are ignored
|fX|
blank 2
side 2
|X|
sheet second
|..5|
)");
    ASSERT_EQ(sheets.size(), 2u);
    const auto& a = sheets[0];
    EXPECT_EQ(a.barcodes, (std::vector<std::string>{"00 12#3"}));
    // Short rows are padded to the side's width; blank rows are all 0.
    EXPECT_EQ(a.side1,
              (std::vector<std::vector<int>>{{0, 1, 9, 10}, {15, 15, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}}));
    EXPECT_EQ(a.side2, (std::vector<std::vector<int>>{{15}}));
    // A new sheet starts on side 1.
    EXPECT_EQ(sheets[1].side1, (std::vector<std::vector<int>>{{0, 0, 5}}));
    EXPECT_TRUE(sheets[1].side2.empty());
    EXPECT_TRUE(sheets[1].barcodes.empty());
}

TEST(SheetFile, ErrorsNameTheLineAndWhatIsWrong)
{
    const std::pair<const char*, const char*> cases[] = {
        {"|..X|\n", "t.sheets:1: a \"sheet\" line must come first"},
        {"sheet\n|..G|\n", "t.sheets:2: 'G' is not a mark (use . 0-9 A-F or X)"},
        {"sheet\n\nside 3\n", "t.sheets:3: side must be 1 or 2, not \"3\""},
        {"sheet\nblank many\n", "t.sheets:2: expected a row count from 0 to 10000, not \"many\""},
        {"sheet\nrow |..|\n",
         "t.sheets:2: unknown keyword \"row\" (expected sheet, barcode, side, blank or a |row|)"},
    };
    for (const auto& [text, error] : cases) {
        try {
            parseSheets(text, "t.sheets");
            ADD_FAILURE() << text;
        } catch (const SheetFileError& e) {
            EXPECT_STREQ(e.what(), error);
        }
    }
    EXPECT_THROW(loadSheetFile("/nonexistent/sheets.txt"), SheetFileError);
}

} // namespace
} // namespace zebreader81::sim
