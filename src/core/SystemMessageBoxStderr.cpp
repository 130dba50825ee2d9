#include "core/SystemMessageBox.h"

#include <iostream>

namespace zebreader81 {

void showSystemMessageBox(const std::string& text, const std::string& title, int32_t)
{
    std::cerr << title << ": " << text << std::endl;
}

} // namespace zebreader81
