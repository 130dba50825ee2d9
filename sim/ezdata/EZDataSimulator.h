// An EZData scanner (and the ACP-100, which speaks the same protocol) on a pseudo-terminal.
//
// It answers the word frames DC2 ESC word DC2 "E", the port probe DC2 "R7777" DC2 "I00"
// DC2 "E" and the firmware query (word "V"). Its configuration text follows the settings
// it was given and the configuration commands it received. An enable reads the next sheet
// after the feed delay (the operator feeding it); the sheet then stays in the transport
// (status bit 1) until an eject word, or until the next enable passes it on. An enable is
// refused ("?" CR) while the state is not "INL" or a power-on failure or paper in the
// transport is reported.
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

class EZDataSimulator : public Peer {
public:
    /// Sheets are read in order; only side1 counts, 12 columns (strength > 0 is a mark).
    explicit EZDataSimulator(std::vector<Sheet> sheets = {});
    ~EZDataSimulator() override;

    /// Queues a sheet; an enable that is waiting for one reads it.
    void addSheet(Sheet sheet);
    std::size_t sheetsLeft() const;

    // Fields of the configuration text (each cut or blank-padded to its width).
    void setLineCode(const std::string& value);      ///< 2 characters, "22"
    void setFlags(const std::string& value);         ///< 2 characters, "03"
    void setTiming(const std::string& value);        ///< 2 characters, "80"
    void setState(const std::string& value);         ///< 3 characters, "INL"
    void setThresholdCode(const std::string& value); ///< 2 characters, "60" to "78"
    void setDecay(const std::string& value);         ///< 3 characters, "1.5"
    /// The 22 characters that GETCONFIG reports.
    std::string configText() const;

    /// Status bits reported besides bit 1: 4 power-on failure, 16 paper in transport.
    void setStatusBits(uint8_t bits);
    /// Puts a sheet into the transport (status bit 1) or takes it out.
    void setSheetInTransport(bool value);
    bool sheetInTransport() const;

    /// Text sent before "G" CR in answer to the firmware query.
    void setFirmware(const std::string& text);
    /// How long after the enable answer the sheet follows.
    void setFeedDelay(std::chrono::milliseconds delay);
    /// Answers `word` with exactly `bytes` after `delay`, and does nothing else for it.
    void overrideAnswer(const std::string& word, const std::string& bytes,
                        std::chrono::milliseconds delay = std::chrono::milliseconds(0));
    void clearOverrides();

    /// Command words received, in order; "probe" for the port probe, "?" + body for a frame
    /// it did not understand.
    std::vector<std::string> words() const;
    /// Where each sheet left the transport: "ER" (reject), "EF" (accept), "next" (passed on
    /// by the following enable).
    std::vector<std::string> dispositions() const;
    /// Bytes received outside any frame.
    std::string unframed() const;

protected:
    void onReceive(std::string_view bytes) override;

private:
    void handleFrame(const std::string& body);
    void answerWord(const std::string& word);
    bool applySetting(const std::string& word);
    void feedIfWaiting();
    static std::string encodeSheet(const Sheet& sheet);

    std::string inbox_;
    std::string unframed_;
    std::deque<Sheet> sheets_;
    std::vector<std::string> words_;
    std::vector<std::string> dispositions_;
    std::map<std::string, std::pair<std::string, std::chrono::milliseconds>> overrides_;

    std::string lineCode_ = "22", flags_ = "03", timing_ = "80", state_ = "INL", thresholdCode_ = "70",
                decay_ = "1.5";
    std::string firmware_ = "EZData 2.04";
    uint8_t statusBits_ = 0;
    bool inTransport_ = false;
    bool enabled_ = false;
    std::chrono::milliseconds feedDelay_{800};
};

} // namespace zebreader81::sim
