// The folders of src/ form layers: a folder includes only itself and the folders below it.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const std::map<std::string, std::set<std::string>> allowedIncludes = {
    {"host", {"host"}},
    {"framework", {"framework", "host"}},
    {"pixel", {"pixel", "framework", "host"}},
    {"codecs", {"codecs", "pixel", "framework", "host", "prores"}},
    {"ffmpeg", {"ffmpeg", "pixel", "framework", "host"}},
    {"cameraraw", {"cameraraw", "pixel", "framework", "host"}},
    {"iostream", {"iostream", "framework", "host"}},
    {"prores", {"prores"}},
};

/// Folder of src/ that an include line names, or an empty string for headers from outside.
std::string IncludedFolder(const std::string& line) {
    const size_t directive = line.find_first_not_of(" \t");
    if (directive == std::string::npos || line.compare(directive, 8, "#include") != 0) return {};
    const size_t quote = line.find('"', directive);
    const size_t slash = line.find('/', directive);
    if (quote == std::string::npos || slash == std::string::npos || slash < quote) return {};
    return line.substr(quote + 1, slash - quote - 1);
}

std::vector<std::string> Violations(const fs::path& file, const std::set<std::string>& allowed) {
    std::vector<std::string> found;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        const std::string folder = IncludedFolder(line);
        if (!folder.empty() && !allowed.contains(folder)) found.push_back(file.string() + ": " + line);
    }
    return found;
}

TEST(IncludeDirections, EveryFolderOfTheSourceTreeIsALayer) {
    for (const auto& entry : fs::directory_iterator(CORVEX_SOURCE_DIR "/src")) {
        if (!entry.is_directory()) continue;
        EXPECT_TRUE(allowedIncludes.contains(entry.path().filename().string())) << entry.path();
    }
}

TEST(IncludeDirections, AFolderIncludesOnlyItselfAndTheFoldersBelowIt) {
    size_t filesRead = 0;
    for (const auto& [folder, allowed] : allowedIncludes) {
        const fs::path root = fs::path(CORVEX_SOURCE_DIR) / "src" / folder;
        if (!fs::exists(root)) continue;
        for (const auto& entry : fs::recursive_directory_iterator(root)) {
            if (!entry.is_regular_file()) continue;
            ++filesRead;
            for (const std::string& line : Violations(entry.path(), allowed))
                ADD_FAILURE() << line;
        }
    }
    EXPECT_GT(filesRead, 10u);
}

} // namespace
