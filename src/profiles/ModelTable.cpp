#include "profiles/ModelTable.h"

#include <array>

namespace zebreader81 {

namespace {

using F = Family;

// clang-format off
constexpr std::array<ModelInfo, 42> models = {{
    {0,  "zebReaderTypeNone",                      "None",                                F::None},
    {1,  "zebReaderTypeAppersonAdvantageLink",     "Apperson Advantage Link",             F::Apperson},
    {2,  "zebReaderTypeNCSOpScan2",                "Scantron OpScan 2",                   F::OpScan},
    {3,  "zebReaderTypeNCSOpScan3",                "Scantron OpScan 3",                   F::OpScan},
    {4,  "zebReaderTypeNCSOpScan4",                "Scantron OpScan 4/4U",                F::OpScan},
    {5,  "zebReaderTypeNCSOpScan5",                "Scantron OpScan 5",                   F::OpScan},
    {6,  "zebReaderTypeNCSOpScan7",                "Scantron OpScan 7",                   F::OpScan},
    {7,  "zebReaderTypeScanningSystemsSR601",      "Sekonic SR-601",                      F::SekonicSerial},
    {8,  "zebReaderTypeScanningSystemsSR607",      "Sekonic SR-607",                      F::SekonicSerial},
    {9,  "zebReaderTypeScanningSystemsSR700351",   "Sekonic SR-700-351",                  F::SekonicSerial},
    {10, "zebReaderTypeScanningSystemsSR700352",   "Sekonic SR-700-352",                  F::SekonicSerial},
    {11, "zebReaderTypeScantronScanMark2000",      "Scantron Scanmark 2000",              F::ScanMark},
    {12, "zebReaderTypeScantronScanMark2250",      "Scantron Scanmark 2250",              F::ScanMark},
    {13, "zebReaderTypeScantronScanMark2500",      "Scantron Scanmark 2500",              F::ScanMark},
    {14, "zebReaderTypeScantronScanMark4000",      "Scantron Scanmark 4000",              F::ScanMark},
    {15, "zebReaderTypeScantronScanMark5500",      "Scantron Scanmark 5500",              F::ScanMark},
    {16, "zebReaderTypeScantron8000",              "Scantron 8000",                       F::ScanMark},
    {17, "zebReaderTypeScantron8400",              "Scantron 8400",                       F::ScanMark},
    {18, "zebReaderTypeAppersonGradeMaster",       "Apperson GradeMaster",                F::Apperson},
    {19, "zebReaderTypeScanningSystemsSR410",      "Sekonic SR-410",                      F::SekonicSerial},
    {20, "zebReaderTypeChatsworthOMR1100",         "Chatsworth Data OMR1100",             F::Chatsworth},
    {21, "zebReaderTypeChatsworthOMR2000",         "Chatsworth Data OMR2000",             F::Chatsworth},
    {22, "zebReaderTypeChatsworthALSAccelScanOMR", "Chatsworth Data ALS AccelScan OMR",   F::Chatsworth},
    {23, "zebReaderTypeNCSEZData",                 "Scantron EZData",                     F::EZData},
    {24, "zebReaderTypePDIVMR138",                 "Peripheral Dynamics Inc. VMR138",     F::PDI},
    {25, "zebReaderTypeNCSOpScan6",                "Scantron OpScan 6",                   F::OpScan},
    {26, "zebReaderTypeNCSOpScan8",                "Scantron OpScan 8",                   F::OpScan},
    {27, "zebReaderTypeScantronScanMarkES2010",    "Scantron Scanmark ES 2010",           F::ScanMark},
    {28, "zebReaderTypeScantronScanMarkES2260",    "Scantron Scanmark ES 2260",           F::ScanMark},
    {29, "zebReaderTypeScantronScanMarkES2800",    "Scantron Scanmark ES 2800",           F::ScanMark},
    {30, "zebReaderTypeSekonicSR2300",             "Sekonic SR2300 (USB)",                F::SekonicUSB},
    {31, "zebReaderTypeNCSOpScaniNSIGHT4",         "Scantron iNSIGHT 4 (OMR)",            F::OpScan},
    {32, "zebReaderTypeNCSOpScaniNSIGHT2",         "Scantron iNSIGHT 2 (OMR)",            F::OpScan},
    {33, "zebReaderTypeSekonicSR3500",             "Sekonic SR3500 (USB)",                F::SekonicUSB},
    {34, "zebReaderTypeSekonicSR6500",             "Sekonic SR6500 (USB)",                F::SekonicUSB},
    {35, "zebReaderTypeChatsworthACF200",          "Chatsworth Data ACF-200",             F::Chatsworth},
    {36, "zebReaderTypeSekonicSR1800",             "Sekonic SR1800 (USB)",                F::SekonicUSB},
    // Named for the Chatsworth ACF-100, served by the EZData family.
    {37, "zebReaderTypeChatsworthACF100",          "Chatsworth Data ACP-100",             F::EZData},
    {38, "zebReaderTypeSekonicSR430",              "Sekonic SR-430",                      F::SekonicSerial},
    {39, "zebReaderTypeAppersonBenchMark3000",     "Apperson BenchMark 3000",             F::Apperson},
    {40, "zebReaderTypeAppersonAdvantage1200",     "Apperson Advantage 1200",             F::Apperson},
    {41, "zebReaderTypeChatsworthACP200",          "Chatsworth Data ACP-200",             F::Chatsworth},
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
