// The one error reporter, and the run-time error raised inside procedures.
#pragma once

#include "zebreader81/ErrorHost.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace zebreader81 {

/// A trapped run-time error: thrown where the failure happens, reported by the trap of the
/// procedure that has a location text.
class RuntimeError : public std::runtime_error {
public:
    RuntimeError(int32_t number, const std::string& description)
        : std::runtime_error(description), number_(number)
    {
    }
    int32_t number() const { return number_; }

private:
    int32_t number_;
};

/// Run-time error numbers used by the component and their standard descriptions.
namespace err {
inline constexpr int32_t InvalidProcedureCall = 5;
inline constexpr int32_t Overflow = 6;
inline constexpr int32_t OutOfMemory = 7;
inline constexpr int32_t SubscriptOutOfRange = 9;
inline constexpr int32_t TypeMismatch = 13;
inline constexpr int32_t InvalidPropertyValue = 380;
inline constexpr int32_t DuplicateKey = 457;
inline constexpr int32_t InvalidPortNumber = 8002;
inline constexpr int32_t PortAlreadyOpen = 8005;
inline constexpr int32_t DeviceNotOpen = 8012;
inline constexpr int32_t CommStateNotSet = 8015;
inline constexpr int32_t PortIo = 8020;

/// Standard description of a run-time error number ("Subscript out of range"...).
std::string description(int32_t number);
/// Throws RuntimeError(number, description(number)).
[[noreturn]] void raise(int32_t number);
} // namespace err

namespace basError {

inline constexpr int32_t KindRuntime = 0;
inline constexpr int32_t KindDevice = 2;

/// Reports an error: to the thread's registered host object, else the message box.
int16_t ReportError(int32_t lineNumber, int32_t number, int32_t kind, std::string description,
                    std::string location, std::string title = {}, std::optional<bool> silent = std::nullopt);

/// A device condition found by a driver (kind 2, number 0).
void ReportDevice(const std::string& message, const std::string& location, const std::string& title,
                  int32_t number = 0);

/// Reports the exception in flight as a run-time error (kind 0) at `location`.
void ReportTrapped(std::exception_ptr error, const std::string& location);

/// The host error object registered on this thread.
std::shared_ptr<ErrorHost> RegisteredHost();
void RegisterHost(std::shared_ptr<ErrorHost> host);

} // namespace basError

/// Runs body under an error trap: a run-time error is reported at `location` and `onError`
/// returned instead.
template <class R, class F> R trap(const char* location, R onError, F&& body) noexcept
{
    try {
        return body();
    } catch (...) {
        basError::ReportTrapped(std::current_exception(), location);
        return onError;
    }
}

/// trap() for procedures without a result.
template <class F> void trapVoid(const char* location, F&& body) noexcept
{
    try {
        body();
    } catch (...) {
        basError::ReportTrapped(std::current_exception(), location);
    }
}

} // namespace zebreader81
