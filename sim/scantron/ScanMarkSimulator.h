// A ScanMark-family or 8000/8400 scanner on a pseudo-terminal: takes the form definition,
// answers status queries, sends the marks of its sheets shaped by the downloaded form, prints,
// accepts and rejects, and fails on demand.
#pragma once

#include "sim/Peer.h"
#include "sim/Sheet.h"

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace zebreader81::sim {

class ScanMarkSimulator : public Peer {
public:
    /// One field record of the downloaded form.
    struct Field {
        int side = 1;
        int firstRow = 0, firstCol = 0, lastRow = 0, lastCol = 0;
        /// 'L' row by row, 'C' column by column.
        char orient = 'L';
        int countA = 0, countB = 0;
        /// An 8000/8400 "MC" record (always a whole side, page layout).
        bool markColumns = false;
    };
    /// One sheet of the downloaded form.
    struct FormSheet {
        int side1Rows = 0, side2Rows = 0, side1Cols = 0;
        std::vector<Field> fields;
    };
    enum class StatusFault { Jam, DoubleFeed, JamAndDoubleFeed, TimingLine, CommandError };

    /// readerType 16 or 17 is an 8000/8400 (threshold, MC records, raw byte values); any other
    /// a ScanMark model (digits from "0").
    explicit ScanMarkSimulator(int32_t readerType, std::vector<Sheet> sheets = {});
    ~ScanMarkSimulator() override;

    /// Puts a sheet in the hopper; a read waiting for a sheet is answered at once.
    void addSheet(Sheet sheet);

    // Faults on demand.
    /// The next command whose text starts with `prefix` is refused ("?" CR).
    void rejectCommand(const std::string& prefix);
    /// The next `times` status replies report the fault.
    void statusFault(StatusFault fault, int times = 1);

    // What happened.
    /// Command texts received (without ESC and CR), in order.
    std::vector<std::string> commands() const;
    /// Completed form sheets since the last reset.
    std::vector<FormSheet> form() const;
    int threshold() const;
    /// Texts printed with "PRN$ 1 Y".
    std::vector<std::string> printed() const;
    /// 'A' for each accept, 'C' for each reject, in order.
    std::string ejections() const;
    /// Sheets read so far.
    int sheetsRead() const;
    /// Sheets still in the hopper.
    std::size_t hopper() const;
    /// Protocol violations seen (bytes outside a command, malformed or out-of-order commands).
    std::vector<std::string> violations() const;

protected:
    void onReceive(std::string_view bytes) override;

private:
    void handle(const std::string& text);
    bool accept(const std::string& text);
    bool formCommand(const std::vector<std::string>& tokens);
    bool fieldRecord(const std::vector<std::string>& tokens);
    bool markColumnsRecord(const std::vector<std::string>& tokens);
    void sendStatus();
    void sendMarks();
    std::string markData(const Sheet& sheet, const FormSheet& form) const;
    char encode(int strength) const;
    void violation(const std::string& what);

    bool model8000_;
    std::deque<Sheet> sheets_;
    std::string pending_;
    bool inFrame_ = false;

    std::vector<std::string> commands_, printed_, violations_, rejectPrefixes_;
    std::string ejections_;
    std::vector<FormSheet> form_;
    FormSheet open_;
    bool formOpen_ = false;
    int threshold_ = 0;
    int sheetsRead_ = 0;
    bool readWaiting_ = false;
    bool holding_ = false;
    std::deque<StatusFault> faults_;
};

} // namespace zebreader81::sim
