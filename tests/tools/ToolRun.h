// Runs a built tool as a user would: arguments, environment, captured output, exit status.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace zebreader81::test {

struct ToolResult {
    int status = -1; // exit status; 128 + signal when killed
    std::string out, err;
    /// The lines of out / err.
    std::vector<std::string> outLines() const;
    std::vector<std::string> errLines() const;
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
    /// Called while the tool runs, with everything written to stdout so far: each time more
    /// arrives, and at least every 200 ms.
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
    /// Writes `text` to file(name) and returns its path.
    std::string write(const std::string& name, const std::string& text) const;

private:
    std::string path_;
};

/// Reads a whole file ("" when missing).
std::string readFile(const std::string& path);

} // namespace zebreader81::test
