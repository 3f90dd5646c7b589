#include "cameraraw/VrelFileFormat.h"

#include "framework/CatchAll.h"
#include "framework/ImageMetadata.h"
#include "pixel/PixelConvert.h"
#include "pixel/PixelFormatTable.h"

#include <algorithm>
#include <limits>

namespace {

constexpr uint32_t planarPacking = FourCC("rp16");

bool Answer(void* out, int32_t value) {
    *static_cast<int32_t*>(out) = value;
    return true;
}

bool Answer(void* out, double value) {
    *static_cast<double*>(out) = value;
    return true;
}

/// A size of the SDK as the host has it; one that it can't have is negative, which the base refuses.
int32_t SizeOf(uint32_t processed, uint32_t ofClip) {
    return static_cast<int32_t>(processed != 0 ? processed : ofClip);
}

int32_t LimitToCount(uint64_t count) {
    return static_cast<int32_t>(std::min<uint64_t>(count, std::numeric_limits<int32_t>::max()));
}

/// Whether the planes that stand in a buffer are those of the image: they follow each other at distances
/// that go with its rows, and a frame need not have the size that the clip tells.
bool HoldsPlanesOf(const CxAlignedBuffer& planes, int32_t rowBytes, int32_t height, const Image& image) {
    if (rowBytes < 0 || image.Height != height) return false;
    const uint64_t read = BytesRead(*FindPixelFormat(planarPacking), image.Width, image.Height, rowBytes);
    return static_cast<uint64_t>(planes.used) >= read;
}

/// Writes those metadata into a table that have a text.
void WriteMetadata(const QMap<QString, QVariant>& metadata, ScriptVal& table) {
    for (auto entry = metadata.begin(); entry != metadata.end(); ++entry) {
        const QString text = entry.value().toString();
        if (!text.isEmpty())
            table.FindKey(CxString(entry.key().utf16()).c_str()) = CxString(text.utf16()).c_str();
    }
}

} // namespace

VrelFileFormat::~VrelFileFormat() { VrelFileFormat::CloseFile(); }

size_t VrelFileFormat::ObjectSize() const { return sizeof(VrelFileFormat); }

bool VrelFileFormat::CopyAttr(Tag key, void* out) {
    switch (key) {
    case FormatTag_Width: return Answer(out, width);
    case FormatTag_Height: return Answer(out, height);
    case VrelTag_Zero: return Answer(out, 0);
    case VrelTag_FrameCount: return Answer(out, frameCount_);
    case VrelTag_FrameRate: return Answer(out, static_cast<double>(frameRate_));
    default: return ImageFormat::CopyAttr(key, out);
    }
}

bool VrelFileFormat::OpenFile(const char* path, const TagList& /*tags*/) {
    const bool isOpen = CatchAll(false, [&] { return path != nullptr && OpenClip(path); });
    if (!isOpen) CloseFile();
    return isOpen;
}

bool VrelFileFormat::OpenClip(const char* path) {
    std::string name = path;
    if (context_ != nullptr) {
        if (name == fileName_) return true;
        context_->ReleaseClip();
        if (context_->OpenClip(path)) {
            // The metadata stay those of the clip before. Kept.
            fileName_ = std::move(name);
            return true;
        }
        CloseFile();
    }
    context_ = std::make_unique<VrelDecoderContext>();
    if (!context_->OpenClip(path)) return false;
    context_->GetClipMetadata(clipMetadata_);
    fileName_ = std::move(name);
    return true;
}

bool VrelFileFormat::CloseFile() {
    clipMetadata_.clear();
    context_.reset();
    fileName_.clear();
    return true;
}

bool VrelFileFormat::LoadHeaderTagList(const CxID& dataType, const char* path, TagList& tags) {
    return dataType == CLSID_DataType_Image && LoadHeaderTagList(path, tags);
}

bool VrelFileFormat::LoadHeaderTagList(const char* path, TagList& tags) {
    if (!OpenFile(path, tags)) return false;
    const RawClipFacts& facts = context_->Facts();
    height = SizeOf(facts.processedHeight, facts.height);
    width = SizeOf(facts.processedWidth, facts.width);
    frameCount_ = LimitToCount(facts.frameCount);
    frameRate_ = facts.frameRate;
    return true;
}

bool VrelFileFormat::LoadFrameTagList(uint32_t frame, Image*& image, TagList& tags) {
    return CatchAll(false, [&] {
        TagList prepared = tags;
        if (tags.GetLong(VrelTag_ImagePreparation, 1) == 0) prepared.Set(VrelTag_ImagePreparation, 3, false);
        const bool isPrepared = ImageFormat::LoadFrameTagList(frame, image, prepared);
        if (context_ != nullptr && image != nullptr) {
            if (!context_->IsOpen()) context_->OpenClip(fileName_.c_str());
            // The frame is read here for its metadata, and once more to be decoded. Kept.
            QMap<QString, QVariant> frameMetadata;
            context_->GetFrameMetadata(frame, frameMetadata);
            ApplyMetadata(image, frameMetadata);
        }
        return isPrepared && context_ != nullptr && image != nullptr && DecodeFrame(frame, image);
    });
}

bool VrelFileFormat::DecodeFrame(uint32_t frame, Image*& image) {
    CxAlignedBuffer planes;
    if (!context_->DecodeFrame(frame, planes)) return false;
    const int32_t rowBytes = PixelConvert::CalcRowBytes(planarPacking, static_cast<uint32_t>(width));
    return HoldsPlanesOf(planes, rowBytes, height, *image) &&
           PixelConvert::BlobToImage(static_cast<uint8_t*>(planes.data), static_cast<uint32_t>(rowBytes),
                                     planarPacking, image);
}

void VrelFileFormat::ApplyMetadata(Image*& image, const QMap<QString, QVariant>& frameMetadata) const {
    if (image == nullptr || clipMetadata_.isEmpty()) return;
    ScriptVal& table = MetadataTable(*image);
    WriteMetadata(clipMetadata_, table);
    WriteMetadata(frameMetadata, table);
}
