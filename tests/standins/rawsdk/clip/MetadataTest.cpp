#include "rawsdk/clip/Metadata.h"

#include "rawsdk/clip/Failure.h"

#include "cameraraw/automation/BstrText.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace rawsdk;

Metadata RoundTrip(const Metadata& metadata) {
    ByteWriter writer;
    WriteMetadata(metadata, writer);
    ByteReader reader(writer.Bytes());
    return ReadMetadata(reader);
}

MetadataValue RoundTrip(const MetadataValue& value) { return RoundTrip({{u"key", value}}).front().value; }

/// Metadata of every kind.
Metadata AllKinds() {
    return {
        {u"text", TextValue(u"R\u00e9sum\u00e9 \u20ac")},
        {u"empty", TextValue(u"")},
        {u"i1", NumberValue(int8_t{-1})},
        {u"ui1", NumberValue(uint8_t{200})},
        {u"i2", NumberValue(int16_t{-2})},
        {u"ui2", NumberValue(uint16_t{65535})},
        {u"i4", NumberValue(int32_t{-3})},
        {u"ui4", NumberValue(uint32_t{0xFFFFFFFF})},
        {u"i8", NumberValue(std::numeric_limits<int64_t>::min())},
        {u"ui8", NumberValue(std::numeric_limits<uint64_t>::max())},
        {u"r4", NumberValue(0.5f)},
        {u"r8", NumberValue(0.25)},
        {u"bool", {VT_BOOL, {}, {0xFF, 0xFF}}},
        {u"array", ArrayValue<int16_t>({1, -2, 3})},
        {u"one", ArrayValue<float>({1})},
        {u"none", ArrayValue<uint8_t>({})},
        {u"planes", ArrayValue<uint32_t>({1, 2, 3, 4, 5, 6}, {{2, 0}, {3, -1}})},
        {std::u16string(1, 0xD800), TextValue(std::u16string(1, 0xDC00))},
        {u"", NumberValue(1.0f)},
    };
}

template <typename Number>
void ExpectNumber(Number number, VARTYPE type, Number VARIANT::*member) {
    VARIANT variant = VariantOf(RoundTrip(NumberValue(number)));
    EXPECT_EQ(variant.vt, type);
    EXPECT_EQ(variant.*member, number);
    VariantClear(&variant);
}

TEST(Metadata, HoldNumbersOfEveryType) {
    ExpectNumber<int8_t>(-100, VT_I1, &VARIANT::cVal);
    ExpectNumber<uint8_t>(200, VT_UI1, &VARIANT::bVal);
    ExpectNumber<int16_t>(-30000, VT_I2, &VARIANT::iVal);
    ExpectNumber<uint16_t>(60000, VT_UI2, &VARIANT::uiVal);
    ExpectNumber<int32_t>(-2000000000, VT_I4, &VARIANT::lVal);
    ExpectNumber<uint32_t>(4000000000, VT_UI4, &VARIANT::ulVal);
    ExpectNumber<int64_t>(std::numeric_limits<int64_t>::min(), VT_I8, &VARIANT::llVal);
    ExpectNumber<uint64_t>(std::numeric_limits<uint64_t>::max(), VT_UI8, &VARIANT::ullVal);
    ExpectNumber<float>(23.976f, VT_R4, &VARIANT::fltVal);
    ExpectNumber<double>(1e300, VT_R8, &VARIANT::dblVal);
}

TEST(Metadata, HoldTruths) {
    VARIANT variant = VariantOf(RoundTrip(MetadataValue{VT_BOOL, {}, {0xFF, 0xFF}}));
    EXPECT_EQ(variant.vt, VT_BOOL);
    EXPECT_EQ(variant.boolVal, VARIANT_TRUE);
}

TEST(Metadata, HoldTexts) {
    VARIANT variant = VariantOf(RoundTrip(TextValue(u"\u20ac")));
    EXPECT_EQ(variant.vt, VT_BSTR);
    EXPECT_EQ(TextOfBstr(variant.bstrVal), "\u20ac");
    VariantClear(&variant);
}

TEST(Metadata, HoldTextsThatAreNotValid) {
    VARIANT variant = VariantOf(RoundTrip(TextValue(std::u16string(1, 0xD800))));
    ASSERT_EQ(SysStringLen(variant.bstrVal), 1u);
    EXPECT_EQ(variant.bstrVal[0], 0xD800);
    VariantClear(&variant);
}

