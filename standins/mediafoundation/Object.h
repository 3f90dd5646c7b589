#pragma once

#include "codecs/MediaFoundation.h"

#include <atomic>
#include <memory>
#include <type_traits>

namespace mediafoundation {

/// Objects of the library that live.
inline constinit std::atomic<uint32_t> liveObjects = 0;

template <typename Interface>
inline constexpr IID interfaceId = {};
template <>
inline constexpr IID interfaceId<IMFMediaType> = IID_IMFMediaType;
template <>
inline constexpr IID interfaceId<IMFMediaBuffer> = IID_IMFMediaBuffer;
template <>
inline constexpr IID interfaceId<IMFSample> = IID_IMFSample;
template <>
inline constexpr IID interfaceId<IMFActivate> = IID_IMFActivate;
template <>
inline constexpr IID interfaceId<IMFTransform> = IID_IMFTransform;
template <>
inline constexpr IID interfaceId<ICodecAPI> = IID_ICodecAPI;

/// An object of one or several interfaces. It begins with one reference, its maker's, and deletes itself with
/// the last. Any thread may count references.
template <typename First, typename... Others>
class Object : public First, public Others... {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    HRESULT QueryInterface(REFIID id, void** object) final {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (id == IID_IUnknown) *object = static_cast<First*>(this);
        Offer<First>(id, object);
        (Offer<Others>(id, object), ...);
        if (*object == nullptr) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG AddRef() final { return ++references_; }
    ULONG Release() final {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

protected:
    Object() { ++liveObjects; }
    virtual ~Object() { --liveObjects; }

private:
    template <typename Interface>
    void Offer(REFIID id, void** object) {
        if (id == interfaceId<Interface>) *object = static_cast<Interface*>(this);
        if constexpr (std::is_base_of_v<IMFAttributes, Interface>)
            if (id == IID_IMFAttributes) *object = static_cast<IMFAttributes*>(this);
    }

    std::atomic<ULONG> references_ = 1;
};

struct ReleaseObject {
    template <typename Interface>
    void operator()(Interface* object) const {
        object->Release();
    }
};

/// One reference.
template <typename Interface>
using Held = std::unique_ptr<Interface, ReleaseObject>;

/// Takes a reference of one's own.
template <typename Interface>
Held<Interface> Hold(Interface* object) {
    object->AddRef();
    return Held<Interface>(object);
}

/// Makes an object. Throws std::bad_alloc.
template <typename Class, typename... Arguments>
Held<Class> Make(Arguments&&... arguments) {
    return Held<Class>(new Class(std::forward<Arguments>(arguments)...));
}

} // namespace mediafoundation
