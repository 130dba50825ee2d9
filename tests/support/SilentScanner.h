// A scanner that is plugged in and never answers: enough for a port to open.
#pragma once

#include "sim/Peer.h"

namespace zebreader81::test {

class SilentScanner : public sim::Peer {
public:
    SilentScanner() { start(); }
    ~SilentScanner() override { stop(); }

protected:
    void onReceive(std::string_view) override {}
};

} // namespace zebreader81::test
