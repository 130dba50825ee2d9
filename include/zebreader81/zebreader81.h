// ZEBReader81: one object model over OMR sheet scanners of many makes.
//
// Contract
// - Create one clsZEBReader per scanner. Every member runs on the calling thread; events are
//   raised on it. Only CancelScan may be set from another thread. Readers on different
//   threads are independent: driver state and the registered error object are per thread.
// - Methods return True on success. Failures never throw: they are reported through the
//   error reporter, to the ErrorHost registered with SetError on this thread, or else to the
//   message-box hook (standard error by default). The only exception of the interface is
//   AutomationError, from the few members documented to raise it.
// - Every wait on a scanner blocks instead of spinning. It is bounded by TimeOut, except the
//   wait for a hand-fed sheet (Feeder False, or OpScan grading), which lasts until a sheet
//   comes or CancelScan is set.
// - Serial port N opens the device named by the environment variable ZEBREADER_COM<N>, else
//   the stored port map, else /dev/ttyS<N-1>.
#pragma once

#include "zebreader81/AutomationError.h"
#include "zebreader81/ErrorHost.h"
#include "zebreader81/OptionsDialog.h"
#include "zebreader81/ReaderEvents.h"
#include "zebreader81/SafeArray.h"
#include "zebreader81/clsZEBReader.h"
#include "zebreader81/clsZEBReaderBarcodes.h"
#include "zebreader81/clsZEBReaderPrinter.h"
#include "zebreader81/clsZEBReaderProfiles.h"
#include "zebreader81/clsZEBReaderWindows.h"
#include "zebreader81/enums.h"
