// zebreader and zebreader-sim as a user runs them, one command line after another in one
// settings store: what each prints and its exit status. Usage errors (2) print nothing on
// stdout and are refused before any device is opened (that would fail with 1). Then a person
// at a desk feeding sheets by hand, and the sample sheets of every simulated family.
#include "sim/Simulators.h"
#include "sim/ezdata/EZDataSimulator.h"
#include "sim/scantron/ScanMarkSimulator.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace zebreader81::test {
namespace {

struct ToolResult {
    int status = -1; // exit status; 128 + signal when killed
    std::string out, err;
};

// A whole file ("" when missing).
std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> out;
    std::stringstream in(text);
    for (std::string line; std::getline(in, line);)
        out.push_back(line);
    return out;
}

// The tools with a private settings store, started in a fresh folder (dir, removed after).
class ZebreaderTool : public ::testing::Test {
protected:
    ZebreaderTool()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "zebreader-tool-XXXXXX").string();
        dir = mkdtemp(pattern.data()) ? pattern : "/nonexistent";
    }
    ~ZebreaderTool() override
    {
        std::error_code ec;
        std::filesystem::remove_all(dir, ec);
    }
    std::string file(const std::string& name) const { return dir + "/" + name; }
    void write(const std::string& name, const std::string& text) const
    {
        std::ofstream(file(name), std::ios::binary) << text;
    }

    // Runs `line` as a shell would: "zebreader" or "zebreader-sim", then its arguments ('...'
    // quotes); NAME=value words before it go to the environment (ZEBREADER_COM* of this process
    // never do). "2>tty" gives stderr a pseudo-terminal, as at a desk; "^C"
    // interrupts the program once it printed a line. `whileRunning` is called every 10 ms with
    // stdout so far. Killed after 60 s.
    ToolResult run(const std::string& line,
                   std::function<void(const std::string& out, pid_t pid)> whileRunning = {}) const
    {
        std::vector<std::string> words{""};
        bool quoted = false;
        for (const char c : line) {
            if (c == '\'')
                quoted = !quoted;
            else if (c == ' ' && !quoted)
                words.emplace_back();
            else
                words.back() += c;
        }
        std::map<std::string, std::string> env{{"ZEBREADER_REGISTRY", file("registry")}};
        auto w = words.begin();
        for (; w != words.end() && w->find('=') != std::string::npos; ++w)
            env[w->substr(0, w->find('='))] = w->substr(w->find('=') + 1);
        EXPECT_TRUE(w != words.end() && (*w == "zebreader" || *w == "zebreader-sim")) << line;
        std::vector<std::string> args{w != words.end() && *w == "zebreader" ? ZEBREADER_TOOL
                                                                            : ZEBREADER_SIM_TOOL};
        bool stderrTerminal = false;
        for (++w; w < words.end(); ++w) {
            if (*w == "2>tty")
                stderrTerminal = true;
            else if (*w == "^C")
                whileRunning = [sent = false](const std::string& out, pid_t pid) mutable {
                    if (!sent && out.find('\n') != std::string::npos)
                        sent = kill(pid, SIGINT) == 0;
                };
            else
                args.push_back(*w);
        }

        // Output goes to files, read when the tool is done (and by whileRunning as it goes); a
        // terminal for stderr is drained as it fills. Everything the child needs is made
        // before fork.
        const std::string outPath = file(".out"), errPath = file(".err");
        int terminal = -1;
        std::string errTo = errPath;
        if (stderrTerminal) {
            terminal = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
            if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0)
                return {};
            errTo = ptsname(terminal);
        }
        const int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        const int err = open(errTo.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_NOCTTY | O_CLOEXEC, 0600);
        std::vector<std::string> envStrings;
        for (char** e = environ; *e; ++e)
            if (std::strncmp(*e, "ZEBREADER_COM", 13) != 0 &&
                !env.count(std::string(*e).substr(0, std::string(*e).find('='))))
                envStrings.emplace_back(*e);
        for (const auto& [name, value] : env)
            envStrings.push_back(name + "=" + value);
        std::vector<char*> envp{nullptr}, argv{nullptr};
        for (auto& s : envStrings)
            envp.insert(envp.end() - 1, s.data());
        for (auto& s : args)
            argv.insert(argv.end() - 1, s.data());

        const pid_t pid = fork();
        if (pid == 0) {
            // The test process may block signals in its threads; the tool starts clean.
            sigset_t none;
            sigemptyset(&none);
            sigprocmask(SIG_SETMASK, &none, nullptr);
            if (out < 0 || err < 0 || dup2(out, STDOUT_FILENO) < 0 || dup2(err, STDERR_FILENO) < 0 ||
                chdir(dir.c_str()) != 0)
                _exit(126);
            execve(argv[0], argv.data(), envp.data());
            _exit(127);
        }
        close(out);
        close(err);
        ToolResult result;
        const auto drain = [&] {
            char buf[4096];
            for (ssize_t n; terminal >= 0 && (n = read(terminal, buf, sizeof buf)) > 0;)
                result.err.append(buf, static_cast<std::size_t>(n));
        };
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        int wstatus = 0;
        for (bool killed = false; waitpid(pid, &wstatus, WNOHANG) == 0;) {
            if (!killed && std::chrono::steady_clock::now() > deadline)
                killed = kill(pid, SIGKILL) == 0;
            drain();
            if (whileRunning && !killed)
                whileRunning(readFile(outPath), pid);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        drain();
        if (terminal >= 0)
            close(terminal);
        result.out = readFile(outPath);
        if (!stderrTerminal)
            result.err = readFile(errPath);
        result.status = WIFEXITED(wstatus) ? WEXITSTATUS(wstatus) : 128 + WTERMSIG(wstatus);
        return result;
    }

    // Checks `text` against each of `want`: "=text" is all of it, "~regex" is searched for
    // (keep its stars off long lines), "!text" must not be in it, anything else is a part of
    // it.
    void expectText(const std::string& text, const std::vector<std::string>& want) const
    {
        for (const auto& w : want) {
            const std::string part = w.substr(w.find_first_of("=~!") == 0);
            if (w[0] == '!')
                EXPECT_EQ(text.find(part), std::string::npos) << part << " in\n" << text;
            else if (w[0] == '=')
                EXPECT_EQ(text, part);
            else if (w[0] == '~')
                EXPECT_TRUE(std::regex_search(text, std::regex(part))) << "no " << part << " in\n" << text;
            else
                EXPECT_NE(text.find(part), std::string::npos) << "no " << part << " in\n" << text;
        }
    }

    std::string dir;
};

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

