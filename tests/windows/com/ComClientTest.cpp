// A C++ client of the registered ZEBReader81.dll: every class by name through IDispatch and the
// vtable faces, error info, and (with a simulator mapped to ZEBREADER_TEST_PORT, model
// ZEBREADER_TEST_MODEL) a batch with an event sink that rejects the first sheet and cancels after
// the second.
#include "ZEBReader81_h.h"

#include <gtest/gtest.h>
#include <wrl/client.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

using Microsoft::WRL::ComPtr;

// A value passed or returned by name, owning what it holds.
struct Var : VARIANT {
    Var() { VariantInit(this); }
    Var(int v) : Var() { V_VT(this) = VT_I4, V_I4(this) = v; }
    Var(bool v) : Var() { V_VT(this) = VT_BOOL, V_BOOL(this) = v ? VARIANT_TRUE : VARIANT_FALSE; }
    Var(const wchar_t* s) : Var() { V_VT(this) = VT_BSTR, V_BSTR(this) = SysAllocString(s); }
    Var(IDispatch* d) : Var() { V_VT(this) = VT_DISPATCH, V_DISPATCH(this) = d, d->AddRef(); }
    Var(std::nullptr_t) : Var() { V_VT(this) = VT_NULL; } // JScript's null
    Var(VARIANT* to) : Var() { V_VT(this) = VT_VARIANT | VT_BYREF, V_VARIANTREF(this) = to; } // by reference
    Var(const Var& o) : Var() { VariantCopy(this, const_cast<Var*>(&o)); }
    Var& operator=(const Var& o) { return VariantCopy(this, const_cast<Var*>(&o)), *this; }
    ~Var() { VariantClear(this); }
};

// A result as a script would print it; objects as "object" or "Nothing", a raised error by its code.
std::wstring shown(const VARIANT& v)
{
    wchar_t error[24];
    if (V_VT(&v) == VT_ERROR)
        return std::swprintf(error, 24, L"error %08lX", static_cast<unsigned long>(V_ERROR(&v))), error;
    if (V_VT(&v) == VT_DISPATCH)
        return V_DISPATCH(&v) ? L"object" : L"Nothing";
    Var t;
    return SUCCEEDED(VariantChangeType(&t, const_cast<VARIANT*>(&v), VARIANT_ALPHABOOL, VT_BSTR))
               ? std::wstring(V_BSTR(&t), SysStringLen(V_BSTR(&t)))
               : L"?";
}

constexpr WORD Get = DISPATCH_METHOD | DISPATCH_PROPERTYGET, Put = DISPATCH_PROPERTYPUT,
               Call = DISPATCH_METHOD;

// Calls a member by name, or the default member for "", as a script host does: arguments last first.
Var invoke(IDispatch* on, const wchar_t* member, WORD kind, const std::vector<Var>& args = {})
{
    DISPID id = DISPID_VALUE, put = DISPID_PROPERTYPUT;
    auto* name = const_cast<LPOLESTR>(member);
    if (*member) {
        EXPECT_EQ(S_OK, on->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id)) << "no member";
    }
    std::vector<Var> last(std::rbegin(args), std::rend(args));
    DISPPARAMS params{last.data(), kind == Put ? &put : nullptr, static_cast<UINT>(last.size()), kind == Put};
    Var result;
    EXCEPINFO excep{};
    if (const HRESULT hr =
            on->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &params, &result, &excep, nullptr);
        FAILED(hr)) {
        V_VT(&result) = VT_ERROR;
        V_ERROR(&result) = hr == DISP_E_EXCEPTION ? excep.scode : hr;
        SysFreeString(excep.bstrSource);
        SysFreeString(excep.bstrDescription);
        SysFreeString(excep.bstrHelpFile);
    }
    return result;
}

Var create(REFCLSID clsid)
{
    Var v;
    V_VT(&v) = VT_DISPATCH;
    EXPECT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                     reinterpret_cast<void**>(&V_DISPATCH(&v))));
    return v;
}

// Where a side array of at least rows x cols (from 1) is marked: each mark adds its row times 100
// and its column, so a mark lost or moved shows. -1 for no array, -2 for a smaller one.
int marks(SAFEARRAY* side, LONG rows, LONG cols)
{
    LONG r = 0, c = 0;
    short* cell = nullptr;
    if (!side || SafeArrayGetDim(side) != 2)
        return -1;
    if (SafeArrayGetUBound(side, 1, &r), SafeArrayGetUBound(side, 2, &c), r < rows || c < cols)
        return -2;
    int sum = 0;
    SafeArrayAccessData(side, reinterpret_cast<void**>(&cell));
    for (LONG i = 0; i < r * c; ++i)
        sum += cell[i] > 0 ? (i % r + 1) * 100 + i / r + 1 : 0;
    SafeArrayUnaccessData(side);
    return sum;
}

