#include "host/Platform.h"

#include <mutex>
#include <string>
#include <strings.h>
#include <vector>

namespace {

struct PathMapEntry {
    std::string name;
    std::string path;
};

struct PathMaps {
    std::mutex lock;
    std::vector<PathMapEntry> entries; ///< guarded by `lock`

    /// Never destroyed: other static objects may map paths while the process ends.
    static PathMaps& Get() {
        static PathMaps* const maps = new PathMaps;
        return *maps;
    }
};

constexpr char separator = '/';

bool SameName(const std::string& a, const std::string& b) { return strcasecmp(a.c_str(), b.c_str()) == 0; }

/// Whether `path` begins with the map's name and the name ends where a path component does.
bool Applies(const PathMapEntry& map, const std::string& path) {
    const size_t length = map.name.size();
    if (length == 0 || strncasecmp(path.c_str(), map.name.c_str(), length) != 0) return false;
    const char last = map.name.back();
    return last == ':' || last == separator || path.size() == length || path[length] == separator;
}

const PathMapEntry* FindLongest(const std::vector<PathMapEntry>& maps, const std::string& path) {
    const PathMapEntry* longest = nullptr;
    for (const PathMapEntry& map : maps) {
        if (Applies(map, path) && (longest == nullptr || map.name.size() > longest->name.size())) {
            longest = &map;
        }
    }
    return longest;
}

/// Joins the two with exactly one separator; where either is empty the other stays as it is.
std::string JoinPath(std::string directory, const std::string& rest) {
    if (directory.empty() || rest.empty()) return directory + rest;
    const bool hasSeparator = directory.back() == separator;
    if (hasSeparator && rest.front() == separator) {
        directory.pop_back();
    } else if (!hasSeparator && rest.front() != separator) {
        directory += separator;
    }
    return directory + rest;
}

} // namespace

bool MapPath(CxStringT<char>& path) {
    PathMaps& maps = PathMaps::Get();
    const std::string text(path.c_str());
    const std::lock_guard guard(maps.lock);
    const PathMapEntry* const map = FindLongest(maps.entries, text);
    if (map == nullptr) return false;
    path = JoinPath(map->path, text.substr(map->name.size())).c_str();
    return true;
}

void SetPathMap(const char* name, const char* path) {
    if (name == nullptr) return;
    PathMaps& maps = PathMaps::Get();
    const std::lock_guard guard(maps.lock);
    std::erase_if(maps.entries, [name](const PathMapEntry& map) { return SameName(map.name, name); });
    if (path != nullptr) maps.entries.push_back({name, path});
}
