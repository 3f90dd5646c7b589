#include "FakeFormat.h"

std::vector<std::string> FakeFormat::calls;

namespace {

void Note(const char* call) { FakeFormat::calls.emplace_back(call); }

} // namespace

FakeFormat::FakeFormat(const Registry* registry, const ScriptVal& value, const TagList& tags)
    : ImageFormat(registry, value, tags) {}

FakeFormat::~FakeFormat() { Note("destructor"); }

Object* FakeFormat::Create(const Registry* registry, const ScriptVal& value, const TagList& tags) {
    Note("Create");
    return new FakeFormat(registry, value, tags);
}

size_t FakeFormat::ObjectSize() const {
    Note("ObjectSize");
    return sizeof(FakeFormat);
}

bool FakeFormat::SetAttrsTagList(const TagList& tags) {
    Note("SetAttrsTagList");
    return ImageFormat::SetAttrsTagList(tags);
}

bool FakeFormat::CopyAttr(Tag key, void* out) {
    Note("CopyAttr");
    if (key != 0x200000c8) return ImageFormat::CopyAttr(key, out);
    *static_cast<double*>(out) = rate;
    return true;
}

bool FakeFormat::CheckOptions() {
    Note("CheckOptions");
    return ImageFormat::CheckOptions();
}

bool FakeFormat::OpenFile(const char* path, const TagList& tags) {
    Note("OpenFile");
    return ImageFormat::OpenFile(path, tags);
}

bool FakeFormat::LoadHeaderTagList(const CxID& dataType, const char* path, TagList& tags) {
    Note("LoadHeaderTagList(CxID)");
    return ImageFormat::LoadHeaderTagList(dataType, path, tags);
}

bool FakeFormat::SaveHeaderTagList(CxID dataType, IOClass* io, Parameter* data, TagList& tags) {
    Note("SaveHeaderTagList(CxID)");
    return ImageFormat::SaveHeaderTagList(dataType, io, data, tags);
}

bool FakeFormat::LoadDataTagList(CxID dataType, double start, double end, TagList& tags) {
    Note("LoadDataTagList");
    return ImageFormat::LoadDataTagList(dataType, start, end, tags);
}

bool FakeFormat::SaveDataTagList(CxID dataType, Parameter* data, double time, TagList& tags) {
    Note("SaveDataTagList");
    return ImageFormat::SaveDataTagList(dataType, data, time, tags);
}

bool FakeFormat::CloseFile() {
    Note("CloseFile");
    return ImageFormat::CloseFile();
}

bool FakeFormat::GetPreviews(List* previews, uint32_t count, CxFrame* frame) {
    Note("GetPreviews");
    return ImageFormat::GetPreviews(previews, count, frame);
}

int32_t FakeFormat::GetNumStreams(CxID dataType) {
    Note("GetNumStreams");
    return ImageFormat::GetNumStreams(dataType);
}

void FakeFormat::AddLoadInputs(Operator* tool) {
    Note("AddLoadInputs");
    ImageFormat::AddLoadInputs(tool);
}

void FakeFormat::NotifyChangedLoad(Operator* tool, Input* input, Parameter* value, double time) {
    Note("NotifyChangedLoad");
    ImageFormat::NotifyChangedLoad(tool, input, value, time);
}

void FakeFormat::SetupLoad(Operator* tool, Request* request) {
    Note("SetupLoad");
    ImageFormat::SetupLoad(tool, request);
}

void FakeFormat::CleanupLoad(Operator* tool) {
    Note("CleanupLoad");
    ImageFormat::CleanupLoad(tool);
}

void FakeFormat::AddSaveInputs(Operator* tool) {
    Note("AddSaveInputs");
    ImageFormat::AddSaveInputs(tool);
}

void FakeFormat::NotifyChangedSave(Operator* tool, Input* input, Parameter* value, double time) {
    Note("NotifyChangedSave");
    ImageFormat::NotifyChangedSave(tool, input, value, time);
}

void FakeFormat::SetupSave(Operator* tool, Request* request) {
    Note("SetupSave");
    ImageFormat::SetupSave(tool, request);
}

void FakeFormat::CleanupSave(Operator* tool) {
    Note("CleanupSave");
    ImageFormat::CleanupSave(tool);
}

bool FakeFormat::CheckSizeOptions() {
    Note("CheckSizeOptions");
    return ImageFormat::CheckSizeOptions();
}

bool FakeFormat::LoadHeaderTagList(const char* path, TagList& tags) {
    Note("LoadHeaderTagList(path)");
    return ImageFormat::LoadHeaderTagList(path, tags);
}

bool FakeFormat::LoadFrameTagList(uint32_t frame, Image*& image, TagList& tags) {
    Note("LoadFrameTagList");
    return ImageFormat::LoadFrameTagList(frame, image, tags);
}

bool FakeFormat::SaveHeaderTagList(const char* path, Image* image, TagList& tags) {
    Note("SaveHeaderTagList(path)");
    return ImageFormat::SaveHeaderTagList(path, image, tags);
}

bool FakeFormat::SaveHeaderTagList(IOClass* io, Image* image, TagList& tags) {
    Note("SaveHeaderTagList(IOClass)");
    return ImageFormat::SaveHeaderTagList(io, image, tags);
}

bool FakeFormat::SaveFrameTagList(uint32_t frame, Image* image, TagList& tags) {
    Note("SaveFrameTagList");
    return ImageFormat::SaveFrameTagList(frame, image, tags);
}

int64_t FakeFormat::PredictFileSize(Image* image) {
    Note("PredictFileSize");
    return ImageFormat::PredictFileSize(image);
}
