#pragma once

#include "host/CxID.h"
#include "host/Export.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// A tag names one value of a `TagList`. The top four of its low 32 bits give the value's kind.
using Tag = uint64_t;

/// Kinds of tag values, as `tag >> 28`.
enum TagKind : uint32_t {
    TagKind_Integer = 1,
    TagKind_Double = 2,  ///< the bits of a double
    TagKind_String = 3,  ///< a null-terminated string, copied by the list
    TagKind_Pointer = 6, ///< an address, not owned
    TagKind_Id = 8,      ///< text of an identifier, copied by the list
};

/// Kind of a tag's value; one of `TagKind`, or a number that no list stores a number or text for.
inline uint32_t KindOf(Tag tag) { return static_cast<uint32_t>(tag) >> 28; }

/// Bit of a tag that says that it may be repeated within a list.
inline constexpr Tag TagFlag_Repeatable = 0x08000000;

/// One pair of a tag array. Text and pointers are given as their address, doubles as their bits.
struct TagItem {
    Tag tag;
    uint64_t value;

    static uint64_t FromInt(int64_t number) { return static_cast<uint64_t>(number); }
    static uint64_t FromPtr(const void* address) { return reinterpret_cast<uintptr_t>(address); }
    /// Address of a function, for tags that carry one.
    template <typename Result, typename... Arguments>
    static uint64_t FromPtr(Result (*function)(Arguments...)) {
        return reinterpret_cast<uintptr_t>(function);
    }
    CORVEX_HOST_API static uint64_t FromDouble(double number);

    /// Text of a pair whose tag is a string or an identifier.
    const char* Text() const { return reinterpret_cast<const char*>(value); }
};

/// The host's ordered list of (tag, value) pairs. Text is copied (null counts as empty); pointers are not
/// owned. A value always fits its tag's kind: numbers are converted between the two kinds of number, and a
/// value that cannot be converted is not stored. A change that runs out of memory throws and leaves the list
/// as it was. One thread at a time may change a list; several may read it.
class TagList {
public:
    TagList() = default;
    /// Copies the pairs of an array that ends with a zero tag; null is an empty list. The second argument is
    /// the host's and is always false.
    CORVEX_HOST_API TagList(const TagItem* array, bool flag);

    /// First pair with this tag, or null. Valid until the list changes.
    CORVEX_HOST_API const TagItem* Find(Tag tag) const;
    /// The next pair with the same tag as `item`, which came from `Find` or `FindNext`, or null; null has
    /// none.
    CORVEX_HOST_API const TagItem* FindNext(const TagItem* item) const;
    /// Whether the tag is in the list.
    CORVEX_HOST_API bool FindQuery(Tag tag) const;

    /// Value of the first pair with this tag, or the default if there is none or it is of another kind.
    /// `GetLong` of a double tag truncates (limited to the range of the result, not-a-number gives 0),
    /// `GetDouble` of an integer tag converts to the nearest double.
    CORVEX_HOST_API int64_t GetLong(Tag tag, int64_t defaultValue) const;
    CORVEX_HOST_API double GetDouble(Tag tag, double defaultValue) const;
    CORVEX_HOST_API void* GetPtr(Tag tag, const void* defaultValue) const;
    /// Text of a string or identifier tag; valid until that pair changes or the list is destroyed.
    CORVEX_HOST_API const char* GetString(Tag tag, const char* defaultValue) const;

    /// Replaces the value of the first pair with this tag, be it repeatable or not, or appends one. A double
    /// under an integer tag is truncated as by `GetLong`. The flag is the host's. A type of number finds the
    /// overload that holds all its values, or does not compile.
    CORVEX_HOST_API void Set(Tag tag, int value, bool flag);
    CORVEX_HOST_API void Set(Tag tag, uint32_t value, bool flag);
    CORVEX_HOST_API void Set(Tag tag, int64_t value, bool flag);
    CORVEX_HOST_API void Set(Tag tag, double value, bool flag);
    CORVEX_HOST_API void Set(Tag tag, const CxID& value, bool flag);
    CORVEX_HOST_API void SetPtr(Tag tag, const void* value);
    /// Sets each pair of an array that ends with a zero tag. Pairs with a repeatable tag are appended to
    /// those that are there, other than by the forms for one tag, which replace; null does nothing.
    CORVEX_HOST_API void Set(const TagItem* array, const void* reserved);
    /// Appends a pair, also where the tag is there already.
    CORVEX_HOST_API void Add(Tag tag, const char* value);
    CORVEX_HOST_API void Add(Tag tag, const CxID& value);
    /// Sets all pairs of another list as `Set` does for an array, appending those with a repeatable tag; null
    /// does nothing. The flag is the host's.
    CORVEX_HOST_API void SetTags(const TagList* other, bool flag);
    /// Removes all pairs with this tag.
    CORVEX_HOST_API void Delete(Tag tag);

    /// All pairs, in order. Their text is valid as that of `GetString` is.
    CORVEX_HOST_API std::vector<TagItem> Items() const;

private:
    /// A pair with what its value points at.
    struct Entry : TagItem {
        /// Copies the text of a text pair.
        explicit Entry(const TagItem& item);

        /// Null for pairs of other kinds. Never changed, so that copies of a list share it.
        std::shared_ptr<const std::string> text;
    };

    void Assign(Entry entry);
    void AssignOrAppend(const Entry& entry);
    void SetNumber(Tag tag, int64_t integer, double number);

    std::vector<Entry> entries_;
};
