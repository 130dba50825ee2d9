#include "WireWatch.h"

#include "Trace.h"

#include "channel/frmComm.h"
#include "drivers/ReaderAccess.h"

namespace zebreader::cli {

namespace {

// ESC "READ 5 Y" CR or ESC "READ 5 Y E" CR; anything but mark data first is a refusal.
bool endsWithReadCommand(const std::string& s)
{
    for (const char* command : {"\x1bREAD 5 Y\r", "\x1bREAD 5 Y E\r"}) {
        const std::string c = command;
        if (s.size() >= c.size() && s.compare(s.size() - c.size(), c.size(), c) == 0)
            return true;
    }
    return false;
}

} // namespace

WireWatch::WireWatch(zebreader81::clsZEBReader& reader, TraceFile* trace, bool watchReads)
    : reader_(reader), trace_(trace), watchReads_(watchReads)
{
    if (trace_ || watchReads_)
        zebreader81::Reader::fComm(reader_).mscComm.setTrace(
            [this](bool sent, const std::string& bytes) { onBytes(sent, bytes); });
}

WireWatch::~WireWatch() { zebreader81::Reader::fComm(reader_).mscComm.setTrace(nullptr); }

void WireWatch::onBytes(bool sent, const std::string& bytes)
{
    if (trace_)
        trace_->record(sent, bytes);
    if (!watchReads_ || bytes.empty())
        return;
    if (sent) {
        sent_ =
            (sent_ + bytes).substr(sent_.size() + bytes.size() > 16 ? sent_.size() + bytes.size() - 16 : 0);
        if (endsWithReadCommand(sent_)) {
            awaitingAnswer_ = true;
            refused_ = false;
        }
        return;
    }
    if (awaitingAnswer_) {
        refused_ = bytes.front() == '?';
        awaitingAnswer_ = false;
    }
}

} // namespace zebreader::cli