// Counts the events and answers through their by-reference arguments.
class Sink final : public IDispatch {
public:
    _clsZEBReader* reader = nullptr;
    int starts = 0, ends = 0, rows1 = 0, cols1 = 0;
    std::vector<int> side1, side2;
    std::wstring barcodes;
    bool arraysTyped = true;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override
    {
        const bool known = riid == IID_IUnknown || riid == IID_IDispatch || riid == DIID___clsZEBReader;
        *out = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* n) override { return *n = 0, S_OK; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*,
                                     UINT*) override
    {
        // Arguments arrive last first.
        VARIANT* a = p->rgvarg;
        if (id == 1)
            ++starts;
        if (id == 2) {
            arraysTyped = arraysTyped && V_VT(&a[3]) == (VT_BYREF | VT_ARRAY | VT_I2) &&
                          V_VT(&a[2]) == (VT_BYREF | VT_ARRAY | VT_I2) &&
                          V_VT(&a[1]) == (VT_BYREF | VT_ARRAY | VT_BSTR) &&
                          V_VT(&a[0]) == (VT_BYREF | VT_BOOL);
            side1.push_back(marks(*V_ARRAYREF(&a[3]), rows1, cols1));
            side2.push_back(marks(*V_ARRAYREF(&a[2]), 20, 40));
            SAFEARRAY* list = *V_ARRAYREF(&a[1]);
            BSTR* codes = nullptr;
            SafeArrayAccessData(list, reinterpret_cast<void**>(&codes));
            for (ULONG i = 0; i < list->rgsabound[0].cElements; ++i)
                barcodes += std::wstring(codes[i] ? codes[i] : L"") + L";";
            SafeArrayUnaccessData(list);
            if (side1.size() == 1) {
                reader->RejectPage();
                *V_BOOLREF(&a[0]) = VARIANT_TRUE;
            }
        }
        if (id == 3 && ++ends == 2)
            *V_BOOLREF(&a[0]) = VARIANT_TRUE;
        return S_OK;
    }
};

struct Client : ::testing::Test {
    Sink sink; // outlives the reader it may be connected to
    ComPtr<_clsZEBReader> reader;
    ComPtr<IConnectionPointContainer> container;
    void SetUp() override
    {
        ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
        ASSERT_EQ(S_OK,
                  CoCreateInstance(CLSID_clsZEBReader, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&reader)));
        ASSERT_EQ(S_OK, reader.As(&container));
        sink.reader = reader.Get();
    }
    void TearDown() override
    {
        container.Reset();
        reader.Reset();
        CoUninitialize();
    }
};

