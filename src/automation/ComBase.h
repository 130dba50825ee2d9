// Reference counting, QueryInterface and IDispatch (through the type library) shared by every
// class of the COM face.
#pragma once

#include "automation/ComError.h"
#include "automation/Convert.h"
#include "automation/TypeLibrary.h"
#include "zebreader81/AutomationError.h"

#include <windows.h>

#include <oaidl.h>

namespace zebreader81::automation {

/// Objects alive in this DLL and IClassFactory::LockServer locks; DllCanUnloadNow reads it.
void moduleAddRef();
void moduleRelease();
LONG moduleCount();

/// A COM object's reference count, starting at one; the last release deletes the object.
class RefCount {
public:
    ULONG add() { return static_cast<ULONG>(InterlockedIncrement(&count_)); }
    template <class Object> ULONG release(Object* object)
    {
        const LONG left = InterlockedDecrement(&count_);
        if (left == 0)
            delete object;
        return static_cast<ULONG>(left);
    }

private:
    LONG count_ = 1;
};

/// IUnknown of an object with the one interface `Itf` (a class factory, an enumerator, an event
/// sink): holds the module while it lives and deletes itself on the last Release.
template <class Itf> class Unknown : public Itf {
public:
    virtual ~Unknown() { moduleRelease(); }
    Unknown(const Unknown&) = delete;
    Unknown& operator=(const Unknown&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        if (riid != IID_IUnknown && riid != __uuidof(Itf) && !answers(riid))
            return E_NOINTERFACE;
        *out = static_cast<Itf*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return refs_.add(); }
    ULONG STDMETHODCALLTYPE Release() override { return refs_.release(this); }

protected:
    Unknown() { moduleAddRef(); }
    /// Further interface ids answered with `Itf` (an event dispinterface a sink stands for).
    virtual bool answers(REFIID) const { return false; }

private:
    RefCount refs_;
};

/// A dual interface `Itf` implemented by `Derived`: IUnknown, IDispatch through the type
/// library and ISupportErrorInfo. Derived classes add interfaces through queryExtra().
template <class Itf> class Dispatch : public Itf, public ISupportErrorInfo {
public:
    Dispatch() { moduleAddRef(); }
    Dispatch(const Dispatch&) = delete;
    Dispatch& operator=(const Dispatch&) = delete;
    virtual ~Dispatch() { moduleRelease(); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        if (riid == IID_IUnknown || riid == IID_IDispatch || riid == __uuidof(Itf))
            *out = static_cast<Itf*>(this);
        else if (riid == IID_ISupportErrorInfo)
            *out = static_cast<ISupportErrorInfo*>(this);
        else
            *out = queryExtra(riid);
        if (!*out)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return refs_.add(); }
    ULONG STDMETHODCALLTYPE Release() override { return refs_.release(this); }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override
    {
        if (!count)
            return E_POINTER;
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) override
    {
        if (!info)
            return E_POINTER;
        *info = nullptr;
        if (index != 0)
            return DISP_E_BADINDEX;
        ITypeInfo* ti = typeInfo(__uuidof(Itf));
        if (!ti)
            return TYPE_E_ELEMENTNOTFOUND;
        ti->AddRef();
        *info = ti;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override
    {
        ITypeInfo* ti = typeInfo(__uuidof(Itf));
        return ti ? DispGetIDsOfNames(ti, names, count, ids) : TYPE_E_ELEMENTNOTFOUND;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                                     EXCEPINFO* excep, UINT* argErr) override
    {
        return invokeThroughTypeInfo(__uuidof(Itf), static_cast<Itf*>(this), id, flags, params, result, excep,
                                     argErr);
    }

    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID riid) override
    {
        return riid == __uuidof(Itf) ? S_OK : S_FALSE;
    }

protected:
    /// Further interfaces of the derived class (not AddRef'd here), or nullptr.
    virtual void* queryExtra(REFIID) { return nullptr; }
    /// Runs a member under the COM boundary's trap, naming this interface in error info.
    template <class F> HRESULT guarded(F&& body) noexcept { return comGuard(__uuidof(Itf), body); }
    /// A property getter: the core's value converted into *out.
    template <class Com, class F> HRESULT getProperty(Com* out, F&& get) noexcept
    {
        if (!out)
            return E_POINTER;
        return guarded([&] {
            const auto value = get();
            toCom(value, out);
        });
    }

private:
    RefCount refs_;
};

/// Creates a Derived object and hands out `Itf` with one reference.
template <class Derived, class Itf, class... Args> HRESULT createInstance(Itf** out, Args&&... args) noexcept
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    try {
        *out = new Derived(std::forward<Args>(args)...);
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

// Getter and setter of a property that maps straight onto the core object core_.
#define ZEB_COM_GET(Name, ComType)                                                                           \
    HRESULT STDMETHODCALLTYPE get_##Name(ComType* value) override                                            \
    {                                                                                                        \
        return getProperty(value, [&] { return core_->Name(); });                                            \
    }
#define ZEB_COM_PUT(Name, ComType)                                                                           \
    HRESULT STDMETHODCALLTYPE put_##Name(ComType value) override                                             \
    {                                                                                                        \
        return guarded([&] { core_->Name(fromCom<std::remove_cvref_t<decltype(core_->Name())>>(value)); });  \
    }
#define ZEB_COM_PROP(Name, ComType) ZEB_COM_GET(Name, ComType) ZEB_COM_PUT(Name, ComType)

} // namespace zebreader81::automation
