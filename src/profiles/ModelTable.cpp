#include "profiles/ModelTable.h"

#include <array>

namespace zebreader81 {

namespace {

constexpr uint16_t R = RoutesRejectEject, P = RoutesPrint, L = Probe, X = Dialect8000;
constexpr auto U = PrinterEnable::Untouched, N = PrinterEnable::Never, F = PrinterEnable::Follows;

// Capabilities: R reject/eject routed, P print routed, L probe, X 8000 dialect.
// Imprinter: Enabled rule, lines, position range, characters.
// clang-format off
constexpr std::array<ModelInfo, 42> models = {{
    {0,  "zebReaderTypeNone",                      "None",                                Family::None,          0,         {U, 0, -1,  -1,  -1}},
    {1,  "zebReaderTypeAppersonAdvantageLink",     "Apperson Advantage Link",             Family::Apperson,      R,         {N, 0, -1,  -1,  -1}},
    {2,  "zebReaderTypeNCSOpScan2",                "Scantron OpScan 2",                   Family::OpScan,        R | P,     {F, 1,  0,  24,  24}},
    {3,  "zebReaderTypeNCSOpScan3",                "Scantron OpScan 3",                   Family::OpScan,        R | P,     {F, 1,  0,  24,  24}},
    {4,  "zebReaderTypeNCSOpScan4",                "Scantron OpScan 4/4U",                Family::OpScan,        R | P,     {F, 1,  0,  24,  24}},
    {5,  "zebReaderTypeNCSOpScan5",                "Scantron OpScan 5",                   Family::OpScan,        R | P,     {F, 1,  0,  40,  40}},
    {6,  "zebReaderTypeNCSOpScan7",                "Scantron OpScan 7",                   Family::OpScan,        R | P,     {F, 1, 10,  25,  25}},
    {7,  "zebReaderTypeScanningSystemsSR601",      "Sekonic SR-601",                      Family::SekonicSerial, R | P,     {F, 3, 10, 245,  41}},
    {8,  "zebReaderTypeScanningSystemsSR607",      "Sekonic SR-607",                      Family::SekonicSerial, R | P,     {F, 3, 10, 245,  41}},
    {9,  "zebReaderTypeScanningSystemsSR700351",   "Sekonic SR-700-351",                  Family::SekonicSerial, R | P,     {F, 3, 10, 245,  41}},
    {10, "zebReaderTypeScanningSystemsSR700352",   "Sekonic SR-700-352",                  Family::SekonicSerial, R | P,     {F, 3, 10, 245,  41}},
    {11, "zebReaderTypeScantronScanMark2000",      "Scantron Scanmark 2000",              Family::ScanMark,      R | P,     {F, 1,  0, 135, 135}},
    {12, "zebReaderTypeScantronScanMark2250",      "Scantron Scanmark 2250",              Family::ScanMark,      R | P,     {F, 1,  0, 135, 135}},
    {13, "zebReaderTypeScantronScanMark2500",      "Scantron Scanmark 2500",              Family::ScanMark,      R | P,     {F, 1,  0, 135, 135}},
    {14, "zebReaderTypeScantronScanMark4000",      "Scantron Scanmark 4000",              Family::ScanMark,      R | P,     {F, 1,  0, 135, 135}},
    {15, "zebReaderTypeScantronScanMark5500",      "Scantron Scanmark 5500",              Family::ScanMark,      R | P,     {F, 1,  0, 135, 135}},
    {16, "zebReaderTypeScantron8000",              "Scantron 8000",                       Family::ScanMark,      P | X,     {F, 1,  0, 135, 135}},
    {17, "zebReaderTypeScantron8400",              "Scantron 8400",                       Family::ScanMark,      P | X,     {F, 1,  0, 135, 135}},
    {18, "zebReaderTypeAppersonGradeMaster",       "Apperson GradeMaster",                Family::Apperson,      R | P,     {N, 0, -1,  -1,  -1}},
    {19, "zebReaderTypeScanningSystemsSR410",      "Sekonic SR-410",                      Family::SekonicSerial, P,         {U, 0, -1,  -1,  -1}},
    {20, "zebReaderTypeChatsworthOMR1100",         "Chatsworth Data OMR1100",             Family::Chatsworth,    P | L,     {N, 0, -1,  -1,  -1}},
    {21, "zebReaderTypeChatsworthOMR2000",         "Chatsworth Data OMR2000",             Family::Chatsworth,    P | L,     {N, 0, -1,  -1,  -1}},
    {22, "zebReaderTypeChatsworthALSAccelScanOMR", "Chatsworth Data ALS AccelScan OMR",   Family::Chatsworth,    R | P | L, {N, 0, -1,  -1,  -1}},
    {23, "zebReaderTypeNCSEZData",                 "Scantron EZData",                     Family::EZData,        R | P | L, {N, 0, -1,  -1,  -1}},
    {24, "zebReaderTypePDIVMR138",                 "Peripheral Dynamics Inc. VMR138",     Family::PDI,           R | P,     {U, 0, -1,  -1,  -1}},
    {25, "zebReaderTypeNCSOpScan6",                "Scantron OpScan 6",                   Family::OpScan,        R | P,     {F, 1,  0,  25,  25}},
    {26, "zebReaderTypeNCSOpScan8",                "Scantron OpScan 8",                   Family::OpScan,        R | P,     {F, 1, 10,  54,  54}},
    {27, "zebReaderTypeScantronScanMarkES2010",    "Scantron Scanmark ES 2010",           Family::ScanMark,      P,         {F, 1,  0, 135, 135}},
    {28, "zebReaderTypeScantronScanMarkES2260",    "Scantron Scanmark ES 2260",           Family::ScanMark,      P,         {F, 1,  0, 135, 135}},
    {29, "zebReaderTypeScantronScanMarkES2800",    "Scantron Scanmark ES 2800",           Family::ScanMark,      R | P,     {F, 1,  0, 135, 135}},
    {30, "zebReaderTypeSekonicSR2300",             "Sekonic SR2300 (USB)",                Family::SekonicUSB,    R | P,     {F, 3, 10, 245,  41}},
    {31, "zebReaderTypeNCSOpScaniNSIGHT4",         "Scantron iNSIGHT 4 (OMR)",            Family::OpScan,        R | P,     {F, 1,  0,  24,  24}},
    {32, "zebReaderTypeNCSOpScaniNSIGHT2",         "Scantron iNSIGHT 2 (OMR)",            Family::OpScan,        R | P,     {F, 1,  0,  24,  24}},
    {33, "zebReaderTypeSekonicSR3500",             "Sekonic SR3500 (USB)",                Family::SekonicUSB,    R | P,     {F, 3, 10, 245,  41}},
    {34, "zebReaderTypeSekonicSR6500",             "Sekonic SR6500 (USB)",                Family::SekonicUSB,    R | P,     {F, 3, 10, 245,  41}},
    {35, "zebReaderTypeChatsworthACF200",          "Chatsworth Data ACF-200",             Family::Chatsworth,    P | L,     {N, 0, -1,  -1,  -1}},
    {36, "zebReaderTypeSekonicSR1800",             "Sekonic SR1800 (USB)",                Family::SekonicUSB,    R | P,     {F, 3, 10, 245,  41}},
    // Named for the Chatsworth ACF-100, served by the EZData family.
    {37, "zebReaderTypeChatsworthACF100",          "Chatsworth Data ACP-100",             Family::EZData,        R | L,     {N, 0, -1,  -1,  -1}},
    {38, "zebReaderTypeSekonicSR430",              "Sekonic SR-430",                      Family::SekonicSerial, 0,         {U, 0, -1,  -1,  -1}},
    {39, "zebReaderTypeAppersonBenchMark3000",     "Apperson BenchMark 3000",             Family::Apperson,      R,         {U, 0, -1,  -1,  -1}},
    {40, "zebReaderTypeAppersonAdvantage1200",     "Apperson Advantage 1200",             Family::Apperson,      R,         {U, 0, -1,  -1,  -1}},
    {41, "zebReaderTypeChatsworthACP200",          "Chatsworth Data ACP-200",             Family::Chatsworth,    L,         {N, 0, -1,  -1,  -1}},
}};
// clang-format on

} // namespace

const ModelInfo* modelInfo(int32_t type)
{
    if (type < 0 || type >= static_cast<int32_t>(models.size()))
        return nullptr;
    return &models[static_cast<std::size_t>(type)];
}

Family familyOf(int32_t type)
{
    const auto* m = modelInfo(type);
    return m ? m->family : Family::None;
}

const ImprinterInfo& imprinterOf(int32_t type)
{
    static constexpr ImprinterInfo none{PrinterEnable::Untouched, 0, -1, -1, -1};
    const auto* m = modelInfo(type);
    return m ? m->imprinter : none;
}

bool hasCapability(int32_t type, Capability capability)
{
    const auto* m = modelInfo(type);
    return m && (m->capabilities & capability) != 0;
}

bool familyReads(Family family)
{
    return family == Family::OpScan || family == Family::ScanMark || family == Family::EZData ||
           family == Family::PDI || family == Family::Chatsworth;
}

const char* familyName(Family family)
{
    switch (family) {
    case Family::Apperson: return "Apperson";
    case Family::OpScan: return "OpScan";
    case Family::SekonicSerial: return "Sekonic serial";
    case Family::ScanMark: return "ScanMark";
    case Family::Chatsworth: return "Chatsworth";
    case Family::EZData: return "EZData";
    case Family::PDI: return "PDI";
    case Family::SekonicUSB: return "Sekonic USB";
    case Family::None: break;
    }
    return "None";
}

} // namespace zebreader81
