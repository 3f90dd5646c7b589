#pragma once

#include "codecs/MediaFoundation.h"

#include <memory>

namespace CxWMF {

struct WMFReleaser {
    void operator()(IUnknown* object) const { object->Release(); }
};

/// Holds one reference to an object of COM.
template <typename T>
using WMFPointer = std::unique_ptr<T, WMFReleaser>;

/// Holds what `call` hands out through the pointer that it is given; nothing after a failure. A success
/// without an object counts as one.
template <typename T, typename Call>
HRESULT Obtain(WMFPointer<T>& pointer, const Call& call) {
    T* object = nullptr;
    const HRESULT result = call(&object);
    pointer.reset(SUCCEEDED(result) ? object : nullptr);
    return SUCCEEDED(result) && object == nullptr ? E_POINTER : result;
}

/// Asks an object for another of its interfaces, or an activation for its object.
template <typename T, typename Call>
HRESULT ObtainInterface(WMFPointer<T>& pointer, const Call& call) {
    return Obtain(pointer, [&](T** object) { return call(reinterpret_cast<void**>(object)); });
}

/// Makes a call and, if it fails, makes it once more.
template <typename Call>
HRESULT Twice(const Call& call) {
    const HRESULT result = call();
    return FAILED(result) ? call() : result;
}

} // namespace CxWMF
