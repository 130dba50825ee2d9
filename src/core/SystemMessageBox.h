// The platform's modal message box, the error reporter's default when no hook is set.
#pragma once

#include <cstdint>
#include <string>

namespace zebreader81 {

/// Shows `text` under `title` with `style` (48: exclamation) and waits for the user; where
/// there is no desktop (Linux), writes the title and the text to standard error.
void showSystemMessageBox(const std::string& text, const std::string& title, int32_t style);

} // namespace zebreader81
