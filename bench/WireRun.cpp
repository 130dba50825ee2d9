// Whole-process measurements against the wire, with the simulators in paced mode.
//
//   zebreader81_wire overhead [--family F] [--baud B] [--sheets N] [--sleep MS] [--via raw|rfc2217]
//       Wall time per sheet against what the line and the protocol's pauses allow, for each
//       family at 9,600 and 38,400 baud (or the ones named); --via puts ser2net on a loopback
//       port between the reader and the simulator.
//   zebreader81_wire many [--family F] [--baud B] [--sheets N] [--readers R]
//       R readers on R threads, each on its own simulator, against one reader alone.
//
// Families: opscan, ezdata, scanmark, scanmark-windows, pdi. Exit status 1 when a sheet was
// read wrong or anything was reported.
#include "sim/Ser2net.h"
#include "sim/Simulators.h"
#include "support/BenchRig.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <latch>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace zebreader81;
using namespace zebreader81::bench;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

struct Args {
    std::vector<Family> families;
    std::vector<int32_t> bauds;
    int sheets = 5;
    int readers = 8;
    int sleepTime = 50;
    std::optional<sim::Ser2net::Mode> via;
};

bool parse(int argc, char** argv, Args& args)
{
    for (int i = 2; i < argc; ++i) {
        const std::string a = argv[i];
        if (i + 1 >= argc)
            return false;
        const std::string v = argv[++i];
        if (a == "--family") {
            const auto f = familyNamed(v);
            if (!f)
                return false;
            args.families.push_back(*f);
        } else if (a == "--baud") {
            args.bauds.push_back(std::atoi(v.c_str()));
        } else if (a == "--sheets") {
            args.sheets = std::max(1, std::atoi(v.c_str()));
        } else if (a == "--readers") {
            args.readers = std::clamp(std::atoi(v.c_str()), 1, 16);
        } else if (a == "--via" && (v == "raw" || v == "rfc2217")) {
            args.via = v == "raw" ? sim::Ser2net::Mode::Raw : sim::Ser2net::Mode::Rfc2217;
        } else if (a == "--sleep") {
            args.sleepTime = std::max(1, std::atoi(v.c_str()));
        } else {
            return false;
        }
    }
    return true;
}

bool overhead(const Args& args)
{
    const auto families = args.families.empty()
                              ? std::vector<Family>{Family::OpScan, Family::EZData, Family::ScanMark,
                                                    Family::ScanMarkWindows, Family::PDI}
                              : args.families;
    const auto bauds = args.bauds.empty() ? std::vector<int32_t>{9600, 38400} : args.bauds;
    bool allGood = true;
    std::printf("%-17s %6s %6s %9s %10s %10s %10s %7s %7s\n", "family", "baud", "sheets", "bytes/sh",
                "wire ms", "bound ms", "wall ms", "ratio", "worst");
    for (const Family family : families) {
        for (const int32_t baud : bauds) {
            ReportCounter reports;
            Rig rig(family, {.port = 9, .baud = baud, .sleepTime = args.sleepTime, .seed = 1});
            rig.addSheets(args.sheets);
            std::unique_ptr<sim::Ser2net> server;
            if (args.via) {
                server = std::make_unique<sim::Ser2net>(rig.peer().path(), *args.via);
                if (!server->running()) {
                    std::printf("ser2net did not start: %s\n", server->log().c_str());
                    return false;
                }
                sim::mapPort(9, server->url());
            }
            if (!rig.reader().StartReader()) {
                std::printf("%-17s %6d  StartReader failed\n", familyName(family), baud);
                allGood = false;
                continue;
            }
            double wall = 0, bound = 0, wire = 0, worst = 0;
            std::size_t bytes = 0;
            int good = 0;
            for (int n = 0; n < args.sheets; ++n) {
                rig.resetCounts();
                const auto t0 = Clock::now();
                const bool read = rig.readSheet();
                const double w = Seconds(Clock::now() - t0).count();
                Rig::settle();
                const double b = rig.sheetBound(rig.bytesSent(), rig.bytesReceived()).count();
                if (read && rig.lastSheetMatches())
                    ++good;
                else
                    std::fprintf(stderr, "%s sheet %d: %s\n", familyName(family), n + 1,
                                 read ? "marks differ" : "not read");
                wall += w;
                bound += b;
                wire += rig.charSeconds() * static_cast<double>(rig.bytesSent() + rig.bytesReceived());
                bytes += rig.bytesSent() + rig.bytesReceived();
                worst = std::max(worst, w / b);
            }
            rig.reader().EndReader();
            const double per = 1000.0 / args.sheets;
            std::printf("%-17s %6d %6d %9zu %10.1f %10.1f %10.1f %7.4f %7.4f%s\n", familyName(family), baud,
                        args.sheets, bytes / static_cast<std::size_t>(args.sheets), wire * per, bound * per,
                        wall * per, wall / bound, worst,
                        good == args.sheets && ReportCounter::count() == 0 ? ""
                                                                           : "  SHEETS WRONG OR REPORTED");
            std::fflush(stdout);
            allGood = allGood && good == args.sheets && ReportCounter::count() == 0;
        }
    }
    return allGood;
}

