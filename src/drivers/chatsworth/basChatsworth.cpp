#include "drivers/chatsworth/basChatsworth.h"

#include "channel/Waits.h"
#include "channel/frmComm.h"
#include "core/basError.h"
#include "drivers/ChatsworthCard.h"
#include "drivers/ChatsworthCommandSet.h"
#include "drivers/ReaderAccess.h"
#include "profiles/ModelTable.h"

#include <chrono>
#include <limits>
#include <optional>

namespace zebreader81::basChatsworth {

using namespace chatsworth;

namespace {

constexpr const char* Title = "Chatsworth Scanner Error";
constexpr const char* InitLocation = "ZEBReader81 - basChatsworth.InitReaderCT";
constexpr const char* ReadLocation = "ZEBReader81 - basChatsworth.ReadPageCT";
constexpr const char* RejectLocation = "ZEBReader81 - basChatsworth.RejectPageCT";

constexpr int32_t CardRows = 126;
// A card stuck in the transport is sent out at most this often before the init gives up.
constexpr int MaxTransportEjects = 3;
// Longest a drain keeps reading a line that never falls quiet.
constexpr auto drainLimit = std::chrono::seconds(1);
// Longer than any answer but a card: the echo of a refused command and "?" CR.
constexpr std::size_t MaxAnswer = 64;

bool fail(const std::string& message, const char* location)
{
    basError::ReportDevice(message, location, Title);
    return false;
}

std::string says(const std::string& what) { return "Chatsworth Scanner - " + what; }

// The card of a model that RejectPage and EjectPage reach waits for them after its data.
bool cardWaitsForTheHost(const clsZEBReader& reader)
{
    return hasCapability(reader.ReaderType(), RoutesRejectEject);
}

// Disarms the timer however the wait ends.
class Armed {
public:
    explicit Armed(OneShotTimer& timer) : timer_(timer)
    {
        timer_.Enabled(false);
        timer_.Enabled(true);
    }
    ~Armed() { timer_.Enabled(false); }
    Armed(const Armed&) = delete;
    Armed& operator=(const Armed&) = delete;

private:
    OneShotTimer& timer_;
};

// Next byte within tmrScan, armed for this byte alone or (watchdog) already running over a
// whole answer.
std::optional<char> byteInTime(frmComm& fc, bool watchdog = false)
{
    if (wait::awaitBytes(fc, 1, {.pace = std::nullopt, .cancel = false, .watchdog = watchdog}) !=
        wait::Outcome::Arrived)
        return std::nullopt;
    const auto b = wait::takeByte(fc.mscComm);
    return b ? std::optional<char>(static_cast<char>(*b)) : std::nullopt;
}

// Next byte, however long the operator takes; nullopt once CancelScan is set.
std::optional<char> byteUnlessCancelled(frmComm& fc)
{
    if (!wait::awaitByteUntilCancel(fc))
        return std::nullopt;
    const auto b = wait::takeByte(fc.mscComm);
    return b ? std::optional<char>(static_cast<char>(*b)) : std::nullopt;
}

// Sends `bytes` and takes the answer up to its CR within the reader's time-out.
std::string converse(clsZEBReader& reader, const std::string& bytes)
{
    auto& fc = Reader::fComm(reader);
    wait::drain(fc.mscComm, drainLimit);
    fc.mscComm.Output(bytes);
    Armed armed(fc.tmrScan);
    std::string answer;
    while (answer.size() < MaxAnswer) {
        const auto b = byteInTime(fc, true);
        if (!b)
            break;
        answer += *b;
        if (*b == CR)
            break;
    }
    return answer;
}

std::string faultMessage(const std::string& answer, const std::string& command)
{
    if (answer.empty())
        return says("No answer from the scanner to the " + command + " command.");
    if (isRefusal(answer))
        return says("The scanner refused the " + command + " command.");
    return says("Unexpected answer from the scanner to the " + command + " command.");
}

// Sends a command that is answered "G" CR; reports any other answer.
bool command(clsZEBReader& reader, const std::string& bytes, const std::string& name, const char* location)
{
    const std::string answer = converse(reader, bytes);
    if (classify(answer) == Reply::Accepted)
        return true;
    return fail(faultMessage(answer, name), location);
}

std::optional<uint8_t> askStatus(clsZEBReader& reader, const char* location)
{
    const std::string answer = converse(reader, frame("S"));
    const auto status = statusOf(answer);
    if (!status)
        fail(faultMessage(answer, "status"), location);
    return status;
}

// GETCONFIG's flags; the configuration text may come after a "G".
std::optional<uint8_t> askFlags(clsZEBReader& reader)
{
    const std::string answer = converse(reader, frame("GETCONFIG"));
    std::optional<uint8_t> flags;
    if (answer.ends_with(CR) && !isRefusal(answer)) {
        const std::string_view text = std::string_view(answer).substr(answer.starts_with('G') ? 1 : 0);
        flags = flagsOf(parseConfigText(text));
    }
    if (!flags)
        fail(faultMessage(answer, "GETCONFIG"), InitLocation);
    return flags;
}

// Feed and exit control, kept in the reader's EEPROM; they hold once the checksum is written.
bool setControls(clsZEBReader& reader)
{
    const auto flags = askFlags(reader);
    if (!flags)
        return false;
    const auto wanted = static_cast<uint8_t>(*flags | flag::FeedControl | flag::ExitControl);
    if (wanted == *flags)
        return true;
    return command(reader, frame(setFlagsWord(wanted)), "SETFLAGS", InitLocation) &&
           command(reader, frame("CHECKSUM"), "CHECKSUM", InitLocation);
}

// Asks for the status until no card is left in the transport, then checks the faults.
bool checkStatus(clsZEBReader& reader)
{
    for (int ejects = 0;; ++ejects) {
        const auto status = askStatus(reader, InitLocation);
        if (!status)
            return false;
        if (*status & status::SelfTestFailure)
            return fail(says("The scanner reports a self-test failure."), InitLocation);
        if (*status & status::Jam)
            return fail(says("The scanner reports a jam.  Clear the transport and retry."), InitLocation);
        if (!(*status & status::DocumentAtThroat))
            return true;
        if (ejects == MaxTransportEjects)
            return fail(says("A card stays in the transport.  Clear the transport and retry."), InitLocation);
        bool reject = true;
        if (!RejectPageCT(reader, reject))
            return false;
    }
}

// A card that stopped short: the status tells a jam from a line that fell silent.
bool cardStopped(clsZEBReader& reader, const chatsworth::CardDecoder& decoder)
{
    const auto status = askStatus(reader, ReadLocation);
    if (!status)
        return false;
    if (*status & status::Jam)
        return fail(says("The scanner reports a jam.  Clear the transport and retry."), ReadLocation);
    if (decoder.byteCount() == 0)
        return fail(says("No card was read within the time-out."), ReadLocation);
    return fail(says("The card data stopped after row " + std::to_string(decoder.rowsDone()) + "."),
                ReadLocation);
}

// Takes the card's data up to its CR; False after a report, or quietly on a cancel.
bool receiveCard(clsZEBReader& reader, CardDecoder& decoder)
{
    auto& fc = Reader::fComm(reader);
    // A hopper feeds within the time-out; a hand-fed card comes when the operator feeds it.
    std::optional<char> b = reader.Feeder() ? byteInTime(fc) : byteUnlessCancelled(fc);
    if (!b && reader.CancelScan())
        return false;
    for (;;) {
        if (!b)
            return cardStopped(reader, decoder);
        switch (decoder.feed(*b)) {
        case CardDecoder::Step::More: break;
        case CardDecoder::Step::End: return true;
        case CardDecoder::Step::Invalid:
            return fail(says("Byte " + std::to_string(static_cast<uint8_t>(*b)) + " in row " +
                             std::to_string(decoder.rowsDone() + 1) +
                             " of the card data is outside 32 to 127."),
                        ReadLocation);
        case CardDecoder::Step::TooLong:
            return fail(says("The card is longer than " + std::to_string(CardRows) + " rows."), ReadLocation);
        }
        // Once the card moves its bytes follow at line speed.
        b = byteInTime(fc);
    }
}

} // namespace

bool InitReaderCT(clsZEBReader& reader)
{
    return trap(InitLocation, false, [&] {
        // The conversion is lost at every power-off, so it is downloaded on every start.
        return setControls(reader) && command(reader, binaryDownload(), "binary conversion", InitLocation) &&
               checkStatus(reader);
    });
}

bool ReadPageCT(clsZEBReader& reader)
{
    return trap(ReadLocation, false, [&] {
        const int32_t mark = int32_t{reader.RecognitionThreshold()} + 1;
        if (mark > std::numeric_limits<int16_t>::max())
            err::raise(err::Overflow);
        CardDecoder decoder(static_cast<int16_t>(mark), CardRows, CardDecoder::Bytes::Printable);

        // The last card, if the host left it, goes on to the rear before the next comes in.
        if (cardWaitsForTheHost(reader) && !Reader::SheetHandled(reader)) {
            bool reject = false;
            if (!RejectPageCT(reader, reject))
                return false;
        }
        if (!command(reader, frame("E"), "enable", ReadLocation))
            return false;
        if (!receiveCard(reader, decoder)) {
            // No card may come in unasked after a failed or cancelled read.
            converse(reader, frame("D"));
            return false;
        }
        Reader::Side1TimingMarks(reader, decoder.rowsDone());
        Reader::Side1Array(reader, decoder.sheet());
        if (cardWaitsForTheHost(reader))
            return true;
        bool reject = false;
        return RejectPageCT(reader, reject);
    });
}

bool RejectPageCT(clsZEBReader& reader, bool& reject)
{
    return trap(RejectLocation, false, [&] {
        return command(reader, frame(reject ? "EF" : "ER"), reject ? "EF" : "ER", RejectLocation);
    });
}

} // namespace zebreader81::basChatsworth
