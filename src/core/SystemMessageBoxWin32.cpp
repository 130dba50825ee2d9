#include "core/SystemMessageBox.h"

#include <windows.h>

namespace zebreader81 {

void showSystemMessageBox(const std::string& text, const std::string& title, int32_t style)
{
    MessageBoxA(nullptr, text.c_str(), title.c_str(), static_cast<UINT>(style));
}

} // namespace zebreader81
