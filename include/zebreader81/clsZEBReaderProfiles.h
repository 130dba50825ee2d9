// The catalogue of scanner models, filled from the compiled-in profile table.
#pragma once

#include "zebreader81/CollectionIndex.h"
#include "zebreader81/clsZEBReaderProfile.h"
#include "zebreader81/enums.h"
#include "zebreader81/export.h"

#include <cstdint>
#include <memory>

namespace zebreader81 {

/// Profiles keyed by the decimal text of their ReaderType ("0" to "41"), in the table's order
/// of addition, filtered by the ProfileType family mask. A new catalogue holds all 42.
class ZEBREADER81_API clsZEBReaderProfiles {
public:
    clsZEBReaderProfiles();
    ~clsZEBReaderProfiles();
    clsZEBReaderProfiles(const clsZEBReaderProfiles&) = delete;
    clsZEBReaderProfiles& operator=(const clsZEBReaderProfiles&) = delete;

    /// Number of profiles held.
    int32_t Count() const;
    /// The profile at a 1-based position or under a key, or nullptr when there is none.
    std::shared_ptr<clsZEBReaderProfile> Item(const CollectionIndex& Index) const;
    /// True when Item(Index) yields a profile.
    bool Exists(const CollectionIndex& Index) const;
    /// Family mask; a different mask, or any mask on an empty catalogue, refills it.
    zebProfileType ProfileType() const;
    void ProfileType(zebProfileType value);
    /// Removes one profile; an unknown index throws AutomationError (raised to the caller).
    void Remove(const CollectionIndex& Index);
    /// Removes every profile (the mask stays).
    void RemoveAll();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace zebreader81
