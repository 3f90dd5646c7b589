#include "RecordedColorConvert.h"

namespace {

std::vector<RecordedColorConvert::Call> calls;

} // namespace

std::optional<RecordedColorConvert::Call> RecordedColorConvert::OnlyCall() {
    return calls.size() == 1 ? std::optional(calls[0]) : std::nullopt;
}

void RecordedColorConvert::Forget() { calls.clear(); }

bool CxYUV2RGBTagList(Image* image, const TagList& tags) {
    calls.push_back({false, image, tags.Items()});
    return false;
}

void* CxRGB2YUVTagList(Image* image, const TagList& tags) {
    calls.push_back({true, image, tags.Items()});
    return nullptr;
}
