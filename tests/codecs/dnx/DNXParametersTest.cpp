// The records that the library is given.

#include "codecs/DNXParameters.h"

#include "codecs/dnx/DNXTestSupport.h"

#include <cstring>

namespace {

constexpr uint32_t alphaFlag = 2;
constexpr uint32_t topFieldFirst = 2;

template <typename Record>
Bytes BytesOf(const Record& record) {
    const auto* const bytes = reinterpret_cast<const uint8_t*>(&record);
    return {bytes, bytes + sizeof(record)};
}

/// Appends a little-endian value of four bytes.
void Append(Bytes& bytes, uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<uint8_t>(value >> shift));
}

Bytes Words(const std::vector<uint32_t>& words) {
    Bytes bytes;
    for (const uint32_t word : words)
        Append(bytes, word);
    return bytes;
}

/// The record for an encoder's picture as the library's interface tells it.
Bytes UncompressedBytes(uint32_t layout, uint32_t codedBits, uint32_t color, uint32_t samples,
                        uint32_t structure) {
    Bytes bytes = Words({50, 0, layout, codedBits, color, samples, structure, 1});
    bytes.resize(50);
    return bytes;
}

Bytes CompressedBytes(uint32_t id, uint32_t color, uint32_t depth, uint32_t alpha) {
    return Words({64, 0, 1920, 1080, id, 1, color, color, depth, 1, 1, 1, 0, alpha, 0, 0});
}

DNXCompressedParameters Compressed(uint32_t id, uint32_t flags = 0) {
    return ParametersToEncode(1920, 1080, FrameToEncode(id, 1, flags));
}

DNXPicture Encoded(uint32_t id, uint32_t fieldOrder = 1, uint32_t flags = 0) {
    return PictureToEncode(Compressed(id, flags), fieldOrder);
}

uint32_t StructureOf(uint32_t id, uint32_t fieldOrder) {
    return Encoded(id, fieldOrder).parameters.frameStructure;
}

DNXFrameInformation FrameWithAlpha(uint32_t id, uint32_t codedBits = 10) {
    DNXFrameInformation information = FrameOf(id);
    information.alpha = 1;
    information.codedBits = codedBits;
    return information;
}

TEST(DNXParameters, CompressedOnesTellSizeAndCompression) {
    for (const uint32_t id :
         {1235U, 1237U, 1238U, 1241U, 1242U, 1243U, 1250U, 1251U, 1252U, 1253U, 1272U, 1273U, 1274U})
        EXPECT_EQ(BytesOf(Compressed(id)), CompressedBytes(id, 1, 10, 0)) << id;
}

TEST(DNXParameters, CompressedOnesOf444AreRgb) {
    EXPECT_EQ(BytesOf(Compressed(1256)), CompressedBytes(1256, 2, 10, 0));
    EXPECT_EQ(BytesOf(Compressed(1270)), CompressedBytes(1270, 2, 12, 0));
}

TEST(DNXParameters, CompressedOnesOfHqxHave12Bits) {
    EXPECT_EQ(BytesOf(Compressed(1271)), CompressedBytes(1271, 1, 12, 0));
}

TEST(DNXParameters, CompressedOnesOfAnUnknownIdCarryTheId) {
    EXPECT_EQ(BytesOf(Compressed(1999)), CompressedBytes(1999, 1, 10, 0));
}

TEST(DNXParameters, TheAlphaBitAsksDNxHRForAlpha) {
    for (const uint32_t id : idsOfDNxHR) {
        EXPECT_EQ(Compressed(id, alphaFlag).alpha, 1U) << id;
        EXPECT_EQ(Compressed(id, ~alphaFlag).alpha, 0U) << id;
    }
}

TEST(DNXParameters, TheAlphaBitHasNoEffectForDNxHD) {
    for (const uint32_t id : idsOfDNxHD) {
        EXPECT_EQ(BytesOf(Compressed(id, alphaFlag)), BytesOf(Compressed(id))) << id;
        EXPECT_EQ(Encoded(id, 1, alphaFlag).packing, Encoded(id).packing) << id;
        EXPECT_EQ(BytesOf(Encoded(id, 1, alphaFlag).parameters), BytesOf(Encoded(id).parameters)) << id;
    }
}

