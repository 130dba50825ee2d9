// basScantron: reset, status, reading, eject and imprinter of the ScanMark family and the
// 8000/8400. The form download is in basScantronForm.cpp.
#include "drivers/scantron/basScantron.h"

#include "channel/Clock.h"
#include "channel/Waits.h"
#include "channel/frmComm.h"
#include "core/basError.h"
#include "drivers/ReaderAccess.h"
#include "drivers/scantron/ScanMarkCommands.h"
#include "drivers/scantron/ScanMarkMarks.h"
#include "drivers/scantron/ScanMarkPort.h"
#include "drivers/scantron/ScanMarkStatus.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>

namespace zebreader81::basScantron {

namespace {

using std::chrono::milliseconds;
using wait::Outcome;

constexpr const char* resetLocation = "ZEBReader81 - basScantron.ResetReaderST";
constexpr const char* statusLocation = "ZEBReader81 - basScantron.CheckStatusST";
constexpr const char* pageLocation = "ZEBReader81 - basScantron.ReadPageST";
constexpr const char* windowsLocation = "ZEBReader81 - basScantron.ReadWindowsST";
constexpr const char* rejectLocation = "ZEBReader81 - basScantron.RejectPageST";

constexpr const char* noResponse = "There was no response from the Scantron scanner. Could not initialize!";
constexpr const char* stalled = "There was no response from the Scantron scanner. The scanner timed out "
                                "waiting to receive the scanned data.";
constexpr const char* readTitle = "Read Error";

// How long the end of a reply may lag behind its last mark character.
constexpr milliseconds endQuiet{100};

enum class Transfer { Running, Ended, Stalled };

// The next byte of a transfer, waiting paced by SleepTime; nothing once the watchdog ran out.
std::optional<unsigned char> nextByte(clsZEBReader& reader)
{
    auto& fc = Reader::fComm(reader);
    for (;;) {
        if (wait::awaitBytes(fc, 1, {.pace = scanmark::pace(reader), .cancel = false, .watchdog = true}) !=
            Outcome::Arrived)
            return std::nullopt;
        if (const auto b = wait::takeByte(fc.mscComm))
            return b;
    }
}

// One side of a page-mode reply: rows of 48 characters until the side is full or a CR.
Transfer readPageSide(clsZEBReader& reader, SafeArray<int16_t>& side, int16_t rows)
{
    scanmark::PageCursor cursor(rows);
    while (!cursor.done()) {
        const auto b = nextByte(reader);
        if (!b)
            return Transfer::Stalled;
        if (*b == scanmark::CR)
            return Transfer::Ended;
        scanmark::storeMark(side, cursor.row(), cursor.col(), static_cast<int16_t>(*b - ScanMarkCharBase));
        cursor.advance();
    }
    return Transfer::Running;
}

// The scanner ends its reply with a CR after the last mark; take it (and anything stray
// before it) so that it cannot open the next reply, then empty the buffer.
void finishTransfer(clsZEBReader& reader)
{
    auto& fc = Reader::fComm(reader);
    auto quietUntil = clock::now() + endQuiet;
    while (fc.tmrScan.Enabled() && clock::now() < quietUntil) {
        const auto left =
            std::chrono::duration_cast<milliseconds>(quietUntil - clock::now()) + milliseconds(1);
        if (!wait::byteWithin(fc, left))
            continue;
        if (wait::takeByte(fc.mscComm) == scanmark::CR)
            break;
        quietUntil = clock::now() + endQuiet;
    }
    FlushInputST(reader);
}

// Waits for a sheet by the feeder setting; False when there is none or the wait failed.
bool waitForSheet(clsZEBReader& reader)
{
    if (reader.Feeder()) {
        const int16_t status = CheckStatusST(reader);
        if (status == -1)
            FlushInputST(reader);
        return status != 0 && status != -1;
    }
    for (;;) {
        const int16_t status = CheckStatusST(reader);
        if (reader.CancelScan())
            return false;
        if (status == -1) {
            FlushInputST(reader);
            return false;
        }
        if (status != 0)
            return true;
        if (reader.SleepTime() > 0)
            scanmark::waitTurn(reader);
    }
}

// Sends the read command and waits for the first byte of the mark data; on success the
// timer is armed again as the watchdog over the whole transfer.
bool startTransfer(clsZEBReader& reader, bool withReject, const char* timeoutMessage, const char* location)
{
    auto& fc = Reader::fComm(reader);
    // The mark data must not open with what trailed the status reply.
    FlushInputST(reader);
    fc.mscComm.Output(scanmark::readCommand(withReject));
    switch (wait::awaitBytes(fc, 1, scanmark::turns(reader))) {
    case Outcome::Arrived: break;
    case Outcome::TimedOut: basError::ReportDevice(timeoutMessage, location, readTitle); [[fallthrough]];
    case Outcome::Cancelled: FlushInputST(reader); return false;
    }
    fc.mscComm.InputLen(1);
    fc.tmrScan.Enabled(true);
    return true;
}

// The closing status query, then the sheet's arrays go to the reader.
bool handOver(clsZEBReader& reader, const SafeArray<int16_t>& side1, const SafeArray<int16_t>& side2)
{
    Reader::fComm(reader).tmrScan.Enabled(false);
    const int16_t status = CheckStatusST(reader);
    FlushInputST(reader);
    if (status == -1)
        return false;
    Reader::Side1Array(reader, side1);
    Reader::Side2Array(reader, side2);
    return true;
}

bool stalledTransfer(clsZEBReader& reader, const char* location)
{
    basError::ReportDevice(stalled, location, readTitle);
    FlushInputST(reader);
    return false;
}

} // namespace

bool InitReaderST(clsZEBReader& reader)
{
    return trap("ZEBReader81 - basScantron.InitReaderST", false, [&] {
        if (!ResetReaderST(reader))
            return false;
        if (DownloadFormST(reader))
            return true;
        ResetReaderST(reader);
        return false;
    });
}

bool CloseReaderST(clsZEBReader& reader)
{
    return trap("ZEBReader81 - basScantron.CloseReaderST", false, [&] { return ResetReaderST(reader); });
}

bool ResetReaderST(clsZEBReader& reader)
{
    return trap(resetLocation, false, [&] {
        auto& fc = Reader::fComm(reader);
        auto& com = fc.mscComm;
        if (!com.PortOpen())
            return true;
        FlushInputST(reader);
        com.Output(scanmark::resetCommand());
        switch (wait::awaitBytes(fc, 1, scanmark::turns(reader))) {
        case Outcome::Arrived: break;
        case Outcome::Cancelled: return false;
        case Outcome::TimedOut:
            basError::ReportDevice(noResponse, resetLocation, "No Response");
            return false;
        }
        const std::string reply = wait::takeWaiting(com);
        if (!reply.empty() && reply[0] == scanmark::CR)
            return true;
        basError::ReportDevice(
            "An error occurred trying to reset the Scantron scanner.  Please power the scanner "
            "off and on and retry the operation.",
            resetLocation, "Reset Error");
        return false;
    });
}

int16_t CheckStatusST(clsZEBReader& reader)
{
    return trap(statusLocation, int16_t{-1}, [&]() -> int16_t {
        auto& fc = Reader::fComm(reader);
        auto& com = fc.mscComm;
        FlushInputST(reader);
        com.Output(scanmark::statusCommand());
        switch (wait::awaitBytes(fc, static_cast<int16_t>(scanmark::StatusReplyLength),
                                 scanmark::turns(reader))) {
        case Outcome::Arrived: break;
        case Outcome::Cancelled: return -1;
        case Outcome::TimedOut:
            basError::ReportDevice(noResponse, statusLocation, "Initialize Error");
            return -1;
        }
        std::string reply;
        for (std::size_t i = 0; i < scanmark::StatusReplyLength; ++i)
            if (const auto b = wait::takeByte(com))
                reply += static_cast<char>(*b);
        const auto decision = scanmark::decodeStatus(reply);
        if (decision.reports())
            basError::ReportDevice(decision.message, decision.location, decision.title);
        return decision.result;
    });
}

bool ReadPageST(clsZEBReader& reader)
{
    return trap(pageLocation, false, [&] {
        FlushInputST(reader);
        if (!waitForSheet(reader))
            return false;
        if (!startTransfer(
                reader, reader.Rejecter(),
                "There was no response from the Scantron scanner. The scanner timed out waiting for "
                "scanned data.",
                pageLocation))
            return false;

        const int16_t rows1 = Reader::Side1RowsMax(reader);
        auto side1 = scanmark::sideArray(rows1, Reader::Side1ColsMax(reader));
        SafeArray<int16_t> side2;
        Transfer t = readPageSide(reader, side1, rows1);
        const int16_t rows2 = Reader::Side2RowsMax(reader);
        if (t == Transfer::Running && reader.DuplexForm() && rows2 >= 1) {
            side2 = scanmark::sideArray(rows2, Reader::Side2ColsMax(reader));
            t = readPageSide(reader, side2, rows2);
        }
        if (t == Transfer::Stalled)
            return stalledTransfer(reader, pageLocation);
        if (t == Transfer::Running)
            finishTransfer(reader);
        return handOver(reader, side1, side2);
    });
}

bool ReadWindowsST(clsZEBReader& reader)
{
    return trap(windowsLocation, false, [&] {
        FlushInputST(reader);
        if (!waitForSheet(reader))
            return false;
        if (!startTransfer(
                reader, true,
                "There was no response from the Scantron scanner. The scanner timed out waiting for the "
                "scanned data.",
                windowsLocation))
            return false;

        auto side1 = scanmark::sideArray(Reader::Side1RowsMax(reader), Reader::Side1ColsMax(reader));
        SafeArray<int16_t> side2;
        auto newSide2 = [&] {
            if (side2.empty())
                side2 = scanmark::sideArray(Reader::Side2RowsMax(reader), Reader::Side2ColsMax(reader));
        };
        const auto windows = reader.Windows();
        const auto plan = scanmark::fieldPlan(*windows, reader.Duplex() && reader.DuplexForm());
        // Side 1 is the leading run of areas with Page 1 or less. The area after it (Page 2 or
        // more) creates the side-2 array once the walk gets that far, even when the form
        // carried no record for it and the scanner sends nothing for it.
        const auto side1Areas =
            std::count_if(plan.begin(), plan.end(), [](const auto& f) { return f.side == 1; });
        const bool side2Areas = windows->Count() > side1Areas;
        scanmark::WindowCursor cursor(plan);
        Transfer t = Transfer::Running;
        while (t == Transfer::Running && !cursor.done()) {
            const auto b = nextByte(reader);
            if (!b)
                return stalledTransfer(reader, windowsLocation);
            if (*b == scanmark::CR) {
                t = Transfer::Ended;
                break;
            }
            const auto cell = cursor.cell();
            const auto value = static_cast<int16_t>(*b - ScanMarkCharBase);
            if (cell.side == 2) {
                newSide2();
                scanmark::storeMark(side2, cell.row, cell.col, value);
            } else {
                scanmark::storeMark(side1, cell.row, cell.col, value);
            }
            cursor.advance();
        }
        if (side2Areas && cursor.pastSide1())
            newSide2();
        if (t == Transfer::Running)
            finishTransfer(reader);
        return handOver(reader, side1, side2);
    });
}

bool RejectPageST(clsZEBReader& reader, bool& reject)
{
    return trap(rejectLocation, false, [&] {
        auto& fc = Reader::fComm(reader);
        auto& com = fc.mscComm;
        // A byte left from an earlier reply must not pass for the answer to the eject.
        FlushInputST(reader);
        if (reject)
            com.Output(scanmark::rejectPrintCommand());
        com.Output(scanmark::ejectCommand(reject));
        switch (wait::awaitBytes(fc, 1, scanmark::turns(reader))) {
        case Outcome::Arrived: break;
        case Outcome::Cancelled: return false;
        case Outcome::TimedOut:
            basError::ReportDevice(
                "There was no response from the Scantron scanner. Could not eject the page!", rejectLocation,
                "Eject Page Error");
            return false;
        }
        com.InputLen(1);
        FlushInputST(reader);
        if (reject) {
            const int64_t pause = int64_t{reader.SleepTime()} * 15;
            if (pause > std::numeric_limits<int32_t>::max() || pause < std::numeric_limits<int32_t>::min())
                err::raise(err::Overflow);
            frmComm::Sleep(pause);
        }
        return reject;
    });
}

bool PrintST(clsZEBReader& reader)
{
    return trap("ZEBReader81 - basScantron.PrintST", false, [&] {
        const auto printer = reader.Printer();
        return SendCommandST(
            reader, scanmark::printCommand(scanmark::imprintText(printer->Distance(), printer->Buffer1())));
    });
}

} // namespace zebreader81::basScantron
