#include "sim/ncs/OpScanSimulator.h"

#include <algorithm>
#include <cstdio>

namespace zebreader81::sim {

namespace {

constexpr char EOT = 4;
constexpr char CR = 13;
constexpr char SO = 14;
constexpr char DC1 = 17;
constexpr char DC2 = 18;
constexpr char NAK = 21;
constexpr char ESC = 27;

constexpr int columns = 48;
constexpr const char* modeLetters = "ietdws";
// A text command longer than this without its EOT is line noise.
constexpr std::size_t maxTextCommand = 256;

char markCharacter(int strength)
{
    strength = std::clamp(strength, 0, 15);
    return static_cast<char>(strength < 10 ? '0' + strength : 'A' + strength - 10);
}

// Runs of three or more equal characters go out as NAK, count + 64, character.
void appendRuns(std::string& out, const std::string& text)
{
    for (std::size_t i = 0; i < text.size();) {
        std::size_t j = i;
        while (j < text.size() && text[j] == text[i] && j - i < 191)
            ++j;
        const std::size_t run = j - i;
        if (run >= 3)
            out += {NAK, static_cast<char>(64 + run), text[i]};
        else
            out.append(run, text[i]);
        i = j;
    }
}

std::string rowText(const std::vector<int>& row)
{
    std::string text(columns, '0');
    for (std::size_t c = 0; c < row.size() && c < columns; ++c)
        text[c] = markCharacter(row[c]);
    return text;
}

std::string printable(const std::string& bytes)
{
    std::string out;
    for (unsigned char c : bytes) {
        if (c >= 32 && c < 127) {
            out += static_cast<char>(c);
        } else {
            char hex[8];
            std::snprintf(hex, sizeof hex, "<%02X>", c);
            out += hex;
        }
    }
    return out;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

} // namespace

OpScanSimulator::OpScanSimulator(std::vector<Sheet> sheets) : hopper_(sheets.begin(), sheets.end())
{
    start();
}

OpScanSimulator::~OpScanSimulator() { stop(); }

void OpScanSimulator::addSheet(Sheet sheet)
{
    std::lock_guard lock(stateMutex);
    hopper_.push_back(std::move(sheet));
}

std::size_t OpScanSimulator::sheetsWaiting() const
{
    std::lock_guard lock(stateMutex);
    return hopper_.size();
}

std::size_t OpScanSimulator::sheetsSent() const
{
    std::lock_guard lock(stateMutex);
    return sheetsSent_;
}

void OpScanSimulator::setMode(int32_t mode)
{
    std::lock_guard lock(stateMutex);
    mode_ = reportedMode_ = mode;
    pollsLeft_ = 0;
}

int32_t OpScanSimulator::reportedMode() const
{
    std::lock_guard lock(stateMutex);
    return reportedMode_;
}

void OpScanSimulator::setStateLetter(char letter)
{
    std::lock_guard lock(stateMutex);
    stateLetter_ = letter;
}

void OpScanSimulator::setModeLetterOverride(std::optional<char> letter, int32_t replies)
{
    std::lock_guard lock(stateMutex);
    modeLetterOverride_ = letter;
    overrideReplies_ = replies;
}

void OpScanSimulator::setModeChangePolls(int32_t polls)
{
    std::lock_guard lock(stateMutex);
    pollsBeforeChange_ = std::max(polls, 0);
}

int32_t OpScanSimulator::fullStatusPolls() const
{
    std::lock_guard lock(stateMutex);
    return fullPolls_;
}

void OpScanSimulator::setStatusBits(uint8_t a, uint8_t b)
{
    std::lock_guard lock(stateMutex);
    statusA_ = a;
    statusB_ = b;
}

void OpScanSimulator::setShortStatusLength(std::size_t length)
{
    std::lock_guard lock(stateMutex);
    shortStatusLength_ = std::clamp<std::size_t>(length, 4, 5);
}

void OpScanSimulator::setShortStatusTailDelay(std::chrono::milliseconds delay)
{
    std::lock_guard lock(stateMutex);
    shortStatusTailDelay_ = delay;
}

void OpScanSimulator::stallNextSheetAfter(std::size_t bytes)
{
    std::lock_guard lock(stateMutex);
    stallAfter_ = bytes;
}

void OpScanSimulator::feedRawOnce(std::string bytes)
{
    std::lock_guard lock(stateMutex);
    raw_ = std::move(bytes);
}

std::vector<std::string> OpScanSimulator::commands() const
{
    std::lock_guard lock(stateMutex);
    return commands_;
}

std::vector<std::string> OpScanSimulator::violations() const
{
    std::lock_guard lock(stateMutex);
    return violations_;
}

std::string OpScanSimulator::encodeSheet(const Sheet& sheet)
{
    std::string out;
    const std::size_t rows = std::max(sheet.side1.size(), sheet.side2.size());
    // Both read heads see the same row at once, so the sides' rows interleave.
    for (std::size_t r = 0; r < rows; ++r) {
        if (r < sheet.side1.size()) {
            out += 'a';
            appendRuns(out, rowText(sheet.side1[r]));
        }
        if (r < sheet.side2.size()) {
            out += 'b';
            appendRuns(out, rowText(sheet.side2[r]));
        }
    }
    if (!sheet.barcodes.empty()) {
        out += 'c';
        for (const auto& code : sheet.barcodes) {
            // Two characters of header (the text's length) before each barcode's text.
            char header[8];
            std::snprintf(header, sizeof header, "%02zu", code.size() % 100);
            out += header;
            appendRuns(out, code);
            out += 'd';
        }
    }
    out += CR;
    return out;
}

void OpScanSimulator::onReceive(std::string_view bytes)
{
    pending_.append(bytes);
    while (!pending_.empty()) {
        const std::size_t used = parseCommand();
        if (used == 0)
            break;
        pending_.erase(0, used);
    }
    processed_ += bytes.size();
    processedChanged_.notify_all();
}

bool OpScanSimulator::waitProcessed(std::size_t bytes, std::chrono::milliseconds timeout) const
{
    std::unique_lock lock(stateMutex);
    return processedChanged_.wait_for(lock, timeout, [&] { return processed_ >= bytes; });
}

// Handles the command at the front of pending_; returns the bytes it took, 0 while incomplete.
std::size_t OpScanSimulator::parseCommand()
{
    const std::string& in = pending_;
    auto record = [this](std::size_t n) {
        commands_.push_back(pending_.substr(0, n));
        return n;
    };
    switch (in[0]) {
    case 's':
        if (in.size() < 2)
            return 0;
        if (in[1] == '0')
            fullStatus();
        else if (in[1] == '1')
            shortStatus();
        else
            violation("unknown status query " + printable(in.substr(0, 2)));
        return record(2);
    case 'e': {
        // "e", letter, EOT; a bare "e", EOT is what a driver sends for a mode it has no letter for.
        if (in.size() < 2 || (in[1] != EOT && in.size() < 3))
            return 0;
        const std::size_t length = in[1] == EOT ? 2 : 3;
        modeCommand(in.substr(0, length));
        return record(length);
    }
    case 'r': ready_ = true; return record(1);
    case DC1: feed(); return record(1);
    case SO: return record(1);
    case ESC:
        if (in.size() < 2)
            return 0;
        if (in[1] == DC2)
            dispose("reject");
        else
            violation("ESC followed by " + printable(in.substr(1, 1)));
        return record(2);
    case DC2: dispose("eject"); return record(1);
    case '1':
    case '2': {
        const auto end = in.find(EOT);
        if (end == std::string::npos) {
            if (in.size() <= maxTextCommand)
                return 0;
            violation("imprinter command without EOT");
            return record(in.size());
        }
        const std::string body = in.substr(1, end - 1);
        if (in[0] == '1' && !(body.size() == 2 && isDigit(body[0]) && isDigit(body[1])))
            violation("imprinter position not two digits: " + printable(body));
        if (in[0] == '2' && (body.empty() || body.back() != ' '))
            violation("imprinter text without its closing blank: " + printable(body));
        return record(end + 1);
    }
    default: violation("unexpected byte " + printable(in.substr(0, 1))); return record(1);
    }
}

void OpScanSimulator::fullStatus()
{
    ++fullPolls_;
    if (pollsLeft_ > 0)
        --pollsLeft_;
    else
        reportedMode_ = mode_;
    std::string reply(51, '0');
    reply[0] = 'S';
    reply[34] = stateLetter_;
    // The mode letter comes upper-case; the driver folds it.
    const bool known = reportedMode_ >= 1 && reportedMode_ <= 6;
    reply[48] = modeLetterOverride_ ? *modeLetterOverride_
                                    : static_cast<char>(known ? modeLetters[reportedMode_ - 1] - 32 : '?');
    reply[50] = CR;
    if (modeLetterOverride_ && overrideReplies_ > 0 && --overrideReplies_ == 0)
        modeLetterOverride_.reset();
    send(reply);
}

void OpScanSimulator::shortStatus()
{
    const std::string reply{'1', static_cast<char>(0x40 | (statusA_ & 0x3F)),
                            static_cast<char>(0x40 | (statusB_ & 0x3F)), '0', CR};
    const std::string sent = reply.substr(0, shortStatusLength_);
    if (shortStatusTailDelay_.count() > 0) {
        send(sent.substr(0, sent.size() - 1));
        sendAfter(shortStatusTailDelay_, sent.substr(sent.size() - 1));
    } else {
        send(sent);
    }
}

void OpScanSimulator::modeCommand(const std::string& command)
{
    if (command.size() != 3 || command[2] != EOT) {
        violation("malformed mode command " + printable(command));
        return;
    }
    const char* at = std::char_traits<char>::find(modeLetters, 6, command[1]);
    if (!at) {
        violation("unknown scan mode letter " + printable(command.substr(1, 1)));
        return;
    }
    mode_ = static_cast<int32_t>(at - modeLetters) + 1;
    pollsLeft_ = pollsBeforeChange_;
    // A mode change leaves the transport paused until "r".
    ready_ = false;
}

void OpScanSimulator::feed()
{
    // Before "r" a DC1 only lets a paused scanner go on.
    if (!ready_)
        return;
    std::string stream;
    if (raw_) {
        stream = std::move(*raw_);
        raw_.reset();
    } else if (!hopper_.empty()) {
        stream = encodeSheet(hopper_.front());
        hopper_.pop_front();
        ++sheetsSent_;
        sheetInTransport_ = true;
    } else {
        return;
    }
    if (stallAfter_) {
        stream.resize(std::min(stream.size(), *stallAfter_));
        stallAfter_.reset();
    }
    if (!stream.empty())
        send(stream);
}

void OpScanSimulator::dispose(const char* what)
{
    if (!sheetInTransport_)
        violation(std::string(what) + " with no sheet to act on");
    sheetInTransport_ = false;
}

void OpScanSimulator::violation(std::string what) { violations_.push_back(std::move(what)); }

} // namespace zebreader81::sim
