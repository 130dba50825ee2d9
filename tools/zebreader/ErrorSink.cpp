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

int16_t ErrorSink::RaiseError(int32_t& number, int32_t& kind, std::string& description, std::string& location,
                              std::string& title, std::string&, std::string&, std::string&, int32_t&,
                              std::string&, std::string&, std::string&, bool&)
{
    ++count_;
    if (json_) {
        const nlohmann::ordered_json line = {{"error",
                                              {{"number", number},
                                               {"kind", kind},
                                               {"description", description},
                                               {"location", location},
                                               {"title", title}}}};
        // Scanner texts are single-byte; never let an odd byte abort the report.
        std::cerr << line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << std::endl;
    } else {
        std::cerr << "zebreader: error " << number;
        if (!title.empty())
            std::cerr << " (" << title << ")";
        std::cerr << " in " << location << ": " << description << std::endl;
    }
    return 0;
}

} // namespace zebreader::cli
