// Replaces one driver family on this thread with a scripted one that records its calls.
#pragma once

#include "drivers/ReaderAccess.h"
#include "drivers/basRead.h"

#include <functional>
#include <string>
#include <vector>

namespace zebreader81::test {

class ScriptedFamily {
public:
    explicit ScriptedFamily(Family family);
    ~ScriptedFamily();

    std::vector<std::string> calls;
    bool initResult = true;
    bool closeResult = true;
    bool printResult = true;
    /// Results of successive reads; reads beyond the list fail.
    std::vector<bool> reads;
    /// Run on each read before it returns (e.g. to set CancelScan).
    std::function<void(clsZEBReader&, int readNumber)> onRead;

private:
    Family family_;
    FamilyDriver previous_;
    int readCount_ = 0;
};

} // namespace zebreader81::test
