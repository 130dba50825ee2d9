// Public enumerations of the type library. Values are those a host stores and sends,
// so every enum takes any 32-bit value (a host may pass a number outside the list).
#pragma once

#include <cstdint>

namespace zebreader81 {

/// Scanner model; selects the driver family.
enum zebReaderType : int32_t {
    zebReaderTypeNone = 0,
    zebReaderTypeAppersonAdvantageLink = 1,
    zebReaderTypeNCSOpScan2 = 2,
    zebReaderTypeNCSOpScan3 = 3,
    zebReaderTypeNCSOpScan4 = 4,
    zebReaderTypeNCSOpScan5 = 5,
    zebReaderTypeNCSOpScan7 = 6,
    zebReaderTypeScanningSystemsSR601 = 7,
    zebReaderTypeScanningSystemsSR607 = 8,
    zebReaderTypeScanningSystemsSR700351 = 9,
    zebReaderTypeScanningSystemsSR700352 = 10,
    zebReaderTypeScantronScanMark2000 = 11,
    zebReaderTypeScantronScanMark2250 = 12,
    zebReaderTypeScantronScanMark2500 = 13,
    zebReaderTypeScantronScanMark4000 = 14,
    zebReaderTypeScantronScanMark5500 = 15,
    zebReaderTypeScantron8000 = 16,
    zebReaderTypeScantron8400 = 17,
    zebReaderTypeAppersonGradeMaster = 18,
    zebReaderTypeScanningSystemsSR410 = 19,
    zebReaderTypeChatsworthOMR1100 = 20,
    zebReaderTypeChatsworthOMR2000 = 21,
    zebReaderTypeChatsworthALSAccelScanOMR = 22,
    zebReaderTypeNCSEZData = 23,
    zebReaderTypePDIVMR138 = 24,
    zebReaderTypeNCSOpScan6 = 25,
    zebReaderTypeNCSOpScan8 = 26,
    zebReaderTypeScantronScanMarkES2010 = 27,
    zebReaderTypeScantronScanMarkES2260 = 28,
    zebReaderTypeScantronScanMarkES2800 = 29,
    zebReaderTypeSekonicSR2300 = 30,
    zebReaderTypeNCSOpScaniNSIGHT4 = 31,
    zebReaderTypeNCSOpScaniNSIGHT2 = 32,
    zebReaderTypeSekonicSR3500 = 33,
    zebReaderTypeSekonicSR6500 = 34,
    zebReaderTypeChatsworthACF200 = 35,
    zebReaderTypeSekonicSR1800 = 36,
    zebReaderTypeChatsworthACF100 = 37,
    zebReaderTypeSekonicSR430 = 38,
    zebReaderTypeAppersonBenchMark3000 = 39,
    zebReaderTypeAppersonAdvantage1200 = 40,
    zebReaderTypeChatsworthACP200 = 41,
};

/// Bit mask of profile families, used to filter the profile catalogue.
enum zebProfileType : int32_t {
    zebProfileTypeNone = 0,
    zebProfileTypeAP = 1,
    zebProfileTypeSekonic = 2,
    zebProfileTypeScantron = 4,
    zebProfileTypeCT = 8,
    zebProfileTypePDI = 16,
    zebProfileTypeAll = 31,
};

/// Line speed; the value is the rate in baud.
enum zebReaderBaudRate : int32_t {
    zebReaderBaudRate110 = 110,
    zebReaderBaudRate300 = 300,
    zebReaderBaudRate600 = 600,
    zebReaderBaudRate1200 = 1200,
    zebReaderBaudRate2400 = 2400,
    zebReaderBaudRate4800 = 4800,
    zebReaderBaudRate9600 = 9600,
    zebReaderBaudRate14400 = 14400,
    zebReaderBaudRate19200 = 19200,
    zebReaderBaudRate28800 = 28800,
    zebReaderBaudRate38400 = 38400,
    zebReaderBaudRate56000 = 56000,
    zebReaderBaudRate57600 = 57600,
    zebReaderBaudRate115200 = 115200,
    zebReaderBaudRate128000 = 128000,
    zebReaderBaudRate256000 = 256000,
};

/// Data bits per character.
enum zebReaderDataBits : int32_t {
    zebReaderDataBits4 = 4,
    zebReaderDataBits5 = 5,
    zebReaderDataBits6 = 6,
    zebReaderDataBits7 = 7,
    zebReaderDataBits8 = 8,
};

/// Handshaking; the value is the serial object's Handshaking value.
enum zebReaderFlowControl : int32_t {
    zebReaderFlowControlNone = 0,
    zebReaderFlowControlXonXoff = 1,
    zebReaderFlowControlHardware = 2,
    zebReaderFlowControlBoth = 3,
};

/// How a model is connected.
enum zebReaderInterfaceType : int32_t {
    zebReaderInterfaceTypeSerial = 1,
    zebReaderInterfaceTypeUSB = 2,
};

/// Whole page or read areas only.
enum zebRecognitionType : int32_t {
    zebRecognitionTypePage = 1,
    zebRecognitionTypeWindow = 2,
};

/// Settings-store roots (the predefined registry root handles).
enum zebReaderRegistryKey : int32_t {
    zebReaderRegistryKeyClassesRoot = static_cast<int32_t>(0x80000000u),
    zebReaderRegistryKeyCurrentUser = static_cast<int32_t>(0x80000001u),
    zebReaderRegistryKeyLocalMachine = static_cast<int32_t>(0x80000002u),
    zebReaderRegistryKeyUsers = static_cast<int32_t>(0x80000003u),
    zebReaderRegistryKeyPerformanceData = static_cast<int32_t>(0x80000004u),
    zebReaderRegistryKeyCurrentConfig = static_cast<int32_t>(0x80000005u),
};

/// Index of HelpID.
enum zebReaderHelpID : int32_t {
    zebReaderHelpIDProperties = 0,
};

/// Barcode symbologies (bit values).
enum zebBarcodeType : int32_t {
    zebBarcodeTypeUnknown = 0,
    zebBarcodeTypeCode39 = 1,
    zebBarcodeTypeITF = 2,
    zebBarcodeTypeNW7 = 4,
    zebBarcodeTypeJANEANUPC = 8,
    zebBarcodeTypeCode128 = 16,
    zebBarcodeTypeIndustrial2of5 = 32,
    zebBarcodeTypeCoop2of5 = 64,
    zebBarcodeTypeCode93 = 128,
};

/// Barcode direction on the sheet.
enum zebBarcodeOrientation : int32_t {
    zebBarcodeOrientationUnknown = 0,
    zebBarcodeOrientationVertical = 1,
    zebBarcodeOrientationHorizontal = 2,
};

} // namespace zebreader81
