#include "drivers/ezdata/basNCSEZData.h"

#include "channel/Waits.h"
#include "channel/frmComm.h"
#include "core/basError.h"
#include "drivers/ReaderAccess.h"
#include "drivers/ezdata/EZDataProtocol.h"
#include "drivers/ezdata/EZDataSheet.h"

#include <limits>
#include <optional>

namespace zebreader81::basNCSEZData {

using namespace ezdata;

namespace {

constexpr const char* Title = "EZData Scanner Error";
constexpr const char* InitLocation = "ZEBReader81 - basNCSEZData.InitReaderNCSEZ";
constexpr const char* CloseLocation = "ZEBReader81 - basNCSEZData.CloseReaderNCSEZ";
constexpr const char* ReadLocation = "ZEBReader81 - basNCSEZData.ReadPageNCSEZ";
constexpr const char* RejectLocation = "ZEBReader81 - basNCSEZData.RejectPageNCSEZ";
constexpr const char* SetValuesLocation = "ZEBReader81 - basNCSEZData.SetValuesNCSEZ";
constexpr const char* CheckThresholdLocation = "ZEBReader81 - basNCSEZData.CheckThresholdNCSEZ";

// A sheet stuck in the transport is ejected at most this often before the init gives up.
constexpr int MaxTransportEjects = 3;
// Longest a flush keeps draining a line that never falls quiet.
constexpr std::chrono::seconds flushLimit{1};

void flushInput(clsZEBReader& reader) { wait::drain(Reader::fComm(reader).mscComm, flushLimit); }

bool fail(const std::string& message, const char* location)
{
    basError::ReportDevice(message, location, Title);
    return false;
}

std::optional<char> takeByte(SerialControl& com)
{
    const auto b = wait::takeByte(com);
    return b ? std::optional<char>(static_cast<char>(*b)) : std::nullopt;
}

// Next byte, however long the scanner takes; nullopt once CancelScan is set.
std::optional<char> nextByteUnlessCancelled(frmComm& fc)
{
    for (;;) {
        if (!wait::awaitByteUntilCancel(fc))
            return std::nullopt;
        if (auto b = takeByte(fc.mscComm))
            return b;
    }
}

// A "G" CR answer to an action, byte by byte within the reader's time-out. Stops early on a
// first byte that is not "G": the fault is known.
std::string actionAnswer(frmComm& fc)
{
    std::string answer;
    fc.tmrScan.Enabled(true);
    while (answer.size() < 2 &&
           wait::awaitBytes(fc, 1, {.pace = std::nullopt, .cancel = false, .watchdog = true}) ==
               wait::Outcome::Arrived) {
        const auto b = takeByte(fc.mscComm);
        if (!b)
            continue;
        answer += *b;
        if (*b == CR || answer.front() != 'G')
            break;
    }
    fc.tmrScan.Enabled(false);
    return answer;
}

// Sends an action word and checks its "G" CR answer; `step` names the messages.
bool action(clsZEBReader& reader, std::string_view commandWord, std::string_view step, const char* location)
{
    auto& fc = Reader::fComm(reader);
    flushInput(reader);
    fc.mscComm.Output(frame(commandWord));
    const AnswerFault fault = checkAnswer(actionAnswer(fc), 2);
    if (fault != AnswerFault::None)
        return fail(answerMessage(step, fault), location);
    return true;
}

// GETCONFIG: the configuration text, or nullopt after a report (or a cancel).
std::optional<ConfigText> readConfiguration(clsZEBReader& reader)
{
    auto& fc = Reader::fComm(reader);
    fc.mscComm.Output(frame(word::GetConfig));
    if (wait::waitingAfter(fc.mscComm, 100) != static_cast<int16_t>(ConfigAnswerLength)) {
        fail(unexpectedData("GETCONFIG3"), InitLocation);
        return std::nullopt;
    }
    std::string answer;
    while (answer.size() < ConfigAnswerLength) {
        const auto b = nextByteUnlessCancelled(fc);
        if (!b)
            return std::nullopt;
        answer += *b;
        if (*b == CR)
            break;
    }
    if (const auto fault = checkAnswer(answer, ConfigAnswerLength); fault != AnswerFault::None) {
        fail(answerMessage("GETCONFIG", fault), InitLocation);
        return std::nullopt;
    }
    return parseConfigText(std::string_view(answer).substr(1, ConfigTextLength));
}

bool setValue(clsZEBReader& reader, const std::string& commandWord)
{
    return SetValuesNCSEZ(reader, frame(commandWord), commandWord);
}

// Asks for the status until no sheet is left in the transport, then checks the faults.
bool checkStatus(clsZEBReader& reader)
{
    auto& fc = Reader::fComm(reader);
    auto& com = fc.mscComm;
    for (int ejects = 0;; ++ejects) {
        flushInput(reader);
        com.Output(frame(word::Status));
        if (wait::waitingAfter(fc.mscComm, 100) != static_cast<int16_t>(StatusAnswerLength))
            return fail(unexpectedData("STATUS"), InitLocation);
        std::string answer;
        for (std::size_t i = 0; i < StatusAnswerLength; ++i)
            if (auto b = takeByte(com))
                answer += *b;
        const StatusAnswer status = checkStatusAnswer(answer);
        switch (status.fault) {
        case StatusFault::Incomplete: return fail(unexpectedData("STATUS"), InitLocation);
        case StatusFault::Refused: return fail(unexpectedData("STATUS?"), InitLocation);
        case StatusFault::NotAccepted: return fail(unexpectedData("STATUS1"), InitLocation);
        case StatusFault::None: break;
        }
        if ((status.status & status::SheetInTransport) && ejects < MaxTransportEjects) {
            if (!RejectPageNCSEZ(reader, true))
                return false;
            continue;
        }
        if (status.status & status::PowerOnFailure)
            return fail("EZData Scanner - Scanner reports a power-on failure.", InitLocation);
        // A sheet that would not leave counts as paper in the transport.
        if (status.status & (status::PaperInTransport | status::SheetInTransport))
            return fail("EZData Scanner - Scanner reports a paper in transport.  Clear transport and retry.",
                        InitLocation);
        return true;
    }
}

} // namespace

bool InitReaderNCSEZ(clsZEBReader& reader)
{
    return trap(InitLocation, false, [&] {
        flushInput(reader);
        frmComm::Sleep(100);

        const auto config = readConfiguration(reader);
        if (!config)
            return false;
        if (config->lineCode != "22")
            return fail("EZData Scanner - Invalid baud rate returned by scanner.", InitLocation);
        if (config->flags != "03" && !setValue(reader, std::string(word::SetFlags)))
            return false;
        if (config->timing != "80" && !setValue(reader, std::string(word::SetTiming)))
            return false;
        if (config->state != "INL")
            return fail("EZData Scanner - Incorrect scanner status (INL) returned by scanner.", InitLocation);
        const int16_t threshold = reader.RecognitionThreshold();
        if (!CheckThresholdNCSEZ(threshold, config->thresholdCode) &&
            !setValue(reader, std::string(word::SetThreshold) + std::to_string(threshold)))
            return false;
        if (config->decay != "1.5" && !setValue(reader, std::string(word::SetDecay)))
            return false;
        return checkStatus(reader);
    });
}

bool CloseReaderNCSEZ(clsZEBReader& reader)
{
    return trap(CloseLocation, false, [&] {
        // Nothing to disable when the port never opened; the open has been reported.
        if (!Reader::fComm(reader).mscComm.PortOpen())
            return false;
        return action(reader, word::Disable, "DISABLE", CloseLocation);
    });
}

bool ReadPageNCSEZ(clsZEBReader& reader)
{
    return trap(ReadLocation, false, [&] {
        const int32_t mark = int32_t{reader.RecognitionThreshold()} + 1;
        if (mark > std::numeric_limits<int16_t>::max())
            err::raise(err::Overflow);
        SheetDecoder decoder(static_cast<int16_t>(mark));

        auto& fc = Reader::fComm(reader);
        auto& com = fc.mscComm;
        flushInput(reader);
        com.Output(frame(word::Enable));
        const int16_t waiting = wait::waitingAfter(fc.mscComm, 500);
        const auto first = waiting > 0 ? takeByte(com) : std::nullopt;
        if (waiting != 2 || first != 'G') {
            if (first == '?')
                return fail(unexpectedData("ENABLE?"), ReadLocation);
            return fail(unexpectedData("ENABLE1"), ReadLocation);
        }
        takeByte(com);

        // The operator feeds the sheet: no time-out here, only CancelScan ends the wait.
        std::string data;
        for (;;) {
            const auto b = nextByteUnlessCancelled(fc);
            if (!b)
                return false;
            data += *b;
            switch (decoder.feed(*b)) {
            case SheetDecoder::Step::More: break;
            case SheetDecoder::Step::Invalid:
                return fail("EZData Scanner - Unexpected data returned from scanner (ENABLE2): " + data,
                            ReadLocation);
            case SheetDecoder::Step::End:
                Reader::Side1TimingMarks(reader, decoder.rowsDone());
                Reader::Side1Array(reader, decoder.sheet());
                return true;
            }
        }
    });
}

bool RejectPageNCSEZ(clsZEBReader& reader, bool reject)
{
    return trap(RejectLocation, false, [&] {
        return action(reader, reject ? word::Reject : word::Accept, "EJECT", RejectLocation);
    });
}

bool SetValuesNCSEZ(clsZEBReader& reader, const std::string& frame, const std::string& commandWord)
{
    return trap(SetValuesLocation, false, [&] {
        auto& fc = Reader::fComm(reader);
        auto& com = fc.mscComm;
        flushInput(reader);
        com.Output(frame);
        std::string answer;
        if (wait::waitingAfter(fc.mscComm, 100) == 2)
            for (int i = 0; i < 2; ++i)
                if (auto b = takeByte(com))
                    answer += *b;
        const SetValuesFault fault = checkSetValuesAnswer(answer);
        if (fault != SetValuesFault::None)
            return fail(setValuesMessage(fault, commandWord), SetValuesLocation);
        return true;
    });
}

bool CheckThresholdNCSEZ(int16_t wanted, const std::string& thresholdCode)
{
    return trap(CheckThresholdLocation, false,
                [&] { return thresholdOfCode(thresholdCode).value_or(wanted) == wanted; });
}

} // namespace zebreader81::basNCSEZData
