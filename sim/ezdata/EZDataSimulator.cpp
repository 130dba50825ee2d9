#include "sim/ezdata/EZDataSimulator.h"

#include "sim/chatsworth/CardData.h"

#include <cctype>

namespace zebreader81::sim {

namespace {

constexpr char kDC2 = '\x12';
constexpr char kESC = '\x1b';
constexpr char kCR = '\r';
const std::string kOk{'G', kCR};
const std::string kRefused{'?', kCR};
const std::string kProbeBody = std::string("R7777") + kDC2 + "I00";

std::string fit(const std::string& value, std::size_t width)
{
    std::string out = value.substr(0, width);
    out.resize(width, ' ');
    return out;
}

bool allDigits(const std::string& s)
{
    if (s.empty())
        return false;
    for (char c : s)
        if (!std::isdigit(static_cast<unsigned char>(c)))
            return false;
    return true;
}

bool startsWith(const std::string& s, const std::string& prefix) { return s.rfind(prefix, 0) == 0; }

} // namespace

EZDataSimulator::EZDataSimulator(std::vector<Sheet> sheets) : sheets_(sheets.begin(), sheets.end())
{
    start();
}

EZDataSimulator::~EZDataSimulator() { stop(); }

void EZDataSimulator::addSheet(Sheet sheet)
{
    std::lock_guard lock(stateMutex);
    sheets_.push_back(std::move(sheet));
    feedIfWaiting();
}

std::size_t EZDataSimulator::sheetsLeft() const
{
    std::lock_guard lock(stateMutex);
    return sheets_.size();
}

void EZDataSimulator::setLineCode(const std::string& v)
{
    std::lock_guard lock(stateMutex);
    lineCode_ = fit(v, 2);
}
void EZDataSimulator::setFlags(const std::string& v)
{
    std::lock_guard lock(stateMutex);
    flags_ = fit(v, 2);
}
void EZDataSimulator::setTiming(const std::string& v)
{
    std::lock_guard lock(stateMutex);
    timing_ = fit(v, 2);
}
void EZDataSimulator::setState(const std::string& v)
{
    std::lock_guard lock(stateMutex);
    state_ = fit(v, 3);
}
void EZDataSimulator::setThresholdCode(const std::string& v)
{
    std::lock_guard lock(stateMutex);
    thresholdCode_ = fit(v, 2);
}
void EZDataSimulator::setDecay(const std::string& v)
{
    std::lock_guard lock(stateMutex);
    decay_ = fit(v, 3);
}

std::string EZDataSimulator::configText() const
{
    std::lock_guard lock(stateMutex);
    // 1-2 line, 4-5 flags, 7-8 timing, 10-11 head count, 13-15 state, 16-17 threshold,
    // 19-21 decay; the rest blanks.
    return lineCode_ + " " + flags_ + " " + timing_ + " 01 " + state_ + thresholdCode_ + " " + decay_ + " ";
}

void EZDataSimulator::setStatusBits(uint8_t bits)
{
    std::lock_guard lock(stateMutex);
    statusBits_ = bits & 0x1e;
}

void EZDataSimulator::setSheetInTransport(bool value)
{
    std::lock_guard lock(stateMutex);
    inTransport_ = value;
}

bool EZDataSimulator::sheetInTransport() const
{
    std::lock_guard lock(stateMutex);
    return inTransport_;
}

void EZDataSimulator::setFirmware(const std::string& text)
{
    std::lock_guard lock(stateMutex);
    firmware_ = text;
}

void EZDataSimulator::setFeedDelay(std::chrono::milliseconds delay)
{
    std::lock_guard lock(stateMutex);
    feedDelay_ = delay;
}

void EZDataSimulator::overrideAnswer(const std::string& word, const std::string& bytes,
                                     std::chrono::milliseconds delay)
{
    std::lock_guard lock(stateMutex);
    overrides_[word] = {bytes, delay};
}

void EZDataSimulator::clearOverrides()
{
    std::lock_guard lock(stateMutex);
    overrides_.clear();
}

std::vector<std::string> EZDataSimulator::words() const
{
    std::lock_guard lock(stateMutex);
    return words_;
}

std::vector<std::string> EZDataSimulator::dispositions() const
{
    std::lock_guard lock(stateMutex);
    return dispositions_;
}

std::string EZDataSimulator::unframed() const
{
    std::lock_guard lock(stateMutex);
    return unframed_;
}

void EZDataSimulator::onReceive(std::string_view bytes)
{
    std::lock_guard lock(stateMutex);
    inbox_ += bytes;
    // A frame runs from DC2 to the closing DC2 "E"; anything before a DC2 is line noise.
    for (;;) {
        const auto start = inbox_.find(kDC2);
        unframed_ += inbox_.substr(0, start);
        if (start == std::string::npos) {
            inbox_.clear();
            return;
        }
        inbox_.erase(0, start);
        const auto end = inbox_.find(std::string{kDC2, 'E'}, 1);
        if (end == std::string::npos)
            return;
        const std::string body = inbox_.substr(1, end - 1);
        inbox_.erase(0, end + 2);
        handleFrame(body);
    }
}

void EZDataSimulator::handleFrame(const std::string& body)
{
    if (body == kProbeBody) {
        words_.push_back("probe");
        send(kOk);
        return;
    }
    if (body.size() < 2 || body[0] != kESC || body.find(kDC2) != std::string::npos) {
        words_.push_back("?" + body);
        send(kRefused);
        return;
    }
    const std::string word = body.substr(1);
    words_.push_back(word);
    if (const auto o = overrides_.find(word); o != overrides_.end()) {
        sendAfter(o->second.second, o->second.first);
        return;
    }
    answerWord(word);
}

void EZDataSimulator::answerWord(const std::string& word)
{
    if (word == "GETCONFIG") {
        send("G" + configText() + kCR);
    } else if (word == "S") {
        const char status = static_cast<char>(0x20 | statusBits_ | (inTransport_ ? 1 : 0));
        send(std::string{'G', status, kCR});
    } else if (word == "E") {
        // Not ready to read: refused, as the scanner does.
        if (state_ != "INL" || (statusBits_ & 0x14) != 0) {
            send(kRefused);
            return;
        }
        send(kOk);
        if (inTransport_) {
            dispositions_.push_back("next");
            inTransport_ = false;
        }
        enabled_ = true;
        feedIfWaiting();
    } else if (word == "ER" || word == "EF") {
        if (inTransport_)
            dispositions_.push_back(word);
        inTransport_ = false;
        send(kOk);
    } else if (word == "D") {
        enabled_ = false;
        send(kOk);
    } else if (word == "V") {
        send(firmware_ + kOk);
    } else if (applySetting(word)) {
        send(kOk);
    } else {
        send(kRefused);
    }
}

bool EZDataSimulator::applySetting(const std::string& word)
{
    auto argument = [&](const std::string& command) { return word.substr(command.size()); };
    if (startsWith(word, "SETFLAGS") && argument("SETFLAGS").size() == 2 && allDigits(argument("SETFLAGS"))) {
        flags_ = argument("SETFLAGS");
        return true;
    }
    if (startsWith(word, "SETTMCH") && argument("SETTMCH").size() == 1 && allDigits(argument("SETTMCH"))) {
        timing_ = "8" + argument("SETTMCH");
        return true;
    }
    if (startsWith(word, "SETTHRESH") && argument("SETTHRESH").size() == 1 &&
        allDigits(argument("SETTHRESH"))) {
        thresholdCode_ = std::to_string(60 + 2 * (argument("SETTHRESH")[0] - '0'));
        return true;
    }
    if (startsWith(word, "SETDECAY") && argument("SETDECAY").size() == 1 && allDigits(argument("SETDECAY")) &&
        argument("SETDECAY") != "0") {
        // Steps of half a unit: 3 is "1.5".
        const int halves = argument("SETDECAY")[0] - '0';
        decay_ = std::to_string(halves / 2) + "." + (halves % 2 ? "5" : "0");
        return true;
    }
    return false;
}

void EZDataSimulator::feedIfWaiting()
{
    if (!enabled_ || sheets_.empty())
        return;
    const Sheet sheet = std::move(sheets_.front());
    sheets_.pop_front();
    enabled_ = false;
    inTransport_ = true;
    sendAfter(feedDelay_, encodeSheet(sheet));
}

std::string EZDataSimulator::encodeSheet(const Sheet& sheet) { return cardData(sheet) + kCR; }

} // namespace zebreader81::sim
