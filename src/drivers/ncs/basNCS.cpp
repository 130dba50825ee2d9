#include "drivers/ncs/basNCS.h"

#include "channel/Waits.h"
#include "channel/frmComm.h"
#include "core/basError.h"
#include "drivers/ReaderAccess.h"
#include "drivers/ncs/OpScanPageDecoder.h"
#include "drivers/ncs/OpScanProtocol.h"

#include <algorithm>
#include <chrono>

namespace zebreader81::basNCS {

namespace proto = OpScanProtocol;

namespace {

constexpr const char* locInit = "ZEBReader81 - basNCS.InitReaderNCS";
constexpr const char* locClose = "ZEBReader81 - basNCS.CloseReaderNCS";
constexpr const char* locCheckStatus = "ZEBReader81 - basNCS.CheckStatusNCS";
constexpr const char* locPrint = "ZEBReader81 - basNCS.PrintNCS";
constexpr const char* locReject = "ZEBReader81 - basNCS.RejectPageNCS";
constexpr const char* locEject = "ZEBReader81 - basNCS.EjectPageNCS";
constexpr const char* locGetScanMode = "ZEBReader81 - basNCS.GetScanModeNCS";
constexpr const char* locSetScanMode = "ZEBReader81 - basNCS.SetScanModeNCS";
constexpr const char* locReadPage = "ZEBReader81 - basNCS.ReadPageNCS";

// Polls of the scan mode after a mode change before the scanner counts as silent.
constexpr int32_t maxModePolls = 10;

// Module state: the last state letter seen and the mode to put back at close.
thread_local std::string sReaderState;
thread_local int32_t lSavedScanMode = 0;

// Longest a drain keeps reading a line that never falls quiet; what follows then fails on
// the babble and is reported, where an endless drain would hang the host.
constexpr std::chrono::seconds drainLimit{1};

void drain(SerialControl& com) { wait::drain(com, drainLimit); }

// Reads a status reply one byte at a time; positions not read stay 0. The minimum a wait
// asks for may arrive before the reply's last bytes: a few character times of grace keep that
// tail from being taken as the start of the next exchange (a stray CR would end a page).
proto::Reply readReply(frmComm& fc, std::size_t limit)
{
    const auto grace = std::max(std::chrono::ceil<std::chrono::milliseconds>(3 * fc.mscComm.characterTime()),
                                std::chrono::milliseconds(2));
    proto::Reply reply{};
    for (std::size_t i = 0; i < limit && wait::byteWithin(fc, grace); ++i)
        if (const auto b = wait::takeByte(fc.mscComm))
            reply[i] = *b;
    return reply;
}

// Sends a status query and collects its reply; reports "No Response" at `location` on time-out.
bool query(clsZEBReader& reader, const std::string& command, int16_t minimum, std::size_t limit,
           const char* location, proto::Reply& reply)
{
    auto& fc = Reader::fComm(reader);
    drain(fc.mscComm);
    fc.mscComm.Output(command);
    if (wait::awaitBytes(fc, minimum) != wait::Outcome::Arrived) {
        basError::ReportDevice(proto::NoResponseStatus, location, proto::NoResponseTitle);
        return false;
    }
    reply = readReply(fc, limit);
    return true;
}

// The first byte of a sheet: bounded by tmrScan when the feeder runs on its own, otherwise
// as long as the operator takes, until CancelScan.
wait::Outcome awaitSheet(frmComm& fc, bool timed)
{
    if (timed)
        return wait::awaitBytes(fc, 1);
    fc.tmrScan.Enabled(false);
    return wait::awaitByteUntilCancel(fc) ? wait::Outcome::Arrived : wait::Outcome::Cancelled;
}

// Feeds the page stream to the decoder until the page ends or breaks; False when a byte
// does not arrive in time.
bool receivePage(frmComm& fc, OpScanPageDecoder& decoder)
{
    while (decoder.step() == OpScanPageDecoder::Step::More) {
        if (wait::awaitBytes(fc, 1) != wait::Outcome::Arrived)
            return false;
        if (const auto b = wait::takeByte(fc.mscComm))
            decoder.feed(*b);
    }
    return true;
}

} // namespace

bool GetScanModeNCS(clsZEBReader& reader, int32_t& mode)
{
    return trap(locGetScanMode, false, [&] {
        proto::Reply reply;
        if (!query(reader, proto::fullStatusQuery(), proto::FullStatusMinimum, proto::FullStatusLimit,
                   locGetScanMode, reply))
            return false;
        const auto status = proto::parseFullStatus(reply);
        sReaderState = status.state;
        if (status.mode)
            mode = *status.mode;
        drain(Reader::fComm(reader).mscComm);
        return true;
    });
}

bool SetScanModeNCS(clsZEBReader& reader, int32_t mode)
{
    return trap(locSetScanMode, false, [&] {
        auto& com = Reader::fComm(reader).mscComm;
        drain(com);
        if (mode == 0) {
            basError::ReportDevice(proto::InvalidScanModeText, locSetScanMode, proto::InvalidScanModeTitle);
            return false;
        }
        com.Output(proto::setModeCommand(mode));
        frmComm::Sleep(200);
        // An idle scanner stays paused after a mode change until it is told to go on.
        if (sReaderState.empty() || sReaderState[0] == 'I')
            com.Output(proto::nextSheetCommand());
        drain(com);
        return true;
    });
}

bool InitReaderNCS(clsZEBReader& reader)
{
    return trap(locInit, false, [&] {
        sReaderState.clear();
        lSavedScanMode = 0;
        if (!GetScanModeNCS(reader, lSavedScanMode))
            return false;
        if (lSavedScanMode != proto::ReadingMode) {
            if (!SetScanModeNCS(reader, proto::TransitionMode) || !SetScanModeNCS(reader, proto::ReadingMode))
                return false;
            int32_t mode = 0;
            int32_t polls = 0;
            do {
                if (!GetScanModeNCS(reader, mode))
                    return false;
                if (polls > maxModePolls) {
                    basError::ReportDevice(proto::NoResponseStatus, locInit, proto::NoResponseTitle);
                    return false;
                }
                ++polls;
            } while (mode != proto::ReadingMode);
        }
        Reader::fComm(reader).mscComm.Output(proto::readyCommand());
        return true;
    });
}

bool CloseReaderNCS(clsZEBReader& reader)
{
    return trap(locClose, false, [&] {
        if (reader.SleepTime() < 1)
            reader.SleepTime(50);
        frmComm::Sleep(2 * static_cast<int64_t>(reader.SleepTime()));
        if (!reader.Feeder())
            Reader::fComm(reader).mscComm.Output(proto::feederOffCommand());
        const int32_t saved = lSavedScanMode;
        if (saved == 2 || saved == 3 || saved == 4 || saved == 6) {
            frmComm::Sleep(2 * static_cast<int64_t>(reader.SleepTime()));
            if (!SetScanModeNCS(reader, proto::TransitionMode) || !SetScanModeNCS(reader, saved))
                return false;
        }
        return true;
    });
}

bool CheckStatusNCS(clsZEBReader& reader)
{
    return trap(locCheckStatus, false, [&] {
        proto::Reply reply;
        if (!query(reader, proto::shortStatusQuery(), proto::ShortStatusMinimum, proto::ShortStatusLimit,
                   locCheckStatus, reply))
            return false;
        const auto fault = proto::classifyStatus(reply);
        if (fault == proto::StatusFault::None)
            return true;
        if (fault != proto::StatusFault::Unreported) {
            const auto message = proto::faultMessage(fault);
            basError::ReportDevice(message.text, locCheckStatus, message.title);
            if (reader.Rejecter())
                RejectPageNCS(reader);
        }
        return false;
    });
}

bool PrintNCS(clsZEBReader& reader)
{
    return trap(locPrint, false, [&] {
        const auto printer = reader.Printer();
        if (!printer)
            return false;
        auto& com = Reader::fComm(reader).mscComm;
        com.Output(proto::imprinterPositionCommand(printer->Distance()));
        com.Output(proto::imprinterTextCommand(printer->Buffer1()));
        return true;
    });
}

void RejectPageNCS(clsZEBReader& reader)
{
    trapVoid(locReject, [&] { Reader::fComm(reader).mscComm.Output(proto::rejectCommand()); });
}

void EjectPageNCS(clsZEBReader& reader)
{
    trapVoid(locEject, [&] { Reader::fComm(reader).mscComm.Output(proto::ejectCommand()); });
}

bool ReadPageNCS(clsZEBReader& reader)
{
    return trap(locReadPage, false, [&] {
        const bool withSide2 = reader.Duplex() && reader.DuplexForm();
        OpScanPageDecoder decoder(withSide2);
        auto& fc = Reader::fComm(reader);
        auto& com = fc.mscComm;

        drain(com);
        com.Output(proto::nextSheetCommand());
        switch (awaitSheet(fc, reader.Feeder() && !reader.ReaderGrade())) {
        case wait::Outcome::TimedOut:
            basError::ReportDevice(proto::NoResponseScanning, locReadPage, proto::NoResponseTitle);
            return false;
        case wait::Outcome::Cancelled: return false;
        case wait::Outcome::Arrived: break;
        }

        if (!receivePage(fc, decoder)) {
            basError::ReportDevice(proto::NoResponseReading, locReadPage, proto::NoResponseTitle);
            return false;
        }
        if (decoder.step() == OpScanPageDecoder::Step::InvalidRow) {
            const auto& fault = decoder.rowFault();
            basError::ReportDevice(proto::invalidRowMessage(fault.side, fault.count, fault.lineNumber),
                                   locReadPage, proto::InvalidBytesTitle);
            return false;
        }

        Reader::Side1TimingMarks(reader, static_cast<int16_t>(decoder.lines(1)));
        if (withSide2)
            Reader::Side2TimingMarks(reader, static_cast<int16_t>(decoder.lines(2)));
        if (reader.ReaderGrade())
            frmComm::Sleep(10 * static_cast<int64_t>(reader.SleepTime()));
        drain(com);
        if (!CheckStatusNCS(reader))
            return false;

        Reader::Side1Array(reader, decoder.side1());
        Reader::Side2Array(reader, decoder.side2());
        Reader::BarcodeArray(reader, decoder.barcodes());
        return true;
    });
}

} // namespace zebreader81::basNCS
