// The COM boundary's trap: nothing thrown inside reaches a caller; it becomes an HRESULT
// with error info.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <cstdint>
#include <string>
#include <type_traits>

namespace zebreader81::automation {

/// Sets the thread's error info (source "ZEBReader81") and returns the automation error's
/// HRESULT (0x800A0000 | number, as a raised run-time error reaches a caller).
HRESULT raiseError(REFIID iid, int32_t number, const std::string& description) noexcept;

/// Turns the exception in flight into error info and an HRESULT.
HRESULT currentExceptionToHresult(REFIID iid) noexcept;

/// Runs body (returning void or HRESULT); an exception becomes error info and its HRESULT.
template <class F> HRESULT comGuard(REFIID iid, F&& body) noexcept
{
    try {
        if constexpr (std::is_void_v<decltype(body())>) {
            body();
            return S_OK;
        } else {
            return body();
        }
    } catch (...) {
        return currentExceptionToHresult(iid);
    }
}

} // namespace zebreader81::automation
