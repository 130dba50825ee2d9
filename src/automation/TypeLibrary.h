// The type library embedded in this DLL, and IDispatch::Invoke through it.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <string>

namespace zebreader81::automation {

/// The DLL's own module handle (set by DllMain).
HMODULE moduleHandle();
void setModuleHandle(HMODULE module);
/// Full path of this DLL.
std::wstring modulePath();

/// The embedded type library (resource TYPELIB 1), loaded once; nullptr when it cannot be.
ITypeLib* typeLibrary();
/// Type info of an interface of the library (not AddRef'd), or nullptr.
ITypeInfo* typeInfo(REFIID iid);

/// ITypeInfo::Invoke on `self`, first turning by-reference VARIANT arguments into the
/// by-reference type the member declares (long*, BSTR*, SAFEARRAY(short)*...) and writing the
/// results back afterwards: script hosts pass every variable that way.
HRESULT invokeThroughTypeInfo(REFIID iid, void* self, DISPID id, WORD flags, DISPPARAMS* params,
                              VARIANT* result, EXCEPINFO* excep, UINT* argErr);

} // namespace zebreader81::automation
