// zebreader-sim: a simulated scanner on a new pseudo-terminal, for developing a host
// application without a scanner. Prints the device path and serves until interrupted.
#include "ModelName.h"
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
    app.set_version_flag("--version", "zebreader-sim " ZEBREADER_VERSION);
    std::string families;
    for (const auto& f : sim::simulatedFamilies())
        families += std::string("\n  ") + f.name + ": " + f.description;
    app.add_option("MODEL", family,
                   std::string("The model: ") + zebreader::cli::modelSyntax +
                       "; this build simulates:" + (families.empty() ? std::string(" none") : families))
        ->required();
    app.add_option("--sheets", sheetsFile, "Sheet file to feed (default: the sample sheets)");
    app.add_flag("--baud-pace", baudPace, "Send at the line rate of the model's default baud setting");
    CLI11_PARSE(app, argc, argv);

    std::string problem;
    const auto model = zebreader::cli::modelFromName(family, problem);
    if (!model) {
        std::cerr << "zebreader-sim: " << problem << "\n";
        return 2;
    }
    const int32_t type = *model;
    if (!sim::hasSimulator(type)) {
        std::cerr << "zebreader-sim: \"" << family
                  << "\" is not a model of a simulated family; this build simulates:"
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
    const std::string flags = sim::readerFlags(sim::measureSheets(sheets));
    auto peer = sim::makeSimulator(type, std::move(sheets));
    if (baudPace) {
        const auto line = sim::defaultLine(type);
        peer->setPaced(line.baud, line.bitsPerChar);
    }
    std::cout << peer->path() << std::endl;
    // The reader must be set up for the sheets, or a duplex sheet fails half-way.
    std::cerr << "zebreader-sim: model " << type << " with " << count << " sheet(s) on " << peer->path()
              << "; Ctrl-C ends. Read them with:\n  zebreader scan --model " << type << " --device "
              << peer->path() << (flags.empty() ? "" : " " + flags) << std::endl;
    int sig = 0;
    sigwait(&interrupts, &sig);
    std::cerr << "zebreader-sim: stopped; the reader sent " << peer->received().size() << " byte(s)"
              << std::endl;
    return 0;
}
