// zebreader scan: load settings, apply the flags, read a batch and show every sheet.
#include "CommandLine.h"
#include "ErrorSink.h"
#include "Interrupt.h"
#include "ReaderOptions.h"
#include "ScanChecks.h"
#include "SheetOutput.h"
#include "Simulation.h"
#include "Trace.h"
#include "WireWatch.h"

#include "drivers/ReaderAccess.h"
#include "profiles/ModelTable.h"
#include "sim/SheetFile.h"
#include "zebreader81/clsZEBReader.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <set>
#include <sstream>

namespace zebreader::cli {

using namespace zebreader81;

namespace {

struct ScanOptions {
    ReaderOptions reader;
    std::string print;
    std::optional<int> printDistance;
    int32_t sheets = -1;
    bool sheetsGiven = false;
    std::string reject;
    std::string format;
    std::string output;
    std::string trace;
    bool simulate = false;
    std::string sheetsFile;
};

std::set<int> parseSheetList(const std::string& text)
{
    std::set<int> out;
    std::stringstream in(text);
    std::string item;
    while (std::getline(in, item, ',')) {
        int v = 0;
        const auto [end, ec] = std::from_chars(item.data(), item.data() + item.size(), v);
        if (ec != std::errc{} || end != item.data() + item.size() || v < 1)
            throw UsageError("--reject: \"" + item + "\" is not a sheet number (1 for the first sheet)");
        out.insert(v);
    }
    return out;
}

// What stderr shows on a terminal while the batch runs: the sheets so far and the rate, and,
// when sheets are fed by hand, that the reader waits for one (that wait has no time-out).
class Progress {
public:
    Progress(bool terminal, bool showRate, bool handFed, int32_t maxSheets)
        : showRate_(terminal && showRate), handFed_(terminal && handFed), max_(maxSheets)
    {
    }
    void start()
    {
        if (handFed_ && max_ != 0)
            show(waiting(1));
    }
    // Before a sheet is printed: the waiting text goes, so the sheet starts a clean line.
    void beforeSheet()
    {
        if (shown_ && !showRate_)
            erase();
    }
    void sheet(int read)
    {
        std::string text = showRate_ ? rate(read) : std::string();
        if (handFed_ && (max_ < 0 || read < max_))
            text += (text.empty() ? "" : "; ") + waiting(read + 1);
        if (!text.empty())
            show(text);
    }
    // An error line is printed on a line of its own.
    void breakLine()
    {
        if (shown_)
            std::fputc('\n', stderr);
        shown_ = false;
    }
    void done(int read)
    {
        if (!shown_)
            return;
        erase();
        if (showRate_)
            std::fprintf(stderr, "%s\n", rate(read).c_str());
    }

private:
    std::string rate(int read) const
    {
        const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
        char text[64];
        std::snprintf(text, sizeof text, "%d sheet(s) read, %.1f/min", read, s > 0 ? read * 60.0 / s : 0.0);
        return text;
    }
    static std::string waiting(int sheet)
    {
        return "waiting for sheet " + std::to_string(sheet) + ": feed a sheet, Ctrl-C to stop";
    }
    void show(const std::string& text)
    {
        std::fprintf(stderr, "\r\033[K%s", text.c_str());
        std::fflush(stderr);
        shown_ = true;
    }
    void erase()
    {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        shown_ = false;
    }

    bool showRate_, handFed_;
    int32_t max_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

bool hasCells(const SafeArray<int16_t>& a)
{
    return !a.empty() && a.dims() == 2 && a.UBound(1) >= a.LBound(1) && a.UBound(2) >= a.LBound(2);
}

// The host's handlers: every ReadSheet event becomes one record of the output.
class ScanEvents : public ReaderEvents {
public:
    ScanEvents(clsZEBReader& reader, SheetOutput& output, std::set<int> reject, Progress& progress,
               const WireWatch& wire)
        : reader_(reader), output_(output), reject_(std::move(reject)), progress_(progress), wire_(wire)
    {
    }

