// zebreader locate / zebreader firmware: the port probe and firmware query of the models
// that answer them.
#include "CommandLine.h"
#include "ErrorSink.h"
#include "ModelName.h"
#include "Simulation.h"

#include "profiles/ModelTable.h"
#include "zebreader81/clsZEBReaderProfile.h"
#include "zebreader81/clsZEBReaderProfiles.h"

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

// Only the EZData and Chatsworth protocols have the port probe and the firmware query, and
// only where the model's profile enables them.
bool answers(int32_t type, bool locate)
{
    const Family family = familyOf(type);
    if (family != Family::EZData && family != Family::Chatsworth)
        return false;
    clsZEBReaderProfiles profiles;
    const auto profile = profiles.Item(std::to_string(type));
    return profile && (locate ? profile->LocateEnabled() : profile->FirmwareEnabled());
}

void requireAnswers(zebReaderType type, bool locate)
{
    if (answers(type, locate))
        return;
    std::string models;
    for (int32_t t = 1; t <= 41; ++t)
        if (answers(t, locate))
            models += (models.empty() ? "" : ", ") + std::to_string(t);
    throw UsageError(std::string("the ") + modelInfo(type)->displayName + " does not answer " +
                     (locate ? "the port search" : "the firmware query") + "; models that do: " + models);
}

// The reader with the model's defaults; a simulator on `simPort` when asked for.
std::unique_ptr<Simulation> prepare(clsZEBReader& reader, const DeviceOptions& o, int simPort, bool locate)
{
    if (o.model.empty())
        throw UsageError("--model is required");
    const zebReaderType type = parseModel(o.model);
    requireAnswers(type, locate);
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
    const auto simulation = prepare(reader, o, o.startPort > 0 ? o.startPort : 1, true);
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
    const auto simulation = prepare(reader, o, o.port.value_or(1), false);
    if (o.port)
        reader.Port(static_cast<int16_t>(*o.port));
    errors->setPort(reader.Port(), portPath(reader.Port()));
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
    locate->add_option("--model", locateOptions->model, std::string("Model: ") + modelSyntax)->required();
    locate->add_option("--start-port", locateOptions->startPort, "Port to try first")
        ->check(CLI::Range(0, 16));
    locate->add_flag("--simulate", locateOptions->simulate,
                     "Search for the built-in simulator (on the start port, or 1)");
    locate->callback([locateOptions, &status] { status = runLocate(*locateOptions); });

    auto firmwareOptions = std::make_shared<DeviceOptions>();
    auto* firmware = app.add_subcommand("firmware", "Ask the scanner for its firmware text");
    firmware->add_option("--model", firmwareOptions->model, std::string("Model: ") + modelSyntax)->required();
    auto* port = firmware->add_option("--port", firmwareOptions->port, "COM port number (1-16)")
                     ->check(CLI::Range(1, 16));
    firmware->add_option("--device", firmwareOptions->device, "Serial device to use as the port")
        ->excludes(port);
    firmware->add_flag("--simulate", firmwareOptions->simulate, "Ask the built-in simulator");
    firmware->callback([firmwareOptions, &status] { status = runFirmware(*firmwareOptions); });
}

} // namespace zebreader::cli
