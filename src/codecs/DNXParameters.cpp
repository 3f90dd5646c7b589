#include "codecs/DNXParameters.h"

#include "codecs/DNXTables.h"

namespace {

constexpr uint32_t codesAlpha = 2; ///< of `CxEncodedFrame::flags`

bool CanHaveAlpha(uint32_t compressionId) { return FindDNXCompression(compressionId).fourCC == dnxHRCode; }

/// What of a picture depends on how the frame is coded.
struct Coding {
    uint32_t compressionId;
    uint32_t codedBits;
    uint32_t colorFormat;
    bool alpha;
};

uint32_t PackingOf(DNXPictureKind kind, bool alpha) {
    switch (kind) {
    case DNXPictureKind::Rgb: return FourCC("a48r");
    case DNXPictureKind::YCbCr16: return alpha ? FourCC("yv16") : FourCC("v216");
    default: return alpha ? FourCC("yv8u") : FourCC("2vuy");
    }
}

uint32_t LayoutOf(DNXPictureKind kind, uint32_t compressionId) {
    if (kind == DNXPictureKind::YCbCr8) return dnxLayout8Bit;
    return FindDNXCompression(compressionId).fourCC == dnxHRCode ? dnxLayout16BitHR : dnxLayout16Bit;
}

uint32_t ColorOf(DNXPictureKind kind, uint32_t codedColor) {
    switch (kind) {
    case DNXPictureKind::Rgb: return dnxColorRgb;
    case DNXPictureKind::YCbCr16: return dnxColorYCbCr;
    // A frame that says RGB is asked for as such, in `2vuy`. Kept.
    default: return codedColor;
    }
}

uint32_t SamplesOf(DNXPictureKind kind, bool alpha, uint32_t codedBits) {
    const bool coded8 = codedBits == 8;
    if (kind == DNXPictureKind::Rgb) return coded8 ? dnxSamplesArgbCoded8 : dnxSamplesArgb;
    if (!alpha) return dnxSamplesCbYCrY;
    return coded8 ? dnxSamplesCbYACrYACoded8 : dnxSamplesCbYACrYA;
}

DNXPicture PictureOf(const Coding& coding, uint32_t frameStructure) {
    const DNXPictureKind kind = FindDNXCompression(coding.compressionId).kind;
    DNXUncompressedParameters parameters = {};
    parameters.size = sizeof(parameters);
    parameters.componentLayout = LayoutOf(kind, coding.compressionId);
    parameters.codedBits = coding.codedBits;
    parameters.colorFormat = ColorOf(kind, coding.colorFormat);
    parameters.sampleFormat = SamplesOf(kind, coding.alpha, coding.codedBits);
    parameters.frameStructure = frameStructure;
    parameters.constant = 1;
    return {PackingOf(kind, coding.alpha), parameters};
}

} // namespace

bool HasAlpha(const DNXFrameInformation& information) {
    return information.alpha != 0 && CanHaveAlpha(information.compressionId);
}

DNXPicture PictureToDecode(const DNXFrameInformation& information, int32_t frameType) {
    const Coding coding = {information.compressionId, information.codedBits, information.colorFormat,
                           HasAlpha(information)};
    return PictureOf(coding,
                     frameType == dnxFrameTypeInterlaced ? dnxStructureInterlaced : dnxStructureProgressive);
}

DNXDecodeOperation DecodeOperation(bool alpha) {
    return {sizeof(DNXDecodeOperation), {4, 1}, 0, alpha ? 1U : 0U};
}

DNXCompressedParameters ParametersToEncode(int32_t width, int32_t height, const CxEncodedFrame& frame) {
    const DNXCompression& compression = FindDNXCompression(frame.codecTag);
    DNXCompressedParameters parameters = {};
    parameters.size = sizeof(parameters);
    parameters.width = static_cast<uint32_t>(width);
    parameters.height = static_cast<uint32_t>(height);
    parameters.compressionId = frame.codecTag;
    parameters.codedBits = 1;
    parameters.colorFormat = compression.sampling == dnxSampling444 ? dnxColorRgb : dnxColorYCbCr;
    parameters.sampling = compression.sampling;
    parameters.depth = compression.depth;
    parameters.constants[0] = 1;
    parameters.constants[1] = 1;
    parameters.constants[2] = 1;
    parameters.alpha = (frame.flags & codesAlpha) != 0 && CanHaveAlpha(frame.codecTag) ? 1 : 0;
    return parameters;
}

DNXPicture PictureToEncode(const DNXCompressedParameters& compressed, uint32_t fieldOrder) {
    constexpr uint32_t progressive = 1;
    const bool isProgressive =
        fieldOrder == progressive || FindDNXCompression(compressed.compressionId).progressive;
    const Coding coding = {compressed.compressionId, 1, dnxColorYCbCr, compressed.alpha != 0};
    return PictureOf(coding, isProgressive ? dnxStructureProgressive : dnxStructureInterlaced);
}

DNXEncodeOperation EncodeOperation() { return {sizeof(DNXEncodeOperation), 4}; }
