// csv: one row per row of a sheet side: sheet,side,row,rejected,barcodes, then the values of
// its columns. The barcodes of a sheet are joined by ';'.
#include "SheetOutput.h"

#include <string>

namespace zebreader::cli {

namespace {

class CsvOutput : public SheetOutput {
public:
    explicit CsvOutput(std::ostream& out) : out_(out) {}

    void sheet(const SheetRecord& s) override
    {
        std::string barcodes;
        if (!s.barcodes.empty() && s.barcodes.dims() == 1)
            for (int32_t i = s.barcodes.LBound(); i <= s.barcodes.UBound(); ++i)
                barcodes += (i == s.barcodes.LBound() ? "" : ";") + s.barcodes(i);
        const std::string fixed = std::string(s.rejected ? "1" : "0") + ',' + quoted(barcodes);
        side(s.number, 1, s.side1, fixed);
        side(s.number, 2, s.side2, fixed);
        out_.flush();
    }
    void summary(const BatchSummary&) override { out_.flush(); }

private:
    // A field as csv: quoted when it holds a separator, a quote or a line break.
    static std::string quoted(const std::string& text)
    {
        if (text.find_first_of(",\"\r\n") == std::string::npos)
            return text;
        std::string out = "\"";
        for (char c : text)
            out += c == '"' ? std::string("\"\"") : std::string(1, c);
        return out + '"';
    }

    void side(int sheet, int sideNumber, const zebreader81::SafeArray<int16_t>& a, const std::string& fixed)
    {
        if (a.empty() || a.dims() != 2)
            return;
        if (!headed_) {
            out_ << "sheet,side,row,rejected,barcodes";
            for (int32_t c = a.LBound(2); c <= a.UBound(2); ++c)
                out_ << ",c" << c;
            out_ << "\n";
            headed_ = true;
        }
        for (int32_t r = a.LBound(1); r <= a.UBound(1); ++r) {
            out_ << sheet << ',' << sideNumber << ',' << r << ',' << fixed;
            for (int32_t c = a.LBound(2); c <= a.UBound(2); ++c)
                out_ << ',' << a(r, c);
            out_ << '\n';
        }
    }

    std::ostream& out_;
    bool headed_ = false;
};

} // namespace

std::unique_ptr<SheetOutput> makeCsvOutput(std::ostream& out) { return std::make_unique<CsvOutput>(out); }

} // namespace zebreader::cli
