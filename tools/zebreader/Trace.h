// --trace: every byte sent to and received from the scanner, with time and direction.
//
//   # zebreader trace of COM1 (/dev/pts/4): time in seconds, > sent, < received
//   0.000412 > 73 30                                            s0
//   0.003105 < 49 30 30 ...                                     I00...
//
// Sixteen bytes a line, in hex and printable form ('.' for the rest).
#pragma once

#include <chrono>
#include <fstream>
#include <string>

namespace zebreader::cli {

class TraceFile {
public:
    /// Creates (truncates) the file; throws UsageError when it cannot.
    explicit TraceFile(const std::string& path);
    /// The first line: which port the trace is of.
    void header(const std::string& portName);
    /// One transfer, sent or received.
    void record(bool sent, const std::string& bytes);

private:
    std::ofstream out_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

} // namespace zebreader::cli
