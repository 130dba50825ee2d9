// The compiled-in profile table: one row per model, grouped by filter family.
#include "profiles/ProfileTable.h"

#include <array>
#include <string>
#include <vector>

namespace zebreader81 {

namespace {

using P = clsZEBReaderProfile;
using Flag = void (P::*)(bool);

// The Boolean properties a row may set beyond its fixed columns.
constexpr Flag ReaderGradeEnabled = &P::ReaderGradeEnabled, ReaderGradeVisible = &P::ReaderGradeVisible;
constexpr Flag Barcode = &P::Barcode, BarcodeEnabled = &P::BarcodeEnabled,
               BarcodeVisible = &P::BarcodeVisible;
constexpr Flag Duplex = &P::Duplex, DuplexEnabled = &P::DuplexEnabled, DuplexVisible = &P::DuplexVisible;
constexpr Flag Feeder = &P::Feeder, FeederEnabled = &P::FeederEnabled, FeederVisible = &P::FeederVisible;
constexpr Flag Rejecter = &P::Rejecter, RejecterEnabled = &P::RejecterEnabled,
               RejecterVisible = &P::RejecterVisible;
constexpr Flag PrinterEnabled = &P::PrinterEnabled, PrinterVisible = &P::PrinterVisible;
constexpr Flag BaudRateEnabled = &P::BaudRateEnabled, BaudRateVisible = &P::BaudRateVisible;
constexpr Flag DataBitsEnabled = &P::DataBitsEnabled, DataBitsVisible = &P::DataBitsVisible;
constexpr Flag FlowControlEnabled = &P::FlowControlEnabled, FlowControlVisible = &P::FlowControlVisible;
constexpr Flag StopBitsEnabled = &P::StopBitsEnabled, StopBitsVisible = &P::StopBitsVisible;
constexpr Flag ParityEnabled = &P::ParityEnabled, ParityVisible = &P::ParityVisible;
constexpr Flag MarkDiscriminationEnabled = &P::MarkDiscriminationEnabled,
               MarkDiscriminationVisible = &P::MarkDiscriminationVisible;
constexpr Flag RecognitionThresholdEnabled = &P::RecognitionThresholdEnabled;
constexpr Flag SleepTimeEnabled = &P::SleepTimeEnabled, SleepTimeVisible = &P::SleepTimeVisible;
constexpr Flag TimeOutEnabled = &P::TimeOutEnabled, TimeOutVisible = &P::TimeOutVisible;
constexpr Flag PortEnabled = &P::PortEnabled;
constexpr Flag Windowing = &P::Windowing, WindowingEnabled = &P::WindowingEnabled,
               WindowingVisible = &P::WindowingVisible;
constexpr Flag LocateEnabled = &P::LocateEnabled, FirmwareEnabled = &P::FirmwareEnabled;

struct Setting {
    Flag property;
    bool value;
};

// Filter families; the row of type 0 belongs to none and is always added.
constexpr int32_t Always = 0;
constexpr int32_t AP = zebProfileTypeAP, CT = zebProfileTypeCT, PDI = zebProfileTypePDI,
                  Scantron = zebProfileTypeScantron, Sekonic = zebProfileTypeSekonic;
constexpr zebReaderInterfaceType Serial = zebReaderInterfaceTypeSerial, USB = zebReaderInterfaceTypeUSB;

struct ProfileRow {
    int32_t type;
    int32_t family;
    zebReaderInterfaceType interface;
    int32_t baudRate;
    const char* parity;
    int32_t dataBits;
    float stopBits;
    int32_t flowControl;
    int16_t markCutOff;
    int16_t markDiscrimination;
    int16_t recognitionThreshold, recognitionThresholdMinimum, recognitionThresholdMaximum;
    int16_t maxCols;
    int32_t sleepTime;
    int32_t timeOut;
    std::vector<Setting> other; // applied in this order, after the columns
};

// Families in the order the catalogue adds them.
constexpr std::array<int32_t, 5> fillOrder = {AP, CT, PDI, Scantron, Sekonic};

const std::vector<ProfileRow>& profileRows()
{
    // clang-format off
    static const std::vector<ProfileRow> rows = {
    // type family   interface baud par data stop flow cutoff discr recthr (min max) maxcols sleep timeout, {others}
    // None
    { 0, Always,   Serial,  9600, "",  0, 0, 0,   0,  0,   0,   0,   0,  0, 50, 10, {}},
    // Apperson Advantage 1200
    {40, AP,       Serial, 38400, "N", 8, 1, 0,   0,  0,   1,   0,   0, 12, 50, 10, {
        {ReaderGradeEnabled, true}, {WindowingVisible, false}, {Barcode, true}, {BarcodeEnabled, false},
        {BarcodeVisible, true}, {Duplex, true}, {DuplexEnabled, false}, {DuplexVisible, true}}},
    // Apperson Advantage Link
    { 1, AP,       Serial, 19200, "N", 8, 1, 0,  20, 10,  15,   0,  31, 12, 50, 10, {
        {ReaderGradeEnabled, true}, {MarkDiscriminationEnabled, true},
        {RecognitionThresholdEnabled, true}, {Barcode, true}, {BarcodeEnabled, false},
        {BarcodeVisible, true}}},
    // Apperson BenchMark 3000
    {39, AP,       Serial, 38400, "N", 8, 1, 0,   0,  0,   1,   0,   0, 15, 50, 10, {
        {ReaderGradeEnabled, true}, {WindowingVisible, false}, {Barcode, true}, {BarcodeEnabled, false},
        {BarcodeVisible, true}, {Rejecter, true}, {RejecterEnabled, false}, {RejecterVisible, true}}},
    // Apperson GradeMaster
    {18, AP,       Serial, 19200, "N", 8, 1, 0,   1,  1,   1,   0,   0, 12, 50, 10, {}},
    // Chatsworth Data ACP-100
    {37, CT,       Serial,  9600, "E", 7, 1, 0,   4,  9,   8,   0,   9, 12, 50, 10, {
        {BaudRateEnabled, false}, {DataBitsEnabled, false}, {FirmwareEnabled, true},
        {LocateEnabled, true}, {ParityEnabled, false}, {StopBitsEnabled, false},
        {FlowControlEnabled, false}, {RecognitionThresholdEnabled, true}, {Rejecter, true},
        {SleepTimeEnabled, false}, {TimeOutEnabled, false}, {BaudRateVisible, false},
        {DataBitsVisible, false}, {ParityVisible, false}, {StopBitsVisible, false},
        {FlowControlVisible, false}, {MarkDiscriminationVisible, false}, {SleepTimeVisible, false},
        {TimeOutVisible, false}, {FeederVisible, false}, {DuplexVisible, false},
        {RejecterVisible, false}, {BarcodeVisible, false}, {PrinterVisible, false},
        {ReaderGradeVisible, false}, {WindowingVisible, false}}},
    // Chatsworth Data ACF-200
    {35, CT,       Serial,  9600, "E", 7, 1, 0,   1,  1,   1,   0,   0, 12, 50, 10, {
        {FirmwareEnabled, true}, {FeederEnabled, true}, {LocateEnabled, false}, {DuplexEnabled, false},
        {Feeder, false}}},
    // Chatsworth Data ACP-200
    {41, CT,       Serial,  9600, "E", 7, 1, 0,   1,  1,   1,   0,   0, 12, 50, 10, {
        {FirmwareEnabled, true}, {Feeder, false}, {FeederEnabled, false}, {LocateEnabled, false},
        {DuplexEnabled, false}}},
    // Chatsworth Data ALS AccelScan OMR
    {22, CT,       Serial,  9600, "E", 7, 1, 0,   1,  1,   1,   0,   0, 12, 50, 10, {
        {FirmwareEnabled, true}, {LocateEnabled, true}, {Rejecter, true}, {RejecterEnabled, true}}},
    // Chatsworth Data OMR1100
    {20, CT,       Serial,  9600, "E", 7, 1, 0,   1,  1,   1,   0,   0, 12, 50, 10, {
        {FirmwareEnabled, true}, {LocateEnabled, true}}},
    // Chatsworth Data OMR2000
    {21, CT,       Serial,  9600, "E", 7, 1, 0,   1,  1,   1,   0,   0, 12, 50, 10, {
        {FirmwareEnabled, true}, {LocateEnabled, true}, {Feeder, true}}},
    // Peripheral Dynamics Inc. VMR138
    {24, PDI,      Serial,  9600, "N", 8, 1, 0, 250,  5, 240, 192, 254, 14, 50, 10, {
        {MarkDiscriminationEnabled, true}, {Rejecter, true}, {RejecterEnabled, true},
        {RecognitionThresholdEnabled, true}}},
    // Scantron 8000
    {16, Scantron, Serial,  9600, "N", 8, 2, 0,  65, 10,  35,   0,  99, 48, 50, 10, {
        {Duplex, true}, {Feeder, true}, {DuplexEnabled, true}, {FeederEnabled, true},
        {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true}}},
    // Scantron 8400
    {17, Scantron, Serial,  9600, "N", 8, 2, 0,  65, 10,  35,   0,  99, 48, 50, 10, {
        {Duplex, true}, {Feeder, true}, {DuplexEnabled, true}, {FeederEnabled, true},
        {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true}}},
    // Scantron EZData
    {23, Scantron, Serial,  9600, "E", 7, 1, 0,   4,  9,   4,   0,   9, 12, 50, 10, {
        {BaudRateEnabled, false}, {DataBitsEnabled, false}, {FirmwareEnabled, true},
        {LocateEnabled, true}, {ParityEnabled, false}, {StopBitsEnabled, false},
        {FlowControlEnabled, false}, {Rejecter, true}, {RecognitionThresholdEnabled, true},
        {SleepTimeEnabled, false}, {TimeOutEnabled, false}, {BaudRateVisible, false},
        {DataBitsVisible, false}, {ParityVisible, false}, {StopBitsVisible, false},
        {FlowControlVisible, false}, {MarkDiscriminationVisible, false}, {SleepTimeVisible, false},
        {TimeOutVisible, false}, {FeederVisible, false}, {DuplexVisible, false},
        {RejecterVisible, false}, {BarcodeVisible, false}, {PrinterVisible, false},
        {ReaderGradeVisible, false}, {WindowingVisible, false}}},
    // Scantron OpScan 2
    { 2, Scantron, Serial, 38400, "O", 7, 2, 2,  10,  3,   7,   0,  15, 48, 50, 10, {
        {BarcodeEnabled, true}, {DuplexEnabled, true}, {PrinterEnabled, true}, {RejecterEnabled, false},
        {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true},
        {ReaderGradeEnabled, true}, {WindowingVisible, false}}},
    // Scantron iNSIGHT 2 (OMR)
    {32, Scantron, Serial, 38400, "O", 7, 2, 2,  10,  3,   7,   0,  15, 48, 50, 10, {
        {BarcodeEnabled, true}, {DuplexEnabled, true}, {PrinterEnabled, true}, {RejecterEnabled, false},
        {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true},
        {ReaderGradeEnabled, true}, {WindowingVisible, false}}},
    // Scantron OpScan 3
    { 3, Scantron, Serial, 38400, "O", 7, 2, 2,  10,  3,   7,   0,  15, 48, 50, 10, {
        {Feeder, true}, {BarcodeEnabled, true}, {DuplexEnabled, true}, {PrinterEnabled, true},
        {RejecterEnabled, true}, {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true},
        {ReaderGradeEnabled, true}, {WindowingVisible, false}}},
    // Scantron OpScan 4/4U
    { 4, Scantron, Serial, 38400, "O", 7, 2, 2,  10,  3,   7,   0,  15, 48, 50, 10, {
        {Feeder, true}, {BarcodeEnabled, true}, {DuplexEnabled, true}, {PrinterEnabled, true},
        {RejecterEnabled, true}, {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true},
        {ReaderGradeEnabled, true}, {WindowingVisible, false}}},
    // Scantron iNSIGHT 4 (OMR)
    {31, Scantron, Serial, 38400, "O", 7, 2, 2,  10,  3,   7,   0,  15, 48, 50, 10, {
        {Feeder, true}, {BarcodeEnabled, true}, {DuplexEnabled, true}, {PrinterEnabled, true},
        {RejecterEnabled, true}, {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true},
        {ReaderGradeEnabled, true}, {WindowingVisible, false}}},
    // Scantron OpScan 5
    { 5, Scantron, Serial, 38400, "O", 7, 2, 2,  10,  3,   7,   0,  15, 48, 50, 10, {
        {Feeder, true}, {BarcodeEnabled, true}, {DuplexEnabled, true}, {PrinterEnabled, true},
        {RejecterEnabled, false}, {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true},
        {WindowingVisible, false}}},
    // Scantron OpScan 6
    {25, Scantron, Serial, 38400, "O", 7, 2, 2,  10,  3,   7,   0,  15, 48, 50, 10, {
        {Feeder, true}, {BarcodeEnabled, true}, {DuplexEnabled, true}, {PrinterEnabled, true},
        {RejecterEnabled, false}, {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true},
        {WindowingVisible, false}}},
    // Scantron OpScan 7
    { 6, Scantron, Serial, 38400, "O", 7, 2, 2,  10,  3,   7,   0,  15, 48, 50, 10, {
        {Feeder, true}, {BarcodeEnabled, true}, {DuplexEnabled, true}, {PrinterEnabled, true},
        {Rejecter, true}, {RejecterEnabled, false}, {MarkDiscriminationEnabled, true},
        {RecognitionThresholdEnabled, true}, {WindowingVisible, false}}},
    // Scantron OpScan 8
    {26, Scantron, Serial, 38400, "O", 7, 2, 2,  10,  3,   7,   0,  15, 48, 50, 10, {
        {Feeder, true}, {BarcodeEnabled, true}, {DuplexEnabled, true}, {PrinterEnabled, true},
        {Rejecter, true}, {RejecterEnabled, false}, {MarkDiscriminationEnabled, true},
        {RecognitionThresholdEnabled, true}, {WindowingVisible, false}}},
    // Scantron Scanmark 2000
    {11, Scantron, Serial, 19200, "N", 8, 2, 0,  10,  3,   7,   0,  15, 48, 50, 10, {
        {BarcodeEnabled, false}, {PrinterEnabled, true}, {MarkDiscriminationEnabled, true},
        {RecognitionThresholdEnabled, true}, {Windowing, true}, {WindowingEnabled, true}}},
    // Scantron Scanmark 2250
    {12, Scantron, Serial, 19200, "N", 8, 2, 0,  10,  3,   7,   0,  15, 48, 50, 10, {
        {Duplex, true}, {BarcodeEnabled, false}, {PrinterEnabled, true},
        {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true}, {Windowing, true},
        {WindowingEnabled, true}}},
    // Scantron Scanmark 2500
    {13, Scantron, Serial, 19200, "N", 8, 2, 0,  10,  3,   7,   0,  15, 48, 50, 10, {
        {Duplex, true}, {Feeder, true}, {BarcodeEnabled, false}, {DuplexEnabled, true},
        {PrinterEnabled, true}, {RejecterEnabled, true}, {MarkDiscriminationEnabled, true},
        {RecognitionThresholdEnabled, true}, {Windowing, true}, {WindowingEnabled, true}}},
    // Scantron Scanmark 4000
    {14, Scantron, Serial, 19200, "N", 8, 2, 0,  10,  3,   7,   0,  15, 48, 50, 10, {
        {Duplex, true}, {Feeder, true}, {BarcodeEnabled, false}, {PrinterEnabled, true},
        {Rejecter, true}, {RejecterEnabled, true}, {MarkDiscriminationEnabled, true},
        {RecognitionThresholdEnabled, true}, {Windowing, true}, {WindowingEnabled, true}}},
    // Scantron Scanmark 5500
    {15, Scantron, Serial, 19200, "N", 8, 2, 0,  10,  3,   7,   0,  15, 48, 50, 10, {
        {Duplex, true}, {Feeder, true}, {BarcodeEnabled, false}, {PrinterEnabled, true},
        {Rejecter, true}, {RejecterEnabled, true}, {MarkDiscriminationEnabled, true},
        {RecognitionThresholdEnabled, true}, {Windowing, true}, {WindowingEnabled, true}}},
    // Scantron Scanmark ES 2010
    {27, Scantron, Serial, 19200, "N", 8, 2, 0,  10,  3,   7,   0,  15, 48, 50, 10, {
        {BarcodeEnabled, false}, {PrinterEnabled, true}, {MarkDiscriminationEnabled, true},
        {RecognitionThresholdEnabled, true}, {Windowing, true}, {WindowingEnabled, true}}},
    // Scantron Scanmark ES 2260
    {28, Scantron, Serial, 19200, "N", 8, 2, 0,  10,  3,   7,   0,  15, 48, 50, 10, {
        {Duplex, true}, {Feeder, true}, {FeederEnabled, true}, {BarcodeEnabled, false},
        {PrinterEnabled, true}, {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true},
        {Windowing, true}, {WindowingEnabled, true}}},
    // Scantron Scanmark ES 2800
    {29, Scantron, Serial,  9600, "N", 8, 2, 0,  10,  3,   7,   0,  15, 48, 50, 10, {
        {Duplex, true}, {Feeder, true}, {BarcodeEnabled, false}, {DuplexEnabled, true},
        {PrinterEnabled, true}, {RejecterEnabled, true}, {MarkDiscriminationEnabled, true},
        {RecognitionThresholdEnabled, true}, {Windowing, true}, {WindowingEnabled, true}}},
    // Sekonic SR-410
    {19, Sekonic,  Serial,  9600, "N", 7, 2, 2,   6,  3,   1,   1,   8, 12, 50, 10, {
        {MarkDiscriminationEnabled, true}, {Feeder, true}, {RecognitionThresholdEnabled, true}}},
    // Sekonic SR-430
    {38, Sekonic,  Serial, 38400, "N", 7, 2, 2,   6,  3,   1,   1,  16, 12, 50, 10, {
        {MarkDiscriminationEnabled, true}, {Feeder, true}, {RecognitionThresholdEnabled, true}}},
    // Sekonic SR-601
    { 7, Sekonic,  Serial,  9600, "N", 7, 2, 2,  10,  2,   5,   0,  15, 48, 50, 10, {
        {Feeder, true}, {BarcodeEnabled, true}, {PrinterEnabled, true}, {RejecterEnabled, true},
        {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true}, {Windowing, true},
        {WindowingEnabled, true}}},
    // Sekonic SR-607
    { 8, Sekonic,  Serial,  9600, "N", 7, 2, 2,  10,  2,   5,   0,  15, 48, 50, 10, {
        {Feeder, true}, {Duplex, true}, {BarcodeEnabled, true}, {PrinterEnabled, true},
        {RejecterEnabled, true}, {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true},
        {Windowing, true}, {WindowingEnabled, true}}},
    // Sekonic SR-700-351
    { 9, Sekonic,  Serial,  9600, "N", 7, 2, 2,  10,  2,   5,   0,  15, 48, 50, 10, {
        {Feeder, true}, {BarcodeEnabled, true}, {PrinterEnabled, true}, {RejecterEnabled, true},
        {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true}, {Windowing, true},
        {WindowingEnabled, true}}},
    // Sekonic SR-700-352
    {10, Sekonic,  Serial,  9600, "N", 7, 2, 2,  10,  2,   5,   0,  15, 48, 50, 10, {
        {Feeder, true}, {Duplex, true}, {BarcodeEnabled, true}, {PrinterEnabled, true},
        {RejecterEnabled, true}, {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true},
        {Windowing, true}, {WindowingEnabled, true}}},
    // Sekonic SR1800 (USB)
    {36, Sekonic,  USB,     9600, "",  0, 0, 0,  10,  2,   5,   0,  15, 48, 50, 10, {
        {PortEnabled, false}, {BaudRateEnabled, false}, {DataBitsEnabled, false},
        {FlowControlEnabled, false}, {ParityEnabled, false}, {StopBitsEnabled, false}, {Feeder, true},
        {Duplex, false}, {BarcodeEnabled, true}, {PrinterEnabled, true}, {RejecterEnabled, false},
        {DuplexEnabled, true}, {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true}}},
    // Sekonic SR2300 (USB)
    {30, Sekonic,  USB,     9600, "",  0, 0, 0,  10,  2,   5,   0,  15, 48, 50, 10, {
        {PortEnabled, false}, {BaudRateEnabled, false}, {DataBitsEnabled, false},
        {FlowControlEnabled, false}, {ParityEnabled, false}, {StopBitsEnabled, false}, {Feeder, true},
        {Duplex, true}, {BarcodeEnabled, true}, {PrinterEnabled, true}, {RejecterEnabled, true},
        {DuplexEnabled, true}, {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true}}},
    // Sekonic SR3500 (USB)
    {33, Sekonic,  USB,     9600, "",  0, 0, 0,  10,  2,   5,   0,  15, 48, 50, 10, {
        {PortEnabled, false}, {BaudRateEnabled, false}, {DataBitsEnabled, false},
        {FlowControlEnabled, false}, {ParityEnabled, false}, {StopBitsEnabled, false}, {Feeder, true},
        {Duplex, true}, {BarcodeEnabled, true}, {PrinterEnabled, true}, {RejecterEnabled, true},
        {DuplexEnabled, true}, {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true}}},
    // Sekonic SR6500 (USB)
    {34, Sekonic,  USB,     9600, "",  0, 0, 0,  10,  2,   5,   0,  15, 48, 50, 10, {
        {PortEnabled, false}, {BaudRateEnabled, false}, {DataBitsEnabled, false},
        {FlowControlEnabled, false}, {ParityEnabled, false}, {StopBitsEnabled, false}, {Feeder, true},
        {Duplex, true}, {BarcodeEnabled, true}, {PrinterEnabled, true}, {RejecterEnabled, true},
        {DuplexEnabled, true}, {MarkDiscriminationEnabled, true}, {RecognitionThresholdEnabled, true}}},

    };
    // clang-format on
    return rows;
}

std::shared_ptr<clsZEBReaderProfile> makeProfile(const ProfileRow& row)
{
    auto p = std::make_shared<clsZEBReaderProfile>();
    p->ReaderType(static_cast<zebReaderType>(row.type));
    p->InterfaceType(row.interface);
    p->BaudRate(static_cast<zebReaderBaudRate>(row.baudRate));
    p->Parity(row.parity);
    p->DataBits(static_cast<zebReaderDataBits>(row.dataBits));
    p->StopBits(row.stopBits);
    p->FlowControl(static_cast<zebReaderFlowControl>(row.flowControl));
    p->MarkCutOff(row.markCutOff);
    p->MarkDiscrimination(row.markDiscrimination);
    p->RecognitionThreshold(row.recognitionThreshold);
    p->RecognitionThresholdMinimum(row.recognitionThresholdMinimum);
    p->RecognitionThresholdMaximum(row.recognitionThresholdMaximum);
    p->MaxCols(row.maxCols);
    p->SleepTime(row.sleepTime);
    p->TimeOut(row.timeOut);
    for (const auto& s : row.other)
        ((*p).*s.property)(s.value);
    return p;
}

} // namespace

std::vector<std::shared_ptr<clsZEBReaderProfile>> buildProfiles(int32_t mask)
{
    const auto& rows = profileRows();
    std::vector<std::shared_ptr<clsZEBReaderProfile>> out;
    for (const auto& row : rows)
        if (row.family == Always)
            out.push_back(makeProfile(row));
    for (int32_t family : fillOrder) {
        if ((mask & family) == 0)
            continue;
        for (const auto& row : rows)
            if (row.family == family)
                out.push_back(makeProfile(row));
    }
    return out;
}

} // namespace zebreader81
