#pragma once

#include "codecs/MediaFoundation.h"

#include <new>

namespace mediafoundation {

// Results of the platform that callers of the library need no names for.
inline constexpr auto unexpected = static_cast<HRESULT>(0x8000FFFF);         ///< E_UNEXPECTED
inline constexpr auto notInitialized = static_cast<HRESULT>(0x800401F0);     ///< CO_E_NOTINITIALIZED
inline constexpr auto changedMode = static_cast<HRESULT>(0x80010106);        ///< RPC_E_CHANGED_MODE
inline constexpr auto wrongAttributeType = static_cast<HRESULT>(0xC00D36BD); ///< MF_E_INVALIDTYPE
inline constexpr auto wrongIndex = static_cast<HRESULT>(0xC00D36BF);         ///< MF_E_INVALIDINDEX

/// Runs a function that gives a result; lack of memory is a result too.
template <typename Function>
HRESULT Guarded(Function function) {
    try {
        return function();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

} // namespace mediafoundation
