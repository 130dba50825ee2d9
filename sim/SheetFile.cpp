#include "sim/SheetFile.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <sstream>

namespace zebreader81::sim {

SheetFileError::SheetFileError(const std::string& source, int line, const std::string& what)
    : std::runtime_error(source + ":" + std::to_string(line) + ": " + what), line_(line)
{
}

namespace {

std::string_view trim(std::string_view s)
{
    const auto first = s.find_first_not_of(" \t\r");
    if (first == std::string_view::npos)
        return {};
    const auto last = s.find_last_not_of(" \t\r");
    return s.substr(first, last - first + 1);
}

int markValue(char c)
{
    if (c == '.')
        return 0;
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c == 'X' || c == 'x')
        return 15;
    return -1;
}

class Parser {
public:
    explicit Parser(std::string source) : source_(std::move(source)) {}

    void line(std::string_view raw, int lineNumber)
    {
        number_ = lineNumber;
        const auto text = trim(raw);
        if (text.empty() || text.front() == '#')
            return;
        if (text.front() == '|') {
            row(text.substr(1));
            return;
        }
        const auto space = text.find_first_of(" \t");
        const auto word = text.substr(0, space);
        const auto rest = space == std::string_view::npos ? std::string_view{} : trim(text.substr(space));
        if (word == "sheet") {
            sheets_.emplace_back();
            side_ = 1;
        } else if (word == "barcode") {
            current().barcodes.emplace_back(rest);
        } else if (word == "side") {
            if (rest != "1" && rest != "2")
                fail("side must be 1 or 2, not \"" + std::string(rest) + "\"");
            current();
            side_ = rest == "1" ? 1 : 2;
        } else if (word == "blank") {
            const auto count = rowCount(uncomment(rest));
            auto& rows = sideRows();
            rows.insert(rows.end(), static_cast<std::size_t>(count), {});
        } else {
            fail("unknown keyword \"" + std::string(word) +
                 "\" (expected sheet, barcode, side, blank or a |row|)");
        }
    }

    std::vector<Sheet> finish()
    {
        for (auto& sheet : sheets_) {
            pad(sheet.side1);
            pad(sheet.side2);
        }
        return std::move(sheets_);
    }

private:
    [[noreturn]] void fail(const std::string& what) const { throw SheetFileError(source_, number_, what); }

    Sheet& current()
    {
        if (sheets_.empty())
            fail("a \"sheet\" line must come first");
        return sheets_.back();
    }
    std::vector<std::vector<int>>& sideRows() { return side_ == 1 ? current().side1 : current().side2; }

    static std::string_view uncomment(std::string_view s) { return trim(s.substr(0, s.find('#'))); }

    int rowCount(std::string_view s) const
    {
        int value = 0;
        const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), value);
        if (ec != std::errc{} || end != s.data() + s.size() || value < 0 || value > 10000)
            fail("expected a row count from 0 to 10000, not \"" + std::string(s) + "\"");
        return value;
    }

    void row(std::string_view cells)
    {
        std::vector<int> marks;
        for (char c : cells) {
            if (c == '|')
                break;
            if (c == ' ' || c == '\t' || c == '\r')
                continue;
            const int v = markValue(c);
            if (v < 0)
                fail(std::string("'") + c + "' is not a mark (use . 0-9 A-F or X)");
            marks.push_back(v);
        }
        sideRows().push_back(std::move(marks));
    }

    static void pad(std::vector<std::vector<int>>& rows)
    {
        std::size_t width = 0;
        for (const auto& r : rows)
            width = std::max(width, r.size());
        for (auto& r : rows)
            r.resize(width, 0);
    }

    std::string source_;
    int number_ = 0;
    int side_ = 1;
    std::vector<Sheet> sheets_;
};

} // namespace

std::vector<Sheet> parseSheets(std::string_view text, const std::string& source)
{
    Parser parser(source);
    int number = 0;
    while (!text.empty()) {
        const auto end = text.find('\n');
        parser.line(text.substr(0, end), ++number);
        text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
    }
    return parser.finish();
}

std::vector<Sheet> loadSheetFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw SheetFileError(path, 0, "cannot be opened");
    std::ostringstream text;
    text << in.rdbuf();
    return parseSheets(text.str(), path);
}

SheetSizes measureSheets(const std::vector<Sheet>& sheets)
{
    SheetSizes z;
    for (const auto& s : sheets) {
        z.rows1 = std::max(z.rows1, s.side1.size());
        z.rows2 = std::max(z.rows2, s.side2.size());
        for (const auto& r : s.side1)
            z.cols1 = std::max(z.cols1, r.size());
        for (const auto& r : s.side2)
            z.cols2 = std::max(z.cols2, r.size());
        z.barcodes = z.barcodes || !s.barcodes.empty();
    }
    return z;
}

std::string readerFlags(const SheetSizes& z)
{
    std::string flags;
    if (z.rows1 > 0)
        flags += " --side1 " + std::to_string(z.rows1) + ":" + std::to_string(z.cols1);
    if (z.rows2 > 0)
        flags += " --duplex --duplex-form --side2 " + std::to_string(z.rows2) + ":" + std::to_string(z.cols2);
    if (z.barcodes)
        flags += " --barcode";
    return flags.empty() ? flags : flags.substr(1);
}

} // namespace zebreader81::sim
