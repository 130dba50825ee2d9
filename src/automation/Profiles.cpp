// clsZEBReaderProfile and clsZEBReaderProfiles.
#include "automation/ComBase.h"
#include "automation/Objects.h"

namespace zebreader81::automation {

namespace {

#define ZEB_COM_TRIPLE(Name, ComType)                                                                        \
    ZEB_COM_PROP(Name, ComType)                                                                              \
    ZEB_COM_PROP(Name##Enabled, VARIANT_BOOL)                                                                \
    ZEB_COM_PROP(Name##Visible, VARIANT_BOOL)

class ComProfile final : public Dispatch<_clsZEBReaderProfile> {
public:
    explicit ComProfile(std::shared_ptr<clsZEBReaderProfile> core) : core_(std::move(core)) {}

    ZEB_COM_TRIPLE(ReaderGrade, VARIANT_BOOL)
    ZEB_COM_TRIPLE(Barcode, VARIANT_BOOL)
    ZEB_COM_TRIPLE(Duplex, VARIANT_BOOL)
    ZEB_COM_TRIPLE(Feeder, VARIANT_BOOL)
    ZEB_COM_TRIPLE(Rejecter, VARIANT_BOOL)
    ZEB_COM_TRIPLE(Printer, VARIANT_BOOL)
    ZEB_COM_PROP(InterfaceType, ::zebReaderInterfaceType)
    ZEB_COM_TRIPLE(BaudRate, ::zebReaderBaudRate)
    ZEB_COM_TRIPLE(DataBits, ::zebReaderDataBits)
    ZEB_COM_TRIPLE(FlowControl, ::zebReaderFlowControl)
    ZEB_COM_TRIPLE(StopBits, float)
    ZEB_COM_PROP(ReaderType, ::zebReaderType)
    ZEB_COM_PROP(MarkCutOff, short)
    ZEB_COM_TRIPLE(MarkDiscrimination, short)
    ZEB_COM_TRIPLE(RecognitionThreshold, short)
    ZEB_COM_PROP(RecognitionThresholdMinimum, short)
    ZEB_COM_PROP(RecognitionThresholdMaximum, short)
    ZEB_COM_TRIPLE(SleepTime, long)
    ZEB_COM_TRIPLE(TimeOut, long)
    ZEB_COM_GET(ReaderName, BSTR)
    ZEB_COM_TRIPLE(Parity, BSTR)
    ZEB_COM_PROP(PortEnabled, VARIANT_BOOL)
    ZEB_COM_PROP(PortVisible, VARIANT_BOOL)
    ZEB_COM_TRIPLE(Windowing, VARIANT_BOOL)
    ZEB_COM_PROP(LocateEnabled, VARIANT_BOOL)
    ZEB_COM_PROP(FirmwareEnabled, VARIANT_BOOL)
    ZEB_COM_PROP(MaxCols, short)

private:
    std::shared_ptr<clsZEBReaderProfile> core_;
};

class ComProfiles final : public Dispatch<_clsZEBReaderProfiles> {
public:
    explicit ComProfiles(std::shared_ptr<clsZEBReaderProfiles> core) : core_(std::move(core)) {}

    ZEB_COM_GET(Count, long)
    HRESULT STDMETHODCALLTYPE get_Item(VARIANT Index, _clsZEBReaderProfile** value) override
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
    ZEB_COM_PROP(ProfileType, ::zebProfileType)
    HRESULT STDMETHODCALLTYPE Remove(VARIANT Index) override
    {
        return guarded([&] { core_->Remove(indexFrom(Index)); });
    }
    HRESULT STDMETHODCALLTYPE RemoveAll() override
    {
        return guarded([&] { core_->RemoveAll(); });
    }

private:
    std::shared_ptr<clsZEBReaderProfiles> core_;
};

} // namespace

_clsZEBReaderProfile* wrap(std::shared_ptr<clsZEBReaderProfile> core)
{
    return core ? new ComProfile(std::move(core)) : nullptr;
}

_clsZEBReaderProfiles* wrap(std::shared_ptr<clsZEBReaderProfiles> core)
{
    return core ? new ComProfiles(std::move(core)) : nullptr;
}

HRESULT createProfile(REFIID riid, void** out)
{
    return comGuard(riid, [&] { return handOut(wrap(std::make_shared<clsZEBReaderProfile>()), riid, out); });
}

HRESULT createProfiles(REFIID riid, void** out)
{
    return comGuard(riid, [&] { return handOut(wrap(std::make_shared<clsZEBReaderProfiles>()), riid, out); });
}

} // namespace zebreader81::automation
