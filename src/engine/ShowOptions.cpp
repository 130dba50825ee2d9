// The settings dialog: a hook that a face installs, since the engine has no windows.
#include "core/basError.h"
#include "zebreader81/OptionsDialog.h"
#include "zebreader81/clsZEBReader.h"

#include <memory>
#include <mutex>

namespace zebreader81 {

namespace {

std::mutex hookMutex;
std::shared_ptr<const OptionsDialogHook> dialogHook;

std::shared_ptr<const OptionsDialogHook> installedHook()
{
    std::lock_guard lock(hookMutex);
    return dialogHook;
}

} // namespace

void SetOptionsDialogHook(OptionsDialogHook hook)
{
    std::lock_guard lock(hookMutex);
    dialogHook = hook ? std::make_shared<const OptionsDialogHook>(std::move(hook)) : nullptr;
}

bool clsZEBReader::ShowOptions(void* fParent)
{
    return trap("ZEBReader81 - clsZEBReader.ShowOptions", false, [&] {
        const auto hook = installedHook();
        if (!hook) {
            basError::ReportDevice("No settings dialog is available on this platform.",
                                   "ZEBReader81 - clsZEBReader.ShowOptions", "Settings Dialog");
            return false;
        }
        return (*hook)(*this, fParent);
    });
}

} // namespace zebreader81
