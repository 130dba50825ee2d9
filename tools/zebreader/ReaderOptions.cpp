#include "ReaderOptions.h"

#include "CommandLine.h"
#include "ModelName.h"
#include "SettingsFiles.h"

#include "registry/SettingsStore.h"
#include "registry/SettingsValues.h"
#include "zebreader81/clsZEBReaderProfile.h"
#include "zebreader81/clsZEBReaderProfiles.h"

#include <charconv>
#include <sstream>

namespace zebreader::cli {

using namespace zebreader81;
namespace registry = zebreader81::registry;

namespace {

int16_t toInt16(const std::string& text, const std::string& what)
{
    int v = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
    if (ec != std::errc{} || end != text.data() + text.size() || v < -32768 || v > 32767)
        throw UsageError(what + ": \"" + text + "\" is not a whole number");
    return static_cast<int16_t>(v);
}

std::vector<std::string> split(const std::string& text, char sep)
{
    std::vector<std::string> parts;
    std::stringstream in(text);
    std::string part;
    while (std::getline(in, part, sep))
        parts.push_back(part);
    return parts;
}

std::shared_ptr<clsZEBReaderProfile> profileOf(const clsZEBReader& reader)
{
    auto profile = reader.Profiles()->Item(std::to_string(static_cast<int>(reader.ReaderType())));
    if (!profile)
        throw UsageError("model " + std::to_string(static_cast<int>(reader.ReaderType())) +
                         " has no profile");
    return profile;
}

// "R:C[,R:C...]": rows and columns of each sheet of the form, element 1 first.
void setGeometry(clsZEBReader& reader, const std::string& text, int side)
{
    const auto sheets = split(text, ',');
    auto rows = SafeArray<int16_t>::vector(0, static_cast<int32_t>(sheets.size()));
    auto cols = rows;
    for (std::size_t i = 0; i < sheets.size(); ++i) {
        const auto rc = split(sheets[i], ':');
        if (rc.size() != 2)
            throw UsageError("--side" + std::to_string(side) + ": \"" + sheets[i] + "\" is not ROWS:COLS");
        const std::string flag = "--side" + std::to_string(side);
        rows(static_cast<int32_t>(i + 1)) = toInt16(rc[0], flag);
        cols(static_cast<int32_t>(i + 1)) = toInt16(rc[1], flag);
        const int maxCols = profileOf(reader)->MaxCols();
        if (rows(static_cast<int32_t>(i + 1)) < 1 || cols(static_cast<int32_t>(i + 1)) < 1 ||
            (maxCols > 0 && cols(static_cast<int32_t>(i + 1)) > maxCols))
            throw UsageError(flag + ": \"" + sheets[i] +
                             "\" is not a form size: rows from 1, columns from 1 to " +
                             std::to_string(maxCols) + " on the " + reader.ReaderName());
    }
    if (side == 1) {
        reader.Side1Rows(rows);
        reader.Side1Cols(cols);
    } else {
        reader.Side2Rows(rows);
        reader.Side2Cols(cols);
    }
}

void addWindow(clsZEBReader& reader, const std::string& text)
{
    const auto f = split(text, ',');
    if (f.size() != 8)
        throw UsageError(
            "--window: \"" + text +
            "\" needs 8 numbers: Page,StartRow,NumRows,RowGap,StartCol,NumCols,ColGap,Orientation");
    auto w = std::make_shared<clsZEBReaderWindow>();
    w->Page(toInt16(f[0], "--window"));
    w->StartRow(toInt16(f[1], "--window"));
    w->NumRows(toInt16(f[2], "--window"));
    w->RowGap(toInt16(f[3], "--window"));
    w->StartCol(toInt16(f[4], "--window"));
    w->NumCols(toInt16(f[5], "--window"));
    w->ColGap(toInt16(f[6], "--window"));
    w->Orientation(toInt16(f[7], "--window"));
    reader.Windows()->Add(w);
}

} // namespace

void ReaderOptions::addTo(CLI::App& c, bool withSettingsKey)
{
    c.add_option("--model", model, std::string("Model: ") + modelSyntax + " (default 2, or the saved one)");
    if (withSettingsKey) {
        c.add_option("--settings", settings,
                     "Load the settings saved under this sub-key instead of the model's defaults");
        c.add_option("--root", root, "Settings root: hkcu or hklm")
            ->check(CLI::IsMember({"hkcu", "hklm"}, CLI::ignore_case));
    }
    c.add_option("--port", port, "COM port number (1-16)")->check(CLI::Range(1, 16));
    c.add_option("--device", device,
                 "Serial device or network port (socket://HOST:PORT, rfc2217://HOST:PORT) to use as the "
                 "port for this run");
    c.add_option("--baud", baud, "Line speed")->check(CLI::Range(1, 4000000));
    c.add_option("--parity", parity, "Parity letter N, E, O, M or S")
        ->check(CLI::IsMember({"N", "E", "O", "M", "S"}, CLI::ignore_case));
    c.add_option("--data-bits", dataBits, "Data bits (4-8)")->check(CLI::Range(4, 8));
    c.add_option("--stop-bits", stopBits, "Stop bits: 1, 1.5 or 2")->check(CLI::IsMember({1.0f, 1.5f, 2.0f}));
    c.add_option("--flow", flow, "Flow control: 0 none, 1 XON/XOFF, 2 RTS/CTS, 3 both")
        ->check(CLI::Range(0, 3));
    c.add_option("--timeout", timeout, "Reply time-out in seconds (1-600)")->check(CLI::Range(1, 600));
    c.add_option("--sleep", sleep, "Pause of the paced waits in milliseconds (0-10000)")
        ->check(CLI::Range(0, 10000));
    c.add_option("--cutoff", cutoff, "Mark cut-off level")->check(CLI::Range(-32768, 32767));
    c.add_option("--discrimination", discrimination, "Mark discrimination level")
        ->check(CLI::Range(-32768, 32767));
    c.add_option("--threshold", threshold,
                 "Recognition threshold (the model's range, see `zebreader profile`)");
    c.add_flag_callback(
        "--duplex", [this] { duplex = true; }, "The scanner reads both sides");
    c.add_flag_callback(
        "--no-duplex", [this] { duplex = false; }, "Read side 1 only");
    c.add_flag("--duplex-form", duplexForm, "The form has a second side");
    c.add_flag_callback(
        "--feeder", [this] { feeder = true; }, "Sheets come from the feeder");
    c.add_flag_callback(
        "--no-feeder", [this] { feeder = false; }, "Sheets are fed by hand");
    c.add_flag_callback(
        "--rejecter", [this] { rejecter = true; }, "The scanner has a reject stacker");
    c.add_flag_callback(
        "--no-rejecter", [this] { rejecter = false; }, "No reject stacker");
    c.add_flag("--barcode", barcode, "Read barcodes");
    c.add_flag("--grade", grade, "Grading by the scanner");
    c.add_flag("--windowing", windowing, "Read the --window areas only");
    c.add_option("--mode", mode, "Recognition mode: page or window")
        ->check(CLI::IsMember({"page", "window"}, CLI::ignore_case));
    c.add_option("--side1", side1, "Side 1 geometry ROWS:COLS per sheet of the form, e.g. 53:40");
    c.add_option("--side2", side2, "Side 2 geometry ROWS:COLS per sheet of the form");
    c.add_option("--window", windows, "Read area P,SR,NR,RG,SC,NC,CG,O (repeatable)");
}

bool ReaderOptions::apply(clsZEBReader& reader) const
{
    registry::BadFileReportScope oneReport;
    std::optional<zebReaderType> type;
    if (!model.empty())
        type = parseModel(model);
    if (!settings.empty()) {
        if (nothingStored(parseRoot(root), settings))
            throw UsageError("no settings are stored under " + settings + " (" + root +
                             "): save some with `zebreader settings save --settings '" + settings + "' ...`");
        if (!reader.LoadSettings(parseRoot(root), settings))
            return false;
        if (type)
            reader.ReaderType(*type);
    } else if (!reader.LoadDefaults(type.value_or(zebReaderTypeNCSOpScan2))) {
        return false;
    }

    if (port)
        reader.Port(static_cast<int16_t>(*port));
    if (!device.empty())
        mapPortForRun(reader.Port(), device);
    if (baud)
        reader.BaudRate(static_cast<zebReaderBaudRate>(*baud));
    if (parity) {
        std::string p = *parity;
        p[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(p[0])));
        reader.Parity(p);
    }
    if (dataBits)
        reader.DataBits(static_cast<zebReaderDataBits>(*dataBits));
    if (stopBits)
        reader.StopBits(*stopBits);
    if (flow)
        reader.FlowControl(static_cast<zebReaderFlowControl>(*flow));
    if (timeout)
        reader.TimeOut(*timeout);
    if (sleep)
        reader.SleepTime(*sleep);
    if (cutoff)
        reader.MarkCutOff(static_cast<int16_t>(*cutoff));
    if (discrimination)
        reader.MarkDiscrimination(static_cast<int16_t>(*discrimination));
    if (threshold) {
        const auto profile = profileOf(reader);
        if (*threshold < profile->RecognitionThresholdMinimum() ||
            *threshold > profile->RecognitionThresholdMaximum())
            throw UsageError("--threshold " + std::to_string(*threshold) + " is outside the range of the " +
                             reader.ReaderName() + ": " +
                             std::to_string(profile->RecognitionThresholdMinimum()) + " to " +
                             std::to_string(profile->RecognitionThresholdMaximum()));
        reader.RecognitionThreshold(static_cast<int16_t>(*threshold));
    }
    if (duplex)
        reader.Duplex(*duplex);
    if (duplexForm)
        reader.DuplexForm(true);
    if (feeder)
        reader.Feeder(*feeder);
    if (rejecter)
        reader.Rejecter(*rejecter);
    if (barcode)
        reader.Barcode(true);
    if (grade)
        reader.ReaderGrade(true);
    if (windowing)
        reader.Windowing(true);
    if (mode)
        reader.RecognitionMode(mode->front() == 'w' || mode->front() == 'W' ? zebRecognitionTypeWindow
                                                                            : zebRecognitionTypePage);
    const auto stored = [&](const char* name) {
        return settings.empty() ? std::string() : registry::LoadValue(parseRoot(root), settings, name, "");
    };
    if (const auto text = side1.empty() ? stored("FormSide1") : side1; !text.empty())
        setGeometry(reader, text, 1);
    if (const auto text = side2.empty() ? stored("FormSide2") : side2; !text.empty())
        setGeometry(reader, text, 2);
    for (const auto& w : windows)
        addWindow(reader, w);
    return true;
}

std::vector<std::pair<std::string, std::string>> ReaderOptions::formValues() const
{
    std::vector<std::pair<std::string, std::string>> out;
    if (!side1.empty())
        out.emplace_back("FormSide1", side1);
    if (!side2.empty())
        out.emplace_back("FormSide2", side2);
    return out;
}

} // namespace zebreader::cli
