#pragma once

#include "rawsdk/Calls.h"

#include "cameraraw/RavenlightRawAPI.h"

#include <atomic>
#include <cstdint>
#include <utility>

namespace rawsdk {

/// Objects that there are.
extern std::atomic<uint64_t> liveObjects;

/// The name of an interface in records of calls.
std::string_view NameOf(REFIID identifier);

/// A counted object with interfaces, the first of which is its `IUnknown`. It begins with one reference.
template <typename First, typename... Rest>
class Object : public First, public Rest... {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    HRESULT QueryInterface(REFIID identifier, void** interface) final {
        return Answer({query_, NameOf(identifier)}, interface, [&] {
            IUnknown* const found = identifier == IID_IUnknown ? static_cast<First*>(this) : Find(identifier);
            if (found == nullptr) throw Failure{E_NOINTERFACE};
            found->AddRef();
            return found;
        });
    }
    ULONG AddRef() final { return ++references_; }
    ULONG Release() final {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

protected:
    /// @param query  the name of the operation `QueryInterface`; a literal
    explicit Object(std::string_view query) : query_(query) { ++liveObjects; }
    virtual ~Object() { --liveObjects; }

    /// The interface of an identifier that is not `IID_IUnknown`, without a new reference, or null.
    virtual IUnknown* Find(REFIID) { return nullptr; }

private:
    std::string_view query_;
    std::atomic<ULONG> references_ = 1;
};

/// A reference to an object.
template <typename Type>
class Ref {
public:
    Ref() = default;
    /// Takes over a reference.
    static Ref Own(Type* object) {
        Ref ref;
        ref.object_ = object;
        return ref;
    }
    /// Makes a reference of its own.
    static Ref Share(Type* object) {
        object->AddRef();
        return Own(object);
    }
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Ref& operator=(Ref&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Ref() {
        if (object_ != nullptr) object_->Release();
    }

    Type* Get() const { return object_; }
    Type* operator->() const { return object_; }
    Type& operator*() const { return *object_; }

private:
    Type* object_ = nullptr;
};

} // namespace rawsdk
