#include "core/basError.h"

#include "core/SystemMessageBox.h"

#include <mutex>

namespace zebreader81 {

ErrorHost::~ErrorHost() = default;

namespace {

// Registered per thread: an apartment-threaded component keeps module data per apartment.
thread_local std::shared_ptr<ErrorHost> registeredHost;

std::mutex hookMutex;
std::shared_ptr<const MessageBoxHook> messageBoxHook;

void showMessageBox(const std::string& text, const std::string& title, int32_t style)
{
    std::shared_ptr<const MessageBoxHook> hook;
    {
        std::lock_guard lock(hookMutex);
        hook = messageBoxHook;
    }
    if (hook && *hook) {
        (*hook)(text, title, style);
        return;
    }
    showSystemMessageBox(text, title, style);
}

std::string stripComponentName(std::string location)
{
    static const std::string prefix = "ZEBReader81 - ";
    for (auto pos = location.find(prefix); pos != std::string::npos; pos = location.find(prefix, pos))
        location.erase(pos, prefix.size());
    return location;
}

} // namespace

void SetMessageBoxHook(MessageBoxHook hook)
{
    std::lock_guard lock(hookMutex);
    messageBoxHook = hook ? std::make_shared<const MessageBoxHook>(std::move(hook)) : nullptr;
}

namespace err {

std::string description(int32_t number)
{
    switch (number) {
    case InvalidProcedureCall: return "Invalid procedure call or argument";
    case Overflow: return "Overflow";
    case OutOfMemory: return "Out of memory";
    case SubscriptOutOfRange: return "Subscript out of range";
    case TypeMismatch: return "Type mismatch";
    case InvalidPropertyValue: return "Invalid property value";
    case DuplicateKey: return "This key is already associated with an element of this collection";
    case InvalidPortNumber: return "Invalid port number";
    case PortAlreadyOpen: return "Port already open";
    case DeviceNotOpen: return "The device is not open";
    case CommStateNotSet:
        return "Could not set comm state, there may be one or more invalid communications parameters";
    case PortIo: return "Error reading comm device";
    default: return "Application-defined or object-defined error";
    }
}

void raise(int32_t number) { throw RuntimeError(number, description(number)); }

} // namespace err

namespace basError {

std::shared_ptr<ErrorHost> RegisteredHost() { return registeredHost; }

void RegisterHost(std::shared_ptr<ErrorHost> host) { registeredHost = std::move(host); }

int16_t ReportError(int32_t lineNumber, int32_t number, int32_t kind, std::string description,
                    std::string location, std::string title, std::optional<bool> silent)
{
    try {
        location = stripComponentName(std::move(location));
        if (lineNumber > 0)
            location += "; Line: " + std::to_string(lineNumber);
        auto host = registeredHost;
        if (!host) {
            showMessageBox("Error# " + std::to_string(number) + ": " + description +
                               ", Location: " + location,
                           "Application Error", 48);
            return 0;
        }
        const bool keptSilent = host->Silent();
        if (silent)
            host->Silent(*silent);
        std::string t7, t8, t9, t11, t12, t13;
        int32_t constant = 1;
        bool flag = true;
        int16_t answer = 0;
        try {
            answer = host->RaiseError(number, kind, description, location, title, t7, t8, t9, constant, t11,
                                      t12, t13, flag);
        } catch (...) {
            host->Silent(keptSilent);
            throw;
        }
        host->Silent(keptSilent);
        return answer;
    } catch (...) {
        // The reporter never lets its own failure reach the caller.
        return 0;
    }
}

void ReportDevice(const std::string& message, const std::string& location, const std::string& title,
                  int32_t number)
{
    ReportError(0, number, KindDevice, message, location, title);
}

void ReportTrapped(std::exception_ptr error, const std::string& location)
{
    int32_t number = err::InvalidProcedureCall;
    std::string description;
    try {
        std::rethrow_exception(error);
    } catch (const RuntimeError& e) {
        number = e.number();
        description = e.what();
    } catch (const std::out_of_range&) {
        number = err::SubscriptOutOfRange;
        description = err::description(number);
    } catch (const std::bad_alloc&) {
        number = err::OutOfMemory;
        description = err::description(number);
    } catch (const std::exception& e) {
        description = e.what();
    } catch (...) {
        description = err::description(number);
    }
    ReportError(0, number, KindRuntime, description, location);
}

} // namespace basError
} // namespace zebreader81
