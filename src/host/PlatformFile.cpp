#include "host/Platform.h"

#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

bool Platform::FileExists(const char* path) {
    if (path == nullptr) return false;
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

EnvString::EnvString(const char* name, const char* defaultValue, bool) {
    const char* const found = name != nullptr ? std::getenv(name) : nullptr;
    const char* const value = found != nullptr ? found : defaultValue;
    value_ = value;
    present_ = value != nullptr;
}

CxStringT<char> GetPathFromFileName(const char* path) {
    const std::string_view text(path != nullptr ? path : "");
    const size_t directoryLength = text.rfind('/') + 1; // 0 without a separator
    return std::string(text.substr(0, directoryLength)).c_str();
}