TEST(Metadata, HoldArraysWithTheirBounds) {
    VARIANT variant = VariantOf(RoundTrip(ArrayValue<int32_t>({7, 8, 9}, {{3, -1}})));
    ASSERT_EQ(variant.vt, VT_SAFEARRAY);
    VARTYPE type = 0;
    LONG bounds[2] = {};
    EXPECT_EQ(SafeArrayGetVartype(variant.parray, &type), S_OK);
    SafeArrayGetLBound(variant.parray, 1, &bounds[0]);
    SafeArrayGetUBound(variant.parray, 1, &bounds[1]);
    int32_t last = 0;
    EXPECT_EQ(SafeArrayGetElement(variant.parray, &bounds[1], &last), S_OK);
    EXPECT_EQ(type, VT_I4);
    EXPECT_EQ(bounds[0], -1);
    EXPECT_EQ(bounds[1], 1);
    EXPECT_EQ(last, 9);
    VariantClear(&variant);
}

TEST(Metadata, HoldArraysOfTwoDimensions) {
    VARIANT variant = VariantOf(RoundTrip(ArrayValue<float>({1, 2, 3, 4, 5, 6}, {{2, 0}, {3, 0}})));
    EXPECT_EQ(SafeArrayGetDim(variant.parray), 2u);
    LONG indices[] = {1, 2};
    float last = 0;
    EXPECT_EQ(SafeArrayGetElement(variant.parray, indices, &last), S_OK);
    EXPECT_EQ(last, 6);
    VariantClear(&variant);
}

TEST(Metadata, KeepTheirOrderAndKeysThatComeTwice) {
    const Metadata metadata =
        RoundTrip(Metadata{{u"b", TextValue(u"1")}, {u"a", TextValue(u"2")}, {u"b", TextValue(u"3")}});
    ASSERT_EQ(metadata.size(), 3u);
    EXPECT_EQ(metadata[0].key, u"b");
    EXPECT_EQ(metadata[1].key, u"a");
    EXPECT_EQ(metadata[2].key, u"b");
}

TEST(Metadata, OfEveryKindGoThereAndBack) {
    const Metadata before = AllKinds();
    const Metadata after = RoundTrip(before);
    ASSERT_EQ(after.size(), before.size());
    for (size_t i = 0; i < after.size(); ++i) {
        EXPECT_EQ(after[i].key, before[i].key);
        EXPECT_EQ(after[i].value.type, before[i].value.type);
        EXPECT_EQ(after[i].value.bytes, before[i].value.bytes);
        EXPECT_EQ(after[i].value.bounds.size(), before[i].value.bounds.size());
    }
}

void ExpectRefused(const MetadataValue& value) { EXPECT_THROW(RoundTrip(value), Failure); }

TEST(Metadata, RefuseValuesWhoseBytesDoNotFitTheirType) {
    ExpectRefused({VT_I4, {}, {1, 2, 3}});
    ExpectRefused({VT_BSTR, {}, {1, 2, 3}});
    ExpectRefused({VT_I4, {{2, 0}}, {1, 2, 3, 4}});
    ExpectRefused({VT_I4, {{0x7FFFFFFF, 0}, {0x7FFFFFFF, 0}, {0x7FFFFFFF, 0}}, {1, 2, 3, 4}});
}

TEST(Metadata, RefuseTypesThatTheyDoNotHold) {
    ExpectRefused({VT_EMPTY, {}, {}});
    ExpectRefused({VT_SAFEARRAY, {}, {}});
    ExpectRefused({9, {}, {0, 0, 0, 0, 0, 0, 0, 0}});
    ExpectRefused({VT_BSTR, {{1, 0}}, {0, 0, 0, 0, 0, 0, 0, 0}});
}

TEST(Metadata, RefuseToBeCutOff) {
    ByteWriter writer;
    WriteMetadata(AllKinds(), writer);
    for (size_t size = 0; size < writer.Bytes().size(); ++size) {
        ByteReader reader({writer.Bytes().data(), size});
        ASSERT_THROW(ReadMetadata(reader), Failure) << size;
    }
}

TEST(Metadata, SurviveEveryByteThatIsChanged) {
    std::mt19937 random = MakeRandom();
    ByteWriter writer;
    WriteMetadata(AllKinds(), writer);
    int refused = 0;
    for (size_t i = 0; i < writer.Bytes().size(); ++i) {
        std::vector<uint8_t> damaged = writer.Bytes();
        damaged[i] ^= 1u << random() % 8;
        ByteReader reader(damaged);
        try {
            for (const MetadataEntry& entry : ReadMetadata(reader)) {
                VARIANT variant = VariantOf(entry.value);
                VariantClear(&variant);
            }
        } catch (const Failure&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 100);
}

} // namespace
