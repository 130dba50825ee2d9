#include "drivers/scantron/ScanMarkCommands.h"

#include "core/basError.h"
#include "profiles/ModelTable.h"
#include "zebreader81/clsZEBReaderWindows.h"

#include <limits>

namespace zebreader81::scanmark {

namespace {

int16_t checked16(int32_t value)
{
    if (value < std::numeric_limits<int16_t>::min() || value > std::numeric_limits<int16_t>::max())
        err::raise(err::Overflow);
    return static_cast<int16_t>(value);
}

// count * gap + start - gap, each step held to 16 bits as the scanner's definition was.
int16_t farEdge(int16_t start, int16_t count, int16_t gap)
{
    const int16_t product = checked16(int32_t{count} * gap);
    const int16_t sum = checked16(int32_t{product} + start);
    return checked16(int32_t{sum} - gap);
}

struct Span {
    int16_t first, last;
    int32_t step;
};

Span span(int16_t start, int16_t count, int16_t gap)
{
    const int16_t edge = farEdge(start, count, gap);
    if (gap >= 1)
        return {start, edge, gap};
    return {edge, start, -int32_t{gap}};
}

std::string num(int32_t value) { return std::to_string(value); }

} // namespace

std::string frame(const std::string& text) { return std::string(1, ESC) + text + CR; }

bool isModel8000(int32_t readerType) { return hasCapability(readerType, Dialect8000); }

int16_t charBase(int32_t readerType) { return isModel8000(readerType) ? 0 : 48; }

std::string thresholdCommand(int16_t threshold) { return frame("THR= " + num(threshold)); }

std::string formStartCommand(int16_t side1Rows, int16_t side2Rows, int16_t side1Cols)
{
    return frame("FRM=FS " + num(side1Rows) + " " + num(side2Rows) + " " + num(side1Cols) + " N N N");
}

std::string pageFieldCommand(bool model8000, int16_t side, int16_t rows, int16_t cols)
{
    const std::string area = num(rows) + " " + num(cols) + " L " + num(rows) + " " + num(cols);
    if (!model8000)
        return frame("FRM=DK " + num(side) + " 1 1 " + area);
    const std::string ones(cols > 0 ? static_cast<std::size_t>(cols) : 0, '1');
    return frame("FRM=MC Y N 1 " + num(side) + " 1 1 " + area + " " + ones);
}

std::string endOfFormCommand() { return frame("FRM=LS"); }

AreaGeometry areaGeometry(const clsZEBReaderWindow& window)
{
    const Span rows = span(window.StartRow(), window.NumRows(), window.RowGap());
    const Span cols = span(window.StartCol(), window.NumCols(), window.ColGap());
    return {rows.first, rows.last, cols.first, cols.last, rows.step, cols.step};
}

std::string windowFieldCommand(int16_t side, const clsZEBReaderWindow& window)
{
    const AreaGeometry g = areaGeometry(window);
    const bool byRow = window.Orientation() == 1;
    const int16_t countA = byRow ? window.NumRows() : window.NumCols();
    const int16_t countB = byRow ? window.NumCols() : window.NumRows();
    return frame("FRM=DK " + num(side) + " " + num(g.firstRow) + " " + num(g.firstCol) + " " +
                 num(g.lastRow) + " " + num(g.lastCol) + (byRow ? " L " : " C ") + num(countA) + " " +
                 num(countB));
}

std::vector<FieldEntry> fieldPlan(const clsZEBReaderWindows& windows, bool duplexForm)
{
    std::vector<FieldEntry> plan;
    const int32_t count = windows.Count();
    for (int32_t i = 1; i <= count; ++i) {
        auto w = windows.Item(i);
        if (!w || w->Page() > 1)
            break;
        plan.push_back({1, i, w});
    }
    if (!duplexForm)
        return plan;
    for (int32_t i = 1; i <= count; ++i) {
        auto w = windows.Item(i);
        if (!w || w->Page() > 2)
            break;
        if (w->Page() == 2)
            plan.push_back({2, i, w});
    }
    return plan;
}

std::string resetCommand() { return frame("SRST"); }
std::string statusCommand() { return frame("QSTS"); }
std::string readCommand(bool withReject) { return frame(withReject ? "READ 5 Y E" : "READ 5 Y"); }
std::string rejectPrintCommand() { return frame("PRN$ 1 N "); }
std::string ejectCommand(bool reject) { return frame(reject ? "EJCT C" : "EJCT A "); }

std::string imprintText(int16_t distance, const std::string& text)
{
    std::string out(distance > 0 ? static_cast<std::size_t>(distance) : 0, ' ');
    out += text;
    if (out.size() > MaxImprintLength)
        out.resize(MaxImprintLength);
    return out;
}

std::string printCommand(const std::string& imprint) { return frame("PRN$ 1 Y " + imprint); }

} // namespace zebreader81::scanmark
