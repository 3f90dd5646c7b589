#pragma once

#include "host/Export.h"
#include "host/ScriptVal.h"
#include "host/TagList.h"

#include <cstddef>
#include <cstdint>
#include <new>

class CorvexDoc;
class Registry;

/// Brings the allocator that objects of the host are made with.
class CORVEX_HOST_API Reuser {
public:
    Reuser() = default;
    virtual ~Reuser();
    Reuser(const Reuser&) = delete;
    Reuser& operator=(const Reuser&) = delete;

    /// Size of the object in bytes, for the allocator. A class that adds members answers with its own size.
    virtual size_t ObjectSize() const;

    /// The stand-alone host takes the memory from the C++ heap, so that tools which watch the heap see every
    /// object. All forms are there that an expression `new` may ask for: a class with one hides the rest.
    static void* operator new(size_t size);
    static void* operator new(size_t size, std::align_val_t alignment);
    static void* operator new(size_t size, const std::nothrow_t& tag) noexcept;
    static void* operator new(size_t size, std::align_val_t alignment, const std::nothrow_t& tag) noexcept;
    static void* operator new(size_t, void* place) noexcept { return place; }

    static void operator delete(void* block) noexcept;
    static void operator delete(void* block, std::align_val_t alignment) noexcept;
    static void operator delete(void* block, const std::nothrow_t& tag) noexcept;
    static void operator delete(void* block, std::align_val_t alignment, const std::nothrow_t& tag) noexcept;
    static void operator delete(void*, void*) noexcept {}
};

/// Part of the host's class chain; adds nothing in the stand-alone host.
class CORVEX_HOST_API LuaClass : public Reuser {};

/// Part of the host's class chain; adds nothing in the stand-alone host.
class CORVEX_HOST_API ScriptObject : public LuaClass {};

/// Part of the host's class chain; adds nothing in the stand-alone host.
class CORVEX_HOST_API _Object : public ScriptObject {};

/// Gives objects attributes. An attribute is named by a tag, whose kind says the type of its value: int32 for
/// integer tags, double for double tags.
class CORVEX_HOST_API RefObject : public _Object {
public:
    /// Sets the attributes that are in `tags` and that the class knows.
    /// @return whether there was one
    virtual bool SetAttrsTagList(const TagList& tags);

    /// Writes the value of attribute `key` to `out`, which has the type that goes with the tag.
    /// @return false, with `out` untouched, if the object has no such attribute
    virtual bool CopyAttr(Tag key, void* out);

    /// Value of an integer attribute, or the default if the object does not have it or the tag is of another
    /// kind.
    int32_t GetAttr(Tag key, int32_t defaultValue);
    /// The same for an attribute that is a double.
    double GetAttr(Tag key, double defaultValue);
};

/// Base of the objects that the host makes through a `Registry`.
class CORVEX_HOST_API Object : public RefObject {
public:
    /// The arguments are those of the class's creator. `registry`, which may be null, outlives the object.
    Object(const Registry* registry, const ScriptVal& value, const TagList& tags);

    /// The registration that the object was made through, or null.
    const Registry* GetRegistry() const { return registry_; }
    /// The document that the object belongs to; never null.
    CorvexDoc* GetDoc() const;

    /// Text in the user's language. The stand-alone host has one language and returns `text` itself, which
    /// may be null.
    static const char* futr(const char* text);

    /// Default init function of a class; true.
    static bool RegInit(Registry* registry);
    /// Default clean-up function of a class.
    static void RegCleanup(Registry* registry);

private:
    const Registry* registry_;
};
