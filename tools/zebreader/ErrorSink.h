// The tool's host error object: every report of the component goes to standard error.
#pragma once

#include "zebreader81/ErrorHost.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

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

    /// Names the port the command talks to: a device report (kind 2) then says which port
    /// it came from, and json reports carry it as "port" and "device".
    void setPort(int port, std::string device);
    /// Called before each report line, e.g. to end a progress line on the terminal.
    void setBeforeLine(std::function<void()> callback) { beforeLine_ = std::move(callback); }
    /// Advice added to a report when the callback has some for it (number, location).
    using Hint = std::function<std::string(int32_t number, const std::string& location)>;
    void setHint(Hint hint) { hint_ = std::move(hint); }

    /// Number of reports received. After a report of the port's opening, "The device is not
    /// open" (8012) is neither shown nor counted.
    int count() const { return count_; }
    /// Number of the last report (0 before any).
    int32_t lastNumber() const { return lastNumber_; }

private:
    bool json_;
    bool silent_ = false;
    std::atomic<int> count_{0};
    int32_t lastNumber_ = 0;
    bool openFailed_ = false;
    int port_ = 0;
    std::string device_;
    std::function<void()> beforeLine_;
    Hint hint_;
};

} // namespace zebreader::cli
