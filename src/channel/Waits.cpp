#include "channel/Waits.h"

#include "channel/frmComm.h"

namespace zebreader81::wait {

void drain(SerialControl& com, std::chrono::milliseconds limit)
{
    try {
        const auto until = std::chrono::steady_clock::now() + limit;
        while (com.InBufferCount() > 0 && std::chrono::steady_clock::now() < until)
            com.Input();
    } catch (...) {
    }
}

} // namespace zebreader81::wait
