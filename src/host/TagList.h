#pragma once

#include "host/CxID.h"
#include "host/Export.h"

#include <cstdint>
#include <memory>
#include <vector>

/// A tag names one value of a `TagList`. Its top four bits (of 32) give the value's kind.
using Tag = uint64_t;

/// Kinds of tag values, as `tag >> 28`.
enum TagKind : uint32_t {
    TagKind_Integer = 1,
    TagKind_Double = 2, ///< the bits of a double
    TagKind_String = 3, ///< a null-terminated string, copied by the list; bit 27 of the tag: may be repeated
    TagKind_Pointer = 6,
};

/// One pair of a tag array. Strings and pointers are given as their address, doubles as their bits.
struct TagItem {
    Tag tag;
    uint64_t value;

    static uint64_t FromInt(int64_t number) { return static_cast<uint64_t>(number); }
    static uint64_t FromPtr(const void* address) { return reinterpret_cast<uintptr_t>(address); }
    CORVEX_HOST_API static uint64_t FromDouble(double number);
};

/// The host's ordered list of (tag, value) pairs. Strings are copied; pointers are not owned. One thread at a
/// time may change a list; several may read it.
class TagList {
public:
    CORVEX_HOST_API TagList();
    /// Copies the pairs of an array that ends with a zero tag; null is an empty list. The second argument is
    /// the host's and is always false.
    CORVEX_HOST_API TagList(const TagItem* array, bool flag);
    CORVEX_HOST_API ~TagList();
    CORVEX_HOST_API TagList(const TagList& other);
    CORVEX_HOST_API TagList& operator=(const TagList& other);

    /// First pair with this tag, or null. Valid until the list changes.
    CORVEX_HOST_API const TagItem* Find(Tag tag) const;
    /// The next pair with the same tag as `item`, which came from `Find` or `FindNext`, or null.
    CORVEX_HOST_API const TagItem* FindNext(const TagItem* item) const;
    /// Whether the tag is in the list.
    CORVEX_HOST_API bool FindQuery(Tag tag) const;

    /// Value of the first pair with this tag, or the default. `GetLong` of a double tag truncates, `GetDouble`
    /// of an integer tag converts.
    CORVEX_HOST_API int64_t GetLong(Tag tag, int64_t defaultValue) const;
    CORVEX_HOST_API double GetDouble(Tag tag, double defaultValue) const;
    CORVEX_HOST_API void* GetPtr(Tag tag, const void* defaultValue) const;
    CORVEX_HOST_API const char* GetString(Tag tag, const char* defaultValue) const;

    /// Replaces the value of the first pair with this tag, or appends one. The flag is the host's.
    CORVEX_HOST_API void Set(Tag tag, int value, bool flag);
    CORVEX_HOST_API void Set(Tag tag, const CxID& value, bool flag);
    CORVEX_HOST_API void SetDouble(Tag tag, double value);
    CORVEX_HOST_API void SetPtr(Tag tag, const void* value);
    /// Sets each pair of an array that ends with a zero tag; repeatable tags are appended.
    CORVEX_HOST_API void Set(const TagItem* array, const void* reserved);
    /// Appends a pair, also where the tag is there already.
    CORVEX_HOST_API void Add(Tag tag, const char* value);
    CORVEX_HOST_API void Add(Tag tag, const CxID& value);
    /// Sets all pairs of another list; null does nothing. The flag is the host's.
    CORVEX_HOST_API void SetTags(const TagList* other, bool flag);

    /// All pairs, in order.
    CORVEX_HOST_API const std::vector<TagItem>& Items() const;

private:
    void Append(Tag tag, uint64_t value);
    void Assign(Tag tag, uint64_t value);

    std::vector<TagItem> items_;
};
