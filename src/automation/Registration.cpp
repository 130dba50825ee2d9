#include "automation/Registration.h"

#include "automation/TypeLibrary.h"

#include <olectl.h>

#include <array>
#include <string>

namespace zebreader81::automation {

namespace {

struct ClassEntry {
    const CLSID* clsid;
    const wchar_t* name;
    Creator create;
};

const std::array<ClassEntry, 9> classes{{
    {&CLSID_clsZEBReader, L"clsZEBReader", createReader},
    {&CLSID_clsZEBReaderWindow, L"clsZEBReaderWindow", createWindow},
    {&CLSID_clsZEBReaderWindows, L"clsZEBReaderWindows", createWindows},
    {&CLSID_clsZEBReaderBarcode, L"clsZEBReaderBarcode", createBarcode},
    {&CLSID_clsZEBReaderBarcodes, L"clsZEBReaderBarcodes", createBarcodes},
    {&CLSID_clsZEBReaderPrinter, L"clsZEBReaderPrinter", createPrinter},
    {&CLSID_clsZEBReaderProfile, L"clsZEBReaderProfile", createProfile},
    {&CLSID_clsZEBReaderProfiles, L"clsZEBReaderProfiles", createProfiles},
    {&CLSID_EventSink, L"EventSink", createEventSink},
}};

std::wstring guidText(const GUID& guid)
{
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, 40);
    return text;
}

LSTATUS setValue(const std::wstring& key, const wchar_t* name, const std::wstring& value)
{
    HKEY handle = nullptr;
    LSTATUS rc =
        RegCreateKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &handle, nullptr);
    if (rc != ERROR_SUCCESS)
        return rc;
    rc = RegSetValueExW(handle, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                        static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(handle);
    return rc;
}

LSTATUS registerClass(const ClassEntry& entry, const std::wstring& path, const std::wstring& libid)
{
    const std::wstring clsid = guidText(*entry.clsid);
    const std::wstring progId = std::wstring(L"ZEBReader81.") + entry.name;
    const std::wstring key = L"CLSID\\" + clsid;
    for (auto rc :
         {setValue(key, nullptr, entry.name), setValue(key + L"\\InprocServer32", nullptr, path),
          setValue(key + L"\\InprocServer32", L"ThreadingModel", L"Apartment"),
          setValue(key + L"\\ProgID", nullptr, progId + L".1"),
          setValue(key + L"\\VersionIndependentProgID", nullptr, progId),
          setValue(key + L"\\TypeLib", nullptr, libid), setValue(key + L"\\Version", nullptr, L"1.0"),
          setValue(progId, nullptr, entry.name), setValue(progId + L"\\CLSID", nullptr, clsid),
          setValue(progId + L"\\CurVer", nullptr, progId + L".1"),
          setValue(progId + L".1", nullptr, entry.name), setValue(progId + L".1\\CLSID", nullptr, clsid)})
        if (rc != ERROR_SUCCESS)
            return rc;
    return ERROR_SUCCESS;
}

void unregisterClass(const ClassEntry& entry)
{
    const std::wstring progId = std::wstring(L"ZEBReader81.") + entry.name;
    RegDeleteTreeW(HKEY_CLASSES_ROOT, (L"CLSID\\" + guidText(*entry.clsid)).c_str());
    RegDeleteTreeW(HKEY_CLASSES_ROOT, progId.c_str());
    RegDeleteTreeW(HKEY_CLASSES_ROOT, (progId + L".1").c_str());
}

} // namespace

Creator creatorOf(REFCLSID clsid)
{
    for (const auto& entry : classes)
        if (clsid == *entry.clsid)
            return entry.create;
    return nullptr;
}

HRESULT registerServer()
{
    ITypeLib* lib = typeLibrary();
    if (!lib)
        return SELFREG_E_TYPELIB;
    std::wstring path = modulePath();
    HRESULT hr = RegisterTypeLib(lib, path.data(), nullptr);
    if (FAILED(hr))
        return SELFREG_E_TYPELIB;
    const std::wstring libid = guidText(LIBID_ZEBReader81);
    for (const auto& entry : classes) {
        if (registerClass(entry, path, libid) != ERROR_SUCCESS) {
            unregisterServer();
            return SELFREG_E_CLASS;
        }
    }
    return S_OK;
}

HRESULT unregisterServer()
{
    for (const auto& entry : classes)
        unregisterClass(entry);
    HRESULT hr = UnRegisterTypeLib(LIBID_ZEBReader81, 1, 0, LOCALE_NEUTRAL,
                                   sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32);
    return hr == TYPE_E_REGISTRYACCESS || SUCCEEDED(hr) ? S_OK : SELFREG_E_TYPELIB;
}

} // namespace zebreader81::automation
