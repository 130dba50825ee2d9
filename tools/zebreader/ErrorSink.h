// The tool's host error object: every report of the component goes to standard error.
#pragma once

#include "zebreader81/ErrorHost.h"

#include <atomic>
#include <memory>

namespace zebreader::cli {

class ErrorSink : public zebreader81::ErrorHost {
public:
    /// json: one {"error":{...}} line per report; otherwise one readable line.
    explicit ErrorSink(bool json) : json_(json) {}

    /// Registers a sink for this thread; every report of the component then reaches it.
    static std::shared_ptr<ErrorSink> install(bool json);

    bool Silent() const override { return silent_; }
    void Silent(bool value) override { silent_ = value; }
    int16_t RaiseError(int32_t& number, int32_t& kind, std::string& description, std::string& location,
                       std::string& title, std::string& text1, std::string& text2, std::string& text3,
                       int32_t& constant, std::string& text4, std::string& text5, std::string& text6,
                       bool& flag) override;

    /// Number of reports received.
    int count() const { return count_; }

private:
    bool json_;
    bool silent_ = false;
    std::atomic<int> count_{0};
};

} // namespace zebreader::cli
