// Shared by the fuzz targets: a host that swallows every report, and a reader of the input.
#pragma once

#include "zebreader81/zebreader81.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace zebreader81::fuzz {

/// Takes every report without a word; registering it keeps stderr free of message boxes.
class QuietHost : public ErrorHost {
public:
    bool Silent() const override { return silent_; }
    void Silent(bool value) override { silent_ = value; }
    int16_t RaiseError(int32_t&, int32_t&, std::string&, std::string&, std::string&, std::string&,
                       std::string&, std::string&, int32_t&, std::string&, std::string&, std::string&,
                       bool&) override
    {
        ++reports;
        return 0;
    }
    std::size_t reports = 0;

private:
    bool silent_ = false;
};

/// Registers a QuietHost on the calling thread (once per thread) and returns it.
inline QuietHost& quietHost()
{
    thread_local std::shared_ptr<QuietHost> host = [] {
        auto h = std::make_shared<QuietHost>();
        clsZEBReader().SetError(h);
        return h;
    }();
    return *host;
}

/// Consumes the fuzzer's bytes front to back; past the end every take yields zeros.
class Input {
public:
    Input(const uint8_t* data, std::size_t size) : data_(data), size_(size) {}
    bool empty() const { return at_ >= size_; }
    std::size_t left() const { return size_ - at_; }
    uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
    int16_t int16()
    {
        const auto lo = byte();
        return static_cast<int16_t>(static_cast<uint16_t>(lo | (byte() << 8)));
    }
    std::string_view bytes(std::size_t n)
    {
        n = n < left() ? n : left();
        std::string_view out(reinterpret_cast<const char*>(data_ + at_), n);
        at_ += n;
        return out;
    }
    std::string_view rest() { return bytes(left()); }

private:
    const uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

/// Stops the fuzzer the way a sanitizer would when an invariant of a parser breaks.
[[noreturn]] void broken(const char* what);
#define FUZZ_CHECK(cond)                                                                                     \
    do {                                                                                                     \
        if (!(cond))                                                                                         \
            ::zebreader81::fuzz::broken(#cond);                                                              \
    } while (0)

} // namespace zebreader81::fuzz
