// What works for each compression: the table of docs/dnx.md.

#include "standins/dnx/DNXLibrary.h"
#include "standins/dnx/Peer.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

struct Row {
    uint32_t id;
    PackingRow packing; ///< the one that the module takes to encode
    uint32_t width;     ///< pixels; 0 for any
    uint32_t height;
    bool interlaced;
    AVPixelFormat planes; ///< of frames of the library
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.id << " " << row.packing.name; }

constexpr AVPixelFormat planes8 = AV_PIX_FMT_YUV422P;
constexpr AVPixelFormat planes10 = AV_PIX_FMT_YUV422P10LE;

constexpr Row encoded[] = {
    {1252, vuy2, 1280, 720, false, planes8},
    {1251, vuy2, 1280, 720, false, planes8},
    {1250, a48r, 1280, 720, false, planes10},
    {1253, vuy2, 1920, 1080, false, planes8},
    {1237, vuy2, 1920, 1080, false, planes8},
    {1238, vuy2, 1920, 1080, false, planes8},
    {1235, a48r, 1920, 1080, false, planes10},
    {1242, vuy2, 1920, 1080, true, planes8},
    {1243, vuy2, 1920, 1080, true, planes8},
    {1241, a48r, 1920, 1080, true, planes10},
    {1274, v216, 0, 0, false, planes8},
    {1273, v216, 0, 0, false, planes8},
    {1272, v216, 0, 0, false, planes8},
    {1271, v216, 0, 0, false, planes10},
    {1270, a48r, 0, 0, false, AV_PIX_FMT_GBRP10LE},
    {1244, vuy2, 1440, 1080, true, planes8},
    {1258, vuy2, 960, 720, false, planes8},
    {1259, vuy2, 1440, 1080, false, planes8},
};

struct PictureSize {
    uint32_t width;
    uint32_t height;
};

constexpr PictureSize sizes[] = {{256, 120},   {257, 121},   {720, 486},   {960, 720},   {1280, 720},
                                 {1440, 1080}, {1920, 1080}, {1998, 1080}, {1920, 1088}, {2048, 858}};

Outcome<EncoderPtr> EncoderOf(const Row& row, PictureSize size) {
    return MakeEncoder(
        Compressed(row.id, size.width, size.height),
        Uncompressed(row.packing, row.interlaced ? dnxStructureInterlaced : dnxStructureProgressive));
}

class CompressionTable : public testing::TestWithParam<Row> {
protected:
    PictureSize OwnSize() const {
        const Row& row = GetParam();
        return row.width != 0 ? PictureSize{row.width, row.height} : PictureSize{270, 130};
    }
    Outcome<Bytes> EncodeGrey() const {
        const auto [width, height] = OwnSize();
        const Bytes grey(GetParam().packing.pixelBytes * width * height, 0x80);
        return EncodePicture(GetParam().id, width, height, GetParam().packing, grey);
    }
};

TEST_P(CompressionTable, EncodesItsSizes) {
    const Row& row = GetParam();
    for (const PictureSize size : sizes) {
        const bool allowed = row.width == 0 || (size.width == row.width && size.height == row.height);
        EXPECT_EQ(EncoderOf(row, size).error, allowed ? noError : wrongPictureSize)
            << size.width << " by " << size.height;
    }
}

TEST_P(CompressionTable, MakesFramesAsLargeAsTheBufferThatItAsksFor) {
    const auto [width, height] = OwnSize();
    const DNXCompressedParameters compressed = Compressed(GetParam().id, width, height);
    const Outcome<Bytes> frame = EncodeGrey();
    ASSERT_EQ(frame.error, noError);
    EXPECT_EQ(frame.value.size(), DNX().GetCompressedBufferSize(&compressed));
    EXPECT_GE(frame.value.size(), 8192u);
}

TEST_P(CompressionTable, DescribesItsFrames) {
    const Outcome<Bytes> frame = EncodeGrey();
    ASSERT_EQ(frame.error, noError);
    DNXFrameInformation information = Information(0, 0, 0);
    int32_t frameType = -1;
    ASSERT_EQ(DNX().GetInfoFromCompressedFrame(frame.value.data(), static_cast<uint32_t>(frame.value.size()),
                                               &information, &frameType),
              noError);
    const bool isRgb = GetParam().planes == AV_PIX_FMT_GBRP10LE;
    const uint32_t depth = GetParam().planes == planes8 ? 8 : 10;
    EXPECT_EQ(information.compressionId, GetParam().id);
    EXPECT_EQ(information.width, OwnSize().width);
    EXPECT_EQ(information.height, OwnSize().height);
    EXPECT_EQ(information.codedBits, depth);
    EXPECT_EQ(information.depth, depth);
    EXPECT_EQ(information.colorFormat, isRgb ? dnxColorRgb : dnxColorYCbCr);
    EXPECT_EQ(information.sampling, isRgb ? dnxSampling444 : dnxSampling422);
    EXPECT_EQ(information.alpha, 0u);
    EXPECT_EQ(frameType == dnxFrameTypeInterlaced, GetParam().interlaced);
}

TEST_P(CompressionTable, MakesFramesThatFFmpegReads) {
    const Outcome<Bytes> frame = EncodeGrey();
    ASSERT_EQ(frame.error, noError);
    const PeerPlanes planes = PeerDecode(frame.value);
    EXPECT_EQ(planes.format, GetParam().planes);
    EXPECT_EQ(planes.width, OwnSize().width);
    EXPECT_EQ(planes.height, OwnSize().height);
    EXPECT_EQ(planes.topFieldFirst, GetParam().interlaced);
}