TEST_F(Client, EveryClassByNameWithDefaultMembersOptionalByReferenceArgumentsAndRaisedErrors)
{
    const Var window3 = create(CLSID_clsZEBReaderWindow), window1 = create(CLSID_clsZEBReaderWindow),
              barcode = create(CLSID_clsZEBReaderBarcode);
    Var count, firmware(L"kept");
    V_VT(&count) = VT_I2, V_I2(&count) = 5;
    std::map<std::wstring, Var> objects{
        {L"reader", Var(reader.Get())}, {L"window3", window3}, {L"window1", window1}, {L"barcode", barcode}};
    struct Row {
        const wchar_t *on, *member;
        WORD kind;
        std::vector<Var> args;
        const wchar_t *expected, *keep = nullptr; // a name for the object returned
    };
    const Row rows[] = {
        {L"reader", L"ReaderType", Put, {2}, L""},
        {L"reader", L"ReaderName", Get, {}, L"Scantron OpScan 2"},
        {L"reader", L"Profiles", Get, {}, L"object", L"profiles"},
        {L"profiles", L"Count", Get, {}, L"42"},
        {L"profiles", L"", Get, {L"37"}, L"object", L"profile"},
        {L"profile", L"ReaderName", Get, {}, L"Chatsworth Data ACP-100"},
        {L"profiles", L"", Get, {1}, L"object", L"profile"},
        {L"profile", L"ReaderType", Get, {}, L"0"},
        {L"profiles", L"Exists", Call, {L"99"}, L"False"},
        {L"profiles", L"Item", Get, {L"99"}, L"Nothing"},
        {L"profiles", L"Remove", Call, {L"99"}, L"error 800A0005"},
        {L"reader", L"LoadDefaults", Call, {24}, L"True"},
        {L"reader", L"BaudRate", Get, {}, L"9600"},
        {L"reader", L"Parity", Get, {}, L"N"},
        {L"reader", L"MarkCutOff", Get, {}, L"250"},
        {L"reader", L"Windows", Get, {}, L"object", L"windows"},
        {L"window3", L"StartRow", Put, {3}, L""},
        {L"window1", L"StartRow", Put, {1}, L""},
        {L"windows", L"Add", Call, {window3}, L""},
        {L"windows", L"Add", Call, {window1, 1}, L""},
        {L"windows", L"Count", Get, {}, L"2"},
        {L"windows", L"", Get, {1}, L"object", L"window"},
        {L"window", L"StartRow", Get, {}, L"1"},
        {L"windows", L"Item", Get, {5}, L"Nothing"},
        {L"barcode", L"Length", Put, {7}, L""},
        {L"reader", L"Barcodes", Get, {}, L"object", L"barcodes"},
        {L"barcodes", L"Add", Call, {barcode, L"id"}, L""},
        {L"barcodes", L"", Get, {L"id"}, L"object", L"barcode"},
        {L"barcode", L"Length", Get, {}, L"7"},
        {L"barcodes", L"Exists", Call, {L"id"}, L"True"},
        {L"barcodes", L"Count", Get, {}, L"1"},
        {L"reader", L"ReaderType", Put, {1}, L""},
        {L"reader", L"Printer", Get, {}, L"object", L"printer"},
        {L"printer", L"Enabled", Put, {true}, L""},
        {L"printer", L"Enabled", Get, {}, L"False"}, // an Apperson imprinter stays disabled
        {L"reader", L"ReaderType", Put, {2}, L""},
        {L"reader", L"Printer", Get, {}, L"object", L"printer"},
        {L"printer", L"BufferCount", Get, {}, L"1"},
        // As a script host passes them: lSheetCount and sReturn as references to Variants.
        {L"reader", L"Port", Put, {16}, L""},
        {L"reader", L"ReadBatch", Call, {false, 0, &count}, L"False"},
        {L"reader", L"ReadBatch", Call, {false, 0}, L"False"},
        {L"reader", L"SetError", Call, {nullptr}, L"False"},
        {L"reader", L"Firmware", Call, {&firmware}, L"False"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::wstring(row.on) + L"." + row.member);
        const Var result = invoke(V_DISPATCH(&objects[row.on]), row.member, row.kind, row.args);
        EXPECT_EQ(row.expected, shown(result));
        if (row.keep)
            objects[row.keep] = result;
    }
    EXPECT_EQ(VT_I4, V_VT(&count)) << "the variable takes the declared type";
    EXPECT_EQ(5, V_I4(&count)) << "no sheet was counted";
    EXPECT_EQ(L"kept", shown(firmware));
}

// What only the vtable shows: error info, the identity of child objects, a null array.
TEST_F(Client, TheVtableFaces)
{
    ComPtr<_clsZEBReaderProfiles> profiles;
    ASSERT_EQ(S_OK, reader->get_Profiles(&profiles));
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), profiles->Remove(Var(L"99")));
    ComPtr<ISupportErrorInfo> support;
    ComPtr<IErrorInfo> info;
    ASSERT_EQ(S_OK, profiles.As(&support));
    EXPECT_EQ(S_OK, support->InterfaceSupportsErrorInfo(IID__clsZEBReaderProfiles));
    ASSERT_EQ(S_OK, GetErrorInfo(0, &info));
    BSTR source = nullptr;
    info->GetSource(&source);
    EXPECT_STREQ(L"ZEBReader81", source);
    SysFreeString(source);
    ComPtr<_clsZEBReaderWindows> windows, again;
    reader->get_Windows(&windows);
    reader->get_Windows(&again);
    EXPECT_EQ(windows, again);

    // No sheet read yet: an array never dimensioned.
    SAFEARRAY unset{}, *side = &unset;
    EXPECT_EQ(S_OK, reader->get_Side1Array(&side));
    EXPECT_EQ(nullptr, side);
}

TEST_F(Client, ConnectionPointsAndConnectionsAreEnumerated)
{
    ComPtr<IConnectionPoint> found;
    ASSERT_EQ(S_OK, container->FindConnectionPoint(DIID___clsZEBReader, &found));
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_EQ(S_OK, container->EnumConnectionPoints(&points));
    IConnectionPoint* got[2] = {};
    ULONG fetched = 9;
    EXPECT_EQ(E_POINTER, points->Next(2, got, nullptr)) << "a count above one needs the fetched count";
    ASSERT_EQ(S_FALSE, points->Next(2, got, &fetched)) << "the one event interface";
    ASSERT_EQ(1u, fetched);
    EXPECT_EQ(found.Get(), got[0]);
    IID iid{};
    got[0]->GetConnectionInterface(&iid);
    EXPECT_EQ(DIID___clsZEBReader, iid);
    got[0]->Release();
    EXPECT_EQ(S_OK, points->Reset());
    ComPtr<IEnumConnectionPoints> clone;
    ASSERT_EQ(S_OK, points->Clone(&clone));
    EXPECT_EQ(S_OK, points->Skip(1));
    EXPECT_EQ(S_FALSE, points->Skip(1));
    ASSERT_EQ(S_OK, clone->Next(1, got, nullptr)) << "a clone keeps its own place";
    got[0]->Release();

    DWORD cookie = 0;
    ASSERT_EQ(S_OK, found->Advise(&sink, &cookie));
    ComPtr<IEnumConnections> connections;
    ASSERT_EQ(S_OK, found->EnumConnections(&connections));
    EXPECT_EQ(S_OK, found->Unadvise(cookie)) << "the enumeration is a snapshot";
    CONNECTDATA data[1] = {};
    ASSERT_EQ(S_OK, connections->Next(1, data, nullptr));
    EXPECT_EQ(cookie, data[0].dwCookie);
    EXPECT_EQ(static_cast<IUnknown*>(&sink), data[0].pUnk);
    data[0].pUnk->Release();
}

