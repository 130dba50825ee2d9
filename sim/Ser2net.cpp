#include "sim/Ser2net.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <netinet/in.h>
#include <spawn.h>
#include <sstream>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace zebreader81::sim {

namespace {

using namespace std::chrono;
namespace fs = std::filesystem;

constexpr auto startLimit = seconds(5);
constexpr auto stopLimit = seconds(2);
constexpr auto look = milliseconds(10);

// A port of 127.0.0.1 nobody listens on now (the kernel's pick for an ephemeral bind).
uint16_t freePort()
{
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof a;
    uint16_t port = 0;
    if (fd >= 0 && bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0 &&
        getsockname(fd, reinterpret_cast<sockaddr*>(&a), &len) == 0)
        port = ntohs(a.sin_port);
    if (fd >= 0)
        close(fd);
    return port;
}

// True when something listens on 127.0.0.1:`port`; read from the kernel's table, since a test
// connection would make the server open the line.
bool listeningOn(uint16_t port)
{
    std::ifstream table("/proc/net/tcp");
    std::string line;
    std::getline(table, line);
    std::ostringstream wanted;
    wanted << std::uppercase << std::hex;
    wanted.width(4);
    wanted.fill('0');
    wanted << port;
    while (std::getline(table, line)) {
        std::istringstream fields(line);
        std::string slot, local, remote, state;
        fields >> slot >> local >> remote >> state;
        if (state == "0A" && local == "0100007F:" + wanted.str())
            return true;
    }
    return false;
}

// Waits for the child to end, `limit` at most; True when it did.
bool reap(pid_t pid, milliseconds limit)
{
    const auto until = steady_clock::now() + limit;
    do {
        if (waitpid(pid, nullptr, WNOHANG) == pid)
            return true;
        std::this_thread::sleep_for(look);
    } while (steady_clock::now() < until);
    return false;
}

} // namespace

std::string Ser2net::program()
{
    std::vector<std::string> dirs;
    if (const char* path = std::getenv("PATH")) {
        std::istringstream in(path);
        for (std::string d; std::getline(in, d, ':');)
            dirs.push_back(d);
    }
    dirs.insert(dirs.end(), {"/usr/sbin", "/sbin", "/usr/local/sbin"});
    for (const auto& d : dirs) {
        const auto candidate = fs::path(d) / "ser2net";
        if (!d.empty() && access(candidate.c_str(), X_OK) == 0)
            return candidate.string();
    }
    return {};
}

Ser2net::Ser2net(const std::string& device, Mode mode)
{
    const std::string exe = program();
    const uint16_t port = freePort();
    std::string dir = (fs::temp_directory_path() / "zebreader-ser2net-XXXXXX").string();
    if (exe.empty() || port == 0 || !mkdtemp(dir.data()))
        return;
    dir_ = dir;
    const bool telnet = mode == Mode::Rfc2217;
    const std::string portText = std::to_string(port);
    url_ = (telnet ? "rfc2217://127.0.0.1:" : "socket://127.0.0.1:") + portText;
    {
        std::ofstream config(dir_ + "/ser2net.yaml");
        config << "%YAML 1.1\n---\n"
               << "connection: &zebreader\n"
               << "  accepter: " << (telnet ? "telnet(rfc2217),tcp,127.0.0.1," : "tcp,127.0.0.1,") << portText
               << "\n"
               << "  connector: serialdev," << device << ",9600n81,local\n"
               << "  options:\n"
               << "    kickolduser: true\n";
    }
    const std::string config = dir_ + "/ser2net.yaml", pidFile = dir_ + "/ser2net.pid", log = dir_ + "/log";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    // -n: stay in the foreground, -u: no UUCP lock files.
    std::vector<std::string> args{exe, "-n", "-u", "-c", config, "-P", pidFile};
    std::vector<char*> argv;
    for (auto& a : args)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_t pid = -1;
    const int rc = posix_spawn(&pid, exe.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0)
        return;
    pid_ = pid;
    const auto until = steady_clock::now() + startLimit;
    while (!(listening_ = listeningOn(port)) && steady_clock::now() < until) {
        if (waitpid(pid_, nullptr, WNOHANG) == pid_) {
            pid_ = -1;
            return;
        }
        std::this_thread::sleep_for(look);
    }
}

Ser2net::~Ser2net()
{
    if (pid_ > 0) {
        ::kill(pid_, SIGTERM);
        if (!reap(pid_, stopLimit)) {
            ::kill(pid_, SIGKILL);
            reap(pid_, stopLimit);
        }
    }
    if (!dir_.empty()) {
        std::error_code ec;
        fs::remove_all(dir_, ec);
    }
}

void Ser2net::kill()
{
    if (pid_ <= 0)
        return;
    ::kill(pid_, SIGKILL);
    reap(pid_, stopLimit);
    pid_ = -1;
}

std::string Ser2net::log() const
{
    std::ifstream in(dir_ + "/log");
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

} // namespace zebreader81::sim
