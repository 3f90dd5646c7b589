#include "ScriptedFormat.h"

#include <map>

namespace {

std::map<std::string, FormatScript*> scripts;

FormatScript& ScriptOf(const Registry& registry) { return *scripts.at(registry.ClassName()); }

class Format : public ImageFormat {
public:
    Format(const Registry* registry, const ScriptVal& value, const TagList& tags)
        : ImageFormat(registry, value, tags), script_(ScriptOf(*registry)) {}

    using ImageFormat::LoadHeaderTagList;

    size_t ObjectSize() const override { return sizeof(Format); }
    bool CopyAttr(Tag key, void* out) override {
        constexpr Tag frameRate = 0x200000c8;
        constexpr Tag frameCount = 0x100000cb;
        if (key == frameRate)
            *static_cast<double*>(out) = script_.frameRate;
        else if (key == frameCount)
            *static_cast<int32_t*>(out) = script_.frameCount;
        else
            return ImageFormat::CopyAttr(key, out);
        return true;
    }
    bool LoadHeaderTagList(const char* path, TagList& /*tags*/) override {
        script_.paths.emplace_back(path);
        width = 32;
        height = 16;
        return script_.opens;
    }
    bool LoadFrameTagList(uint32_t frame, Image*& image, TagList& /*tags*/) override {
        script_.frames.push_back(frame);
        script_.image = image;
        for (const auto& [name, value] : script_.metadata)
            image->ImageInfo.FindKey("Metadata").FindKey(name.c_str()) = value.c_str();
        return frame <= script_.lastFrame;
    }

private:
    FormatScript& script_;
};

bool Init(Registry* registry) { return ScriptOf(*registry).starts; }

Object* Create(const Registry* registry, const ScriptVal& value, const TagList& tags) {
    return new Format(registry, value, tags);
}

} // namespace

ScriptedFormat::ScriptedFormat(const char* name, int priority, FormatScript& script, const char* extension) {
    scripts[name] = &script;
    const TagItem items[] = {{RegTag_Init, TagItem::FromPtr(Init)},
                             {RegTag_ParentClass, TagItem::FromPtr(&ImageFormat::ClassID)},
                             {RegTag_ClassName, TagItem::FromPtr(name)},
                             {RegTag_Create, TagItem::FromPtr(Create)},
                             {RegTag_CanLoad, TagItem::FromInt(script.loads ? 1 : 0)},
                             {RegTag_Extension, TagItem::FromPtr(extension)},
                             {RegTag_Priority, TagItem::FromInt(priority)},
                             {0, 0}};
    registry_._Init(ClassRegistry, CxID(name, true), TagList(items, false));
}
