// What the ProRes back-end makes of images.

#include "codecs/ProResEncodeSupport.h"
#include "framework/AllocatorSpy.h"
#include "support/GuardedBytes.h"

namespace {

struct Row {
    uint32_t code;
    const char* name;
};
constexpr Row rows[] = {
    {apch, "Apple ProRes 422 HQ"},
    {FourCC("apcn"), "Apple ProRes 422"},
    {FourCC("apcs"), "Apple ProRes 422 LT"},
    {FourCC("apco"), "Apple ProRes 422 Proxy"},
    {ap4h, "Apple ProRes 4444"},
    {FourCC("ap4x"), "Apple ProRes 4444 XQ"},
};

CxVideoSettings SettingsFor(uint32_t fourCC, int32_t frameWidth, int32_t frameHeight, bool alpha = false) {
    CxVideoSettings settings;
    settings.fourCC = fourCC;
    settings.width = frameWidth;
    settings.height = frameHeight;
    settings.hasAlpha = alpha;
    return settings;
}

int InterlaceMode(const Bytes& frame) { return frame.at(20) >> 2 & 3; }
int AlphaType(const Bytes& frame) { return frame.at(25) & 15; }

TEST(ProResEncode, EachEncoderOfTheRegistryKeepsThePicture) {
    const ImagePtr image = SmoothImage();
    for (const Row& row : rows) {
        Bytes sample;
        ASSERT_EQ(Encode(*NewEncoder(row.name), row.code, image.get(), sample), CxAV_OK) << row.name;
        EXPECT_LT(DistanceFromSmooth(*Decoded(sample, row.code)), 400) << row.name;
    }
}

TEST(ProResEncode, ImagesOfEveryKindGiveThePicture) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    for (const ImageDataKind kind :
         {ImageData_RGBA8, ImageData_RGBA16, ImageData_RGBAHalf, ImageData_RGBAFloat}) {
        const ImagePtr image = SmoothImage(kind);
        const Bytes sample = Encoded(codec, image, FrameFor(ap4h));
        EXPECT_LT(DistanceFromSmooth(*Decoded(sample, ap4h)), 300) << kind;
    }
}

TEST(ProResEncode, TheSameImageGivesTheSameBytesFromAnyCodec) {
    const ImagePtr image = SmoothImage();
    ProResCodec first(CxAV_ENCODE, nullptr);
    ProResCodec second(CxAV_ENCODE, nullptr);
    const Bytes sample = Encoded(first, image, FrameFor(apch));
    EXPECT_EQ(Encoded(first, image, FrameFor(apch)), sample);
    EXPECT_EQ(Encoded(second, image, FrameFor(apch)), sample);
}

TEST(ProResEncode, AlphaComesBackAsItWas) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    const ImagePtr image = SmoothImage();
    for (const uint32_t code : {ap4h, FourCC("ap4x")}) {
        const ImagePtr back = Decoded(Encoded(codec, image, FrameFor(code, codesAlpha)), code);
        for (int32_t y = 0; y < pictureHeight; ++y)
            for (int32_t x = 0; x < pictureWidth; ++x)
                ASSERT_EQ(PixelAt(*back, x, y).A, SmoothPixel(x, y).A) << x << ", " << y;
    }
}

TEST(ProResEncode, AlphaIsCodedIfBitOneOfTheFlagsAsksForIt) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    const ImagePtr image = SmoothImage();
    for (const uint32_t flags : {2U, 3U, 0xffffffffU})
        EXPECT_EQ(AlphaType(Encoded(codec, image, FrameFor(ap4h, flags))), 2) << flags;
    for (const uint32_t flags : {0U, 1U, 0xfffffffdU})
        EXPECT_EQ(AlphaType(Encoded(codec, image, FrameFor(ap4h, flags))), 0) << flags;
}

TEST(ProResEncode, CodecsOfTheSmallFamilyCodeNoAlpha) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    EXPECT_EQ(AlphaType(Encoded(codec, SmoothImage(), FrameFor(apch, codesAlpha))), 0);
}

TEST(ProResEncode, FieldOrdersTwoAndThreeInterlaceAndNoOther) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    const ImagePtr image = SmoothImage();
    for (const auto& [order, mode] :
         {std::pair{0U, 0}, {1U, 0}, {2U, 1}, {3U, 2}, {4U, 0}, {5U, 0}, {0xffffffffU, 0}})
        EXPECT_EQ(InterlaceMode(Encoded(codec, image, FrameFor(apch, 0, order))), mode) << order;
}

