#include "cameraraw/RawDefaults.h"

#include "cameraraw/RawTestSupport.h"

#include <bit>

namespace {

template <typename Number>
bool IsRange(const RawRange<Number>& range, Number preset, Number lowest, Number highest) {
    return range.preset == preset && range.lowest == lowest && range.highest == highest && !range.isReadOnly;
}

TEST(RawDefaults, EverySettingHasItsLimits) {
    const RawDefaults defaults;
    EXPECT_TRUE(IsRange<uint32_t>(defaults.whiteBalanceKelvin, 5500, 2000, 50000));
    EXPECT_TRUE(IsRange<int16_t>(defaults.whiteBalanceTint, 0, -150, 150));
    EXPECT_TRUE(IsRange(defaults.exposure, 0.0F, -5.0F, 5.0F));
    EXPECT_TRUE(IsRange(defaults.saturation, 2.0F, 0.0F, 4.0F));
    EXPECT_TRUE(IsRange(defaults.contrast, 1.0F, 0.0F, 2.0F));
    EXPECT_TRUE(IsRange(defaults.midpoint, 0.5F, 0.0F, 1.0F));
    EXPECT_TRUE(IsRange(defaults.highlights, 1.0F, 0.0F, 2.0F));
    EXPECT_TRUE(IsRange(defaults.shadows, 1.0F, 0.0F, 2.0F));
    EXPECT_TRUE(IsRange(defaults.blackLevel, 0.0F, -1.0F, 1.0F));
    EXPECT_TRUE(IsRange(defaults.whiteLevel, 1.0F, 0.0F, 2.0F));
}

TEST(RawDefaults, GamutAndGammaHaveOneNameEach) {
    const RawDefaults defaults;
    EXPECT_EQ(defaults.gamuts.names, std::vector<std::string>{"Ravenlight Design"});
    EXPECT_EQ(defaults.gammas.names, std::vector<std::string>{"Ravenlight Design Film"});
    EXPECT_FALSE(defaults.gamuts.isReadOnly);
    EXPECT_FALSE(defaults.gammas.isReadOnly);
}

/// The limits as a scripted camera tells them.
class RawLimits : public RawTest {
protected:
    RawLimits() {
        RawPointer<RawCodec> codec;
        CreateRawFactory()->CreateCodec(codec.Receive());
        QueryRaw(codec.Get(), IID_RawConstants, constants);
    }
    RawDefaults Read() const { return ReadRawDefaults(*constants.Get()); }

    RawPointer<RawConstants> constants;
};

TEST_F(RawLimits, AreAskedForTheOneModelOfCamera) {
    Read();
    EXPECT_EQ(Script().lastText, "Ravenlight Heron Field S2");
}

TEST_F(RawLimits, TakeThePlaceOfTheRecords) {
    const RawDefaults limits = Read();
    EXPECT_EQ(limits.whiteBalanceKelvin.lowest, 6000U);
    EXPECT_EQ(limits.whiteBalanceKelvin.highest, 9000U);
    EXPECT_EQ(limits.whiteLevel.lowest, -1.0F);
    EXPECT_EQ(limits.whiteLevel.highest, 4.0F);
    EXPECT_TRUE(limits.whiteLevel.isReadOnly);
    EXPECT_TRUE(limits.gammas.isReadOnly);
}

TEST_F(RawLimits, WhiteBalanceIsClampedIntoThem) {
    const RawDefaults limits = Read();
    EXPECT_EQ(limits.whiteBalanceKelvin.preset, 6000U);
    EXPECT_EQ(limits.whiteBalanceTint.preset, -10);
}

TEST_F(RawLimits, TheOtherPresetsAreTheirMiddleOrAreGiven) {
    const RawDefaults limits = Read();
    for (const RawRange<float>* const range :
         {&limits.exposure, &limits.contrast, &limits.highlights, &limits.shadows})
        EXPECT_EQ(range->preset, 1.5F);
    EXPECT_EQ(limits.saturation.preset, 1.0F);
    EXPECT_EQ(std::bit_cast<uint32_t>(limits.midpoint.preset), 0x3ED16976U);
    EXPECT_EQ(limits.blackLevel.preset, 0.0F);
    EXPECT_EQ(limits.whiteLevel.preset, 1.0F);
}

TEST_F(RawLimits, ANameListIsTakenAsItIs) {
    Script().gamuts = {"One", "Two", "Three"};
    EXPECT_EQ(Read().gamuts.names, Script().gamuts);
    Script().gamuts = {};
    EXPECT_TRUE(Read().gammas.names.empty());
}

TEST_F(RawLimits, OnesThatAreRefusedStayTheRecordsAndTheNextAreRead) {
    Script().failing = {{"RawConstants.GetFrameAttributeRange wbkv", 2},
                        {"RawConstants.GetAttributeList gamt values", 2}};
    RawDefaults limits;
    EXPECT_EQ(WordsOf([&] { limits = Read(); }), "Vrel HRESULT = 0x80040002"
                                                 "Vrel HRESULT = 0x80040004");
    EXPECT_EQ(limits.whiteBalanceKelvin.highest, 50000U);
    EXPECT_FALSE(limits.whiteBalanceKelvin.isReadOnly);
    EXPECT_EQ(limits.whiteBalanceTint.highest, -10);
    EXPECT_FALSE(limits.gamuts.isReadOnly);
    EXPECT_TRUE(limits.gammas.isReadOnly);
}

TEST_F(RawLimits, AListOfNoNamesIsEmptyWhateverTheSdkHas) {
    Script().listCounts = {0};
    const RawDefaults limits = Read();
    EXPECT_TRUE(limits.gamuts.names.empty());
    EXPECT_TRUE(limits.gamuts.isReadOnly);
}

TEST_F(RawLimits, AListOfMoreNamesThanAnyAttributeHasIsNotRead) {
    for (const uint32_t count : {4097U, 0xFFFFFFFFU}) {
        Script().listCounts = {count};
        const RawDefaults limits = Read();
        EXPECT_EQ(limits.gamuts.names, RawDefaults().gamuts.names) << count;
        EXPECT_EQ(CallsOf("RawConstants.GetAttributeList gamt values"), 0) << count;
    }
}

TEST_F(RawLimits, ACountBeyondTheOneThatWasToldFirstTakesNoMoreNames) {
    Script().gamuts = {"One", "Two", "Three"};
    Script().listCounts = {2, 0xFFFFFFFF};
    EXPECT_EQ(Read().gamuts.names, (std::vector<std::string>{"One", "Two"}));
}

TEST_F(RawLimits, AListWithoutACountIsNotAskedForItsValues) {
    Script().failing = {{"RawConstants.GetAttributeList gamt count", 1}};
    EXPECT_EQ(WordsOf([&] { Read(); }), "Vrel HRESULT = 0x0");
    EXPECT_EQ(CallsOf("RawConstants.GetAttributeList gamt values"), 0);
}

} // namespace
