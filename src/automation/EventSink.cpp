// ZEBReader81.EventSink: connects to a reader's events for script hosts that cannot, and calls
// the handler object's method of the event's name (after an optional prefix). Arguments go as
// by-reference VARIANTs, arrays as arrays of VARIANT; what the handler leaves in them, or
// returns (for hosts whose functions cannot assign their arguments), goes back to the reader.
#include "automation/ComBase.h"
#include "automation/Objects.h"

#include <dispex.h>
#include <olectl.h>

#include <vector>

namespace zebreader81::automation {

namespace {

class Forwarder final : public Unknown<IDispatch> {
public:
    Forwarder(IDispatch* handler, std::wstring prefix) : handler_(handler), prefix_(std::move(prefix))
    {
        handler_->AddRef();
    }
    ~Forwarder() { handler_->Release(); }

    bool answers(REFIID riid) const override { return riid == DIID___clsZEBReader; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override
    {
        if (!count)
            return E_POINTER;
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID lcid, WORD, DISPPARAMS* params, VARIANT*,
                                     EXCEPINFO*, UINT*) override
    {
        try {
            DISPID target = DISPID_UNKNOWN;
            IDispatchEx* ex = nullptr;
            if (!params || !findHandler(id, target, ex))
                return S_OK;
            forward(target, ex, lcid, *params);
            if (ex)
                ex->Release();
        } catch (...) {
        }
        return S_OK;
    }

private:
    bool findHandler(DISPID event, DISPID& target, IDispatchEx*& ex)
    {
        ITypeInfo* events = typeInfo(DIID___clsZEBReader);
        BSTR name = nullptr;
        UINT count = 0;
        if (!events || FAILED(events->GetNames(event, &name, 1, &count)) || count == 0)
            return false;
        std::wstring full = prefix_ + std::wstring(name, SysStringLen(name));
        SysFreeString(name);
        BSTR lookup = SysAllocString(full.c_str());
        bool found = false;
        if (SUCCEEDED(handler_->QueryInterface(__uuidof(IDispatchEx), reinterpret_cast<void**>(&ex))))
            found = SUCCEEDED(ex->GetDispID(lookup, fdexNameCaseInsensitive, &target));
        else
            found = SUCCEEDED(handler_->GetIDsOfNames(IID_NULL, &lookup, 1, LOCALE_USER_DEFAULT, &target));
        SysFreeString(lookup);
        if (!found && ex) {
            ex->Release();
            ex = nullptr;
        }
        return found;
    }

    void forward(DISPID target, IDispatchEx* ex, LCID lcid, DISPPARAMS& params)
    {
        const UINT n = params.cArgs;
        std::vector<VARIANT> values(n), refs(n);
        for (UINT i = 0; i < n; ++i) {
            VariantInit(&values[i]);
            VariantCopyInd(&values[i], &params.rgvarg[i]);
            if (V_VT(&values[i]) & VT_ARRAY) {
                SAFEARRAY* asVariants = coerceArray(V_ARRAY(&values[i]), VT_VARIANT);
                VariantClear(&values[i]);
                V_VT(&values[i]) = VT_ARRAY | VT_VARIANT;
                V_ARRAY(&values[i]) = asVariants;
            }
            VariantInit(&refs[i]);
            V_VT(&refs[i]) = VT_VARIANT | VT_BYREF;
            V_VARIANTREF(&refs[i]) = &values[i];
        }
        DISPPARAMS call{refs.data(), nullptr, n, 0};
        VARIANT result;
        VariantInit(&result);
        EXCEPINFO excep{};
        const HRESULT hr =
            ex ? ex->InvokeEx(target, lcid, DISPATCH_METHOD, &call, &result, &excep, nullptr)
               : handler_->Invoke(target, IID_NULL, lcid, DISPATCH_METHOD, &call, &result, &excep, nullptr);
        SysFreeString(excep.bstrSource);
        SysFreeString(excep.bstrDescription);
        SysFreeString(excep.bstrHelpFile);
        // The event's last argument is the one the reader reads back (rgvarg[0]).
        if (SUCCEEDED(hr) && n > 0 && V_VT(&result) != VT_EMPTY) {
            VariantClear(&values[0]);
            values[0] = result;
            VariantInit(&result);
        }
        VariantClear(&result);
        for (UINT i = 0; i < n; ++i) {
            if (SUCCEEDED(hr))
                writeBack(params.rgvarg[i], values[i]);
            VariantClear(&values[i]);
        }
    }

    // Stores a value the handler left into the reader's by-reference argument, in its type.
    static void writeBack(VARIANT& arg, const VARIANT& value)
    {
        if (!(V_VT(&arg) & VT_BYREF))
            return;
        const auto type = static_cast<VARTYPE>(V_VT(&arg) & ~VT_BYREF);
        if (type & VT_ARRAY) {
            if (!(V_VT(&value) & VT_ARRAY))
                return;
            SAFEARRAY* converted = coerceArray(V_ARRAY(&value), static_cast<VARTYPE>(type & ~VT_ARRAY));
            SafeArrayDestroy(*V_ARRAYREF(&arg));
            *V_ARRAYREF(&arg) = converted;
            return;
        }
        if (type == VT_DISPATCH) {
            IDispatch* object = V_VT(&value) == VT_DISPATCH ? V_DISPATCH(&value) : nullptr;
            if (object)
                object->AddRef();
            if (*V_DISPATCHREF(&arg))
                (*V_DISPATCHREF(&arg))->Release();
            *V_DISPATCHREF(&arg) = object;
            return;
        }
        VARIANT converted;
        VariantInit(&converted);
        if (FAILED(VariantChangeType(&converted, const_cast<VARIANT*>(&value), 0, type)))
            return;
        switch (type) {
        case VT_BOOL: *V_BOOLREF(&arg) = V_BOOL(&converted); break;
        case VT_I2: *V_I2REF(&arg) = V_I2(&converted); break;
        case VT_I4: *V_I4REF(&arg) = V_I4(&converted); break;
        default: break;
        }
        VariantClear(&converted);
    }

    IDispatch* handler_;
    std::wstring prefix_;
};

class ComEventSink final : public Dispatch<_EventSink> {
public:
    ~ComEventSink() override { disconnect(); }