TEST(ProResEncode, InterlacedFramesOfAnOddHeightKeepThePicture) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    const ImagePtr image = SmoothImage();
    for (const uint32_t order : {2U, 3U})
        EXPECT_LT(DistanceFromSmooth(*Decoded(Encoded(codec, image, FrameFor(ap4h, 0, order)), ap4h)), 300);
}

TEST(ProResEncode, TheImagesSizeCountsAndNotTheOneThatWasSet) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    CxVideoSettings settings = SettingsFor(apch, 16, 16);
    ASSERT_EQ(codec.SetEncoderSettings(settings), CxAV_OK);
    const Bytes sample = Encoded(codec, SmoothImage(), FrameFor(apch));
    EXPECT_LT(DistanceFromSmooth(*Decoded(sample, apch)), 400);
    EXPECT_EQ(codec.GetWidth(), 16);
    EXPECT_EQ(codec.GetHeight(), 16);
}

TEST(ProResEncode, SettingsGiveTheSizeAndNoExtraData) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    CxVideoSettings settings = SettingsFor(apch, 1920, 1080);
    EXPECT_EQ(codec.SetEncoderSettings(settings), CxAV_OK);
    EXPECT_EQ(codec.GetWidth(), 1920);
    EXPECT_EQ(codec.GetHeight(), 1080);
    EXPECT_TRUE(settings.extraData.empty());
}

TEST(ProResEncode, TheTargetFrameSizeIsWhatRateControlAimsForAndNotTheBound) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    for (const Row& row : rows) {
        int32_t bound = 0;
        int32_t target = 0;
        PrxGetMaxFrameSize(row.code, 1, 1920, 1080, &bound, &target);
        EXPECT_EQ(codec.GetTargetFrameSize(SettingsFor(row.code, 1920, 1080, true)), target) << row.name;
        EXPECT_LT(target, bound) << row.name;
    }
}

TEST(ProResEncode, TheTargetFrameSizeIsTheBoundWhereThereIsNoTarget) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    int32_t bound = 0;
    int32_t target = 0;
    PrxGetMaxFrameSize(apch, 0, 32768, 32768, &bound, &target);
    ASSERT_EQ(target, 0);
    EXPECT_EQ(codec.GetTargetFrameSize(SettingsFor(apch, 32768, 32768)), bound);
}

TEST(ProResEncode, AFrameWithoutABufferGetsOneThatTakesTheLargestFrame) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    const ImagePtr image = SmoothImage();
    Encoded(codec, image, FrameFor(ap4h, codesAlpha));
    AllocatorSpy::Reset();
    Encoded(codec, image, FrameFor(ap4h, codesAlpha));
    EXPECT_EQ(AllocatorSpy::allocations, 1);
    EXPECT_EQ(static_cast<size_t>(AllocatorSpy::lastSize), Bound(ap4h, true));
    EXPECT_EQ(AllocatorSpy::lastAlignment, 32);
}

TEST(ProResEncode, ABufferOfTheCallersIsUsedIfItTakesTheLargestFrame) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    const ImagePtr image = SmoothImage();
    for (const GuardedBytes::Guard guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before}) {
        const GuardedBytes buffer(Bound(ap4h, true), guard);
        CxEncodedFrame frame = FrameFor(ap4h, codesAlpha);
        frame.data = buffer.data();
        frame.size = static_cast<uint32_t>(buffer.size());
        ASSERT_EQ(EncodeInto(codec, image, frame), CxAV_OK);
        EXPECT_EQ(frame.data, buffer.data());
        EXPECT_EQ(Bytes(frame.data, frame.data + frame.size),
                  Encoded(codec, image, FrameFor(ap4h, codesAlpha)));
    }
}

TEST(ProResEncode, ATrackDecodesAsBeforeOnACodecThatHasEncoded) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame(100))});
    ProResCodec codec(CxAV_DECODE, nullptr);
    ASSERT_EQ(codec.SetDataSource(&source), CxAV_OK);
    Encoded(codec, SmoothImage(), FrameFor(apch));
    const ImagePtr image = MakeImage(64, 32);
    ASSERT_EQ(Decode(codec, 0, image.get()), CxAV_OK);
    ExpectGrey(*image, 100);
}

} // namespace
