// zebreader scan: load settings, apply the flags, read a batch and show every sheet.
#include "CommandLine.h"
#include "ErrorSink.h"
#include "Interrupt.h"
#include "ReaderOptions.h"
#include "SheetOutput.h"
#include "Simulation.h"
#include "Trace.h"

#include "drivers/ReaderAccess.h"
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

// Progress on a terminal: sheets so far and the rate.
class Progress {
public:
    explicit Progress(bool enabled) : enabled_(enabled) {}
    void sheet(int read)
    {
        if (!enabled_)
            return;
        const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
        std::fprintf(stderr, "\r%d sheet(s) read, %.1f/min", read, s > 0 ? read * 60.0 / s : 0.0);
        std::fflush(stderr);
        shown_ = true;
    }
    void done()
    {
        if (shown_)
            std::fputc('\n', stderr);
    }

private:
    bool enabled_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// The host's handlers: every ReadSheet event becomes one record of the output.
class ScanEvents : public ReaderEvents {
public:
    ScanEvents(clsZEBReader& reader, SheetOutput& output, std::set<int> reject, Progress& progress)
        : reader_(reader), output_(output), reject_(std::move(reject)), progress_(progress)
    {
    }

    void ReadSheet(SafeArray<int16_t>& side1, SafeArray<int16_t>& side2, SafeArray<std::string>& barcodes,
                   bool&) override
    {
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
};

// What a simulated run needs unless the flags say otherwise: the form's size, and duplex
// and barcodes when the sheets have them.
void fitReaderToSheets(clsZEBReader& reader, const ReaderOptions& o, const std::vector<sim::Sheet>& sheets)
{
    std::size_t rows1 = 0, cols1 = 0, rows2 = 0, cols2 = 0;
    bool barcodes = false;
    for (const auto& s : sheets) {
        rows1 = std::max(rows1, s.side1.size());
        rows2 = std::max(rows2, s.side2.size());
        for (const auto& r : s.side1)
            cols1 = std::max(cols1, r.size());
        for (const auto& r : s.side2)
            cols2 = std::max(cols2, r.size());
        barcodes = barcodes || !s.barcodes.empty();
    }
    auto one = [](std::size_t v) {
        auto a = SafeArray<int16_t>::vector(0, 1);
        a(1) = static_cast<int16_t>(std::min<std::size_t>(v, 32767));
        return a;
    };
    if (o.side1.empty()) {
        reader.Side1Rows(one(rows1));
        reader.Side1Cols(one(cols1));
    }
    if (o.side2.empty()) {
        reader.Side2Rows(one(rows2));
        reader.Side2Cols(one(cols2));
    }
    if (rows2 > 0 && !o.duplex) {
        reader.Duplex(true);
        reader.DuplexForm(true);
    }
    if (barcodes)
        reader.Barcode(true);
}

int runScan(const ScanOptions& o)
{
    // Ctrl-C must reach the watcher only; the simulator's threads inherit this.
    blockInterrupts();

    const std::string format = !o.format.empty()                        ? o.format
                               : stdoutIsTerminal() && o.output.empty() ? "grid"
                                                                        : "json";
    const auto sheetsToReject = parseSheetList(o.reject);
    if (o.simulate && !o.reader.device.empty())
        throw UsageError("--simulate and --device exclude each other");
    if (!o.sheetsFile.empty() && !o.simulate)
        throw UsageError("--sheets-file needs --simulate");

    if (o.simulate && !o.reader.model.empty())
        Simulation::requireSimulator(parseModel(o.reader.model));
    auto output = makeOutput(format, o.output);

    auto errors = ErrorSink::install(format == "json");
    clsZEBReader reader;
    if (!o.reader.apply(reader))
        return ExitFailed;

    std::unique_ptr<Simulation> simulation;
    if (o.simulate) {
        simulation = std::make_unique<Simulation>(reader.ReaderType(), o.sheetsFile, reader.Port());
        fitReaderToSheets(reader, o.reader, simulation->sheets());
    }

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
        trace->attach(reader, "COM" + std::to_string(reader.Port()) +
                                  (simulation ? " (simulated, " + simulation->path() + ")" : ""));
    }

    Progress progress(stderrIsTerminal() && !(stdoutIsTerminal() && o.output.empty()));
    auto events = std::make_shared<ScanEvents>(reader, *output, sheetsToReject, progress);
    const int32_t cookie = reader.Advise(events);

    // A simulated batch ends when the simulator's sheets are used up.
    int32_t maxSheets = o.sheets;
    if (simulation && !o.sheetsGiven)
        maxSheets = static_cast<int32_t>(simulation->sheets().size());

    bool result = false;
    int32_t sheetCount = 0;
    {
        InterruptWatcher watcher([&reader] { reader.CancelScan(true); });
        result = reader.ReadBatch(initializePrinter, maxSheets, sheetCount);
    }
    progress.done();
    reader.Unadvise(cookie);
    if (trace)
        trace->detach();

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
    scan->add_option("--sheets", options->sheets, "Most sheets to read (-1: until stopped)")
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
