// zebreader and zebreader-sim as a user runs them, one command line after another in one
// settings store: what each prints and its exit status. Usage errors (2) print nothing on
// stdout and are refused before any device is opened (that would fail with 1).
#include "tools/ToolRun.h"

#include <filesystem>
#include <regex>

namespace zebreader81::test {
namespace {

struct CommandLine {
    std::string line;
    int status;
    std::vector<std::string> out = {}, err = {}; // see expectText
};

std::string summary(bool result, int sheets, int read, bool cancelScan)
{
    const auto b = [](bool v) { return v ? "true" : "false"; };
    return R"({"summary":{"result":)" + std::string(b(result)) + R"(,"sheets":)" + std::to_string(sheets) +
           R"(,"read":)" + std::to_string(read) + R"(,"cancelScan":)" + b(cancelScan) + "}}\n";
}

// One side of a sheet in json: a 150 x 48 form with `marks` in its top left corner.
std::string side(const std::vector<std::vector<int>>& marks)
{
    std::string out = R"({"lbound":[1,1],"ubound":[150,48],"values":[)";
    for (std::size_t r = 0; r < 150; ++r)
        for (std::size_t c = 0; c < 48; ++c)
            out += (c   ? ","
                    : r ? "],["
                        : "[") +
                   std::to_string(r < marks.size() && c < marks[r].size() ? marks[r][c] : 0);
    return out + "]]}";
}

std::string grid(const std::string& row1, const std::string& row2, const std::string& side2)
{
    return "Sheet 1  timing marks 2/1  barcodes: [4711]\n"
           "  Side 1: rows 1-150, columns 1-48 (shown up to the last mark)\n         \n    1 " +
           row1 + "\n    2 " + row2 +
           "\n  Side 2: rows 1-150, columns 1-48 (shown up to the last mark)\n       \n    1 " + side2 +
           "\nBatch done: 1 sheet(s) read of 1 read(s) started, stopped\n";
}

// "" when `doc` is a well-formed XML document (one root, nested tags, quoted attributes, known
// entities), else what is wrong first.
std::string xmlProblem(const std::string& doc)
{
    const std::regex tag(
        R"(<(/?)([\w:.-]+)((?:\s+[\w:.-]+=(?:"[^"]*"|'[^']*'))*)\s*(/?)>|<\?xml[^>]*\?>|<!--[\s\S]*?-->)");
    const std::regex badText(R"(<|&(?!(amp|lt|gt|quot|apos|#[0-9]+|#x[0-9a-fA-F]+);))");
    std::vector<std::string> open;
    int roots = 0;
    auto at = doc.cbegin();
    for (std::sregex_iterator i(doc.begin(), doc.end(), tag), end; i != end; at = (*i++)[0].second) {
        const auto& m = *i;
        const std::string text(at, m[0].first);
        if (open.empty() && text.find_first_not_of(" \t\r\n") != std::string::npos)
            return "text outside the root element: " + text;
        if (std::regex_search(text, badText) || std::regex_search(m[3].str(), badText))
            return "a stray < or unknown entity before or in " + m.str();
        if (m[2].length() == 0)
            continue; // a declaration or comment
        if (m[1].length() > 0 && (open.empty() || open.back() != m[2]))
            return m.str() + " does not match";
        if (m[1].length() > 0)
            open.pop_back();
        else if (open.empty() && ++roots > 1)
            return "more than one root element";
        else if (m[4].length() == 0)
            open.push_back(m[2]);
    }
    if (std::string(at, doc.cend()).find_first_not_of(" \t\r\n") != std::string::npos)
        return "text after the root element";
    return !open.empty() ? "<" + open.back() + "> is not closed" : roots == 1 ? "" : "no root element";
}

const std::string invalidPort0 =
    "An error has occurred attempting to initialize the selected COM port: 0. Please "
    "verify the COM port number and settings and then retry the operation.";

TEST_F(ZebreaderTool, CommandLines)
{
    const std::string version = ZEBREADER_VERSION_TEXT;
    const std::string sim = "zebreader scan --model 2 --simulate --timeout 1 --sleep 1 --sheets-file ";
    const std::string invalidPort = "=zebreader: error 8002 in basRead.ReaderInit: Invalid port number: ";
    const std::string duplex = "sheet\nbarcode 4711\nside 1\n|X.5|\n|..F|\nside 2\n|1|\n";
    dir.write("duplex.txt", duplex);
    dir.write("svg.txt", duplex + "barcode <&>\n");
    dir.write("csv.txt", duplex + "barcode 9,\"8\"\nsheet\n|X|\n");
    dir.write("two.txt", "sheet\n|X|\nsheet\n|.X|\n");
    dir.write("side2.txt", "sheet\n|X|\nsheet\n|X|\nside 2\n|.X|\n");
    dir.write("bad.txt", "sheet\n|..Q|\n");
    dir.write("file", "x");
    dir.write("blocker", "a file where the settings folder should be");
    std::filesystem::create_directories(dir.file("folder"));
    std::filesystem::create_directories(dir.file("damaged"));
    const std::string damaged = "this is not a registry file\n";
    dir.write("damaged/HKEY_CURRENT_USER.reg", damaged);
    dir.write("site.reg",
              "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\Software\\Imported]\r\n"
              "\"ScannerType\"=\"24\"\r\n\"ScannerPort\"=\"0\"\r\n\"Duplex\"=\"True\"\r\n"
              "\"ScannerParity\"=\"E\"\r\n\r\n");

    const CommandLine lines[] = {
        // The catalogue; both tools name a model the same way.
        {"zebreader --version", 0, {"=zebreader " + version + "\n"}},
        {"zebreader-sim --version", 0, {"=zebreader-sim " + version + "\n"}},
        {"zebreader --help", 0, {"Usage:"}},
        {"zebreader models --json",
         0,
         {R"({"number":1,"name":"Apperson Advantage Link","family":"Apperson","interface":"Serial","reads":false,)",
          R"({"number":2,"name":"Scantron OpScan 2","family":"OpScan","interface":"Serial","reads":true,)"
          R"("simulated":true,"marks":"0-15"})",
          R"({"number":23,"name":"Scantron EZData","family":"EZData",)",
          R"("name":"Peripheral Dynamics Inc. VMR138","family":"PDI","interface":"Serial","reads":true,)"
          R"("simulated":true,"marks":"0 or threshold+1"})",
          R"x({"number":30,"name":"Sekonic SR2300 (USB)","family":"Sekonic USB","interface":"USB",)x",
          R"({"number":37,"name":"Chatsworth Data ACP-100","family":"EZData",)"}},
        {"zebreader profile 37 --json",
         0,
         {R"({"number":37,"name":"Chatsworth Data ACP-100",)", "\"RecognitionThresholdMaximum\":"}},
        {"zebreader profile 'chatsworth data ACP-100' --json",
         0,
         {R"({"number":37,"name":"Chatsworth Data ACP-100",)"}},
        {"zebreader profile 2 --json", 0, {R"({"number":2,)"}},
        {"zebreader profile 'scantron opscan 2' --json", 0, {R"({"number":2,)"}},
        {"zebreader profile opscan --json", 0, {R"({"number":2,)"}},
        {"zebreader-sim 2 ^C", 0, {"~^/dev/pts/"}, {"zebreader scan --model 2 ", "zebreader-sim: stopped"}},
        {"zebreader-sim 'scantron opscan 2' ^C", 0, {}, {"zebreader scan --model 2 "}},
        {"zebreader-sim opscan ^C", 0, {}, {"zebreader scan --model 2 "}},

        // Usage errors.
        {"zebreader profile 'Scantron OpScan 99'", 2, {}, {R"(unknown model "Scantron OpScan 99")"}},
        {"zebreader scan --model 42", 2, {}, {"model 42 is out of range"}},
        {"zebreader scan --format xml", 2, {}, {"--format"}},
        {"zebreader scan --reject 2,x", 2, {}, {R"(--reject: "x" is not a sheet number)"}},
        {"zebreader scan --simulate --device /dev/null",
         2,
         {},
         {"--simulate and --device exclude each other"}},
        {"zebreader scan --model 1 --simulate",
         2,
         {},
         {"no simulator for model 1 (Apperson Advantage Link)"}},
        {"zebreader frobnicate", 2},
        {"zebreader scan --sheets -5", 2, {}, {"--sheets -5"}},
        {"zebreader scan --port 0", 2, {}, {"--port"}},
        {"zebreader scan --port 17", 2, {}, {"--port"}},
        {"zebreader settings save --port 17", 2, {}, {"--port"}},
        {"zebreader scan --timeout 0", 2, {}, {"--timeout"}},
        {"zebreader scan --timeout 601", 2, {}, {"--timeout"}},
        {"zebreader scan --model 2 --threshold 16",
         2,
         {},
         {"--threshold 16 is outside the range of the Scantron OpScan 2: 0 to 15"}},
        {"zebreader scan --model 24 --threshold 191", 2, {}, {"192 to 254"}},
        {"zebreader scan --model 2 --side1 0:0", 2, {}, {"is not a form size"}},
        {"zebreader firmware --model 23 --port 17", 2, {}, {"--port"}},
        {"zebreader locate --model 23 --start-port 17", 2, {}, {"--start-port"}},
        {"zebreader locate --model 2",
         2,
         {},
         {"the Scantron OpScan 2 does not answer the port search; models that do: "}},
        {"zebreader firmware --model 24", 2, {}, {"does not answer the firmware query"}},
        {"zebreader ports map 17 /dev/x", 2},
        // A ScanMark reads only the form it is sent.
        {"zebreader scan --model 14 --device $D/tty", 2, {}, {"give its size with --side1 ROWS:COLS"}},
        {"zebreader scan --model 'Scantron 8000' --device $D/tty", 2, {}, {"this form is 0 x 0"}},
        {"zebreader scan --model 14 --device $D/tty --side1 0:0",
         2,
         {},
         {R"(--side1: "0:0" is not a form size)"}},
        {"zebreader scan --model 14 --device $D/tty --side1 53:49", 2, {}, {"columns from 1 to 48"}},
        {"zebreader scan --model 14 --device $D/tty --side1 53:40 --mode window", 2, {}, {"--window"}},
        {"zebreader-sim sekonic", 2, {}, {R"(unknown model "sekonic")", "opscan"}},
        {"zebreader-sim 7", 2, {}, {R"("7" is not a model of a simulated family)"}},
        {"zebreader-sim opscan --sheets bad.txt", 2, {}, {"bad.txt:2: 'Q' is not a mark"}},

        // Settings: saved, loaded, imported, exported; what a scan with them does.
        {R"(zebreader scan --settings Software\Nothing)",
         2,
         {},
         {R"(no settings are stored under Software\Nothing (hkcu))"}},
        {R"(zebreader settings load --settings Software\Nothing)", 2, {}, {"no settings are stored under"}},
        {R"(zebreader settings save --settings 'Software\Site\Desk 1' --model 2 --port 9 --timeout 3 --no-feeder)",
         0},
        {R"(zebreader settings load --settings 'Software\Site\Desk 1' --json)",
         0,
         {R"("ScannerType":"2",)", R"("ScannerPort":"9",)", R"("TimeOut":"3",)", R"("Feeder":"False",)",
          R"("ScannerBaud":"38400",)"}},
        {R"(ZEBREADER_COM9=$D/no-such-tty zebreader scan --settings 'Software\Site\Desk 1' --format csv)",
         1,
         {},
         {invalidPort + "$D/no-such-tty: No such file or directory\n"}},
        {R"(zebreader settings save --settings Software\Site --model 2 --port 7 --sleep 1 --timeout 1)", 0},
        {R"(zebreader scan --settings Software\Site --simulate)",
         0,
         {R"({"sheet":3,)", summary(true, 3, 3, true)}},
        {R"(zebreader settings save --settings 'Software\Site\Desk 2' --model 24 --port 3 --timeout 20 --no-feeder)",
         0},
        {R"(zebreader settings save --settings 'Software\Site\Desk 2' --timeout 30)",
         0,
         {},
         {"saved the settings of Peripheral Dynamics Inc. VMR138"}},
        {R"(zebreader settings load --settings 'Software\Site\Desk 2' --json)",
         0,
         {R"("ScannerType":"24",)", R"("ScannerPort":"3",)", R"("TimeOut":"30",)", R"("Feeder":"False",)"}},
        {"ZEBREADER_REGISTRY=$D/blocker/registry zebreader settings save --model 2 --timeout 20",
         1,
         {},
         {R"(=zebreader: the settings were not saved under Software\ZEBReader81\zebreader: the folder )"
          "$D/blocker/registry does not exist and cannot be made\n"}},
        {"ZEBREADER_REGISTRY=$D/damaged zebreader settings save --model 2 --timeout 20",
         1,
         {},
         {R"(~\nzebreader: the settings were not saved under Software\\ZEBReader81\\zebreader: )"
          R"($D/damaged/HKEY_CURRENT_USER.reg is damaged and was left as it is: repair or remove it\n$)"}},
        {"zebreader settings import site.reg", 0},
        {R"(zebreader settings show --settings Software\Imported --json)",
         0,
         {R"(={"ScannerType":"24","ScannerPort":"0","Duplex":"True","ScannerParity":"E"})"
          "\n"}},
        {R"(zebreader settings load --settings Software\Imported --json)",
         0,
         {R"("ScannerType":"24",)", R"("Duplex":"True",)", R"("SleepTime":"50",)"}},
        // A port out of range from imported settings: the failed start leaves CancelScan as it was.
        {R"(zebreader scan --settings Software\Imported)",
         1,
         {"=" + summary(false, 0, 0, false)},
         {R"(={"error":{"number":8002,"kind":2,"description":")" + invalidPort0 +
          R"(","location":"basRead.ReaderInit","title":"Invalid Port Number"}})"
          "\n"}},
        {R"(zebreader scan --settings Software\Imported --format csv)",
         1,
         {"="},
         {"=zebreader: error 8002 (Invalid Port Number) in basRead.ReaderInit: " + invalidPort0 + "\n"}},
        {R"(zebreader settings export --settings Software\Imported --utf8 out.reg)", 0},

