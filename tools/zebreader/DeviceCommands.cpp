// zebreader locate / zebreader firmware: the port probe and firmware query of the models
// that answer them.
#include "CommandLine.h"
#include "ErrorSink.h"
#include "Simulation.h"

#include "zebreader81/clsZEBReader.h"

#include <iostream>

namespace zebreader::cli {

using namespace zebreader81;

namespace {

struct DeviceOptions {
    std::string model;
    int startPort = 0;
    std::optional<int> port;
    std::string device;
    bool simulate = false;
};

// The reader with the model's defaults; a simulator on `simPort` when asked for.
std::unique_ptr<Simulation> prepare(clsZEBReader& reader, const DeviceOptions& o, int simPort)
{
    if (o.model.empty())
        throw UsageError("--model is required");
    const zebReaderType type = parseModel(o.model);
    if (o.simulate && !o.device.empty())
        throw UsageError("--simulate and --device exclude each other");
    std::unique_ptr<Simulation> simulation;
    if (o.simulate)
        simulation = std::make_unique<Simulation>(type, "", simPort);
    if (!o.device.empty())
        mapPortForRun(o.port.value_or(1), o.device);
    reader.LoadDefaults(type);
    return simulation;
}

int runLocate(const DeviceOptions& o)
{
    auto errors = ErrorSink::install(!stdoutIsTerminal());
    clsZEBReader reader;
    const auto simulation = prepare(reader, o, o.startPort > 0 ? o.startPort : 1);
    if (!reader.Locate(static_cast<int16_t>(o.startPort))) {
        std::cerr << "zebreader: no " << reader.ReaderName() << " answered on ports "
                  << (o.startPort > 0 ? std::to_string(o.startPort) + ", " : "") << "1 to 16\n";
        return ExitFailed;
    }
    std::cout << reader.Port() << "\n";
    return errors->count() == 0 ? ExitOk : ExitFailed;
}

int runFirmware(const DeviceOptions& o)
{
    auto errors = ErrorSink::install(!stdoutIsTerminal());
    clsZEBReader reader;
    const auto simulation = prepare(reader, o, o.port.value_or(1));
    if (o.port)
        reader.Port(static_cast<int16_t>(*o.port));
    std::string firmware;
    if (!reader.Firmware(firmware)) {
        std::cerr << "zebreader: no firmware text from " << reader.ReaderName() << " on port "
                  << reader.Port() << "\n";
        return ExitFailed;
    }
    std::cout << firmware << "\n";
    return errors->count() == 0 ? ExitOk : ExitFailed;
}

} // namespace

void addDeviceCommands(CLI::App& app, int& status)
{
    auto locateOptions = std::make_shared<DeviceOptions>();
    auto* locate = app.add_subcommand("locate", "Search ports 1-16 for the scanner and print the port found");
    locate->add_option("--model", locateOptions->model, "Model: a number 0-41 or a display name")->required();
    locate->add_option("--start-port", locateOptions->startPort, "Port to try first")
        ->check(CLI::Range(0, 32767));
    locate->add_flag("--simulate", locateOptions->simulate,
                     "Search for the built-in simulator (on the start port, or 1)");
    locate->callback([locateOptions, &status] { status = runLocate(*locateOptions); });

    auto firmwareOptions = std::make_shared<DeviceOptions>();
    auto* firmware = app.add_subcommand("firmware", "Ask the scanner for its firmware text");
    firmware->add_option("--model", firmwareOptions->model, "Model: a number 0-41 or a display name")
        ->required();
    auto* port = firmware->add_option("--port", firmwareOptions->port, "COM port number");
    firmware->add_option("--device", firmwareOptions->device, "Serial device to use as the port")
        ->excludes(port);
    firmware->add_flag("--simulate", firmwareOptions->simulate, "Ask the built-in simulator");
    firmware->callback([firmwareOptions, &status] { status = runFirmware(*firmwareOptions); });
}

} // namespace zebreader::cli
