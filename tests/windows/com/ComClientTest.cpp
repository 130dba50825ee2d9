// A C++ client of the registered ZEBReader81.dll: the vtable and IDispatch faces, error info,
// and (with a simulator mapped to ZEBREADER_TEST_PORT, model ZEBREADER_TEST_MODEL) a batch with
// an event sink that rejects the first sheet and cancels after the second.
#include "ZEBReader81_h.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

int envNumber(const char* name)
{
    const char* v = std::getenv(name);
    return v ? std::atoi(v) : 0;
}

std::wstring text(BSTR b)
{
    std::wstring s = b ? std::wstring(b, SysStringLen(b)) : std::wstring();
    SysFreeString(b);
    return s;
}

VARIANT textArg(const wchar_t* s)
{
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_BSTR;
    V_BSTR(&v) = SysAllocString(s);
    return v;
}

template <class T> struct Ptr {
    T* p = nullptr;
    ~Ptr()
    {
        if (p)
            p->Release();
    }
    T* operator->() const { return p; }
    T** put() { return &p; }
};

struct Client : ::testing::Test {
    Ptr<_clsZEBReader> reader;
    void SetUp() override
    {
        ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_clsZEBReader, nullptr, CLSCTX_INPROC_SERVER, IID__clsZEBReader,
                                         reinterpret_cast<void**>(reader.put())));
    }
    void TearDown() override
    {
        if (reader.p)
            reader.p->Release();
        reader.p = nullptr;
        CoUninitialize();
    }
    DISPID dispid(const wchar_t* name)
    {
        DISPID id = DISPID_UNKNOWN;
        auto* n = const_cast<LPOLESTR>(name);
        EXPECT_EQ(S_OK, reader->GetIDsOfNames(IID_NULL, &n, 1, LOCALE_USER_DEFAULT, &id)) << "no member";
        return id;
    }
};

TEST_F(Client, PropertiesProfilesAndCollectionsThroughTheVtable)
{
    EXPECT_EQ(S_OK, reader->put_ReaderType(zebReaderTypePDIVMR138));
    BSTR name = nullptr;
    ASSERT_EQ(S_OK, reader->get_ReaderName(&name));
    EXPECT_EQ(L"Peripheral Dynamics Inc. VMR138", text(name));
    VARIANT_BOOL ok = VARIANT_FALSE;
    EXPECT_EQ(S_OK, reader->LoadDefaults(zebReaderTypePDIVMR138, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    short cutOff = 0;
    reader->get_MarkCutOff(&cutOff);
    EXPECT_EQ(250, cutOff);

    Ptr<_clsZEBReaderProfiles> profiles;
    ASSERT_EQ(S_OK, reader->get_Profiles(profiles.put()));
    long count = 0;
    profiles->get_Count(&count);
    EXPECT_EQ(42, count);
    VARIANT key = textArg(L"37");
    Ptr<_clsZEBReaderProfile> acp;
    ASSERT_EQ(S_OK, profiles->get_Item(key, acp.put()));
    ASSERT_NE(nullptr, acp.p);
    ASSERT_EQ(S_OK, acp->get_ReaderName(&name));
    EXPECT_EQ(L"Chatsworth Data ACP-100", text(name));
    VariantClear(&key);

    // The same child object every time, and a window created by the host goes in.
    Ptr<_clsZEBReaderWindows> windows, again;
    reader->get_Windows(windows.put());
    reader->get_Windows(again.put());
    EXPECT_EQ(windows.p, again.p);
    Ptr<_clsZEBReaderWindow> window;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_clsZEBReaderWindow, nullptr, CLSCTX_INPROC_SERVER,
                                     IID__clsZEBReaderWindow, reinterpret_cast<void**>(window.put())));
    window->put_NumCols(12);
    VARIANT missing;
    VariantInit(&missing);
    V_VT(&missing) = VT_ERROR;
    V_ERROR(&missing) = DISP_E_PARAMNOTFOUND;
    EXPECT_EQ(S_OK, windows->Add(window.p, missing, missing));
    Ptr<_clsZEBReaderWindow> first, beyond;
    windows->get_Item(1, first.put());
    short cols = 0;
    first->get_NumCols(&cols);
    EXPECT_EQ(12, cols);
    EXPECT_EQ(S_OK, windows->get_Item(9, beyond.put()));
    EXPECT_EQ(nullptr, beyond.p);
}

