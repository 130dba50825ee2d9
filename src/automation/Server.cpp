// The DLL's entry points for COM: class objects, unloading, registration.
#include "automation/ComBase.h"
#include "automation/Objects.h"
#include "automation/Registration.h"
#include "dialog/win32/frmOptions.h"

namespace zebreader81::automation {

namespace {

LONG liveObjects = 0;

class ClassFactory final : public Unknown<IClassFactory> {
public:
    explicit ClassFactory(Creator create) : create_(create) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** out) override
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        if (outer)
            return CLASS_E_NOAGGREGATION;
        return create_(riid, out);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override
    {
        lock ? moduleAddRef() : moduleRelease();
        return S_OK;
    }

private:
    Creator create_;
};

} // namespace

void moduleAddRef() { InterlockedIncrement(&liveObjects); }
void moduleRelease() { InterlockedDecrement(&liveObjects); }
LONG moduleCount() { return liveObjects; }

} // namespace zebreader81::automation

using namespace zebreader81::automation;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) {
        setModuleHandle(instance);
        DisableThreadLibraryCalls(instance);
        zebreader81::InstallOptionsDialog();
    }
    return TRUE;
}

extern "C" HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID riid, void** out)
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    const Creator create = creatorOf(clsid);
    if (!create)
        return CLASS_E_CLASSNOTAVAILABLE;
    auto* factory = new (std::nothrow) ClassFactory(create);
    if (!factory)
        return E_OUTOFMEMORY;
    const HRESULT hr = factory->QueryInterface(riid, out);
    factory->Release();
    return hr;
}

extern "C" HRESULT STDAPICALLTYPE DllCanUnloadNow() { return moduleCount() == 0 ? S_OK : S_FALSE; }

extern "C" HRESULT STDAPICALLTYPE DllRegisterServer() { return registerServer(); }

extern "C" HRESULT STDAPICALLTYPE DllUnregisterServer() { return unregisterServer(); }
