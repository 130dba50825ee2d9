#include "automation/HostObjects.h"

#include "automation/Convert.h"

#include <array>
#include <stdexcept>

namespace zebreader81::automation {

namespace {

DISPID dispidOf(IDispatch* object, const wchar_t* name)
{
    DISPID id = DISPID_UNKNOWN;
    auto* text = const_cast<LPOLESTR>(name);
    if (FAILED(object->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id)))
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
        // Arguments 2 to 14 of the reporter, each by reference, in the reporter's order.
        VARIANT numberValue;
        VariantInit(&numberValue);
        V_VT(&numberValue) = VT_I4;
        V_I4(&numberValue) = number;
        LONG longs[2] = {kind, constant};
        std::string* texts[] = {&description, &location, &title, &text1, &text2,
                                &text3,       &text4,    &text5, &text6};
        std::array<BSTR, 9> bstrs{};
        for (std::size_t i = 0; i < bstrs.size(); ++i)
            bstrs[i] = toBstr(*texts[i]);
        VARIANT_BOOL flagValue = toVariantBool(flag);

        std::array<VARIANT, 13> args{};
        auto set = [&](std::size_t position, VARTYPE type, void* where) {
            VARIANT& a = args[args.size() - 1 - position];
            V_VT(&a) = static_cast<VARTYPE>(type | VT_BYREF);
            V_BYREF(&a) = where;
        };
        set(0, VT_VARIANT, &numberValue);
        set(1, VT_I4, &longs[0]);
        for (std::size_t i = 0; i < 6; ++i)
            set(2 + i, VT_BSTR, &bstrs[i]);
        set(8, VT_I4, &longs[1]);
        for (std::size_t i = 6; i < 9; ++i)
            set(3 + i, VT_BSTR, &bstrs[i]);
        set(12, VT_BOOL, &flagValue);

        DISPPARAMS params{args.data(), nullptr, static_cast<UINT>(args.size()), 0};
        VARIANT result;
        VariantInit(&result);
        EXCEPINFO excep{};
        const HRESULT hr = object_->Invoke(dispidOf(object_, L"RaiseError"), IID_NULL, LOCALE_USER_DEFAULT,
                                           DISPATCH_METHOD, &params, &result, &excep, nullptr);
        int16_t answer = 0;
        if (SUCCEEDED(hr)) {
            VARIANT n;
            VariantInit(&n);
            if (SUCCEEDED(VariantChangeType(&n, &numberValue, 0, VT_I4)))
                number = V_I4(&n);
            kind = longs[0];
            constant = longs[1];
            for (std::size_t i = 0; i < bstrs.size(); ++i)
                *texts[i] = fromBstr(bstrs[i]);
            flag = flagValue != VARIANT_FALSE;
            if (SUCCEEDED(VariantChangeType(&result, &result, 0, VT_I2)))
                answer = V_I2(&result);
        }
        VariantClear(&result);
        VariantClear(&numberValue);
        for (BSTR b : bstrs)
            SysFreeString(b);
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
