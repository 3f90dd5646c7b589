#include "host/MediaFormat.h"

bool MediaFormat::CheckOptions() { return true; }

bool MediaFormat::OpenFile(const char*, const TagList&) { return false; }

bool MediaFormat::LoadHeaderTagList(const CxID&, const char*, TagList&) { return false; }

bool MediaFormat::SaveHeaderTagList(CxID, IOClass*, Parameter*, TagList&) { return false; }

bool MediaFormat::LoadDataTagList(CxID, double, double, TagList&) { return false; }

bool MediaFormat::SaveDataTagList(CxID, Parameter*, double, TagList&) { return false; }

bool MediaFormat::CloseFile() { return true; }

bool MediaFormat::GetPreviews(List*, uint32_t, CxFrame*) { return false; }

int32_t MediaFormat::GetNumStreams(CxID) { return 0; }

void MediaFormat::AddLoadInputs(Operator*) {}

void MediaFormat::NotifyChangedLoad(Operator*, Input*, Parameter*, double) {}

void MediaFormat::SetupLoad(Operator*, Request*) {}

void MediaFormat::CleanupLoad(Operator*) {}

void MediaFormat::AddSaveInputs(Operator*) {}

void MediaFormat::NotifyChangedSave(Operator*, Input*, Parameter*, double) {}

void MediaFormat::SetupSave(Operator*, Request*) {}

void MediaFormat::CleanupSave(Operator*) {}
