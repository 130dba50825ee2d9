// Soak run: one ReadBatch of many sheets through the OpScan simulator. The simulator runs in
// a child process so that the figures are the component's own: seconds, resident memory when
// the first sheet is in and when the last is, and sheets whose marks came out wrong.
//   zebreader81_soak [sheets] [max RSS growth in kB]
#include "sim/ncs/OpScanSimulator.h"
#include "zebreader81/zebreader81.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

using namespace zebreader81;

namespace {

constexpr int16_t Port = 7;
constexpr int Rows = 40;

int strength(long sheet, int row, int col) { return static_cast<int>((sheet * 7 + row * 3 + col) % 16); }

sim::Sheet sheetNumber(long n)
{
    sim::Sheet s;
    s.side1.assign(Rows, std::vector<int>(48));
    for (int r = 0; r < Rows; ++r)
        for (int c = 0; c < 48; ++c)
            s.side1[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)] = strength(n, r, c);
    s.barcodes = {std::to_string(n)};
    return s;
}

long residentKb()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmRSS:", 0) == 0)
            return std::strtol(line.c_str() + 6, nullptr, 10);
    return -1;
}

// The scanner's process: keeps the hopper full until the parent closes `control`. A DC1 that
// finds the hopper empty is not answered, so it holds plenty to ride out a slow turn.
[[noreturn]] void runScanner(int pathOut, int control)
{
    sim::OpScanSimulator scanner;
    scanner.setRecording(false);
    long next = 1;
    const std::string path = scanner.path() + "\n";
    if (write(pathOut, path.data(), path.size()) != static_cast<ssize_t>(path.size()))
        _exit(2);
    close(pathOut);
    for (;;) {
        while (scanner.sheetsWaiting() < 64)
            scanner.addSheet(sheetNumber(next++));
        pollfd pfd{control, POLLIN, 0};
        if (poll(&pfd, 1, 1) > 0)
            break; // EOF: the batch is over
    }
    _exit(0);
}

class Checker : public ReaderEvents {
public:
    void ReadSheet(SafeArray<int16_t>& side1, SafeArray<int16_t>&, SafeArray<std::string>& barcodes,
                   bool&) override
    {
        ++sheets;
        bool good = barcodes.UBound() == 1 && barcodes(1) == std::to_string(sheets);
        for (int r = 1; good && r <= Rows; ++r)
            for (int c = 1; good && c < 48; ++c)
                good = side1(r, c) == strength(sheets, r - 1, c - 1);
        wrong += good ? 0 : 1;
        if (sheets == 1)
            firstKb = residentKb();
        lastKb = residentKb();
    }
    long sheets = 0, wrong = 0, firstKb = 0, lastKb = 0;
};

} // namespace

int main(int argc, char** argv)
{
    const long wanted = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 10000;
    const long maxGrowthKb = argc > 2 ? std::strtol(argv[2], nullptr, 10) : 2048;

    int pathPipe[2], controlPipe[2];
    if (pipe(pathPipe) != 0 || pipe(controlPipe) != 0)
        return 2;
    const pid_t child = fork();
    if (child == 0) {
        close(pathPipe[0]);
        close(controlPipe[1]);
        runScanner(pathPipe[1], controlPipe[0]);
    }
    close(pathPipe[1]);
    close(controlPipe[0]);
    std::string path;
    for (char c; read(pathPipe[0], &c, 1) == 1 && c != '\n';)
        path += c;
    close(pathPipe[0]);
    sim::mapPort(Port, path);

    const long startKb = residentKb();
    int rc = 0;
    {
        clsZEBReader reader;
        reader.ReaderType(zebReaderTypeNCSOpScan2);
        reader.Port(Port);
        reader.TimeOut(5);
        reader.SleepTime(1);
        reader.Feeder(true);
        auto checker = std::make_shared<Checker>();
        reader.Advise(checker);

        const auto t0 = std::chrono::steady_clock::now();
        int32_t count = 0;
        const bool ok = reader.ReadBatch(false, static_cast<int32_t>(wanted), count);
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();

        std::printf("sheets %ld of %ld (ReadBatch %s, count %d), wrong %ld\n", checker->sheets, wanted,
                    ok ? "True" : "False", count, checker->wrong);
        std::printf("seconds %.2f (%.2f ms per sheet)\n", seconds,
                    checker->sheets ? 1000.0 * seconds / static_cast<double>(checker->sheets) : 0.0);
        std::printf("resident kB: before %ld, first sheet %ld, last sheet %ld, growth %ld\n", startKb,
                    checker->firstKb, checker->lastKb, checker->lastKb - checker->firstKb);
        if (checker->sheets != wanted || checker->wrong != 0 || !ok)
            rc = 1;
        if (checker->lastKb - checker->firstKb > maxGrowthKb) {
            std::printf("resident memory grew by more than %ld kB\n", maxGrowthKb);
            rc = 1;
        }
    }
    close(controlPipe[1]);
    int status = 0;
    waitpid(child, &status, 0);
    return rc;
}
