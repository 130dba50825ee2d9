#include "Trace.h"

#include "CommandLine.h"

#include <cstdio>

namespace zebreader::cli {

TraceFile::TraceFile(const std::string& path) : out_(path, std::ios::binary | std::ios::trunc)
{
    if (!out_)
        throw UsageError("--trace: cannot write \"" + path + "\"");
}

void TraceFile::header(const std::string& portName)
{
    out_ << "# zebreader trace of " << portName << ": time in seconds, > sent, < received\n";
    out_.flush();
}

void TraceFile::record(bool sent, const std::string& bytes)
{
    const double t = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    for (std::size_t at = 0; at < bytes.size(); at += 16) {
        const std::string chunk = bytes.substr(at, 16);
        char head[32];
        std::snprintf(head, sizeof head, "%.6f %c", t, sent ? '>' : '<');
        std::string hex, text;
        for (unsigned char c : chunk) {
            char h[4];
            std::snprintf(h, sizeof h, " %02X", c);
            hex += h;
            text += (c >= 32 && c < 127) ? static_cast<char>(c) : '.';
        }
        hex.resize(48, ' ');
        out_ << head << hex << "  " << text << '\n';
    }
    out_.flush();
}

} // namespace zebreader::cli
