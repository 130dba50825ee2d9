// clsZEBReaderPrinter.
#include "automation/ComBase.h"
#include "automation/Objects.h"

namespace zebreader81::automation {

namespace {

class ComPrinter final : public Dispatch<_clsZEBReaderPrinter> {
public:
    explicit ComPrinter(std::shared_ptr<clsZEBReaderPrinter> core) : core_(std::move(core)) {}

    HRESULT STDMETHODCALLTYPE SetType(long Value) override
    {
        return guarded([&] { core_->SetType(Value); });
    }
    ZEB_COM_PROP(Enabled, VARIANT_BOOL)
    ZEB_COM_GET(Initialized, VARIANT_BOOL)
    ZEB_COM_PROP(Active, VARIANT_BOOL)
    ZEB_COM_PROP(Buffer1, BSTR)
    ZEB_COM_PROP(Buffer2, BSTR)
    ZEB_COM_PROP(Buffer3, BSTR)
    ZEB_COM_GET(FilledBufferCount, long)
    ZEB_COM_GET(BufferCount, long)
    ZEB_COM_PROP(Distance, short)
    ZEB_COM_GET(MinPosition, long)
    ZEB_COM_GET(MaxPosition, long)
    ZEB_COM_GET(MaxCharacters, long)

private:
    std::shared_ptr<clsZEBReaderPrinter> core_;
};

} // namespace

_clsZEBReaderPrinter* wrap(std::shared_ptr<clsZEBReaderPrinter> core)
{
    return core ? new ComPrinter(std::move(core)) : nullptr;
}

HRESULT createPrinter(REFIID riid, void** out)
{
    return comGuard(riid, [&] { return handOut(wrap(std::make_shared<clsZEBReaderPrinter>()), riid, out); });
}

} // namespace zebreader81::automation
