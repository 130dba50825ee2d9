// Test doubles for the host side: an error object that records every report, and an event
// sink that records the events and can script the handlers' answers.
#pragma once

#include "zebreader81/zebreader81.h"

#include <functional>
#include <string>
#include <vector>

namespace zebreader81::test {

struct Report {
    int32_t number = 0;
    int32_t kind = 0;
    std::string description, location, title;
    bool silentDuringCall = false;
};

class RecordingHost : public ErrorHost {
public:
    bool Silent() const override { return silent; }
    void Silent(bool value) override { silent = value; }
    int16_t RaiseError(int32_t& number, int32_t& kind, std::string& description, std::string& location,
                       std::string& title, std::string&, std::string&, std::string&, int32_t&, std::string&,
                       std::string&, std::string&, bool&) override
    {
        reports.push_back({number, kind, description, location, title, silent});
        return answer;
    }
    /// The one report expected; fails the test when there is not exactly one.
    const Report& only() const;
    bool silent = false;
    int16_t answer = 0;
    std::vector<Report> reports;
};

/// Registers a RecordingHost on this thread for the life of the object.
struct HostScope {
    HostScope();
    ~HostScope();
    std::shared_ptr<RecordingHost> host = std::make_shared<RecordingHost>();
};

class RecordingEvents : public ReaderEvents {
public:
    void BeforeSheet(bool& b) override;
    void ReadSheet(SafeArray<int16_t>& s1, SafeArray<int16_t>& s2, SafeArray<std::string>& bc,
                   bool& rej) override;
    void AfterSheet(bool& cancel) override;
    void BeforePrint(bool& cancel) override;
    void AfterPrint() override;

    std::vector<std::string> log;
    std::vector<SafeArray<int16_t>> side1, side2;
    std::vector<SafeArray<std::string>> barcodes;
    std::vector<bool> beforePrintCancelIn;
    // Scripted answers.
    std::function<void(int sheet, bool& reject)> onReadSheet;
    std::function<void(int sheet, bool& cancelScan)> onAfterSheet;
    int sheets = 0;
};

} // namespace zebreader81::test
