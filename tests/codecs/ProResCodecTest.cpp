// What the ProRes back-end claims and offers, and what its decoder delivers.

#include "codecs/ProResCodec.h"

#include "codecs/ProResTestSupport.h"

namespace {

constexpr uint32_t codes[] = {FourCC("apch"), FourCC("apcn"), FourCC("apcs"),
                              FourCC("apco"), FourCC("ap4h"), FourCC("ap4x")};

constexpr const char* names[] = {"Apple ProRes 422 HQ",    "Apple ProRes 422",  "Apple ProRes 422 LT",
                                 "Apple ProRes 422 Proxy", "Apple ProRes 4444", "Apple ProRes 4444 XQ"};

struct Claims {
    std::set<uint32_t> fourCCs;
    std::vector<CxEncoderInfo> rows;
    std::string name;
};

Claims ClaimsOf(std::set<uint32_t> before = {}) {
    Claims claims;
    claims.fourCCs = std::move(before);
    EXPECT_TRUE(ProResCodec::FillCodecInfo(claims.fourCCs, claims.rows, claims.name));
    return claims;
}

TEST(ProResCodec, ClaimsTheSixCodes) {
    const Claims claims = ClaimsOf();
    EXPECT_EQ(claims.fourCCs, std::set<uint32_t>(std::begin(codes), std::end(codes)));
    EXPECT_EQ(claims.name, "Apple ProRes");
}

TEST(ProResCodec, AddsNoCodeToASetThatHasSome) {
    EXPECT_EQ(ClaimsOf({FourCC("some")}).fourCCs, std::set<uint32_t>{FourCC("some")});
}

TEST(ProResCodec, OffersSixEncodersOfWhichTheLastTwoCarryAlpha) {
    const std::vector<CxEncoderInfo> rows = ClaimsOf().rows;
    ASSERT_EQ(rows.size(), 6U);
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].fourCC, codes[i]);
        EXPECT_EQ(rows[i].codecId, codes[i]);
        EXPECT_EQ(rows[i].name, names[i]);
        EXPECT_EQ(rows[i].flags, i < 4 ? 0U : 2U);
        EXPECT_EQ(rows[i].reserved | rows[i].width | rows[i].height, 0U);
        EXPECT_EQ(rows[i].description, "");
    }
}

TEST(ProResCodec, IsRegisteredAtLoadForEveryCode) {
    ASSERT_NE(g_ProResFactory, nullptr);
    for (const uint32_t fourCC : codes) {
        MemoryTrackSource source = ProResTrack({}, fourCC);
        const CodecPointer decoder = NewDecoder(source);
        ASSERT_NE(decoder, nullptr) << fourCC;
        EXPECT_TRUE(decoder->isTypeOf(g_ProResFactory)) << fourCC;
        EXPECT_EQ(decoder->GetName(), "Apple ProRes");
    }
}

TEST(ProResCodec, OpensForAnyCode) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())}, FourCC("what"));
    ProResCodec codec(CxAV_DECODE, nullptr);
    EXPECT_EQ(codec.SetDataSource(&source), CxAV_OK);
    const ImagePtr image = MakeImage(64, 32);
    EXPECT_EQ(Decode(codec, 0, image.get()), CxAV_OK);
    ExpectGrey(*image, 0);
}

TEST(ProResCodec, TakesItsSizeFromTheSourceAtEveryOpen) {
    MemoryTrackSource source = ProResTrack({});
    ProResCodec codec(CxAV_DECODE, nullptr);
    EXPECT_EQ(codec.GetWidth(), 0);
    EXPECT_EQ(codec.GetHeight(), 0);
    EXPECT_EQ(codec.SetDataSource(&source), CxAV_OK);
    EXPECT_EQ(codec.GetWidth(), 64);
    EXPECT_EQ(codec.GetHeight(), 32);
    source.width = 80;
    source.height = 48;
    EXPECT_EQ(codec.Open(), CxAV_OK);
    EXPECT_EQ(codec.GetWidth(), 80);
    EXPECT_EQ(codec.GetHeight(), 48);
}

TEST(ProResCodec, DecodesFramesInAnyOrder) {
    MemoryTrackSource source =
        ProResTrack({BuildFrame(GreyFrame(-400)), BuildFrame(GreyFrame(0)), BuildFrame(GreyFrame(400))});
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MakeImage(64, 32);
    for (const int32_t frame : {2, 0, 1, 0}) {
        ASSERT_EQ(Decode(*decoder, frame, image.get()), CxAV_OK);
        EXPECT_EQ(source.lastSampleRead, frame);
        ExpectGrey(*image, 400 * (frame - 1));
    }
}

TEST(ProResCodec, DecodesASampleThatTheSourceLeavesInTheCodecsBuffer) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame(200))});
    source.delivery = MemoryTrackSource::Delivery::CallersBuffer;
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MakeImage(64, 32);
    ASSERT_EQ(Decode(*decoder, 0, image.get()), CxAV_OK);
    ExpectGrey(*image, 200);
}

