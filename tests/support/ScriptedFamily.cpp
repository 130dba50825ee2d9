#include "support/ScriptedFamily.h"

namespace zebreader81::test {

ScriptedFamily::ScriptedFamily(Family family) : family_(family)
{
    FamilyDriver d;
    d.init = [this](clsZEBReader&) {
        calls.push_back("init");
        return initResult;
    };
    d.close = [this](clsZEBReader&) {
        calls.push_back("close");
        return true;
    };
    d.read = [this](clsZEBReader& r) {
        const int n = ++readCount_;
        calls.push_back("read");
        const bool ok = n <= static_cast<int>(reads.size()) && reads[static_cast<std::size_t>(n - 1)];
        if (ok) {
            auto side = SafeArray<int16_t>::matrix(1, 2, 1, 3);
            side(1, 1) = static_cast<int16_t>(n);
            Reader::Side1Array(r, side);
        }
        return ok;
    };
    d.print = [this](clsZEBReader&, bool skip, bool&) {
        calls.push_back(skip ? "print(skip)" : "print");
        return !skip;
    };
    d.reject = [this](clsZEBReader&) { calls.push_back("reject"); };
    d.eject = [this](clsZEBReader&, bool&) { calls.push_back("eject"); };
    previous_ = FamilyRegistry::replace(family, std::move(d));
}

ScriptedFamily::~ScriptedFamily() { FamilyRegistry::replace(family_, std::move(previous_)); }

} // namespace zebreader81::test
