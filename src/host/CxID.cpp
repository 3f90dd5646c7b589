#include "host/CxID.h"

#include <cstring>
#include <mutex>
#include <string>
#include <unordered_set>

namespace {

constexpr char emptyText[] = "";

/// Every text that was ever interned. The elements never move.
struct InternTable {
    std::mutex lock;
    std::unordered_set<std::string> texts; ///< guarded by `lock`

    /// Never destroyed: identifiers in static objects outlive every other static object.
    static InternTable& Get() {
        static InternTable* const table = new InternTable;
        return *table;
    }
};

const char* Intern(const char* text) {
    if (text == nullptr || *text == '\0') return emptyText;
    InternTable& table = InternTable::Get();
    const std::lock_guard guard(table.lock);
    return table.texts.emplace(text).first->c_str();
}

} // namespace

CxID::CxID() : text_(emptyText) {}

CxID::CxID(const char* text, bool) : text_(Intern(text)) {}

bool CxID::operator==(const char* text) const { return std::strcmp(text_, text != nullptr ? text : "") == 0; }
