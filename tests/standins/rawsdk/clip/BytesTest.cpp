#include "rawsdk/clip/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace rawsdk;

TEST(Bytes, AreReadAsTheyWereWritten) {
    ByteWriter writer;
    writer.Write(uint32_t{0x12345678});
    writer.Write(-1.5f);
    writer.WriteText<char>("text");
    writer.WriteText<char16_t>(u"wide");
    writer.Write(int16_t{-2});

    ByteReader reader(writer.Bytes());
    EXPECT_EQ(reader.Read<uint32_t>(), 0x12345678u);
    EXPECT_EQ(reader.Read<float>(), -1.5f);
    EXPECT_EQ(reader.ReadText<char>(), "text");
    EXPECT_EQ(reader.ReadText<char16_t>(), u"wide");
    EXPECT_EQ(reader.Read<int16_t>(), -2);
    EXPECT_EQ(reader.Left(), 0u);
    EXPECT_TRUE(reader.IsSound());
}

TEST(Bytes, StandInTheFileWithTheLowestFirst) {
    ByteWriter writer;
    writer.Write(uint32_t{0x12345678});
    EXPECT_EQ(writer.Bytes(), (std::vector<uint8_t>{0x78, 0x56, 0x34, 0x12}));
}

TEST(Bytes, PastTheEndAreZeros) {
    const uint8_t bytes[] = {1, 2, 3};
    ByteReader reader(bytes);
    EXPECT_EQ(reader.Read<uint32_t>(), 0u);
    EXPECT_FALSE(reader.IsSound());
    EXPECT_EQ(reader.Read<uint8_t>(), 0u);
    EXPECT_EQ(reader.Left(), 0u);
}

TEST(Bytes, OfATextThatIsLongerThanTheRestAreNone) {
    ByteWriter writer;
    writer.Write(uint32_t{0xFFFFFFFF});
    ByteReader reader(writer.Bytes());
    EXPECT_EQ(reader.ReadText<char>(), "");
    EXPECT_FALSE(reader.IsSound());
}

TEST(Bytes, OfAWideTextAreAnEvenNumber) {
    ByteWriter writer;
    writer.WriteText<char>("abc");
    ByteReader reader(writer.Bytes());
    reader.ReadText<char16_t>();
    EXPECT_FALSE(reader.IsSound());
}

TEST(Crc32, IsThatOfTheStandard) {
    const std::string digits = "123456789";
    EXPECT_EQ(Crc32({reinterpret_cast<const uint8_t*>(digits.data()), digits.size()}), 0xCBF43926u);
    EXPECT_EQ(Crc32({}), 0u);
}

} // namespace
