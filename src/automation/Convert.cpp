#include "automation/Convert.h"

#include "zebreader81/AutomationError.h"

#include <cstring>
#include <memory>
#include <vector>

namespace zebreader81::automation {

namespace {

constexpr int32_t TypeMismatch = 13;

[[noreturn]] void typeMismatch() { throw AutomationError(TypeMismatch, "Type mismatch"); }

struct ArrayData {
    explicit ArrayData(SAFEARRAY* array) : array_(array)
    {
        if (FAILED(SafeArrayAccessData(array_, &data)))
            typeMismatch();
    }
    ~ArrayData() { SafeArrayUnaccessData(array_); }
    ArrayData(const ArrayData&) = delete;
    ArrayData& operator=(const ArrayData&) = delete;
    void* data = nullptr;

private:
    SAFEARRAY* array_;
};

struct ArrayOwner {
    void operator()(SAFEARRAY* a) const { SafeArrayDestroy(a); }
};
using OwnedArray = std::unique_ptr<SAFEARRAY, ArrayOwner>;

// Bounds in the order of the indices (leftmost dimension first).
std::vector<ArrayBounds> boundsOf(const SAFEARRAY* array)
{
    auto* a = const_cast<SAFEARRAY*>(array);
    std::vector<ArrayBounds> bounds;
    for (UINT d = 1; d <= SafeArrayGetDim(a); ++d) {
        LONG lower = 0, upper = -1;
        SafeArrayGetLBound(a, d, &lower);
        SafeArrayGetUBound(a, d, &upper);
        bounds.push_back({lower, upper});
    }
    return bounds;
}

SAFEARRAY* createArray(VARTYPE type, const std::vector<ArrayBounds>& bounds)
{
    std::vector<SAFEARRAYBOUND> sab;
    for (const auto& b : bounds)
        sab.push_back({static_cast<ULONG>(b.count()), b.lower});
    SAFEARRAY* array = SafeArrayCreate(type, static_cast<UINT>(sab.size()), sab.data());
    if (!array)
        throw std::bad_alloc();
    return array;
}

VARTYPE elementType(SAFEARRAY* array)
{
    VARTYPE type = VT_EMPTY;
    if (SUCCEEDED(SafeArrayGetVartype(array, &type)) && type != VT_EMPTY)
        return type;
    if (array->fFeatures & FADF_BSTR)
        return VT_BSTR;
    if (array->fFeatures & FADF_VARIANT)
        return VT_VARIANT;
    typeMismatch();
}

std::size_t elementCount(const std::vector<ArrayBounds>& bounds)
{
    std::size_t n = 1;
    for (const auto& b : bounds)
        n *= static_cast<std::size_t>(b.count());
    return bounds.empty() ? 0 : n;
}

// Core arrays keep the last index fastest; automation arrays the first.
template <class T, class Visit> void forEachCell(const SafeArray<T>& core, Visit&& visit)
{
    if (core.dims() == 1) {
        for (int32_t i = core.LBound(1); i <= core.UBound(1); ++i)
            visit(static_cast<std::size_t>(i - core.LBound(1)), i, 0);
        return;
    }
    const auto rows = static_cast<std::size_t>(core.UBound(1) - core.LBound(1) + 1);
    for (int32_t r = core.LBound(1); r <= core.UBound(1); ++r)
        for (int32_t c = core.LBound(2); c <= core.UBound(2); ++c)
            visit(static_cast<std::size_t>(r - core.LBound(1)) +
                      static_cast<std::size_t>(c - core.LBound(2)) * rows,
                  r, c);
}

template <class T> SafeArray<T> coreLike(const std::vector<ArrayBounds>& b)
{
    if (b.size() == 1)
        return SafeArray<T>::vector(b[0].lower, b[0].upper);
    if (b.size() == 2)
        return SafeArray<T>::matrix(b[0].lower, b[0].upper, b[1].lower, b[1].upper);
    typeMismatch();
}

template <class T> std::vector<ArrayBounds> coreBounds(const SafeArray<T>& core)
{
    std::vector<ArrayBounds> b;
    for (int d = 1; d <= core.dims(); ++d)
        b.push_back({core.LBound(d), core.UBound(d)});
    return b;
}

// The array itself when it already holds `type`, else a converted copy owned by `keep`.
SAFEARRAY* asType(const SAFEARRAY* value, VARTYPE type, OwnedArray& keep)
{
    auto* array = const_cast<SAFEARRAY*>(value);
    if (elementType(array) == type)
        return array;
    keep.reset(coerceArray(array, type));
    return keep.get();
}

} // namespace

std::wstring widen(const std::string& text)
{
    if (text.empty())
        return {};
    const int n = MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(n), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), wide.data(), n);
    return wide;
}

std::string narrow(const wchar_t* text, std::size_t length)
{
    if (!text || length == 0)
        return {};
    const int n =
        WideCharToMultiByte(CP_ACP, 0, text, static_cast<int>(length), nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<std::size_t>(n), '\0');
    WideCharToMultiByte(CP_ACP, 0, text, static_cast<int>(length), out.data(), n, nullptr, nullptr);
    return out;
}

BSTR toBstr(const std::string& text)
{
    const std::wstring wide = widen(text);
    BSTR out = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    if (!out)
        throw std::bad_alloc();
    return out;
}

std::string fromBstr(BSTR text) { return narrow(text, text ? SysStringLen(text) : 0); }

