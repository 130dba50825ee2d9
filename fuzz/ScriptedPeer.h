// A scanner that knows no protocol: every chunk the driver sends is answered with the next
// slice of a script (the fuzzer's bytes), and once the script is out it stays silent. A slice
// may also follow its predecessor after a pause without waiting for a command, as a sheet's
// data follows the answer to the command that started it.
#pragma once

#include "sim/Peer.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace zebreader81::fuzz {

class ScriptedPeer : public sim::Peer {
public:
    ScriptedPeer();
    ~ScriptedPeer() override;

    struct Slice {
        std::string bytes;
        /// Goes out `pause` after the previous slice instead of answering a command.
        bool follows = false;
        std::chrono::milliseconds pause{0};
    };
    /// Longest slice, and the most that the pauses of one script may add up to.
    static constexpr std::size_t MaxSlice = 127;
    static constexpr std::chrono::milliseconds MaxPauses{1500};

    /// Replaces the script; slices not sent yet of the old one are dropped.
    void load(std::vector<Slice> slices);

    /// Cuts input into slices. Each starts with a head byte: below 128, the length of a slice
    /// that answers the next command; from 128, a pause byte (10 ms units, modulo 64) follows,
    /// then (head - 128) bytes that go out after that pause.
    static std::vector<Slice> slicesOf(std::string_view input);

protected:
    void onReceive(std::string_view bytes) override;

private:
    std::vector<Slice> slices_;
    std::size_t next_ = 0;
};

} // namespace zebreader81::fuzz
