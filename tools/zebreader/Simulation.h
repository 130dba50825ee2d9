// --simulate: the simulated scanner of the model's family, run in this process on a
// pseudo-terminal that a COM port is mapped to for this run.
#pragma once

#include "sim/Peer.h"
#include "sim/Sheet.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zebreader::cli {

class Simulation {
public:
    /// Starts the simulator of `readerType` with `sheetsFile` (empty: the sample sheets) and
    /// maps `port` to it. Throws UsageError when the family has no simulator in this build
    /// or the sheet file is bad.
    Simulation(int32_t readerType, const std::string& sheetsFile, int port);

    /// Throws UsageError when this build has no simulator for the family of `readerType`.
    static void requireSimulator(int32_t readerType);

    const std::vector<zebreader81::sim::Sheet>& sheets() const { return sheets_; }
    const std::string& path() const { return peer_->path(); }

private:
    std::vector<zebreader81::sim::Sheet> sheets_;
    std::unique_ptr<zebreader81::sim::Peer> peer_;
};

} // namespace zebreader::cli
