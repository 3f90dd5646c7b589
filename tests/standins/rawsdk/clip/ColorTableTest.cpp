#include "rawsdk/clip/ColorTable.h"

#include "rawsdk/clip/Failure.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>

namespace {

using namespace rawsdk;
using Codes = std::array<uint16_t, 3>;

/// A table of a function of R, G and B.
template <typename Function>
ColorTable TableOf(uint32_t size, Function function) {
    ColorTable table{size, {}};
    const float last = static_cast<float>(size - 1);
    for (uint32_t blue = 0; blue < size; ++blue)
        for (uint32_t green = 0; green < size; ++green)
            for (uint32_t red = 0; red < size; ++red)
                table.colors.push_back(function(red / last, green / last, blue / last));
    return table;
}

std::array<float, 3> Same(float red, float green, float blue) { return {red, green, blue}; }

Codes RandomCodes(std::mt19937& random) {
    return {static_cast<uint16_t>(random()), static_cast<uint16_t>(random()),
            static_cast<uint16_t>(random())};
}

ColorTable Parsed(const std::string& text) {
    std::istringstream stream(text);
    return ReadColorTable(stream);
}

constexpr const char* smallText = "# comment\nTITLE \"small\"\n\nLUT_3D_SIZE 2\nDOMAIN_MIN 0 0 0\n"
                                  "DOMAIN_MAX 1.0 1.0 1.0\n"
                                  "0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n";

TEST(ColorTable, ThatChangesNothingChangesNothing) {
    std::mt19937 random = MakeRandom();
    for (const uint32_t size : {2u, 17u, 33u}) {
        const ColorTable table = TableOf(size, Same);
        for (int i = 0; i < 1000; ++i) {
            const Codes codes = RandomCodes(random);
            const Codes result = table.Apply(codes);
            for (int channel = 0; channel < 3; ++channel)
                ASSERT_NEAR(result[channel], codes[channel], 1);
        }
    }
}

TEST(ColorTable, GivesItsOwnColorsExactly) {
    const ColorTable table = TableOf(4, [](float red, float green, float blue) {
        return std::array{blue * blue, 1 - red, green};
    });
    EXPECT_EQ(table.Apply({0, 0, 0}), (Codes{0, 65535, 0}));
    EXPECT_EQ(table.Apply({65535, 65535, 65535}), (Codes{65535, 0, 65535}));
    EXPECT_EQ(table.Apply({21845, 43690, 21845}), (Codes{7282, 43690, 43690}));
}

TEST(ColorTable, IsLinearBetweenItsColors) {
    std::mt19937 random = MakeRandom();
    const ColorTable table = TableOf(5, [](float red, float green, float blue) {
        return std::array{0.25f * red + 0.5f * green, 0.5f - 0.5f * blue, (red + green + blue) / 3};
    });
    for (int i = 0; i < 1000; ++i) {
        const Codes codes = RandomCodes(random);
        const Codes result = table.Apply(codes);
        ASSERT_NEAR(result[0], 0.25 * codes[0] + 0.5 * codes[1], 1);
        ASSERT_NEAR(result[1], 32767.5 - 0.5 * codes[2], 1);
        ASSERT_NEAR(result[2], (codes[0] + codes[1] + codes[2]) / 3.0, 1);
    }
}

TEST(ColorTable, KeepsGreysGreyThatItsCornersKeep) {
    const ColorTable table = TableOf(3, [](float red, float green, float blue) {
        return std::array{red * red, green * green, blue * blue};
    });
    for (uint32_t code = 0; code <= 65535; code += 111) {
        const auto grey = static_cast<uint16_t>(code);
        const Codes result = table.Apply({grey, grey, grey});
        ASSERT_EQ(result[0], result[1]);
        ASSERT_EQ(result[1], result[2]);
    }
}

TEST(ColorTable, IsReadFromText) {
    const ColorTable table = Parsed(smallText);
    EXPECT_EQ(table.size, 2u);
    EXPECT_EQ(table.Apply({65535, 0, 65535}), (Codes{65535, 0, 65535}));
}

TEST(ColorTable, LimitsTheNumbersOfItsText) {
    std::string text = smallText;
    text.replace(text.find("1 0 0\n0 1 0"), 5, "7 -1 0");
    EXPECT_EQ(Parsed(text).colors[1], (std::array{1.0f, 0.0f, 0.0f}));
}

TEST(ColorTable, RefusesTextThatIsNone) {
    const std::string text = smallText;
    EXPECT_THROW(Parsed(""), Failure);
    EXPECT_THROW(Parsed("LUT_3D_SIZE 2\n"), Failure);
    EXPECT_THROW(Parsed("0 0 0\n" + text), Failure);
    EXPECT_THROW(Parsed(text + "0 0 0\n"), Failure);
    EXPECT_THROW(Parsed(text + "LUT_3D_SIZE 2\n"), Failure);
    EXPECT_THROW(Parsed(text + "LUT_1D_SIZE 2\n"), Failure);
    EXPECT_THROW(Parsed("DOMAIN_MAX 2 2 2\n" + text), Failure);
    EXPECT_THROW(Parsed("LUT_3D_SIZE 1\n0 0 0\n"), Failure);
    EXPECT_THROW(Parsed("LUT_3D_SIZE 100000\n0 0 0\n"), Failure);
    EXPECT_THROW(Parsed("LUT_3D_SIZE -2\n0 0 0\n"), Failure);
    EXPECT_THROW(Parsed("LUT_3D_SIZE 2\n0 0\n"), Failure);
}

TEST(ColorTable, GoesIntoAClipAndBack) {
    const ColorTable table = TableOf(3, Same);
    ByteWriter writer;
    WriteColorTable(table, writer);
    ByteReader reader(writer.Bytes());
    const ColorTable read = ReadColorTable(reader);
    EXPECT_EQ(read.size, 3u);
    EXPECT_EQ(read.colors, table.colors);
}

TEST(ColorTable, OfNoSizeIsNone) {
    ByteWriter writer;
    WriteColorTable({}, writer);
    ByteReader reader(writer.Bytes());
    EXPECT_EQ(ReadColorTable(reader).size, 0u);
}

TEST(ColorTable, RefusesSizesThatItDoesNotHave) {
    for (const uint32_t size : {1u, 2u, 130u, 0xFFFFFFFFu}) {
        ByteWriter writer;
        writer.Write(size);
        ByteReader reader(writer.Bytes());
        EXPECT_THROW(ReadColorTable(reader), Failure) << size;
    }
}

TEST(ColorTable, TakesWhatIsNoNumberForZero) {
    ColorTable table = TableOf(2, Same);
    table.colors[7] = {NAN, INFINITY, 2};
    ByteWriter writer;
    WriteColorTable(table, writer);
    ByteReader reader(writer.Bytes());
    EXPECT_EQ(ReadColorTable(reader).colors[7], (std::array{0.0f, 0.0f, 1.0f}));
}

TEST(ColorTable, StandsBesideItsClip) {
    EXPECT_EQ(SidecarOf("/clips/a.b.vrel"), "/clips/a.b.cube");
    EXPECT_EQ(SidecarOf("clip"), "clip.cube");
}

} // namespace
