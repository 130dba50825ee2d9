// The hand-written sheet file format of the simulators.
#include "sim/SheetFile.h"

#include <gtest/gtest.h>

namespace zebreader81::sim {
namespace {

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
