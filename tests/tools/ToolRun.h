// Runs a built tool as a user would: arguments, environment, captured output, exit status.
#pragma once

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace zebreader81::test {

struct ToolResult {
    int status = -1; // exit status; 128 + signal when killed
    std::string out, err;
};

struct ToolRun {
    std::string binary;
    std::vector<std::string> args;
    /// Added to the environment; ZEBREADER_COM* of the test process are never passed on.
    std::map<std::string, std::string> env;
    /// Folder the tool starts in (empty: this process's).
    std::string cwd;
    /// Standard error goes to a pseudo-terminal, as at a desk; otherwise to a pipe.
    bool stderrTerminal = false;
    /// Called every 10 ms while the tool runs, with everything written to stdout so far.
    std::function<void(const std::string& out, pid_t pid)> whileRunning;

    /// Runs to the end (killed after 60 s, which fails the caller's expectations).
    ToolResult run() const;
};

/// A fresh folder under the test temp dir, removed with the object.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    /// Writes `text` to file(name).
    void write(const std::string& name, const std::string& text) const;

private:
    std::string path_;
};

/// Reads a whole file ("" when missing).
std::string readFile(const std::string& path);
/// The lines of `text`.
std::vector<std::string> lines(const std::string& text);

/// The tools with a private settings store, started in a fresh folder.
class ZebreaderTool : public ::testing::Test {
public:
    /// `line` as a shell would run it: "zebreader" or "zebreader-sim", then its arguments
    /// ('...' quotes); NAME=value words before it go to the environment; $D is this test's
    /// folder. "2>tty" gives stderr a terminal; "^C" interrupts the program once it printed a
    /// line.
    ToolRun tool(const std::string& line) const;
    ToolResult run(const std::string& line) const { return tool(line).run(); }
    /// The json lines of `text` (a line that is not json fails the test).
    static std::vector<nlohmann::json> jsonLines(const std::string& text);
    /// Checks `text` against each of `want`: "=text" is all of it, "~regex" is searched for
    /// (keep its stars off long lines), "!text" must not be in it,
    /// anything else is a part of it; $D is this test's folder.
    void expectText(const std::string& text, const std::vector<std::string>& want) const;

    TempDir dir;
};

} // namespace zebreader81::test
