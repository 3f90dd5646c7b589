// How FFMPEGFileFormats is announced to the host.

#include "ffmpeg/FFMPEGFileFormats.h"
#include "framework/CatchAll.h"
#include "framework/FormatAnnouncement.h"

namespace CxFFMPEG {

namespace {

constexpr char className[] = "FFMPEGFileFormats";

/// Tags of the announcement whose meaning is the host's own.
enum CapabilityTag : Tag {
    CapabilityTag_Load = 0x10000066,
    CapabilityTag_Save = 0x10000067,
    CapabilityTag_SecondLoad = 0x1000006f,
    CapabilityTag_SecondSave = 0x10000070,
    CapabilityTag_Unset = 0x10000071,
    CapabilityTag_SecondUnset = 0x10000069,
};

bool Init(Registry* registry) { return Object::RegInit(registry) && CatchAll(false, LoadFFmpeg); }

TagItem Extension(const char* extension) { return {RegTag_Extension, TagItem::FromPtr(extension)}; }

TagList Describe(const ScriptInfo& script) {
    constexpr int64_t interfaceVersion = 0x180000;
    // Formats that know a file better than any that FFmpeg reads go first.
    constexpr int64_t priority = -120;
    const TagItem items[] = {{RegTag_Init, TagItem::FromPtr(Init)},
                             {RegTag_Cleanup, TagItem::FromPtr(Object::RegCleanup)},
                             {RegTag_Version, TagItem::FromInt(interfaceVersion)},
                             {RegTag_BuildText, TagItem::FromPtr("Built: Sep 29 2022")},
                             {RegTag_ParentClass, TagItem::FromPtr(&ImageFormat::ClassID)},
                             {RegTag_ScriptInfo, TagItem::FromPtr(&script)},
                             {RegTag_ClassName, TagItem::FromPtr(className)},
                             {RegTag_Create, TagItem::FromPtr(CreateFormat<FFMPEGFileFormats>)},
                             {RegTag_CanLoad, TagItem::FromInt(1)},
                             {RegTag_CanSave, TagItem::FromInt(1)},
                             {CapabilityTag_Load, TagItem::FromInt(1)},
                             {CapabilityTag_Save, TagItem::FromInt(1)},
                             {CapabilityTag_SecondLoad, TagItem::FromInt(1)},
                             {CapabilityTag_SecondSave, TagItem::FromInt(1)},
                             {CapabilityTag_Unset, TagItem::FromInt(0)},
                             {CapabilityTag_SecondUnset, TagItem::FromInt(0)},
                             {RegTag_DisplayName, TagItem::FromPtr("FFMPEG Assorted formats")},
                             Extension(".avi"),
                             Extension(".mov"),
                             Extension(".mp4"),
                             Extension(".mkv"),
                             Extension(".flv"),
                             Extension(".gif"),
                             Extension(".mts"),
                             Extension(".m2ts"),
                             Extension(".webm"),
                             {RegTag_Priority, TagItem::FromInt(priority)},
                             {0, 0}};
    return {items, false};
}

} // namespace

void RegisterFFMPEGFileFormats() {
    static const FormatAnnouncement<FFMPEGFileFormats> announcement(className, Describe);
}

} // namespace CxFFMPEG