TEST(ProResCodec, DeliversOpaqueAlphaFromACodecWithoutAlpha) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())}, FourCC("apcn"));
    const ImagePtr image = MarkedImage(64, 32);
    ASSERT_EQ(Decode(*NewDecoder(source), 0, image.get()), CxAV_OK);
    ExpectGrey(*image, 0, 65535);
}

TEST(ProResCodec, DeliversTheAlphaOfTheStream) {
    stream::FrameSpec spec = GreyFrame();
    spec.chromaFormat = 3;
    spec.version = 1;
    spec.alphaType = 2;
    spec.alpha = [](int x, int y) { return static_cast<uint16_t>(997 * x + y); };
    MemoryTrackSource source = ProResTrack({BuildFrame(spec)}, FourCC("ap4h"));
    const ImagePtr image = MakeImage(64, 32);
    ASSERT_EQ(Decode(*NewDecoder(source), 0, image.get()), CxAV_OK);
    for (int32_t y = 0; y < 32; ++y)
        for (int32_t x = 0; x < 64; ++x)
            ASSERT_EQ(PixelAt(*image, x, y).A, 997 * x + y);
}

TEST(ProResCodec, NamesTheCompressionByTheTracksCode) {
    for (size_t i = 0; i < std::size(codes); ++i) {
        MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())}, codes[i]);
        const ImagePtr image = MakeImage(64, 32);
        ASSERT_EQ(Decode(*NewDecoder(source), 0, image.get()), CxAV_OK);
        EXPECT_EQ(Metadata(*image, "Compression"), names[i]);
    }
}

TEST(ProResCodec, NamesNoCompressionForACodeOutsideItsCatalogue) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())}, FourCC("icpf"));
    ProResCodec codec(CxAV_DECODE, nullptr);
    ASSERT_EQ(codec.SetDataSource(&source), CxAV_OK);
    const ImagePtr image = MakeImage(64, 32);
    ASSERT_EQ(Decode(codec, 0, image.get()), CxAV_OK);
    EXPECT_EQ(Metadata(*image, "Compression"), "(none)");
    EXPECT_EQ(Metadata(*image, "FrameFormat"), "Progressive");
}

TEST(ProResCodec, TellsHowTheFrameIsScanned) {
    constexpr const char* formats[] = {"Progressive", "Interlaced(TF)", "Interlaced(BF)"};
    for (int mode = 0; mode < 3; ++mode) {
        stream::FrameSpec spec = GreyFrame();
        spec.interlaceMode = mode;
        MemoryTrackSource source = ProResTrack({BuildFrame(spec)});
        const ImagePtr image = MakeImage(64, 32);
        ASSERT_EQ(Decode(*NewDecoder(source), 0, image.get()), CxAV_OK);
        EXPECT_EQ(Metadata(*image, "FrameFormat"), formats[mode]);
    }
}

TEST(ProResCodec, NamesTheCompressionButNoFrameFormatWhereTheFlagsAreThree) {
    // The short frame form decodes with any value where the ordinary form has its flags.
    stream::FrameSpec spec = GreyFrame();
    spec.shortForm = true;
    spec.matrixCoefficients = 12;
    const Bytes sample = BuildFrame(spec);
    ASSERT_EQ(sample[20] >> 2 & 3, 3);
    MemoryTrackSource source = ProResTrack({sample});
    const ImagePtr image = MakeImage(64, 32);
    ASSERT_EQ(Decode(*NewDecoder(source), 0, image.get()), CxAV_OK);
    EXPECT_EQ(Metadata(*image, "Compression"), "Apple ProRes 422 HQ");
    EXPECT_EQ(Metadata(*image, "FrameFormat"), "(none)");
}

TEST(ProResCodec, KeepsWhatElseStandsInTheImagesMetadata) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())});
    const ImagePtr image = MakeImage(64, 32);
    image->ImageInfo.FindKey("Metadata").FindKey("Camera") = "A";
    image->ImageInfo.FindKey("Other") = "B";
    ASSERT_EQ(Decode(*NewDecoder(source), 0, image.get()), CxAV_OK);
    EXPECT_EQ(Metadata(*image, "Camera"), "A");
    EXPECT_EQ(Metadata(*image, "FrameFormat"), "Progressive");
    EXPECT_STREQ(image->ImageInfo.FindKeyConst("Other").ToString(""), "B");
}

TEST(ProResCodec, PutsATableInPlaceOfMetadataThatIsNone) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())});
    const ImagePtr image = MakeImage(64, 32);
    image->ImageInfo.FindKey("Metadata") = "text";
    ASSERT_EQ(Decode(*NewDecoder(source), 0, image.get()), CxAV_OK);
    EXPECT_EQ(Metadata(*image, "FrameFormat"), "Progressive");
}

} // namespace
