// zebreader settings and ports: the settings store from the command line.
#include "tools/ToolFixture.h"

#include "sim/Simulators.h"

namespace zebreader81::test {
namespace {

using nlohmann::json;

const char* const invalidPort0 =
    R"({"error":{"number":8002,"kind":2,"description":"An error has occurred attempting to initialize the )"
    R"(selected COM port: 0. Please verify the COM port number and settings and then retry the operation.",)"
    R"("location":"basRead.ReaderInit","title":"Invalid Port Number"}})";

TEST_F(ZebreaderTool, SavedSettingsAreWhatScanLoadsWithSettings)
{
    auto r = run({"settings", "save", "--settings", "Software\\Site\\Desk 1", "--model", "2", "--port", "9",
                  "--timeout", "3", "--no-feeder"});
    ASSERT_EQ(r.status, 0) << r.err;
    r = run({"settings", "load", "--settings", "Software\\Site\\Desk 1", "--json"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto values = json::parse(r.out);
    EXPECT_EQ(values["ScannerType"], "2");
    EXPECT_EQ(values["ScannerPort"], "9");
    EXPECT_EQ(values["TimeOut"], "3");
    EXPECT_EQ(values["Feeder"], "False");
    EXPECT_EQ(values["ScannerBaud"], "38400"); // the model's default, kept
    // The saved port 9 is what the scan uses.
    auto scan = tool({"scan", "--settings", "Software\\Site\\Desk 1", "--format", "csv"});
    scan.env["ZEBREADER_COM9"] = dir.file("no-such-tty");
    r = scan.run();
    EXPECT_EQ(r.status, 1);
    ASSERT_EQ(r.errLines().size(), 1u) << r.err;
    EXPECT_NE(r.errLines().front().find("Invalid port number: " + dir.file("no-such-tty")), std::string::npos)
        << r.err;
}

TEST_F(ZebreaderTool, ASimulatedScanReadsOnTheSavedPort)
{
    if (!sim::hasSimulator(2))
        GTEST_SKIP() << "no OpScan simulator in this build";
    ASSERT_EQ(run({"settings", "save", "--settings", "Software\\Site", "--model", "2", "--port", "7",
                   "--sleep", "1", "--timeout", "1"})
                  .status,
              0);
    const auto r = run({"scan", "--settings", "Software\\Site", "--simulate"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto lines = jsonLines(r.out);
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[3]["summary"]["result"], true);
}

TEST_F(ZebreaderTool, ImportedRegFileSettingsAreLoadedAndExportedBack)
{
    const auto reg = dir.write("site.reg", "Windows Registry Editor Version 5.00\r\n\r\n"
                                           "[HKEY_CURRENT_USER\\Software\\Imported]\r\n"
                                           "\"ScannerType\"=\"24\"\r\n"
                                           "\"ScannerPort\"=\"0\"\r\n"
                                           "\"Duplex\"=\"True\"\r\n"
                                           "\"ScannerParity\"=\"E\"\r\n\r\n");
    auto r = run({"settings", "import", reg});
    ASSERT_EQ(r.status, 0) << r.err;
    r = run({"settings", "show", "--settings", "Software\\Imported", "--json"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(json::parse(r.out),
              json::parse(R"({"ScannerType":"24","ScannerPort":"0","Duplex":"True","ScannerParity":"E"})"));
    r = run({"settings", "load", "--settings", "Software\\Imported", "--json"});
    const auto values = json::parse(r.out);
    EXPECT_EQ(values["ScannerType"], "24");
    EXPECT_EQ(values["Duplex"], "True");
    EXPECT_EQ(values["SleepTime"], "50"); // missing: the default
    r = run({"scan", "--settings", "Software\\Imported"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.errLines().front(), invalidPort0);

    const auto exported = dir.file("out.reg");
    r = run({"settings", "export", "--settings", "Software\\Imported", "--utf8", exported});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto text = readFile(exported);
    EXPECT_EQ(text.rfind("Windows Registry Editor Version 5.00", 0), 0u) << text;
    EXPECT_NE(text.find("[HKEY_CURRENT_USER\\Software\\Imported]"), std::string::npos) << text;
    EXPECT_NE(text.find("\"ScannerType\"=\"24\""), std::string::npos) << text;
}

TEST_F(ZebreaderTool, PortsMapStoresAMappingThatTheListShows)
{
    auto r = run({"ports", "map", "3", "/dev/ttyUSB-desk"});
    ASSERT_EQ(r.status, 0) << r.err;
    r = run({"ports", "--json"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto ports = json::parse(r.out)["ports"];
    ASSERT_EQ(ports.size(), 16u);
    EXPECT_EQ(ports[2],
              json::parse(R"({"port":3,"path":"/dev/ttyUSB-desk","from":"stored","present":false})"));
    EXPECT_EQ(ports[3]["from"], "default");
    EXPECT_EQ(run({"ports", "map", "17", "/dev/x"}).status, 2);
}

} // namespace
} // namespace zebreader81::test
