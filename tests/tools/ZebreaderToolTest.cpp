// zebreader as a user runs it: the catalogue commands, usage errors and error lines.
#include "tools/ToolFixture.h"

#include "sim/Simulators.h"

#include <csignal>

namespace zebreader81::test {
namespace {

using nlohmann::json;

TEST_F(ZebreaderTool, ModelsJsonListsAllFortyTwoModels)
{
    const auto r = run({"models", "--json"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto list = json::parse(r.out);
    ASSERT_EQ(list.size(), 42u);
    for (int t = 0; t <= 41; ++t)
        EXPECT_EQ(list[static_cast<std::size_t>(t)]["number"], t);
    EXPECT_EQ(list[2],
              json::parse(R"({"number":2,"name":"Scantron OpScan 2","family":"OpScan","interface":"Serial",)"
                          R"("reads":true,"simulated":)" +
                          std::string(sim::hasSimulator(2) ? "true" : "false") + R"(,"marks":"0-15"})"));
    EXPECT_EQ(list[24]["marks"], "0 or threshold+1");
    EXPECT_EQ(list[37]["name"], "Chatsworth Data ACP-100");
    EXPECT_EQ(list[37]["family"], list[23]["family"]); // served by the EZData driver
    EXPECT_EQ(list[30]["interface"], "USB");
    EXPECT_EQ(list[1]["reads"], false);
    for (int chatsworth : {20, 21, 22, 35, 41})
        EXPECT_EQ(list[static_cast<std::size_t>(chatsworth)]["reads"], true) << chatsworth;
}

TEST_F(ZebreaderTool, ProfileTakesANumberOrADisplayNameInAnyCase)
{
    const auto byNumber = run({"profile", "37", "--json"});
    const auto byName = run({"profile", "chatsworth data ACP-100", "--json"});
    ASSERT_EQ(byNumber.status, 0) << byNumber.err;
    EXPECT_EQ(byName.out, byNumber.out);
    const auto p = json::parse(byNumber.out);
    EXPECT_EQ(p["number"], 37);
    EXPECT_EQ(p["name"], "Chatsworth Data ACP-100");
    EXPECT_TRUE(p.contains("RecognitionThresholdMaximum"));
}

TEST_F(ZebreaderTool, UsageErrorsExitTwoAndSayWhatIsWrong)
{
    auto r = run({"profile", "Scantron OpScan 99"});
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("unknown model \"Scantron OpScan 99\""), std::string::npos) << r.err;
    r = run({"scan", "--model", "42"});
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("model 42 is out of range"), std::string::npos) << r.err;
    r = run({"scan", "--format", "xml"});
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("--format"), std::string::npos) << r.err;
    r = run({"scan", "--reject", "2,x"});
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("--reject: \"x\" is not a sheet number"), std::string::npos) << r.err;
    r = run({"scan", "--simulate", "--device", "/dev/null"});
    EXPECT_EQ(r.status, 2);
    r = run({"scan", "--model", "1", "--simulate"});
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("no simulator for model 1 (Apperson Advantage Link)"), std::string::npos) << r.err;
    r = run({"frobnicate"});
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(run({"--help"}).status, 0);
}

// A port number out of range can still come from imported settings.
class ZebreaderSavedPort : public ZebreaderTool {
protected:
    void SetUp() override
    {
        const auto reg = dir.write("port.reg", "Windows Registry Editor Version 5.00\r\n\r\n"
                                               "[HKEY_CURRENT_USER\\Software\\Port]\r\n"
                                               "\"ScannerType\"=\"2\"\r\n\"ScannerPort\"=\"0\"\r\n\r\n");
        ASSERT_EQ(run({"settings", "import", reg}).status, 0);
    }
};

TEST_F(ZebreaderSavedPort, AnInvalidPortIsReportedAsAJsonErrorLineAndExitsOne)
{
    const auto r = run({"scan", "--settings", "Software\\Port"});
    EXPECT_EQ(r.status, 1);
    const std::string expected =
        R"({"error":{"number":8002,"kind":2,"description":"An error has occurred attempting to initialize the )"
        R"(selected COM port: 0. Please verify the COM port number and settings and then retry the operation.",)"
        R"("location":"basRead.ReaderInit","title":"Invalid Port Number"}})";
    ASSERT_EQ(r.errLines().size(), 1u) << r.err;
    EXPECT_EQ(r.errLines().front(), expected);
    // The batch still ends with its summary; the failed start leaves CancelScan as it was.
    EXPECT_EQ(r.outLines().back(), R"({"summary":{"result":false,"sheets":0,"read":0,"cancelScan":false}})");
}

TEST_F(ZebreaderSavedPort, ErrorLinesAreReadableTextOnATerminalFormat)
{
    const auto r = run({"scan", "--settings", "Software\\Port", "--format", "csv"});
    EXPECT_EQ(r.status, 1);
    ASSERT_FALSE(r.errLines().empty());
    EXPECT_EQ(
        r.errLines().front(),
        "zebreader: error 8002 (Invalid Port Number) in basRead.ReaderInit: An error has occurred attempting "
        "to initialize the selected COM port: 0. Please verify the COM port number and settings and then "
        "retry the operation.");
}

TEST_F(ZebreaderTool, BothToolsTellTheirVersion)
{
    const auto r = run({"--version"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, std::string("zebreader ") + ZEBREADER_VERSION_TEXT + "\n");
    ToolRun simulator;
    simulator.binary = ZEBREADER_SIM_TOOL;
    simulator.args = {"--version"};
    EXPECT_EQ(simulator.run().out, std::string("zebreader-sim ") + ZEBREADER_VERSION_TEXT + "\n");
}

TEST_F(ZebreaderTool, BothToolsNameAModelTheSameWay)
{
    for (const std::string name : {"2", "scantron opscan 2", "opscan"}) {
        EXPECT_EQ(run({"profile", name, "--json"}).status, 0) << name;
        ToolRun simulator;
        simulator.binary = ZEBREADER_SIM_TOOL;
        simulator.args = {name};
        simulator.whileRunning = [](const std::string& out, pid_t pid) {
            if (out.find('\n') != std::string::npos)
                kill(pid, SIGINT);
        };
        const auto r = simulator.run();
        EXPECT_EQ(r.status, 0) << name << ": " << r.err;
        EXPECT_NE(r.err.find("zebreader scan --model 2 "), std::string::npos) << r.err;
    }
}

} // namespace
} // namespace zebreader81::test
