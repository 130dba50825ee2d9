#include "ErrorSink.h"

#include "zebreader81/clsZEBReader.h"

#include <nlohmann/json.hpp>

#include <iostream>

namespace zebreader::cli {

std::shared_ptr<ErrorSink> ErrorSink::install(bool json)
{
    auto sink = std::make_shared<ErrorSink>(json);
    // The registration is per thread and outlives this reader.
    zebreader81::clsZEBReader registrar;
    registrar.SetError(sink);
    return sink;
}

void ErrorSink::setPort(int port, std::string device)
{
    port_ = port;
    device_ = std::move(device);
}

int16_t ErrorSink::RaiseError(int32_t& number, int32_t& kind, std::string& description, std::string& location,
                              std::string& title, std::string&, std::string&, std::string&, int32_t&,
                              std::string&, std::string&, std::string&, bool&)
{
    // A port that never opened cannot be closed either: the close's complaint adds nothing.
    if (number == 8012 && openFailed_)
        return 0;
    if (location.rfind("basRead.ReaderInit", 0) == 0)
        openFailed_ = true;
    ++count_;
    lastNumber_ = number;
    if (beforeLine_)
        beforeLine_();
    const std::string hint = hint_ ? hint_(number, location) : std::string();
    if (json_) {
        nlohmann::ordered_json error = {{"number", number},
                                        {"kind", kind},
                                        {"description", description},
                                        {"location", location},
                                        {"title", title}};
        if (port_ != 0) {
            error["port"] = port_;
            error["device"] = device_;
        }
        if (!hint.empty())
            error["hint"] = hint;
        // Scanner texts are single-byte; never let an odd byte abort the report.
        std::cerr << nlohmann::ordered_json{{"error", error}}.dump(
                         -1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
                  << std::endl;
        return 0;
    }
    std::cerr << "zebreader: error " << number;
    if (!title.empty())
        std::cerr << " (" << title << ")";
    std::cerr << " in " << location << ": " << description;
    // The driver's message is fixed; which port it is about is ours to add.
    if (kind == 2 && port_ != 0 && number != 8002)
        std::cerr << " [COM" << port_ << (device_.empty() ? "" : ", " + device_) << "]";
    if (!hint.empty())
        std::cerr << "\nzebreader: " << hint;
    std::cerr << std::endl;
    return 0;
}

} // namespace zebreader::cli
