#pragma once

#include <string>
#include <vector>

/// The words in one text, with `separator` between them.
inline std::string Join(const std::vector<std::string>& words, const char* separator) {
    std::string text;
    for (const std::string& word : words) {
        if (!text.empty()) text.append(separator);
        text.append(word);
    }
    return text;
}
