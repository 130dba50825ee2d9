#include "sim/chatsworth/ChatsworthSimulator.h"

#include "sim/chatsworth/CardData.h"

#include <algorithm>
#include <cstdio>

namespace zebreader81::sim {

namespace {

constexpr char DC2 = '\x12';
constexpr char ESC = '\x1b';
constexpr char CR = '\r';
const std::string accepted{'G', CR};
const std::string terminator{DC2, 'E'};

constexpr uint8_t exitControl = 0x01;
constexpr uint8_t feedControl = 0x02;
constexpr uint8_t selfTestFailure = 4;

bool isOctal(char c) { return c >= '0' && c <= '7'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

int hexValue(char c)
{
    if (isDigit(c))
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

// Where a download command goes wrong: the index of the first character the reader cannot
// take (the command's length when it ends too soon), or npos when it is good. Only binary
// conversion and the channel enable are understood.
std::size_t badCharacter(const std::string& command)
{
    const char op = command.empty() ? '\0' : command[0];
    const std::size_t digits = op == 'R' ? 4 : op == 'I' ? 2 : 0;
    if (digits == 0)
        return 0;
    for (std::size_t i = 1; i <= digits; ++i)
        if (i >= command.size() || !(op == 'R' ? isOctal(command[i]) : isDigit(command[i])))
            return i;
    return command.size() > digits + 1 ? digits + 1 : std::string::npos;
}

std::string joined(const std::vector<std::string>& parts)
{
    std::string out;
    for (const auto& p : parts)
        out += (out.empty() ? "" : " ") + p;
    return out;
}

} // namespace

ChatsworthSimulator::ChatsworthSimulator(std::vector<Sheet> sheets) : sheets_(sheets.begin(), sheets.end())
{
    start();
}

ChatsworthSimulator::~ChatsworthSimulator() { stop(); }

void ChatsworthSimulator::addSheet(Sheet sheet)
{
    std::lock_guard lock(stateMutex);
    sheets_.push_back(std::move(sheet));
    feedIfWaiting();
}

std::size_t ChatsworthSimulator::sheetsLeft() const
{
    std::lock_guard lock(stateMutex);
    return sheets_.size();
}

void ChatsworthSimulator::setFlags(uint8_t flags)
{
    std::lock_guard lock(stateMutex);
    flags_ = pendingFlags_ = flags;
}

uint8_t ChatsworthSimulator::flags() const
{
    std::lock_guard lock(stateMutex);
    return flags_;
}

bool ChatsworthSimulator::converting() const
{
    std::lock_guard lock(stateMutex);
    return converting_;
}

void ChatsworthSimulator::powerCycle()
{
    std::lock_guard lock(stateMutex);
    converting_ = false;
    enabled_ = false;
    pendingFlags_ = flags_;
    busyUntil_ = {};
}

void ChatsworthSimulator::setStatusBits(uint8_t bits)
{
    std::lock_guard lock(stateMutex);
    statusBits_ = bits & (selfTestFailure | 64);
}

void ChatsworthSimulator::setCardInTransport(bool value)
{
    std::lock_guard lock(stateMutex);
    holding_ = value;
}

bool ChatsworthSimulator::cardInTransport() const
{
    std::lock_guard lock(stateMutex);
    return holding_;
}

void ChatsworthSimulator::jamAfterRows(int rows)
{
    std::lock_guard lock(stateMutex);
    jamAfter_ = rows;
}

void ChatsworthSimulator::clearJam()
{
    std::lock_guard lock(stateMutex);
    jammed_ = false;
    jamAfter_ = -1;
}

void ChatsworthSimulator::setFirmware(const std::string& text)
{
    std::lock_guard lock(stateMutex);
    firmware_ = text;
}

void ChatsworthSimulator::setFeedDelay(std::chrono::milliseconds delay)
{
    std::lock_guard lock(stateMutex);
    feedDelay_ = delay;
}

void ChatsworthSimulator::overrideAnswer(const std::string& word, const std::string& bytes,
                                         std::chrono::milliseconds delay)
{
    std::lock_guard lock(stateMutex);
    overrides_[word] = {bytes, delay};
}

void ChatsworthSimulator::clearOverrides()
{
    std::lock_guard lock(stateMutex);
    overrides_.clear();
}

std::vector<std::string> ChatsworthSimulator::words() const
{
    std::lock_guard lock(stateMutex);
    return words_;
}

std::vector<std::string> ChatsworthSimulator::dispositions() const
{
    std::lock_guard lock(stateMutex);
    return dispositions_;
}

void ChatsworthSimulator::onReceive(std::string_view bytes)
{
    std::lock_guard lock(stateMutex);
    inbox_ += bytes;
    // A command runs from DC2 to the closing DC2 "E"; anything before a DC2 is line noise.
    for (;;) {
        const auto start = inbox_.find(DC2);
        if (start == std::string::npos) {
            inbox_.clear();
            return;
        }
        inbox_.erase(0, start);
        const auto end = inbox_.find(terminator);
        if (end == std::string::npos)
            return;
        const std::string frame = inbox_.substr(0, end + terminator.size());
        inbox_.erase(0, frame.size());
        handleFrame(frame);
    }
}

bool ChatsworthSimulator::busy() const { return now() < busyUntil_; }

void ChatsworthSimulator::handleFrame(const std::string& frame)
{
    const bool extended = frame.size() > 1 && frame[1] == ESC;
    const std::string word = extended ? frame.substr(2, frame.size() - 4) : std::string{};
    if (busy()) {
        words_.push_back("ignored " + (extended ? word : std::string("download")));
        return;
    }
    if (!extended) {
        handleDownload(frame);
        return;
    }
    words_.push_back(word);
    if (const auto o = overrides_.find(word); o != overrides_.end()) {
        sendAfter(o->second.second, o->second.first);
        return;
    }
    answerWord(word, frame);
}

void ChatsworthSimulator::handleDownload(const std::string& frame)
{
    // DC2 command DC2 command ... DC2 "E"; DC2 "E" alone clears the conversion.
    std::vector<std::string> commands;
    for (std::size_t at = 1; at < frame.size() - terminator.size() + 1;) {
        const auto next = frame.find(DC2, at);
        commands.push_back(frame.substr(at, next - at));
        at = next + 1;
    }
    std::size_t at = 1;
    bool channels = false, binary = false;
    for (const auto& command : commands) {
        if (const auto bad = badCharacter(command); bad != std::string::npos) {
            words_.push_back("?download " + joined(commands));
            refuse(frame, at + bad);
            return;
        }
        channels |= command == "R7777";
        binary |= command == "I00";
        at += command.size() + 1;
    }
    words_.push_back(commands.empty() ? "download" : "download " + joined(commands));
    converting_ = commands.empty() ? false : (converting_ || (channels && binary));
    send(accepted);
}

void ChatsworthSimulator::refuse(const std::string& frame, std::size_t badAt)
{
    send(frame.substr(0, badAt + 1) + "?" + CR);
}

void ChatsworthSimulator::answerWord(const std::string& word, const std::string& frame)
{
    const auto refuseWord = [&](std::size_t at) {
        words_.back() = "?" + word;
        refuse(frame, 2 + at);
    };
    if (word == "E") {
        // A jam, a failed self-test or a card waiting to go out keep the transport shut.
        if (jammed_ || holding_ || (statusBits_ & selfTestFailure))
            return refuseWord(0);
        enabled_ = true;
        send(accepted);
        feedIfWaiting();
    } else if (word == "D") {
        enabled_ = false;
        send(accepted);
    } else if (word == "ER" || word == "EF") {
        if (!(flags_ & exitControl))
            return refuseWord(1);
        if (holding_)
            dispositions_.push_back(word);
        holding_ = false;
        send(accepted);
        feedIfWaiting();
    } else if (word == "S") {
        send(std::string{static_cast<char>(statusByte()), CR});
    } else if (word == "V") {
        send(firmware_ + accepted);
    } else if (word == "GETCONFIG") {
        char text[32];
        std::snprintf(text, sizeof text, "22 %02X 80 EVEINL80 1.5 ", flags_);
        send("G" + std::string(text) + CR);
    } else if (word.rfind("SETFLAGS", 0) == 0) {
        const std::string arg = word.substr(8);
        for (std::size_t i = 0; i < 3; ++i)
            if (i == 2 ? arg.size() > 2 : (i >= arg.size() || hexValue(arg[i]) < 0))
                return refuseWord(8 + i);
        pendingFlags_ = static_cast<uint8_t>(hexValue(arg[0]) * 16 + hexValue(arg[1]));
        send(accepted);
    } else if (word == "CHECKSUM") {
        flags_ = pendingFlags_;
        send(accepted);
    } else {
        refuseWord(0);
    }
}

uint8_t ChatsworthSimulator::statusByte() const
{
    uint8_t s = statusBits_;
    if (holding_)
        s |= 1;
    if (jammed_)
        s |= 2;
    if (!holding_ && !jammed_)
        s |= 16;
    if (enabled_)
        s |= 32;
    return s;
}

void ChatsworthSimulator::feedIfWaiting()
{
    while (enabled_ && !holding_ && !jammed_ && !sheets_.empty()) {
        const Sheet sheet = std::move(sheets_.front());
        sheets_.pop_front();
        busyUntil_ = std::max(now(), busyUntil_) + feedDelay_;
        if (flags_ & feedControl)
            enabled_ = false;
        // Without a conversion the card goes through and nothing is sent.
        if (jamAfter_ >= 0) {
            jammed_ = true;
            if (converting_)
                sendAfter(feedDelay_, cardData(sheet, static_cast<std::size_t>(jamAfter_)));
            jamAfter_ = -1;
            return;
        }
        if (converting_)
            sendAfter(feedDelay_, cardData(sheet) + CR);
        if (flags_ & exitControl)
            holding_ = true;
        else
            dispositions_.push_back("rear");
    }
}

} // namespace zebreader81::sim