TEST_F(Client, FormGeometryKeepsBoundsAndValues)
{
    SAFEARRAYBOUND bound{3, 0};
    SAFEARRAY* rows = SafeArrayCreate(VT_I2, 1, &bound);
    short values[] = {0, 5, 9};
    for (LONG i = 0; i < 3; ++i)
        SafeArrayPutElement(rows, &i, &values[i]);
    EXPECT_EQ(S_OK, reader->put_Side1Rows(&rows));
    SafeArrayDestroy(rows);
    SAFEARRAY* back = nullptr;
    ASSERT_EQ(S_OK, reader->get_Side1Rows(&back));
    ASSERT_NE(nullptr, back);
    LONG upper = 0;
    SafeArrayGetUBound(back, 1, &upper);
    EXPECT_EQ(2, upper);
    short v = 0;
    LONG at = 2;
    SafeArrayGetElement(back, &at, &v);
    EXPECT_EQ(9, v);
    SafeArrayDestroy(back);
    SAFEARRAY* side = reinterpret_cast<SAFEARRAY*>(1);
    EXPECT_EQ(S_OK, reader->get_Side1Array(&side));
    EXPECT_EQ(nullptr, side) << "no sheet read yet: an array never dimensioned";
}

TEST_F(Client, LateBoundByReferenceVariantsAreConvertedAndWrittenBack)
{
    // As a script host passes them: lSheetCount and sReturn as references to Variants.
    VARIANT count;
    VariantInit(&count);
    V_VT(&count) = VT_I2;
    V_I2(&count) = 5;
    VARIANT args[3];
    VariantInit(&args[0]);
    V_VT(&args[0]) = VT_VARIANT | VT_BYREF;
    V_VARIANTREF(&args[0]) = &count;
    VariantInit(&args[1]);
    V_VT(&args[1]) = VT_I4;
    V_I4(&args[1]) = 0;
    VariantInit(&args[2]);
    V_VT(&args[2]) = VT_BOOL;
    V_BOOL(&args[2]) = VARIANT_FALSE;
    DISPPARAMS params{args, nullptr, 3, 0};
    VARIANT result;
    VariantInit(&result);
    reader->put_Port(16);
    EXPECT_EQ(S_OK, reader->Invoke(dispid(L"ReadBatch"), IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                   &params, &result, nullptr, nullptr));
    EXPECT_EQ(VT_BOOL, V_VT(&result));
    EXPECT_EQ(VT_I4, V_VT(&count)) << "the variable takes the declared type";
    EXPECT_EQ(5, V_I4(&count)) << "no sheet was counted";

    VARIANT firmware = textArg(L"kept");
    VARIANT ref;
    VariantInit(&ref);
    V_VT(&ref) = VT_VARIANT | VT_BYREF;
    V_VARIANTREF(&ref) = &firmware;
    DISPPARAMS one{&ref, nullptr, 1, 0};
    EXPECT_EQ(S_OK, reader->Invoke(dispid(L"Firmware"), IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &one,
                                   &result, nullptr, nullptr));
    EXPECT_EQ(VARIANT_FALSE, V_BOOL(&result));
    EXPECT_EQ(std::wstring(L"kept"), V_BSTR(&firmware));
    VariantClear(&firmware);
}

