// An OpScan / iNSIGHT scanner on a pseudo-terminal: status queries, scan modes, a hopper of
// sheets sent as the scanner encodes them, imprinter, reject and eject, and faults on demand.
#pragma once

#include "sim/Peer.h"
#include "sim/Sheet.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace zebreader81::sim {

/// A DC1 sends the next sheet from the hopper once the scanner is ready ("r" since the last
/// mode command); before that it only lets a paused scanner go on. An empty hopper sends nothing.
class OpScanSimulator : public Peer {
public:
    /// Starts idle in scan mode 1 ("i") with state letter "I" and `sheets` in the hopper.
    explicit OpScanSimulator(std::vector<Sheet> sheets = {});
    ~OpScanSimulator() override;

    /// Puts a sheet at the back of the hopper.
    void addSheet(Sheet sheet);
    std::size_t sheetsWaiting() const;
    /// Sheets sent to the host so far.
    std::size_t sheetsSent() const;

    // The "s0" reply.
    /// Sets the scan mode at once (1..6), as if the scanner had been left in it.
    void setMode(int32_t mode);
    /// The mode the "s0" reply reports now.
    int32_t reportedMode() const;
    /// The state letter at offset 34, sent as given.
    void setStateLetter(char letter);
    /// Sends this byte at offset 48 instead of the mode's letter in the next `replies` "s0"
    /// replies (all of them while negative); nullopt goes back to the mode.
    void setModeLetterOverride(std::optional<char> letter, int32_t replies = -1);
    /// After a mode command the next `polls` "s0" replies still report the previous mode.
    void setModeChangePolls(int32_t polls);
    /// "s0" queries answered so far.
    int32_t fullStatusPolls() const;

    // The "s1" reply.
    /// Status bits of offsets 1 (A: skew 2, thickness 1) and 2 (B: jam 8, read head 4, path 1-2).
    /// They stay until changed; the scanner sets bit 6 in both bytes.
    void setStatusBits(uint8_t a, uint8_t b);
    /// Length of the "s1" reply: 4 (the least the scanner sends) or 5 (default, with its CR).
    void setShortStatusLength(std::size_t length);
    /// Sends the last byte of the "s1" reply this long after the rest (a slow line).
    void setShortStatusTailDelay(std::chrono::milliseconds delay);

    // Faults.
    /// The next sheet stops after `bytes` bytes of its page stream and the scanner falls silent
    /// for the rest of that page.
    void stallNextSheetAfter(std::size_t bytes);
    /// The next feed sends these bytes instead of a sheet from the hopper.
    void feedRawOnce(std::string bytes);

    /// Blocks until the scanner has taken in `bytes` bytes from the driver in all, or `timeout`
    /// passes; False on time-out.
    bool waitProcessed(std::size_t bytes, std::chrono::milliseconds timeout) const;

    /// Every command received, as its bytes, in order (malformed ones included).
    std::vector<std::string> commands() const;
    /// Protocol breaches the scanner noticed (unknown bytes, malformed commands, a reject or
    /// eject with no sheet to act on, a second disposition of one sheet).
    std::vector<std::string> violations() const;

    /// The page stream of a sheet as the scanner sends it, up to and including the final CR.
    static std::string encodeSheet(const Sheet& sheet);

protected:
    void onReceive(std::string_view bytes) override;

private:
    std::size_t parseCommand();
    void fullStatus();
    void shortStatus();
    void modeCommand(const std::string& command);
    void feed();
    void dispose(const char* what);
    void violation(std::string what);

    std::string pending_;
    std::size_t processed_ = 0;
    mutable std::condition_variable_any processedChanged_;
    std::deque<Sheet> hopper_;
    std::size_t sheetsSent_ = 0;
    int32_t mode_ = 1;
    int32_t reportedMode_ = 1;
    int32_t pollsBeforeChange_ = 0;
    int32_t pollsLeft_ = 0;
    int32_t fullPolls_ = 0;
    char stateLetter_ = 'I';
    std::optional<char> modeLetterOverride_;
    int32_t overrideReplies_ = -1;
    uint8_t statusA_ = 0;
    uint8_t statusB_ = 0;
    std::size_t shortStatusLength_ = 5;
    bool ready_ = false;
    bool sheetInTransport_ = false;
    std::chrono::milliseconds shortStatusTailDelay_{0};
    std::optional<std::size_t> stallAfter_;
    std::optional<std::string> raw_;
    std::vector<std::string> commands_;
    std::vector<std::string> violations_;
};

} // namespace zebreader81::sim
