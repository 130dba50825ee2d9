// The settings dialog on Windows: a dialog from the component's resources that ShowOptions opens.
#pragma once

namespace zebreader81 {

/// Makes ShowOptions open the Windows dialog; the DLL calls it when it loads. The dialog
/// resource must be linked into the module that holds this code.
void InstallOptionsDialog();

} // namespace zebreader81
