// A reader on a COM port with the simulated scanner of its model's family on the other end,
// set up as that simulator expects, recording events, reports and what the driver sent.
#pragma once

#include "sim/Peer.h"
#include "sim/Sheet.h"
#include "support/TestHost.h"
#include "zebreader81/zebreader81.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zebreader81::test {

/// Strength of a pattern sheet's cell (rows and columns from 1): every cell tells where it
/// came from, and none reaches 13, which an 8000 cannot send.
int strength(int side, int row, int col, int seed = 0);
/// A sheet of rows1 x cols1 cells on side 1 and rows2 x cols2 on side 2, filled by strength().
sim::Sheet patternSheet(int rows1, int cols1, int rows2 = 0, int cols2 = 0, int seed = 0,
                        std::vector<std::string> barcodes = {});
/// A 12-column card: one row per entry, strength 9 in each listed column (from 1).
sim::Sheet card(const std::vector<std::vector<int>>& markedColumns);
/// What a side of `sheet` reads as in a rows x cols array: the strengths as sent, or `mark`
/// for every cell above 0 when mark >= 0; cells outside the sheet stay 0.
SafeArray<int16_t> expectedSide(const sim::Sheet& sheet, int side, int rows, int cols, int mark = -1);

/// Per-sheet values as the reader's form properties take them: one entry per sheet, from 1.
SafeArray<int16_t> perSheet(const std::vector<int16_t>& values);
/// A page form: the rows and columns of each side, one entry per sheet.
void form(clsZEBReader& reader, const std::vector<int16_t>& rows1, const std::vector<int16_t>& cols1,
          const std::vector<int16_t>& rows2 = {}, const std::vector<int16_t>& cols2 = {});
/// The frames of these words as the EZData and Chatsworth drivers send them, shown.
std::string framed(const std::vector<std::string>& words);

/// Bytes with control characters by name ("s0<EOT><DC1>"), so that a transcript reads as text.
std::string shown(std::string_view bytes);

class SimulatedReader {
public:
    static constexpr int16_t port = 5;

    /// Sets the reader up for `model` as its family's simulator accepts, then applies
    /// `settings`, then attaches a simulator.
    explicit SimulatedReader(zebReaderType model, const std::function<void(clsZEBReader&)>& settings = {});
    virtual ~SimulatedReader();

    /// Starts a new simulator of the reader's family with `sheets` and maps the port to it:
    /// a line of its own (a port is opened once per line).
    sim::Peer& attach(std::vector<sim::Sheet> sheets = {});
    template <class Sim> Sim& scanner() const { return dynamic_cast<Sim&>(*peer_); }
    sim::Peer& peer() const { return *peer_; }
    /// Puts a sheet into the simulator's hopper.
    void load(sim::Sheet sheet);

    /// What the driver wrote since the last mark(), as shown(), once the simulator has it all.
    std::string sent();
    void mark() { marked_ = written_.size(); }
    /// Waits until the simulator has taken in everything the driver wrote.
    void sync();

    /// Expects exactly one report, with these fields.
    void expectReport(int32_t kind, const std::string& title, const std::string& description,
                      const std::string& location) const;
    bool quiet() const { return errors.host->reports.empty(); }
    /// Protocol breaches the simulator noticed; expected to be none at the end unless cleared.
    std::vector<std::string> complaints() const;
    bool checkComplaints = true;
    /// Runs `action` once, on the driver's thread inside one of its waits, `after` from now.
    void atWait(std::chrono::milliseconds after, std::function<void()> action);
    /// Clears CancelScan and the reports, for the next step of a case.
    void reset();
    /// Virtual time since the reader was made.
    auto elapsed() { return lines_.clock().elapsed(); }

    HostScope errors;

private:
    // First in, last out: the simulators answer on memory lines in the reader's thread, on a
    // virtual clock, so a case takes no real time and runs the same under any load.
    sim::MemoryLines lines_;
    std::unique_ptr<sim::Peer> peer_; // outlives the reader, which closes its port on the way out
    std::string written_;
    std::size_t marked_ = 0;

public:
    clsZEBReader reader;
    std::shared_ptr<RecordingEvents> events = std::make_shared<RecordingEvents>();
};

/// A fault of any family: set up, one step, then exactly the one report (or none).
enum class Step { Start, Read, End };
struct FaultCase {
    const char* name;
    zebReaderType model;
    std::function<void(SimulatedReader&)> arrange; ///< settings and simulator faults
    Step step;
    int32_t kind;
    std::string title, message, location; ///< no location: no report
    std::string wire;                     ///< what the driver sent since the attach; "..." first: how it ends
    std::function<void(SimulatedReader&)> check = {};
    /// Done on the line or the reader `after` into the read (inside its wait).
    std::function<void(SimulatedReader&)> during = {};
    std::chrono::milliseconds after{};
    /// Done once StartReader has succeeded, before the step (a fault counted from there).
    std::function<void(SimulatedReader&)> started = {};
};
/// For FaultCase::during: the host sets CancelScan.
void cancel(SimulatedReader& s);
struct FamilyFault : ::testing::TestWithParam<FaultCase> {};

/// One sheet read mark for mark, with what ReadPage sent.
struct ReadCase {
    const char* name;
    zebReaderType model;
    std::function<void(SimulatedReader&)> arrange;
    sim::Sheet sheet;
    int rows1, cols1, rows2, cols2; ///< the arrays' bounds; rows2 0: no side-2 array
    int mark;                       ///< what a marked cell reads as; -1: its strength
    int16_t timingMarks;
    std::string wire;
};
struct FamilyRead : ::testing::TestWithParam<ReadCase> {};

inline void PrintTo(const FaultCase& c, std::ostream* out) { *out << c.name; }
inline void PrintTo(const ReadCase& c, std::ostream* out) { *out << c.name; }
template <class Case> std::string caseName(const ::testing::TestParamInfo<Case>& info)
{
    return info.param.name;
}

} // namespace zebreader81::test
