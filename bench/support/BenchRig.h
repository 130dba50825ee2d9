// One reader on its own simulator, set up the same way for every benchmark: the family's
// line, a known sheet pattern to check each read against, and byte counts per direction.
#pragma once

#include "sim/Peer.h"
#include "zebreader81/clsZEBReader.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace zebreader81::bench {

enum class Family { OpScan, EZData, ScanMark, ScanMarkWindows, PDI };

const char* familyName(Family family);
std::optional<Family> familyNamed(std::string_view name);
/// Bits per character of the family's own frame (start, data, parity, stop): the line the
/// simulator paces at, whatever the pseudo-terminal is set to.
double bitsPerChar(Family family);

enum class SheetSize {
    /// An answer sheet: a few marks per row (OpScan rows then compress to runs).
    Typical,
    /// Every cell marked with a different value than its neighbour: the most bytes and the most
    /// decoding a sheet can cost (OpScan 150 x 48 duplex, ScanMark 100 x 48 duplex, PDI 500 rows).
    Full,
};

struct RigOptions {
    /// COM port number the reader uses (mapped to the simulator).
    int16_t port = 9;
    /// Line rate the simulator paces at in both directions; 0 for as fast as the pty goes.
    int32_t baud = 0;
    int32_t sleepTime = 50;
    /// Hand-fed (Feeder False) rather than fed from the hopper.
    bool handFed = false;
    SheetSize size = SheetSize::Typical;
    /// Makes this rig's sheets (and OpScan's starting scan mode) its own.
    int seed = 0;
};

/// Call on the main thread (it maps the port in the environment); the reader may then be used
/// on any one thread.
class Rig {
public:
    Rig(Family family, const RigOptions& options);
    ~Rig();
    Rig(const Rig&) = delete;
    Rig& operator=(const Rig&) = delete;

    clsZEBReader& reader() { return reader_; }
    sim::Peer& peer() { return *peer_; }
    Family family() const { return family_; }

    /// ReadPage, then waits until the simulator has sent everything it queued (line time, part
    /// of the sheet).
    bool readSheet();
    /// Lets the last bytes the simulator wrote reach the reader's side of the pty. The OpScan
    /// status reply may trail a byte past the four the driver waits for; back to back, the next
    /// sheet's drain can run before that byte is through the pty and the byte then ends the
    /// next page at once (bench/README.md). Not part of any timing.
    static void settle();
    /// Puts `count` more sheets in the simulator's hopper.
    void addSheets(int count);
    /// True when the last sheet read holds exactly the marks the simulator sent.
    bool lastSheetMatches() const;

    /// Bytes the reader sent and received since the last resetCounts.
    std::size_t bytesSent() const { return sent_; }
    std::size_t bytesReceived() const { return received_; }
    void resetCounts() { sent_ = received_ = 0; }
    /// Seconds one character takes on the family's line at the paced rate (0 unpaced).
    double charSeconds() const;
    /// What one sheet cannot take less than on a real line, given the bytes it exchanged: the
    /// wire time of the bytes on the critical path plus the pauses the protocol mandates
    /// (family by family, see bench/README.md).
    std::chrono::duration<double> sheetBound(std::size_t sent, std::size_t received) const;
    /// The scan mode the OpScan simulator started in (and that the reader restores at close).
    int32_t openingScanMode() const;
    /// The scan mode the OpScan simulator was last told to take.
    int32_t scanMode() const;

    /// How long the EZData simulator takes to feed a sheet after the enable answer.
    static constexpr std::chrono::milliseconds EZDataFeed{550};

private:
    int16_t rows() const;
    int16_t cols() const;
    bool duplex() const;

    Family family_;
    RigOptions options_;
    std::unique_ptr<sim::Peer> peer_;
    clsZEBReader reader_;
    std::size_t sent_ = 0;
    std::size_t received_ = 0;
};

/// Counts every error report of the process (all threads) instead of showing it; prints the
/// first few to stderr.
class ReportCounter {
public:
    ReportCounter();
    ~ReportCounter();
    static int count();
};

/// CPU time of the calling thread, and of the whole process, in seconds.
double threadCpuSeconds();
double processCpuSeconds();

} // namespace zebreader81::bench
