#pragma once

#include "host/CxID.h"
#include "host/Edition.h"
#include "host/Export.h"
#include "host/Object.h"
#include "host/ScriptInfo.h"
#include "host/ScriptVal.h"
#include "host/TagList.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/// What a `Registry` announces.
enum RegistryType : int32_t {
    ClassRegistry = 1, ///< a class of objects
};

/// Tags of `Registry::_Init`.
enum RegistryTag : Tag {
    RegTag_Create = 0x60000000,      ///< a `RegistryCreate`
    RegTag_Init = 0x60000001,        ///< a `RegistryInit`; none counts as a success
    RegTag_Cleanup = 0x60000002,     ///< a `RegistryCleanup`
    RegTag_ScriptInfo = 0x60000005,  ///< the class's `ScriptInfo`
    RegTag_ParentClass = 0x60000010, ///< address of the parent's class id, such as `&ImageFormat::ClassID`
    RegTag_Version = 0x10000000,     ///< interface version
    RegTag_Priority = 0x10000016,    ///< among formats that claim an extension; higher goes first, default 0
    RegTag_CanLoad = 0x10000064,     ///< 1: the format loads
    RegTag_CanSave = 0x10000065,     ///< 1: the format saves
    RegTag_BuildText = 0x30000008,
    RegTag_ClassName = 0x30000015,
    RegTag_DisplayName = 0x30000064,
    RegTag_Extension = 0x38000064, ///< a file extension with its dot; one tag each
};

/// Called once, before the first object of the class is made; false keeps the class from making any, and so
/// does an exception, which reaches whoever started the class. For the init function itself the class has not
/// started: `Start` is false then and `Create` gives null. Other threads wait for it, so it waits for none
/// that starts the class.
using RegistryInit = bool (*)(Registry* registry);
/// Called once when the registration ends, if an init function was called, be it that this one failed: what
/// it had made by then is there to be cleaned up. A class without an init function is not cleaned up.
using RegistryCleanup = void (*)(Registry* registry);
/// Makes an object, which the caller owns, or returns null.
using RegistryCreate = Object* (*)(const Registry* registry, const ScriptVal& value, const TagList& tags);

/// Announces a class to the host. A static object of the module that brings the class; the announcement ends
/// with the object. The list of registrations may be walked from any thread.
class Registry {
public:
    CORVEX_HOST_API Registry();
    /// Takes the class off the list and runs its clean-up if its init function was called.
    CORVEX_HOST_API ~Registry();
    Registry(const Registry&) = delete;
    Registry& operator=(const Registry&) = delete;

    /// Announces the class. Called once, right after construction, before anybody can know of the object.
    ///
    /// @param type     `ClassRegistry`
    /// @param classId  id of the class
    /// @param tags     `RegistryTag`s and further tags of the host, copied
    CORVEX_HOST_API void _Init(RegistryType type, const CxID& classId, const TagList& tags);

    const CxID& ClassId() const { return classId_; }
    const TagList& Tags() const { return tags_; }
    CORVEX_HOST_API const char* ClassName() const;
    CORVEX_HOST_API const char* DisplayName() const;
    /// The file extensions, each with its dot, in the order of registration.
    CORVEX_HOST_API std::vector<std::string> Extensions() const;
    /// Whether the class claims `extension` (with its dot, in any case); null is never claimed.
    CORVEX_HOST_API bool HasExtension(const char* extension) const;
    CORVEX_HOST_API int Priority() const;
    CORVEX_HOST_API bool CanLoad() const;
    CORVEX_HOST_API bool CanSave() const;
    /// Whether the class derives from `ImageFormat`.
    CORVEX_HOST_API bool IsImageFormat() const;
    /// The class's script description, or null.
    CORVEX_HOST_API const ScriptInfo* Script() const;

    /// Starts the class on the first call, by its init function, and remembers the outcome. Any thread.
    CORVEX_HOST_API bool Start();
    /// Starts the class and makes an object of it, or returns null if the class has no creator, did not
    /// start, or refuses. Any thread, as far as the creator allows.
    CORVEX_HOST_API std::unique_ptr<Object> Create(const ScriptVal& value, const TagList& tags);

    /// The announced format classes, in the order of registration. The pointers are valid as long as the
    /// modules that brought the classes are loaded.
    CORVEX_HOST_API static std::vector<Registry*> Formats();
    /// The format classes that claim `extension`: the highest priority first, in the order of registration
    /// among equals.
    CORVEX_HOST_API static std::vector<Registry*> FormatsForExtension(const char* extension);

private:
    CxID classId_;
    TagList tags_;
    std::recursive_mutex startLock_; ///< recursive, as the init function may ask to start its own class
    std::optional<bool> started_; ///< whether the class started, once that was tried; guarded by `startLock_`
};
