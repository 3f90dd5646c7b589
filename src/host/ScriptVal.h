#pragma once

#include "host/CxID.h"
#include "host/Export.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// Kinds of value that a `ScriptVal` holds.
enum ScriptValType : int32_t {
    ScriptVal_Nil = 0,
    ScriptVal_Boolean = 1, ///< `Set` takes a `const bool*`
    ScriptVal_Number = 2,  ///< `Set` takes a `const double*`
    ScriptVal_String = 3,  ///< `Set` takes a `const char*`
    ScriptVal_Table = 4,   ///< `Set` takes null, for an empty table, or a `const ScriptVal*` to copy from
};

/// A dynamically typed value of the host's script layer. It can be a table of further values by key; a copy
/// copies the whole table. One thread at a time.
class ScriptVal {
public:
    CORVEX_HOST_API ScriptVal();
    CORVEX_HOST_API ~ScriptVal();
    CORVEX_HOST_API ScriptVal(const ScriptVal& other);
    CORVEX_HOST_API ScriptVal& operator=(const ScriptVal& other);
    CORVEX_HOST_API ScriptVal(ScriptVal&& other) noexcept;
    CORVEX_HOST_API ScriptVal& operator=(ScriptVal&& other) noexcept;

    /// Makes this value a string; null makes it nil.
    CORVEX_HOST_API ScriptVal& operator=(const char* text);
    CORVEX_HOST_API ScriptVal& operator=(const CxID& id);
    /// Numbers go through `Set`; a literal 0 would be null text.
    ScriptVal& operator=(int) = delete;

    /// Replaces the value. `value` points at what `type` says; null gives nil, false, 0, "" or an empty
    /// table.
    CORVEX_HOST_API void Set(ScriptValType type, const void* value);

    CORVEX_HOST_API ScriptValType Type() const;
    CORVEX_HOST_API bool IsTable() const;

    /// Entry `key` (not null) of a table, created as nil if it isn't there. A value that is not a table
    /// becomes one. The reference is valid until this value is assigned, set or destroyed.
    CORVEX_HOST_API ScriptVal& FindKey(const char* key);
    /// Entry `key` (not null) of a table, or a shared nil value if it isn't there or this is not a table.
    CORVEX_HOST_API const ScriptVal& FindKeyConst(const char* key) const;
    /// Keys of a table in order of insertion; empty if this is not a table.
    CORVEX_HOST_API std::vector<std::string> Keys() const;

    /// Text of a string, or `defaultText` for every other kind. Valid as long as the value is unchanged.
    CORVEX_HOST_API const char* ToString(const char* defaultText) const;
    /// The number or boolean, or the default for every other kind.
    CORVEX_HOST_API double ToNumber(double defaultNumber) const;
    CORVEX_HOST_API bool ToBoolean(bool defaultBoolean) const;

private:
    struct Content;
    std::unique_ptr<Content> content_; ///< null means nil
};
