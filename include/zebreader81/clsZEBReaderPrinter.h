// The imprinter: up to three lines of text to print on a sheet, with per-model limits.
#pragma once

#include "zebreader81/export.h"

#include <cstdint>
#include <string>

namespace zebreader81 {

/// Imprinter of the reader. Its per-model rules follow the reader type given to SetType,
/// which the reader calls whenever its ReaderType changes.
class ZEBREADER81_API clsZEBReaderPrinter {
public:
    /// Stores the reader type and resets Distance (245 for the models that print three lines).
    void SetType(int32_t Value);
    /// Whether the model's imprinter is used; forced or ignored for models without one.
    bool Enabled() const;
    void Enabled(bool value);
    /// Set for each sheet from ReadPage's InitializePrinter argument.
    bool Initialized() const;
    /// Print on the following sheets; never True while Enabled is False.
    bool Active() const;
    void Active(bool value);
    /// The three lines of text to print; only the first BufferCount are used.
    const std::string& Buffer1() const { return buffer1_; }
    void Buffer1(const std::string& v) { buffer1_ = v; }
    const std::string& Buffer2() const { return buffer2_; }
    void Buffer2(const std::string& v) { buffer2_ = v; }
    const std::string& Buffer3() const { return buffer3_; }
    void Buffer3(const std::string& v) { buffer3_ = v; }
    /// Non-empty texts among the first BufferCount buffers.
    int32_t FilledBufferCount() const;
    /// Lines the model prints: 3, 1 or 0.
    int32_t BufferCount() const;
    /// Print position along the sheet.
    int16_t Distance() const { return distance_; }
    void Distance(int16_t v) { distance_ = v; }
    /// Smallest and largest print position and longest text; -1 while not Enabled.
    int32_t MinPosition() const;
    int32_t MaxPosition() const;
    int32_t MaxCharacters() const;

private:
    friend struct PrinterAccess;
    int32_t type_ = 0;
    bool enabled_ = false;
    bool active_ = false;
    bool initialized_ = false;
    std::string buffer1_, buffer2_, buffer3_;
    int16_t distance_ = 0;
};

} // namespace zebreader81
