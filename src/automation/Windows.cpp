// clsZEBReaderWindow and clsZEBReaderWindows.
#include "automation/ComBase.h"
#include "automation/Objects.h"

namespace zebreader81::automation {

namespace {

// Asks one of our window objects for itself.
const IID selfWindow = {0x3b7d2e14, 0x8c51, 0x4f0a, {0x9e, 0x27, 0x61, 0xd4, 0xa8, 0x0b, 0x35, 0xc2}};

class ComWindow final : public Dispatch<_clsZEBReaderWindow> {
public:
    explicit ComWindow(std::shared_ptr<clsZEBReaderWindow> core) : core_(std::move(core)) {}
    const std::shared_ptr<clsZEBReaderWindow>& core() const { return core_; }

    ZEB_COM_PROP(StartRow, short)
    ZEB_COM_PROP(NumRows, short)
    ZEB_COM_PROP(RowGap, short)
    ZEB_COM_PROP(StartCol, short)
    ZEB_COM_PROP(NumCols, short)
    ZEB_COM_PROP(ColGap, short)
    ZEB_COM_PROP(Page, short)
    ZEB_COM_PROP(Orientation, short)
    ZEB_COM_PROP(NumItems, short)
    ZEB_COM_PROP(NumChoices, short)

protected:
    void* queryExtra(REFIID riid) override { return riid == selfWindow ? this : nullptr; }

private:
    std::shared_ptr<clsZEBReaderWindow> core_;
};

class ComWindows final : public Dispatch<_clsZEBReaderWindows> {
public:
    explicit ComWindows(std::shared_ptr<clsZEBReaderWindows> core) : core_(std::move(core)) {}

    ZEB_COM_GET(Count, long)

    HRESULT STDMETHODCALLTYPE Add(_clsZEBReaderWindow* Window, VARIANT Before, VARIANT After) override
    {
        return guarded([&] {
            auto window = coreOf(Window);
            if (!window)
                throw AutomationError(13, "Type mismatch");
            auto position = [](const VARIANT& v) -> std::optional<int32_t> {
                auto index = optionalIndex(v);
                if (!index)
                    return std::nullopt;
                if (index->isKey())
                    throw AutomationError(13, "Type mismatch");
                return index->position();
            };
            core_->Add(std::move(window), position(Before), position(After));
        });
    }
    HRESULT STDMETHODCALLTYPE Remove(long Position) override
    {
        return guarded([&] { core_->Remove(Position); });
    }
    HRESULT STDMETHODCALLTYPE RemoveAll() override
    {
        return guarded([&] { core_->RemoveAll(); });
    }
    HRESULT STDMETHODCALLTYPE get_Item(long Position, _clsZEBReaderWindow** value) override
    {
        if (!value)
            return E_POINTER;
        return guarded([&] { *value = wrap(core_->Item(Position)); });
    }
    HRESULT STDMETHODCALLTYPE Exists(long Position, VARIANT_BOOL* value) override
    {
        return getProperty(value, [&] { return core_->Exists(Position); });
    }

private:
    std::shared_ptr<clsZEBReaderWindows> core_;
};

} // namespace

_clsZEBReaderWindow* wrap(std::shared_ptr<clsZEBReaderWindow> core)
{
    return core ? new ComWindow(std::move(core)) : nullptr;
}

_clsZEBReaderWindows* wrap(std::shared_ptr<clsZEBReaderWindows> core)
{
    return core ? new ComWindows(std::move(core)) : nullptr;
}

std::shared_ptr<clsZEBReaderWindow> coreOf(_clsZEBReaderWindow* object)
{
    void* self = nullptr;
    if (!object || FAILED(object->QueryInterface(selfWindow, &self)))
        return nullptr;
    auto* window = static_cast<ComWindow*>(self);
    auto core = window->core();
    window->Release();
    return core;
}

HRESULT createWindow(REFIID riid, void** out)
{
    return comGuard(riid, [&] { return handOut(wrap(std::make_shared<clsZEBReaderWindow>()), riid, out); });
}

HRESULT createWindows(REFIID riid, void** out)
{
    return comGuard(riid, [&] { return handOut(wrap(std::make_shared<clsZEBReaderWindows>()), riid, out); });
}

} // namespace zebreader81::automation
