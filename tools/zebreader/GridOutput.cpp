// grid: each side as a block of shaded cells a person can read at a glance.
#include "SheetOutput.h"

#include <algorithm>
#include <clocale>
#include <iomanip>
#include <langinfo.h>
#include <string>

namespace zebreader::cli {

namespace {

// Shades from none to full: middle dot and block characters, or ASCII.
const char* const unicodeShades[] = {"\u00B7", "\u2591", "\u2592", "\u2593", "\u2588"};
const char* const asciiShades[] = {".", ":", "+", "#", "@"};

// Strength 0..15 as a shade; values outside that range (thresholded drivers) count as full.
int shadeIndex(int v) { return v <= 0 ? 0 : v <= 3 ? 1 : v <= 7 ? 2 : v <= 11 ? 3 : 4; }

bool localeIsUtf8()
{
    const char* previous = std::setlocale(LC_CTYPE, nullptr);
    const std::string kept = previous ? previous : "C";
    std::setlocale(LC_CTYPE, "");
    const std::string codeset = nl_langinfo(CODESET);
    std::setlocale(LC_CTYPE, kept.c_str());
    return codeset == "UTF-8" || codeset == "utf8";
}

class GridOutput : public SheetOutput {
public:
    explicit GridOutput(std::ostream& out) : out_(out), shades_(localeIsUtf8() ? unicodeShades : asciiShades)
    {
    }

    void sheet(const SheetRecord& s) override
    {
        out_ << "Sheet " << s.number << (s.rejected ? "  (rejected)" : "") << "  timing marks "
             << s.timingMarks1 << "/" << s.timingMarks2 << "  barcodes:";
        if (!s.barcodes.empty() && s.barcodes.dims() == 1)
            for (int32_t i = s.barcodes.LBound(); i <= s.barcodes.UBound(); ++i)
                out_ << " [" << s.barcodes(i) << "]";
        out_ << "\n";
        side("Side 1", s.side1);
        side("Side 2", s.side2);
        out_ << std::flush;
    }

    void summary(const BatchSummary& b) override
    {
        // The batch counts every read it starts, also one that failed or was stopped.
        out_ << (b.result ? "Batch done" : "Batch failed") << ": " << b.read << " sheet(s) read of "
             << b.sheets << " read(s) started"
             << (b.sheets > b.read ? " (the others failed or were stopped)" : "")
             << (b.cancelScan ? ", stopped" : "") << "\n"
             << std::flush;
    }

private:
    void side(const char* name, const zebreader81::SafeArray<int16_t>& a)
    {
        if (a.empty() || a.dims() != 2) {
            out_ << "  " << name << ": none\n";
            return;
        }
        const int32_t r0 = a.LBound(1), c0 = a.LBound(2);
        int32_t lastRow = r0 - 1, lastCol = c0 - 1;
        for (int32_t r = r0; r <= a.UBound(1); ++r)
            for (int32_t c = c0; c <= a.UBound(2); ++c)
                if (a(r, c) != 0) {
                    lastRow = std::max(lastRow, r);
                    lastCol = std::max(lastCol, c);
                }
        out_ << "  " << name << ": rows " << r0 << "-" << a.UBound(1) << ", columns " << c0 << "-"
             << a.UBound(2);
        if (lastRow < r0) {
            out_ << ", no marks\n";
            return;
        }
        if (lastRow < a.UBound(1) || lastCol < a.UBound(2))
            out_ << " (shown up to the last mark)";
        out_ << "\n";
        // Column ruler: a digit every tenth column.
        out_ << "      ";
        for (int32_t c = c0; c <= lastCol; ++c)
            out_ << (c % 10 == 0 ? static_cast<char>('0' + (c / 10) % 10) : ' ');
        out_ << "\n";
        for (int32_t r = r0; r <= lastRow; ++r) {
            out_ << "  " << std::setw(3) << r << " ";
            for (int32_t c = c0; c <= lastCol; ++c)
                out_ << shades_[shadeIndex(a(r, c))];
            out_ << "\n";
        }
    }

    std::ostream& out_;
    const char* const* shades_;
};

} // namespace

std::unique_ptr<SheetOutput> makeGridOutput(std::ostream& out) { return std::make_unique<GridOutput>(out); }

} // namespace zebreader::cli
