// zebreader scan against the built-in simulators: what a user sees of each sheet.
#include "tools/ToolFixture.h"
#include "tools/XmlCheck.h"

#include "sim/Simulators.h"

#include <csignal>
#include <filesystem>
#include <regex>

namespace zebreader81::test {
namespace {

using nlohmann::json;

const char* const duplexSheet = R"(sheet
barcode 4711
side 1
|X.5|
|..F|
side 2
|1|
)";

const char* const twoSheets = R"(sheet
|X|
sheet
|.X|
)";

class ZebreaderScan : public ZebreaderTool {
protected:
    void SetUp() override
    {
        if (!sim::hasSimulator(2))
            GTEST_SKIP() << "no OpScan simulator in this build";
    }
    // A simulated OpScan 2 batch with short waits.
    std::vector<std::string> scan(const std::string& sheets, std::vector<std::string> more = {}) const
    {
        std::vector<std::string> args{"scan", "--model", "2", "--simulate", "--timeout", "1", "--sleep", "1"};
        if (!sheets.empty()) {
            args.push_back("--sheets-file");
            args.push_back(dir.write("sheets.txt", sheets));
        }
        args.insert(args.end(), more.begin(), more.end());
        return args;
    }
    static int count(const std::string& text, const std::string& what)
    {
        int n = 0;
        for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
            ++n;
        return n;
    }
};

TEST_F(ZebreaderScan, ADuplexSheetIsOneJsonLineWithBothSidesAndItsBarcode)
{
    const auto r = run(scan(duplexSheet));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    const auto lines = jsonLines(r.out);
    ASSERT_EQ(lines.size(), 2u) << r.out;
    const auto& s = lines[0];
    EXPECT_EQ(s["sheet"], 1);
    EXPECT_EQ(s["side1"]["lbound"], json::parse("[1,1]"));
    EXPECT_EQ(s["side1"]["ubound"], json::parse("[150,48]"));
    const auto& rows = s["side1"]["values"];
    ASSERT_EQ(rows.size(), 150u);
    std::vector<int> row1(48, 0), row2(48, 0);
    row1[0] = 15;
    row1[2] = 5;
    row2[2] = 15;
    EXPECT_EQ(rows[0], json(row1));
    EXPECT_EQ(rows[1], json(row2));
    EXPECT_EQ(rows[2], json(std::vector<int>(48, 0)));
    ASSERT_FALSE(s["side2"].is_null());
    EXPECT_EQ(s["side2"]["values"][0][0], 1);
    EXPECT_EQ(s["barcodes"], json::parse(R"({"lbound":1,"values":["4711"]})"));
    EXPECT_EQ(s["timingMarks"][1], 1);
    EXPECT_EQ(s["rejected"], false);
    // Keys in the documented order.
    EXPECT_EQ(r.outLines()[0].rfind(
                  R"({"sheet":1,"side1":{"lbound":[1,1],"ubound":[150,48],"values":[[15,0,5,)", 0),
              0u);
    EXPECT_EQ(r.outLines()[1], R"({"summary":{"result":true,"sheets":1,"read":1,"cancelScan":true}})");
}

TEST_F(ZebreaderScan, TheSampleSheetsAreReadToTheEndOfTheBatch)
{
    const auto r = run(scan(""));
    ASSERT_EQ(r.status, 0) << r.err;
    const auto lines = jsonLines(r.out);
    ASSERT_EQ(lines.size(), 4u);
    int duplex = 0;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(lines[static_cast<std::size_t>(i)]["sheet"], i + 1);
        duplex += !lines[static_cast<std::size_t>(i)]["side2"].is_null();
    }
    EXPECT_GE(duplex, 1);
    EXPECT_EQ(lines[3]["summary"]["read"], 3);
}

TEST_F(ZebreaderScan, RejectSendsTheRejectCommandForTheListedSheetsOnly)
{
    const auto trace = dir.file("trace.txt");
    const auto r = run(scan(twoSheets, {"--rejecter", "--reject", "2", "--trace", trace}));
    ASSERT_EQ(r.status, 0) << r.err;
    const auto lines = jsonLines(r.out);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0]["rejected"], false);
    EXPECT_EQ(lines[1]["rejected"], true);
    // ESC DC2 once; the rejected last sheet is not ejected as well.
    const auto text = readFile(trace);
    EXPECT_EQ(count(text, "> 1B 12 "), 1) << text;
}

TEST_F(ZebreaderScan, PrintImprintsPositionAndTextOnEverySheet)
{
    const auto trace = dir.file("trace.txt");
    const auto r = run(scan(twoSheets, {"--print", "HI", "--print-distance", "7", "--trace", trace}));
    ASSERT_EQ(r.status, 0) << r.err;
    const auto text = readFile(trace);
    EXPECT_EQ(count(text, "> 31 30 37 04 "), 2) << text;    // "1", "07", EOT
    EXPECT_EQ(count(text, "> 32 48 49 20 04 "), 2) << text; // "2", "HI", blank, EOT
}

