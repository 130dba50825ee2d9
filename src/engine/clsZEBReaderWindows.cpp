#include "zebreader81/clsZEBReaderWindows.h"

#include "core/Collection.h"

namespace zebreader81 {

struct clsZEBReaderWindows::Impl {
    Collection<clsZEBReaderWindow> areas;
};

clsZEBReaderWindows::clsZEBReaderWindows() : impl_(std::make_unique<Impl>()) {}
clsZEBReaderWindows::~clsZEBReaderWindows() = default;

int32_t clsZEBReaderWindows::Count() const { return impl_->areas.count(); }

void clsZEBReaderWindows::Add(std::shared_ptr<clsZEBReaderWindow> window, std::optional<int32_t> Before,
                              std::optional<int32_t> After)
{
    trapVoid("ZEBReader81 - clsZEBReaderWindows.Add", [&] {
        std::optional<CollectionIndex> before, after;
        if (Before)
            before = CollectionIndex(*Before);
        if (After)
            after = CollectionIndex(*After);
        impl_->areas.add(std::move(window), std::nullopt, before, after);
    });
}

void clsZEBReaderWindows::Remove(int32_t Position)
{
    trapVoid("ZEBReader81 - clsZEBReaderWindows.Remove", [&] { impl_->areas.remove(Position); });
}

void clsZEBReaderWindows::RemoveAll() { impl_->areas.clear(); }

std::shared_ptr<clsZEBReaderWindow> clsZEBReaderWindows::Item(int32_t Position) const
{
    return impl_->areas.tryItem(Position);
}

bool clsZEBReaderWindows::Exists(int32_t Position) const { return impl_->areas.tryItem(Position) != nullptr; }

} // namespace zebreader81
