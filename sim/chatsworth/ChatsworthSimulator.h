// A Chatsworth card reader on a pseudo-terminal, as fussy as the maker's manual makes it.
//
// Downloads (DC2 command ... DC2 "E") and extended commands (DC2 ESC word DC2 "E") are
// answered "G" CR; a command it cannot take is echoed up to the character it refused, then
// "?" CR. It powers up with no conversion loaded and reads cards without sending a byte until
// binary conversion is downloaded ("R7777" and "I00"); a power cycle loses the conversion, not
// the EEPROM flags. While a card moves through the transport every command is ignored.
// Feed control (flag 02) admits one card per enable, else the transport reads cards until
// disabled; exit control (flag 01) holds a read card until ER or EF, else it leaves to the
// rear. SETFLAGS takes effect at CHECKSUM. A jam stops a card in mid data.
#pragma once

#include "sim/Peer.h"
#include "sim/Sheet.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

namespace zebreader81::sim {

class ChatsworthSimulator : public Peer {
public:
    /// Cards are read in order; only side1 counts, 12 columns (strength > 0 is a mark).
    explicit ChatsworthSimulator(std::vector<Sheet> sheets = {});
    ~ChatsworthSimulator() override;

    /// Queues a card; a transport that is waiting for one reads it.
    void addSheet(Sheet sheet);
    std::size_t sheetsLeft() const;

    /// EEPROM flags as GETCONFIG reports them (01 exit control, 02 feed control).
    void setFlags(uint8_t flags);
    uint8_t flags() const;
    /// True once binary conversion for all channels has been downloaded since power-up.
    bool converting() const;
    /// Loses the conversion and the transport state, as switching the reader off and on does.
    void powerCycle();

    /// Status bits besides the transport's own: 4 self-test failure, 64 test mode.
    void setStatusBits(uint8_t bits);
    /// Puts a card into the transport, as one left there before the reader was opened.
    void setCardInTransport(bool value);
    bool cardInTransport() const;
    /// The next card stops after `rows` rows of data: status jam until clearJam.
    void jamAfterRows(int rows);
    void clearJam();

    /// Text sent before "G" CR in answer to the firmware query.
    void setFirmware(const std::string& text);
    /// How long a card takes from the enable (or from the hopper) to its data.
    void setFeedDelay(std::chrono::milliseconds delay);
    /// Answers `word` (an extended command) with exactly `bytes` after `delay` and does nothing else.
    void overrideAnswer(const std::string& word, const std::string& bytes,
                        std::chrono::milliseconds delay = std::chrono::milliseconds(0));
    void clearOverrides();

    /// Commands received, in order: the word of an extended command, "download " and the
    /// commands of a download joined by blanks, "ignored " and the command when busy, "?" and
    /// the frame for one it refused.
    std::vector<std::string> words() const;
    /// Where each card left: "ER", "EF", or "rear" when it left by itself.
    std::vector<std::string> dispositions() const;

protected:
    void onReceive(std::string_view bytes) override;

private:
    void handleFrame(const std::string& frame);
    void handleDownload(const std::string& frame);
    void answerWord(const std::string& word, const std::string& frame);
    void refuse(const std::string& frame, std::size_t badAt);
    bool busy() const;
    void feedIfWaiting();
    uint8_t statusByte() const;

    std::string inbox_;
    std::deque<Sheet> sheets_;
    std::vector<std::string> words_;
    std::vector<std::string> dispositions_;
    std::map<std::string, std::pair<std::string, std::chrono::milliseconds>> overrides_;

    uint8_t flags_ = 0;
    uint8_t pendingFlags_ = 0;
    bool converting_ = false;
    bool enabled_ = false;
    bool holding_ = false;
    bool jammed_ = false;
    int jamAfter_ = -1;
    uint8_t statusBits_ = 0;
    std::string firmware_ = "OMR-1100 - Version 1.04";
    std::chrono::milliseconds feedDelay_{800};
    std::chrono::steady_clock::time_point busyUntil_{};
};

} // namespace zebreader81::sim
