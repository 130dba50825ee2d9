#include "support/BenchRig.h"

#include "channel/frmComm.h"
#include "drivers/ReaderAccess.h"
#include "sim/ezdata/EZDataSimulator.h"
#include "sim/ncs/OpScanSimulator.h"
#include "sim/pdi/PdiSimulator.h"
#include "sim/scantron/ScanMarkSimulator.h"
#include "zebreader81/ErrorHost.h"
#include "zebreader81/clsZEBReaderWindows.h"

#include <atomic>
#include <cstdio>
#include <ctime>
#include <thread>
#include <vector>

namespace zebreader81::bench {

namespace {

using namespace std::chrono;

// A simulator that also takes the driver's bytes at the line rate: it acts on a command only
// once its last character would have crossed the line. The pty alone delivers them at once.
template <class Sim> class PacedInbound final : public Sim {
public:
    template <class... Args>
    explicit PacedInbound(double charSeconds, Args&&... args)
        : Sim(std::forward<Args>(args)...), charSeconds_(charSeconds)
    {
    }
    ~PacedInbound() override { this->stop(); }

protected:
    void onReceive(std::string_view bytes) override
    {
        if (charSeconds_ > 0)
            std::this_thread::sleep_for(duration<double>(charSeconds_ * static_cast<double>(bytes.size())));
        Sim::onReceive(bytes);
    }

private:
    const double charSeconds_;
};

constexpr int16_t EZDataThreshold = 5; // the simulator's threshold code "70"
constexpr int16_t PdiThreshold = 240;

// Window areas of the window-mode form: ten blocks of 10 rows by 12 columns.
constexpr int WindowCount = 10;
constexpr int WindowRows = 10;
constexpr int WindowCols = 12;
int16_t windowStartRow(int i) { return static_cast<int16_t>(1 + (i % 5) * WindowRows); }
int16_t windowStartCol(int i) { return static_cast<int16_t>(1 + (i / 5) * 24); }

bool inWindow(int r, int c)
{
    for (int i = 0; i < WindowCount; ++i)
        if (r >= windowStartRow(i) && r < windowStartRow(i) + WindowRows && c >= windowStartCol(i) &&
            c < windowStartCol(i) + WindowCols)
            return true;
    return false;
}

SafeArray<int16_t> perSheet(int16_t value)
{
    auto a = SafeArray<int16_t>::vector(0, 1);
    a(1) = value;
    return a;
}

std::atomic<int> reports{0};

} // namespace

const char* familyName(Family family)
{
    switch (family) {
    case Family::OpScan: return "opscan";
    case Family::EZData: return "ezdata";
    case Family::ScanMark: return "scanmark";
    case Family::ScanMarkWindows: return "scanmark-windows";
    case Family::PDI: return "pdi";
    }
    return "?";
}

std::optional<Family> familyNamed(std::string_view name)
{
    for (Family f : {Family::OpScan, Family::EZData, Family::ScanMark, Family::ScanMarkWindows, Family::PDI})
        if (name == familyName(f))
            return f;
    return std::nullopt;
}

double bitsPerChar(Family family)
{
    switch (family) {
    case Family::OpScan: return 11; // 7 data, odd parity, 2 stop
    case Family::EZData: return 10; // 7 data, even parity, 1 stop
    case Family::ScanMark:
    case Family::ScanMarkWindows: return 11; // 8 data, no parity, 2 stop
    case Family::PDI: return 10;             // 8 data, no parity, 1 stop
    }
    return 10;
}

// Mark strength of a cell as the simulator sends it (rows and columns from 1).
static int strength(SheetSize size, int seed, int side, int r, int c)
{
    if (size == SheetSize::Full)
        return (7 * r + c + seed + 3 * side) % 16; // neighbours always differ: no runs
    return c % 12 == (r + seed + side) % 5 ? 12 : 0;
}

Rig::Rig(Family family, const RigOptions& options) : family_(family), options_(options)
{
    const double cs = charSeconds();
    switch (family) {
    case Family::OpScan: {
        auto sim = std::make_unique<PacedInbound<sim::OpScanSimulator>>(cs);
        sim->setMode(openingScanMode());
        peer_ = std::move(sim);
        reader_.ReaderType(zebReaderTypeNCSOpScan2);
        break;
    }
    case Family::EZData: {
        auto sim = std::make_unique<PacedInbound<sim::EZDataSimulator>>(cs);
        sim->setFeedDelay(EZDataFeed);
        peer_ = std::move(sim);
        reader_.ReaderType(zebReaderTypeNCSEZData);
        reader_.RecognitionThreshold(EZDataThreshold);
        break;
    }
    case Family::ScanMark:
    case Family::ScanMarkWindows:
        peer_ = std::make_unique<PacedInbound<sim::ScanMarkSimulator>>(cs, zebReaderTypeScantronScanMark2000);
        reader_.ReaderType(zebReaderTypeScantronScanMark2000);
        reader_.Side1Rows(perSheet(rows()));
        reader_.Side1Cols(perSheet(cols()));
        reader_.Side2Rows(perSheet(duplex() ? rows() : 0));
        reader_.Side2Cols(perSheet(duplex() ? cols() : 0));
        if (family == Family::ScanMarkWindows) {
            reader_.RecognitionMode(zebRecognitionTypeWindow);
            for (int i = 0; i < WindowCount; ++i) {
                auto w = std::make_shared<clsZEBReaderWindow>();
                w->StartRow(windowStartRow(i)), w->NumRows(WindowRows), w->RowGap(1);
                w->StartCol(windowStartCol(i)), w->NumCols(WindowCols), w->ColGap(1);
                w->Page(1), w->Orientation(1);
                reader_.Windows()->Add(w);
            }
        } else {
            reader_.RecognitionMode(zebRecognitionTypePage);
        }
        break;
    case Family::PDI: {
        auto sim = std::make_unique<PacedInbound<sim::PdiSimulator>>(cs);
        sim->setThreshold(PdiThreshold + 1); // the reset query steps it once
        peer_ = std::move(sim);
        reader_.ReaderType(zebReaderTypePDIVMR138);
        reader_.RecognitionThreshold(PdiThreshold);
        break;
    }
    }
    if (options.baud > 0)
        peer_->setPaced(options.baud, bitsPerChar(family));
    peer_->setRecording(false);

    sim::mapPort(options.port, peer_->path());
    reader_.Port(options.port);
    // The pty carries bytes, not frames: 8N1 there, the family's frame in the pacing.
    reader_.BaudRate(static_cast<zebReaderBaudRate>(options.baud > 0 ? options.baud : 38400));
    reader_.Parity("N");
    reader_.DataBits(zebReaderDataBits8);
    reader_.StopBits(1);
    reader_.FlowControl(zebReaderFlowControlNone);
    reader_.TimeOut(30);
    reader_.SleepTime(options.sleepTime);
    reader_.Feeder(!options.handFed);
    reader_.Rejecter(false);
    reader_.Duplex(duplex());
    reader_.DuplexForm(duplex());
    Reader::fComm(reader_).mscComm.setTrace(
        [this](bool sent, const std::string& bytes) { (sent ? sent_ : received_) += bytes.size(); });
}

Rig::~Rig()
{
    auto& fc = Reader::fComm(reader_);
    fc.mscComm.setTrace(nullptr);
    if (fc.mscComm.PortOpen())
        reader_.EndReader();
}

int16_t Rig::rows() const
{
    const bool full = options_.size == SheetSize::Full;
    switch (family_) {
    case Family::OpScan:
    case Family::EZData: return 150;
    case Family::ScanMark: return full ? 100 : 40;
    case Family::ScanMarkWindows: return 50;
    case Family::PDI: return full ? 500 : 100;
    }
    return 0;
}

int16_t Rig::cols() const
{
    switch (family_) {
    case Family::OpScan:
    case Family::ScanMark:
    case Family::ScanMarkWindows: return 48;
    case Family::EZData:
    case Family::PDI: return 12;
    }
    return 0;
}

bool Rig::duplex() const
{
    return options_.size == SheetSize::Full && (family_ == Family::OpScan || family_ == Family::ScanMark);
}

double Rig::charSeconds() const { return options_.baud > 0 ? bitsPerChar(family_) / options_.baud : 0.0; }

int32_t Rig::openingScanMode() const { return 1 + options_.seed % 6; }

int32_t Rig::scanMode() const
{
    // The mode of the last mode command the scanner took ("e", letter, EOT); its opening
    // mode when there was none.
    const auto* sim = dynamic_cast<const sim::OpScanSimulator*>(peer_.get());
    if (!sim)
        return 0;
    const auto commands = sim->commands();
    for (auto it = commands.rbegin(); it != commands.rend(); ++it)
        if (it->size() == 3 && (*it)[0] == 'e' && (*it)[2] == '\x04') {
            const std::string letters = "ietdws";
            const auto at = letters.find((*it)[1]);
            return at == std::string::npos ? 0 : static_cast<int32_t>(at) + 1;
        }
    return openingScanMode();
}

bool Rig::readSheet()
{
    const bool read = reader_.ReadPage();
    peer_->waitIdle(seconds(5));
    return read;
}

void Rig::settle() { std::this_thread::sleep_for(milliseconds(2)); }

void Rig::addSheets(int count)
{
    for (int n = 0; n < count; ++n) {
        sim::Sheet sheet;
        auto side = [&](int s) {
            std::vector<std::vector<int>> out(static_cast<std::size_t>(rows()));
            for (int r = 1; r <= rows(); ++r)
                for (int c = 1; c <= cols(); ++c)
                    out[static_cast<std::size_t>(r - 1)].push_back(
                        strength(options_.size, options_.seed, s, r, c));
            return out;
        };
        sheet.side1 = side(1);
        if (duplex())
            sheet.side2 = side(2);
        switch (family_) {
        case Family::OpScan: static_cast<sim::OpScanSimulator&>(*peer_).addSheet(sheet); break;
        case Family::EZData: static_cast<sim::EZDataSimulator&>(*peer_).addSheet(sheet); break;
        case Family::ScanMark:
        case Family::ScanMarkWindows: static_cast<sim::ScanMarkSimulator&>(*peer_).addSheet(sheet); break;
        case Family::PDI: static_cast<sim::PdiSimulator&>(*peer_).addSheet(sheet); break;
        }
    }
}

bool Rig::lastSheetMatches() const
{
    const auto check = [&](const SafeArray<int16_t>& got, int side) {
        if (got.empty())
            return false;
        for (int r = 1; r <= got.UBound(1); ++r)
            for (int c = 1; c <= got.UBound(2); ++c) {
                const int s =
                    r <= rows() && c <= cols() ? strength(options_.size, options_.seed, side, r, c) : 0;
                int want = s;
                switch (family_) {
                case Family::OpScan: want = c == 48 ? 0 : s; break;
                case Family::EZData: want = s > 0 ? EZDataThreshold + 1 : 0; break;
                case Family::PDI: want = s > 0 ? PdiThreshold + 1 : 0; break;
                case Family::ScanMark: break;
                case Family::ScanMarkWindows: want = inWindow(r, c) ? s : 0; break;
                }
                if (got(r, c) != want) {
                    std::fprintf(stderr, "side %d (%d, %d): %d, not %d\n", side, r, c, got(r, c), want);
                    return false;
                }
            }
        return true;
    };
    if (!check(reader_.Side1Array(), 1))
        return false;
    return !duplex() || check(reader_.Side2Array(), 2);
}

duration<double> Rig::sheetBound(std::size_t sent, std::size_t received) const
{
    const double cs = charSeconds();
    const double wire = cs * static_cast<double>(sent + received);
    const double sleep = options_.sleepTime / 1000.0;
    switch (family_) {
    case Family::OpScan:
    case Family::ScanMark:
    case Family::ScanMarkWindows: return duration<double>(wire);
    case Family::EZData:
        // The sheet follows the enable answer after the feed; the 500 ms pause runs meanwhile.
        return duration<double>(wire + duration<double>(EZDataFeed).count());
    case Family::PDI: {
        // Five pauses of 5 x SleepTime in a row; every byte crosses during one of them except
        // the part of the sheet that does not fit in the two after the read command.
        const double sheetWire = cs * static_cast<double>(received > 3 ? received - 3 : 0);
        return duration<double>(25 * sleep + std::max(0.0, sheetWire - 10 * sleep));
    }
    }
    return duration<double>(wire);
}

ReportCounter::ReportCounter()
{
    reports = 0;
    SetMessageBoxHook([](const std::string& text, const std::string& title, int32_t) {
        if (reports.fetch_add(1) < 5)
            std::fprintf(stderr, "report: %s: %s\n", title.c_str(), text.c_str());
    });
}

ReportCounter::~ReportCounter() { SetMessageBoxHook(nullptr); }

int ReportCounter::count() { return reports.load(); }

double threadCpuSeconds()
{
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

double processCpuSeconds()
{
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

} // namespace zebreader81::bench
