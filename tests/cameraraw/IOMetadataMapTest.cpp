#include "cameraraw/IOMetadataMap.h"

#include "cameraraw/MetadataValues.h"
#include "cameraraw/RawTestSupport.h"
#include "cameraraw/RawValue.h"

#include <limits>

namespace {

/// Adds a value under the key "key".
bool Add(IOMetadataMap& map, const FillVariant& fill) {
    RawValue value;
    fill(*value.Receive());
    return map.Add("key", value.Get());
}

bool IsEmpty(const IOMetadataMap& map) {
    return map.Strings().empty() && map.Integers().empty() && map.Floats().empty() &&
           map.IntegerArrays().empty() && map.FloatArrays().empty();
}

TEST(IOMetadataMap, AStringIsKeptAsUtf8) {
    IOMetadataMap map;
    EXPECT_TRUE(Add(map, TextValue(u"Größe \U0001F3A5")));
    EXPECT_EQ(map.Strings().at("key"), "Größe \U0001F3A5");
    EXPECT_TRUE(Add(map, TextValue(u"")));
    EXPECT_EQ(map.Strings().at("key"), "");
}

TEST(IOMetadataMap, AStringThatIsNoTextIsKeptWithReplacementCharacters) {
    IOMetadataMap map;
    EXPECT_TRUE(Add(map, TextValue(u"a\xD800"
                                   u"b")));
    EXPECT_EQ(map.Strings().at("key"), "a\uFFFDb");
}

TEST(IOMetadataMap, ANullStringIsEmpty) {
    IOMetadataMap map;
    EXPECT_TRUE(Add(map, [](VARIANT& value) {
        value.vt = VT_BSTR;
        value.bstrVal = nullptr;
    }));
    EXPECT_EQ(map.Strings().at("key"), "");
}

TEST(IOMetadataMap, IntegersOf16And32BitsAreKeptWith64) {
    const std::vector<std::pair<FillVariant, int64_t>> rows = {
        {NumberValue(int16_t{-32768}), -32768},
        {NumberValue(std::numeric_limits<int32_t>::min()), std::numeric_limits<int32_t>::min()},
        {NumberValue(uint16_t{65535}), 65535},
        {NumberValue(uint32_t{7}), 7}};
    IOMetadataMap map;
    for (const auto& [fill, expected] : rows) {
        EXPECT_TRUE(Add(map, fill));
        EXPECT_EQ(map.Integers().at("key"), expected);
    }
    EXPECT_EQ(map.Integers().size(), 1U);
}

TEST(IOMetadataMap, AnUnsignedIntegerAbove0x7FFFFFFFStaysPositive) {
    IOMetadataMap map;
    EXPECT_TRUE(Add(map, NumberValue(uint32_t{0xFFFFFFFE})));
    EXPECT_EQ(map.Integers().at("key"), int64_t{0xFFFFFFFE});
}

TEST(IOMetadataMap, AFloatIsKept) {
    IOMetadataMap map;
    EXPECT_TRUE(Add(map, NumberValue(-0.125F)));
    EXPECT_EQ(map.Floats().at("key"), -0.125F);
}

TEST(IOMetadataMap, AnyOtherTypeIsRefused) {
    for (int type = 0; type <= 40; ++type) {
        const bool isTaken =
            type == 2 || type == 3 || type == 4 || type == 8 || type == 18 || type == 19 || type == 27;
        if (isTaken) continue;
        IOMetadataMap map;
        VARIANT value = {};
        value.vt = static_cast<VARTYPE>(type);
        EXPECT_FALSE(map.Add("key", &value)) << type;
        EXPECT_TRUE(IsEmpty(map)) << type;
    }
}

TEST(IOMetadataMap, ArraysOfIntegersAreWidenedTo64Bits) {
    IOMetadataMap map;
    using Numbers = std::vector<int64_t>;
    EXPECT_TRUE(Add(map, ArrayValue<uint8_t>(VT_UI1, {0, 128, 255})));
    EXPECT_EQ(map.IntegerArrays().at("key"), (Numbers{0, 128, 255}));
    EXPECT_TRUE(Add(map, ArrayValue<int16_t>(VT_I2, {-32768, 32767})));
    EXPECT_EQ(map.IntegerArrays().at("key"), (Numbers{-32768, 32767}));
    EXPECT_TRUE(Add(map, ArrayValue<int32_t>(VT_I4, {-1, 2})));
    EXPECT_EQ(map.IntegerArrays().at("key"), (Numbers{-1, 2}));
    EXPECT_TRUE(Add(map, ArrayValue<uint16_t>(VT_UI2, {65535, 1})));
    EXPECT_EQ(map.IntegerArrays().at("key"), (Numbers{65535, 1}));
    EXPECT_TRUE(Add(map, ArrayValue<uint32_t>(VT_UI4, {0xFFFFFFFF, 3})));
    EXPECT_EQ(map.IntegerArrays().at("key"), (Numbers{0xFFFFFFFF, 3}));
}

TEST(IOMetadataMap, ArraysOfFloatsAreKept) {
    IOMetadataMap map;
    EXPECT_TRUE(Add(map, ArrayValue<float>(VT_R4, {1.5F, -2.0F})));
    EXPECT_EQ(map.FloatArrays().at("key"), (std::vector<float>{1.5F, -2.0F}));
}

TEST(IOMetadataMap, AnArrayMayBeginAtAnyIndex) {
    IOMetadataMap map;
    EXPECT_TRUE(Add(map, ArrayValue<int16_t>(VT_I2, {5, 6, 7}, -1)));
    EXPECT_EQ(map.IntegerArrays().at("key"), (std::vector<int64_t>{5, 6, 7}));
}

TEST(IOMetadataMap, AnArrayOfASingleElementIsRefusedAndStaysAccessed) {
    IOMetadataMap map;
    RawValue value;
    ArrayValue<int16_t>(VT_I2, {5})(*value.Receive());
    EXPECT_FALSE(map.Add("key", value.Get()));
    EXPECT_EQ(value.Get()->parray->cLocks, 1U);
    EXPECT_TRUE(IsEmpty(map));
}

TEST(IOMetadataMap, AnArrayWithoutElementsIsRefused) {
    IOMetadataMap map;
    EXPECT_FALSE(Add(map, ArrayValue<int16_t>(VT_I2, {})));
    EXPECT_TRUE(IsEmpty(map));
}

TEST(IOMetadataMap, AnArrayThatIsTakenIsNotAccessedAnyMore) {
    IOMetadataMap map;
    RawValue value;
    ArrayValue<int16_t>(VT_I2, {5, 6})(*value.Receive());
    EXPECT_TRUE(map.Add("key", value.Get()));
    EXPECT_EQ(value.Get()->parray->cLocks, 0U);
}

TEST(IOMetadataMap, AnArrayOfTwoDimensionsIsRefused) {
    IOMetadataMap map;
    EXPECT_FALSE(Add(map, [](VARIANT& value) {
        SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
        value.vt = VT_SAFEARRAY;
        value.parray = SafeArrayCreate(VT_I2, 2, bounds);
    }));
    EXPECT_TRUE(IsEmpty(map));
}

TEST(IOMetadataMap, AnArrayThatIsMissingIsRefused) {
    IOMetadataMap map;
    EXPECT_FALSE(Add(map, [](VARIANT& value) {
        value.vt = VT_SAFEARRAY;
        value.parray = nullptr;
    }));
}

TEST(IOMetadataMap, AnArrayOfAnyOtherTypeIsRefused) {
    IOMetadataMap map;
    EXPECT_FALSE(Add(map, ArrayValue<double>(VT_R8, {1.0, 2.0})));
    EXPECT_FALSE(Add(map, ArrayValue<int64_t>(VT_I8, {1, 2})));
    EXPECT_FALSE(Add(map, ArrayValue<int8_t>(VT_I1, {1, 2})));
    EXPECT_TRUE(IsEmpty(map));
}

TEST(IOMetadataMap, AnArrayWithoutATypeIsRefusedAndReported) {
    IOMetadataMap map;
    const std::string words = WordsOf([&] {
        EXPECT_FALSE(Add(map, [](VARIANT& value) {
            value.vt = VT_SAFEARRAY;
            SafeArrayAllocDescriptor(1, &value.parray);
        }));
    });
    EXPECT_EQ(words, "Vrel HRESULT = 0x80070057");
}

TEST(IOMetadataMap, AnArrayWithBoundsAndNoElementsAddsNothing) {
    IOMetadataMap map;
    EXPECT_TRUE(Add(map, [](VARIANT& value) {
        value.vt = VT_SAFEARRAY;
        SafeArrayAllocDescriptorEx(VT_I2, 1, &value.parray);
        value.parray->rgsabound[0] = {5, 0};
    }));
    EXPECT_TRUE(IsEmpty(map));
}

TEST(IOMetadataMap, AnArrayThatCantBeAccessedIsRefusedAndReported) {
    IOMetadataMap map;
    const std::string words = WordsOf([&] {
        EXPECT_FALSE(Add(map, [](VARIANT& value) {
            ArrayValue<int16_t>(VT_I2, {5, 6})(value);
            value.parray->cLocks = 65535;
        }));
    });
    EXPECT_EQ(words, "Vrel HRESULT = 0x8000ffff");
    EXPECT_TRUE(IsEmpty(map));
}

TEST(IOMetadataMap, ANullValueIsNotTaken) {
    IOMetadataMap map;
    EXPECT_FALSE(map.Add("key", nullptr));
    QMap<QString, QVariant> flat;
    map.ToMap(flat);
    EXPECT_TRUE(flat.isEmpty());
}

TEST(IOMetadataMap, TheFlatFormHasScalarsAndNoArrays) {
    IOMetadataMap map;
    const std::vector<std::pair<const char*, FillVariant>> rows = {
        {"text", TextValue(u"ä")},
        {"integer", NumberValue(uint32_t{0xFFFFFFFF})},
        {"float", NumberValue(0.5F)},
        {"array", ArrayValue<int16_t>(VT_I2, {1, 2})}};
    for (const auto& [key, fill] : rows) {
        RawValue value;
        fill(*value.Receive());
        EXPECT_TRUE(map.Add(key, value.Get()));
    }
    QMap<QString, QVariant> flat = {{"old", 1}};
    map.ToMap(flat);
    EXPECT_EQ(flat.size(), 3);
    EXPECT_EQ(flat["text"].type(), QVariant::String);
    EXPECT_EQ(flat["text"].toString(), QString::fromUtf8("ä"));
    EXPECT_EQ(flat["integer"].type(), QVariant::LongLong);
    EXPECT_EQ(flat["integer"].toLongLong(), 0xFFFFFFFFLL);
    EXPECT_EQ(flat["float"].type(), QVariant::Double);
    EXPECT_EQ(flat["float"].toDouble(), 0.5);
}

} // namespace
