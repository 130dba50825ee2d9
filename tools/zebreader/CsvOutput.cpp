// csv: one row per row of a sheet side: sheet,side,row, then the values of its columns.
#include "SheetOutput.h"

namespace zebreader::cli {

namespace {

class CsvOutput : public SheetOutput {
public:
    explicit CsvOutput(std::ostream& out) : out_(out) {}

    void sheet(const SheetRecord& s) override
    {
        side(s.number, 1, s.side1);
        side(s.number, 2, s.side2);
        out_.flush();
    }
    void summary(const BatchSummary&) override { out_.flush(); }

private:
    void side(int sheet, int sideNumber, const zebreader81::SafeArray<int16_t>& a)
    {
        if (a.empty() || a.dims() != 2)
            return;
        if (!headed_) {
            out_ << "sheet,side,row";
            for (int32_t c = a.LBound(2); c <= a.UBound(2); ++c)
                out_ << ",c" << c;
            out_ << "\n";
            headed_ = true;
        }
        for (int32_t r = a.LBound(1); r <= a.UBound(1); ++r) {
            out_ << sheet << ',' << sideNumber << ',' << r;
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
