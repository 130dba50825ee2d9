#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace zebreader81::test {

const Report& RecordingHost::only() const
{
    EXPECT_EQ(reports.size(), 1u);
    static const Report none;
    return reports.empty() ? none : reports.front();
}

HostScope::HostScope()
{
    clsZEBReader r;
    r.SetError(host);
}

HostScope::~HostScope()
{
    clsZEBReader r;
    r.SetError(nullptr);
}

void RecordingEvents::BeforeSheet(bool& b)
{
    log.push_back(b ? "BeforeSheet(True)" : "BeforeSheet(False)");
    b = !b;
}

void RecordingEvents::ReadSheet(SafeArray<int16_t>& s1, SafeArray<int16_t>& s2, SafeArray<std::string>& bc,
                                bool& rej)
{
    ++sheets;
    log.push_back(rej ? "ReadSheet(True)" : "ReadSheet(False)");
    side1.push_back(s1);
    side2.push_back(s2);
    barcodes.push_back(bc);
    if (onReadSheet)
        onReadSheet(sheets, rej);
}

void RecordingEvents::AfterSheet(bool& cancel)
{
    log.push_back(cancel ? "AfterSheet(True)" : "AfterSheet(False)");
    if (onAfterSheet)
        onAfterSheet(sheets, cancel);
}

void RecordingEvents::BeforePrint(bool& cancel)
{
    beforePrintCancelIn.push_back(cancel);
    log.push_back("BeforePrint");
}

void RecordingEvents::AfterPrint() { log.push_back("AfterPrint"); }

} // namespace zebreader81::test
