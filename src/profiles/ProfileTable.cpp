// Placeholder table: one profile per model with the initial values; the full table replaces it.
#include "profiles/ProfileTable.h"

#include "profiles/ModelTable.h"

namespace zebreader81 {

std::vector<std::shared_ptr<clsZEBReaderProfile>> buildProfiles(int32_t)
{
    std::vector<std::shared_ptr<clsZEBReaderProfile>> out;
    for (int32_t t = 0; t <= 41; ++t) {
        auto p = std::make_shared<clsZEBReaderProfile>();
        p->ReaderType(static_cast<zebReaderType>(t));
        if (familyOf(t) == Family::SekonicUSB)
            p->InterfaceType(zebReaderInterfaceTypeUSB);
        out.push_back(p);
    }
    return out;
}

} // namespace zebreader81
