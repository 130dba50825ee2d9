// The settings dialog that clsZEBReader::ShowOptions opens.
#pragma once

#include "zebreader81/export.h"

#include <functional>

namespace zebreader81 {

class clsZEBReader;

/// Shows the settings dialog for reader, modally, owned by the window fParent (nullptr for
/// none). Returns True when the user accepted and the values are in the reader, False when
/// cancelled, leaving the reader untouched. A failure is thrown and reported by ShowOptions.
using OptionsDialogHook = std::function<bool(clsZEBReader& reader, void* fParent)>;

/// Installs the dialog for the whole process (the Windows DLL installs its own when it loads);
/// an empty hook restores the default, which reports that no dialog is available and returns
/// False.
ZEBREADER81_API void SetOptionsDialogHook(OptionsDialogHook hook);

} // namespace zebreader81
