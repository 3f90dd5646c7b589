// What is refused, with which error, before and while handles work.

#include "standins/dnx/DNXLibrary.h"
#include "standins/dnx/Peer.h"

#include <gtest/gtest.h>

namespace {

constexpr uint32_t width = 256;
constexpr uint32_t height = 120;

Bytes GreyPicture() { return Bytes(v216.pixelBytes * width * height, 0x80); }
Bytes GreyFrame() { return EncodePicture(1271, width, height, v216, GreyPicture()).value; }

int32_t EncoderError(const DNXCompressedParameters& compressed,
                     const DNXUncompressedParameters& uncompressed) {
    return MakeEncoder(compressed, uncompressed).error;
}
int32_t DecoderError(const DNXFrameInformation& information, const DNXUncompressedParameters& uncompressed) {
    return MakeDecoder(information, uncompressed).error;
}

TEST(Refusals, NullArgumentsOfDescribing) {
    const Bytes frame = GreyFrame();
    const auto size = static_cast<uint32_t>(frame.size());
    DNXFrameInformation information = Information(0, 0, 0);
    int32_t type = 0;
    EXPECT_EQ(DNX().GetInfoFromCompressedFrame(nullptr, size, &information, &type), nullArgument);
    EXPECT_EQ(DNX().GetInfoFromCompressedFrame(frame.data(), size, nullptr, &type), nullArgument);
    EXPECT_EQ(DNX().GetInfoFromCompressedFrame(frame.data(), size, &information, nullptr), nullArgument);
}

TEST(Refusals, NullArgumentsOfMakingADecoder) {
    const DNXFrameInformation information = Information(1271, width, height);
    const DNXUncompressedParameters uncompressed = Uncompressed(v216);
    int any = 0;
    void* decoder = &any;
    EXPECT_EQ(DNX().CreateDecoder(nullptr, &uncompressed, &decodeOperation, &decoder), nullArgument);
    EXPECT_EQ(decoder, nullptr);
    EXPECT_EQ(DNX().CreateDecoder(&information, nullptr, &decodeOperation, &decoder), nullArgument);
    EXPECT_EQ(DNX().CreateDecoder(&information, &uncompressed, nullptr, &decoder), nullArgument);
    EXPECT_EQ(DNX().CreateDecoder(&information, &uncompressed, &decodeOperation, nullptr), nullArgument);
}

TEST(Refusals, NullArgumentsOfMakingAnEncoder) {
    const DNXCompressedParameters compressed = Compressed(1271, width, height);
    const DNXUncompressedParameters uncompressed = Uncompressed(v216);
    int any = 0;
    void* encoder = &any;
    EXPECT_EQ(DNX().CreateEncoder(nullptr, &uncompressed, &encodeOperation, &encoder), nullArgument);
    EXPECT_EQ(encoder, nullptr);
    EXPECT_EQ(DNX().CreateEncoder(&compressed, nullptr, &encodeOperation, &encoder), nullArgument);
    EXPECT_EQ(DNX().CreateEncoder(&compressed, &uncompressed, nullptr, &encoder), nullArgument);
    EXPECT_EQ(DNX().CreateEncoder(&compressed, &uncompressed, &encodeOperation, nullptr), nullArgument);
}

TEST(Refusals, NullArgumentsOfDecoding) {
    const DecoderPtr decoder = MakeDecoder(Information(1271, width, height), Uncompressed(v216)).value;
    const Bytes frame = GreyFrame();
    Bytes picture = GreyPicture();
    const auto frameSize = static_cast<uint32_t>(frame.size());
    const auto pictureSize = static_cast<uint32_t>(picture.size());
    EXPECT_EQ(DNX().DecodeFrame(nullptr, frame.data(), picture.data(), frameSize, pictureSize), nullArgument);
    EXPECT_EQ(DNX().DecodeFrame(decoder.get(), nullptr, picture.data(), frameSize, pictureSize),
              nullArgument);
    EXPECT_EQ(DNX().DecodeFrame(decoder.get(), frame.data(), nullptr, frameSize, pictureSize), nullArgument);
}

TEST(Refusals, NullArgumentsOfEncoding) {
    const EncoderPtr encoder = MakeEncoder(Compressed(1271, width, height), Uncompressed(v216)).value;
    const Bytes picture = GreyPicture();
    Bytes frame(16384);
    const auto pictureSize = static_cast<uint32_t>(picture.size());
    uint32_t written = 7;
    const auto encode = [&](void* handle, const void* input, void* output, uint32_t* size) {
        return DNX().EncodeFrame(handle, input, output, pictureSize, 16384, size);
    };
    EXPECT_EQ(encode(nullptr, picture.data(), frame.data(), &written), nullArgument);
    EXPECT_EQ(encode(encoder.get(), nullptr, frame.data(), &written), nullArgument);
    EXPECT_EQ(encode(encoder.get(), picture.data(), nullptr, &written), nullArgument);
    EXPECT_EQ(encode(encoder.get(), picture.data(), frame.data(), nullptr), nullArgument);
    EXPECT_EQ(written, 7u);
}

TEST(Refusals, NoBufferSizeForNoParameters) { EXPECT_EQ(DNX().GetCompressedBufferSize(nullptr), 0u); }

TEST(Refusals, RecordsThatDoNotBeginWithTheirSize) {
    DNXCompressedParameters compressed = Compressed(1271, width, height);
    DNXUncompressedParameters uncompressed = Uncompressed(v216);
    DNXFrameInformation information = Information(1271, width, height);
    compressed.size = 63;
    EXPECT_EQ(EncoderError(compressed, uncompressed), recordSize);
    EXPECT_EQ(DNX().GetCompressedBufferSize(&compressed), 0u);
    compressed.size = 64;
    uncompressed.size = 52;
    EXPECT_EQ(EncoderError(compressed, uncompressed), recordSize);
    EXPECT_EQ(DecoderError(information, uncompressed), recordSize);
    uncompressed.size = 50;
    information.size = 0;
    EXPECT_EQ(DecoderError(information, uncompressed), recordSize);
}

TEST(Refusals, OperationsThatDoNotBeginWithTheirSize) {
    const DNXCompressedParameters compressed = Compressed(1271, width, height);
    const DNXUncompressedParameters uncompressed = Uncompressed(v216);
    const DNXFrameInformation information = Information(1271, width, height);
    const DNXEncodeOperation encode = {24, 4};
    const DNXDecodeOperation decode = {12, {4, 1}, 0, 0};
    void* handle = nullptr;
    EXPECT_EQ(DNX().CreateEncoder(&compressed, &uncompressed, &encode, &handle), recordSize);
    EXPECT_EQ(DNX().CreateDecoder(&information, &uncompressed, &decode, &handle), recordSize);
}

TEST(Refusals, InformationThatDoesNotBeginWithItsSize) {
    const Bytes frame = GreyFrame();
    DNXFrameInformation information = {};
    int32_t type = 0;
    EXPECT_EQ(DNX().GetInfoFromCompressedFrame(frame.data(), static_cast<uint32_t>(frame.size()),
                                               &information, &type),
              recordSize);
    EXPECT_EQ(information.width, 0u);
}

TEST(Refusals, PictureFormatsThatNoPackingHas) {
    constexpr PackingRow rows[] = {
        {"bytes A R G B", dnxLayout8Bit, dnxColorRgb, dnxSamplesArgb, 4},
        {"A R G B as Y'CbCr", dnxLayout16Bit, dnxColorYCbCr, dnxSamplesArgb, 8},
        {"Cb Y Cr Y as R'G'B'", dnxLayout8Bit, dnxColorRgb, dnxSamplesCbYCrY, 2},
        {"words Cb Y Cr Y of DNxHD", dnxLayout16Bit, dnxColorYCbCr, dnxSamplesCbYCrY, 4},
        {"no color", dnxLayout8Bit, 0, dnxSamplesCbYCrY, 2},
        {"no layout", 0, dnxColorYCbCr, dnxSamplesCbYCrY, 2},
        {"no samples", dnxLayout8Bit, dnxColorYCbCr, 0, 2},
    };
    for (const PackingRow& row : rows) {
        EXPECT_EQ(DecoderError(Information(1271, width, height), Uncompressed(row)), wrongPictureFormat)
            << row.name;
        EXPECT_EQ(EncoderError(Compressed(1271, width, height), Uncompressed(row)), wrongPictureFormat)
            << row.name;
    }
}

TEST(Refusals, YCbCrPicturesToEncodeAsRgb) {
    for (const PackingRow& packing : {vuy2, v216})
        EXPECT_EQ(EncoderError(Compressed(1270, width, height), Uncompressed(packing)), wrongPictureFormat);
}

TEST(Refusals, FramesOfAnotherColorThanTheCompressionHas) {
    for (const uint32_t id : {1270u, 1271u}) {
        DNXCompressedParameters compressed = Compressed(id, width, height);
        compressed.colorFormat = 3 - compressed.colorFormat;
        EXPECT_EQ(EncoderError(compressed, Uncompressed(a48r)), wrongPictureFormat) << id;
    }
}

TEST(Refusals, PicturesWithAlphaToEncode) {
    for (const PackingRow& packing : {yv8u, yv16})
        EXPECT_EQ(EncoderError(Compressed(1271, width, height), Uncompressed(packing)), noAlpha);
}

TEST(Refusals, FrameStructuresThatDoNotExist) {
    for (const uint32_t structure : {0u, 2u, 65u}) {
        EXPECT_EQ(DecoderError(Information(1271, width, height), Uncompressed(v216, structure)),
                  wrongFrameStructure);
        EXPECT_EQ(EncoderError(Compressed(1242, 1920, 1080), Uncompressed(vuy2, structure)),
                  wrongFrameStructure);
    }
}

TEST(Refusals, DecodersOfFramesWithAlpha) {
    DNXFrameInformation information = Information(1271, width, height);
    information.alpha = 1;
    EXPECT_EQ(DecoderError(information, Uncompressed(yv16)), noAlpha);
}

TEST(Refusals, DecodersOfPicturesThatNeedAlpha) {
    const DNXFrameInformation information = Information(1271, width, height);
    const DNXUncompressedParameters uncompressed = Uncompressed(yv16);
    const DNXDecodeOperation operation = {24, {4, 1}, 0, 1};
    void* decoder = nullptr;
    EXPECT_EQ(DNX().CreateDecoder(&information, &uncompressed, &operation, &decoder), noAlpha);
}

TEST(Refusals, FramesWithAlpha) {
    Bytes frame = GreyFrame();
    frame.at(7) |= 3;
    DNXFrameInformation information = Information(0, 0, 0);
    int32_t type = 0;
    const auto size = static_cast<uint32_t>(frame.size());
    ASSERT_EQ(DNX().GetInfoFromCompressedFrame(frame.data(), size, &information, &type), noError);
    EXPECT_EQ(information.alpha, 1u);
    EXPECT_EQ(information.losslessAlpha, 1u);
    const DecoderPtr decoder = MakeDecoder(Information(1271, width, height), Uncompressed(v216)).value;
    Bytes picture = GreyPicture();
    EXPECT_EQ(DNX().DecodeFrame(decoder.get(), frame.data(), picture.data(), size,
                                static_cast<uint32_t>(picture.size())),
              noAlpha);
}

TEST(Refusals, DecodersOfSizesThatNoFrameHas) {
    EXPECT_EQ(DecoderError(Information(1271, 0, height), Uncompressed(v216)), wrongPictureSize);
    EXPECT_EQ(DecoderError(Information(1271, width, 0), Uncompressed(v216)), wrongPictureSize);
    EXPECT_EQ(DecoderError(Information(1271, 65536, height), Uncompressed(v216)), wrongPictureSize);
    EXPECT_EQ(DecoderError(Information(1271, width, UINT32_MAX), Uncompressed(v216)), wrongPictureSize);
}

TEST(Refusals, FramesOfAnotherSizeThanTheDecoder) {
    const DecoderPtr decoder = MakeDecoder(Information(1271, width, height + 1), Uncompressed(v216)).value;
    const Bytes frame = GreyFrame();
    Bytes picture(v216.pixelBytes * width * (height + 1));
    EXPECT_EQ(DNX().DecodeFrame(decoder.get(), frame.data(), picture.data(),
                                static_cast<uint32_t>(frame.size()), static_cast<uint32_t>(picture.size())),
              wrongFrameSize);
}

TEST(Refusals, BuffersThatAreTooSmallForAPicture) {
    const DecoderPtr decoder = MakeDecoder(Information(1271, width, height), Uncompressed(v216)).value;
    const Bytes frame = GreyFrame();
    Bytes picture = GreyPicture();
    const auto decode = [&](uint32_t size) {
        return DNX().DecodeFrame(decoder.get(), frame.data(), picture.data(),
                                 static_cast<uint32_t>(frame.size()), size);
    };
    const auto size = static_cast<uint32_t>(picture.size());
    EXPECT_EQ(decode(size - 1), wrongPictureBuffer);
    EXPECT_EQ(decode(0), wrongPictureBuffer);
    EXPECT_EQ(decode(size), noError);
}

TEST(Refusals, PicturesOfAnotherSizeThanTheEncoder) {
    const DNXCompressedParameters compressed = Compressed(1271, width, height);
    const EncoderPtr encoder = MakeEncoder(compressed, Uncompressed(v216)).value;
    Bytes picture = GreyPicture();
    picture.push_back(0);
    EXPECT_EQ(EncodeWith(encoder, compressed, picture).error, wrongPictureBuffer);
    picture.pop_back();
    picture.pop_back();
    EXPECT_EQ(EncodeWith(encoder, compressed, picture).error, wrongPictureBuffer);
    picture.push_back(0);
    EXPECT_EQ(EncodeWith(encoder, compressed, picture).error, noError);
}

TEST(Refusals, BuffersThatAreTooSmallForAFrame) {
    const EncoderPtr encoder = MakeEncoder(Compressed(1271, width, height), Uncompressed(v216)).value;
    const Bytes picture = GreyPicture();
    Bytes frame(16384, 0xAA);
    uint32_t written = 7;
    const auto encode = [&](uint32_t size) {
        return DNX().EncodeFrame(encoder.get(), picture.data(), frame.data(),
                                 static_cast<uint32_t>(picture.size()), size, &written);
    };
    EXPECT_EQ(encode(16383), smallFrameBuffer);
    EXPECT_EQ(written, 7u);
    EXPECT_EQ(frame, Bytes(16384, 0xAA));
    EXPECT_EQ(encode(16384), noError);
    EXPECT_EQ(written, 16384u);
}

} // namespace