TEST_P(CompressionTable, DecodesItsFrames) {
    const Outcome<Bytes> frame = EncodeGrey();
    ASSERT_EQ(frame.error, noError);
    EXPECT_EQ(DecodePicture(frame.value, GetParam().packing).error, noError);
}

TEST_P(CompressionTable, CodesFieldsWhereItIsInterlaced) {
    const DNXCompressedParameters compressed = Compressed(GetParam().id, OwnSize().width, OwnSize().height);
    const auto error = [&](uint32_t structure) {
        return MakeEncoder(compressed, Uncompressed(GetParam().packing, structure)).error;
    };
    EXPECT_EQ(error(dnxStructureProgressive), noError);
    EXPECT_EQ(error(dnxStructureInterlaced), GetParam().interlaced ? noError : wrongFrameStructure);
}

TEST_P(CompressionTable, RefusesAlpha) {
    DNXCompressedParameters compressed = Compressed(GetParam().id, OwnSize().width, OwnSize().height);
    compressed.alpha = 1;
    EXPECT_EQ(MakeEncoder(compressed, Uncompressed(GetParam().packing)).error, noAlpha);
    EXPECT_EQ(DNX().GetCompressedBufferSize(&compressed), 0u);
}

INSTANTIATE_TEST_SUITE_P(Encoded, CompressionTable, testing::ValuesIn(encoded),
                         [](const auto& info) { return std::to_string(info.param.id); });

TEST(CompressionTable, EncodesNo444DNxHD) {
    for (const PictureSize size : sizes)
        EXPECT_EQ(MakeEncoder(Compressed(1256, size.width, size.height), Uncompressed(a48r)).error,
                  unknownCompression);
}

TEST(CompressionTable, EncodesNoCompressionThatItDoesNotKnow) {
    for (const uint32_t id : {0u, 1u, 1234u, 1236u, 1260u, 1269u, 1275u, UINT32_MAX})
        EXPECT_EQ(MakeEncoder(Compressed(id, 1440, 1080), Uncompressed(vuy2)).error, unknownCompression)
            << id;
}

TEST(CompressionTable, EncodesDNxHRFrom256By120To32768By8192) {
    const auto error = [](uint32_t width, uint32_t height) {
        return MakeEncoder(Compressed(1274, width, height), Uncompressed(v216)).error;
    };
    EXPECT_EQ(error(256, 120), noError);
    EXPECT_EQ(error(255, 120), wrongPictureSize);
    EXPECT_EQ(error(256, 119), wrongPictureSize);
    EXPECT_EQ(error(32768, 120), noError);
    EXPECT_EQ(error(32769, 120), wrongPictureSize);
    EXPECT_EQ(error(256, 8192), noError);
    EXPECT_EQ(error(256, 8193), wrongPictureSize);
    EXPECT_EQ(error(0, 0), wrongPictureSize);
    EXPECT_EQ(error(UINT32_MAX, UINT32_MAX), wrongPictureSize);
}

TEST(CompressionTable, DecodesTheTallestFramesThatItEncodes) {
    const Bytes grey(v216.pixelBytes * 256 * 8192, 0x80);
    const Outcome<Bytes> frame = EncodePicture(1274, 256, 8192, v216, grey);
    ASSERT_EQ(frame.error, noError);
    EXPECT_EQ(DecodePicture(frame.value, v216).error, noError);
}

/// A frame of the DNxHR compression whose tables and size are those of 1256, with the header of 1256.
Bytes FrameOf1256() {
    const Bytes grey(a48r.pixelBytes * 1920 * 1080, 0x80);
    Bytes frame = EncodePicture(1270, 1920, 1080, a48r, grey).value;
    frame.at(4) = 2;
    frame.at(0x2A) = 1256 >> 8;
    frame.at(0x2B) = 1256 & 0xFF;
    return frame;
}

TEST(CompressionTable, Decodes444DNxHD) {
    const Bytes frame = FrameOf1256();
    ASSERT_EQ(PeerDecode(frame).format, AV_PIX_FMT_GBRP10LE);
    EXPECT_EQ(DecodePicture(frame, a48r).error, noError);
}

TEST(CompressionTable, TakesTheWidthOfAThinCompressionWhateverItsHeadersTell) {
    constexpr uint32_t thinWidth = 1440;
    constexpr uint32_t height = 1080;
    Bytes frame =
        EncodePicture(1244, thinWidth, height, vuy2, Bytes(size_t{2} * thinWidth * height, 0x80)).value;
    const Outcome<Bytes> before = DecodePicture(frame, vuy2);
    // Both fields have a header.
    for (const size_t header : {size_t{0}, frame.size() / 2}) {
        ASSERT_EQ(frame.at(header + 0x1A), thinWidth >> 8);
        frame.at(header + 0x1A) = 1920 >> 8;
        frame.at(header + 0x1B) = 1920 & 0xFF;
    }
    const Outcome<Bytes> picture = DecodePicture(frame, vuy2);
    EXPECT_EQ(picture.error, noError);
    EXPECT_EQ(picture.value.size(), size_t{2} * thinWidth * height);
    EXPECT_EQ(picture.value, before.value);
}

} // namespace
