// The reader object: the one class a host creates to read sheets on an OMR scanner.
#pragma once

#include "zebreader81/ErrorHost.h"
#include "zebreader81/ReaderEvents.h"
#include "zebreader81/SafeArray.h"
#include "zebreader81/clsZEBReaderBarcodes.h"
#include "zebreader81/clsZEBReaderPrinter.h"
#include "zebreader81/clsZEBReaderProfiles.h"
#include "zebreader81/clsZEBReaderWindows.h"
#include "zebreader81/enums.h"
#include "zebreader81/export.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace zebreader81 {

namespace detail {
struct ReaderAccess;
}

/// Holds the scanner connection's settings, owns the read areas, barcode areas, imprinter,
/// profile catalogue and serial port, runs the reading cycle and raises the events.
///
/// Create it, choose ReaderType and Port (or LoadDefaults / LoadSettings), then StartReader,
/// ReadPage or ReadBatch, EndReader. Methods return True on success; failures are reported
/// through the error reporter (SetError) and never thrown. CancelScan may be set from any
/// thread; every other member belongs to the thread that uses the reader.
class ZEBREADER81_API clsZEBReader {
public:
    clsZEBReader();
    ~clsZEBReader();
    clsZEBReader(const clsZEBReader&) = delete;
    clsZEBReader& operator=(const clsZEBReader&) = delete;

    // Model
    /// Scanner model; assigning it also re-types the imprinter.
    zebReaderType ReaderType() const;
    void ReaderType(zebReaderType value);
    /// Display name of the model.
    std::string ReaderName() const;

    // Serial line
    /// COM port number, 1 to 16.
    int16_t Port() const;
    void Port(int16_t value);
    /// Line speed in baud.
    zebReaderBaudRate BaudRate() const;
    void BaudRate(zebReaderBaudRate value);
    /// Data bits per character.
    zebReaderDataBits DataBits() const;
    void DataBits(zebReaderDataBits value);
    /// Parity letter: N, E, O, M or S.
    std::string Parity() const;
    void Parity(const std::string& value);
    /// Stop bits: 1, 1.5 or 2.
    float StopBits() const;
    void StopBits(float value);
    /// Handshaking on the line.
    zebReaderFlowControl FlowControl() const;
    void FlowControl(zebReaderFlowControl value);
    /// Reply time-out in seconds (1 to 600; StartReader replaces other values by 10).
    int32_t TimeOut() const;
    void TimeOut(int32_t value);
    /// Pause in milliseconds that paces the drivers' waits.
    int32_t SleepTime() const;
    void SleepTime(int32_t value);

    // Reading
    /// Mark cut-off level, as the model's driver applies it.
    int16_t MarkCutOff() const;
    void MarkCutOff(int16_t value);
    /// Mark discrimination level, as the model's driver applies it.
    int16_t MarkDiscrimination() const;
    void MarkDiscrimination(int16_t value);
    /// Recognition threshold for the models that take one.
    int16_t RecognitionThreshold() const;
    void RecognitionThreshold(int16_t value);
    /// Whole page or read areas only.
    zebRecognitionType RecognitionMode() const;
    void RecognitionMode(zebRecognitionType value);
    /// Use the read areas of Windows.
    bool Windowing() const;
    void Windowing(bool value);
    /// Grading by the scanner against AnswerKey.
    bool ReaderGrade() const;
    void ReaderGrade(bool value);

    // Hardware options: the scanner has the option and it is used
    /// Reads both sides of a sheet.
    bool Duplex() const;
    void Duplex(bool value);
    /// The form has a second side to read.
    bool DuplexForm() const;
    void DuplexForm(bool value);
    /// Reads barcodes.
    bool Barcode() const;
    void Barcode(bool value);
    /// Feeds sheets from a hopper.
    bool Feeder() const;
    void Feeder(bool value);
    /// Has a select stacker for rejected sheets.
    bool Rejecter() const;
    void Rejecter(bool value);

    // Results of the last sheet (copies)
    /// Mark values of side 1 and side 2, indexed (row, column).
    SafeArray<int16_t> Side1Array() const;
    SafeArray<int16_t> Side2Array() const;
    /// Timing marks (rows) counted by the driver per side.
    int16_t Side1TimingMarks() const;
    int16_t Side2TimingMarks() const;

