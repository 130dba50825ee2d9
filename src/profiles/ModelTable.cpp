#include "profiles/ModelTable.h"

#include <array>

namespace zebreader81 {

namespace {

using F = Family;
constexpr uint16_t R = RoutesRejectEject, P = RoutesPrint, I = Imprinter, L = Probe, X = Dialect8000;

// clang-format off
constexpr std::array<ModelInfo, 42> models = {{
    {0,  "zebReaderTypeNone",                      "None",                                F::None,          0},
    {1,  "zebReaderTypeAppersonAdvantageLink",     "Apperson Advantage Link",             F::Apperson,      R},
    {2,  "zebReaderTypeNCSOpScan2",                "Scantron OpScan 2",                   F::OpScan,        R | P},
    {3,  "zebReaderTypeNCSOpScan3",                "Scantron OpScan 3",                   F::OpScan,        R | P},
    {4,  "zebReaderTypeNCSOpScan4",                "Scantron OpScan 4/4U",                F::OpScan,        R | P},
    {5,  "zebReaderTypeNCSOpScan5",                "Scantron OpScan 5",                   F::OpScan,        R | P},
    {6,  "zebReaderTypeNCSOpScan7",                "Scantron OpScan 7",                   F::OpScan,        R | P},
    {7,  "zebReaderTypeScanningSystemsSR601",      "Sekonic SR-601",                      F::SekonicSerial, R | P | I},
    {8,  "zebReaderTypeScanningSystemsSR607",      "Sekonic SR-607",                      F::SekonicSerial, R | P | I},
    {9,  "zebReaderTypeScanningSystemsSR700351",   "Sekonic SR-700-351",                  F::SekonicSerial, R | P | I},
    {10, "zebReaderTypeScanningSystemsSR700352",   "Sekonic SR-700-352",                  F::SekonicSerial, R | P | I},
    {11, "zebReaderTypeScantronScanMark2000",      "Scantron Scanmark 2000",              F::ScanMark,      R | P},
    {12, "zebReaderTypeScantronScanMark2250",      "Scantron Scanmark 2250",              F::ScanMark,      R | P},
    {13, "zebReaderTypeScantronScanMark2500",      "Scantron Scanmark 2500",              F::ScanMark,      R | P},
    {14, "zebReaderTypeScantronScanMark4000",      "Scantron Scanmark 4000",              F::ScanMark,      R | P},
    {15, "zebReaderTypeScantronScanMark5500",      "Scantron Scanmark 5500",              F::ScanMark,      R | P},
    {16, "zebReaderTypeScantron8000",              "Scantron 8000",                       F::ScanMark,      P | X},
    {17, "zebReaderTypeScantron8400",              "Scantron 8400",                       F::ScanMark,      P | X},
    {18, "zebReaderTypeAppersonGradeMaster",       "Apperson GradeMaster",                F::Apperson,      R | P},
    {19, "zebReaderTypeScanningSystemsSR410",      "Sekonic SR-410",                      F::SekonicSerial, P},
    {20, "zebReaderTypeChatsworthOMR1100",         "Chatsworth Data OMR1100",             F::Chatsworth,    P | L},
    {21, "zebReaderTypeChatsworthOMR2000",         "Chatsworth Data OMR2000",             F::Chatsworth,    P | L},
    {22, "zebReaderTypeChatsworthALSAccelScanOMR", "Chatsworth Data ALS AccelScan OMR",   F::Chatsworth,    R | P | L},
    {23, "zebReaderTypeNCSEZData",                 "Scantron EZData",                     F::EZData,        R | P | L},
    {24, "zebReaderTypePDIVMR138",                 "Peripheral Dynamics Inc. VMR138",     F::PDI,           R | P},
    {25, "zebReaderTypeNCSOpScan6",                "Scantron OpScan 6",                   F::OpScan,        R | P},
    {26, "zebReaderTypeNCSOpScan8",                "Scantron OpScan 8",                   F::OpScan,        R | P},
    {27, "zebReaderTypeScantronScanMarkES2010",    "Scantron Scanmark ES 2010",           F::ScanMark,      P},
    {28, "zebReaderTypeScantronScanMarkES2260",    "Scantron Scanmark ES 2260",           F::ScanMark,      P},
    {29, "zebReaderTypeScantronScanMarkES2800",    "Scantron Scanmark ES 2800",           F::ScanMark,      R | P},
    {30, "zebReaderTypeSekonicSR2300",             "Sekonic SR2300 (USB)",                F::SekonicUSB,    R | P},
    {31, "zebReaderTypeNCSOpScaniNSIGHT4",         "Scantron iNSIGHT 4 (OMR)",            F::OpScan,        R | P},
    {32, "zebReaderTypeNCSOpScaniNSIGHT2",         "Scantron iNSIGHT 2 (OMR)",            F::OpScan,        R | P},
    {33, "zebReaderTypeSekonicSR3500",             "Sekonic SR3500 (USB)",                F::SekonicUSB,    R | P},
    {34, "zebReaderTypeSekonicSR6500",             "Sekonic SR6500 (USB)",                F::SekonicUSB,    R | P},
    {35, "zebReaderTypeChatsworthACF200",          "Chatsworth Data ACF-200",             F::Chatsworth,    P | L},
    {36, "zebReaderTypeSekonicSR1800",             "Sekonic SR1800 (USB)",                F::SekonicUSB,    R | P},
    // Named for the Chatsworth ACF-100, served by the EZData family.
    {37, "zebReaderTypeChatsworthACF100",          "Chatsworth Data ACP-100",             F::EZData,        R | L},
    {38, "zebReaderTypeSekonicSR430",              "Sekonic SR-430",                      F::SekonicSerial, 0},
    {39, "zebReaderTypeAppersonBenchMark3000",     "Apperson BenchMark 3000",             F::Apperson,      R},
    {40, "zebReaderTypeAppersonAdvantage1200",     "Apperson Advantage 1200",             F::Apperson,      R},
    {41, "zebReaderTypeChatsworthACP200",          "Chatsworth Data ACP-200",             F::Chatsworth,    L},
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
