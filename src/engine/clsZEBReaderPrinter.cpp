#include "zebreader81/clsZEBReaderPrinter.h"

#include "profiles/ModelTable.h"

namespace zebreader81 {

namespace {

// The three-line imprinters start at the far end of their range.
constexpr int32_t threeLineDistance = 245;

} // namespace

void clsZEBReaderPrinter::SetType(int32_t Value)
{
    type_ = Value;
    distance_ = imprinterOf(Value).lines == 3 ? threeLineDistance : 0;
}

bool clsZEBReaderPrinter::Enabled() const { return enabled_; }

void clsZEBReaderPrinter::Enabled(bool value)
{
    switch (imprinterOf(type_).enable) {
    case PrinterEnable::Never: enabled_ = false; break;
    case PrinterEnable::Follows: enabled_ = value; break;
    case PrinterEnable::Untouched: break;
    }
}

bool clsZEBReaderPrinter::Initialized() const { return initialized_; }

bool clsZEBReaderPrinter::Active() const { return active_ && enabled_; }

void clsZEBReaderPrinter::Active(bool value) { active_ = value && enabled_; }

int32_t clsZEBReaderPrinter::BufferCount() const { return imprinterOf(type_).lines; }

int32_t clsZEBReaderPrinter::FilledBufferCount() const
{
    const int32_t lines = BufferCount();
    return (lines >= 1 && !buffer1_.empty()) + (lines >= 2 && !buffer2_.empty()) +
           (lines >= 3 && !buffer3_.empty());
}

int32_t clsZEBReaderPrinter::MinPosition() const { return enabled_ ? imprinterOf(type_).minPosition : -1; }
int32_t clsZEBReaderPrinter::MaxPosition() const { return enabled_ ? imprinterOf(type_).maxPosition : -1; }
int32_t clsZEBReaderPrinter::MaxCharacters() const
{
    return enabled_ ? imprinterOf(type_).maxCharacters : -1;
}

} // namespace zebreader81
