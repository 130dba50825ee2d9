// ScanMark wire commands: framing, the form definition records and the control commands.
// Pure functions; arithmetic the scanner's field records need is checked in 16 bits.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zebreader81 {
class clsZEBReaderWindow;
class clsZEBReaderWindows;

namespace scanmark {

inline constexpr char ESC = 27;
inline constexpr char CR = 13;
/// Characters per row of the scanner's page-mode reply.
inline constexpr int32_t PageRowWidth = 48;
/// Longest imprinter text the scanner takes.
inline constexpr std::size_t MaxImprintLength = 125;

/// ESC, text, CR.
std::string frame(const std::string& text);

/// True for the 8000/8400, which take a threshold and report raw byte values.
bool isModel8000(int32_t readerType);
/// What a reply character's code is reduced by to give the mark value: 0 or 48 ("0").
int16_t charBase(int32_t readerType);

std::string thresholdCommand(int16_t threshold);
/// Form start of one sheet; side2Rows is 0 for a single-sided definition.
std::string formStartCommand(int16_t side1Rows, int16_t side2Rows, int16_t side1Cols);
/// Page-mode field covering a whole side of rows x cols.
std::string pageFieldCommand(bool model8000, int16_t side, int16_t rows, int16_t cols);
std::string endOfFormCommand();

/// A read area's cells from its low corner: cell (i, j), both from 1, is
/// (firstRow + (i - 1) * rowStep, firstCol + (j - 1) * colStep).
struct AreaGeometry {
    int16_t firstRow = 0, lastRow = 0, firstCol = 0, lastCol = 0;
    int32_t rowStep = 0, colStep = 0;
};
/// Raises run-time error 6 when the far edge overflows 16 bits.
AreaGeometry areaGeometry(const clsZEBReaderWindow& window);

/// Window field record of a read area on `side`; raises 6 on a 16-bit overflow.
std::string windowFieldCommand(int16_t side, const clsZEBReaderWindow& window);

/// One read area as the form definition carries it.
struct FieldEntry {
    int16_t side = 1;
    /// Position in the whole collection, from 1.
    int32_t field = 0;
    std::shared_ptr<clsZEBReaderWindow> window;
};
/// The read areas that get field records, in download order: side 1 while Page is 1 or
/// less, then (duplex forms) side 2 every Page 2 until the first Page above 2.
std::vector<FieldEntry> fieldPlan(const clsZEBReaderWindows& windows, bool duplexForm);

std::string resetCommand();
std::string statusCommand();
std::string readCommand(bool withReject);
/// The print-off that precedes a reject ("PRN$ 1 N ").
std::string rejectPrintCommand();
std::string ejectCommand(bool reject);
/// `distance` blanks then the text, cut to MaxImprintLength characters.
std::string imprintText(int16_t distance, const std::string& text);
std::string printCommand(const std::string& imprint);

} // namespace scanmark
} // namespace zebreader81