        // The port map: paths made absolute, network addresses kept as given.
        {"zebreader ports map 3 /dev/ttyUSB-desk", 0},
        {"zebreader ports --json",
         0,
         {R"({"port":3,"path":"/dev/ttyUSB-desk","from":"stored","present":false})",
          R"({"port":4,"path":"/dev/ttyS3","from":"default",)", R"(~\{"port":16,[^{]*\}\]\}\n$)"}},
        {"zebreader ports map 3 rfc2217://scanbox:2003", 0, {"=COM3 -> rfc2217://scanbox:2003\n"}},
        {"zebreader ports --json",
         0,
         {R"({"port":3,"path":"rfc2217://scanbox:2003","from":"stored","network":true})"}},
        {"zebreader ports", 0, {"COM3  rfc2217://scanbox:2003  (stored, network)"}},
        {"zebreader ports map 2 tty-desk", 0, {"=COM2 -> $D/tty-desk\n"}},
        {"zebreader ports --json", 0, {R"({"port":2,"path":"$D/tty-desk",)"}},

        // Scans of the built-in simulator in each output format.
        {sim + "duplex.txt",
         0,
         {"=" + std::string(R"({"sheet":1,"side1":)") + side({{15, 0, 5}, {0, 0, 15}}) + R"(,"side2":)" +
          side({{1}}) +
          R"(,"barcodes":{"lbound":1,"values":["4711"]},"timingMarks":[2,1],"rejected":false})"
          "\n" +
          summary(true, 1, 1, true)},
         {"="}},
        {sim + "csv.txt --format csv --rejecter --reject 2",
         0,
         {"~^sheet,side,row,rejected,barcodes,c1,c2,", R"(~\n1,1,1,0,"4711;9,""8""",15,0,5,0,)",
          R"(~\n1,2,1,0,"4711;9,""8""",1,0,)", "\n2,1,1,1,", "~\n2,2,150,1,[^\n]*\n$"}},
        {"LC_ALL=C " + sim + "duplex.txt --format grid", 0, {"=" + grid("@.+", "..@", ":")}},
        {"LC_ALL=POSIX " + sim + "duplex.txt --format grid", 0, {"=" + grid("@.+", "..@", ":")}},
        {"LC_ALL=C.UTF-8 " + sim + "duplex.txt --format grid",
         0,
         {"=" + grid("\u2588\u00B7\u2592", "\u00B7\u00B7\u2588", "\u2591")}},
        {sim + "svg.txt --format svg --output pics", 0, {"=pics/sheet-0001.svg\n"}},
        {sim + "two.txt --format svg", 0, {"=sheet-0001.svg\nsheet-0002.svg\n"}},
        // A side 2 on a single-sided set-up names the options on a line of its own.
        {sim + "side2.txt --no-duplex 2>tty",
         1,
         {R"(~^\{"sheet":1,)", "!{\"sheet\":2", "}\n" + summary(true, 2, 1, true)},
         {R"(~(^|\n)\{"error":\{"number":9,[^\n]*"hint":"the scanner sent side 2 of a sheet, but the set-up )"
          R"(reads side 1 only: give --duplex --duplex-form to read both sides"\}\}\r?\n)"}},
        // Devices that are not serial ports are named with the reason, once.
        {"zebreader scan --model 2 --device $D/missing --format csv",
         1,
         {},
         {invalidPort + "$D/missing: No such file or directory\n"}},
        {"zebreader scan --model 2 --device /dev/null --format csv",
         1,
         {},
         {invalidPort + "/dev/null: not a serial device\n"}},
        {"zebreader scan --model 2 --device $D/file --format csv",
         1,
         {},
         {invalidPort + "$D/file: a regular file, not a serial device\n"}},
        {"zebreader scan --model 2 --device $D/folder --format csv",
         1,
         {},
         {invalidPort + "$D/folder: Is a directory\n"}},
        {"zebreader locate --model 20 --simulate --start-port 4", 0, {"=4\n"}},
        {"zebreader firmware --model 20 --simulate", 0, {"=OMR-1100 - Version 1.04\n"}},
        {"zebreader locate --model 22 --simulate --start-port 4", 0, {"=4\n"}},
        {"zebreader firmware --model 22 --simulate", 0, {"=OMR-1100 - Version 1.04\n"}},
        {"zebreader locate --model 37 --simulate --start-port 9", 0, {"=9\n"}},
        {"zebreader firmware --model 23 --simulate", 0, {"~."}},
    };
    for (const auto& c : lines) {
        SCOPED_TRACE(c.line);
        const auto r = run(c.line);
        EXPECT_EQ(r.status, c.status) << r.err;
        expectText(r.out, c.out);
        expectText(r.err, c.err);
        EXPECT_TRUE(c.status != 2 || r.out.empty()) << r.out;
    }

    EXPECT_EQ(readFile(dir.file("damaged/HKEY_CURRENT_USER.reg")), damaged);
    EXPECT_EQ(readFile(dir.file("out.reg")),
              "Windows Registry Editor Version 5.00\n\n"
              "[HKEY_CURRENT_USER\\Software\\Imported]\n\"ScannerType\"=\"24\"\n"
              "\"ScannerPort\"=\"0\"\n\"Duplex\"=\"True\"\n\"ScannerParity\"=\"E\"\n\n");
    const auto svg = readFile(dir.file("pics/sheet-0001.svg"));
    expectText(
        svg, {"<svg xmlns=\"http://www.w3.org/2000/svg\"", "Side 2", "Barcodes: 4711, &lt;&amp;&gt;</text>"});
    for (const auto* name : {"pics/sheet-0001.svg", "sheet-0001.svg", "sheet-0002.svg"})
        EXPECT_EQ(xmlProblem(readFile(dir.file(name))), "") << name;
}

} // namespace
} // namespace zebreader81::test
