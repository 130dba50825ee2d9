// The compiled-in profile table.
#pragma once

#include "zebreader81/clsZEBReaderProfile.h"
#include "zebreader81/enums.h"

#include <memory>
#include <vector>

namespace zebreader81 {

/// The profiles of the families whose bits are set in `mask`, in the catalogue's order of
/// addition; the profile of type 0 always comes first.
std::vector<std::shared_ptr<clsZEBReaderProfile>> buildProfiles(int32_t mask);

} // namespace zebreader81
