// svg: one picture per sheet (sheet-0001.svg ...): the mark grid of each side, darker for
// stronger marks, with the sheet's barcodes.
#include "SheetOutput.h"

#include "CommandLine.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

namespace zebreader::cli {

namespace {

constexpr int cell = 12;
constexpr int margin = 20;
constexpr int header = 44;

std::string escape(const std::string& text)
{
    std::string out;
    for (unsigned char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        case '\'': out += "&apos;"; break;
        default:
            // XML 1.0 allows no other control characters; bytes above 127 are not UTF-8 here.
            out += (c < 32 || c > 126) ? std::string("?") : std::string(1, static_cast<char>(c));
        }
    }
    return out;
}

struct Extent {
    int32_t r0 = 0, c0 = 0, rows = 0, cols = 0;
};

// The part of a side worth drawing: from the first row and column to the last mark.
Extent extentOf(const zebreader81::SafeArray<int16_t>& a)
{
    if (a.empty() || a.dims() != 2)
        return {};
    Extent e{a.LBound(1), a.LBound(2), 0, 0};
    for (int32_t r = a.LBound(1); r <= a.UBound(1); ++r)
        for (int32_t c = a.LBound(2); c <= a.UBound(2); ++c)
            if (a(r, c) != 0) {
                e.rows = std::max(e.rows, r - e.r0 + 1);
                e.cols = std::max(e.cols, c - e.c0 + 1);
            }
    e.rows = std::max(e.rows, 1);
    e.cols = std::max(e.cols, std::min<int32_t>(a.UBound(2) - e.c0 + 1, 12));
    return e;
}

void drawSide(std::ostream& svg, const char* title, const zebreader81::SafeArray<int16_t>& a, const Extent& e,
              int x)
{
    svg << "  <g transform=\"translate(" << x << "," << margin + header << ")\">\n";
    svg << "    <text x=\"0\" y=\"-8\" font-family=\"sans-serif\" font-size=\"12\">" << title << " (rows "
        << e.r0 << "-" << e.r0 + e.rows - 1 << ")</text>\n";
    svg << "    <rect x=\"0\" y=\"0\" width=\"" << e.cols * cell << "\" height=\"" << e.rows * cell
        << "\" fill=\"white\" stroke=\"#888\"/>\n";
    for (int32_t r = 0; r < e.rows; ++r)
        for (int32_t c = 0; c < e.cols; ++c) {
            const int v = std::clamp<int>(a(e.r0 + r, e.c0 + c), 0, 15);
            const int grey = 255 - v * 17;
            svg << "    <rect x=\"" << c * cell + 1 << "\" y=\"" << r * cell + 1 << "\" width=\"" << cell - 2
                << "\" height=\"" << cell - 2 << "\" rx=\"3\" fill=\"rgb(" << grey << "," << grey << ","
                << grey << ")\" stroke=\"#ccc\"><title>row " << e.r0 + r << ", column " << e.c0 + c << ": "
                << v << "</title></rect>\n";
        }
    svg << "  </g>\n";
}

class SvgOutput : public SheetOutput {
public:
    explicit SvgOutput(std::string folder) : folder_(std::move(folder))
    {
        // Without a folder the pictures go into the current one.
        if (folder_.empty())
            return;
        std::error_code ec;
        std::filesystem::create_directories(folder_, ec);
        if (!std::filesystem::is_directory(folder_))
            throw UsageError("--output: cannot make the folder \"" + folder_ + "\"");
    }

    void sheet(const SheetRecord& s) override
    {
        const Extent e1 = extentOf(s.side1), e2 = extentOf(s.side2);
        const int width1 = e1.cols * cell, width2 = e2.cols * cell;
        const int width = margin * 2 + width1 + (e2.cols ? margin * 2 + width2 : 0);
        const int height = margin * 2 + header + std::max(e1.rows, e2.rows) * cell;

        std::string barcodes;
        if (!s.barcodes.empty() && s.barcodes.dims() == 1)
            for (int32_t i = s.barcodes.LBound(); i <= s.barcodes.UBound(); ++i)
                barcodes += (barcodes.empty() ? "" : ", ") + s.barcodes(i);

        char name[32];
        std::snprintf(name, sizeof name, "sheet-%04d.svg", s.number);
        const std::string path = (std::filesystem::path(folder_) / name).string();
        std::ofstream svg(path, std::ios::binary | std::ios::trunc);
        if (!svg)
            throw std::runtime_error("cannot write " + path);
        svg << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << std::max(width, 240) << "\" height=\""
            << height << "\" viewBox=\"0 0 " << std::max(width, 240) << " " << height << "\">\n"
            << "  <title>Sheet " << s.number << "</title>\n"
            << "  <rect width=\"100%\" height=\"100%\" fill=\"#f4f1e8\"/>\n"
            << "  <text x=\"" << margin << "\" y=\"" << margin + 4
            << "\" font-family=\"sans-serif\" font-size=\"14\">"
            << "Sheet " << s.number << (s.rejected ? " (rejected)" : "") << "</text>\n"
            << "  <text x=\"" << margin << "\" y=\"" << margin + 22
            << "\" font-family=\"monospace\" font-size=\"12\">Barcodes: " << escape(barcodes) << "</text>\n";
        if (e1.cols)
            drawSide(svg, "Side 1", s.side1, e1, margin);
        if (e2.cols)
            drawSide(svg, "Side 2", s.side2, e2, margin * 3 + width1);
        svg << "</svg>\n";
        if (!svg)
            throw std::runtime_error("cannot write " + path);
        std::cout << path << std::endl;
    }

    void summary(const BatchSummary&) override {}

private:
    std::string folder_;
};

} // namespace

std::unique_ptr<SheetOutput> makeSvgOutput(const std::string& folder)
{
    return std::make_unique<SvgOutput>(folder);
}

} // namespace zebreader::cli
