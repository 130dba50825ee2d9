// zebreader against the simulator of every family with a wire protocol: the sample sheets
// read back mark for mark; the EZData port probe and firmware query.
#include "tools/ToolFixture.h"

#include "sim/Simulators.h"
#include "sim/ezdata/EZDataSimulator.h"

namespace zebreader81::test {
namespace {

using nlohmann::json;

class ZebreaderFamily : public ZebreaderTool, public ::testing::WithParamInterface<int> {};

TEST_P(ZebreaderFamily, ReadsTheSampleSheetsMarkForMark)
{
    const int model = GetParam();
    const auto r =
        run({"scan", "--model", std::to_string(model), "--simulate", "--sleep", "1", "--timeout", "2"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    const auto lines = jsonLines(r.out);
    const auto samples = sim::sampleSheets(model);
    ASSERT_EQ(lines.size(), samples.size() + 1);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto& side1 = lines[i]["side1"];
        ASSERT_FALSE(side1.is_null());
        ASSERT_EQ(side1["lbound"], json::parse("[1,1]"));
        const auto& values = side1["values"];
        int compared = 0;
        for (std::size_t row = 0; row < samples[i].side1.size(); ++row)
            for (std::size_t col = 0; col < samples[i].side1[row].size(); ++col) {
                const bool marked = samples[i].side1[row][col] > 0;
                ASSERT_EQ(values[row][col].get<int>() > 0, marked)
                    << "model " << model << " sheet " << i + 1 << " row " << row + 1 << " column " << col + 1;
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

// Every port leads nowhere except `port`, which leads to the simulator.
std::map<std::string, std::string> onlyPort(int port, const std::string& path)
{
    std::map<std::string, std::string> env;
    for (int p = 1; p <= 16; ++p)
        env["ZEBREADER_COM" + std::to_string(p)] = p == port ? path : "/nonexistent/tty" + std::to_string(p);
    return env;
}

TEST_F(ZebreaderTool, LocateFindsTheEZDataScannerAndFirmwareAsksIt)
{
    sim::EZDataSimulator scanner;
    scanner.setFirmware("  EZData 2.14  ");
    const auto env = onlyPort(5, scanner.path());

    auto locate = tool({"locate", "--model", "23"});
    locate.env.insert(env.begin(), env.end());
    auto r = locate.run();
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "5\n");

    auto firmware = tool({"firmware", "--model", "Scantron EZData", "--port", "5"});
    firmware.env.insert(env.begin(), env.end());
    r = firmware.run();
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "EZData 2.14\n");

    r = run({"firmware", "--model", "23", "--device", scanner.path()});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "EZData 2.14\n");
    EXPECT_EQ(scanner.words(), (std::vector<std::string>{"probe", "V", "V"}));
}

TEST_F(ZebreaderTool, LocateExitsOneWhenNoPortAnswers)
{
    auto locate = tool({"locate", "--model", "23", "--start-port", "3"});
    locate.env = onlyPort(0, "");
    locate.env["ZEBREADER_REGISTRY"] = dir.file("registry");
    const auto r = locate.run();
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_NE(r.err.find("no Scantron EZData answered on ports 3, 1 to 16"), std::string::npos) << r.err;
    // A model without the probe is not searched for (a usage error, see the desk tests).
    EXPECT_EQ(run({"locate", "--model", "2"}).status, 2);
}

TEST_F(ZebreaderTool, LocateAndFirmwareReachTheBuiltInSimulator)
{
    for (const char* chatsworth : {"20", "22"}) {
        auto r = run({"locate", "--model", chatsworth, "--simulate", "--start-port", "4"});
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.out, "4\n");
        r = run({"firmware", "--model", chatsworth, "--simulate"});
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.out, "OMR-1100 - Version 1.04\n");
    }
    auto r = run({"locate", "--model", "37", "--simulate", "--start-port", "9"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "9\n");
    r = run({"firmware", "--model", "23", "--simulate"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_FALSE(r.out.empty());
}

} // namespace
} // namespace zebreader81::test
