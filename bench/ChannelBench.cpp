// The serial channel's costs: CPU burnt by a wait on a silent port, and how fast bytes get
// through Input one at a time from a port that never stops sending.
//   zebreader81_bench --benchmark_filter=Channel
#include "channel/frmComm.h"
#include "sim/Peer.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <ctime>

namespace {

using namespace std::chrono;
using zebreader81::frmComm;

class QuietPeer : public zebreader81::sim::Peer {
public:
    QuietPeer() { start(); }
    ~QuietPeer() override { stop(); }

protected:
    void onReceive(std::string_view) override {}
};

double processCpuSeconds()
{
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

void openOn(frmComm& fc, const QuietPeer& peer)
{
    setenv("ZEBREADER_COM9", peer.path().c_str(), 1);
    fc.mscComm.CommPort(9);
    fc.mscComm.Settings("9600,E,7,1");
    fc.mscComm.PortOpen(true);
}

// A 10-second wait with the drivers' idiom; the argument is the pace (SleepTime) in ms, 0
// for an unpaced wait. Reports the whole process's CPU time (the peer's thread included)
// as a share of one core.
void ChannelSilentWait(benchmark::State& state)
{
    QuietPeer peer;
    frmComm fc;
    openOn(fc, peer);
    const auto pace = milliseconds(state.range(0));
    double cpu = 0, wall = 0;
    for (auto _ : state) {
        const double cpu0 = processCpuSeconds();
        const auto wall0 = steady_clock::now();
        fc.tmrScan.Interval(10000);
        fc.tmrScan.Enabled(true);
        while (fc.mscComm.InBufferCount() == 0) {
            if (pace.count() > 0)
                fc.DoEvents(pace);
            else
                fc.DoEvents();
            if (!fc.tmrScan.Enabled())
                break;
        }
        cpu += processCpuSeconds() - cpu0;
        wall += duration<double>(steady_clock::now() - wall0).count();
    }
    state.counters["cpu_ms"] = cpu * 1000.0 / static_cast<double>(state.iterations());
    state.counters["cpu_pct_of_core"] = 100.0 * cpu / wall;
}
BENCHMARK(ChannelSilentWait)->Arg(0)->Arg(5)->Arg(50)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

// Bytes through Input with InputLen 1 from a flooded port. Argument 1: the drivers' loop
// (test InBufferCount, take one character, DoEvents when nothing is waiting); argument 0:
// Input alone, DoEvents when it comes back empty.
void ChannelFloodInputLen1(benchmark::State& state)
{
    QuietPeer peer;
    peer.setRecording(false);
    peer.babble("The quick brown fox jumps over the lazy dog. 0123456789\r");
    frmComm fc;
    openOn(fc, peer);
    auto& com = fc.mscComm;
    com.InputLen(1);
    const bool countFirst = state.range(0) != 0;
    constexpr int64_t perIteration = 1 << 20;
    fc.tmrScan.Interval(60000);
    for (auto _ : state) {
        int64_t got = 0;
        fc.tmrScan.Enabled(true);
        while (got < perIteration) {
            if (countFirst && com.InBufferCount() == 0) {
                fc.DoEvents();
                continue;
            }
            const std::string c = com.Input();
            if (c.empty())
                fc.DoEvents();
            got += static_cast<int64_t>(c.size());
            benchmark::DoNotOptimize(c);
        }
        fc.tmrScan.Enabled(false);
    }
    state.SetBytesProcessed(state.iterations() * perIteration);
    peer.babble("");
}
BENCHMARK(ChannelFloodInputLen1)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
