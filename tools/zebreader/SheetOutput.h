// How `scan` shows what it read: one writer per --format.
#pragma once

#include "zebreader81/SafeArray.h"

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>

namespace zebreader::cli {

/// One ReadSheet event.
struct SheetRecord {
    int number = 0; // 1 for the first sheet of this batch
    zebreader81::SafeArray<int16_t> side1, side2;
    zebreader81::SafeArray<std::string> barcodes;
    int16_t timingMarks1 = 0, timingMarks2 = 0;
    bool rejected = false;
};

/// The end of the batch.
struct BatchSummary {
    bool result = false;
    int32_t sheets = 0; // lSheetCount: reads attempted, also one that failed or was stopped
    int read = 0;       // ReadSheet events
    bool cancelScan = false;
};

class SheetOutput {
public:
    virtual ~SheetOutput() = default;
    virtual void sheet(const SheetRecord& record) = 0;
    virtual void summary(const BatchSummary& summary) = 0;
};

/// The writer of `format` (json, grid, csv or svg). json, grid and csv write to `path` or,
/// when it is empty, to standard output; svg writes one file per sheet into the folder
/// `path` (empty: the current folder). Throws UsageError when the destination cannot be used.
std::unique_ptr<SheetOutput> makeOutput(const std::string& format, const std::string& path);

// The writers themselves.
std::unique_ptr<SheetOutput> makeJsonOutput(std::ostream& out);
/// Shades in UTF-8 block characters when the locale's character set is UTF-8, else in ASCII.
std::unique_ptr<SheetOutput> makeGridOutput(std::ostream& out);
std::unique_ptr<SheetOutput> makeCsvOutput(std::ostream& out);
std::unique_ptr<SheetOutput> makeSvgOutput(const std::string& folder);

} // namespace zebreader::cli
