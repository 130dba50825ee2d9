#include "sim/pdi/PdiSimulator.h"

#include <algorithm>
#include <cstdio>

namespace zebreader81::sim {

namespace {
constexpr auto statusLead = '@';
constexpr int columnsPerSide = 12;

std::string hexByte(int value)
{
    char text[3];
    std::snprintf(text, sizeof text, "%02X", value & 0xFF);
    return text;
}
} // namespace

PdiSimulator::PdiSimulator(std::vector<Sheet> sheets) : hopper_(sheets.begin(), sheets.end()) { start(); }

PdiSimulator::~PdiSimulator() { stop(); }

void PdiSimulator::addSheet(Sheet sheet)
{
    std::lock_guard lock(stateMutex);
    hopper_.push_back(std::move(sheet));
    sendSheetIfReady();
}

std::size_t PdiSimulator::sheetsLeft() const
{
    std::lock_guard lock(stateMutex);
    return hopper_.size();
}

void PdiSimulator::setStatus(int status1, int status2)
{
    std::lock_guard lock(stateMutex);
    status1_ = status1 & 0xFF;
    status2_ = status2 & 0xFF;
}

int PdiSimulator::status1() const
{
    std::lock_guard lock(stateMutex);
    return status1_;
}

int PdiSimulator::status2() const
{
    std::lock_guard lock(stateMutex);
    return status2_;
}

void PdiSimulator::setReadUnderWay()
{
    std::lock_guard lock(stateMutex);
    readPending_ = true;
}

int PdiSimulator::threshold() const
{
    std::lock_guard lock(stateMutex);
    return threshold_;
}

void PdiSimulator::setThreshold(int value)
{
    std::lock_guard lock(stateMutex);
    threshold_ = std::clamp(value, 0, 255);
}

void PdiSimulator::setThresholdAnswer(std::string bytes)
{
    std::lock_guard lock(stateMutex);
    thresholdAnswer_ = std::move(bytes);
}

int PdiSimulator::rejects() const
{
    std::lock_guard lock(stateMutex);
    return rejects_;
}

int PdiSimulator::ejects() const
{
    std::lock_guard lock(stateMutex);
    return ejects_;
}

std::vector<std::string> PdiSimulator::complaints() const
{
    std::lock_guard lock(stateMutex);
    return complaints_;
}

void PdiSimulator::onReceive(std::string_view bytes)
{
    for (const char c : bytes)
        command(c);
}

void PdiSimulator::command(char c)
{
    switch (c) {
    case '0':
        reset_ = true;
        readPending_ = false;
        break;
    case 'Q': {
        const int s1 = status1_ | (readPending_ ? 32 : 0);
        send(std::string{statusLead, static_cast<char>(s1), static_cast<char>(status2_)});
        sendSheetIfReady();
        break;
    }
    case 'D': status1_ &= ~16; break;
    case 'G': status1_ &= ~4; break;
    case 'E': status2_ &= ~8; break;
    case '+':
    case '-':
        if (!reset_)
            complaints_.push_back(std::string("threshold step before reset: ") + c);
        threshold_ = std::clamp(threshold_ + (c == '+' ? -1 : 1), 0, 255);
        send(thresholdAnswer_ ? *thresholdAnswer_ : hexByte(threshold_));
        thresholdAnswer_.reset();
        break;
    case '8':
        if (readPending_)
            complaints_.push_back("read command while a read is under way");
        readPending_ = true;
        sendSheetIfReady();
        break;
    case '9': readPending_ = false; break;
    case '3': ++rejects_; break;
    case '4': ++ejects_; break;
    default: complaints_.push_back("unknown command " + std::to_string(static_cast<unsigned char>(c)));
    }
}

void PdiSimulator::sendSheetIfReady()
{
    if (!readPending_ || hopper_.empty())
        return;
    send(sheetBytes(hopper_.front()));
    hopper_.pop_front();
    readPending_ = false;
}

std::string PdiSimulator::sheetBytes(const Sheet& sheet)
{
    // The sheet leaves the read head last row first.
    std::string out(1, '\n');
    for (auto row = sheet.side1.rbegin(); row != sheet.side1.rend(); ++row) {
        int halves[2] = {64, 64};
        const int columns = std::min<int>(static_cast<int>(row->size()), columnsPerSide);
        for (int col = 0; col < columns; ++col)
            if ((*row)[static_cast<std::size_t>(col)] > 0)
                halves[col / 6] |= 1 << (col % 6);
        out += static_cast<char>(halves[0]);
        out += static_cast<char>(halves[1]);
    }
    out += '\r';
    return out;
}

} // namespace zebreader81::sim
