#pragma once

#include "host/ImageFormat.h"
#include "host/Registry.h"
#include "host/ScriptInfo.h"

#include <string>

/// A format class as a module brings one: every virtual operation notes its name and then does what its base
/// does.
class FakeFormat : public ImageFormat {
public:
    FakeFormat(const Registry* registry, const ScriptVal& value, const TagList& tags);
    ~FakeFormat() override;

    static Object* Create(const Registry* registry, const ScriptVal& value, const TagList& tags);

    /// Names of the operations called so far, over all objects.
    static std::vector<std::string> calls;

    size_t ObjectSize() const override;
    bool SetAttrsTagList(const TagList& tags) override;
    bool CopyAttr(Tag key, void* out) override;
    bool CheckOptions() override;
    bool OpenFile(const char* path, const TagList& tags) override;
    bool LoadHeaderTagList(const CxID& dataType, const char* path, TagList& tags) override;
    bool SaveHeaderTagList(CxID dataType, IOClass* io, Parameter* data, TagList& tags) override;
    bool LoadDataTagList(CxID dataType, double start, double end, TagList& tags) override;
    bool SaveDataTagList(CxID dataType, Parameter* data, double time, TagList& tags) override;
    bool CloseFile() override;
    bool GetPreviews(List* previews, uint32_t count, CxFrame* frame) override;
    int32_t GetNumStreams(CxID dataType) override;
    void AddLoadInputs(Operator* tool) override;
    void NotifyChangedLoad(Operator* tool, Input* input, Parameter* value, double time) override;
    void SetupLoad(Operator* tool, Request* request) override;
    void CleanupLoad(Operator* tool) override;
    void AddSaveInputs(Operator* tool) override;
    void NotifyChangedSave(Operator* tool, Input* input, Parameter* value, double time) override;
    void SetupSave(Operator* tool, Request* request) override;
    void CleanupSave(Operator* tool) override;
    bool CheckSizeOptions() override;
    bool LoadHeaderTagList(const char* path, TagList& tags) override;
    bool LoadFrameTagList(uint32_t frame, Image*& image, TagList& tags) override;
    bool SaveHeaderTagList(const char* path, Image* image, TagList& tags) override;
    bool SaveHeaderTagList(IOClass* io, Image* image, TagList& tags) override;
    bool SaveFrameTagList(uint32_t frame, Image* image, TagList& tags) override;
    int64_t PredictFileSize(Image* image) override;

    double rate = 24.0; ///< answered under tag 0x200000c8
};