TEST(DNXParameters, HqxAnd444OfDNxHDAreEncodedFromRgb) {
    for (const uint32_t id : {1235U, 1241U, 1250U, 1256U}) {
        EXPECT_EQ(Encoded(id).packing, FourCC("a48r")) << id;
        EXPECT_EQ(BytesOf(Encoded(id).parameters), UncompressedBytes(4, 1, 2, 4, 64)) << id;
    }
}

TEST(DNXParameters, DNxHR444IsEncodedFromRgbWithAndWithoutAlpha) {
    for (const uint32_t flags : {0U, alphaFlag}) {
        EXPECT_EQ(Encoded(1270, 1, flags).packing, FourCC("a48r"));
        EXPECT_EQ(BytesOf(Encoded(1270, 1, flags).parameters), UncompressedBytes(0x20000, 1, 2, 4, 64));
    }
}

TEST(DNXParameters, AllOtherDNxHRIsEncodedFrom16BitsThoseOf8BitsByNameToo) {
    for (const uint32_t id : {1271U, 1272U, 1273U, 1274U}) {
        EXPECT_EQ(Encoded(id).packing, FourCC("v216")) << id;
        EXPECT_EQ(BytesOf(Encoded(id).parameters), UncompressedBytes(0x20000, 1, 1, 2, 64)) << id;
    }
}

TEST(DNXParameters, AlphaOfDNxHRIsEncodedFrom16Bits) {
    for (const uint32_t id : {1271U, 1272U, 1273U, 1274U}) {
        EXPECT_EQ(Encoded(id, 1, alphaFlag).packing, FourCC("yv16")) << id;
        EXPECT_EQ(BytesOf(Encoded(id, 1, alphaFlag).parameters),
                  UncompressedBytes(0x20000, 1, 1, 0x40000, 64))
            << id;
    }
}

TEST(DNXParameters, AllOthersAreEncodedFrom8Bits) {
    for (const uint32_t id : {1237U, 1238U, 1242U, 1243U, 1251U, 1252U, 1253U, 1999U}) {
        EXPECT_EQ(Encoded(id).packing, FourCC("2vuy")) << id;
        EXPECT_EQ(BytesOf(Encoded(id).parameters), UncompressedBytes(1, 1, 1, 2, 64)) << id;
    }
}

TEST(DNXParameters, AnInterlacedCompressionFollowsTheFieldOrder) {
    for (const uint32_t id : {1241U, 1242U, 1243U}) {
        EXPECT_EQ(StructureOf(id, topFieldFirst), 1U) << id;
        EXPECT_EQ(StructureOf(id, 3), 1U) << id;
        EXPECT_EQ(StructureOf(id, 0), 1U) << id;
        EXPECT_EQ(StructureOf(id, 1), 64U) << id;
    }
}

TEST(DNXParameters, AProgressiveCompressionIsSoForEveryFieldOrder) {
    for (const uint32_t id : {1235U, 1237U, 1238U, 1250U, 1251U, 1252U, 1253U, 1256U, 1258U, 1259U, 1270U,
                              1271U, 1272U, 1273U, 1274U})
        for (const uint32_t fieldOrder : {0U, 1U, 2U, 3U})
            EXPECT_EQ(StructureOf(id, fieldOrder), 64U) << id;
}

TEST(DNXParameters, AnUnknownCompressionFollowsTheFieldOrder) {
    EXPECT_EQ(StructureOf(1999, topFieldFirst), 1U);
    EXPECT_EQ(StructureOf(1257, 1), 64U);
}

TEST(DNXParameters, HqxAnd444AreDecodedToRgb) {
    for (const uint32_t id : {1235U, 1241U, 1250U, 1256U, 1270U}) {
        const uint32_t layout = id == 1270 ? 0x20000 : 4;
        DNXFrameInformation information = FrameOf(id);
        EXPECT_EQ(PictureToDecode(information, 0).packing, FourCC("a48r")) << id;
        EXPECT_EQ(BytesOf(PictureToDecode(information, 0).parameters),
                  UncompressedBytes(layout, 10, 2, 4, 64))
            << id;
        information.codedBits = 8;
        EXPECT_EQ(BytesOf(PictureToDecode(information, 0).parameters),
                  UncompressedBytes(layout, 8, 2, 0x800000, 64))
            << id;
    }
}

