#include "automation/HostObjects.h"

#include "automation/Convert.h"

#include <dispex.h>

#include <array>
#include <stdexcept>

namespace zebreader81::automation {

namespace {

// Script objects answer names through IDispatchEx (Wine's VBScript objects only there).
DISPID dispidOf(IDispatch* object, const wchar_t* name)
{
    DISPID id = DISPID_UNKNOWN;
    IDispatchEx* ex = nullptr;
    HRESULT hr = E_FAIL;
    if (SUCCEEDED(object->QueryInterface(__uuidof(IDispatchEx), reinterpret_cast<void**>(&ex)))) {
        BSTR text = SysAllocString(name);
        hr = ex->GetDispID(text, fdexNameCaseInsensitive, &id);
        SysFreeString(text);
        ex->Release();
    }
    if (FAILED(hr)) {
        auto* text = const_cast<LPOLESTR>(name);
        hr = object->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id);
    }
    if (FAILED(hr))
        throw std::runtime_error("The error object has no member of that name");
    return id;
}

void check(HRESULT hr, EXCEPINFO& excep)
{
    SysFreeString(excep.bstrSource);
    SysFreeString(excep.bstrDescription);
    SysFreeString(excep.bstrHelpFile);
    if (FAILED(hr))
        throw std::runtime_error("The error object's call failed");
}

class DispatchErrorHost final : public ErrorHost {
public:
    explicit DispatchErrorHost(IDispatch* object) : object_(object) { object_->AddRef(); }
    ~DispatchErrorHost() override { object_->Release(); }
    DispatchErrorHost(const DispatchErrorHost&) = delete;
    DispatchErrorHost& operator=(const DispatchErrorHost&) = delete;

    bool Silent() const override
    {
        DISPPARAMS none{nullptr, nullptr, 0, 0};
        VARIANT result;
        VariantInit(&result);
        EXCEPINFO excep{};
        check(object_->Invoke(dispidOf(object_, L"Silent"), IID_NULL, LOCALE_USER_DEFAULT,
                              DISPATCH_PROPERTYGET, &none, &result, &excep, nullptr),
              excep);
        const HRESULT hr = VariantChangeType(&result, &result, 0, VT_BOOL);
        const bool silent = SUCCEEDED(hr) && V_BOOL(&result) != VARIANT_FALSE;
        VariantClear(&result);
        return silent;
    }
    void Silent(bool value) override
    {
        VARIANT arg;
        VariantInit(&arg);
        V_VT(&arg) = VT_BOOL;
        V_BOOL(&arg) = toVariantBool(value);
        DISPID named = DISPID_PROPERTYPUT;
        DISPPARAMS params{&arg, &named, 1, 1};
        EXCEPINFO excep{};
        check(object_->Invoke(dispidOf(object_, L"Silent"), IID_NULL, LOCALE_USER_DEFAULT,
                              DISPATCH_PROPERTYPUT, &params, nullptr, &excep, nullptr),
              excep);
    }
    int16_t RaiseError(int32_t& number, int32_t& kind, std::string& description, std::string& location,
                       std::string& title, std::string& text1, std::string& text2, std::string& text3,
                       int32_t& constant, std::string& text4, std::string& text5, std::string& text6,
                       bool& flag) override
    {
        // Arguments 2 to 14 of the reporter in its order, each by reference: the number as a
        // Variant, the others typed. Script objects (IDispatchEx) get every one as a Variant
        // reference instead, the only kind Wine's JScript reads.
        std::string* texts[] = {&description, &location, &title, &text1, &text2,
                                &text3,       &text4,    &text5, &text6};
        std::array<VARIANT, 13> values{};
        for (auto& v : values)
            VariantInit(&v);
        auto setLong = [&](std::size_t at, int32_t value) {
            V_VT(&values[at]) = VT_I4;
            V_I4(&values[at]) = value;
        };
        setLong(0, number);
        setLong(1, kind);
        setLong(8, constant);
        for (std::size_t i = 0, at = 2; i < 9; ++i, at = (at == 7 ? 9 : at + 1)) {
            V_VT(&values[at]) = VT_BSTR;
            V_BSTR(&values[at]) = toBstr(*texts[i]);
        }
        V_VT(&values[12]) = VT_BOOL;
        V_BOOL(&values[12]) = toVariantBool(flag);

        IDispatchEx* ex = nullptr;
        const bool script =
            SUCCEEDED(object_->QueryInterface(__uuidof(IDispatchEx), reinterpret_cast<void**>(&ex)));
        if (ex)
            ex->Release();
        std::array<VARIANT, 13> args{};
        for (std::size_t at = 0; at < values.size(); ++at) {
            VARIANT& a = args[args.size() - 1 - at];
            if (script || at == 0) {
                V_VT(&a) = VT_VARIANT | VT_BYREF;
                V_VARIANTREF(&a) = &values[at];
            } else {
                V_VT(&a) = static_cast<VARTYPE>(V_VT(&values[at]) | VT_BYREF);
                V_BYREF(&a) = &V_UI1(&values[at]);
            }
        }

        DISPPARAMS params{args.data(), nullptr, static_cast<UINT>(args.size()), 0};
        VARIANT result;
        VariantInit(&result);
        EXCEPINFO excep{};
        const HRESULT hr = object_->Invoke(dispidOf(object_, L"RaiseError"), IID_NULL, LOCALE_USER_DEFAULT,
                                           DISPATCH_METHOD, &params, &result, &excep, nullptr);
        int16_t answer = 0;
        if (SUCCEEDED(hr)) {
            auto readLong = [&](std::size_t at, int32_t& into) {
                if (SUCCEEDED(VariantChangeType(&values[at], &values[at], 0, VT_I4)))
                    into = V_I4(&values[at]);
            };
            readLong(0, number);
            readLong(1, kind);
            readLong(8, constant);
            for (std::size_t i = 0, at = 2; i < 9; ++i, at = (at == 7 ? 9 : at + 1))
                if (SUCCEEDED(VariantChangeType(&values[at], &values[at], 0, VT_BSTR)))
                    *texts[i] = fromBstr(V_BSTR(&values[at]));
            if (SUCCEEDED(VariantChangeType(&values[12], &values[12], 0, VT_BOOL)))
                flag = V_BOOL(&values[12]) != VARIANT_FALSE;
            if (SUCCEEDED(VariantChangeType(&result, &result, 0, VT_I2)))
                answer = V_I2(&result);
        }
        VariantClear(&result);
        for (auto& v : values)
            VariantClear(&v);
        check(hr, excep);
        return answer;
    }

private:
    IDispatch* object_;
};

} // namespace

DispatchObject::DispatchObject(IDispatch* object) : object_(object)
{
    if (object_)
        object_->AddRef();
}

DispatchObject::~DispatchObject()
{
    if (object_)
        object_->Release();
}

IDispatch* dispatchOf(const std::shared_ptr<HostObject>& object)
{
    auto* held = dynamic_cast<DispatchObject*>(object.get());
    return held ? held->get() : nullptr;
}

std::shared_ptr<HostObject> hostObjectOf(IDispatch* object)
{
    return object ? std::make_shared<DispatchObject>(object) : nullptr;
}

std::shared_ptr<ErrorHost> makeErrorHost(IDispatch* object)
{
    return object ? std::make_shared<DispatchErrorHost>(object) : nullptr;
}

} // namespace zebreader81::automation
