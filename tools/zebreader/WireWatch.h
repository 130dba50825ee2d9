// The one hook on the reader's serial line during a scan: feeds the trace file and notes
// when a ScanMark refuses a read, whose "sheet" holds only the refusal.
#pragma once

#include <string>

namespace zebreader81 {
class clsZEBReader;
}

namespace zebreader::cli {

class TraceFile;

class WireWatch {
public:
    /// Hooks into the reader's serial control; `trace` (may be null) gets every byte.
    /// `watchReads`: the line speaks the ScanMark protocol, whose READ is refused with '?'.
    WireWatch(zebreader81::clsZEBReader& reader, TraceFile* trace, bool watchReads);
    ~WireWatch();
    WireWatch(const WireWatch&) = delete;
    WireWatch& operator=(const WireWatch&) = delete;

    /// True when the scanner answered the last read command with a refusal.
    bool lastReadRefused() const { return refused_; }

private:
    void onBytes(bool sent, const std::string& bytes);

    zebreader81::clsZEBReader& reader_;
    TraceFile* trace_;
    bool watchReads_;
    std::string sent_;            // the tail of what was sent, enough to spot a read command
    bool awaitingAnswer_ = false; // a read command went out; its first answer byte decides
    bool refused_ = false;
};

} // namespace zebreader::cli
