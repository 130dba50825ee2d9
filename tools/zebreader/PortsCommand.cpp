// zebreader ports: the serial devices present and the COM port map; `ports map N PATH`
// stores a mapping.
#include "CommandLine.h"

#include "channel/NetworkPort.h"
#include "registry/PortMap.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <regex>

namespace zebreader::cli {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;

namespace {

// Serial devices by their kernel name, with the stable by-id name where there is one.
std::map<std::string, std::string> serialDevices()
{
    std::map<std::string, std::string> devices;
    std::error_code ec;
    const std::regex tty("tty(S|USB|ACM|AMA|XRUSB|mxc)[0-9]+");
    for (const auto& entry : fs::directory_iterator("/dev", ec))
        if (std::regex_match(entry.path().filename().string(), tty))
            devices.emplace(entry.path().string(), "");
    for (const auto& entry : fs::directory_iterator("/dev/serial/by-id", ec)) {
        const auto target = fs::canonical(entry.path(), ec);
        if (!ec)
            devices[target.string()] = entry.path().string();
    }
    return devices;
}

// Where COM `port` leads, and why: the environment, the stored map, or the default device.
std::pair<std::string, std::string> resolve(int port)
{
    const std::string path = portPath(port);
    if (const char* env = std::getenv(("ZEBREADER_COM" + std::to_string(port)).c_str()); env && *env)
        return {path, "environment"};
    if (auto stored = zebreader81::storedPortPath(port); stored && !stored->empty())
        return {path, "stored"};
    return {path, "default"};
}

int runList(bool asJson)
{
    const auto devices = serialDevices();
    json j = {{"devices", json::array()}, {"ports", json::array()}};
    if (!asJson)
        std::cout << "Serial devices:\n";
    for (const auto& [path, byId] : devices) {
        j["devices"].push_back({{"path", path}, {"byId", byId}});
        if (!asJson)
            std::cout << "  " << path << (byId.empty() ? "" : "  " + byId) << "\n";
    }
    if (!asJson)
        std::cout << "COM ports:\n";
    for (int port = 1; port <= 16; ++port) {
        const auto [path, from] = resolve(port);
        // Whether a server answers is only known by connecting, which would take its line.
        const bool network = zebreader81::isNetworkPort(path);
        std::error_code ec;
        const bool present = !network && fs::exists(path, ec);
        json entry = {{"port", port}, {"path", path}, {"from", from}};
        if (network)
            entry["network"] = true;
        else
            entry["present"] = present;
        j["ports"].push_back(entry);
        if (!asJson)
            std::cout << "  COM" << port << (port < 10 ? "  " : " ") << path << "  (" << from
                      << (network   ? ", network"
                          : present ? ""
                                    : ", absent")
                      << ")\n";
    }
    if (asJson)
        std::cout << j.dump() << "\n";
    return ExitOk;
}

int runMap(int port, const std::string& given)
{
    // The map is read from other folders later: a relative path would lead elsewhere. The
    // link itself is kept, so a /dev/serial/by-id name still follows the scanner.
    std::error_code ec;
    const std::string path = given.empty() ? given : fs::absolute(given, ec).lexically_normal().string();
    if (!zebreader81::storePortPath(port, path)) {
        std::cerr << "zebreader: could not store the mapping of COM" << port << "\n";
        return ExitFailed;
    }
    if (path.empty())
        std::cout << "COM" << port << " no longer mapped\n";
    else
        std::cout << "COM" << port << " -> " << path << "\n";
    return ExitOk;
}

} // namespace

void addPortsCommand(CLI::App& app, int& status)
{
    auto asJson = std::make_shared<bool>(false);
    auto* ports = app.add_subcommand("ports", "List serial devices and the COM port map");
    ports->add_flag("--json", *asJson, "Print json");
    auto port = std::make_shared<int>(0);
    auto path = std::make_shared<std::string>();
    auto* map = ports->add_subcommand(
        "map", "Store the device path or network port of a COM port (an empty PATH removes it)");
    map->add_option("N", *port, "COM port number")->required()->check(CLI::Range(1, 16));
    map->add_option("PATH", *path,
                    "Device path (e.g. /dev/serial/by-id/...) or network port (socket://HOST:PORT, "
                    "rfc2217://HOST:PORT), stored as given")
        ->required();
    map->callback([port, path, &status] { status = runMap(*port, *path); });
    ports->callback([ports, asJson, &status] {
        if (ports->get_subcommands().empty())
            status = runList(*asJson);
    });
}

} // namespace zebreader::cli
