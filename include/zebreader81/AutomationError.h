// The one exception of the public interface.
#pragma once

#include "zebreader81/export.h"

#include <cstdint>
#include <stdexcept>
#include <string>

namespace zebreader81 {

/// Thrown only by the few members documented to raise to their caller (for example
/// clsZEBReaderProfiles::Remove of an unknown key); every other member reports through the
/// error reporter and returns False or its zero value instead.
class ZEBREADER81_API AutomationError : public std::runtime_error {
public:
    AutomationError(int32_t number, const std::string& description)
        : std::runtime_error(description), number_(number)
    {
    }
    /// The automation error number (5 invalid procedure call, 9 subscript out of range...).
    int32_t number() const { return number_; }

private:
    int32_t number_;
};

} // namespace zebreader81
