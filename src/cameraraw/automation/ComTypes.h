#pragma once

#include <cstdint>

// Plain types under the platform's names.
using USHORT = uint16_t;
using LONG = int32_t;
using ULONG = uint32_t;
using UINT = uint32_t;
using DWORD = uint32_t;
using BOOL = int32_t;

/// Result of a call: 0 is success, negative values are failures, positive ones say more about a success.
using HRESULT = int32_t;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFF);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr HRESULT DISP_E_BADVARTYPE = static_cast<HRESULT>(0x80020008);
inline constexpr HRESULT DISP_E_BADINDEX = static_cast<HRESULT>(0x8002000B);
inline constexpr HRESULT DISP_E_ARRAYISLOCKED = static_cast<HRESULT>(0x8002000D);

/// Identifier of an interface.
struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];

    friend constexpr bool operator==(const GUID&, const GUID&) = default;
};
using IID = GUID;
using REFIID = const GUID&;

/// Identifier of `IUnknown`.
inline constexpr IID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// Base of all interfaces. Whoever is handed an interface by an out pointer owns one reference to it; an
/// interface passed as an argument is the callee's for the time of the call.
class IUnknown {
public:
    /// Asks the object for another of its interfaces, with a new reference.
    /// @param interface  out: the interface, or null on every failure
    /// @return `E_NOINTERFACE` if the object does not have it, `E_POINTER` for a null argument
    virtual HRESULT QueryInterface(REFIID identifier, void** interface) = 0;
    /// Both give the number of references after the call, for diagnosis only. The object ends with the last.
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

protected:
    ~IUnknown() = default;
};
