#include "sim/scantron/ScanMarkSimulator.h"

#include "profiles/ModelTable.h"

#include <algorithm>
#include <optional>

namespace zebreader81::sim {

namespace {

constexpr char esc = 27;
constexpr char cr = 13;
const std::string accepted(1, cr);
// Anything but CR first is a refusal; the CR after it ends the reply as the scanner does.
const std::string refused = std::string("?") + cr;

std::vector<std::string> split(const std::string& text)
{
    std::vector<std::string> tokens(1);
    for (char c : text) {
        if (c == ' ')
            tokens.emplace_back();
        else
            tokens.back() += c;
    }
    return tokens;
}

// Plain decimal only: no padding, no plus sign, no leading zeros.
std::optional<int> number(const std::string& token)
{
    if (token.empty() || token.size() > 6)
        return std::nullopt;
    std::size_t used = 0;
    int value = 0;
    try {
        value = std::stoi(token, &used);
    } catch (...) {
        return std::nullopt;
    }
    if (used != token.size() || std::to_string(value) != token)
        return std::nullopt;
    return value;
}

bool startsWith(const std::string& text, const std::string& prefix) { return text.rfind(prefix, 0) == 0; }

int strength(const std::vector<std::vector<int>>& side, int row, int col)
{
    if (row < 1 || col < 1 || static_cast<std::size_t>(row) > side.size())
        return 0;
    const auto& cells = side[static_cast<std::size_t>(row - 1)];
    if (static_cast<std::size_t>(col) > cells.size())
        return 0;
    return cells[static_cast<std::size_t>(col - 1)];
}

// Width of a row of page-layout data.
constexpr int pageWidth = 48;

} // namespace

ScanMarkSimulator::ScanMarkSimulator(int32_t readerType, std::vector<Sheet> sheets)
    : model8000_(hasCapability(readerType, Dialect8000)), sheets_(sheets.begin(), sheets.end())
{
    start();
}

ScanMarkSimulator::~ScanMarkSimulator() { stop(); }

void ScanMarkSimulator::addSheet(Sheet sheet)
{
    std::lock_guard lock(stateMutex);
    sheets_.push_back(std::move(sheet));
    if (readWaiting_) {
        readWaiting_ = false;
        sendMarks();
    }
}

void ScanMarkSimulator::rejectCommand(const std::string& prefix)
{
    std::lock_guard lock(stateMutex);
    rejectPrefixes_.push_back(prefix);
}

void ScanMarkSimulator::statusFault(StatusFault fault, int times)
{
    std::lock_guard lock(stateMutex);
    for (int i = 0; i < times; ++i)
        faults_.push_back(fault);
}

void ScanMarkSimulator::statusTrailer(std::string bytes)
{
    std::lock_guard lock(stateMutex);
    statusTrailer_ = std::move(bytes);
}

std::vector<std::string> ScanMarkSimulator::commands() const
{
    std::lock_guard lock(stateMutex);
    return commands_;
}

std::vector<ScanMarkSimulator::FormSheet> ScanMarkSimulator::form() const
{
    std::lock_guard lock(stateMutex);
    return form_;
}

int ScanMarkSimulator::threshold() const
{
    std::lock_guard lock(stateMutex);
    return threshold_;
}

std::vector<std::string> ScanMarkSimulator::printed() const
{
    std::lock_guard lock(stateMutex);
    return printed_;
}

std::string ScanMarkSimulator::ejections() const
{
    std::lock_guard lock(stateMutex);
    return ejections_;
}

int ScanMarkSimulator::sheetsRead() const
{
    std::lock_guard lock(stateMutex);
    return sheetsRead_;
}

std::size_t ScanMarkSimulator::hopper() const
{
    std::lock_guard lock(stateMutex);
    return sheets_.size();
}

std::vector<std::string> ScanMarkSimulator::violations() const
{
    std::lock_guard lock(stateMutex);
    return violations_;
}

void ScanMarkSimulator::violation(const std::string& what) { violations_.push_back(what); }

void ScanMarkSimulator::onReceive(std::string_view bytes)
{
    for (char c : bytes) {
        if (!inFrame_) {
            if (c == esc) {
                inFrame_ = true;
                pending_.clear();
            } else {
                violation("byte " + std::to_string(static_cast<unsigned char>(c)) + " outside a command");
            }
            continue;
        }
        if (c == cr) {
            inFrame_ = false;
            handle(pending_);
        } else if (c == esc) {
            violation("unterminated command \"" + pending_ + "\"");
            pending_.clear();
        } else {
            pending_ += c;
        }
    }
}

void ScanMarkSimulator::handle(const std::string& text)
{
    commands_.push_back(text);
    for (auto it = rejectPrefixes_.begin(); it != rejectPrefixes_.end(); ++it) {
        if (startsWith(text, *it)) {
            rejectPrefixes_.erase(it);
            send(refused);
            return;
        }
    }
    if (text == "QSTS") {
        sendStatus();
        return;
    }
    if (text == "READ 5 Y" || text == "READ 5 Y E") {
        if (form_.empty() || formOpen_) {
            violation("READ without a complete form");
            send(refused);
            return;
        }
        holding_ = false;
        if (sheets_.empty())
            readWaiting_ = true; // answered when a sheet is fed
        else
            sendMarks();
        holding_ = text.back() == 'E';
        return;
    }
    send(accept(text) ? accepted : refused);
}

bool ScanMarkSimulator::accept(const std::string& text)
{
    if (text == "SRST") {
        form_.clear();
        open_ = {};
        formOpen_ = false;
        readWaiting_ = false;
        holding_ = false;
        return true;
    }
    if (startsWith(text, "THR= ")) {
        const auto value = number(text.substr(5));
        if (!model8000_ || !value) {
            violation("threshold \"" + text + "\"");
            return false;
        }
        threshold_ = *value;
        return true;
    }
    if (startsWith(text, "FRM="))
        return formCommand(split(text));
    if (startsWith(text, "PRN$ 1 Y ")) {
        const std::string imprint = text.substr(9);
        if (imprint.size() > 125) {
            violation("imprint of " + std::to_string(imprint.size()) + " characters");
            return false;
        }
        printed_.push_back(imprint);
        return true;
    }
    if (text == "PRN$ 1 N ")
        return true;
    if (text == "EJCT A " || text == "EJCT C") {
        ejections_ += text[5];
        holding_ = false;
        return true;
    }
    violation("unknown command \"" + text + "\"");
    return false;
}

bool ScanMarkSimulator::formCommand(const std::vector<std::string>& t)
{
    const std::string& verb = t[0];
    if (verb == "FRM=LS" && t.size() == 1) {
        if (!formOpen_) {
            violation("end of form without a form start");
            return false;
        }
        form_.push_back(open_);
        formOpen_ = false;
        return true;
    }
    if (verb == "FRM=FS" && t.size() == 7) {
        const auto r1 = number(t[1]), r2 = number(t[2]), c1 = number(t[3]);
        if (formOpen_ || !r1 || !r2 || !c1 || *r1 < 0 || *r2 < 0 || *c1 < 0 || t[4] != "N" || t[5] != "N" ||
            t[6] != "N") {
            violation("form start");
            return false;
        }
        open_ = {*r1, *r2, *c1, {}};
        formOpen_ = true;
        return true;
    }
    if (verb == "FRM=DK" && t.size() == 9)
        return fieldRecord(t);
    if (verb == "FRM=MC" && t.size() == 13)
        return markColumnsRecord(t);
    violation("form command");
    return false;
}

bool ScanMarkSimulator::fieldRecord(const std::vector<std::string>& t)
{
    std::vector<int> v;
    for (std::size_t i : {1u, 2u, 3u, 4u, 5u, 7u, 8u}) {
        const auto n = number(t[i]);
        if (!n)
            return false;
        v.push_back(*n);
    }
    Field f{v[0], v[1], v[2], v[3], v[4], t[6] == "L" ? 'L' : 'C', v[5], v[6], false};
    if (!formOpen_ || (t[6] != "L" && t[6] != "C"))
        return false;
    const int sideRows = f.side == 1 ? open_.side1Rows : f.side == 2 ? open_.side2Rows : 0;
    const int sideCols = f.side == 1 ? open_.side1Cols : pageWidth;
    const int rows = f.orient == 'L' ? f.countA : f.countB;
    const int cols = f.orient == 'L' ? f.countB : f.countA;
    // The area must lie on the side, with its cells evenly spaced between the corners.
    if (f.firstRow < 1 || f.lastRow > sideRows || f.firstRow > f.lastRow || f.firstCol < 1 ||
        f.lastCol > sideCols || f.firstCol > f.lastCol || rows < 1 || cols < 1 ||
        (rows > 1 && (f.lastRow - f.firstRow) % (rows - 1) != 0) ||
        (cols > 1 && (f.lastCol - f.firstCol) % (cols - 1) != 0) || (rows == 1 && f.firstRow != f.lastRow) ||
        (cols == 1 && f.firstCol != f.lastCol))
        return false;
    open_.fields.push_back(f);
    return true;
}

bool ScanMarkSimulator::markColumnsRecord(const std::vector<std::string>& t)
{
    const auto side = number(t[4]), r = number(t[7]), c = number(t[8]), r2 = number(t[10]),
               c2 = number(t[11]);
    if (!model8000_ || !formOpen_ || !side || !r || !c || !r2 || !c2 || t[1] != "Y" || t[2] != "N" ||
        t[3] != "1" || t[5] != "1" || t[6] != "1" || t[9] != "L" || *r != *r2 || *c != *c2) {
        violation("mark column record");
        return false;
    }
    const int sideRows = *side == 1 ? open_.side1Rows : *side == 2 ? open_.side2Rows : 0;
    if (*r != sideRows || *c < 1 || t[12] != std::string(static_cast<std::size_t>(*c), '1') ||
        (*side == 1 && *c != open_.side1Cols))
        return false;
    open_.fields.push_back({*side, 1, 1, *r, *c, 'L', *r, *c, true});
    return true;
}

void ScanMarkSimulator::sendStatus()
{
    char state = '0';
    char third = '0';
    int code = 0x20 | (sheets_.empty() ? 0 : 1);
    if (!faults_.empty()) {
        const StatusFault fault = faults_.front();
        faults_.pop_front();
        switch (fault) {
        case StatusFault::Jam: code |= 0x40; break;
        case StatusFault::DoubleFeed: code |= 0x10; break;
        case StatusFault::JamAndDoubleFeed: code |= 0x50; break;
        case StatusFault::TimingLine: state = '1', third = ' '; break;
        case StatusFault::CommandError: state = '2'; break;
        }
    }
    std::string reply = "S";
    reply += state;
    reply += third;
    reply += "00000";
    reply += static_cast<char>(code);
    reply += "000";
    send(reply + statusTrailer_);
}

void ScanMarkSimulator::sendMarks()
{
    const Sheet sheet = std::move(sheets_.front());
    sheets_.pop_front();
    const FormSheet& layout = form_[static_cast<std::size_t>(sheetsRead_) % form_.size()];
    ++sheetsRead_;
    send(markData(sheet, layout) + cr);
}

char ScanMarkSimulator::encode(int s) const
{
    s = std::clamp(s, 0, 15);
    if (!model8000_)
        return static_cast<char>('0' + s);
    // A raw 13 would read as the end of the data.
    return static_cast<char>(s == 13 ? 12 : s);
}

std::string ScanMarkSimulator::markData(const Sheet& sheet, const FormSheet& layout) const
{
    std::string out;
    for (int side = 1; side <= (layout.side2Rows > 0 ? 2 : 1); ++side) {
        const auto& marks = side == 1 ? sheet.side1 : sheet.side2;
        const int sideRows = side == 1 ? layout.side1Rows : layout.side2Rows;
        std::vector<Field> fields;
        for (const auto& f : layout.fields)
            if (f.side == side)
                fields.push_back(f);
        // A lone record over the whole side is read as a page: rows of 48 characters.
        const bool page =
            fields.size() == 1 && (fields[0].markColumns ||
                                   (fields[0].firstRow == 1 && fields[0].firstCol == 1 &&
                                    fields[0].lastRow == sideRows && fields[0].orient == 'L' &&
                                    fields[0].countA == sideRows && fields[0].countB == fields[0].lastCol));
        if (page) {
            for (int r = 1; r <= sideRows; ++r)
                for (int c = 1; c <= pageWidth; ++c)
                    out += encode(c <= fields[0].lastCol ? strength(marks, r, c) : 0);
            continue;
        }
        for (const auto& f : fields) {
            const int rows = f.orient == 'L' ? f.countA : f.countB;
            const int cols = f.orient == 'L' ? f.countB : f.countA;
            const int rowStep = rows > 1 ? (f.lastRow - f.firstRow) / (rows - 1) : 0;
            const int colStep = cols > 1 ? (f.lastCol - f.firstCol) / (cols - 1) : 0;
            const int outer = f.orient == 'L' ? rows : cols;
            const int inner = f.orient == 'L' ? cols : rows;
            for (int o = 0; o < outer; ++o)
                for (int i = 0; i < inner; ++i) {
                    const int r = f.firstRow + (f.orient == 'L' ? o : i) * rowStep;
                    const int c = f.firstCol + (f.orient == 'L' ? i : o) * colStep;
                    out += encode(strength(marks, r, c));
                }
        }
    }
    return out;
}

} // namespace zebreader81::sim
