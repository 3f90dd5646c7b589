#pragma once

#include <string>

/// Takes a function from the content of a library's file, by changing the name that the file has of it. False
/// if it has none.
inline bool RemoveFunctionName(std::string& file, const std::string& function) {
    const std::string entry = '\0' + function + '\0';
    size_t found = 0;
    for (size_t at = file.find(entry); at != std::string::npos; at = file.find(entry, at)) {
        file[at + 1] = '-';
        ++found;
    }
    return found > 0;
}
