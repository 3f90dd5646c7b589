#include "cameraraw/automation/BstrText.h"

#include <climits>

BSTR BstrOfText(std::string_view text) {
    if (text.size() > INT_MAX) return nullptr;
    const int bytes = static_cast<int>(text.size());
    const int units = MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, nullptr, 0);
    std::basic_string<OLECHAR> string(static_cast<size_t>(units), 0);
    MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, string.data(), units);
    return SysAllocStringLen(string.data(), static_cast<UINT>(units));
}

std::string TextOfBstr(BSTR string) {
    const UINT units = SysStringLen(string);
    if (units > INT_MAX) return {};
    const int length = static_cast<int>(units);
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, string, length, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, string, length, text.data(), bytes, nullptr, nullptr);
    return text;
}
