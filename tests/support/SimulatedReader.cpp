#include "support/SimulatedReader.h"

#include "channel/frmComm.h"
#include "drivers/ReaderAccess.h"
#include "profiles/ModelTable.h"
#include "sim/Simulators.h"
#include "sim/chatsworth/ChatsworthSimulator.h"
#include "sim/ezdata/EZDataSimulator.h"
#include "sim/ncs/OpScanSimulator.h"
#include "sim/pdi/PdiSimulator.h"
#include "sim/scantron/ScanMarkSimulator.h"

#include <gtest/gtest.h>

namespace zebreader81::test {

using namespace std::chrono_literals;

int strength(int side, int row, int col, int seed) { return (row + 2 * col + 5 * side + seed) % 13; }

sim::Sheet patternSheet(int rows1, int cols1, int rows2, int cols2, int seed,
                        std::vector<std::string> barcodes)
{
    auto side = [seed](int s, int rows, int cols) {
        std::vector<std::vector<int>> out(static_cast<std::size_t>(rows));
        for (int r = 1; r <= rows; ++r)
            for (int c = 1; c <= cols; ++c)
                out[static_cast<std::size_t>(r - 1)].push_back(strength(s, r, c, seed));
        return out;
    };
    return {side(1, rows1, cols1), side(2, rows2, cols2), std::move(barcodes)};
}

sim::Sheet card(const std::vector<std::vector<int>>& markedColumns)
{
    sim::Sheet s;
    for (const auto& columns : markedColumns) {
        s.side1.emplace_back(12, 0);
        for (int c : columns)
            s.side1.back()[static_cast<std::size_t>(c - 1)] = 9;
    }
    return s;
}

SafeArray<int16_t> expectedSide(const sim::Sheet& sheet, int side, int rows, int cols, int mark)
{
    auto out = SafeArray<int16_t>::matrix(1, rows, 1, cols);
    const auto& cells = side == 1 ? sheet.side1 : sheet.side2;
    for (int r = 1; r <= rows && r <= static_cast<int>(cells.size()); ++r) {
        const auto& row = cells[static_cast<std::size_t>(r - 1)];
        for (int c = 1; c <= cols && c <= static_cast<int>(row.size()); ++c) {
            const int v = row[static_cast<std::size_t>(c - 1)];
            out(r, c) = static_cast<int16_t>(mark >= 0 && v > 0 ? mark : v);
        }
    }
    return out;
}

SafeArray<int16_t> perSheet(const std::vector<int16_t>& values)
{
    auto a = SafeArray<int16_t>::vector(0, static_cast<int32_t>(values.size()));
    int32_t i = 1;
    for (int16_t v : values)
        a(i++) = v;
    return a;
}

void form(clsZEBReader& reader, const std::vector<int16_t>& rows1, const std::vector<int16_t>& cols1,
          const std::vector<int16_t>& rows2, const std::vector<int16_t>& cols2)
{
    reader.Side1Rows(perSheet(rows1));
    reader.Side1Cols(perSheet(cols1));
    reader.Side2Rows(perSheet(rows2));
    reader.Side2Cols(perSheet(cols2));
}

std::string framed(const std::vector<std::string>& words)
{
    std::string out;
    for (const auto& w : words)
        out += "<DC2><ESC>" + w + "<DC2>E";
    return out;
}

std::string shown(std::string_view bytes)
{
    static const char* const names[32] = {"NUL", "SOH", "STX", "ETX", "EOT", "ENQ", "ACK", "BEL",
                                          "BS",  "HT",  "LF",  "VT",  "FF",  "CR",  "SO",  "SI",
                                          "DLE", "DC1", "DC2", "DC3", "DC4", "NAK", "SYN", "ETB",
                                          "CAN", "EM",  "SUB", "ESC", "FS",  "GS",  "RS",  "US"};
    std::string out;
    for (unsigned char c : bytes)
        out += c < 32 ? "<" + std::string(names[c]) + ">" : std::string(1, static_cast<char>(c));
    return out;
}

SimulatedReader::SimulatedReader(zebReaderType model, const std::function<void(clsZEBReader&)>& settings)
{
    const Family family = familyOf(model);
    if (family == Family::Chatsworth)
        reader.LoadDefaults(model);
    reader.ReaderType(model);
    reader.Port(port);
    reader.TimeOut(1);
    switch (family) {
    case Family::OpScan: reader.SleepTime(2), reader.Feeder(true); break;
    // A pseudo-terminal keeps 8 data bits and refuses 7 on a second open.
    case Family::ScanMark:
        reader.SleepTime(2), reader.DataBits(zebReaderDataBits8), reader.Feeder(true);
        break;
    case Family::PDI:
        reader.BaudRate(zebReaderBaudRate9600), reader.DataBits(zebReaderDataBits8), reader.SleepTime(1);
        reader.RecognitionThreshold(240);
        break;
    case Family::EZData:
        reader.BaudRate(zebReaderBaudRate9600), reader.Parity("E"), reader.DataBits(zebReaderDataBits7);
        reader.StopBits(1), reader.SleepTime(2), reader.RecognitionThreshold(5);
        break;
    case Family::Chatsworth: reader.RecognitionThreshold(5); break;
    default: break;
    }
    if (settings)
        settings(reader);
    reader.Advise(events);
    Reader::fComm(reader).mscComm.setTrace([this](bool out, const std::string& bytes) {
        if (out)
            written_ += bytes;
    });
    attach();
}

SimulatedReader::~SimulatedReader()
{
    if (checkComplaints) {
        EXPECT_EQ(complaints(), std::vector<std::string>{});
    }
}

std::vector<std::string> SimulatedReader::complaints() const
{
    if (auto* s = dynamic_cast<sim::OpScanSimulator*>(peer_.get()))
        return s->violations();
    if (auto* s = dynamic_cast<sim::ScanMarkSimulator*>(peer_.get()))
        return s->violations();
    if (auto* s = dynamic_cast<sim::PdiSimulator*>(peer_.get()))
        return s->complaints();
    return {};
}

void SimulatedReader::atWait(std::chrono::milliseconds after, std::function<void()> action)
{
    reader.SetYieldCallback([at = clock::now() + after, action = std::move(action)]() mutable {
        if (action && clock::now() >= at)
            std::exchange(action, nullptr)();
    });
}

void cancel(SimulatedReader& s) { s.reader.CancelScan(true); }

sim::Peer& SimulatedReader::attach(std::vector<sim::Sheet> sheets)
{
    peer_ = sim::makeSimulator(reader.ReaderType(), std::move(sheets));
    if (!peer_)
        throw std::logic_error("no simulator for this model");
    sim::mapPort(port, peer_->path());
    written_.clear();
    marked_ = 0;
    // Each family's defaults where its simulator's differ from what the reader is set up for.
    if (auto* ez = dynamic_cast<sim::EZDataSimulator*>(peer_.get())) {
        ez->setFeedDelay(700ms);
        ez->setThresholdCode("70");
    } else if (auto* card = dynamic_cast<sim::ChatsworthSimulator*>(peer_.get())) {
        card->setFeedDelay(300ms); // a reader left as a previous session set it: feed and exit control on
        card->setFlags(0x03);
    } else if (auto* pdi = dynamic_cast<sim::PdiSimulator*>(peer_.get())) {
        pdi->setThreshold(reader.RecognitionThreshold() + 1); // one "+" reads it and finds it right
    }
    return *peer_;
}

void SimulatedReader::load(sim::Sheet sheet)
{
    auto add = [&](auto* simulator) {
        if (simulator)
            simulator->addSheet(std::move(sheet));
        return simulator != nullptr;
    };
    auto* p = peer_.get();
    add(dynamic_cast<sim::OpScanSimulator*>(p)) || add(dynamic_cast<sim::ScanMarkSimulator*>(p)) ||
        add(dynamic_cast<sim::PdiSimulator*>(p)) || add(dynamic_cast<sim::EZDataSimulator*>(p)) ||
        add(dynamic_cast<sim::ChatsworthSimulator*>(p));
}

void SimulatedReader::sync()
{
    EXPECT_TRUE(peer_->waitReceived(written_.size(), 2s));
    if (auto* s = dynamic_cast<sim::OpScanSimulator*>(peer_.get())) {
        EXPECT_TRUE(s->waitProcessed(written_.size(), 2s));
    }
}

std::string SimulatedReader::sent()
{
    sync();
    return shown(std::string_view(written_).substr(marked_));
}

void SimulatedReader::expectReport(int32_t kind, const std::string& title, const std::string& description,
                                   const std::string& location) const
{
    const auto& r = errors.host->only();
    EXPECT_EQ(r.kind, kind);
    EXPECT_EQ(r.title, title);
    EXPECT_EQ(r.description, description);
    EXPECT_EQ(r.location, location);
}

void SimulatedReader::reset()
{
    reader.CancelScan(false);
    errors.host->reports.clear();
}

} // namespace zebreader81::test