TEST_F(Client, BatchAgainstTheSimulatorWithAnEventSink)
{
    const char *mapped = std::getenv("ZEBREADER_TEST_PORT"), *simulated = std::getenv("ZEBREADER_TEST_MODEL");
    if (!mapped || !simulated)
        GTEST_SKIP() << "no simulator mapped";
    const int port = std::atoi(mapped), model = std::atoi(simulated);
    ComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
    ASSERT_EQ(S_OK, container->FindConnectionPoint(DIID___clsZEBReader, &point));
    ASSERT_EQ(S_OK, point->Advise(&sink, &cookie));
    VARIANT_BOOL ok = VARIANT_FALSE;
    ASSERT_EQ(S_OK, reader->LoadDefaults(static_cast<zebReaderType>(model), &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    // The form of the simulator's sample sheets: 12-column cards for the narrow scanners,
    // 40-column sheets, the second one duplex, for the others. ScanMark sizes its arrays by
    // the form, the others by their page: the arrays hold at least the form.
    const bool cards = model == 23 || model == 24 || model == 37;
    const short rows1 = sink.rows1 = cards ? 37 : 53, cols1 = sink.cols1 = cards ? 12 : 40;
    for (auto [put, size] : {std::pair{&_clsZEBReader::put_Side1Rows, rows1},
                             {&_clsZEBReader::put_Side1Cols, cols1},
                             {&_clsZEBReader::put_Side2Rows, short(cards ? 0 : 20)},
                             {&_clsZEBReader::put_Side2Cols, short(cards ? 0 : 40)}}) {
        if (size == 0)
            continue; // no side 2 on a card
        SAFEARRAYBOUND bound{2, 0};
        SAFEARRAY* a = SafeArrayCreate(VT_I2, 1, &bound);
        LONG at = 1;
        SafeArrayPutElement(a, &at, &size);
        EXPECT_EQ(S_OK, (reader.Get()->*put)(&a));
        SafeArrayDestroy(a);
    }
    // A pseudo-terminal carries eight bits without parity and has no handshake lines.
    const std::pair<const wchar_t*, Var> settings[] = {
        {L"Duplex", !cards}, {L"DuplexForm", !cards}, {L"Barcode", true}, {L"DataBits", 8},
        {L"Parity", L"N"},   {L"FlowControl", 0},     {L"Port", port},    {L"TimeOut", 2},
        {L"SleepTime", 1},   {L"Feeder", true}};
    for (const auto& [member, value] : settings)
        EXPECT_EQ(L"", shown(invoke(reader.Get(), member, Put, {value}))) << member;
    long count = 0;
    ASSERT_EQ(S_OK, reader->ReadBatch(VARIANT_FALSE, -1, &count, &ok));
    point->Unadvise(cookie);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(2, count);
    EXPECT_EQ(2, sink.starts);
    EXPECT_EQ(2, sink.ends);
    EXPECT_TRUE(sink.arraysTyped);
    // The first two sample sheets mark for mark; no side 2 on a card, the survey on side 2 of the
    // duplex sheet.
    ASSERT_EQ((cards ? std::vector{128634, 128432} : std::vector{218652, 216853}), sink.side1);
    EXPECT_EQ((cards ? std::vector{-1, -1} : std::vector{0, 21054}), sink.side2);
    // Only OpScan passes the sheets' barcodes on; the others leave one empty element.
    EXPECT_EQ(model == 2 ? L"0012345;0012346;" : L";;", sink.barcodes);
    SAFEARRAY* side = nullptr;
    ASSERT_EQ(S_OK, reader->get_Side1Array(&side));
    EXPECT_EQ(sink.side1[1], marks(side, rows1, cols1)) << "Side1Array holds the last sheet";
    SafeArrayDestroy(side);
}

} // namespace
