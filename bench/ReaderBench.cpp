// What a reader costs in CPU: waiting for a hand-fed sheet, and reading one sheet.
//   zebreader81_bench --benchmark_filter=ReaderIdle
//   zebreader81_bench --benchmark_filter=SheetCpu
// Arguments: the family (0 OpScan, 1 EZData, 2 ScanMark page, 3 ScanMark windows, 4 PDI), then
// for SheetCpu the baud the simulator paces at (0: as fast as the pty goes).
#include "support/BenchRig.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

using namespace zebreader81;
using namespace zebreader81::bench;
using namespace std::chrono;

void label(benchmark::State& state, Family family, int32_t baud)
{
    std::string text = familyName(family);
    if (baud > 0)
        text += " paced " + std::to_string(baud);
    state.SetLabel(text);
}

// A reader waits 10 seconds for a sheet that nobody feeds, then the host cancels. Counts the
// reading thread's CPU and the whole process's (the simulator's thread included) as a share
// of one core. SleepTime is the profiles' 50 ms.
void ReaderIdle(benchmark::State& state)
{
    const auto family = static_cast<Family>(state.range(0));
    label(state, family, 0);
    ReportCounter reports;
    Rig rig(family, {.port = 9, .sleepTime = 50, .handFed = true});
    if (!rig.reader().StartReader()) {
        state.SkipWithError("StartReader failed");
        return;
    }
    double readerCpu = 0, processCpu = 0, wall = 0;
    for (auto _ : state) {
        rig.reader().CancelScan(false);
        std::mutex m;
        std::condition_variable cv;
        bool finished = false;
        std::thread host([&] {
            std::unique_lock lock(m);
            if (!cv.wait_for(lock, seconds(10), [&] { return finished; }))
                rig.reader().CancelScan(true);
        });
        const double t0 = threadCpuSeconds(), p0 = processCpuSeconds();
        const auto w0 = steady_clock::now();
        const bool read = rig.readSheet();
        readerCpu += threadCpuSeconds() - t0;
        processCpu += processCpuSeconds() - p0;
        wall += duration<double>(steady_clock::now() - w0).count();
        {
            std::lock_guard lock(m);
            finished = true;
        }
        cv.notify_all();
        host.join();
        if (read)
            state.SkipWithError("a sheet came in");
    }
    rig.reader().CancelScan(false);
    state.counters["reader_cpu_ms"] = readerCpu * 1000.0 / static_cast<double>(state.iterations());
    state.counters["reader_pct_core"] = 100.0 * readerCpu / wall;
    state.counters["process_pct_core"] = 100.0 * processCpu / wall;
    state.counters["reports"] = ReportCounter::count();
}
BENCHMARK(ReaderIdle)
    ->ArgName("family")
    ->DenseRange(0, 4)
    ->Iterations(1)
    ->Unit(benchmark::kSecond)
    ->UseRealTime();

// One sheet of the largest kind per iteration (OpScan 150 x 48 duplex, ScanMark 100 x 48
// duplex page or ten 10 x 12 windows, EZData 150 rows, PDI 500 rows), every cell a mark value
// unlike its neighbour. The CPU column is the reading thread's time per sheet: waits, system
// calls, decoding and the hand-over to the reader object.
void SheetCpu(benchmark::State& state)
{
    const auto family = static_cast<Family>(state.range(0));
    const auto baud = static_cast<int32_t>(state.range(1));
    label(state, family, baud);
    ReportCounter reports;
    // Paced, the PDI sheet must be in before its header pause ends: the profiles' 50 ms.
    Rig rig(family, {.port = 9, .baud = baud, .sleepTime = baud > 0 ? 50 : 1, .size = SheetSize::Full});
    rig.addSheets(static_cast<int>(state.max_iterations));
    if (!rig.reader().StartReader()) {
        state.SkipWithError("StartReader failed");
        return;
    }
    rig.resetCounts();
    int64_t good = 0;
    double processCpu = 0;
    for (auto _ : state) {
        const double p0 = processCpuSeconds();
        const bool read = rig.readSheet();
        processCpu += processCpuSeconds() - p0;
        state.PauseTiming();
        good += read && rig.lastSheetMatches() ? 1 : 0;
        Rig::settle();
        state.ResumeTiming();
    }
    if (good != static_cast<int64_t>(state.iterations()) || ReportCounter::count() != 0)
        state.SkipWithError("a sheet was read wrong or an error was reported");
    state.counters["process_cpu_ms"] = processCpu * 1000.0 / static_cast<double>(state.iterations());
    state.counters["bytes_per_sheet"] =
        static_cast<double>(rig.bytesSent() + rig.bytesReceived()) / static_cast<double>(state.iterations());
}
BENCHMARK(SheetCpu)
    ->ArgNames({"family", "baud"})
    ->ArgsProduct({{0, 1, 2, 3, 4}, {0}})
    ->Iterations(20)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(SheetCpu)
    ->ArgNames({"family", "baud"})
    ->ArgsProduct({{0, 1, 2, 3, 4}, {38400}})
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace
