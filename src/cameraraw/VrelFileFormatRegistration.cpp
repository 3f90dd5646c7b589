// How VrelFileFormat is announced to the host.

#include "cameraraw/VrelFileFormat.h"
#include "framework/FormatAnnouncement.h"

namespace {

constexpr char className[] = "VrelFileFormat";

/// Tags of the announcement whose meaning is the host's own.
enum CapabilityTag : Tag {
    CapabilityTag_Load = 0x10000066,
    CapabilityTag_SecondLoad = 0x1000006f,
    CapabilityTag_SecondSave = 0x10000070,
    CapabilityTag_Unset = 0x10000069,
    CapabilityTag_Clip = 0x100000ca,
};

/// The class is there without the SDK too; its clips fail to open then.
bool Init(Registry*) { return true; }

void Cleanup(Registry*) {}

TagList Describe(const ScriptInfo& script) {
    constexpr int64_t interfaceVersion = 0x180000;
    constexpr int64_t priority = -10;
    const TagItem items[] = {{RegTag_Init, TagItem::FromPtr(Init)},
                             {RegTag_Cleanup, TagItem::FromPtr(Cleanup)},
                             {RegTag_Version, TagItem::FromInt(interfaceVersion)},
                             {RegTag_BuildText, TagItem::FromPtr("Built: Sep 29 2022")},
                             {RegTag_ParentClass, TagItem::FromPtr(&ImageFormat::ClassID)},
                             {RegTag_ScriptInfo, TagItem::FromPtr(&script)},
                             {RegTag_ClassName, TagItem::FromPtr(className)},
                             {RegTag_Create, TagItem::FromPtr(CreateFormat<VrelFileFormat>)},
                             {RegTag_CanLoad, TagItem::FromInt(1)},
                             {RegTag_CanSave, TagItem::FromInt(0)},
                             {CapabilityTag_Load, TagItem::FromInt(1)},
                             {CapabilityTag_SecondLoad, TagItem::FromInt(1)},
                             {CapabilityTag_SecondSave, TagItem::FromInt(0)},
                             {CapabilityTag_Unset, TagItem::FromInt(0)},
                             {CapabilityTag_Clip, TagItem::FromInt(1)},
                             {RegTag_DisplayName, TagItem::FromPtr("Ravenlight Raw")},
                             {RegTag_Extension, TagItem::FromPtr(".vrel")},
                             {RegTag_Priority, TagItem::FromInt(priority)},
                             {0, 0}};
    return {items, false};
}

} // namespace

void RegisterVrelFileFormat() {
    static const FormatAnnouncement<VrelFileFormat> announcement(className, Describe);
}
