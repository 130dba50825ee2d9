// The dispatcher: the one place where the reader meets the driver families.
#pragma once

#include "profiles/ModelTable.h"

#include <cstdint>
#include <functional>
#include <string>

namespace zebreader81 {

class clsZEBReader;

namespace basRead {

/// Common port set-up for serial models, then the family's init procedure.
bool ReaderInit(clsZEBReader& reader);
/// The family's close procedure, then the port is closed.
bool ReaderClose(clsZEBReader& reader);
/// Reads one sheet through the family's page procedure.
bool ReaderRead(clsZEBReader& reader);
/// Imprints on the current sheet unless skip; may mark the sheet disposed of.
bool ReaderPrint(clsZEBReader& reader, bool skip, bool& disposed);
/// Display name of a model; "" outside 0 to 41.
std::string ReaderTypeName(int32_t readerType);

/// RejectPage routing: the family's reject routine, for the models that have one.
void RejectRouted(clsZEBReader& reader);
/// EjectPage routing; some families overwrite `disposed` with their result.
void EjectRouted(clsZEBReader& reader, bool& disposed);

/// The serial control's Settings text: "9600,N,8,1" (stop bits 1.5 give "1.5").
std::string SettingsText(const clsZEBReader& reader);

} // namespace basRead

/// A family's procedures as the dispatcher calls them, with the routing rules of the family
/// (which procedure for which model, what the result means) already applied.
///
/// The contract: the dispatcher calls these on the reader's thread. For a serial model the
/// port is open with the reader's settings and tmrScan holds TimeOut before init; it is
/// closed after close. No procedure throws: each traps its errors and reports them through
/// basError under its own location text. init and read return False after a report, or
/// silently on CancelScan; the dispatcher then sets CancelScan. read stores the sheet through
/// ReaderAccess. print is reached only for models with RoutesPrint, gets `skip` when nothing is
/// to be imprinted and may set `disposed`; reject and eject are reached only for models with
/// RoutesRejectEject, and eject may overwrite `disposed`. Every wait goes through
/// channel/Waits.h: bounded by tmrScan or a limit, or ended by CancelScan.
struct FamilyDriver {
    std::function<bool(clsZEBReader&)> init;
    std::function<bool(clsZEBReader&)> close;
    std::function<bool(clsZEBReader&)> read;
    std::function<bool(clsZEBReader&, bool skip, bool& disposed)> print;
    std::function<void(clsZEBReader&)> reject;
    std::function<void(clsZEBReader&, bool& disposed)> eject;
};

/// The drivers, registered in one place. A thread may swap a family's driver (a scripted one
/// in tests); replace returns the previous driver so it can be put back.
namespace FamilyRegistry {
const FamilyDriver& driver(Family family);
FamilyDriver replace(Family family, FamilyDriver driver);
} // namespace FamilyRegistry

} // namespace zebreader81
