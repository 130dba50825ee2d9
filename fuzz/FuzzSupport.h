// Shared by the fuzz targets: a reader of the input, the entry point, and invariant checks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace zebreader81::fuzz {

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
    /// The whole input, whatever was taken.
    std::string_view all() const { return {reinterpret_cast<const char*>(data_), size_}; }

private:
    const uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

/// Stops the fuzzer the way a sanitizer would when an invariant of a parser breaks.
[[noreturn]] inline void broken(const char* what)
{
    std::fprintf(stderr, "fuzz invariant broken: %s\n", what);
    std::abort();
}

} // namespace zebreader81::fuzz

#define FUZZ_CHECK(cond)                                                                                     \
    do {                                                                                                     \
        if (!(cond))                                                                                         \
            ::zebreader81::fuzz::broken(#cond);                                                              \
    } while (0)

/// The target's body, run on each input as `in`: ZEBREADER_FUZZ(in) { ... }
#define ZEBREADER_FUZZ(in)                                                                                   \
    static void fuzzOne(::zebreader81::fuzz::Input& in);                                                     \
    extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)                             \
    {                                                                                                        \
        ::zebreader81::fuzz::Input input(data, size);                                                        \
        fuzzOne(input);                                                                                      \
        return 0;                                                                                            \
    }                                                                                                        \
    static void fuzzOne(::zebreader81::fuzz::Input& in)
