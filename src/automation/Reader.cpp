// clsZEBReader: the creatable reader, its children and its events.
#include "automation/ComBase.h"
#include "automation/Connections.h"
#include "automation/HostObjects.h"
#include "automation/Objects.h"
#include "zebreader81/clsZEBReader.h"

#include <olectl.h>

namespace zebreader81::automation {

namespace {

// The host's message loop keeps running while the reader waits on a scanner.
void pumpMessages()
{
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
}

// A child object handed out again and again as the same COM object.
template <class Itf> class Child {
public:
    Child() = default;
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child()
    {
        if (object_)
            object_->Release();
    }
    template <class Make> void get(Itf** out, Make&& make)
    {
        if (!object_)
            object_ = make();
        if (object_)
            object_->AddRef();
        *out = object_;
    }

private:
    Itf* object_ = nullptr;
};

class ComReader final : public Dispatch<_clsZEBReader>, public IConnectionPointContainer {
public:
    ComReader() : core_(std::make_unique<clsZEBReader>()), connections_(this)
    {
        cookie_ = core_->Advise(makeEventBridge(connections_));
        core_->SetYieldCallback(pumpMessages);
    }
    ~ComReader() override
    {
        // Sinks first: destroying the core must not raise events into released hosts.
        connections_.clear();
        core_->Unadvise(cookie_);
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override
    {
        return Dispatch::QueryInterface(riid, out);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return Dispatch::AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return Dispatch::Release(); }

    // IConnectionPointContainer
    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints** out) override
    {
        return enumConnectionPoints(&connections_, out);
    }
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID riid, IConnectionPoint** out) override
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        if (riid != DIID___clsZEBReader)
            return CONNECT_E_NOCONNECTION;
        connections_.AddRef();
        *out = &connections_;
        return S_OK;
    }

    ZEB_COM_PROP(ReaderType, ::zebReaderType)
    ZEB_COM_GET(ReaderName, BSTR)
    ZEB_COM_PROP(Port, short)
    ZEB_COM_PROP(BaudRate, ::zebReaderBaudRate)
    ZEB_COM_PROP(DataBits, ::zebReaderDataBits)
    ZEB_COM_PROP(Parity, BSTR)
    ZEB_COM_PROP(StopBits, float)
    ZEB_COM_PROP(FlowControl, ::zebReaderFlowControl)
    ZEB_COM_PROP(TimeOut, long)
    ZEB_COM_PROP(SleepTime, long)
    ZEB_COM_PROP(MarkCutOff, short)
    ZEB_COM_PROP(MarkDiscrimination, short)
    ZEB_COM_PROP(RecognitionThreshold, short)
    ZEB_COM_PROP(RecognitionMode, ::zebRecognitionType)
    ZEB_COM_PROP(Windowing, VARIANT_BOOL)
    ZEB_COM_PROP(ReaderGrade, VARIANT_BOOL)
    ZEB_COM_PROP(Duplex, VARIANT_BOOL)
    ZEB_COM_PROP(DuplexForm, VARIANT_BOOL)
    ZEB_COM_PROP(Barcode, VARIANT_BOOL)
    ZEB_COM_PROP(Feeder, VARIANT_BOOL)
    ZEB_COM_PROP(Rejecter, VARIANT_BOOL)
    ZEB_COM_GET(Side1Array, SAFEARRAY*)
    ZEB_COM_GET(Side2Array, SAFEARRAY*)
    ZEB_COM_GET(Side1TimingMarks, short)
    ZEB_COM_GET(Side2TimingMarks, short)
    ZEB_COM_GET(Side1Rows, SAFEARRAY*)
    ZEB_COM_GET(Side1Cols, SAFEARRAY*)
    ZEB_COM_GET(Side2Rows, SAFEARRAY*)
    ZEB_COM_GET(Side2Cols, SAFEARRAY*)
    HRESULT STDMETHODCALLTYPE put_Side1Rows(SAFEARRAY** value) override
    {
        return putArray(value, [&](auto a) { core_->Side1Rows(a); });
    }
    HRESULT STDMETHODCALLTYPE put_Side1Cols(SAFEARRAY** value) override
    {
        return putArray(value, [&](auto a) { core_->Side1Cols(a); });
    }
    HRESULT STDMETHODCALLTYPE put_Side2Rows(SAFEARRAY** value) override
    {
        return putArray(value, [&](auto a) { core_->Side2Rows(a); });
    }
    HRESULT STDMETHODCALLTYPE put_Side2Cols(SAFEARRAY** value) override
    {
        return putArray(value, [&](auto a) { core_->Side2Cols(a); });
    }
    ZEB_COM_PROP(CancelScan, VARIANT_BOOL)

