#include "automation/TypeLibrary.h"

#include "automation/Convert.h"

#include <cstring>
#include <map>
#include <mutex>
#include <vector>

namespace zebreader81::automation {

namespace {

HMODULE thisModule = nullptr;
std::mutex libraryMutex;
ITypeLib* library = nullptr;
std::map<GUID, ITypeInfo*, bool (*)(const GUID&, const GUID&)> infos([](const GUID& a, const GUID& b) {
    return std::memcmp(&a, &b, sizeof(GUID)) < 0;
});

// The VARTYPE a by-reference parameter points at, or VT_EMPTY when no conversion applies
// (VARIANT*, interfaces, records).
VARTYPE pointee(ITypeInfo* ti, const TYPEDESC& param)
{
    if (param.vt != VT_PTR || !param.lptdesc)
        return VT_EMPTY;
    const TYPEDESC& target = *param.lptdesc;
    switch (target.vt) {
    case VT_VARIANT:
    case VT_PTR:
    case VT_DISPATCH:
    case VT_UNKNOWN: return VT_EMPTY;
    case VT_SAFEARRAY:
        return target.lptdesc ? static_cast<VARTYPE>(VT_ARRAY | target.lptdesc->vt) : VARTYPE(VT_EMPTY);
    case VT_USERDEFINED: {
        ITypeInfo* ref = nullptr;
        VARTYPE vt = VT_EMPTY;
        if (SUCCEEDED(ti->GetRefTypeInfo(target.hreftype, &ref))) {
            TYPEATTR* attr = nullptr;
            if (SUCCEEDED(ref->GetTypeAttr(&attr))) {
                if (attr->typekind == TKIND_ENUM)
                    vt = VT_I4;
                ref->ReleaseTypeAttr(attr);
            }
            ref->Release();
        }
        return vt;
    }
    default: return target.vt;
    }
}

// One argument swapped for a by-reference value of the declared type.
struct Fixup {
    UINT slot;
    VARIANT original;
    VARIANT* target;
    VARIANT converted;
};

HRESULT convertInto(VARIANT& out, const VARIANT& in, VARTYPE want)
{
    VariantInit(&out);
    if (want & VT_ARRAY) {
        V_VT(&out) = want;
        if (V_VT(&in) == VT_EMPTY) {
            V_ARRAY(&out) = nullptr;
            return S_OK;
        }
        if (!(V_VT(&in) & VT_ARRAY))
            return DISP_E_TYPEMISMATCH;
        SAFEARRAY* source = (V_VT(&in) & VT_BYREF) ? *V_ARRAYREF(&in) : V_ARRAY(&in);
        try {
            V_ARRAY(&out) = coerceArray(source, static_cast<VARTYPE>(want & ~VT_ARRAY));
        } catch (...) {
            V_VT(&out) = VT_EMPTY;
            return DISP_E_TYPEMISMATCH;
        }
        return S_OK;
    }
    return VariantChangeType(&out, const_cast<VARIANT*>(&in), 0, want);
}

} // namespace

HMODULE moduleHandle() { return thisModule; }
void setModuleHandle(HMODULE module) { thisModule = module; }

std::wstring modulePath()
{
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD n = GetModuleFileNameW(thisModule, path.data(), static_cast<DWORD>(path.size()));
        if (n < path.size()) {
            path.resize(n);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

ITypeLib* typeLibrary()
{
    std::lock_guard lock(libraryMutex);
    if (!library) {
        const std::wstring path = modulePath();
        if (FAILED(LoadTypeLibEx(path.c_str(), REGKIND_NONE, &library)))
            library = nullptr;
    }
    return library;
}

ITypeInfo* typeInfo(REFIID iid)
{
    ITypeLib* lib = typeLibrary();
    if (!lib)
        return nullptr;
    std::lock_guard lock(libraryMutex);
    auto found = infos.find(iid);
    if (found != infos.end())
        return found->second;
    ITypeInfo* info = nullptr;
    if (FAILED(lib->GetTypeInfoOfGuid(iid, &info)))
        return nullptr;
    infos.emplace(iid, info);
    return info;
}

HRESULT invokeThroughTypeInfo(REFIID iid, void* self, DISPID id, WORD flags, DISPPARAMS* params,
                              VARIANT* result, EXCEPINFO* excep, UINT* argErr)
{
    ITypeInfo* ti = typeInfo(iid);
    if (!ti)
        return TYPE_E_ELEMENTNOTFOUND;
    std::vector<Fixup> fixups;
    std::vector<UINT> nulls;
    TYPEATTR* attr = nullptr;
    if (params && params->cArgs > 0 && SUCCEEDED(ti->GetTypeAttr(&attr))) {
        for (UINT f = 0; f < attr->cFuncs; ++f) {
            FUNCDESC* fd = nullptr;
            if (FAILED(ti->GetFuncDesc(f, &fd)))
                continue;
            if (fd->memid == id && (fd->invkind & flags)) {
                for (UINT slot = 0; slot < params->cArgs; ++slot) {
                    int param = static_cast<int>(params->cArgs) - 1 - static_cast<int>(slot);
                    if (slot < params->cNamedArgs)
                        param = params->rgdispidNamedArgs[slot] == DISPID_PROPERTYPUT
                                    ? fd->cParams - 1
                                    : static_cast<int>(params->rgdispidNamedArgs[slot]);
                    if (param < 0 || param >= fd->cParams)
                        continue;
                    const VARTYPE want = pointee(ti, fd->lprgelemdescParam[param].tdesc);
                    VARIANT& arg = params->rgvarg[slot];
                    // JScript's null (VT_NULL) where an object is declared means Nothing.
                    if (fd->lprgelemdescParam[param].tdesc.vt == VT_DISPATCH && V_VT(&arg) == VT_NULL) {
                        nulls.push_back(slot);
                        V_VT(&arg) = VT_DISPATCH;
                        V_DISPATCH(&arg) = nullptr;
                        continue;
                    }
                    if (want == VT_EMPTY || V_VT(&arg) == (want | VT_BYREF))
                        continue;
                    // A by-reference VARIANT is written back; a value passed where a reference
                    // is declared (an array assigned to a property) is only converted.
                    const bool variantRef = V_VT(&arg) == (VT_VARIANT | VT_BYREF) && V_VARIANTREF(&arg);
                    if (!variantRef && (V_VT(&arg) & VT_BYREF))
                        continue;
                    Fixup fix{slot, arg, variantRef ? const_cast<VARIANT*>(&deref(arg)) : nullptr, {}};
                    if (FAILED(convertInto(fix.converted, variantRef ? *fix.target : arg, want))) {
                        for (auto& done : fixups) {
                            params->rgvarg[done.slot] = done.original;
                            VariantClear(&done.converted);
                        }
                        for (UINT n : nulls)
                            V_VT(&params->rgvarg[n]) = VT_NULL;
                        ti->ReleaseFuncDesc(fd);
                        ti->ReleaseTypeAttr(attr);
                        if (argErr)
                            *argErr = slot;
                        return DISP_E_TYPEMISMATCH;
                    }
                    fixups.push_back(fix);
                }
                ti->ReleaseFuncDesc(fd);
                break;
            }
            ti->ReleaseFuncDesc(fd);
        }
        ti->ReleaseTypeAttr(attr);
    }
    for (auto& fix : fixups) {
        VARIANT& arg = params->rgvarg[fix.slot];
        V_VT(&arg) = static_cast<VARTYPE>(V_VT(&fix.converted) | VT_BYREF);
        V_BYREF(&arg) = &V_UI1(&fix.converted);
    }
    const HRESULT hr = ti->Invoke(self, id, flags, params, result, excep, argErr);
    for (UINT slot : nulls)
        V_VT(&params->rgvarg[slot]) = VT_NULL;
    for (auto& fix : fixups) {
        params->rgvarg[fix.slot] = fix.original;
        if (!fix.target) {
            VariantClear(&fix.converted);
            continue;
        }
        // The script's variable takes what the member left, in the declared type.
        VariantClear(fix.target);
        *fix.target = fix.converted;
    }
    return hr;
}

} // namespace zebreader81::automation
