#pragma once

#include "cameraraw/scripted/ScriptedRaw.h"

#include <atomic>
#include <string>
#include <string_view>
#include <utility>

/// Enters a call of an object. What there is no memory to enter is left out, and succeeds.
/// @return its result
HRESULT Call(std::string_view object, std::string_view operation) noexcept;
/// Enters the end of an object, as far as there is memory.
void NoteEnd(std::string_view object) noexcept;
/// Counts a living object in or out.
void CountObject(int change);
/// Whether a call is to give no object.
bool IsGivingNull(std::string_view object, std::string_view operation);

/// Has the references of an object, and notes its end. What it knows is in the script, so that no object
/// keeps another.
template <typename Interface>
class ScriptedObject : public Interface {
public:
    explicit ScriptedObject(std::string name) : name_(std::move(name)) { CountObject(1); }
    ScriptedObject(const ScriptedObject&) = delete;
    ScriptedObject& operator=(const ScriptedObject&) = delete;
    virtual ~ScriptedObject() {
        NoteEnd(name_);
        CountObject(-1);
    }

    HRESULT QueryInterface(REFIID, void** interface) override {
        *interface = nullptr;
        return E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++references_; }
    ULONG Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

protected:
    HRESULT Enter(std::string_view operation) const { return Call(name_, operation); }
    /// Enters an operation that gives an object.
    template <typename Other, typename Make>
    HRESULT Give(std::string_view operation, Other** out, const Make& make) const {
        const HRESULT result = Enter(operation);
        *out = result == S_OK && !IsGivingNull(name_, operation) ? make() : nullptr;
        return result;
    }
    /// `QueryInterface` for an interface that it has.
    template <typename Other>
    HRESULT GiveInterface(const char* other, void** interface) const {
        Other* object = nullptr;
        const HRESULT result =
            Give(std::string("QueryInterface ") + other, &object, [] { return new Other; });
        *interface = object;
        return result;
    }

private:
    const std::string name_;
    std::atomic<ULONG> references_ = 1;
};
