#include "tools/ToolRun.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace zebreader81::test {

ToolResult ToolRun::run() const
{
    // Output goes to files, read when the tool is done (and by whileRunning as it goes); a
    // terminal for stderr is drained as it fills.
    TempDir files;
    const std::string outPath = files.file("out"), errPath = files.file("err");
    int terminal = -1;
    std::string errTo = errPath;
    if (stderrTerminal) {
        terminal = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
        if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0)
            return {};
        errTo = ptsname(terminal);
    }

    // Everything the child needs is prepared before fork.
    std::vector<std::string> envStrings;
    for (char** e = environ; *e; ++e)
        if (std::strncmp(*e, "ZEBREADER_COM", 13) != 0 &&
            env.find(std::string(*e).substr(0, std::string(*e).find('='))) == env.end())
            envStrings.emplace_back(*e);
    for (const auto& [name, value] : env)
        envStrings.push_back(name + "=" + value);
    std::vector<std::string> argStrings{binary};
    argStrings.insert(argStrings.end(), args.begin(), args.end());
    std::vector<char*> envp{nullptr}, argv{nullptr};
    for (auto& s : envStrings)
        envp.insert(envp.end() - 1, s.data());
    for (auto& s : argStrings)
        argv.insert(argv.end() - 1, s.data());

    const pid_t pid = fork();
    if (pid == 0) {
        // The test process may block signals in its threads; the tool starts clean.
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        const int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const int err = open(errTo.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_NOCTTY, 0600);
        if (out < 0 || err < 0 || dup2(out, STDOUT_FILENO) < 0 || dup2(err, STDERR_FILENO) < 0 ||
            (!cwd.empty() && chdir(cwd.c_str()) != 0))
            _exit(126);
        execve(argv[0], argv.data(), envp.data());
        _exit(127);
    }

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

TempDir::TempDir()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "zebreader-tool-XXXXXX").string();
    if (mkdtemp(pattern.data()))
        path_ = pattern;
}

TempDir::~TempDir()
{
    std::error_code ec;
    if (!path_.empty())
        std::filesystem::remove_all(path_, ec);
}

void TempDir::write(const std::string& name, const std::string& text) const
{
    std::ofstream(file(name), std::ios::binary) << text;
}

namespace {

std::string atDir(std::string text, const std::string& dir)
{
    for (auto at = text.find("$D"); at != std::string::npos; at = text.find("$D", at + dir.size()))
        text.replace(at, 2, dir);
    return text;
}

} // namespace

ToolRun ZebreaderTool::tool(const std::string& line) const
{
    std::vector<std::string> words{""};
    bool quoted = false;
    for (const char c : atDir(line, dir.path())) {
        if (c == '\'')
            quoted = !quoted;
        else if (c == ' ' && !quoted)
            words.emplace_back();
        else
            words.back() += c;
    }
    ToolRun run;
    run.cwd = dir.path();
    run.env["ZEBREADER_REGISTRY"] = dir.file("registry");
    auto w = words.begin();
    for (; w != words.end() && w->find('=') != std::string::npos; ++w)
        run.env[w->substr(0, w->find('='))] = w->substr(w->find('=') + 1);
    EXPECT_TRUE(w != words.end() && (*w == "zebreader" || *w == "zebreader-sim")) << line;
    run.binary = w != words.end() && *w == "zebreader" ? ZEBREADER_TOOL : ZEBREADER_SIM_TOOL;
    for (++w; w < words.end(); ++w) {
        if (*w == "2>tty")
            run.stderrTerminal = true;
        else if (*w == "^C")
            run.whileRunning = [sent = false](const std::string& out, pid_t pid) mutable {
                if (!sent && out.find('\n') != std::string::npos)
                    sent = kill(pid, SIGINT) == 0;
            };
        else
            run.args.push_back(*w);
    }
    return run;
}

std::vector<nlohmann::json> ZebreaderTool::jsonLines(const std::string& text)
{
    std::vector<nlohmann::json> out;
    for (const auto& line : lines(text)) {
        out.push_back(nlohmann::json::parse(line, nullptr, false));
        EXPECT_FALSE(out.back().is_discarded()) << line;
    }
    return out;
}

void ZebreaderTool::expectText(const std::string& text, const std::vector<std::string>& want) const
{
    for (const auto& w : want) {
        const std::string part = atDir(w.substr(w.find_first_of("=~!") == 0), dir.path());
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

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> out;
    std::stringstream in(text);
    for (std::string line; std::getline(in, line);)
        out.push_back(line);
    return out;
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

} // namespace zebreader81::test
