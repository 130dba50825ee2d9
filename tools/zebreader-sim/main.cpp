// zebreader-sim: a simulated scanner on a new pseudo-terminal, for developing a host
// application without a scanner. Prints the device path and serves until interrupted.
#include "sim/SheetFile.h"
#include "sim/Simulators.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <iostream>
#include <pthread.h>

namespace sim = zebreader81::sim;

int main(int argc, char** argv)
{
    // Only the main thread waits for Ctrl-C; the simulator's threads never see it.
    sigset_t interrupts;
    sigemptyset(&interrupts);
    sigaddset(&interrupts, SIGINT);
    sigaddset(&interrupts, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &interrupts, nullptr);

    std::string family, sheetsFile;
    bool baudPace = false;
    CLI::App app{"zebreader-sim: a simulated OMR scanner on a pseudo-terminal"};
    std::string families;
    for (const auto& f : sim::simulatedFamilies())
        families += std::string("\n  ") + f.name + ": " + f.description;
    app.add_option("FAMILY", family,
                   "A family or a model number; this build simulates:" +
                       (families.empty() ? std::string(" none") : families))
        ->required();
    app.add_option("--sheets", sheetsFile, "Sheet file to feed (default: the sample sheets)");
    app.add_flag("--baud-pace", baudPace, "Send at the line rate of the model's default baud setting");
    CLI11_PARSE(app, argc, argv);

    const int32_t type = sim::simulatedReaderType(family);
    if (type == 0) {
        std::cerr << "zebreader-sim: \"" << family
                  << "\" is not a simulated family or model; this build simulates:"
                  << (families.empty() ? " none" : families) << "\n";
        return 2;
    }
    std::vector<sim::Sheet> sheets;
    try {
        sheets = sheetsFile.empty() ? sim::sampleSheets(type) : sim::loadSheetFile(sheetsFile);
    } catch (const sim::SheetFileError& e) {
        std::cerr << "zebreader-sim: " << e.what() << "\n";
        return 2;
    }
    const auto count = sheets.size();
    auto peer = sim::makeSimulator(type, std::move(sheets));
    if (baudPace) {
        const auto line = sim::defaultLine(type);
        peer->setPaced(line.baud, line.bitsPerChar);
    }
    std::cout << peer->path() << std::endl;
    std::cerr << "zebreader-sim: model " << type << " with " << count << " sheet(s) on " << peer->path()
              << "; point a reader at it, e.g. ZEBREADER_COM1=" << peer->path() << " or --device "
              << peer->path() << "; Ctrl-C ends" << std::endl;
    int sig = 0;
    sigwait(&interrupts, &sig);
    std::cerr << "zebreader-sim: stopped; the reader sent " << peer->received().size() << " byte(s)"
              << std::endl;
    return 0;
}
