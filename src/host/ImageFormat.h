#pragma once

#include "host/CorvexDoc.h"
#include "host/Image.h"
#include "host/MediaFormat.h"

/// Id of the data type of pictures.
inline constexpr char CLSID_DataType_Image[] = "DataType_Image";

/// Attributes and tags of image formats.
enum ImageFormatTag : Tag {
    FormatTag_Width = 0x100000c8,    ///< attribute: pixels across
    FormatTag_Height = 0x100000c9,   ///< attribute: rows
    FormatTag_DataKind = 0x100000d1, ///< `LoadFrameTagList`: `ImageDataKind` of an image that it makes
};

/// A file format that loads or saves pictures. As with `MediaFormat`, what a format class does not fill
/// refuses, and the order of the virtual operations is part of the interface.
class CORVEX_HOST_API ImageFormat : public MediaFormat {
public:
    /// Id of this class; registrations of format classes name its address as their parent.
    static const CxID ClassID;

    using MediaFormat::LoadHeaderTagList;
    using MediaFormat::MediaFormat;
    using MediaFormat::SaveHeaderTagList;

    size_t ObjectSize() const override;
    /// Knows `FormatTag_Width` and `FormatTag_Height`.
    bool SetAttrsTagList(const TagList& tags) override;
    /// Knows `FormatTag_Width` and `FormatTag_Height`.
    bool CopyAttr(Tag key, void* out) override;
    /// Forwards to the form without a data type if `dataType` is `CLSID_DataType_Image`, and refuses all
    /// others.
    bool LoadHeaderTagList(const CxID& dataType, const char* path, TagList& tags) override;

    /// Whether the size goes with the options; true.
    virtual bool CheckSizeOptions();

    /// Opens a file, unless it is open already, and sets `width` and `height`.
    virtual bool LoadHeaderTagList(const char* path, TagList& tags);
    /// Loads frame `frame` (from 0) into `image`. Overrides call this one first: it prepares the image. With
    /// a null `image` it makes one of `width` by `height` pixels, of the kind in `FormatTag_DataKind` or
    /// 16-bit, which the caller frees, also if the load fails afterwards. An image that is there stays as it
    /// is, whatever its size: the base does not compare it with `width` and `height`, and an override does so
    /// before it writes pixels.
    /// @return false, with `image` null, if `width` or `height` is not positive, the kind is unknown or the
    ///         image can't be made
    virtual bool LoadFrameTagList(uint32_t frame, Image*& image, TagList& tags);
    /// Starts a file at `path` for pictures like `image`.
    virtual bool SaveHeaderTagList(const char* path, Image* image, TagList& tags);
    /// The same on an open stream of the host.
    virtual bool SaveHeaderTagList(IOClass* io, Image* image, TagList& tags);
    /// Saves one picture.
    virtual bool SaveFrameTagList(uint32_t frame, Image* image, TagList& tags);
    /// Size in bytes of a file with this picture, or 0 if it isn't known.
    virtual int64_t PredictFileSize(Image* image);

    int32_t width = 0;  ///< pixels across, once a header is loaded
    int32_t height = 0; ///< rows, once a header is loaded
};