    HRESULT STDMETHODCALLTYPE Connect(IDispatch* Source, IDispatch* Handler, VARIANT Prefix) override
    {
        return guarded([&]() -> HRESULT {
            disconnect();
            if (!Source || !Handler)
                throw AutomationError(91, "Object variable or With block variable not set");
            std::wstring prefix;
            if (isGiven(Prefix)) {
                VARIANT text;
                VariantInit(&text);
                if (FAILED(VariantChangeType(&text, const_cast<VARIANT*>(&deref(Prefix)), 0, VT_BSTR)))
                    throw AutomationError(13, "Type mismatch");
                prefix.assign(V_BSTR(&text), SysStringLen(V_BSTR(&text)));
                VariantClear(&text);
            }
            IConnectionPointContainer* container = nullptr;
            if (FAILED(Source->QueryInterface(IID_IConnectionPointContainer,
                                              reinterpret_cast<void**>(&container))))
                throw AutomationError(438, "Object doesn't support this property or method");
            HRESULT hr = container->FindConnectionPoint(DIID___clsZEBReader, &point_);
            container->Release();
            if (FAILED(hr))
                throw AutomationError(438, "Object doesn't support this property or method");
            auto* forwarder = new Forwarder(Handler, prefix);
            hr = point_->Advise(forwarder, &cookie_);
            forwarder->Release();
            if (FAILED(hr)) {
                point_->Release();
                point_ = nullptr;
            }
            return hr;
        });
    }
    HRESULT STDMETHODCALLTYPE Disconnect() override
    {
        disconnect();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE VariantArray(VARIANT Value, VARIANT* result) override
    {
        if (!result)
            return E_POINTER;
        VariantInit(result);
        return guarded([&] {
            const VARIANT& v = deref(Value);
            if (!(V_VT(&v) & VT_ARRAY))
                throw AutomationError(13, "Type mismatch");
            SAFEARRAY* source = (V_VT(&v) & VT_BYREF) ? *V_ARRAYREF(&v) : V_ARRAY(&v);
            V_ARRAY(result) = coerceArray(source, VT_VARIANT);
            V_VT(result) = VT_ARRAY | VT_VARIANT;
        });
    }

private:
    void disconnect()
    {
        if (!point_)
            return;
        point_->Unadvise(cookie_);
        point_->Release();
        point_ = nullptr;
    }

    IConnectionPoint* point_ = nullptr;
    DWORD cookie_ = 0;
};

} // namespace

HRESULT createEventSink(REFIID riid, void** out)
{
    return comGuard(riid, [&] { return handOut(static_cast<_EventSink*>(new ComEventSink()), riid, out); });
}

} // namespace zebreader81::automation
