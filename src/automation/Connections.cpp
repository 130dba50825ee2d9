#include "automation/Connections.h"

#include "automation/ComBase.h"
#include "automation/Convert.h"
#include "automation/HostObjects.h"

#include <olectl.h>

#include <algorithm>

namespace zebreader81::automation {

Connections::~Connections() { clear(); }

HRESULT Connections::QueryInterface(REFIID riid, void** out)
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    if (riid != IID_IUnknown && riid != IID_IConnectionPoint)
        return E_NOINTERFACE;
    *out = static_cast<IConnectionPoint*>(this);
    AddRef();
    return S_OK;
}

HRESULT Connections::GetConnectionInterface(IID* iid)
{
    if (!iid)
        return E_POINTER;
    *iid = DIID___clsZEBReader;
    return S_OK;
}

HRESULT Connections::GetConnectionPointContainer(IConnectionPointContainer** out)
{
    if (!out)
        return E_POINTER;
    container_->AddRef();
    *out = container_;
    return S_OK;
}

HRESULT Connections::Advise(IUnknown* sink, DWORD* cookie)
{
    if (!sink || !cookie)
        return E_POINTER;
    *cookie = 0;
    IDispatch* dispatch = nullptr;
    if (FAILED(sink->QueryInterface(DIID___clsZEBReader, reinterpret_cast<void**>(&dispatch))) &&
        FAILED(sink->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch))))
        return CONNECT_E_CANNOTCONNECT;
    try {
        sinks_.push_back({nextCookie_, dispatch});
    } catch (...) {
        dispatch->Release();
        return E_OUTOFMEMORY;
    }
    *cookie = nextCookie_++;
    return S_OK;
}

HRESULT Connections::Unadvise(DWORD cookie)
{
    auto found =
        std::find_if(sinks_.begin(), sinks_.end(), [&](const Sink& s) { return s.cookie == cookie; });
    if (found == sinks_.end())
        return CONNECT_E_NOCONNECTION;
    IDispatch* sink = found->sink;
    sinks_.erase(found);
    sink->Release();
    return S_OK;
}

namespace {

// How an enumerator hands out its items: each copy holds a reference of its own.
IConnectionPoint* copied(IConnectionPoint* point)
{
    point->AddRef();
    return point;
}
CONNECTDATA copied(const CONNECTDATA& data)
{
    data.pUnk->AddRef();
    return data;
}
void release(IConnectionPoint* point) { point->Release(); }
void release(const CONNECTDATA& data) { data.pUnk->Release(); }

// IEnumConnectionPoints or IEnumConnections over a snapshot taken when it was made.
template <class Itf, class Item> class Enumerator final : public Unknown<Itf> {
public:
    explicit Enumerator(std::vector<Item> items, std::size_t at = 0) : items_(std::move(items)), at_(at) {}
    ~Enumerator()
    {
        for (auto& item : items_)
            release(item);
    }

    HRESULT STDMETHODCALLTYPE Next(ULONG count, Item* out, ULONG* fetched) override
    {
        if (!out || (count > 1 && !fetched))
            return E_POINTER;
        ULONG n = 0;
        for (; n < count && at_ < items_.size(); ++n)
            out[n] = copied(items_[at_++]);
        if (fetched)
            *fetched = n;
        return n == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override
    {
        const std::size_t left = items_.size() - at_;
        at_ += std::min<std::size_t>(count, left);
        return count <= left ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Reset() override
    {
        at_ = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(Itf** out) override
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        return make(items_, at_, out);
    }

    static HRESULT make(const std::vector<Item>& items, std::size_t at, Itf** out) noexcept
    {
        try {
            std::unique_ptr<Enumerator> made(new Enumerator({}, at));
            made->items_.reserve(items.size());
            for (const auto& item : items)
                made->items_.push_back(copied(item));
            *out = made.release();
            return S_OK;
        } catch (...) {
            return E_OUTOFMEMORY;
        }
    }

private:
    std::vector<Item> items_;
    std::size_t at_;
};

} // namespace

HRESULT Connections::EnumConnections(IEnumConnections** out)
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    std::vector<CONNECTDATA> connected;
    for (const auto& s : sinks_)
        connected.push_back({s.sink, s.cookie});
    return Enumerator<IEnumConnections, CONNECTDATA>::make(connected, 0, out);
}

HRESULT enumConnectionPoints(IConnectionPoint* point, IEnumConnectionPoints** out)
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    return Enumerator<IEnumConnectionPoints, IConnectionPoint*>::make({point}, 0, out);
}

void Connections::clear()
{
    auto sinks = std::move(sinks_);
    sinks_.clear();
    for (auto& s : sinks)
        s.sink->Release();
}

