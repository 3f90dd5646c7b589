#include "standins/dnx/DNXLibrary.h"

#include "standins/LoadedLibrary.h"

namespace {

DNXLibrary LoadLibrary() {
    const LoadedLibrary library(CORVEX_DNX_LIBRARY);
    DNXLibrary found = {};
    library.Find("DNX_Initialize", found.Initialize);
    library.Find("DNX_Finalize", found.Finalize);
    library.Find("DNX_GetVersion", found.GetVersion);
    library.Find("DNX_GetErrorString", found.GetErrorString);
    library.Find("DNX_GetInfoFromCompressedFrame", found.GetInfoFromCompressedFrame);
    library.Find("DNX_CreateDecoder", found.CreateDecoder);
    library.Find("DNX_DecodeFrame", found.DecodeFrame);
    library.Find("DNX_DeleteDecoder", found.DeleteDecoder);
    library.Find("DNX_CreateEncoder", found.CreateEncoder);
    library.Find("DNX_GetCompressedBufferSize", found.GetCompressedBufferSize);
    library.Find("DNX_EncodeFrame", found.EncodeFrame);
    library.Find("DNX_DeleteEncoder", found.DeleteEncoder);
    return found;
}

bool IsInterlaced(uint32_t id) { return id >= 1241 && id <= 1244; }

} // namespace

const DNXLibrary& DNX() {
    static const DNXLibrary library = LoadLibrary();
    return library;
}

DNXCompressedParameters Compressed(uint32_t id, uint32_t width, uint32_t height) {
    const uint32_t colorAndSampling = id == 1256 || id == 1270 ? 2 : 1;
    DNXCompressedParameters parameters = {};
    parameters.size = sizeof(parameters);
    parameters.width = width;
    parameters.height = height;
    parameters.compressionId = id;
    parameters.codedBits = 1;
    parameters.colorFormat = colorAndSampling;
    parameters.sampling = colorAndSampling;
    parameters.depth = id == 1270 || id == 1271 ? 12 : 10;
    for (uint32_t& constant : parameters.constants)
        constant = 1;
    return parameters;
}

DNXUncompressedParameters Uncompressed(const PackingRow& packing, uint32_t structure) {
    DNXUncompressedParameters parameters = {};
    parameters.size = sizeof(parameters);
    parameters.componentLayout = packing.layout;
    parameters.codedBits = 1;
    parameters.colorFormat = packing.color;
    parameters.sampleFormat = packing.samples;
    parameters.frameStructure = structure;
    parameters.constant = 1;
    return parameters;
}

DNXFrameInformation Information(uint32_t id, uint32_t width, uint32_t height) {
    DNXFrameInformation information = {};
    information.size = sizeof(information);
    information.compressionId = id;
    information.width = width;
    information.height = height;
    return information;
}

Outcome<EncoderPtr> MakeEncoder(const DNXCompressedParameters& compressed,
                                const DNXUncompressedParameters& uncompressed) {
    void* encoder = nullptr;
    const int32_t error = DNX().CreateEncoder(&compressed, &uncompressed, &encodeOperation, &encoder);
    return {error, EncoderPtr(encoder)};
}

Outcome<DecoderPtr> MakeDecoder(const DNXFrameInformation& information,
                                const DNXUncompressedParameters& uncompressed) {
    void* decoder = nullptr;
    const int32_t error = DNX().CreateDecoder(&information, &uncompressed, &decodeOperation, &decoder);
    return {error, DecoderPtr(decoder)};
}

Outcome<Bytes> EncodeWith(const EncoderPtr& encoder, const DNXCompressedParameters& compressed,
                          const Bytes& picture) {
    Bytes frame(DNX().GetCompressedBufferSize(&compressed));
    uint32_t written = 0;
    const int32_t error =
        DNX().EncodeFrame(encoder.get(), picture.data(), frame.data(), static_cast<uint32_t>(picture.size()),
                          static_cast<uint32_t>(frame.size()), &written);
    frame.resize(written);
    return {error, frame};
}

Outcome<Bytes> EncodePicture(uint32_t id, uint32_t width, uint32_t height, const PackingRow& packing,
                             const Bytes& picture) {
    const DNXCompressedParameters compressed = Compressed(id, width, height);
    const uint32_t structure = IsInterlaced(id) ? dnxStructureInterlaced : dnxStructureProgressive;
    const Outcome<EncoderPtr> encoder = MakeEncoder(compressed, Uncompressed(packing, structure));
    if (encoder.error != noError) return {encoder.error, {}};
    return EncodeWith(encoder.value, compressed, picture);
}

Outcome<Bytes> DecodePicture(const Bytes& frame, const PackingRow& packing) {
    DNXFrameInformation information = Information(0, 0, 0);
    int32_t frameType = 0;
    const auto size = static_cast<uint32_t>(frame.size());
    int32_t error = DNX().GetInfoFromCompressedFrame(frame.data(), size, &information, &frameType);
    if (error != noError) return {error, {}};
    const uint32_t structure =
        frameType == dnxFrameTypeInterlaced ? dnxStructureInterlaced : dnxStructureProgressive;
    const Outcome<DecoderPtr> decoder = MakeDecoder(information, Uncompressed(packing, structure));
    if (decoder.error != noError) return {decoder.error, {}};
    Bytes picture(packing.pixelBytes * information.width * information.height);
    error = DNX().DecodeFrame(decoder.value.get(), frame.data(), picture.data(), size,
                              static_cast<uint32_t>(picture.size()));
    if (error != noError) picture.clear();
    return {error, picture};
}
