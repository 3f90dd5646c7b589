#pragma once

#include "cameraraw/VrelDecoderContext.h"
#include "host/ImageFormat.h"

#include <cstdint>
#include <memory>
#include <string>

/// Attributes and tags of the format beside those of `ImageFormat`.
enum VrelFormatTag : Tag {
    VrelTag_Zero = 0x100000ca,             ///< attribute: int32, always 0
    VrelTag_FrameCount = 0x100000cb,       ///< attribute: int32
    VrelTag_FrameRate = 0x200000c8,        ///< attribute: frames a second
    VrelTag_ImagePreparation = 0x100000d0, ///< of a load: the host's; 0 reaches the base as 3
};

/// The host's format class for clips of the camera "Ravenlight Raw". It loads only, and gives any frame in
/// any order, with the settings that the clip has. One object serves one tool, one thread at a time, which
/// waits while threads of the SDK work. Where memory is short an operation fails.
class VrelFileFormat final : public ImageFormat {
public:
    using ImageFormat::ImageFormat;
    ~VrelFileFormat() override;

    size_t ObjectSize() const override;
    bool CopyAttr(Tag key, void* out) override;
    /// Opens a clip, unless it is open already. A clip that takes the place of an open one leaves the clip
    /// metadata as they were. Kept.
    /// @return false, with no clip open, if the SDK is missing or refuses the clip
    bool OpenFile(const char* path, const TagList& tags) override;
    bool LoadHeaderTagList(const CxID& dataType, const char* path, TagList& tags) override;
    /// Closes the clip and forgets its metadata; size, count and rate stay. True.
    bool CloseFile() override;
    /// The format has no controls.
    void AddLoadInputs(Operator*) override {}
    void NotifyChangedLoad(Operator*, Input*, Parameter*, double) override {}
    void SetupLoad(Operator*, Request*) override {}
    /// Opens a clip as `OpenFile` does, and sets size, count and rate.
    bool LoadHeaderTagList(const char* path, TagList& tags) override;
    /// Loads frame `frame` (from 0) of the open clip. The metadata of clip and frame go into the image's
    /// table "Metadata" if the clip has any, also where the base refuses or the frame fails to decode.
    /// @return false if the base refuses, the frame can't be decoded, or the image does not have the size of
    ///         the clip's pictures
    bool LoadFrameTagList(uint32_t frame, Image*& image, TagList& tags) override;

    /// Writes the clip's metadata and then a frame's, whose values win, into the image's table "Metadata", as
    /// text. Entries without text are left out. Without an image or metadata of the clip nothing is written,
    /// also of the frame. Kept. Throws std::bad_alloc.
    void ApplyMetadata(Image*& image, const QMap<QString, QVariant>& frameMetadata) const;

    /// The context of the open clip, or null.
    VrelDecoderContext* Context() const { return context_.get(); }

private:
    bool OpenClip(const char* path);
    bool DecodeFrame(uint32_t frame, Image*& image);

    std::unique_ptr<VrelDecoderContext> context_;
    std::string fileName_; ///< path of the open clip
    QMap<QString, QVariant> clipMetadata_;
    int32_t frameCount_ = 0;
    float frameRate_ = 1.0F; ///< frames a second
};

/// Announces `VrelFileFormat` to the host until the module is unloaded. Called once, while it is loaded.
void RegisterVrelFileFormat();
