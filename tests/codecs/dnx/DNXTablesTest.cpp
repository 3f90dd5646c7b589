// What the back-end offers: the encoder catalogue, and its registration.

#include "codecs/DNXTables.h"

#include "codecs/dnx/DNXTestSupport.h"

namespace {

struct Row {
    uint32_t id;
    uint32_t fourCC;
    const char* name;
    uint32_t width;
    uint32_t height;
    uint32_t flags;
};

constexpr Row rows[] = {
    {1252, dnxHD, "DNxHD SQ 720p 8bit", 1280, 720, 0},
    {1251, dnxHD, "DNxHD HQ 720p 8bit", 1280, 720, 0},
    {1250, dnxHD, "DNxHD HQX 720p 10bit", 1280, 720, 0},
    {1253, dnxHD, "DNxHD LB 1080p 8bit", 1920, 1080, 0},
    {1237, dnxHD, "DNxHD SQ 1080p 8bit", 1920, 1080, 0},
    {1238, dnxHD, "DNxHD HQ 1080p 8bit", 1920, 1080, 0},
    {1235, dnxHD, "DNxHD HQX 1080p 10bit", 1920, 1080, 0},
    {1242, dnxHD, "DNxHD SQ 1080i 8bit", 1920, 1080, 1},
    {1243, dnxHD, "DNxHD HQ 1080i 8bit", 1920, 1080, 1},
    {1241, dnxHD, "DNxHD HQX 1080i 10bit", 1920, 1080, 1},
    {1256, dnxHD, "DNxHD 444 1080p 10bit", 1920, 1080, 0},
    {1274, dnxHR, "DNxHR LB 8bit", 0, 0, 2},
    {1273, dnxHR, "DNxHR SQ 8bit", 0, 0, 2},
    {1272, dnxHR, "DNxHR HQ 8bit", 0, 0, 2},
    {1271, dnxHR, "DNxHR HQX 12bit", 0, 0, 2},
    {1270, dnxHR, "DNxHR 444 12bit", 0, 0, 2},
};

/// What the back-end says of itself, and prints meanwhile.
struct Claims {
    bool accepted = false;
    std::set<uint32_t> fourCCs;
    std::vector<CxEncoderInfo> rows;
    std::string name;
    std::string printed;
};

Claims ClaimsOf(std::set<uint32_t> before = {}) {
    Claims claims;
    claims.fourCCs = std::move(before);
    testing::internal::CaptureStdout();
    claims.accepted = DNXCodec::FillCodecInfo(claims.fourCCs, claims.rows, claims.name);
    claims.printed = testing::internal::GetCapturedStdout();
    return claims;
}

class DNXCatalogue : public DNXTest {};

TEST_F(DNXCatalogue, HasSixteenRowsInItsOrder) {
    const Claims claims = ClaimsOf();
    ASSERT_EQ(claims.rows.size(), std::size(rows));
    for (size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(claims.rows[i].codecId, rows[i].id);
        EXPECT_EQ(claims.rows[i].fourCC, rows[i].fourCC);
        EXPECT_EQ(claims.rows[i].name, rows[i].name);
        EXPECT_EQ(claims.rows[i].width, rows[i].width);
        EXPECT_EQ(claims.rows[i].height, rows[i].height);
        EXPECT_EQ(claims.rows[i].flags, rows[i].flags);
        EXPECT_EQ(claims.rows[i].reserved, 0U);
        EXPECT_EQ(claims.rows[i].description, "");
    }
}

TEST_F(DNXCatalogue, StandsBehindRowsThatAreThereAlready) {
    std::set<uint32_t> fourCCs;
    std::vector<CxEncoderInfo> found(1);
    std::string name;
    testing::internal::CaptureStdout();
    DNXCodec::FillCodecInfo(fourCCs, found, name);
    testing::internal::GetCapturedStdout();
    ASSERT_EQ(found.size(), 1 + std::size(rows));
    EXPECT_EQ(found[0].name, "");
    EXPECT_EQ(found[1].name, rows[0].name);
}

TEST_F(DNXCatalogue, ClaimsTheTwoCodes) {
    const Claims claims = ClaimsOf();
    EXPECT_TRUE(claims.accepted);
    EXPECT_EQ(claims.name, "Avid DNX");
    EXPECT_EQ(claims.fourCCs, (std::set<uint32_t>{dnxHD, dnxHR}));
}

TEST_F(DNXCatalogue, AddsNoCodeToASetThatHasSome) {
    EXPECT_EQ(ClaimsOf({FourCC("some")}).fourCCs, std::set<uint32_t>{FourCC("some")});
}

TEST_F(DNXCatalogue, SaysTheVersionOfTheLibraryOnceItHasStarted) {
    EXPECT_EQ(ClaimsOf().printed, "DNX SDK API version 2.10.3-456-R\n");
    EXPECT_EQ(Script().calls, (std::vector<std::string>{"Initialize", "GetVersion"}));
}

TEST_F(DNXCatalogue, SaysZerosForAVersionThatTheLibraryKeepsToItself) {
    using namespace std::string_literals;
    Script().failing = "GetVersion";
    const Claims claims = ClaimsOf();
    EXPECT_TRUE(claims.accepted);
    EXPECT_EQ(claims.printed, "DNX SDK API version 0.0.0-0-\0\n"s);
}

TEST_F(DNXCatalogue, WarnsAndRefusesIfTheLibraryDoesNotStart) {
    Script().failing = "Initialize";
    const Claims claims = ClaimsOf();
    EXPECT_FALSE(claims.accepted);
    EXPECT_EQ(claims.printed, "Warning: Failed to initialise DNXCodec\n");
    EXPECT_EQ(claims.name, "");
    EXPECT_EQ(Script().calls, std::vector<std::string>{"Initialize"});
}

TEST_F(DNXCatalogue, IsRegisteredWhenTheProgramIsLoaded) {
    ASSERT_NE(g_DNXFactory, nullptr);
    for (const uint32_t fourCC : {dnxHD, dnxHR}) {
        MemoryTrackSource source(fourCC, 4, 2, {});
        const CodecPointer decoder = NewDecoder(source);
        ASSERT_NE(decoder, nullptr);
        EXPECT_TRUE(decoder->isTypeOf(g_DNXFactory));
        EXPECT_EQ(decoder->GetName(), "Avid DNX");
    }
    for (const Row& row : rows) {
        const CodecPointer encoder = NewEncoder(row.name);
        ASSERT_NE(encoder, nullptr) << row.name;
        EXPECT_TRUE(encoder->isTypeOf(g_DNXFactory));
    }
}

TEST_F(DNXCatalogue, ShutdownEndsTheLibrary) {
    DNXCodec::Shutdown();
    EXPECT_EQ(Script().calls, std::vector<std::string>{"Finalize"});
}

TEST_F(DNXCatalogue, ShutdownOfALibraryThatDoesNotEndIsNotToldAndNotTriedAgain) {
    Script().failing = "Finalize";
    EXPECT_EQ(WordsOf([] { DNXCodec::Shutdown(); }), "");
    EXPECT_EQ(Script().calls, std::vector<std::string>{"Finalize"});
}

TEST_F(DNXCatalogue, AnIdThatNobodyKnowsIsAnInterlacedDNxHDOf8Bits) {
    const DNXCompression& compression = FindDNXCompression(1999);
    EXPECT_EQ(compression.fourCC, dnxHD);
    EXPECT_STREQ(compression.name, "DNxHD");
    EXPECT_EQ(compression.kind, DNXPictureKind::YCbCr8);
    EXPECT_FALSE(compression.progressive);
}

} // namespace