    // Form geometry: one element per sheet of the form, element 1 first (element 0 ignored)
    SafeArray<int16_t> Side1Rows() const;
    void Side1Rows(const SafeArray<int16_t>& value);
    SafeArray<int16_t> Side1Cols() const;
    void Side1Cols(const SafeArray<int16_t>& value);
    SafeArray<int16_t> Side2Rows() const;
    void Side2Rows(const SafeArray<int16_t>& value);
    SafeArray<int16_t> Side2Cols() const;
    void Side2Cols(const SafeArray<int16_t>& value);

    // Control
    /// Stops a batch; a driver waiting for a hand-fed sheet returns at once. Thread-safe.
    bool CancelScan() const;
    void CancelScan(bool value);

    // Children, created with the reader
    /// Barcode areas.
    std::shared_ptr<clsZEBReaderBarcodes> Barcodes() const;
    /// Read areas, used while Windowing is True.
    std::shared_ptr<clsZEBReaderWindows> Windows() const;
    /// Catalogue of the models' factory settings.
    std::shared_ptr<clsZEBReaderProfiles> Profiles() const;
    /// Imprinter.
    std::shared_ptr<clsZEBReaderPrinter> Printer() const;
    /// Answer key for the scanners that grade; released by EndReader.
    std::shared_ptr<HostObject> AnswerKey() const;
    void AnswerKey(std::shared_ptr<HostObject> value);
    /// Help file and topic ids of the settings dialog.
    std::string HelpFile() const;
    void HelpFile(const std::string& value);
    int32_t HelpID(zebReaderHelpID eHelpIDType) const;
    void HelpID(zebReaderHelpID eHelpIDType, int32_t value);

    // Device
    /// Opens the scanner (port and the model's init sequence). A failed init sets CancelScan.
    bool StartReader();
    /// Reads one sheet: BeforeSheet, ReadSheet, BeforePrint/AfterPrint, AfterSheet. False when
    /// CancelScan was set or no sheet was read.
    bool ReadPage(bool InitializePrinter = false);
    /// StartReader, sheets until CancelScan or lMaxSheets (-1: no limit), EndReader.
    /// lSheetCount counts on from the value passed in. CancelScan stays True afterwards.
    bool ReadBatch(bool InitializePrinter = false, int32_t lMaxSheets = -1);
    bool ReadBatch(bool InitializePrinter, int32_t lMaxSheets, int32_t& lSheetCount);
    /// Closes the scanner and releases AnswerKey.
    bool EndReader();
    /// Sends the current sheet to the reject stacker (once per sheet; model permitting).
    void RejectPage();
    /// Lets the current sheet pass (once per sheet; model permitting).
    void EjectPage();

    // Settings
    /// Copies the model's factory values from its profile (Port and Windowing stay).
    bool LoadDefaults(zebReaderType eReaderType);
    /// Reads the saved settings under a root and sub-key; missing values take defaults.
    bool LoadSettings(zebReaderRegistryKey lRegistryKey, const std::string& sRegistrySubKey);
    /// Writes the settings under a root and sub-key.
    bool SaveSettings(zebReaderRegistryKey lRegistryKey, const std::string& sRegistrySubKey);

    // Host integration
    /// Registers the host's error object for this thread; nullptr unregisters (returns False).
    bool SetError(std::shared_ptr<ErrorHost> oErr);
    /// Opens the settings dialog installed by SetOptionsDialogHook (the Windows DLL has one);
    /// False when cancelled or when no dialog is installed.
    bool ShowOptions(void* fParent = nullptr);
    /// Searches ports (iStartPort first, then 1 to 16) for the scanner and sets Port to the
    /// first that answers. Only for the models whose profile allows it.
    bool Locate(int16_t iStartPort = 0);
    /// Asks the scanner for its firmware text into sReturn (left alone on failure). Only for
    /// the models whose profile allows it.
    bool Firmware(std::string& sReturn);

    /// Connects an event sink; returns its cookie.
    int32_t Advise(std::shared_ptr<ReaderEvents> sink);
    /// Disconnects the sink with that cookie.
    void Unadvise(int32_t cookie);
    /// Called on every turn of a wait on the scanner (a host's message pump); at least every
    /// 50 ms while one is set.
    void SetYieldCallback(std::function<void()> callback);

private:
    friend struct detail::ReaderAccess;
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace zebreader81
