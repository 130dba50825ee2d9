// ScanMark mark data in page and window mode: the read areas come from the input's head
// (host settings, kept small), the reply's characters from its tail.
#include "FuzzSupport.h"
#include "core/basError.h"
#include "drivers/scantron/ScanMarkMarks.h"
#include "zebreader81/clsZEBReaderWindows.h"

#include <stdexcept>

using namespace zebreader81;

ZEBREADER_FUZZ(in)
{
    const uint8_t flags = in.byte();
    const bool duplexForm = (flags & 1) != 0;
    const int16_t base = (flags & 2) ? 0 : 48;
    // Form geometry is the host's, not the scanner's: keep the arrays small.
    auto side1 = scanmark::sideArray(static_cast<int16_t>(in.byte() % 160 - 4), in.byte() % 64);
    auto side2 = scanmark::sideArray(static_cast<int16_t>(in.byte() % 160 - 4), in.byte() % 64);

    clsZEBReaderWindows windows;
    const int count = in.byte() % 6;
    for (int i = 0; i < count; ++i) {
        auto w = std::make_shared<clsZEBReaderWindow>();
        w->StartRow(in.int16());
        w->NumRows(in.int16());
        w->RowGap(in.int16());
        w->StartCol(in.int16());
        w->NumCols(in.int16());
        w->ColGap(in.int16());
        w->Page(static_cast<int16_t>(in.byte() % 5 - 1));
        w->Orientation(static_cast<int16_t>(in.byte() % 3));
        windows.Add(w);
    }
    const auto reply = in.rest();

    // Page mode.
    scanmark::PageCursor page(side1.empty() ? 0 : static_cast<int16_t>(side1.UBound(1)));
    for (const char c : reply) {
        if (page.done() || c == '\r')
            break;
        scanmark::storeMark(side1, page.row(), page.col(),
                            static_cast<int16_t>(static_cast<uint8_t>(c) - base));
        page.advance();
    }

    // Window mode.
    try {
        const auto plan = scanmark::fieldPlan(windows, duplexForm);
        scanmark::WindowCursor cursor(plan);
        for (const char c : reply) {
            if (cursor.done() || c == '\r')
                break;
            const auto cell = cursor.cell();
            FUZZ_CHECK(cell.side == 1 || cell.side == 2);
            scanmark::storeMark(cell.side == 2 ? side2 : side1, cell.row, cell.col,
                                static_cast<int16_t>(static_cast<uint8_t>(c) - base));
            cursor.advance();
        }
    } catch (const RuntimeError& e) {
        // Geometry that overflows 16 bits is refused as the download refuses it.
        FUZZ_CHECK(e.number() == err::Overflow);
    }
}
