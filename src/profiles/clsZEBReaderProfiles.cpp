#include "zebreader81/clsZEBReaderProfiles.h"

#include "core/Collection.h"
#include "profiles/ModelTable.h"
#include "profiles/ProfileTable.h"
#include "zebreader81/AutomationError.h"

namespace zebreader81 {

std::string clsZEBReaderProfile::ReaderName() const
{
    const auto* model = modelInfo(readerType_);
    return model ? model->displayName : "";
}

struct clsZEBReaderProfiles::Impl {
    Collection<clsZEBReaderProfile> profiles;
    zebProfileType mask = zebProfileTypeAll;

    void fill()
    {
        profiles.clear();
        for (auto& p : buildProfiles(mask))
            profiles.add(p, std::to_string(p->ReaderType()));
    }
};

clsZEBReaderProfiles::clsZEBReaderProfiles() : impl_(std::make_unique<Impl>()) { impl_->fill(); }
clsZEBReaderProfiles::~clsZEBReaderProfiles() = default;

int32_t clsZEBReaderProfiles::Count() const { return impl_->profiles.count(); }

std::shared_ptr<clsZEBReaderProfile> clsZEBReaderProfiles::Item(const CollectionIndex& Index) const
{
    return impl_->profiles.tryItem(Index);
}

bool clsZEBReaderProfiles::Exists(const CollectionIndex& Index) const
{
    return impl_->profiles.tryItem(Index) != nullptr;
}

zebProfileType clsZEBReaderProfiles::ProfileType() const { return impl_->mask; }

void clsZEBReaderProfiles::ProfileType(zebProfileType value)
{
    const bool changed = value != impl_->mask;
    impl_->mask = value;
    if (changed || impl_->profiles.count() == 0)
        impl_->fill();
}

void clsZEBReaderProfiles::Remove(const CollectionIndex& Index)
{
    try {
        impl_->profiles.remove(Index);
    } catch (const RuntimeError& e) {
        throw AutomationError(e.number(), e.what());
    }
}

void clsZEBReaderProfiles::RemoveAll() { impl_->profiles.clear(); }

} // namespace zebreader81
