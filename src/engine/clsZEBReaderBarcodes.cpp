#include "zebreader81/clsZEBReaderBarcodes.h"

#include "core/Collection.h"

namespace zebreader81 {

struct clsZEBReaderBarcodes::Impl {
    Collection<clsZEBReaderBarcode> areas;
};

clsZEBReaderBarcodes::clsZEBReaderBarcodes() : impl_(std::make_unique<Impl>()) {}
clsZEBReaderBarcodes::~clsZEBReaderBarcodes() = default;

int32_t clsZEBReaderBarcodes::Count() const { return impl_->areas.count(); }

void clsZEBReaderBarcodes::Add(std::shared_ptr<clsZEBReaderBarcode> barcode, std::optional<std::string> Key,
                               std::optional<CollectionIndex> Before, std::optional<CollectionIndex> After)
{
    trapVoid("ZEBReader81 - clsZEBReaderBarcodes.Add",
             [&] { impl_->areas.add(std::move(barcode), std::move(Key), Before, After); });
}

void clsZEBReaderBarcodes::Remove(const CollectionIndex& Index)
{
    trapVoid("ZEBReader81 - clsZEBReaderBarcodes.Remove", [&] { impl_->areas.remove(Index); });
}

void clsZEBReaderBarcodes::RemoveAll() { impl_->areas.clear(); }

std::shared_ptr<clsZEBReaderBarcode> clsZEBReaderBarcodes::Item(const CollectionIndex& Index) const
{
    return impl_->areas.tryItem(Index);
}

bool clsZEBReaderBarcodes::Exists(const CollectionIndex& Index) const
{
    return impl_->areas.tryItem(Index) != nullptr;
}

} // namespace zebreader81