SAFEARRAY* toSafeArray(const SafeArray<int16_t>& value)
{
    if (value.empty())
        return nullptr;
    OwnedArray array(createArray(VT_I2, coreBounds(value)));
    {
        ArrayData data(array.get());
        auto* cells = static_cast<SHORT*>(data.data);
        if (value.dims() == 1)
            forEachCell(value, [&](std::size_t at, int32_t i, int32_t) { cells[at] = value(i); });
        else
            forEachCell(value, [&](std::size_t at, int32_t r, int32_t c) { cells[at] = value(r, c); });
    }
    return array.release();
}

SAFEARRAY* toSafeArray(const SafeArray<std::string>& value)
{
    if (value.empty())
        return nullptr;
    OwnedArray array(createArray(VT_BSTR, coreBounds(value)));
    {
        ArrayData data(array.get());
        auto* cells = static_cast<BSTR*>(data.data);
        if (value.dims() == 1)
            forEachCell(value, [&](std::size_t at, int32_t i, int32_t) { cells[at] = toBstr(value(i)); });
        else
            forEachCell(value,
                        [&](std::size_t at, int32_t r, int32_t c) { cells[at] = toBstr(value(r, c)); });
    }
    return array.release();
}

SafeArray<int16_t> shortsFrom(const SAFEARRAY* value)
{
    if (!value)
        return {};
    OwnedArray keep;
    SAFEARRAY* array = asType(value, VT_I2, keep);
    auto core = coreLike<int16_t>(boundsOf(array));
    ArrayData data(array);
    const auto* cells = static_cast<const SHORT*>(data.data);
    if (core.dims() == 1)
        forEachCell(core, [&](std::size_t at, int32_t i, int32_t) { core(i) = cells[at]; });
    else
        forEachCell(core, [&](std::size_t at, int32_t r, int32_t c) { core(r, c) = cells[at]; });
    return core;
}

SafeArray<std::string> stringsFrom(const SAFEARRAY* value)
{
    if (!value)
        return {};
    OwnedArray keep;
    SAFEARRAY* array = asType(value, VT_BSTR, keep);
    auto core = coreLike<std::string>(boundsOf(array));
    ArrayData data(array);
    const auto* cells = static_cast<const BSTR*>(data.data);
    if (core.dims() == 1)
        forEachCell(core, [&](std::size_t at, int32_t i, int32_t) { core(i) = fromBstr(cells[at]); });
    else
        forEachCell(core, [&](std::size_t at, int32_t r, int32_t c) { core(r, c) = fromBstr(cells[at]); });
    return core;
}

SAFEARRAY* coerceArray(SAFEARRAY* source, VARTYPE type)
{
    if (!source)
        return nullptr;
    const VARTYPE from = elementType(source);
    const auto bounds = boundsOf(source);
    OwnedArray target(createArray(type, bounds));
    const std::size_t n = elementCount(bounds);
    ArrayData in(source);
    ArrayData out(target.get());
    const auto inSize = SafeArrayGetElemsize(source);
    const auto outSize = SafeArrayGetElemsize(target.get());
    for (std::size_t i = 0; i < n; ++i) {
        void* cellIn = static_cast<char*>(in.data) + i * inSize;
        void* cellOut = static_cast<char*>(out.data) + i * outSize;
        VARIANT ref;
        VariantInit(&ref);
        if (from == VT_VARIANT) {
            V_VT(&ref) = VT_VARIANT | VT_BYREF;
            V_VARIANTREF(&ref) = static_cast<VARIANT*>(cellIn);
        } else {
            V_VT(&ref) = static_cast<VARTYPE>(from | VT_BYREF);
            V_BYREF(&ref) = cellIn;
        }
        VARIANT value;
        VariantInit(&value);
        if (FAILED(VariantCopyInd(&value, &ref)))
            typeMismatch();
        if (type == VT_VARIANT) {
            *static_cast<VARIANT*>(cellOut) = value;
            continue;
        }
        if (FAILED(VariantChangeType(&value, &value, 0, type))) {
            VariantClear(&value);
            typeMismatch();
        }
        // The converted value's storage moves into the cell (a BSTR is handed over, not copied).
        std::memcpy(cellOut, &V_UI1(&value), outSize);
    }
    return target.release();
}

const VARIANT& deref(const VARIANT& value)
{
    if (V_VT(&value) == (VT_VARIANT | VT_BYREF) && V_VARIANTREF(&value))
        return deref(*V_VARIANTREF(&value));
    return value;
}

bool isGiven(const VARIANT& value)
{
    const VARIANT& v = deref(value);
    return !(V_VT(&v) == VT_ERROR && V_ERROR(&v) == DISP_E_PARAMNOTFOUND) && V_VT(&v) != VT_EMPTY;
}

CollectionIndex indexFrom(const VARIANT& value)
{
    const VARIANT& v = deref(value);
    VARIANT text;
    VariantInit(&text);
    if ((V_VT(&v) & ~VT_BYREF) == VT_BSTR) {
        if (FAILED(VariantCopyInd(&text, const_cast<VARIANT*>(&v))))
            typeMismatch();
        std::string key = fromBstr(V_BSTR(&text));
        VariantClear(&text);
        return CollectionIndex(std::move(key));
    }
    VARIANT number;
    VariantInit(&number);
    if (FAILED(VariantChangeType(&number, const_cast<VARIANT*>(&v), 0, VT_I4)))
        typeMismatch();
    return CollectionIndex(static_cast<int32_t>(V_I4(&number)));
}

std::optional<CollectionIndex> optionalIndex(const VARIANT& value)
{
    if (!isGiven(value))
        return std::nullopt;
    return indexFrom(value);
}

} // namespace zebreader81::automation
