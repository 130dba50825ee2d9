#include "ScriptedPeer.h"

#include <mutex>

namespace zebreader81::fuzz {

ScriptedPeer::ScriptedPeer()
{
    setRecording(false);
    start();
}

ScriptedPeer::~ScriptedPeer() { stop(); }

void ScriptedPeer::load(std::vector<Slice> slices)
{
    std::lock_guard lock(stateMutex);
    slices_ = std::move(slices);
    next_ = 0;
}

std::vector<ScriptedPeer::Slice> ScriptedPeer::slicesOf(std::string_view input)
{
    std::vector<Slice> out;
    std::chrono::milliseconds pauses{0};
    auto take = [&input](std::size_t n) {
        n = n < input.size() ? n : input.size();
        std::string s(input.substr(0, n));
        input.remove_prefix(n);
        return s;
    };
    while (!input.empty()) {
        const auto head = static_cast<unsigned char>(input.front());
        input.remove_prefix(1);
        Slice slice;
        if (head > MaxSlice) {
            slice.follows = true;
            if (!input.empty()) {
                slice.pause =
                    std::chrono::milliseconds(10 * (static_cast<unsigned char>(input.front()) % 64));
                input.remove_prefix(1);
            }
            // Past the budget the pauses vanish: a run stays short whatever the input.
            if (pauses + slice.pause > MaxPauses)
                slice.pause = std::chrono::milliseconds(0);
            pauses += slice.pause;
            slice.bytes = take(head - MaxSlice - 1);
        } else {
            slice.bytes = take(head);
        }
        out.push_back(std::move(slice));
    }
    return out;
}

void ScriptedPeer::onReceive(std::string_view)
{
    if (next_ >= slices_.size())
        return;
    send(slices_[next_++].bytes);
    while (next_ < slices_.size() && slices_[next_].follows) {
        sendAfter(slices_[next_].pause, slices_[next_].bytes);
        ++next_;
    }
}

} // namespace zebreader81::fuzz
