// What `scan` checks before it starts a batch: a set-up the scanner cannot read is a usage
// error, not a batch of empty sheets.
#pragma once

namespace zebreader81 {
class clsZEBReader;
}

namespace zebreader::cli {

/// Throws UsageError, naming the flags to give, when the reader's set-up cannot read a sheet.
void checkScanSetup(const zebreader81::clsZEBReader& reader);

} // namespace zebreader::cli
