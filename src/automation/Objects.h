// The COM classes of the DLL: creation for the class factories, wrapping of core objects
// handed out by other objects, and the way back from a host's interface to our core object.
#pragma once

#include "ZEBReader81_h.h"
#include "zebreader81/clsZEBReaderBarcodes.h"
#include "zebreader81/clsZEBReaderPrinter.h"
#include "zebreader81/clsZEBReaderProfiles.h"
#include "zebreader81/clsZEBReaderWindows.h"

#include <memory>

namespace zebreader81::automation {

/// Creates a new object of the class and queries it for riid (class factory use).
using Creator = HRESULT (*)(REFIID riid, void** out);
HRESULT createReader(REFIID riid, void** out);
HRESULT createWindow(REFIID riid, void** out);
HRESULT createWindows(REFIID riid, void** out);
HRESULT createBarcode(REFIID riid, void** out);
HRESULT createBarcodes(REFIID riid, void** out);
HRESULT createPrinter(REFIID riid, void** out);
HRESULT createProfile(REFIID riid, void** out);
HRESULT createProfiles(REFIID riid, void** out);
HRESULT createEventSink(REFIID riid, void** out);

/// COM objects over existing core objects (one reference; nullptr core gives nullptr).
_clsZEBReaderWindow* wrap(std::shared_ptr<clsZEBReaderWindow> core);
_clsZEBReaderWindows* wrap(std::shared_ptr<clsZEBReaderWindows> core);
_clsZEBReaderBarcode* wrap(std::shared_ptr<clsZEBReaderBarcode> core);
_clsZEBReaderBarcodes* wrap(std::shared_ptr<clsZEBReaderBarcodes> core);
_clsZEBReaderPrinter* wrap(std::shared_ptr<clsZEBReaderPrinter> core);
_clsZEBReaderProfile* wrap(std::shared_ptr<clsZEBReaderProfile> core);
_clsZEBReaderProfiles* wrap(std::shared_ptr<clsZEBReaderProfiles> core);

/// The core object behind an interface of ours; nullptr for a foreign object.
std::shared_ptr<clsZEBReaderWindow> coreOf(_clsZEBReaderWindow* object);
std::shared_ptr<clsZEBReaderBarcode> coreOf(_clsZEBReaderBarcode* object);

/// Queries a fresh object for riid and drops the creation reference.
template <class Itf> HRESULT handOut(Itf* object, REFIID riid, void** out)
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    if (!object)
        return E_OUTOFMEMORY;
    const HRESULT hr = object->QueryInterface(riid, out);
    object->Release();
    return hr;
}

} // namespace zebreader81::automation
