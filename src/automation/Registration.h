// The creatable classes and their registry entries.
#pragma once

#include "automation/Objects.h"

namespace zebreader81::automation {

/// The creation function of a creatable class, or nullptr.
Creator creatorOf(REFCLSID clsid);

/// Writes the classes (CLSID, ProgID "ZEBReader81.<class>", InprocServer32 with
/// ThreadingModel Apartment) and registers the type library; removes them again.
HRESULT registerServer();
HRESULT unregisterServer();

} // namespace zebreader81::automation
