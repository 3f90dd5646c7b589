#pragma once

#include "rawsdk/clip/Failure.h"

#include <charconv>
#include <cstdint>
#include <new>
#include <optional>
#include <string_view>

namespace rawsdk {

/// What a call is about, as text.
class Subject {
public:
    Subject() = default;
    /// A code, by its characters.
    static Subject OfCode(uint32_t code) {
        Subject subject;
        for (int i = 0; i < 4; ++i)
            subject.text_[i] = static_cast<char>(code >> (24 - 8 * i));
        subject.length_ = 4;
        return subject;
    }
    static Subject OfNumber(uint64_t number) {
        Subject subject;
        const char* const end = std::to_chars(subject.text_, subject.text_ + sizeof(text_), number).ptr;
        subject.length_ = static_cast<size_t>(end - subject.text_);
        return subject;
    }

    operator std::string_view() const { return {text_, length_}; }

private:
    char text_[20] = {};
    size_t length_ = 0;
};

/// A call of an operation, such as "RawClip.GetTimecode", and what it is about, such as "7"; often nothing.
struct Call {
    std::string_view operation;
    std::string_view subject = {};
};

/// Records a call if calls are recorded. Any thread.
/// @throw Failure  with what the call is to give instead of doing its work, if it is to go wrong: `S_OK` too
void EnterCall(const Call& call);
/// Records the end of an object.
void RecordEnd(const Call& call) noexcept;
/// What something that is no call, and so is not recorded, is to give instead of doing its work.
std::optional<HRESULT> TakeFault(const Call& call);
/// By how much jobs are to be late.
uint32_t JobDelay();

/// Runs a part of the library, and gives what it threw as a result.
template <typename Action>
HRESULT Guarded(Action action) {
    try {
        action();
        return S_OK;
    } catch (const Failure& failure) {
        return failure.result;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

/// Does the work of a call, unless the call is to go wrong.
template <typename Action>
HRESULT Perform(const Call& call, Action action) {
    return Guarded([&] {
        EnterCall(call);
        action();
    });
}

/// Does the work of a call that gives a value; in all other cases the value is null, 0 or empty.
template <typename Value, typename Produce>
HRESULT Answer(const Call& call, Value* value, Produce produce) {
    if (value == nullptr) return E_POINTER;
    *value = {};
    return Perform(call, [&] { *value = produce(); });
}

/// Ends the operation if an argument is not as it has to be.
inline void RequireArgument(bool isSound) {
    if (!isSound) throw Failure{E_INVALIDARG};
}

} // namespace rawsdk
