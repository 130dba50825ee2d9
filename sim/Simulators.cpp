#include "sim/Simulators.h"

#include "profiles/ModelTable.h"
#include "sim/SheetFile.h"
#include "sim/chatsworth/ChatsworthSimulator.h"
#include "sim/ezdata/EZDataSimulator.h"
#include "sim/ncs/OpScanSimulator.h"
#include "sim/pdi/PdiSimulator.h"
#include "sim/samples/Samples.h"
#include "sim/scantron/ScanMarkSimulator.h"
#include "zebreader81/clsZEBReaderProfile.h"
#include "zebreader81/clsZEBReaderProfiles.h"

#include <algorithm>
#include <charconv>

namespace zebreader81::sim {

namespace {

struct FamilyEntry {
    Family family;
    const char* name;
    const char* title;
    int32_t defaultModel; // the model it stands for when only the family is named
};

// The families with a simulator.
const FamilyEntry families[] = {
    {Family::OpScan, "opscan", "OpScan / iNSIGHT", 2},
    {Family::ScanMark, "scanmark", "ScanMark / 8000", 14},
    {Family::PDI, "pdi", "PDI VMR138", 24},
    {Family::EZData, "ezdata", "EZData", 23},
    {Family::Chatsworth, "chatsworth", "Chatsworth", 20},
};

Family kindOf(int32_t type)
{
    const Family family = familyOf(type);
    for (const auto& e : families)
        if (e.family == family)
            return family;
    return Family::None;
}

// "types 2-6, 25, 26": runs of three or more models are written as a range.
std::string typeList(Family family)
{
    std::vector<int32_t> types;
    for (int32_t t = 0; modelInfo(t); ++t)
        if (familyOf(t) == family)
            types.push_back(t);
    std::string text = types.size() == 1 ? "type " : "types ";
    for (std::size_t i = 0; i < types.size();) {
        std::size_t end = i;
        while (end + 1 < types.size() && types[end + 1] == types[end] + 1)
            ++end;
        if (i > 0)
            text += ", ";
        if (end - i >= 2) {
            text += std::to_string(types[i]) + "-" + std::to_string(types[end]);
            i = end + 1;
        } else {
            text += std::to_string(types[i]);
            ++i;
        }
    }
    return text;
}

} // namespace

std::vector<SimulatedFamily> simulatedFamilies()
{
    // Built once: the descriptions are handed out as plain pointers.
    static const std::vector<std::string> descriptions = [] {
        std::vector<std::string> d;
        for (const auto& e : families)
            d.push_back(std::string(e.title) + " (" + typeList(e.family) + ")");
        return d;
    }();
    std::vector<SimulatedFamily> out;
    for (std::size_t i = 0; i < std::size(families); ++i)
        out.push_back({families[i].name, families[i].defaultModel, descriptions[i].c_str()});
    return out;
}

int32_t simulatedReaderType(const std::string& familyOrModel)
{
    std::string lower = familyOrModel;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const auto& e : families)
        if (lower == e.name)
            return e.defaultModel;
    int32_t type = 0;
    const auto [end, ec] = std::from_chars(lower.data(), lower.data() + lower.size(), type);
    if (ec == std::errc{} && end == lower.data() + lower.size() && hasSimulator(type))
        return type;
    return 0;
}

bool hasSimulator(int32_t readerType) { return kindOf(readerType) != Family::None; }

std::unique_ptr<Peer> makeSimulator(int32_t readerType, std::vector<Sheet> sheets)
{
    switch (kindOf(readerType)) {
    case Family::OpScan: return std::make_unique<OpScanSimulator>(std::move(sheets));
    case Family::ScanMark: return std::make_unique<ScanMarkSimulator>(readerType, std::move(sheets));
    case Family::PDI: return std::make_unique<PdiSimulator>(std::move(sheets));
    case Family::EZData: return std::make_unique<EZDataSimulator>(std::move(sheets));
    case Family::Chatsworth: return std::make_unique<ChatsworthSimulator>(std::move(sheets));
    default: return nullptr;
    }
}

LineRate defaultLine(int32_t readerType)
{
    const auto profile = clsZEBReaderProfiles().Item(std::to_string(readerType));
    if (!profile || profile->BaudRate() <= 0)
        return {9600, 10.0};
    const double bits = 1.0 + static_cast<double>(profile->DataBits()) +
                        (profile->Parity() == "N" ? 0.0 : 1.0) + profile->StopBits();
    return {profile->BaudRate(), bits};
}

std::vector<Sheet> sampleSheets(int32_t readerType)
{
    const Family kind = kindOf(readerType);
    if (kind == Family::PDI || kind == Family::EZData || kind == Family::Chatsworth)
        return parseSheets(samples::answerCards, "answer-cards.txt");
    return parseSheets(samples::answerSheets, "answer-sheets.txt");
}

} // namespace zebreader81::sim
