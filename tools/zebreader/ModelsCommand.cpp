// zebreader models / zebreader profile MODEL: the catalogue as a table or as json.
#include "CommandLine.h"
#include "ModelName.h"

#include "profiles/ModelTable.h"
#include "sim/Simulators.h"
#include "zebreader81/clsZEBReaderProfile.h"
#include "zebreader81/clsZEBReaderProfiles.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <iostream>

namespace zebreader::cli {

using namespace zebreader81;
using json = nlohmann::ordered_json;

namespace {

// What a cell of a side array holds, by family.
const char* markScale(Family f)
{
    switch (f) {
    case Family::OpScan: return "0-15";
    case Family::ScanMark: return "0-15 (8000/8400: the byte read)";
    case Family::EZData:
    case Family::Chatsworth:
    case Family::PDI: return "0 or threshold+1";
    default: return "";
    }
}

const char* interfaceName(zebReaderInterfaceType t)
{
    return t == zebReaderInterfaceTypeUSB ? "USB" : "Serial";
}

int runModels(bool asJson)
{
    clsZEBReaderProfiles profiles;
    json list = json::array();
    if (!asJson)
        std::printf("%-3s %-36s %-14s %-7s %-5s %-10s %s\n", "No", "Model", "Family", "Port", "Reads",
                    "Simulated", "Marks");
    for (int32_t t = 0; modelInfo(t); ++t) {
        const auto profile = profiles.Item(std::to_string(t));
        const auto itf = profile ? profile->InterfaceType() : zebReaderInterfaceTypeSerial;
        const Family family = familyOf(t);
        const bool reads = familyReads(family);
        const bool simulated = sim::hasSimulator(t);
        if (asJson) {
            list.push_back({{"number", t},
                            {"name", modelInfo(t)->displayName},
                            {"family", familyName(family)},
                            {"interface", interfaceName(itf)},
                            {"reads", reads},
                            {"simulated", simulated},
                            {"marks", markScale(family)}});
        } else {
            std::printf("%-3d %-36s %-14s %-7s %-5s %-10s %s\n", t, modelInfo(t)->displayName,
                        familyName(family), interfaceName(itf), reads ? "yes" : "no",
                        simulated ? "yes" : "no", markScale(family));
        }
    }
    if (asJson)
        std::cout << list.dump() << "\n";
    return ExitOk;
}

json profileJson(const clsZEBReaderProfile& p)
{
    json j;
    j["number"] = static_cast<int>(p.ReaderType());
    j["name"] = p.ReaderName();
    j["family"] = familyName(familyOf(p.ReaderType()));
    j["interface"] = interfaceName(p.InterfaceType());
    j["marks"] = markScale(familyOf(p.ReaderType()));
    auto triple = [&j](const char* name, auto value, bool enabled, bool visible) {
        j[name] = value;
        j[std::string(name) + "Enabled"] = enabled;
        j[std::string(name) + "Visible"] = visible;
    };
    triple("BaudRate", static_cast<int32_t>(p.BaudRate()), p.BaudRateEnabled(), p.BaudRateVisible());
    triple("Parity", p.Parity(), p.ParityEnabled(), p.ParityVisible());
    triple("DataBits", static_cast<int32_t>(p.DataBits()), p.DataBitsEnabled(), p.DataBitsVisible());
    triple("StopBits", p.StopBits(), p.StopBitsEnabled(), p.StopBitsVisible());
    triple("FlowControl", static_cast<int32_t>(p.FlowControl()), p.FlowControlEnabled(),
           p.FlowControlVisible());
    j["PortEnabled"] = p.PortEnabled();
    j["PortVisible"] = p.PortVisible();
    triple("SleepTime", p.SleepTime(), p.SleepTimeEnabled(), p.SleepTimeVisible());
    triple("TimeOut", p.TimeOut(), p.TimeOutEnabled(), p.TimeOutVisible());
    j["MarkCutOff"] = p.MarkCutOff();
    triple("MarkDiscrimination", p.MarkDiscrimination(), p.MarkDiscriminationEnabled(),
           p.MarkDiscriminationVisible());
    triple("RecognitionThreshold", p.RecognitionThreshold(), p.RecognitionThresholdEnabled(),
           p.RecognitionThresholdVisible());
    j["RecognitionThresholdMinimum"] = p.RecognitionThresholdMinimum();
    j["RecognitionThresholdMaximum"] = p.RecognitionThresholdMaximum();
    j["MaxCols"] = p.MaxCols();
    triple("ReaderGrade", p.ReaderGrade(), p.ReaderGradeEnabled(), p.ReaderGradeVisible());
    triple("Barcode", p.Barcode(), p.BarcodeEnabled(), p.BarcodeVisible());
    triple("Duplex", p.Duplex(), p.DuplexEnabled(), p.DuplexVisible());
    triple("Feeder", p.Feeder(), p.FeederEnabled(), p.FeederVisible());
    triple("Rejecter", p.Rejecter(), p.RejecterEnabled(), p.RejecterVisible());
    triple("Printer", p.Printer(), p.PrinterEnabled(), p.PrinterVisible());
    triple("Windowing", p.Windowing(), p.WindowingEnabled(), p.WindowingVisible());
    j["LocateEnabled"] = p.LocateEnabled();
    j["FirmwareEnabled"] = p.FirmwareEnabled();
    return j;
}

int runProfile(const std::string& model, bool asJson)
{
    const zebReaderType type = parseModel(model);
    clsZEBReaderProfiles profiles;
    const auto profile = profiles.Item(std::to_string(static_cast<int>(type)));
    if (!profile) {
        std::cerr << "zebreader: model " << static_cast<int>(type) << " has no profile\n";
        return ExitFailed;
    }
    const json j = profileJson(*profile);
    if (asJson) {
        std::cout << j.dump() << "\n";
        return ExitOk;
    }
    for (const auto& [key, value] : j.items())
        std::cout << key << ": " << (value.is_string() ? value.get<std::string>() : value.dump()) << "\n";
    return ExitOk;
}

} // namespace

void addModelsCommands(CLI::App& app, int& status)
{
    auto modelsJson = std::make_shared<bool>(false);
    auto* models = app.add_subcommand("models", "List the models: number, name, family, interface, support");
    models->add_flag("--json", *modelsJson, "One json array");
    models->callback([modelsJson, &status] { status = runModels(*modelsJson); });

    auto model = std::make_shared<std::string>();
    auto profileJsonFlag = std::make_shared<bool>(false);
    auto* profile = app.add_subcommand("profile", "Show one model's profile (factory settings and options)");
    profile->add_option("MODEL", *model, modelSyntax)->required();
    profile->add_flag("--json", *profileJsonFlag, "One json object");
    profile->callback([model, profileJsonFlag, &status] { status = runProfile(*model, *profileJsonFlag); });
}

} // namespace zebreader::cli
