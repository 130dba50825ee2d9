// json: one line per sheet, then a summary line.
#include "SheetOutput.h"

#include <nlohmann/json.hpp>

namespace zebreader::cli {

namespace {

using json = nlohmann::ordered_json;

json sideJson(const zebreader81::SafeArray<int16_t>& a)
{
    if (a.empty() || a.dims() != 2)
        return nullptr;
    json rows = json::array();
    for (int32_t r = a.LBound(1); r <= a.UBound(1); ++r) {
        json row = json::array();
        for (int32_t c = a.LBound(2); c <= a.UBound(2); ++c)
            row.push_back(a(r, c));
        rows.push_back(std::move(row));
    }
    return {{"lbound", {a.LBound(1), a.LBound(2)}}, {"ubound", {a.UBound(1), a.UBound(2)}}, {"values", rows}};
}

json barcodesJson(const zebreader81::SafeArray<std::string>& a)
{
    json values = json::array();
    if (a.empty() || a.dims() != 1)
        return {{"lbound", 0}, {"values", values}};
    for (int32_t i = a.LBound(); i <= a.UBound(); ++i)
        values.push_back(a(i));
    return {{"lbound", a.LBound()}, {"values", values}};
}

std::string line(const json& j) { return j.dump(-1, ' ', false, json::error_handler_t::replace); }

class JsonOutput : public SheetOutput {
public:
    explicit JsonOutput(std::ostream& out) : out_(out) {}

    void sheet(const SheetRecord& s) override
    {
        json j;
        j["sheet"] = s.number;
        j["side1"] = sideJson(s.side1);
        j["side2"] = sideJson(s.side2);
        j["barcodes"] = barcodesJson(s.barcodes);
        j["timingMarks"] = {s.timingMarks1, s.timingMarks2};
        j["rejected"] = s.rejected;
        out_ << line(j) << std::endl;
    }

    void summary(const BatchSummary& b) override
    {
        const json j = {
            {"summary",
             {{"result", b.result}, {"sheets", b.sheets}, {"read", b.read}, {"cancelScan", b.cancelScan}}}};
        out_ << line(j) << std::endl;
    }

private:
    std::ostream& out_;
};

} // namespace

std::unique_ptr<SheetOutput> makeJsonOutput(std::ostream& out) { return std::make_unique<JsonOutput>(out); }

} // namespace zebreader::cli
