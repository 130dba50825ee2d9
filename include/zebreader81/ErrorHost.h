// How the component reports errors to its host.
#pragma once

#include "zebreader81/export.h"

#include <cstdint>
#include <functional>
#include <string>

namespace zebreader81 {

/// A host's error object, registered per thread with clsZEBReader::SetError. Every report
/// of the component on that thread goes to RaiseError instead of the message box.
class ZEBREADER81_API ErrorHost {
public:
    virtual ~ErrorHost();
    /// The host's "Silent" property; the component saves it, may set it for one report,
    /// and restores it afterwards.
    virtual bool Silent() const = 0;
    virtual void Silent(bool value) = 0;
    /// One report. kind is 0 for a trapped run-time error, 2 for a device error found by a
    /// driver; title is empty for kind 0. text1..text6 are empty, constant is 1 and flag is
    /// True in every report of this component. Returns the host's answer, passed back to
    /// the reporting procedure.
    virtual int16_t RaiseError(int32_t& number, int32_t& kind, std::string& description,
                               std::string& location, std::string& title, std::string& text1,
                               std::string& text2, std::string& text3, int32_t& constant, std::string& text4,
                               std::string& text5, std::string& text6, bool& flag) = 0;
};

/// Shows a modal report where no host error object is registered. style is 48
/// (exclamation), title "Application Error".
using MessageBoxHook = std::function<void(const std::string& text, const std::string& title, int32_t style)>;

/// Replaces the message box for the whole process; an empty hook restores the default:
/// MessageBoxA on Windows, the title and the text on standard error elsewhere.
ZEBREADER81_API void SetMessageBoxHook(MessageBoxHook hook);

} // namespace zebreader81
