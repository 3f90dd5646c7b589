#pragma once

#include "framework/CatchAll.h"
#include "host/ImageFormat.h"
#include "host/Registry.h"
#include "host/ScriptInfo.h"

#include <typeinfo>

/// Makes a format for the host (`RegTag_Create`), which frees it; null where memory is short.
template <typename Format>
Object* CreateFormat(const Registry* registry, const ScriptVal& value, const TagList& tags) {
    return CatchAll<Object*>(nullptr, [&] { return new Format(registry, value, tags); });
}

/// A format class that is announced to the host as long as this lives, in the order in which the host wants
/// it made.
template <typename Format>
struct FormatAnnouncement {
    /// @param className  of the class, which lives as long as this
    /// @param describe   gives the tags of the announcement
    FormatAnnouncement(const char* className, TagList (*describe)(const ScriptInfo& script))
        : classId(className, true), script(1, className, "", "") {
        script.SetTypeInfo(typeid(Format), typeid(ImageFormat));
        registry._Init(ClassRegistry, classId, describe(script));
    }

    CxID classId;
    ScriptInfo script;
    Registry registry;
};
