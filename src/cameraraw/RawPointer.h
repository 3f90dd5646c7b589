#pragma once

#include "cameraraw/automation/Automation.h"

#include <utility>

/// Holds one reference to an object of the SDK, and gives it back when it is assigned anew or ends.
template <typename Interface>
class RawPointer {
public:
    RawPointer() = default;
    /// Takes over a reference; null is fine.
    explicit RawPointer(Interface* owned) : object_(owned) {}
    RawPointer(RawPointer&& other) noexcept : object_(other.Detach()) {}
    RawPointer& operator=(RawPointer&& other) noexcept {
        if (this != &other) Reset(other.Detach());
        return *this;
    }
    ~RawPointer() { Reset(); }

    /// A reference of its own to an object of somebody else; null is fine.
    static RawPointer Share(Interface* object) {
        if (object != nullptr) object->AddRef();
        return RawPointer(object);
    }

    /// Takes over another reference, or none.
    void Reset(Interface* owned = nullptr) {
        Interface* const released = std::exchange(object_, owned);
        if (released != nullptr) released->Release();
    }
    /// Releases the object, and gives the place for a reference to the next one.
    Interface** Receive() {
        Reset();
        return &object_;
    }
    /// Hands the reference over to the caller.
    Interface* Detach() { return std::exchange(object_, nullptr); }

    Interface* Get() const { return object_; }
    Interface* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    Interface* object_ = nullptr;
};

/// Asks an object for another of its interfaces. What `out` held is released first.
template <typename Interface>
HRESULT QueryRaw(IUnknown* object, REFIID identifier, RawPointer<Interface>& out) {
    out.Reset();
    void* found = nullptr;
    const HRESULT result = object->QueryInterface(identifier, &found);
    out.Reset(static_cast<Interface*>(found));
    return result;
}
