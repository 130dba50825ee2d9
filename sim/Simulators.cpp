#include "sim/Simulators.h"

#include "sim/SheetFile.h"
#include "sim/chatsworth/ChatsworthSimulator.h"
#include "sim/ezdata/EZDataSimulator.h"
#include "sim/ncs/OpScanSimulator.h"
#include "sim/pdi/PdiSimulator.h"
#include "sim/samples/Samples.h"
#include "sim/scantron/ScanMarkSimulator.h"

#include <algorithm>
#include <charconv>

namespace zebreader81::sim {

namespace {

enum class Kind { None, OpScan, ScanMark, PDI, EZData, Chatsworth };

Kind kindOf(int32_t t)
{
    switch (t) {
    case 2:
    case 3:
    case 4:
    case 5:
    case 6:
    case 25:
    case 26:
    case 31:
    case 32: return Kind::OpScan;
    case 11:
    case 12:
    case 13:
    case 14:
    case 15:
    case 16:
    case 17:
    case 27:
    case 28:
    case 29: return Kind::ScanMark;
    case 24: return Kind::PDI;
    case 23:
    case 37: return Kind::EZData;
    case 20:
    case 21:
    case 22:
    case 35:
    case 41: return Kind::Chatsworth;
    default: return Kind::None;
    }
}

struct FamilyEntry {
    Kind kind;
    SimulatedFamily family;
};

// clang-format off
const FamilyEntry families[] = {
    {Kind::OpScan,   {"opscan",   2,  "OpScan / iNSIGHT (types 2-6, 25, 26, 31, 32)"}},
    {Kind::ScanMark, {"scanmark", 14, "ScanMark / 8000 (types 11-17, 27-29)"}},
    {Kind::PDI,      {"pdi",      24, "PDI VMR138 (type 24)"}},
    {Kind::EZData,   {"ezdata",   23, "EZData (types 23, 37)"}},
    {Kind::Chatsworth, {"chatsworth", 20, "Chatsworth (types 20-22, 35, 41)"}},
};
// clang-format on

} // namespace

std::vector<SimulatedFamily> simulatedFamilies()
{
    std::vector<SimulatedFamily> out;
    for (const auto& e : families)
        out.push_back(e.family);
    return out;
}

int32_t simulatedReaderType(const std::string& familyOrModel)
{
    std::string lower = familyOrModel;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const auto& e : families)
        if (lower == e.family.name)
            return e.family.defaultReaderType;
    int32_t type = 0;
    const auto [end, ec] = std::from_chars(lower.data(), lower.data() + lower.size(), type);
    if (ec == std::errc{} && end == lower.data() + lower.size() && hasSimulator(type))
        return type;
    return 0;
}

bool hasSimulator(int32_t readerType) { return kindOf(readerType) != Kind::None; }

std::unique_ptr<Peer> makeSimulator(int32_t readerType, std::vector<Sheet> sheets)
{
    switch (kindOf(readerType)) {
    case Kind::OpScan: return std::make_unique<OpScanSimulator>(std::move(sheets));
    case Kind::ScanMark: return std::make_unique<ScanMarkSimulator>(readerType, std::move(sheets));
    case Kind::PDI: return std::make_unique<PdiSimulator>(std::move(sheets));
    case Kind::EZData: return std::make_unique<EZDataSimulator>(std::move(sheets));
    case Kind::Chatsworth: return std::make_unique<ChatsworthSimulator>(std::move(sheets));
    default: return nullptr;
    }
}

LineRate defaultLine(int32_t readerType)
{
    switch (kindOf(readerType)) {
    case Kind::OpScan: return {38400, 11.0}; // 7 data bits, odd parity, 2 stop bits
    case Kind::ScanMark:
        return {readerType == 29 ? 9600 : 19200, 11.0}; // 8 data bits, no parity, 2 stop bits
    case Kind::EZData:
    case Kind::Chatsworth: return {9600, 10.0}; // 7 data bits, even parity, 1 stop bit
    default: return {9600, 10.0};               // 8 data bits, no parity, 1 stop bit
    }
}

std::vector<Sheet> sampleSheets(int32_t readerType)
{
    const Kind kind = kindOf(readerType);
    if (kind == Kind::PDI || kind == Kind::EZData || kind == Kind::Chatsworth)
        return parseSheets(samples::answerCards, "answer-cards.txt");
    return parseSheets(samples::answerSheets, "answer-sheets.txt");
}

} // namespace zebreader81::sim
