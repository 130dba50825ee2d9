// zebreader at a desk: a scanner on its own device (a simulator the tool does not start),
// saved settings, a person at a terminal. What the tool refuses before it starts, what it
// says when something fails, and its exit status.
#include "tools/ToolFixture.h"

#include "sim/SheetFile.h"
#include "sim/Simulators.h"
#include "sim/scantron/ScanMarkSimulator.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace zebreader81::test {
namespace {

using nlohmann::json;

bool has(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

struct UsageCase {
    std::vector<std::string> args;
    std::string says; // a part of the message on stderr
};

class ZebreaderDesk : public ZebreaderTool {
protected:
    void SetUp() override
    {
        if (!sim::hasSimulator(2) || !sim::hasSimulator(14))
            GTEST_SKIP() << "no OpScan or ScanMark simulator in this build";
    }
    ToolRun simulatorProgram(std::vector<std::string> args) const
    {
        ToolRun run;
        run.binary = ZEBREADER_SIM_TOOL;
        run.args = std::move(args);
        return run;
    }
    // Every case is refused with exit 2 and its message, before any device is touched.
    void expectUsageErrors(const std::vector<UsageCase>& cases) const
    {
        for (const auto& c : cases) {
            const auto r = run(c.args);
            std::string line;
            for (const auto& a : c.args)
                line += a + " ";
            EXPECT_EQ(r.status, 2) << line << "\n" << r.err;
            EXPECT_TRUE(has(r.err, c.says)) << line << "\n" << r.err;
            EXPECT_EQ(r.out, "") << line;
        }
    }
};

TEST_F(ZebreaderDesk, AScanmarkWithoutAFormSizeIsAUsageErrorNamingSide1)
{
    sim::ScanMarkSimulator scanner(14, sim::sampleSheets(14));
    const std::string pty = scanner.path();
    expectUsageErrors({
        {{"scan", "--model", "14", "--device", pty}, "give its size with --side1 ROWS:COLS"},
        {{"scan", "--model", "Scantron 8000", "--device", pty}, "this form is 0 x 0"},
        {{"scan", "--model", "14", "--device", pty, "--side1", "0:0"}, "--side1: \"0:0\" is not a form size"},
        {{"scan", "--model", "14", "--device", pty, "--side1", "53:49"}, "columns from 1 to 48"},
        {{"scan", "--model", "14", "--device", pty, "--side1", "53:40", "--mode", "window"}, "--window"},
    });
    EXPECT_TRUE(scanner.commands().empty());
}

TEST_F(ZebreaderDesk, AScanmarkReadsWithAFormSizeSavedInTheSettings)
{
    sim::ScanMarkSimulator scanner(14, sim::sampleSheets(14));
    ASSERT_EQ(run({"settings", "save", "--settings", "Software\\Desk", "--model", "14", "--side1", "53:40",
                   "--timeout", "2", "--sleep", "1"})
                  .status,
              0);
    const auto r = run({"scan", "--settings", "Software\\Desk", "--device", scanner.path()});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto lines = jsonLines(r.out);
    ASSERT_EQ(lines.size(), 4u) << r.out;
    EXPECT_EQ(lines[0]["side1"]["ubound"], json::parse("[53,40]"));
    EXPECT_EQ(lines[3]["summary"]["read"], 3);
}

TEST_F(ZebreaderDesk, ASheetTheScannerRefusedIsNeverPrinted)
{
    sim::ScanMarkSimulator scanner(14, sim::sampleSheets(14));
    scanner.rejectCommand("READ");
    const auto r = run({"scan", "--model", "14", "--device", scanner.path(), "--side1", "53:40", "--timeout",
                        "2", "--sleep", "1"});
    EXPECT_EQ(r.status, 1);
    const auto lines = jsonLines(r.out);
    ASSERT_EQ(lines.size(), 1u) << r.out;
    EXPECT_EQ(lines[0]["summary"]["read"], 0);
    EXPECT_TRUE(has(r.err, "the scanner refused to read sheet 1")) << r.err;
}

TEST_F(ZebreaderDesk, TheReadmeTwoTerminalExampleReadsEverySampleSheet)
{
    // The simulator program says how to read its sheets; that command line works as given.
    auto simulator = simulatorProgram({"opscan"});
    ToolResult scan;
    bool scanned = false;
    std::string command;
    simulator.whileRunning = [&](const std::string& out, pid_t pid) {
        if (scanned || out.find('\n') == std::string::npos)
            return;
        scanned = true;
        // The suggestion is on stderr, which the runner only hands over at the end: rebuild it
        // the way the program prints it.
        const auto sheets = sim::sampleSheets(2);
        std::vector<std::string> args{"scan", "--model", "2", "--device", out.substr(0, out.find('\n'))};
        std::stringstream flags(sim::readerFlags(sim::measureSheets(sheets)));
        for (std::string f; flags >> f;)
            args.push_back(f);
        for (const auto& a : args)
            command += a + " ";
        args.insert(args.end(), {"--sheets", "3", "--timeout", "2", "--sleep", "1"});
        scan = run(args);
        kill(pid, SIGINT);
    };
    const auto r = simulator.run();
    ASSERT_TRUE(scanned);
    EXPECT_TRUE(has(r.err, "Read them with:\n  zebreader " + command.substr(0, command.size() - 1) + "\n"))
        << r.err << "\n"
        << command;
    ASSERT_EQ(scan.status, 0) << scan.err;
    const auto lines = jsonLines(scan.out);
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_FALSE(lines[1]["side2"].is_null()); // the two-sided sample
    EXPECT_EQ(lines[1]["barcodes"]["values"].size(), 1u);
}

TEST_F(ZebreaderDesk, ASideTwoRowOnASingleSidedSetUpNamesTheOptionsOnALineOfItsOwn)
{
    const auto sheets = dir.write("duplex.txt", "sheet\n|X|\nsheet\n|X|\nside 2\n|.X|\n");
    auto t = tool({"scan", "--model", "2", "--simulate", "--sheets-file", sheets, "--no-duplex", "--timeout",
                   "1", "--sleep", "1"});
    t.stderrTerminal = true;
    const auto r = t.run();
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(jsonLines(r.out).size(), 2u); // the first sheet and the summary
    std::smatch m;
    ASSERT_TRUE(std::regex_search(r.err, m, std::regex(R"((^|\n)\{"error":\{"number":9,[^\n]*\n)"))) << r.err;
    EXPECT_TRUE(has(m.str(),
                    R"("hint":"the scanner sent side 2 of a sheet, but the set-up reads side 1 only: )"
                    R"(give --duplex --duplex-form to read both sides")"))
        << m.str();
}

TEST_F(ZebreaderDesk, DeviceErrorsNameTheDeviceAndTheReasonOnce)
{
    std::filesystem::create_directory(dir.file("folder"));
    const struct {
        std::string device, reason;
    } cases[] = {
        {dir.file("missing"), "No such file or directory"},
        {"/dev/null", "not a serial device"},
        {dir.write("file", "x"), "a regular file, not a serial device"},
        {dir.file("folder"), "Is a directory"},
    };
    for (const auto& c : cases) {
        const auto r = run({"scan", "--model", "2", "--device", c.device, "--format", "csv"});
        EXPECT_EQ(r.status, 1) << c.device;
        ASSERT_EQ(r.errLines().size(), 1u) << r.err; // nothing about closing a port never opened
        EXPECT_EQ(r.errLines()[0], "zebreader: error 8002 in basRead.ReaderInit: Invalid port number: " +
                                       c.device + ": " + c.reason);
    }
}

TEST_F(ZebreaderDesk, NoResponseReportsSayWhichPort)
{
    auto scanner = sim::makeSimulator(2, {});
    scanner->setSilent(true);
    auto r = run({"scan", "--model", "2", "--port", "4", "--device", scanner->path(), "--timeout", "1",
                  "--sleep", "1", "--format", "csv"});
    EXPECT_EQ(r.status, 1);
    ASSERT_FALSE(r.errLines().empty());
    EXPECT_TRUE(has(r.errLines()[0], "(No Response)")) << r.err;
    EXPECT_TRUE(has(r.errLines()[0], "[COM4, " + scanner->path() + "]")) << r.err;
    r = run({"scan", "--model", "2", "--port", "4", "--device", scanner->path(), "--timeout", "1", "--sleep",
             "1"});
    const auto error = json::parse(r.errLines().at(0));
    EXPECT_EQ(error["error"]["port"], 4);
    EXPECT_EQ(error["error"]["device"], scanner->path());
}

TEST_F(ZebreaderDesk, AHandFedWaitSaysSoOnTheTerminal)
{
    const auto sheets = dir.write("two.txt", "sheet\n|X|\nsheet\n|.X|\n");
    const auto trace = dir.file("trace.txt");
    auto t = tool({"scan", "--model", "2", "--simulate", "--sheets-file", sheets, "--no-feeder", "--sheets",
                   "5", "--timeout", "1", "--sleep", "1", "--trace", trace});
    t.stderrTerminal = true;
    bool sent = false;
    t.whileRunning = [&](const std::string&, pid_t pid) {
        const std::string text = readFile(trace);
        int starts = 0;
        for (auto at = text.find(" > 11 "); at != std::string::npos; at = text.find(" > 11 ", at + 1))
            ++starts;
        if (!sent && starts == 3) {
            kill(pid, SIGINT);
            sent = true;
        }
    };
    const auto r = t.run();
    EXPECT_TRUE(sent);
    EXPECT_EQ(r.status, 0) << r.err;
    for (int sheet = 1; sheet <= 3; ++sheet)
        EXPECT_TRUE(
            has(r.err, "waiting for sheet " + std::to_string(sheet) + ": feed a sheet, Ctrl-C to stop"))
            << r.err;
    EXPECT_FALSE(has(r.err, "waiting for sheet 4"));
}

TEST_F(ZebreaderDesk, SettingsMustBeStoredToBeLoaded)
{
    expectUsageErrors({
        {{"scan", "--settings", "Software\\Nothing"},
         "no settings are stored under Software\\Nothing (hkcu)"},
        {{"settings", "load", "--settings", "Software\\Nothing"}, "no settings are stored under"},
    });
}

TEST_F(ZebreaderDesk, SettingsSaveChangesOnlyTheValuesGiven)
{
    const std::string key = "Software\\Site\\Desk 2";
    ASSERT_EQ(run({"settings", "save", "--settings", key, "--model", "24", "--port", "3", "--timeout", "20",
                   "--no-feeder"})
                  .status,
              0);
    auto r = run({"settings", "save", "--settings", key, "--timeout", "30"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(has(r.err, "saved the settings of Peripheral Dynamics Inc. VMR138")) << r.err;
    r = run({"settings", "load", "--settings", key, "--json"});
    const auto values = json::parse(r.out);
    EXPECT_EQ(values["ScannerType"], "24");
    EXPECT_EQ(values["ScannerPort"], "3");
    EXPECT_EQ(values["TimeOut"], "30");
    EXPECT_EQ(values["Feeder"], "False");
}

TEST_F(ZebreaderDesk, SettingsSaveThatDidNotReachTheStoreFailsWithTheReason)
{
    const auto blocker = dir.write("blocker", "a file where the settings folder should be");
    const std::string damaged = "this is not a registry file\n";
    const struct {
        std::string registry, fileText, reason;
    } cases[] = {
        {blocker + "/registry", "", "the folder " + blocker + "/registry does not exist and cannot be made"},
        {dir.file("damaged"), damaged, "HKEY_CURRENT_USER.reg is damaged and was left as it is"},
    };
    for (const auto& c : cases) {
        if (!c.fileText.empty()) {
            std::filesystem::create_directories(c.registry);
            std::ofstream(c.registry + "/HKEY_CURRENT_USER.reg") << c.fileText;
        }
        auto t = tool({"settings", "save", "--model", "2", "--timeout", "20"});
        t.env["ZEBREADER_REGISTRY"] = c.registry;
        const auto r = t.run();
        EXPECT_EQ(r.status, 1) << c.registry;
        EXPECT_TRUE(
            has(r.err, "zebreader: the settings were not saved under Software\\ZEBReader81\\zebreader: "))
            << r.err;
        EXPECT_TRUE(has(r.err, c.reason)) << r.err;
        EXPECT_FALSE(has(r.err, "saved the settings")) << r.err;
        if (!c.fileText.empty()) {
            EXPECT_EQ(readFile(c.registry + "/HKEY_CURRENT_USER.reg"), c.fileText);
        }
    }
}

TEST_F(ZebreaderDesk, ValuesOutsideTheirRangeAreUsageErrors)
{
    expectUsageErrors({
        {{"scan", "--sheets", "-5"}, "--sheets -5"},
        {{"scan", "--port", "0"}, "--port"},
        {{"scan", "--port", "17"}, "--port"},
        {{"settings", "save", "--port", "17"}, "--port"},
        {{"scan", "--timeout", "0"}, "--timeout"},
        {{"scan", "--timeout", "601"}, "--timeout"},
        {{"scan", "--model", "2", "--threshold", "16"},
         "--threshold 16 is outside the range of the Scantron "
         "OpScan 2: 0 to 15"},
        {{"scan", "--model", "24", "--threshold", "191"}, "192 to 254"},
        {{"scan", "--model", "2", "--side1", "0:0"}, "is not a form size"},
        {{"firmware", "--model", "23", "--port", "17"}, "--port"},
        {{"locate", "--model", "23", "--start-port", "17"}, "--start-port"},
        {{"locate", "--model", "2"},
         "the Scantron OpScan 2 does not answer the port search; models that do: "},
        {{"firmware", "--model", "24"}, "does not answer the firmware query"},
    });
}

TEST_F(ZebreaderDesk, PortsMapStoresAnAbsolutePath)
{
    auto t = tool({"ports", "map", "2", "tty-desk"});
    t.cwd = dir.path();
    ASSERT_EQ(t.run().status, 0);
    const auto ports = json::parse(run({"ports", "--json"}).out)["ports"];
    EXPECT_EQ(ports[1]["path"], dir.file("tty-desk"));
}

} // namespace
} // namespace zebreader81::test
