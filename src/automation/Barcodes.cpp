// clsZEBReaderBarcode and clsZEBReaderBarcodes.
#include "automation/ComBase.h"
#include "automation/Objects.h"

namespace zebreader81::automation {

namespace {

// Asks one of our barcode objects for itself.
const IID selfBarcode = {0x5a2c9f61, 0x0d3e, 0x4b78, {0xa4, 0x15, 0xc9, 0x7e, 0x2b, 0x60, 0xf8, 0x1d}};

class ComBarcode final : public Dispatch<_clsZEBReaderBarcode> {
public:
    explicit ComBarcode(std::shared_ptr<clsZEBReaderBarcode> core) : core_(std::move(core)) {}
    const std::shared_ptr<clsZEBReaderBarcode>& core() const { return core_; }

    ZEB_COM_PROP(Page, short)
    ZEB_COM_PROP(Distance, short)
    ZEB_COM_PROP(Length, short)
    ZEB_COM_PROP(Symbology, ::zebBarcodeType)
    ZEB_COM_PROP(Orientation, ::zebBarcodeOrientation)

protected:
    void* queryExtra(REFIID riid) override { return riid == selfBarcode ? this : nullptr; }

private:
    std::shared_ptr<clsZEBReaderBarcode> core_;
};

class ComBarcodes final : public Dispatch<_clsZEBReaderBarcodes> {
public:
    explicit ComBarcodes(std::shared_ptr<clsZEBReaderBarcodes> core) : core_(std::move(core)) {}

    ZEB_COM_GET(Count, long)

    HRESULT STDMETHODCALLTYPE Add(_clsZEBReaderBarcode* Barcode, VARIANT Key, VARIANT Before,
                                  VARIANT After) override
    {
        return guarded([&] {
            auto barcode = coreOf(Barcode);
            if (!barcode)
                throw AutomationError(13, "Type mismatch");
            std::optional<std::string> key;
            if (isGiven(Key)) {
                auto index = indexFrom(Key);
                key = index.isKey() ? index.key() : std::to_string(index.position());
            }
            core_->Add(std::move(barcode), key, optionalIndex(Before), optionalIndex(After));
        });
    }
    HRESULT STDMETHODCALLTYPE Remove(VARIANT Index) override
    {
        return guarded([&] { core_->Remove(indexFrom(Index)); });
    }
    HRESULT STDMETHODCALLTYPE RemoveAll() override
    {
        return guarded([&] { core_->RemoveAll(); });
    }
    HRESULT STDMETHODCALLTYPE get_Item(VARIANT Index, _clsZEBReaderBarcode** value) override
    {
        if (!value)
            return E_POINTER;
        *value = nullptr;
        return guarded([&] { *value = wrap(core_->Item(indexFrom(Index))); });
    }
    HRESULT STDMETHODCALLTYPE Exists(VARIANT Index, VARIANT_BOOL* value) override
    {
        return getProperty(value, [&] { return core_->Exists(indexFrom(Index)); });
    }

private:
    std::shared_ptr<clsZEBReaderBarcodes> core_;
};

} // namespace

_clsZEBReaderBarcode* wrap(std::shared_ptr<clsZEBReaderBarcode> core)
{
    return core ? new ComBarcode(std::move(core)) : nullptr;
}

_clsZEBReaderBarcodes* wrap(std::shared_ptr<clsZEBReaderBarcodes> core)
{
    return core ? new ComBarcodes(std::move(core)) : nullptr;
}

std::shared_ptr<clsZEBReaderBarcode> coreOf(_clsZEBReaderBarcode* object)
{
    void* self = nullptr;
    if (!object || FAILED(object->QueryInterface(selfBarcode, &self)))
        return nullptr;
    auto* barcode = static_cast<ComBarcode*>(self);
    auto core = barcode->core();
    barcode->Release();
    return core;
}

HRESULT createBarcode(REFIID riid, void** out)
{
    return comGuard(riid, [&] { return handOut(wrap(std::make_shared<clsZEBReaderBarcode>()), riid, out); });
}

HRESULT createBarcodes(REFIID riid, void** out)
{
    return comGuard(riid, [&] { return handOut(wrap(std::make_shared<clsZEBReaderBarcodes>()), riid, out); });
}

} // namespace zebreader81::automation
