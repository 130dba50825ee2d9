// Replaces one driver family on this thread with a scripted one that records its calls.
#pragma once

#include "drivers/ReaderAccess.h"
#include "drivers/basRead.h"

#include <string>
#include <vector>

namespace zebreader81::test {

class ScriptedFamily {
public:
    explicit ScriptedFamily(Family family);
    ~ScriptedFamily();

    std::vector<std::string> calls;
    bool initResult = true;
    /// Results of successive reads; reads beyond the list fail.
    std::vector<bool> reads;

private:
    Family family_;
    FamilyDriver previous_;
    int readCount_ = 0;
};

} // namespace zebreader81::test