TEST_F(ZebreaderScan, TraceShowsEveryByteWithTimeDirectionHexAndText)
{
    const auto trace = dir.file("trace.txt");
    ASSERT_EQ(run(scan(twoSheets, {"--trace", trace})).status, 0);
    const auto text = readFile(trace);
    const auto lines = ToolResult{0, text, {}}.outLines();
    ASSERT_GT(lines.size(), 3u);
    EXPECT_EQ(lines[0].rfind("# zebreader trace of COM1 (simulated, /dev/pts/", 0), 0u) << lines[0];
    const std::regex line(R"(\d+\.\d{6} [<>]( [0-9A-F]{2}){1,16} *  .{1,16})");
    for (std::size_t i = 1; i < lines.size(); ++i)
        EXPECT_TRUE(std::regex_match(lines[i], line)) << lines[i];
    // The first command is the full status query; replies come back.
    EXPECT_NE(lines[1].find("> 73 30 "), std::string::npos) << lines[1];
    EXPECT_NE(lines[1].find("  s0"), std::string::npos);
    EXPECT_NE(text.find(" < "), std::string::npos);
}

TEST_F(ZebreaderScan, SvgWritesOneWellFormedPicturePerSheet)
{
    const auto folder = dir.file("pictures");
    const auto r =
        run(scan(duplexSheet + std::string("barcode <&>\n"), {"--format", "svg", "--output", folder}));
    ASSERT_EQ(r.status, 0) << r.err;
    const auto svg = readFile(folder + "/sheet-0001.svg");
    EXPECT_EQ(xmlProblem(svg), "");
    EXPECT_NE(svg.find("<svg xmlns=\"http://www.w3.org/2000/svg\""), std::string::npos);
    EXPECT_NE(svg.find("Side 2"), std::string::npos);
    EXPECT_EQ(r.out, folder + "/sheet-0001.svg\n");
}

TEST_F(ZebreaderScan, CsvHasOneRowPerSheetSideRowWithTheRejectedFlagAndBarcodes)
{
    const auto r = run(scan(duplexSheet + std::string("barcode 9,\"8\"\nsheet\n|X|\n"),
                            {"--format", "csv", "--rejecter", "--reject", "2"}));
    ASSERT_EQ(r.status, 0) << r.err;
    const auto lines = r.outLines();
    ASSERT_EQ(lines.size(), 1u + 150u + 150u + 150u + 150u);
    EXPECT_EQ(lines[0].rfind("sheet,side,row,rejected,barcodes,c1,c2,", 0), 0u);
    EXPECT_EQ(lines[1].rfind("1,1,1,0,\"4711;9,\"\"8\"\"\",15,0,5,0,", 0), 0u) << lines[1];
    EXPECT_EQ(lines[151].rfind("1,2,1,0,\"4711;9,\"\"8\"\"\",1,0,", 0), 0u);
    EXPECT_EQ(lines[301].rfind("2,1,1,1,", 0), 0u) << lines[301]; // the second sheet, rejected
}

TEST_F(ZebreaderScan, GridShadesMarksByStrengthInTheLocalesCharacters)
{
    const struct {
        const char* locale;
        std::string row; // 15, 0, 5
    } cases[] = {{"C.UTF-8", "  1 \u2588\u00B7\u2592"}, {"C", "  1 @.+"}, {"POSIX", "  1 @.+"}};
    for (const auto& c : cases) {
        auto t = tool(scan(duplexSheet, {"--format", "grid"}));
        t.env["LC_ALL"] = c.locale;
        const auto r = t.run();
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_NE(r.out.find("Sheet 1"), std::string::npos);
        EXPECT_NE(r.out.find(c.row), std::string::npos) << c.locale << "\n" << r.out;
        EXPECT_NE(r.out.find("Batch done: 1 sheet(s) read of 1 read(s) started, stopped"), std::string::npos)
            << r.out;
    }
}

TEST_F(ZebreaderScan, SvgWithoutAFolderWritesIntoTheCurrentOne)
{
    auto t = tool(scan(twoSheets, {"--format", "svg"}));
    t.cwd = dir.path();
    const auto r = t.run();
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "sheet-0001.svg\nsheet-0002.svg\n");
    EXPECT_EQ(xmlProblem(readFile(dir.file("sheet-0002.svg"))), "");
}

TEST_F(ZebreaderScan, CtrlCEndsAWaitForAHandFedSheetCleanly)
{
    // Two sheets, five asked for, fed by hand: the third read waits until Ctrl-C.
    const auto trace = dir.file("trace.txt");
    auto t = tool(scan(twoSheets, {"--no-feeder", "--sheets", "5", "--trace", trace}));
    bool sent = false;
    t.whileRunning = [&](const std::string&, pid_t pid) {
        if (!sent && count(readFile(trace), " > 11 ") == 3) { // the third sheet's start (DC1)
            kill(pid, SIGINT);
            sent = true;
        }
    };
    const auto r = t.run();
    EXPECT_TRUE(sent);
    EXPECT_EQ(r.status, 0) << r.err;
    // Three reads were started; the third was stopped before a sheet came.
    EXPECT_EQ(r.outLines().back(), R"({"summary":{"result":true,"sheets":3,"read":2,"cancelScan":true}})");
    // The port was closed the orderly way: the feeder stopped (SO) at the end.
    EXPECT_NE(readFile(trace).find(" > 0E "), std::string::npos);
}

} // namespace
} // namespace zebreader81::test
