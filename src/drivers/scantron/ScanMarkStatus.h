// ScanMark status reply: what a 12-character answer to QSTS means.
#pragma once

#include <cstdint>
#include <string>

namespace zebreader81::scanmark {

/// Characters a status reply holds; fewer are never decoded.
inline constexpr std::size_t StatusReplyLength = 12;

/// The outcome of one status reply: the procedure's result and, when the scanner reports a
/// condition, the message with its title and location.
struct StatusDecision {
    /// 1 sheet ready, 0 no sheet, -1 error or no usable answer.
    int16_t result = -1;
    std::string message, title, location;
    bool reports() const { return !message.empty(); }
};

StatusDecision decodeStatus(const std::string& reply);

} // namespace zebreader81::scanmark