TEST(DNXParameters, DNxHR444WithAlphaIsDecodedToRgbToo) {
    const DNXFrameInformation information = FrameWithAlpha(1270);
    EXPECT_EQ(PictureToDecode(information, 0).packing, FourCC("a48r"));
    EXPECT_TRUE(HasAlpha(information));
}

TEST(DNXParameters, AllOtherDNxHRIsDecodedTo16Bits) {
    for (const uint32_t id : {1271U, 1272U, 1273U, 1274U}) {
        DNXFrameInformation information = FrameOf(id);
        information.codedBits = 8;
        information.colorFormat = dnxColorRgb;
        EXPECT_EQ(PictureToDecode(information, 0).packing, FourCC("v216")) << id;
        EXPECT_EQ(BytesOf(PictureToDecode(information, 0).parameters),
                  UncompressedBytes(0x20000, 8, 1, 2, 64))
            << id;
    }
}

TEST(DNXParameters, AlphaOfDNxHRIsDecodedTo16Bits) {
    for (const uint32_t id : {1271U, 1272U, 1273U, 1274U}) {
        const DNXPicture coded10 = PictureToDecode(FrameWithAlpha(id), 0);
        const DNXPicture coded8 = PictureToDecode(FrameWithAlpha(id, 8), 0);
        EXPECT_EQ(coded10.packing, FourCC("yv16")) << id;
        EXPECT_EQ(BytesOf(coded10.parameters), UncompressedBytes(0x20000, 10, 1, 0x40000, 64)) << id;
        EXPECT_EQ(coded8.packing, FourCC("yv16")) << id;
        EXPECT_EQ(BytesOf(coded8.parameters), UncompressedBytes(0x20000, 8, 1, 0x1000000, 64)) << id;
    }
}

TEST(DNXParameters, AllOthersAreDecodedTo8BitsInTheColourOfTheFrame) {
    for (const uint32_t id : {1237U, 1238U, 1242U, 1243U, 1251U, 1252U, 1253U, 1999U}) {
        for (const uint32_t color : {dnxColorYCbCr, dnxColorRgb}) {
            DNXFrameInformation information = FrameOf(id);
            information.colorFormat = color;
            EXPECT_EQ(PictureToDecode(information, 0).packing, FourCC("2vuy")) << id;
            EXPECT_EQ(BytesOf(PictureToDecode(information, 0).parameters),
                      UncompressedBytes(1, 10, color, 2, 64))
                << id;
        }
    }
}

TEST(DNXParameters, AlphaThatAFrameOfDNxHDClaimsIsNotDecoded) {
    for (const uint32_t id : idsOfDNxHD) {
        const DNXFrameInformation information = FrameWithAlpha(id);
        EXPECT_FALSE(HasAlpha(information)) << id;
        EXPECT_EQ(BytesOf(PictureToDecode(information, 0).parameters),
                  BytesOf(PictureToDecode(FrameOf(id), 0).parameters))
            << id;
    }
}

TEST(DNXParameters, FrameType1IsDecodedInFields) {
    EXPECT_EQ(PictureToDecode(FrameOf(1242), 1).parameters.frameStructure, 1U);
    for (const int32_t frameType : {0, 2, -1})
        EXPECT_EQ(PictureToDecode(FrameOf(1242), frameType).parameters.frameStructure, 64U);
}

TEST(DNXParameters, OperationsHaveTheirSizesAndConstants) {
    EXPECT_EQ(BytesOf(EncodeOperation()), Words({12, 0, 4}));
    EXPECT_EQ(BytesOf(DecodeOperation(false)), Words({24, 0, 4, 1, 0, 0}));
    EXPECT_EQ(BytesOf(DecodeOperation(true)), Words({24, 0, 4, 1, 0, 1}));
}

} // namespace