    void ReadSheet(SafeArray<int16_t>& side1, SafeArray<int16_t>& side2, SafeArray<std::string>& barcodes,
                   bool&) override
    {
        // A read the scanner refused still comes back as a "sheet"; it is not shown.
        if (wire_.lastReadRefused() || (!hasCells(side1) && !hasCells(side2))) {
            failure = "the scanner refused to read sheet " + std::to_string(read + 1) +
                      (wire_.lastReadRefused() ? " (it answered the read command with '?')"
                                               : " (it sent no cells: is the form size right?)");
            reader_.CancelScan(true);
            return;
        }
        ++read;
        try {
            SheetRecord record;
            record.number = read;
            record.side1 = side1;
            record.side2 = side2;
            record.barcodes = barcodes;
            record.timingMarks1 = reader_.Side1TimingMarks();
            record.timingMarks2 = reader_.Side2TimingMarks();
            if (reject_.count(read)) {
                reader_.RejectPage();
                record.rejected = true;
            }
            progress_.beforeSheet();
            output_.sheet(record);
            progress_.sheet(read);
        } catch (const std::exception& e) {
            // Nothing may escape into the component: stop the batch instead.
            failure = e.what();
            reader_.CancelScan(true);
        }
    }

    int read = 0;
    std::string failure;

private:
    clsZEBReader& reader_;
    SheetOutput& output_;
    std::set<int> reject_;
    Progress& progress_;
    const WireWatch& wire_;
};

// What a simulated run needs unless the flags say otherwise: the form's size, and duplex
// and barcodes when the sheets have them.
void fitReaderToSheets(clsZEBReader& reader, const ReaderOptions& o, const std::vector<sim::Sheet>& sheets)
{
    const auto size = sim::measureSheets(sheets);
    auto one = [](std::size_t v) {
        auto a = SafeArray<int16_t>::vector(0, 1);
        a(1) = static_cast<int16_t>(std::min<std::size_t>(v, 32767));
        return a;
    };
    if (o.side1.empty()) {
        reader.Side1Rows(one(size.rows1));
        reader.Side1Cols(one(size.cols1));
    }
    if (o.side2.empty()) {
        reader.Side2Rows(one(size.rows2));
        reader.Side2Cols(one(size.cols2));
    }
    if (size.rows2 > 0 && !o.duplex) {
        reader.Duplex(true);
        reader.DuplexForm(true);
    }
    if (size.barcodes)
        reader.Barcode(true);
}

// Advice for a report the set-up explains: side-2 data on a set-up that reads side 1 only
// overruns the missing side-2 array.
std::string hintFor(const clsZEBReader& reader, int32_t number, const std::string& location)
{
    if (number == 9 && location.find(".ReadPage") != std::string::npos &&
        !(reader.Duplex() && reader.DuplexForm()))
        return "the scanner sent side 2 of a sheet, but the set-up reads side 1 only: give --duplex "
               "--duplex-form to read both sides";
    return {};
}

int runScan(const ScanOptions& o)
{
    // Ctrl-C must reach the watcher only; the simulator's threads inherit this.
    blockInterrupts();

    const std::string format = !o.format.empty()                        ? o.format
                               : stdoutIsTerminal() && o.output.empty() ? "grid"
                                                                        : "json";
    const auto sheetsToReject = parseSheetList(o.reject);
    if (o.sheets < -1)
        throw UsageError("--sheets " + std::to_string(o.sheets) +
                         ": give the most sheets to read, or -1 for no limit");
    if (o.simulate && !o.reader.device.empty())
        throw UsageError("--simulate and --device exclude each other");
    if (!o.sheetsFile.empty() && !o.simulate)
        throw UsageError("--sheets-file needs --simulate");

    if (o.simulate && !o.reader.model.empty())
        Simulation::requireSimulator(parseModel(o.reader.model));
    auto output = makeOutput(format, o.output);

    auto errors = ErrorSink::install(format == "json");
    clsZEBReader reader;
    // The sink outlives this batch; what its hooks refer to does not.
    struct Unhook {
        ErrorSink& sink;
        ~Unhook()
        {
            sink.setBeforeLine(nullptr);
            sink.setHint(nullptr);
        }
    } unhook{*errors};
    if (!o.reader.apply(reader))
        return ExitFailed;

    std::unique_ptr<Simulation> simulation;
    if (o.simulate) {
        simulation = std::make_unique<Simulation>(reader.ReaderType(), o.sheetsFile, reader.Port());
        fitReaderToSheets(reader, o.reader, simulation->sheets());
    }
    checkScanSetup(reader);
    errors->setPort(reader.Port(), simulation ? simulation->path() : portPath(reader.Port()));
    errors->setHint(
        [&reader](int32_t number, const std::string& location) { return hintFor(reader, number, location); });

    if (!o.print.empty() || o.printDistance) {
        auto printer = reader.Printer();
        printer->Enabled(true);
        printer->Active(true);
        printer->Buffer1(o.print);
        if (o.printDistance)
            printer->Distance(static_cast<int16_t>(*o.printDistance));
    }
    const bool initializePrinter = !o.print.empty() || o.printDistance.has_value();

    std::unique_ptr<TraceFile> trace;
    if (!o.trace.empty()) {
        trace = std::make_unique<TraceFile>(o.trace);
        trace->header("COM" + std::to_string(reader.Port()) +
                      (simulation ? " (simulated, " + simulation->path() + ")" : ""));
    }
    auto wire =
        std::make_unique<WireWatch>(reader, trace.get(), familyOf(reader.ReaderType()) == Family::ScanMark);

    // A simulated batch ends when the simulator's sheets are used up.
    int32_t maxSheets = o.sheets;
    if (simulation && !o.sheetsGiven)
        maxSheets = static_cast<int32_t>(simulation->sheets().size());

    Progress progress(stderrIsTerminal(), !(stdoutIsTerminal() && o.output.empty()), !reader.Feeder(),
                      maxSheets);
    errors->setBeforeLine([&progress] { progress.breakLine(); });
    auto events = std::make_shared<ScanEvents>(reader, *output, sheetsToReject, progress, *wire);
    const int32_t cookie = reader.Advise(events);

    bool result = false;
    int32_t sheetCount = 0;
    {
        InterruptWatcher watcher([&reader] { reader.CancelScan(true); });
        progress.start();
        result = reader.ReadBatch(initializePrinter, maxSheets, sheetCount);
    }
    progress.done(events->read);
    errors->setBeforeLine(nullptr);
    reader.Unadvise(cookie);
    wire.reset();

    output->summary({result, sheetCount, events->read, reader.CancelScan()});
    if (!events->failure.empty()) {
        std::cerr << "zebreader: " << events->failure << "\n";
        return ExitFailed;
    }
    return result && errors->count() == 0 ? ExitOk : ExitFailed;
}

} // namespace

void addScanCommand(CLI::App& app, int& status)
{
    auto options = std::make_shared<ScanOptions>();
    auto* scan = app.add_subcommand("scan", "Read a batch of sheets and show each one");
    options->reader.addTo(*scan, true);
    scan->add_option("--print", options->print, "Text to imprint on every sheet");
    scan->add_option("--print-distance", options->printDistance, "Imprinter position")
        ->check(CLI::Range(-32768, 32767));
    scan->add_option("--sheets", options->sheets, "Most sheets to read (-1: until stopped, 0: none)")
        ->each([options](const std::string&) { options->sheetsGiven = true; });
    scan->add_option("--reject", options->reject, "Sheets of this batch to reject, e.g. 2,5");
    scan->add_option("--format", options->format, "json (default when not on a terminal), grid, csv or svg")
        ->check(CLI::IsMember({"json", "grid", "csv", "svg"}));
    scan->add_option("--output", options->output, "File to write (a folder for svg)");
    scan->add_option("--trace", options->trace, "Write every byte sent and received to this file");
    scan->add_flag("--simulate", options->simulate, "Read from the built-in simulator of the model's family");
    scan->add_option("--sheets-file", options->sheetsFile, "Sheets for the simulator (default: the samples)");
    scan->callback([options, &status] { status = runScan(*options); });
}

} // namespace zebreader::cli
