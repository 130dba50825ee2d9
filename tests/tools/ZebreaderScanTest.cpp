// zebreader against scanners on devices of their own: the simulator of every family, a network
// serial server, a person at a desk feeding sheets by hand. What is read, what went over the wire, what the
// person is told.
#include "tools/ToolRun.h"

#include "sim/Ser2net.h"
#include "sim/Simulators.h"
#include "sim/ezdata/EZDataSimulator.h"
#include "sim/scantron/ScanMarkSimulator.h"

#include <csignal>

namespace zebreader81::test {
namespace {

using nlohmann::json;

int count(const std::string& text, const std::string& what)
{
    int n = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++n;
    return n;
}

TEST_F(ZebreaderTool, AHandFedWaitSaysSoAndCtrlCEndsItCleanly)
{
    // Two sheets, five asked for, fed by hand: the third read waits until Ctrl-C.
    dir.write("two.txt", "sheet\n|X|\nsheet\n|.X|\n");
    auto t =
        tool("zebreader scan --model 2 --simulate --timeout 1 --sleep 1 --sheets-file two.txt --no-feeder "
             "--sheets 5 --trace trace.txt 2>tty");
    bool sent = false;
    t.whileRunning = [&](const std::string&, pid_t pid) {
        if (!sent && count(readFile(dir.file("trace.txt")), " > 11 ") == 3) // the third sheet's start (DC1)
            sent = kill(pid, SIGINT) == 0;
    };
    const auto r = t.run();
    EXPECT_TRUE(sent);
    EXPECT_EQ(r.status, 0) << r.err;
    // Three reads were started; the third was stopped before a sheet came.
    EXPECT_EQ(lines(r.out).back(), R"({"summary":{"result":true,"sheets":3,"read":2,"cancelScan":true}})");
    for (int sheet = 1; sheet <= 3; ++sheet)
        expectText(r.err, {"waiting for sheet " + std::to_string(sheet) + ": feed a sheet, Ctrl-C to stop"});
    expectText(r.err, {"!waiting for sheet 4"});
    // The port was closed the orderly way: the feeder stopped (SO) at the end.
    EXPECT_NE(readFile(dir.file("trace.txt")).find(" > 0E "), std::string::npos);
}

class ZebreaderFamily : public ZebreaderTool, public ::testing::WithParamInterface<int> {};

TEST_P(ZebreaderFamily, ReadsTheSampleSheetsMarkForMark)
{
    const int model = GetParam();
    const auto r =
        run("zebreader scan --model " + std::to_string(model) + " --simulate --sleep 1 --timeout 2");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    const auto lines = jsonLines(r.out);
    const auto samples = sim::sampleSheets(model);
    ASSERT_EQ(lines.size(), samples.size() + 1);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto& side1 = lines[i]["side1"];
        ASSERT_EQ(side1["lbound"], json::parse("[1,1]"));
        int compared = 0;
        for (std::size_t row = 0; row < samples[i].side1.size(); ++row)
            for (std::size_t col = 0; col < samples[i].side1[row].size(); ++col) {
                const bool marked = samples[i].side1[row][col] > 0;
                ASSERT_EQ(side1["values"][row][col].get<int>() > 0, marked)
                    << "sheet " << i + 1 << " row " << row + 1 << " column " << col + 1;
                compared += marked;
            }
        EXPECT_GT(compared, 50);
    }
    EXPECT_EQ(lines.back()["summary"],
              json::parse(R"({"result":true,"sheets":3,"read":3,"cancelScan":true})"));
}

// OpScan, ScanMark, 8000 series, PDI, EZData, the ACP-100 that speaks EZData, and the
// Chatsworth family (the OMR1100, and the ALS AccelScan whose cards wait for an eject).
INSTANTIATE_TEST_SUITE_P(Simulated, ZebreaderFamily, ::testing::Values(2, 14, 16, 24, 23, 37, 20, 22));

} // namespace
} // namespace zebreader81::test