// The grid of duplex.txt with `row1`, `row2` and `side2` in the characters of a locale.
std::string grid(const std::string& row1, const std::string& row2, const std::string& side2)
{
    return R"(Sheet 1  timing marks 2/1  barcodes: [4711]\n  Side 1: rows 1-150, columns 1-48 (shown up to )"
           R"(the last mark)\n         \n    1 )" +
           row1 + R"(\n    2 )" + row2 +
           R"(\n  Side 2: rows 1-150, columns 1-48 (shown up to the last mark)\n       \n    1 )" + side2 +
           R"(\nBatch done: 1 sheet(s) read of 1 read(s) started, stopped\n)";
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

TEST_F(ZebreaderTool, CommandLines)
{
    const std::string duplex = "sheet\nbarcode 4711\nside 1\n|X.5|\n|..F|\nside 2\n|1|\n";
    write("duplex.txt", duplex);
    write("svg.txt", duplex + "barcode <&>\n");
    write("csv.txt", duplex + "barcode 9,\"8\"\nsheet\n|X|\n");
    write("two.txt", "sheet\n|X|\nsheet\n|.X|\n");
    write("side2.txt", "sheet\n|X|\nsheet\n|X|\nside 2\n|.X|\n");
    write("bad.txt", "sheet\n|..Q|\n");
    write("file", "x");
    write("blocker", "a file where the settings folder should be");
    std::filesystem::create_directories(file("folder"));
    std::filesystem::create_directories(file("damaged"));
    const std::string damaged = "this is not a registry file\n";
    write("damaged/HKEY_CURRENT_USER.reg", damaged);
    write("site.reg",
          "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\Software\\Imported]\r\n"
          "\"ScannerType\"=\"24\"\r\n\"ScannerPort\"=\"0\"\r\n\"Duplex\"=\"True\"\r\n"
          "\"ScannerParity\"=\"E\"\r\n\r\n");

    // Scanners on devices of their own: an EZData behind port 5 only, a ScanMark, one that
    // refuses to read, one that never answers.
    sim::EZDataSimulator ezdata;
    ezdata.setFirmware("  EZData 2.14  ");
    sim::ScanMarkSimulator scanMark(14, sim::sampleSheets(14)), refusing(14, sim::sampleSheets(14));
    refusing.rejectCommand("READ");
    const auto silent = sim::makeSimulator(2, {});
    silent->setSilent(true);
    std::string nowhere, only5;
    for (int p = 1; p <= 16; ++p) {
        const auto com = "ZEBREADER_COM" + std::to_string(p) + "=";
        nowhere += com + "/nonexistent/tty ";
        only5 += com + (p == 5 ? ezdata.path() : "/nonexistent/tty") + " ";
    }
    const std::map<std::string, std::string> vars{
        {"$SIM", "zebreader scan --model 2 --simulate --timeout 1 --sleep 1 --sheets-file"},
        {"$ONLY5 ", only5},
        {"$NOWHERE ", nowhere},
        {"$EZDATA", ezdata.path()},
        {"$SCANMARK", scanMark.path()},
        {"$REFUSING", refusing.path()},
        {"$SILENT", silent->path()},
        {"$D", dir}};

    // Each command line comes after its exit status; "> " parts are what it prints on stdout,
    // "2> " parts on stderr (see expectText; \n is a newline). $SIM scans the built-in
    // OpScan simulator with short waits; $D is this test's folder; the other $ words are the
    // scanners above.
    const std::string transcript =
        R"T(
// The catalogue; both tools name a model the same way.
0 zebreader --version
> =zebreader )T" ZEBREADER_VERSION_TEXT R"T(\n
0 zebreader-sim --version
> =zebreader-sim )T" ZEBREADER_VERSION_TEXT R"T(\n
0 zebreader --help  > Usage:
0 zebreader models --json  > ~^\[\{"number":0,"name":"None",  > ~,\{"number":41,"name":"Chatsworth Data ACP-200",[^{]*\}\]
> {"number":20,"name":"Chatsworth Data OMR1100","family":"Chatsworth","interface":"Serial","reads":true,
> {"number":1,"name":"Apperson Advantage Link","family":"Apperson","interface":"Serial","reads":false,
> {"number":2,"name":"Scantron OpScan 2","family":"OpScan","interface":"Serial","reads":true,"simulated":true,"marks":"0-15"}
> {"number":23,"name":"Scantron EZData","family":"EZData",
> "name":"Peripheral Dynamics Inc. VMR138","family":"PDI","interface":"Serial","reads":true,"simulated":true,"marks":"0 or threshold+1"}
> {"number":30,"name":"Sekonic SR2300 (USB)","family":"Sekonic USB","interface":"USB",
> {"number":37,"name":"Chatsworth Data ACP-100","family":"EZData",
0 zebreader profile 37 --json  > {"number":37,"name":"Chatsworth Data ACP-100",  > "RecognitionThresholdMaximum":
0 zebreader profile 'chatsworth data ACP-100' --json  > {"number":37,"name":"Chatsworth Data ACP-100",
0 zebreader profile 2 --json  > {"number":2,
0 zebreader profile 'scantron opscan 2' --json  > {"number":2,
0 zebreader profile opscan --json  > {"number":2,
0 zebreader-sim 2 ^C  > ~^/dev/pts/  2> zebreader scan --model 2 --device /dev/pts/  2> zebreader-sim: stopped
0 zebreader-sim 'scantron opscan 2' ^C  2> zebreader scan --model 2 --device /dev/pts/
// The simulator program serves the sheets of a file until interrupted.
0 zebreader-sim opscan --sheets two.txt ^C  2> Read them with:\n  zebreader scan --model 2 --device /dev/pts/

// Usage errors.
2 zebreader profile 'Scantron OpScan 99'  2> unknown model "Scantron OpScan 99"
2 zebreader scan --model 42  2> model 42 is out of range
2 zebreader scan --format xml  2> --format
2 zebreader scan --reject 2,x  2> --reject: "x" is not a sheet number
2 zebreader scan --simulate --device /dev/null  2> --simulate and --device exclude each other
2 zebreader scan --model 1 --simulate  2> no simulator for model 1 (Apperson Advantage Link)
2 zebreader frobnicate
2 zebreader scan --sheets -5  2> --sheets -5
2 zebreader scan --port 0  2> --port
2 zebreader scan --port 17  2> --port
2 zebreader settings save --port 17  2> --port
2 zebreader scan --timeout 0  2> --timeout
2 zebreader scan --timeout 601  2> --timeout
2 zebreader scan --model 2 --threshold 16  2> --threshold 16 is outside the range of the Scantron OpScan 2: 0 to 15
2 zebreader scan --model 24 --threshold 191  2> 192 to 254
2 zebreader scan --model 2 --side1 0:0  2> is not a form size
2 zebreader firmware --model 23 --port 17  2> --port
2 zebreader locate --model 23 --start-port 17  2> --start-port
2 zebreader locate --model 2  2> the Scantron OpScan 2 does not answer the port search; models that do: 
2 zebreader firmware --model 24  2> does not answer the firmware query
2 zebreader ports map 17 /dev/x
// A ScanMark reads only the form it is sent.
2 zebreader scan --model 14 --device $D/tty  2> give its size with --side1 ROWS:COLS
2 zebreader scan --model 'Scantron 8000' --device $D/tty  2> this form is 0 x 0
2 zebreader scan --model 14 --device $D/tty --side1 0:0  2> --side1: "0:0" is not a form size
2 zebreader scan --model 14 --device $D/tty --side1 53:49  2> columns from 1 to 48
2 zebreader scan --model 14 --device $D/tty --side1 53:40 --mode window  2> --window
2 zebreader-sim sekonic  2> unknown model "sekonic"  2> opscan
2 zebreader-sim 7  2> "7" is not a model of a simulated family
2 zebreader-sim opscan --sheets bad.txt  2> bad.txt:2: 'Q' is not a mark

// Settings: saved, loaded, imported, exported; what a scan with them does.
2 zebreader scan --settings Software\Nothing  2> no settings are stored under Software\Nothing (hkcu)
2 zebreader settings load --settings Software\Nothing  2> no settings are stored under
0 zebreader settings save --settings 'Software\Site\Desk 1' --model 2 --port 9 --timeout 3 --no-feeder
0 zebreader settings load --settings 'Software\Site\Desk 1' --json  > "ScannerType":"2",  > "ScannerPort":"9",
> "TimeOut":"3",
> "Feeder":"False",
> "ScannerBaud":"38400",
1 ZEBREADER_COM9=$D/no-such-tty zebreader scan --settings 'Software\Site\Desk 1' --format csv
2> =zebreader: error 8002 in basRead.ReaderInit: Invalid port number: $D/no-such-tty: No such file or directory\n
0 zebreader settings save --settings Software\Site --model 2 --port 7 --sleep 1 --timeout 1
0 zebreader scan --settings Software\Site --simulate  > {"sheet":3,
> {"summary":{"result":true,"sheets":3,"read":3,"cancelScan":true}}\n
0 zebreader settings save --settings 'Software\Site\Desk 2' --model 24 --port 3 --timeout 20 --no-feeder
0 zebreader settings save --settings 'Software\Site\Desk 2' --timeout 30
2> saved the settings of Peripheral Dynamics Inc. VMR138
0 zebreader settings load --settings 'Software\Site\Desk 2' --json  > "ScannerType":"24",  > "ScannerPort":"3",
> "TimeOut":"30",
> "Feeder":"False",
1 ZEBREADER_REGISTRY=$D/blocker/registry zebreader settings save --model 2 --timeout 20
2> =zebreader: the settings were not saved under Software\ZEBReader81\zebreader: the folder $D/blocker/registry does not exist and cannot be made\n
1 ZEBREADER_REGISTRY=$D/damaged zebreader settings save --model 2 --timeout 20
2> \nzebreader: the settings were not saved under Software\ZEBReader81\zebreader: $D/damaged/HKEY_CURRENT_USER.reg is damaged and was left as it is: repair or remove it\n
2> !saved the settings
0 zebreader settings import site.reg
0 zebreader settings show --settings Software\Imported --json
> ={"ScannerType":"24","ScannerPort":"0","Duplex":"True","ScannerParity":"E"}\n
0 zebreader settings load --settings Software\Imported --json  > "ScannerType":"24",  > "Duplex":"True",
> "SleepTime":"50",
// A port out of range from imported settings: the failed start leaves CancelScan as it was.
1 zebreader scan --settings Software\Imported
> ={"summary":{"result":false,"sheets":0,"read":0,"cancelScan":false}}\n
2> ={"error":{"number":8002,"kind":2,"description":"An error has occurred attempting to initialize the selected COM port: 0. Please verify the COM port number and settings and then retry the operation.","location":"basRead.ReaderInit","title":"Invalid Port Number"}}\n
1 zebreader scan --settings Software\Imported --format csv  > =
2> =zebreader: error 8002 (Invalid Port Number) in basRead.ReaderInit: An error has occurred attempting to initialize the selected COM port: 0. Please verify the COM port number and settings and then retry the operation.\n
0 zebreader settings export --settings Software\Imported --utf8 out.reg

// The port map: paths made absolute, network addresses kept as given.
0 zebreader ports map 3 /dev/ttyUSB-desk
0 zebreader ports --json  > {"port":3,"path":"/dev/ttyUSB-desk","from":"stored","present":false}
> {"port":4,"path":"/dev/ttyS3","from":"default",
> ~\{"port":16,[^{]*\}\]\}\n$
0 zebreader ports map 3 rfc2217://scanbox:2003  > =COM3 -> rfc2217://scanbox:2003\n
0 zebreader ports --json  > {"port":3,"path":"rfc2217://scanbox:2003","from":"stored","network":true}
0 zebreader ports  > COM3  rfc2217://scanbox:2003  (stored, network)
0 zebreader ports map 2 tty-desk  > =COM2 -> $D/tty-desk\n
0 zebreader ports --json  > {"port":2,"path":"$D/tty-desk",

// Scans of the built-in simulator in each output format.
0 $SIM duplex.txt
> ={"sheet":1,"side1":)T" +
        side({{15, 0, 5}, {0, 0, 15}}) + R"T(,"side2":)T" + side({{1}}) +
        R"T(,"barcodes":{"lbound":1,"values":["4711"]},"timingMarks":[2,1],"rejected":false}\n{"summary":{"result":true,"sheets":1,"read":1,"cancelScan":true}}\n
2> =
0 $SIM csv.txt --format csv --rejecter --reject 2  > ~^sheet,side,row,rejected,barcodes,c1,c2,
> \n1,1,1,0,"4711;9,""8""",15,0,5,0,
> \n1,2,1,0,"4711;9,""8""",1,0,
> \n2,1,1,1,
> ~\n2,2,150,1,[^\n]*\n$
0 LC_ALL=C $SIM duplex.txt --format grid
> =)T" + grid("@.+", "..@", ":") +
        R"T(
0 LC_ALL=POSIX $SIM duplex.txt --format grid
> =)T" + grid("@.+", "..@", ":") +
        R"T(
0 LC_ALL=C.UTF-8 $SIM duplex.txt --format grid
> =)T" + grid("█·▒", "··█", "░") +
        R"T(
0 $SIM svg.txt --format svg --output pics  > =pics/sheet-0001.svg\n
0 $SIM two.txt --format svg  > =sheet-0001.svg\nsheet-0002.svg\n
// A trace of every byte; reject and print send their commands.
0 $SIM two.txt --rejecter --reject 2 --print HI --print-distance 7 --trace trace.txt  > ~^\{"sheet":1,
> "rejected":false}\n{"sheet":2,  > "rejected":true}\n{"summary"
// A side 2 on a single-sided set-up names the options on a line of its own.
1 $SIM side2.txt --no-duplex 2>tty  > ~^\{"sheet":1,  > !{"sheet":2
> }\n{"summary":{"result":true,"sheets":2,"read":1,"cancelScan":true}}\n
2> ~(^|\n)\{"error":\{"number":9,[^\n]*"hint":"the scanner sent side 2 of a sheet, but the set-up reads side 1 only: give --duplex --duplex-form to read both sides"\}\}\r?\n
// Devices that are not serial ports are named with the reason, once.
1 zebreader scan --model 2 --device $D/missing --format csv
2> =zebreader: error 8002 in basRead.ReaderInit: Invalid port number: $D/missing: No such file or directory\n
1 zebreader scan --model 2 --device /dev/null --format csv
2> =zebreader: error 8002 in basRead.ReaderInit: Invalid port number: /dev/null: not a serial device\n
1 zebreader scan --model 2 --device $D/file --format csv
2> =zebreader: error 8002 in basRead.ReaderInit: Invalid port number: $D/file: a regular file, not a serial device\n
1 zebreader scan --model 2 --device $D/folder --format csv
2> =zebreader: error 8002 in basRead.ReaderInit: Invalid port number: $D/folder: Is a directory\n
0 zebreader locate --model 20 --simulate --start-port 4  > =4\n
0 zebreader firmware --model 20 --simulate  > =OMR-1100 - Version 1.04\n
0 zebreader locate --model 22 --simulate --start-port 4  > =4\n
0 zebreader firmware --model 22 --simulate  > =OMR-1100 - Version 1.04\n
0 zebreader locate --model 37 --simulate --start-port 9  > =9\n
0 zebreader firmware --model 23 --simulate  > ~.
0 $ONLY5 zebreader locate --model 23  > =5\n
0 $ONLY5 zebreader firmware --model 'Scantron EZData' --port 5  > =EZData 2.14\n
0 zebreader firmware --model 23 --device $EZDATA  > =EZData 2.14\n
1 $NOWHERE zebreader locate --model 23 --start-port 3  > =  2> no Scantron EZData answered on ports 3, 1 to 16
// Fed by hand, a ScanMark reads a sheet once its status says one is in.
0 zebreader scan --model 14 --simulate --no-feeder --sheets 1 --sleep 1 --timeout 2
> {"summary":{"result":true,"sheets":1,"read":1,"cancelScan":true}}\n
// A ScanMark reads the form saved in the settings; a refused sheet is never printed.
0 zebreader settings save --settings Software\Desk --model 14 --side1 53:40 --timeout 2 --sleep 1
0 zebreader scan --settings Software\Desk --device $SCANMARK  > ~^\{"sheet":1,"side1":\{"lbound":\[1,1\],"ubound":\[53,40\],
> ~\n\{"sheet":3,[^\n]*\n\{"summary":\{"result":true,"sheets":[0-9]+,"read":3,"cancelScan":true\}\}\n$
1 zebreader scan --settings Software\Desk --device $REFUSING  > ~^\{"summary":\{[^\n]*"read":0,[^\n]*\}\n$
2> the scanner refused to read sheet 1
// No response: the report names the port and its device.
1 zebreader scan --model 2 --port 4 --timeout 1 --sleep 1 --device $SILENT --format csv
2> ~^[^\n]*\(No Response\)  2> ~^[^\n]*\[COM4, $SILENT\]
1 zebreader scan --model 2 --port 4 --timeout 1 --sleep 1 --device $SILENT  2> ~^\{"error":\{[^\n]*"port":4,"device":"$SILENT"
)T";
    const auto substituted = [&](std::string text) {
        for (const auto& [name, value] : vars)
            for (auto at = text.find(name); at != std::string::npos; at = text.find(name, at + value.size()))
                text.replace(at, name.size(), value);
        return text;
    };
    std::string line;
    std::vector<std::string> out, err;
    int status = 0;
    const auto check = [&] {
        SCOPED_TRACE(line);
        const auto r = run(line);
        EXPECT_EQ(r.status, status) << r.err;
        expectText(r.out, out);
        expectText(r.err, err);
        EXPECT_TRUE(status != 2 || r.out.empty()) << r.out; // usage errors print nothing else
    };
    // Fragments after "  > " and "  2> " on the line of the command or on lines of their own.
    const auto parts = [&](const std::string& text) {
        for (auto at = text.find("> "); at != std::string::npos;) {
            const auto next = std::min(text.find("  > ", at), text.find("  2> ", at));
            (at > 0 && text[at - 1] == '2' ? err : out)
                .push_back(std::regex_replace(substituted(text.substr(at + 2, next - at - 2)),
                                              std::regex(R"(\\n)"), "\n"));
            at = next == std::string::npos ? next : text.find("> ", next);
        }
    };
    std::stringstream in(transcript);
    for (std::string l; std::getline(in, l);) {
        if (l.empty() || l.rfind("//", 0) == 0)
            continue;
        if (l.find("> ") < 2) {
            parts(l);
            continue;
        }
        if (!line.empty())
            check();
        const auto end = std::min(l.find("  > "), l.find("  2> "));
        status = l[0] - '0';
        line = substituted(l.substr(2, end - 2));
        out.clear();
        err.clear();
        if (end != std::string::npos)
            parts(l.substr(end));
    }
    check();

    EXPECT_EQ(ezdata.words(), (std::vector<std::string>{"probe", "V", "V"}));
    EXPECT_EQ(readFile(file("damaged/HKEY_CURRENT_USER.reg")), damaged);
    EXPECT_EQ(readFile(file("out.reg")),
              "Windows Registry Editor Version 5.00\n\n"
              "[HKEY_CURRENT_USER\\Software\\Imported]\n\"ScannerType\"=\"24\"\n"
              "\"ScannerPort\"=\"0\"\n\"Duplex\"=\"True\"\n\"ScannerParity\"=\"E\"\n\n");
    // The trace: a heading, then each chunk in hex and as text, the full status query first. ESC
    // DC2 once: the rejected last sheet is not ejected as well. Position "1" "07" EOT and text "2"
    // "HI" blank EOT on every sheet.
    const auto text = readFile(file("trace.txt"));
    const auto trace = lines(text);
    ASSERT_GT(trace.size(), 3u);
    EXPECT_EQ(trace[0].rfind("# zebreader trace of COM1 (simulated, /dev/pts/", 0), 0u) << trace[0];
    expectText(trace[1], {"> 73 30 ", "  s0"});
    expectText(text, {" < "});
    std::map<std::string, int> chunks{{"> 1B 12 ", 0}, {"> 31 30 37 04 ", 0}, {"> 32 48 49 20 04 ", 0}};
    for (std::size_t i = 1; i < trace.size(); ++i) {
        EXPECT_TRUE(
            std::regex_match(trace[i], std::regex(R"(\d+\.\d{6} [<>]( [0-9A-F]{2}){1,16} *  .{1,16})")))
            << trace[i];
        for (auto& [start, n] : chunks)
            n += trace[i].find(start) != std::string::npos;
    }
    EXPECT_EQ(chunks,
              (std::map<std::string, int>{{"> 1B 12 ", 1}, {"> 31 30 37 04 ", 2}, {"> 32 48 49 20 04 ", 2}}));
    const auto svg = readFile(file("pics/sheet-0001.svg"));
    expectText(
        svg, {"<svg xmlns=\"http://www.w3.org/2000/svg\"", "Side 2", "Barcodes: 4711, &lt;&amp;&gt;</text>"});
    for (const auto* name : {"pics/sheet-0001.svg", "sheet-0001.svg", "sheet-0002.svg"})
        EXPECT_EQ(xmlProblem(readFile(file(name))), "") << name;
}

TEST_F(ZebreaderTool, AHandFedWaitSaysSoAndCtrlCEndsItCleanly)
{
    // Two sheets, five asked for, fed by hand: the third read waits until Ctrl-C.
    write("two.txt", "sheet\n|X|\nsheet\n|.X|\n");
    bool sent = false;
    const auto r = run("zebreader scan --model 2 --simulate --timeout 1 --sleep 1 --sheets-file two.txt "
                       "--no-feeder --sheets 5 --trace trace.txt 2>tty",
                       [&](const std::string&, pid_t pid) {
                           // The third sheet's start (DC1) was sent.
                           const auto trace = readFile(file("trace.txt"));
                           const std::regex start(" > 11 ");
                           const std::sregex_iterator starts(trace.begin(), trace.end(), start);
                           if (!sent && std::distance(starts, std::sregex_iterator()) == 3)
                               sent = kill(pid, SIGINT) == 0;
                       });
    EXPECT_TRUE(sent);
    EXPECT_EQ(r.status, 0) << r.err;
    // Three reads were started; the third was stopped before a sheet came.
    EXPECT_EQ(lines(r.out).back(), R"({"summary":{"result":true,"sheets":3,"read":2,"cancelScan":true}})");
    for (int sheet = 1; sheet <= 3; ++sheet)
        expectText(r.err, {"waiting for sheet " + std::to_string(sheet) + ": feed a sheet, Ctrl-C to stop"});
    expectText(r.err, {"!waiting for sheet 4"});
    // The port was closed the orderly way: the feeder stopped (SO) at the end.
    EXPECT_NE(readFile(file("trace.txt")).find(" > 0E "), std::string::npos);
}

class ZebreaderFamily : public ZebreaderTool, public ::testing::WithParamInterface<int> {};

TEST_P(ZebreaderFamily, ReadsTheSampleSheetsMarkForMark)
{
    const int model = GetParam();
    const auto r =
        run("zebreader scan --model " + std::to_string(model) + " --simulate --sleep 1 --timeout 2");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    const auto out = lines(r.out);
    const auto samples = sim::sampleSheets(model);
    ASSERT_EQ(out.size(), samples.size() + 1);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto side1 = nlohmann::json::parse(out[i])["side1"];
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
    EXPECT_EQ(out.back(), R"({"summary":{"result":true,"sheets":3,"read":3,"cancelScan":true}})");
}

// OpScan, ScanMark, 8000 series, PDI, EZData, the ACP-100 that speaks EZData, and the
// Chatsworth family (the OMR1100, and the ALS AccelScan whose cards wait for an eject).
INSTANTIATE_TEST_SUITE_P(Simulated, ZebreaderFamily, ::testing::Values(2, 14, 16, 24, 23, 37, 20, 22));

} // namespace
} // namespace zebreader81::test
