#include "drivers/pdi/basPeripheralDynamics.h"

#include "channel/Waits.h"
#include "channel/frmComm.h"
#include "core/basError.h"
#include "drivers/ReaderAccess.h"
#include "drivers/pdi/PdiProtocol.h"

#include <chrono>
#include <limits>

namespace zebreader81::basPeripheralDynamics {

namespace {

constexpr const char* StatusTitle = "Status Error";
constexpr const char* StatusLocation = "ZEBReader81 - basPeripheralDynamics.CheckStatusPD";
constexpr const char* ThresholdTitle = "Threshold Initialization Error";
constexpr const char* ThresholdLocation = "ZEBReader81 - basPeripheralDynamics.SetRecThresholdPD";

// Once a status or threshold wait had to arm the timer, this interval replaces TimeOut's
// until the next ReaderInit.
constexpr int32_t ReplyIntervalMs = 1000;

void pause(int64_t ms) { frmComm::Sleep(ms); }

// Longest a flush keeps reading a line that never falls quiet; what follows then fails on
// the babble and is reported, where an endless flush would hang the host.
constexpr std::chrono::seconds flushLimit{1};

void flush(SerialControl& com) { wait::drain(com, flushLimit); }

// The character code of a one-character Input; nothing there is an invalid procedure call.
int16_t code(const std::string& ch)
{
    if (ch.empty())
        err::raise(err::InvalidProcedureCall);
    return static_cast<unsigned char>(ch[0]);
}

// Waits for `count` characters on the reply timer; false when it ran out first.
bool awaitReply(frmComm& fc, int16_t count)
{
    fc.tmrScan.Interval(ReplyIntervalMs);
    return wait::awaitBytes(fc, count) == wait::Outcome::Arrived;
}

} // namespace

bool InitReaderPD(clsZEBReader& reader)
{
    return trap("ZEBReader81 - basPeripheralDynamics.InitReaderPD", false, [&] {
        auto& com = Reader::fComm(reader).mscComm;
        const int64_t sleep = reader.SleepTime();
        com.InputLen(1);
        flush(com);
        com.Output(pdi::CmdReset);
        pause(500);

        int16_t status1 = 0;
        int16_t status2 = 0;
        if (!CheckStatusPD(reader, status1, status2))
            return false;
        if (status1 & pdi::Status1AnswerD)
            com.Output(pdi::CmdClearD);
        if (status1 & pdi::Status1AnswerG)
            com.Output(pdi::CmdClearG);
        if (status2 & pdi::Status2AnswerE) {
            pause(sleep * 2);
            com.Output(pdi::CmdClearE);
            pause(sleep * 2);
        }
        flush(com);
        return SetRecThresholdPD(reader, reader.SleepTime());
    });
}

void CloseReaderPD(clsZEBReader& reader)
{
    trapVoid("ZEBReader81 - basPeripheralDynamics.CloseReaderPD",
             [&] { Reader::fComm(reader).mscComm.Output(pdi::CmdEndRead); });
}

bool CheckStatusPD(clsZEBReader& reader, int16_t& status1, int16_t& status2)
{
    return trap(StatusLocation, false, [&] {
        auto& fc = Reader::fComm(reader);
        auto& com = fc.mscComm;
        const int64_t sleep = reader.SleepTime();
        flush(com);
        pause(sleep * 5);
        com.Output(pdi::CmdStatus);

        // The wait ends on the first character of the reply, not the third.
        if (wait::waitingAfter(fc.mscComm, sleep * 5) < pdi::StatusReplyLength && !awaitReply(fc, 1)) {
            basError::ReportDevice("The PDI scanner did not respond to a STATUS request.  Make sure the "
                                   "scanner is connected and powered on.",
                                   StatusLocation, StatusTitle);
            return false;
        }
        com.Input();
        status1 = code(com.Input());
        status2 = code(com.Input());

        if (const auto fault = pdi::statusFault(status1)) {
            basError::ReportDevice(*fault, StatusLocation, StatusTitle);
            EjectPagePD(reader);
            return false;
        }
        return true;
    });
}

bool SetRecThresholdPD(clsZEBReader& reader, int32_t sleepMs)
{
    return trap(ThresholdLocation, false, [&] {
        auto& fc = Reader::fComm(reader);
        auto& com = fc.mscComm;
        const int64_t sleep = sleepMs;
        auto noResponse = [] {
            basError::ReportDevice("There was no response from the PDI scanner while initializing.",
                                   ThresholdLocation, ThresholdTitle);
            return false;
        };

        flush(com);
        pause(sleep * 5);
        com.Output(pdi::CmdThresholdDown);
        if (wait::waitingAfter(fc.mscComm, sleep * 5) < pdi::ThresholdReplyLength &&
            !awaitReply(fc, pdi::ThresholdReplyLength))
            return noResponse();
        std::string reply;
        for (int i = 0; i < pdi::ThresholdReplyLength; ++i)
            reply += com.Input();
        const auto current = pdi::parseThreshold(reply);
        if (!current || reply.size() != pdi::ThresholdReplyLength) {
            basError::ReportDevice("The PDI scanner returned an invalid threshold setting.  Please reset the "
                                   "scanner and retry.",
                                   ThresholdLocation, ThresholdTitle);
            return false;
        }

        for (const char step : pdi::thresholdSteps(*current, reader.RecognitionThreshold())) {
            flush(com);
            com.Output(std::string(1, step));
            if (!awaitReply(fc, pdi::ThresholdReplyLength))
                return noResponse();
            pause(sleep);
            flush(com); // the answer only confirms the step
        }
        return true;
    });
}

bool ReadPagePD(clsZEBReader& reader)
{
    return trap("ZEBReader81 - basPeripheralDynamics.ReadPagePD", false, [&] {
        auto& fc = Reader::fComm(reader);
        auto& com = fc.mscComm;
        const int64_t sleep = reader.SleepTime();
        flush(com);
        com.InputLen(1);

        if (reader.RecognitionThreshold() == std::numeric_limits<int16_t>::max())
            err::raise(err::Overflow);
        const auto markValue = static_cast<int16_t>(reader.RecognitionThreshold() + 1);
        pdi::SheetDecoder sheet(markValue);

        int16_t status1 = 0;
        int16_t status2 = 0;
        if (!CheckStatusPD(reader, status1, status2))
            return false;
        if (!(status1 & pdi::ReadUnderWay)) {
            com.Output(pdi::CmdRead);
            pause(sleep * 5);
        }

        for (;;) {
            // A cancel ends the sheet even while its data streams in.
            if (!wait::awaitByteUntilCancel(fc) || reader.CancelScan())
                return false;
            const unsigned char c = static_cast<unsigned char>(code(com.Input()));
            if (c == pdi::CR && com.InBufferCount() == 0)
                break;
            if (!sheet.started()) {
                const int16_t waiting = wait::waitingAfter(fc.mscComm, sleep * 5);
                if (c == pdi::LF) {
                    const int32_t rows = pdi::rowCount(waiting);
                    Reader::Side1TimingMarks(reader, static_cast<int16_t>(rows));
                    sheet.start(rows);
                }
                continue;
            }
            sheet.add(c);
        }

        com.Output(pdi::CmdEndRead);
        pause(sleep * 5);
        Reader::Side1Array(reader, sheet.marks());
        return true;
    });
}

void RejectPagePD(clsZEBReader& reader)
{
    trapVoid("ZEBReader81 - basPeripheralDynamics.RejectPagePD", [&] {
        Reader::fComm(reader).mscComm.Output(pdi::CmdReject);
        pause(1000);
    });
}

void EjectPagePD(clsZEBReader& reader)
{
    trapVoid("ZEBReader81 - basPeripheralDynamics.EjectPagePD", [&] {
        Reader::fComm(reader).mscComm.Output(pdi::CmdEject);
        pause(100);
    });
}

} // namespace zebreader81::basPeripheralDynamics
