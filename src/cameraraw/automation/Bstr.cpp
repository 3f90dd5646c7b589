#include "cameraraw/automation/Bstr.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

/// Stands before the units of every string; its size keeps them aligned for every type.
struct alignas(std::max_align_t) Prefix {
    UINT length;
};

Prefix* PrefixOf(BSTR string) { return reinterpret_cast<Prefix*>(string) - 1; }

} // namespace

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
    const size_t units = size_t{length} + 1;
    if (units > (SIZE_MAX - sizeof(Prefix)) / sizeof(OLECHAR)) return nullptr;
    auto* const prefix = static_cast<Prefix*>(std::calloc(1, sizeof(Prefix) + units * sizeof(OLECHAR)));
    if (prefix == nullptr) return nullptr;
    prefix->length = length;
    const BSTR string = reinterpret_cast<BSTR>(prefix + 1);
    if (text != nullptr) std::memcpy(string, text, length * sizeof(OLECHAR));
    return string;
}

BSTR SysAllocString(const OLECHAR* text) {
    if (text == nullptr) return nullptr;
    const size_t length = std::char_traits<OLECHAR>::length(text);
    if (length > UINT32_MAX) return nullptr;
    return SysAllocStringLen(text, static_cast<UINT>(length));
}

UINT SysStringLen(BSTR string) { return string == nullptr ? 0 : PrefixOf(string)->length; }

void SysFreeString(BSTR string) {
    if (string != nullptr) std::free(PrefixOf(string));
}
