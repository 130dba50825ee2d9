// Sheet files: the sheets a simulator feeds, written by hand in a plain text file.
//
//   # A comment runs from '#' to the end of the line (outside a row).
//   sheet Ann Smith          starts a new sheet; the rest of the line is a label (ignored)
//   barcode 0012345          adds a barcode to the current sheet (text to the end of the line)
//   side 1                   the rows that follow belong to side 1 (or: side 2)
//   |..X.. ...X.|            one row of marks, one character per column; blanks between
//                            the bars are ignored, text after the closing bar is a comment
//   blank 4                  four rows without marks on the current side
//
// Mark characters: '.' or '0' no mark, '1'..'9' and 'A'..'F' (or 'a'..'f') strengths 1 to 15,
// 'X' (or 'x') a full mark (15). Rows of a side shorter than its longest row are padded with
// blank columns. A sheet with side 2 rows is a duplex sheet. Row and column numbers in the
// simulators count from the first row and column written.
#pragma once

#include "sim/Sheet.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zebreader81::sim {

/// A sheet file that cannot be read: what is wrong and where.
class SheetFileError : public std::runtime_error {
public:
    SheetFileError(const std::string& source, int line, const std::string& what);
    int line() const { return line_; }

private:
    int line_;
};

/// What a reader must be set up for to read a set of sheets: the largest side sizes, and
/// whether any sheet has barcodes.
struct SheetSizes {
    std::size_t rows1 = 0, cols1 = 0, rows2 = 0, cols2 = 0;
    bool barcodes = false;
};
SheetSizes measureSheets(const std::vector<Sheet>& sheets);
/// The `zebreader scan` flags for such a set-up: "--side1 R:C", then for duplex sheets
/// "--duplex --duplex-form --side2 R:C", then "--barcode" when there are barcodes.
std::string readerFlags(const SheetSizes& sizes);

/// Parses the text of a sheet file; `source` names it in errors.
std::vector<Sheet> parseSheets(std::string_view text, const std::string& source = "sheets");
/// Reads and parses a sheet file.
std::vector<Sheet> loadSheetFile(const std::string& path);

} // namespace zebreader81::sim
