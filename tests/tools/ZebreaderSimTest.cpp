// zebreader-sim as a host-application developer runs it: start it, point a reader at the
// device it prints, stop it with Ctrl-C.
#include "tools/ToolFixture.h"

#include <csignal>

namespace zebreader81::test {
namespace {

using nlohmann::json;

class ZebreaderSim : public ZebreaderTool {
protected:
    ToolRun simulator(std::vector<std::string> args) const
    {
        ToolRun run;
        run.binary = ZEBREADER_SIM_TOOL;
        run.args = std::move(args);
        return run;
    }
};

TEST_F(ZebreaderSim, ServesItsSheetsToAReaderUntilInterrupted)
{
    const auto sheets = dir.write("card.txt", "sheet\nside 1\n|X.....  .....X|\n|..X...|\n");
    auto sim = simulator({"pdi", "--sheets", sheets});
    ToolResult scan;
    bool scanned = false;
    sim.whileRunning = [&](const std::string& out, pid_t pid) {
        const auto newline = out.find('\n');
        if (scanned || newline == std::string::npos)
            return;
        scanned = true;
        scan = run({"scan", "--model", "24", "--device", out.substr(0, newline), "--sheets", "1", "--sleep",
                    "1", "--timeout", "2"});
        kill(pid, SIGINT);
    };
    const auto r = sim.run();
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out.rfind("/dev/pts/", 0), 0u) << r.out;
    EXPECT_NE(r.err.find("zebreader-sim: stopped"), std::string::npos) << r.err;

    ASSERT_TRUE(scanned);
    ASSERT_EQ(scan.status, 0) << scan.err;
    const auto lines = jsonLines(scan.out);
    ASSERT_EQ(lines.size(), 2u);
    const auto& values = lines[0]["side1"]["values"];
    EXPECT_GT(values[0][0].get<int>(), 0);
    EXPECT_EQ(values[0][1], 0);
    EXPECT_GT(values[0][11].get<int>(), 0);
    EXPECT_GT(values[1][2].get<int>(), 0);
}

TEST_F(ZebreaderSim, RefusesAnUnknownFamilyAndABadSheetFile)
{
    auto r = simulator({"sekonic"}).run();
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("unknown model \"sekonic\""), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("opscan"), std::string::npos) << r.err;
    r = simulator({"7"}).run();
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("\"7\" is not a model of a simulated family"), std::string::npos) << r.err;
    const auto bad = dir.write("bad.txt", "sheet\n|..Q|\n");
    r = simulator({"opscan", "--sheets", bad}).run();
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("bad.txt:2: 'Q' is not a mark"), std::string::npos) << r.err;
}

} // namespace
} // namespace zebreader81::test