void Connections::fire(DISPID id, std::vector<VARIANT> args)
{
    // A handler may unadvise (or release the reader) while we call it: work on a counted copy.
    auto sinks = sinks_;
    for (auto& s : sinks)
        s.sink->AddRef();
    container_->AddRef();
    std::reverse(args.begin(), args.end());
    for (auto& s : sinks) {
        DISPPARAMS params{args.data(), nullptr, static_cast<UINT>(args.size()), 0};
        EXCEPINFO excep{};
        UINT argErr = 0;
        s.sink->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, nullptr, &excep, &argErr);
        SysFreeString(excep.bstrSource);
        SysFreeString(excep.bstrDescription);
        SysFreeString(excep.bstrHelpFile);
    }
    for (auto& s : sinks)
        s.sink->Release();
    container_->Release();
}

namespace {

VARIANT byRef(VARTYPE type, void* where)
{
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = static_cast<VARTYPE>(type | VT_BYREF);
    V_BYREF(&v) = where;
    return v;
}

// A by-reference automation array around a core array, copied back after the call.
template <class T> class ArrayArg {
public:
    explicit ArrayArg(SafeArray<T>& core) : core_(core), array_(toSafeArray(core)) {}
    ~ArrayArg() { SafeArrayDestroy(array_); }
    ArrayArg(const ArrayArg&) = delete;
    ArrayArg& operator=(const ArrayArg&) = delete;
    VARIANT arg()
    {
        constexpr VARTYPE element = std::is_same_v<T, int16_t> ? VT_I2 : VT_BSTR;
        return byRef(VT_ARRAY | element, &array_);
    }
    void readBack()
    {
        if constexpr (std::is_same_v<T, int16_t>)
            core_ = shortsFrom(array_);
        else
            core_ = stringsFrom(array_);
    }

private:
    SafeArray<T>& core_;
    SAFEARRAY* array_;
};

class EventBridge final : public ReaderEvents {
public:
    explicit EventBridge(Connections& connections) : connections_(connections) {}

    void BeforeSheet(bool& bInitializePrinter) override { fireFlag(1, bInitializePrinter); }

    void ReadSheet(SafeArray<int16_t>& iSide1Array, SafeArray<int16_t>& iSide2Array,
                   SafeArray<std::string>& sBarcodeArray, bool& bReject) override
    {
        guard([&] {
            ArrayArg side1(iSide1Array), side2(iSide2Array);
            ArrayArg<std::string> barcodes(sBarcodeArray);
            VARIANT_BOOL reject = toVariantBool(bReject);
            connections_.fire(2, {side1.arg(), side2.arg(), barcodes.arg(), byRef(VT_BOOL, &reject)});
            side1.readBack();
            side2.readBack();
            barcodes.readBack();
            bReject = reject != VARIANT_FALSE;
        });
    }

    void AfterSheet(bool& bCancelScan) override { fireFlag(3, bCancelScan); }
    void BeforePrint(bool& bCancel) override { fireFlag(4, bCancel); }
    void AfterPrint() override
    {
        guard([&] { connections_.fire(5, {}); });
    }

    void TranslateData(std::shared_ptr<HostObject>& oData, SafeArray<int16_t>& iSide1Array,
                       SafeArray<int16_t>& iSide2Array, SafeArray<std::string>& sBarcodeArray,
                       bool& bNeedsMoreData) override
    {
        guard([&] {
            IDispatch* data = dispatchOf(oData);
            if (data)
                data->AddRef();
            IDispatch* const before = data;
            ArrayArg side1(iSide1Array), side2(iSide2Array);
            ArrayArg<std::string> barcodes(sBarcodeArray);
            VARIANT_BOOL more = toVariantBool(bNeedsMoreData);
            connections_.fire(6, {byRef(VT_DISPATCH, &data), side1.arg(), side2.arg(), barcodes.arg(),
                                  byRef(VT_BOOL, &more)});
            if (data != before)
                oData = hostObjectOf(data);
            if (data)
                data->Release();
            side1.readBack();
            side2.readBack();
            barcodes.readBack();
            bNeedsMoreData = more != VARIANT_FALSE;
        });
    }

    void GetQuestionsOnPage(int16_t& iPage, int16_t& iNumberQuestions) override
    {
        guard([&] {
            SHORT page = iPage, questions = iNumberQuestions;
            connections_.fire(7, {byRef(VT_I2, &page), byRef(VT_I2, &questions)});
            iPage = page;
            iNumberQuestions = questions;
        });
    }

private:
    void fireFlag(DISPID id, bool& flag)
    {
        guard([&] {
            VARIANT_BOOL value = toVariantBool(flag);
            connections_.fire(id, {byRef(VT_BOOL, &value)});
            flag = value != VARIANT_FALSE;
        });
    }
    // A sink that leaves something we cannot read back changes nothing.
    template <class F> static void guard(F&& body) noexcept
    {
        try {
            body();
        } catch (...) {
        }
    }

    Connections& connections_;
};

} // namespace

std::shared_ptr<ReaderEvents> makeEventBridge(Connections& connections)
{
    return std::make_shared<EventBridge>(connections);
}

} // namespace zebreader81::automation
