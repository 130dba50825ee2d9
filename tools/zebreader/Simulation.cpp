#include "Simulation.h"

#include "CommandLine.h"
#include "drivers/basRead.h"
#include "sim/SheetFile.h"
#include "sim/Simulators.h"

namespace zebreader::cli {

namespace sim = zebreader81::sim;

void Simulation::requireSimulator(int32_t readerType)
{
    if (!sim::hasSimulator(readerType)) {
        std::string families;
        for (const auto& f : sim::simulatedFamilies())
            families += std::string(families.empty() ? "" : ", ") + f.name + " (e.g. model " +
                        std::to_string(f.defaultReaderType) + ")";
        throw UsageError("--simulate: this build has no simulator for model " + std::to_string(readerType) +
                         " (" + zebreader81::basRead::ReaderTypeName(readerType) +
                         "); simulated families: " + (families.empty() ? "none" : families));
    }
}

Simulation::Simulation(int32_t readerType, const std::string& sheetsFile, int port)
{
    requireSimulator(readerType);
    try {
        sheets_ = sheetsFile.empty() ? sim::sampleSheets(readerType) : sim::loadSheetFile(sheetsFile);
    } catch (const sim::SheetFileError& e) {
        throw UsageError(std::string("--sheets-file: ") + e.what());
    }
    peer_ = sim::makeSimulator(readerType, sheets_);
    mapPortForRun(port, peer_->path());
}

} // namespace zebreader::cli
