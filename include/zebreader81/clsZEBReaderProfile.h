// One scanner model's profile: factory settings and which settings a user may change or see.
#pragma once

#include "zebreader81/enums.h"
#include "zebreader81/export.h"

#include <cstdint>
#include <string>

namespace zebreader81 {

/// A plain record, owned by the catalogue that created it. Most settings come as a triple:
/// the value, ...Enabled (the user may change it) and ...Visible (the dialog shows it).
class ZEBREADER81_API clsZEBReaderProfile {
public:
    /// Grading by the scanner against an answer key.
    bool ReaderGrade() const { return readerGrade_; }
    void ReaderGrade(bool v) { readerGrade_ = v; }
    bool ReaderGradeEnabled() const { return readerGradeEnabled_; }
    void ReaderGradeEnabled(bool v) { readerGradeEnabled_ = v; }
    bool ReaderGradeVisible() const { return readerGradeVisible_; }
    void ReaderGradeVisible(bool v) { readerGradeVisible_ = v; }
    /// Barcode reading.
    bool Barcode() const { return barcode_; }
    void Barcode(bool v) { barcode_ = v; }
    bool BarcodeEnabled() const { return barcodeEnabled_; }
    void BarcodeEnabled(bool v) { barcodeEnabled_ = v; }
    bool BarcodeVisible() const { return barcodeVisible_; }
    void BarcodeVisible(bool v) { barcodeVisible_ = v; }
    /// Reading both sides.
    bool Duplex() const { return duplex_; }
    void Duplex(bool v) { duplex_ = v; }
    bool DuplexEnabled() const { return duplexEnabled_; }
    void DuplexEnabled(bool v) { duplexEnabled_ = v; }
    bool DuplexVisible() const { return duplexVisible_; }
    void DuplexVisible(bool v) { duplexVisible_ = v; }
    /// Sheet feeder.
    bool Feeder() const { return feeder_; }
    void Feeder(bool v) { feeder_ = v; }
    bool FeederEnabled() const { return feederEnabled_; }
    void FeederEnabled(bool v) { feederEnabled_ = v; }
    bool FeederVisible() const { return feederVisible_; }
    void FeederVisible(bool v) { feederVisible_ = v; }
    /// Select stacker for rejected sheets.
    bool Rejecter() const { return rejecter_; }
    void Rejecter(bool v) { rejecter_ = v; }
    bool RejecterEnabled() const { return rejecterEnabled_; }
    void RejecterEnabled(bool v) { rejecterEnabled_ = v; }
    bool RejecterVisible() const { return rejecterVisible_; }
    void RejecterVisible(bool v) { rejecterVisible_ = v; }
    /// Imprinter (copied into the reader's Printer.Enabled).
    bool Printer() const { return printer_; }
    void Printer(bool v) { printer_ = v; }
    bool PrinterEnabled() const { return printerEnabled_; }
    void PrinterEnabled(bool v) { printerEnabled_ = v; }
    bool PrinterVisible() const { return printerVisible_; }
    void PrinterVisible(bool v) { printerVisible_ = v; }
    /// Serial port or USB.
    zebReaderInterfaceType InterfaceType() const { return interfaceType_; }
    void InterfaceType(zebReaderInterfaceType v) { interfaceType_ = v; }
    /// Serial line: speed, data bits, handshaking, stop bits.
    zebReaderBaudRate BaudRate() const { return baudRate_; }
    void BaudRate(zebReaderBaudRate v) { baudRate_ = v; }
    bool BaudRateEnabled() const { return baudRateEnabled_; }
    void BaudRateEnabled(bool v) { baudRateEnabled_ = v; }
    bool BaudRateVisible() const { return baudRateVisible_; }
    void BaudRateVisible(bool v) { baudRateVisible_ = v; }
    zebReaderDataBits DataBits() const { return dataBits_; }
    void DataBits(zebReaderDataBits v) { dataBits_ = v; }
    bool DataBitsEnabled() const { return dataBitsEnabled_; }
    void DataBitsEnabled(bool v) { dataBitsEnabled_ = v; }
    bool DataBitsVisible() const { return dataBitsVisible_; }
    void DataBitsVisible(bool v) { dataBitsVisible_ = v; }
    zebReaderFlowControl FlowControl() const { return flowControl_; }
    void FlowControl(zebReaderFlowControl v) { flowControl_ = v; }
    bool FlowControlEnabled() const { return flowControlEnabled_; }
    void FlowControlEnabled(bool v) { flowControlEnabled_ = v; }
    bool FlowControlVisible() const { return flowControlVisible_; }
    void FlowControlVisible(bool v) { flowControlVisible_ = v; }
    float StopBits() const { return stopBits_; }
    void StopBits(float v) { stopBits_ = v; }
    bool StopBitsEnabled() const { return stopBitsEnabled_; }
    void StopBitsEnabled(bool v) { stopBitsEnabled_ = v; }
    bool StopBitsVisible() const { return stopBitsVisible_; }
    void StopBitsVisible(bool v) { stopBitsVisible_ = v; }
    /// The model; its decimal text is the catalogue key.
    zebReaderType ReaderType() const { return readerType_; }
    void ReaderType(zebReaderType v) { readerType_ = v; }
    /// Mark cut-off and discrimination levels.
    int16_t MarkCutOff() const { return markCutOff_; }
    void MarkCutOff(int16_t v) { markCutOff_ = v; }
    int16_t MarkDiscrimination() const { return markDiscrimination_; }
    void MarkDiscrimination(int16_t v) { markDiscrimination_ = v; }
    bool MarkDiscriminationEnabled() const { return markDiscriminationEnabled_; }
    void MarkDiscriminationEnabled(bool v) { markDiscriminationEnabled_ = v; }
    bool MarkDiscriminationVisible() const { return markDiscriminationVisible_; }
    void MarkDiscriminationVisible(bool v) { markDiscriminationVisible_ = v; }
    /// Recognition threshold and the range the settings dialog accepts.
    int16_t RecognitionThreshold() const { return recognitionThreshold_; }
    void RecognitionThreshold(int16_t v) { recognitionThreshold_ = v; }
    bool RecognitionThresholdEnabled() const { return recognitionThresholdEnabled_; }
    void RecognitionThresholdEnabled(bool v) { recognitionThresholdEnabled_ = v; }
    bool RecognitionThresholdVisible() const { return recognitionThresholdVisible_; }
    void RecognitionThresholdVisible(bool v) { recognitionThresholdVisible_ = v; }
    int16_t RecognitionThresholdMinimum() const { return recognitionThresholdMinimum_; }
    void RecognitionThresholdMinimum(int16_t v) { recognitionThresholdMinimum_ = v; }
    int16_t RecognitionThresholdMaximum() const { return recognitionThresholdMaximum_; }
    void RecognitionThresholdMaximum(int16_t v) { recognitionThresholdMaximum_ = v; }
    /// Pause of the drivers' waits in milliseconds.
    int32_t SleepTime() const { return sleepTime_; }
    void SleepTime(int32_t v) { sleepTime_ = v; }
    bool SleepTimeEnabled() const { return sleepTimeEnabled_; }
    void SleepTimeEnabled(bool v) { sleepTimeEnabled_ = v; }
    bool SleepTimeVisible() const { return sleepTimeVisible_; }
    void SleepTimeVisible(bool v) { sleepTimeVisible_ = v; }
    /// Reply time-out in seconds.
    int32_t TimeOut() const { return timeOut_; }
    void TimeOut(int32_t v) { timeOut_ = v; }
    bool TimeOutEnabled() const { return timeOutEnabled_; }
    void TimeOutEnabled(bool v) { timeOutEnabled_ = v; }
    bool TimeOutVisible() const { return timeOutVisible_; }
    void TimeOutVisible(bool v) { timeOutVisible_ = v; }
    /// Display name of ReaderType.
    std::string ReaderName() const;
    /// Parity letter; empty for USB models.
    const std::string& Parity() const { return parity_; }
    void Parity(const std::string& v) { parity_ = v; }
    bool ParityEnabled() const { return parityEnabled_; }
    void ParityEnabled(bool v) { parityEnabled_ = v; }
    bool ParityVisible() const { return parityVisible_; }
    void ParityVisible(bool v) { parityVisible_ = v; }
    /// Whether the port number may be changed and is shown (the number is not part of a profile).
    bool PortEnabled() const { return portEnabled_; }
    void PortEnabled(bool v) { portEnabled_ = v; }
    bool PortVisible() const { return portVisible_; }
    void PortVisible(bool v) { portVisible_ = v; }
    /// Reading by read areas.
    bool Windowing() const { return windowing_; }
    void Windowing(bool v) { windowing_ = v; }
    bool WindowingEnabled() const { return windowingEnabled_; }
    void WindowingEnabled(bool v) { windowingEnabled_ = v; }
    bool WindowingVisible() const { return windowingVisible_; }
    void WindowingVisible(bool v) { windowingVisible_ = v; }
    /// The model can be searched for on ports 1 to 16.
    bool LocateEnabled() const { return locateEnabled_; }
    void LocateEnabled(bool v) { locateEnabled_ = v; }
    /// The model can report its firmware text.
    bool FirmwareEnabled() const { return firmwareEnabled_; }
    void FirmwareEnabled(bool v) { firmwareEnabled_ = v; }
    /// Largest number of columns the model reads.
    int16_t MaxCols() const { return maxCols_; }
    void MaxCols(int16_t v) { maxCols_ = v; }

private:
    bool readerGrade_ = false;
    bool readerGradeEnabled_ = false;
    bool readerGradeVisible_ = true;
    bool barcode_ = false;
    bool barcodeEnabled_ = false;
    bool barcodeVisible_ = true;
    bool duplex_ = false;
    bool duplexEnabled_ = false;
    bool duplexVisible_ = true;
    bool feeder_ = false;
    bool feederEnabled_ = false;
    bool feederVisible_ = true;
    bool rejecter_ = false;
    bool rejecterEnabled_ = false;
    bool rejecterVisible_ = true;
    bool printer_ = false;
    bool printerEnabled_ = false;
    bool printerVisible_ = true;
    zebReaderInterfaceType interfaceType_ = zebReaderInterfaceTypeSerial;
    zebReaderBaudRate baudRate_ = zebReaderBaudRate9600;
    bool baudRateEnabled_ = true;
    bool baudRateVisible_ = true;
    zebReaderDataBits dataBits_ = static_cast<zebReaderDataBits>(0);
    bool dataBitsEnabled_ = true;
    bool dataBitsVisible_ = true;
    zebReaderFlowControl flowControl_ = zebReaderFlowControlNone;
    bool flowControlEnabled_ = true;
    bool flowControlVisible_ = true;
    float stopBits_ = 0.0f;
    bool stopBitsEnabled_ = true;
    bool stopBitsVisible_ = true;
    zebReaderType readerType_ = zebReaderTypeNone;
    int16_t markCutOff_ = 0;
    int16_t markDiscrimination_ = 0;
    bool markDiscriminationEnabled_ = false;
    bool markDiscriminationVisible_ = true;
    int16_t recognitionThreshold_ = 0;
    bool recognitionThresholdEnabled_ = false;
    bool recognitionThresholdVisible_ = true;
    int16_t recognitionThresholdMinimum_ = 0;
    int16_t recognitionThresholdMaximum_ = 0;
    int32_t sleepTime_ = 50;
    bool sleepTimeEnabled_ = true;
    bool sleepTimeVisible_ = true;
    int32_t timeOut_ = 10;
    bool timeOutEnabled_ = true;
    bool timeOutVisible_ = true;
    std::string parity_;
    bool parityEnabled_ = true;
    bool parityVisible_ = true;
    bool portEnabled_ = true;
    bool portVisible_ = true;
    bool windowing_ = false;
    bool windowingEnabled_ = false;
    bool windowingVisible_ = true;
    bool locateEnabled_ = false;
    bool firmwareEnabled_ = false;
    int16_t maxCols_ = 0;
};

} // namespace zebreader81