    HRESULT STDMETHODCALLTYPE get_Barcodes(_clsZEBReaderBarcodes** value) override
    {
        return child(barcodes_, value, [&] { return wrap(core_->Barcodes()); });
    }
    HRESULT STDMETHODCALLTYPE get_Windows(_clsZEBReaderWindows** value) override
    {
        return child(windows_, value, [&] { return wrap(core_->Windows()); });
    }
    HRESULT STDMETHODCALLTYPE get_Profiles(_clsZEBReaderProfiles** value) override
    {
        return child(profiles_, value, [&] { return wrap(core_->Profiles()); });
    }
    HRESULT STDMETHODCALLTYPE get_Printer(_clsZEBReaderPrinter** value) override
    {
        return child(printer_, value, [&] { return wrap(core_->Printer()); });
    }
    HRESULT STDMETHODCALLTYPE get_AnswerKey(IDispatch** value) override
    {
        if (!value)
            return E_POINTER;
        *value = dispatchOf(core_->AnswerKey());
        if (*value)
            (*value)->AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE putref_AnswerKey(IDispatch* value) override
    {
        return guarded([&] { core_->AnswerKey(hostObjectOf(value)); });
    }
    ZEB_COM_PROP(HelpFile, BSTR)
    HRESULT STDMETHODCALLTYPE get_HelpID(::zebReaderHelpID eHelpIDType, long* value) override
    {
        return getProperty(value, [&] { return core_->HelpID(static_cast<zebReaderHelpID>(eHelpIDType)); });
    }
    HRESULT STDMETHODCALLTYPE put_HelpID(::zebReaderHelpID eHelpIDType, long value) override
    {
        return guarded([&] { core_->HelpID(static_cast<zebReaderHelpID>(eHelpIDType), value); });
    }

    HRESULT STDMETHODCALLTYPE StartReader(VARIANT_BOOL* result) override
    {
        return getProperty(result, [&] { return core_->StartReader(); });
    }
    HRESULT STDMETHODCALLTYPE ReadPage(VARIANT_BOOL InitializePrinter, VARIANT_BOOL* result) override
    {
        return getProperty(result, [&] { return core_->ReadPage(InitializePrinter != VARIANT_FALSE); });
    }
    HRESULT STDMETHODCALLTYPE ReadBatch(VARIANT_BOOL InitializePrinter, long lMaxSheets, long* lSheetCount,
                                        VARIANT_BOOL* result) override
    {
        return getProperty(result, [&] {
            int32_t count = lSheetCount ? *lSheetCount : 0;
            const bool ok = core_->ReadBatch(InitializePrinter != VARIANT_FALSE, lMaxSheets, count);
            if (lSheetCount)
                *lSheetCount = count;
            return ok;
        });
    }
    HRESULT STDMETHODCALLTYPE EndReader(VARIANT_BOOL* result) override
    {
        return getProperty(result, [&] { return core_->EndReader(); });
    }
    HRESULT STDMETHODCALLTYPE RejectPage() override
    {
        return guarded([&] { core_->RejectPage(); });
    }
    HRESULT STDMETHODCALLTYPE EjectPage() override
    {
        return guarded([&] { core_->EjectPage(); });
    }
    HRESULT STDMETHODCALLTYPE LoadDefaults(::zebReaderType eReaderType, VARIANT_BOOL* result) override
    {
        return getProperty(result,
                           [&] { return core_->LoadDefaults(static_cast<zebReaderType>(eReaderType)); });
    }
    HRESULT STDMETHODCALLTYPE LoadSettings(::zebReaderRegistryKey lRegistryKey, BSTR sRegistrySubKey,
                                           VARIANT_BOOL* result) override
    {
        return getProperty(result, [&] {
            return core_->LoadSettings(static_cast<zebReaderRegistryKey>(lRegistryKey),
                                       fromBstr(sRegistrySubKey));
        });
    }
    HRESULT STDMETHODCALLTYPE SaveSettings(::zebReaderRegistryKey lRegistryKey, BSTR sRegistrySubKey,
                                           VARIANT_BOOL* result) override
    {
        return getProperty(result, [&] {
            return core_->SaveSettings(static_cast<zebReaderRegistryKey>(lRegistryKey),
                                       fromBstr(sRegistrySubKey));
        });
    }
    HRESULT STDMETHODCALLTYPE SetError(IDispatch* oErr, VARIANT_BOOL* result) override
    {
        return getProperty(result, [&] { return core_->SetError(makeErrorHost(oErr)); });
    }
    HRESULT STDMETHODCALLTYPE ShowOptions(VARIANT fParent, VARIANT_BOOL* result) override
    {
        return getProperty(result, [&] {
            void* parent = nullptr;
            VARIANT handle;
            VariantInit(&handle);
            if (isGiven(fParent) &&
                SUCCEEDED(VariantChangeType(&handle, const_cast<VARIANT*>(&deref(fParent)), 0, VT_I8)))
                parent = reinterpret_cast<void*>(static_cast<intptr_t>(V_I8(&handle)));
            return core_->ShowOptions(parent);
        });
    }
    HRESULT STDMETHODCALLTYPE Locate(short iStartPort, VARIANT_BOOL* result) override
    {
        return getProperty(result, [&] { return core_->Locate(iStartPort); });
    }
    HRESULT STDMETHODCALLTYPE Firmware(BSTR* sReturn, VARIANT_BOOL* result) override
    {
        if (!sReturn)
            return E_POINTER;
        return getProperty(result, [&] {
            std::string text = fromBstr(*sReturn);
            const bool ok = core_->Firmware(text);
            if (ok) {
                BSTR answer = toBstr(text);
                SysFreeString(*sReturn);
                *sReturn = answer;
            }
            return ok;
        });
    }

protected:
    void* queryExtra(REFIID riid) override
    {
        return riid == IID_IConnectionPointContainer ? static_cast<IConnectionPointContainer*>(this)
                                                     : nullptr;
    }

private:
    template <class Set> HRESULT putArray(SAFEARRAY** value, Set&& set)
    {
        if (!value)
            return E_POINTER;
        return guarded([&] { set(shortsFrom(*value)); });
    }
    template <class Itf, class Make> HRESULT child(Child<Itf>& cache, Itf** out, Make&& make)
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        return guarded([&] { cache.get(out, make); });
    }

    std::unique_ptr<clsZEBReader> core_;
    Connections connections_;
    int32_t cookie_ = 0;
    Child<_clsZEBReaderBarcodes> barcodes_;
    Child<_clsZEBReaderWindows> windows_;
    Child<_clsZEBReaderProfiles> profiles_;
    Child<_clsZEBReaderPrinter> printer_;
};

} // namespace

HRESULT createReader(REFIID riid, void** out)
{
    return comGuard(riid, [&] { return handOut(static_cast<_clsZEBReader*>(new ComReader()), riid, out); });
}

} // namespace zebreader81::automation
