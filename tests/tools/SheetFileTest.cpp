// The hand-written sheet file format and the sample sheets that ship with the simulators.
#include "sim/SheetFile.h"
#include "sim/Simulators.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

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

// Rows of [first, first+count) with exactly one mark in columns [col, col+width).
int rowsWithOneMark(const std::vector<std::vector<int>>& side, int first, int count, int col, int width)
{
    int rows = 0;
    for (int r = first; r < first + count; ++r)
        rows += std::count_if(side[r].begin() + col, side[r].begin() + col + width,
                              [](int m) { return m > 0; }) == 1;
    return rows;
}

TEST(SampleSheets, AnswerSheetsAndCardsMarkEveryQuestionOnce)
{
    // Model, columns, the row of the first question; the answer sheets hold 50 questions in
    // two blocks, 53 rows, a barcode, a seven-digit ID and one duplex sheet.
    for (const auto& [model, cols, questions] : {std::tuple{2, 40u, 28}, {23, 12u, 12}, {24, 12u, 12}}) {
        const auto sheets = sampleSheets(model);
        ASSERT_EQ(sheets.size(), 3u);
        int duplex = 0;
        for (const auto& s : sheets) {
            ASSERT_EQ(s.side1[0].size(), cols) << model;
            duplex += !s.side2.empty();
            if (model != 2)
                continue;
            ASSERT_EQ(s.side1.size(), 53u);
            EXPECT_EQ(s.barcodes.size(), 1u);
            for (int c = 22; c < 29; ++c) {
                int marks = 0;
                for (int r = 0; r < 10; ++r)
                    marks += s.side1[r][c] > 0;
                EXPECT_EQ(marks, 1) << "ID column " << c + 1;
            }
        }
        EXPECT_EQ(duplex, model == 2 ? 1 : 0);
        EXPECT_EQ(rowsWithOneMark(sheets[0].side1, questions, 25, 0, 5), 25) << model;
        if (model == 2) {
            EXPECT_EQ(rowsWithOneMark(sheets[0].side1, questions, 25, 7, 5), 25);
        }
    }
}

TEST(SimulatorFactory, OffersOnlyFamiliesWithASimulator)
{
    EXPECT_FALSE(hasSimulator(0));
    EXPECT_FALSE(hasSimulator(1)); // Apperson: no protocol
    EXPECT_EQ(makeSimulator(7, {}), nullptr);
    EXPECT_EQ(simulatedReaderType("no-such-family"), 0);
    for (const auto& f : simulatedFamilies()) {
        EXPECT_TRUE(hasSimulator(f.defaultReaderType)) << f.name;
        EXPECT_EQ(simulatedReaderType(f.name), f.defaultReaderType);
        auto peer = makeSimulator(f.defaultReaderType, {});
        ASSERT_NE(peer, nullptr) << f.name;
        EXPECT_FALSE(peer->path().empty());
    }
}

} // namespace
} // namespace zebreader81::sim