TEST_F(Client, RaisedErrorsCarryErrorInfo)
{
    Ptr<_clsZEBReaderProfiles> profiles;
    reader->get_Profiles(profiles.put());
    VARIANT key = textArg(L"99");
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), profiles->Remove(key));
    Ptr<ISupportErrorInfo> support;
    ASSERT_EQ(S_OK, profiles->QueryInterface(IID_ISupportErrorInfo, reinterpret_cast<void**>(support.put())));
    EXPECT_EQ(S_OK, support->InterfaceSupportsErrorInfo(IID__clsZEBReaderProfiles));
    Ptr<IErrorInfo> info;
    ASSERT_EQ(S_OK, GetErrorInfo(0, info.put()));
    BSTR source = nullptr;
    info->GetSource(&source);
    EXPECT_EQ(L"ZEBReader81", text(source));

    DISPID remove = DISPID_UNKNOWN;
    auto* name = const_cast<LPOLESTR>(L"Remove");
    profiles->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &remove);
    DISPPARAMS params{&key, nullptr, 1, 0};
    EXCEPINFO excep{};
    EXPECT_EQ(DISP_E_EXCEPTION, profiles->Invoke(remove, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                                 &params, nullptr, &excep, nullptr));
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), excep.scode);
    SysFreeString(excep.bstrSource);
    SysFreeString(excep.bstrDescription);
    SysFreeString(excep.bstrHelpFile);
    VariantClear(&key);
}

// Rows, columns and marked cells of a side array (all zero for none).
struct Shape {
    LONG rows = 0, cols = 0;
    int marked = 0;
};

Shape shapeOf(SAFEARRAY* side)
{
    Shape s;
    if (!side || SafeArrayGetDim(side) != 2)
        return s;
    SafeArrayGetUBound(side, 1, &s.rows);
    SafeArrayGetUBound(side, 2, &s.cols);
    short* cells = nullptr;
    if (SUCCEEDED(SafeArrayAccessData(side, reinterpret_cast<void**>(&cells)))) {
        for (ULONG i = 0; i < side->rgsabound[0].cElements * side->rgsabound[1].cElements; ++i)
            s.marked += cells[i] > 0;
        SafeArrayUnaccessData(side);
    }
    return s;
}

std::wstring joined(SAFEARRAY* texts)
{
    std::wstring all;
    LONG lower = 0, upper = -1;
    if (!texts || FAILED(SafeArrayGetLBound(texts, 1, &lower)) ||
        FAILED(SafeArrayGetUBound(texts, 1, &upper)))
        return all;
    for (LONG i = lower; i <= upper; ++i) {
        BSTR text = nullptr;
        SafeArrayGetElement(texts, &i, &text);
        all += (i > lower ? L"," : L"") + ::text(text);
    }
    return all;
}

SAFEARRAY* geometry(short count)
{
    SAFEARRAYBOUND bound{2, 0};
    SAFEARRAY* a = SafeArrayCreate(VT_I2, 1, &bound);
    LONG at = 1;
    SafeArrayPutElement(a, &at, &count);
    return a;
}

