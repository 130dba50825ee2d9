// The reader's connection point for its event interface, and the core event sink that fires
// each event to every connected sink through IDispatch, reading back the by-reference arguments.
#pragma once

#include "ZEBReader81_h.h"
#include "zebreader81/ReaderEvents.h"

#include <ocidl.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace zebreader81::automation {

/// IConnectionPoint for __clsZEBReader, living inside its container (the reader) and counted
/// with it.
class Connections final : public IConnectionPoint {
public:
    explicit Connections(IConnectionPointContainer* container) : container_(container) {}
    ~Connections();
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return container_->AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return container_->Release(); }
    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* iid) override;
    HRESULT STDMETHODCALLTYPE GetConnectionPointContainer(IConnectionPointContainer** out) override;
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) override;
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) override;
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections** out) override;

    /// Calls every sink's Invoke with the arguments (first argument first); failures of a
    /// sink are ignored, as a handler's error must not stop the reading cycle.
    void fire(DISPID id, std::vector<VARIANT> args);
    /// Drops every sink (the reader is going away).
    void clear();

private:
    struct Sink {
        DWORD cookie;
        IDispatch* sink;
    };
    IConnectionPointContainer* container_;
    std::vector<Sink> sinks_;
    DWORD nextCookie_ = 1;
};

/// An enumerator over the one connection point of a container.
HRESULT enumConnectionPoints(IConnectionPoint* point, IEnumConnectionPoints** out);

/// The core's event sink that raises the events through `connections`.
std::shared_ptr<ReaderEvents> makeEventBridge(Connections& connections);

} // namespace zebreader81::automation