struct Run {
    double seconds = 0;
    double cpuSeconds = 0;
    int sheets = 0;
    bool stateKept = true;
};

// `readers` readers read `sheets` sheets each at once; the clock runs from the moment every
// reader has started until the last sheet is in.
Run many(Family family, int32_t baud, int readers, int sheets, int sleepTime)
{
    std::vector<std::unique_ptr<Rig>> rigs;
    for (int i = 0; i < readers; ++i) {
        rigs.push_back(std::make_unique<Rig>(family, RigOptions{.port = static_cast<int16_t>(1 + i),
                                                                .baud = baud,
                                                                .sleepTime = sleepTime,
                                                                .seed = i}));
        rigs.back()->addSheets(sheets);
    }
    std::latch started(readers + 1);
    std::latch go(1);
    std::vector<int> good(static_cast<std::size_t>(readers), 0);
    std::vector<char> kept(static_cast<std::size_t>(readers), 1);
    std::vector<Clock::time_point> done(static_cast<std::size_t>(readers));
    std::vector<std::thread> threads;
    for (int i = 0; i < readers; ++i) {
        threads.emplace_back([&, i] {
            auto& rig = *rigs[static_cast<std::size_t>(i)];
            const bool open = rig.reader().StartReader();
            started.count_down();
            go.wait();
            for (int n = 0; open && n < sheets; ++n) {
                const bool right = rig.readSheet() && rig.lastSheetMatches();
                Rig::settle();
                good[static_cast<std::size_t>(i)] += right ? 1 : 0;
            }
            done[static_cast<std::size_t>(i)] = Clock::now();
            rig.reader().EndReader();
            // The OpScan driver puts back the mode it found, from its own thread's module state.
            if (family == Family::OpScan) {
                const int32_t opening = rig.openingScanMode();
                const bool restored = opening == 2 || opening == 3 || opening == 4 || opening == 6;
                kept[static_cast<std::size_t>(i)] = rig.scanMode() == (restored ? opening : 1);
            }
        });
    }
    started.count_down();
    started.wait();
    const double cpu0 = processCpuSeconds();
    const auto t0 = Clock::now();
    go.count_down();
    for (auto& t : threads)
        t.join();
    Run run;
    run.cpuSeconds = processCpuSeconds() - cpu0;
    run.seconds = Seconds(*std::max_element(done.begin(), done.end()) - t0).count();
    for (int i = 0; i < readers; ++i) {
        run.sheets += good[static_cast<std::size_t>(i)];
        run.stateKept = run.stateKept && kept[static_cast<std::size_t>(i)];
    }
    return run;
}

bool manyReaders(const Args& args)
{
    const Family family = args.families.empty() ? Family::OpScan : args.families.front();
    const int32_t baud = args.bauds.empty() ? 38400 : args.bauds.front();
    ReportCounter reports;
    const Run one = many(family, baud, 1, args.sheets, args.sleepTime);
    const Run all = many(family, baud, args.readers, args.sheets, args.sleepTime);
    const double rateOne = one.sheets / one.seconds;
    const double rateAll = all.sheets / all.seconds;
    std::printf("%s at %d baud, %d sheets per reader\n", familyName(family), baud, args.sheets);
    std::printf("  1 reader : %7.3f sheets/s  (%.2f s, CPU %.2f s)\n", rateOne, one.seconds, one.cpuSeconds);
    std::printf("  %d readers: %7.3f sheets/s  (%.2f s, CPU %.2f s, %.0f%% of one core)\n", args.readers,
                rateAll, all.seconds, all.cpuSeconds, 100.0 * all.cpuSeconds / all.seconds);
    std::printf("  total rate / (%d x single rate) = %.4f\n", args.readers,
                rateAll / (args.readers * rateOne));
    const bool ok = one.sheets == args.sheets && all.sheets == args.sheets * args.readers && all.stateKept &&
                    ReportCounter::count() == 0;
    std::printf("  sheets right: %d/%d, module state kept per thread: %s%s\n", all.sheets,
                args.sheets * args.readers, all.stateKept ? "yes" : "NO", ok ? "" : "  FAILED");
    return ok;
}

} // namespace

int main(int argc, char** argv)
{
    Args args;
    const std::string mode = argc > 1 ? argv[1] : "";
    if ((mode != "overhead" && mode != "many") || !parse(argc, argv, args)) {
        std::fprintf(stderr,
                     "usage: %s overhead|many [--family F] [--baud B] [--sheets N] [--readers R] "
                     "[--sleep MS] [--via raw|rfc2217]\n",
                     argv[0]);
        return 2;
    }
    const bool ok = mode == "overhead" ? overhead(args) : manyReaders(args);
    return ok ? 0 : 1;
}