// Counts the events and answers through their by-reference arguments.
class Sink final : public IDispatch {
public:
    _clsZEBReader* reader = nullptr;
    int starts = 0, ends = 0;
    std::vector<Shape> side1, side2;
    std::wstring barcodes;
    bool arraysTyped = true;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override
    {
        if (riid == IID_IUnknown || riid == IID_IDispatch || riid == DIID___clsZEBReader) {
            *out = this;
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* n) override
    {
        *n = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*,
                                     UINT*) override
    {
        // Arguments arrive last first.
        switch (id) {
        case 1: ++starts; break;
        case 2:
            arraysTyped = arraysTyped && V_VT(&p->rgvarg[3]) == (VT_BYREF | VT_ARRAY | VT_I2) &&
                          V_VT(&p->rgvarg[2]) == (VT_BYREF | VT_ARRAY | VT_I2) &&
                          V_VT(&p->rgvarg[1]) == (VT_BYREF | VT_ARRAY | VT_BSTR) &&
                          V_VT(&p->rgvarg[0]) == (VT_BYREF | VT_BOOL);
            side1.push_back(shapeOf(*V_ARRAYREF(&p->rgvarg[3])));
            side2.push_back(shapeOf(*V_ARRAYREF(&p->rgvarg[2])));
            barcodes += joined(*V_ARRAYREF(&p->rgvarg[1])) + L";";
            if (side1.size() == 1) {
                reader->RejectPage();
                *V_BOOLREF(&p->rgvarg[0]) = VARIANT_TRUE;
            }
            break;
        case 3:
            if (++ends == 2)
                *V_BOOLREF(&p->rgvarg[0]) = VARIANT_TRUE;
            break;
        default: break;
        }
        return S_OK;
    }
};

TEST_F(Client, ConnectionPointsAndConnectionsAreEnumerated)
{
    Ptr<IConnectionPointContainer> container;
    ASSERT_EQ(S_OK, reader->QueryInterface(IID_IConnectionPointContainer,
                                           reinterpret_cast<void**>(container.put())));
    Ptr<IConnectionPoint> found;
    ASSERT_EQ(S_OK, container->FindConnectionPoint(DIID___clsZEBReader, found.put()));
    Ptr<IEnumConnectionPoints> points;
    ASSERT_EQ(S_OK, container->EnumConnectionPoints(points.put()));
    IConnectionPoint* got[2] = {};
    ULONG fetched = 9;
    EXPECT_EQ(E_POINTER, points->Next(2, got, nullptr)) << "a count above one needs the fetched count";
    ASSERT_EQ(S_FALSE, points->Next(2, got, &fetched)) << "the one event interface";
    ASSERT_EQ(1u, fetched);
    EXPECT_EQ(found.p, got[0]);
    IID iid{};
    got[0]->GetConnectionInterface(&iid);
    EXPECT_EQ(DIID___clsZEBReader, iid);
    got[0]->Release();
    EXPECT_EQ(S_FALSE, points->Next(1, got, &fetched));
    EXPECT_EQ(0u, fetched);
    EXPECT_EQ(S_OK, points->Reset());
    Ptr<IEnumConnectionPoints> clone;
    ASSERT_EQ(S_OK, points->Clone(clone.put()));
    EXPECT_EQ(S_OK, points->Skip(1));
    EXPECT_EQ(S_FALSE, points->Skip(1));
    ASSERT_EQ(S_OK, clone->Next(1, got, nullptr)) << "a clone keeps its own place";
    got[0]->Release();

    Sink sink;
    DWORD cookie = 0;
    ASSERT_EQ(S_OK, found->Advise(&sink, &cookie));
    Ptr<IEnumConnections> connections;
    ASSERT_EQ(S_OK, found->EnumConnections(connections.put()));
    EXPECT_EQ(S_OK, found->Unadvise(cookie)) << "the enumeration is a snapshot";
    CONNECTDATA data[2] = {};
    ASSERT_EQ(S_FALSE, connections->Next(2, data, &fetched));
    ASSERT_EQ(1u, fetched);
    EXPECT_EQ(cookie, data[0].dwCookie);
    EXPECT_EQ(static_cast<IUnknown*>(&sink), data[0].pUnk);
    data[0].pUnk->Release();
}

TEST_F(Client, BatchAgainstTheSimulatorWithAnEventSink)
{
    const int port = envNumber("ZEBREADER_TEST_PORT"), model = envNumber("ZEBREADER_TEST_MODEL");
    if (port == 0 || model == 0)
        GTEST_SKIP() << "no simulator mapped";
    Sink sink;
    sink.reader = reader.p;
    Ptr<IConnectionPointContainer> container;
    ASSERT_EQ(S_OK, reader->QueryInterface(IID_IConnectionPointContainer,
                                           reinterpret_cast<void**>(container.put())));
    Ptr<IConnectionPoint> point;
    ASSERT_EQ(S_OK, container->FindConnectionPoint(DIID___clsZEBReader, point.put()));
    DWORD cookie = 0;
    ASSERT_EQ(S_OK, point->Advise(&sink, &cookie));
    // The sink lives on this stack: disconnected before it goes, whatever fails below.
    struct Unadvise {
        IConnectionPoint* point;
        DWORD cookie;
        ~Unadvise() { point->Unadvise(cookie); }
    } unadvise{point.p, cookie};

    VARIANT_BOOL ok = VARIANT_FALSE;
    ASSERT_EQ(S_OK, reader->LoadDefaults(static_cast<zebReaderType>(model), &ok));
    // The form of the simulator's sample sheets: 12-column cards for the narrow scanners,
    // 40-column sheets, the second one duplex, for the others. ScanMark sizes its arrays by
    // the form, the others by their page: the arrays hold at least the form.
    const bool cards = model == 23 || model == 24 || model == 37;
    const short rows1 = cards ? 37 : 53, cols1 = cards ? 12 : 40;
    using Put = HRESULT (STDMETHODCALLTYPE _clsZEBReader::*)(SAFEARRAY**);
    std::vector<std::pair<Put, short>> form{{&_clsZEBReader::put_Side1Rows, rows1},
                                            {&_clsZEBReader::put_Side1Cols, cols1}};
    if (!cards)
        form.insert(form.end(), {{&_clsZEBReader::put_Side2Rows, 20}, {&_clsZEBReader::put_Side2Cols, 40}});
    for (auto [put, size] : form) {
        SAFEARRAY* a = geometry(size);
        EXPECT_EQ(S_OK, (reader.p->*put)(&a));
        SafeArrayDestroy(a);
    }
    reader->put_Duplex(cards ? VARIANT_FALSE : VARIANT_TRUE);
    reader->put_DuplexForm(cards ? VARIANT_FALSE : VARIANT_TRUE);
    reader->put_Barcode(VARIANT_TRUE);
    // A pseudo-terminal carries eight bits without parity and has no handshake lines.
    reader->put_DataBits(zebReaderDataBits8);
    BSTR none = SysAllocString(L"N");
    reader->put_Parity(none);
    SysFreeString(none);
    reader->put_FlowControl(zebReaderFlowControlNone);
    reader->put_Port(static_cast<short>(port));
    reader->put_TimeOut(2);
    reader->put_SleepTime(1);
    reader->put_Feeder(VARIANT_TRUE);
    long count = 0;
    ASSERT_EQ(S_OK, reader->ReadBatch(VARIANT_FALSE, -1, &count, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(2, count);
    EXPECT_EQ(2, sink.starts);
    EXPECT_EQ(2, sink.ends);
    ASSERT_EQ(2u, sink.side1.size());
    EXPECT_TRUE(sink.arraysTyped);
    for (const Shape& s : sink.side1) {
        EXPECT_GE(s.rows, rows1);
        EXPECT_GE(s.cols, cols1);
        EXPECT_GT(s.marked, 50);
    }
    if (cards) {
        EXPECT_EQ(0, sink.side2[1].rows) << "no side 2 on a card";
    } else {
        EXPECT_GE(sink.side2[1].rows, 20);
        EXPECT_GE(sink.side2[1].cols, 40);
        EXPECT_EQ(20, sink.side2[1].marked) << "the survey on side 2 of the duplex sheet";
    }
    // Only OpScan passes the sheets' barcodes on; the others leave one empty element.
    EXPECT_EQ(model == 2 ? L"0012345;0012346;" : L";;", sink.barcodes);
    VARIANT_BOOL cancel = VARIANT_FALSE;
    reader->get_CancelScan(&cancel);
    EXPECT_EQ(VARIANT_TRUE, cancel);
    SAFEARRAY* side = nullptr;
    ASSERT_EQ(S_OK, reader->get_Side1Array(&side));
    const Shape last = shapeOf(side);
    SafeArrayDestroy(side);
    EXPECT_EQ(sink.side1[1].rows, last.rows) << "Side1Array holds the last sheet";
    EXPECT_EQ(sink.side1[1].marked, last.marked);
}

} // namespace
