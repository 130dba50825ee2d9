// A VMR138 on a pseudo-terminal: answers status requests, moves its recognition threshold
// with "+" and "-", and sends a sheet's marks after "8".
#pragma once

#include "sim/Peer.h"
#include "sim/Sheet.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace zebreader81::sim {

class PdiSimulator : public Peer {
public:
    /// Sheets waiting in the hopper, fed in order. Only side 1 is read: 12 columns, a cell
    /// with strength above 0 is a mark.
    explicit PdiSimulator(std::vector<Sheet> sheets = {});
    ~PdiSimulator() override;

    /// Puts a sheet in the hopper; a read already waiting for one gets it at once.
    void addSheet(Sheet sheet);
    std::size_t sheetsLeft() const;

    /// Status bytes on demand (bit 32 of byte 1 is also set while a read waits for a sheet).
    /// "D", "G" and "E" clear bits 16, 4 (byte 1) and 8 (byte 2); the rest stay until changed.
    void setStatus(int status1, int status2 = 0);
    int status1() const;
    int status2() const;
    /// Marks a read as under way (as a read started at the scanner would): the next sheet
    /// goes out after the next status reply, without an "8".
    void setReadUnderWay();

    int threshold() const;
    void setThreshold(int value);
    /// Replaces the next threshold answer with these bytes.
    void setThresholdAnswer(std::string bytes);

    int rejects() const;
    int ejects() const;
    /// Commands that a careful scanner would not expect: unknown characters, an "8" while a
    /// read is under way, a threshold step before the reset.
    std::vector<std::string> complaints() const;

protected:
    void onReceive(std::string_view bytes) override;

private:
    void command(char c);
    void sendSheetIfReady();
    static std::string sheetBytes(const Sheet& sheet);

    std::deque<Sheet> hopper_;
    int status1_ = 0;
    int status2_ = 0;
    bool readPending_ = false;
    bool reset_ = false;
    int threshold_ = 0xE0;
    std::optional<std::string> thresholdAnswer_;
    int rejects_ = 0;
    int ejects_ = 0;
    std::vector<std::string> complaints_;
};

} // namespace zebreader81::sim
