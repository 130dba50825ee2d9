// Host objects the core holds or calls: an IDispatch kept as the core's HostObject (answer key,
// translated data), and the host's error object called late-bound.
#pragma once

#include "zebreader81/ErrorHost.h"
#include "zebreader81/ReaderEvents.h"

#include <windows.h>

#include <oaidl.h>

#include <memory>

namespace zebreader81::automation {

/// A host's object held by the core; keeps one reference.
class DispatchObject final : public HostObject {
public:
    explicit DispatchObject(IDispatch* object);
    ~DispatchObject() override;
    DispatchObject(const DispatchObject&) = delete;
    DispatchObject& operator=(const DispatchObject&) = delete;
    IDispatch* get() const { return object_; }

private:
    IDispatch* object_;
};

/// The IDispatch behind a core HostObject (not AddRef'd), or nullptr.
IDispatch* dispatchOf(const std::shared_ptr<HostObject>& object);
/// A core HostObject over an IDispatch; nullptr for nullptr.
std::shared_ptr<HostObject> hostObjectOf(IDispatch* object);

/// An ErrorHost that calls the host's "Silent" and "RaiseError" by name; failures of those
/// calls throw (the reporter swallows them).
std::shared_ptr<ErrorHost> makeErrorHost(IDispatch* object);

} // namespace zebreader81::automation
