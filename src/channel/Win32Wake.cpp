// Win32 WakeSignal: a manual-reset event, so a wait on the port can watch it too.
#include "channel/WakeSignal.h"

#include <algorithm>
#include <windows.h>

namespace zebreader81 {

namespace {
HANDLE eventOf(intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }
} // namespace

WakeSignal::WakeSignal()
{
    if (HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr))
        handle_ = reinterpret_cast<intptr_t>(event);
}

WakeSignal::~WakeSignal()
{
    if (handle_ != -1)
        CloseHandle(eventOf(handle_));
}

void WakeSignal::set()
{
    if (handle_ != -1)
        SetEvent(eventOf(handle_));
}

void WakeSignal::clear()
{
    if (handle_ != -1)
        ResetEvent(eventOf(handle_));
}

void WakeSignal::wait(std::chrono::milliseconds timeout)
{
    const DWORD ms =
        timeout.count() < 0 ? INFINITE : static_cast<DWORD>(std::min<int64_t>(timeout.count(), INFINITE - 1));
    if (handle_ != -1)
        WaitForSingleObject(eventOf(handle_), ms);
    else
        Sleep(ms);
}

} // namespace zebreader81
