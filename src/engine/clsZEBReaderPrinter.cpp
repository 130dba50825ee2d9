#include "zebreader81/clsZEBReaderPrinter.h"

#include <initializer_list>

namespace zebreader81 {

namespace {

bool in(int32_t type, std::initializer_list<std::pair<int32_t, int32_t>> ranges)
{
    for (auto [low, high] : ranges)
        if (type >= low && type <= high)
            return true;
    return false;
}

// Models whose imprinter prints three lines.
bool threeLineModel(int32_t t) { return in(t, {{7, 10}, {30, 30}, {33, 34}, {36, 36}}); }

struct PrintLimits {
    int32_t minPosition, maxPosition, maxCharacters;
};

PrintLimits limitsOf(int32_t t)
{
    if (in(t, {{2, 4}, {31, 32}}))
        return {0, 24, 24};
    if (t == 5)
        return {0, 40, 40};
    if (t == 6)
        return {10, 25, 25};
    if (t == 25)
        return {0, 25, 25};
    if (t == 26)
        return {10, 54, 54};
    if (threeLineModel(t))
        return {10, 245, 41}; // the position range and the text limit differ on purpose
    if (in(t, {{11, 17}, {27, 29}}))
        return {0, 135, 135};
    return {-1, -1, -1};
}

} // namespace

void clsZEBReaderPrinter::SetType(int32_t Value)
{
    type_ = Value;
    distance_ = threeLineModel(Value) ? 245 : 0;
}

bool clsZEBReaderPrinter::Enabled() const { return enabled_; }

void clsZEBReaderPrinter::Enabled(bool value)
{
    if (in(type_, {{1, 1}, {18, 18}, {20, 23}, {35, 35}, {37, 37}, {41, 41}}))
        enabled_ = false;
    else if (in(type_, {{2, 17}, {25, 34}, {36, 36}}))
        enabled_ = value;
}

bool clsZEBReaderPrinter::Initialized() const { return initialized_; }

bool clsZEBReaderPrinter::Active() const { return active_ && enabled_; }

void clsZEBReaderPrinter::Active(bool value) { active_ = value && enabled_; }

int32_t clsZEBReaderPrinter::BufferCount() const
{
    if (threeLineModel(type_))
        return 3;
    if (in(type_, {{2, 6}, {11, 17}, {25, 29}, {31, 32}}))
        return 1;
    return 0;
}

int32_t clsZEBReaderPrinter::FilledBufferCount() const
{
    const int32_t lines = BufferCount();
    return (lines >= 1 && !buffer1_.empty()) + (lines >= 2 && !buffer2_.empty()) +
           (lines >= 3 && !buffer3_.empty());
}

int32_t clsZEBReaderPrinter::MinPosition() const { return enabled_ ? limitsOf(type_).minPosition : -1; }
int32_t clsZEBReaderPrinter::MaxPosition() const { return enabled_ ? limitsOf(type_).maxPosition : -1; }
int32_t clsZEBReaderPrinter::MaxCharacters() const { return enabled_ ? limitsOf(type_).maxCharacters : -1; }

} // namespace zebreader81
