// The imprinter's member that only the reader sets.
#pragma once

#include "zebreader81/clsZEBReaderPrinter.h"

namespace zebreader81 {

struct PrinterAccess {
    /// Set for each sheet from ReadPage's InitializePrinter argument.
    static void Initialized(clsZEBReaderPrinter& printer, bool value) { printer.initialized_ = value; }
};

} // namespace zebreader81
