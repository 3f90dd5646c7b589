#include "Encoders.h"

#include "media/ToolError.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

std::string CauseFor(const char* name) {
    try {
        FindEncoder(name);
    } catch (const ToolError& error) {
        EXPECT_EQ(error.status(), ExitStatus::Unsupported);
        return error.cause();
    }
    return "found";
}

} // namespace

TEST(Encoders, AreFoundByTheirExactDisplayName) {
    const CxEncoderInfo row = FindEncoder("Uncompressed YUV 422 10-bit");
    EXPECT_EQ(row.fourCC, FourCC("v210"));
    EXPECT_EQ(CodecTag(row), FourCC("v210"));
}

TEST(Encoders, OfDNxAreToldApartByTheirCompressionId) {
    CxEncoderInfo row;
    row.codecId = 1242;
    for (const uint32_t fourCC : {FourCC("AVdn"), FourCC("AVdh")}) {
        row.fourCC = fourCC;
        EXPECT_EQ(CodecTag(row), 1242U);
    }
}

TEST(Encoders, OfDNx444AloneCodeRgbUnderACodeOfYCbCr) {
    CxEncoderInfo row;
    row.fourCC = FourCC("AVdh");
    for (const auto& [id, isRgb] : {std::pair{1270U, true}, {1271U, false}, {1274U, false}}) {
        row.codecId = id;
        EXPECT_EQ(CodesRgb(row), isRgb) << id;
    }
    row.fourCC = FourCC("v210");
    EXPECT_FALSE(CodesRgb(row));
}

TEST(Encoders, OfDNxHaveTheFieldOrderOfTheirRow) {
    CxEncoderInfo row;
    row.fourCC = FourCC("AVdn");
    EXPECT_EQ(OwnFieldOrder(row), 1);
    row.flags = 1;
    EXPECT_EQ(OwnFieldOrder(row), 2);
    row.fourCC = FourCC("apch");
    EXPECT_EQ(OwnFieldOrder(row), 0);
}

TEST(Encoders, AreListedFirstByTheNameThatIsCloseToAnUnknownOne) {
    EXPECT_EQ(
        CauseFor("uncompressed yuv 422 10 bit").find("no such encoder; close: 'Uncompressed YUV 422 10-bit'"),
        0U);
}

TEST(Encoders, AreListedThatContainWhatWasAskedFor) {
    const std::string cause = CauseFor("10-bit");
    EXPECT_NE(cause.find("'Uncompressed YUV 422 10-bit'"), std::string::npos);
    EXPECT_NE(cause.find("'Uncompressed RGB 10-bit'"), std::string::npos);
}

TEST(Encoders, AreNotFoundByAnEmptyName) { EXPECT_NE(CauseFor(""), "found"); }
