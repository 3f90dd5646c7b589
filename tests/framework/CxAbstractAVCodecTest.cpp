#include "framework/CxAbstractAVCodec.h"

#include "framework/AllocatorSpy.h"
#include "framework/FakeBackEnd.h"
#include "framework/MemoryTrackSource.h"
#include "support/HeapSpy.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

namespace {

class CxAbstractAVCodecTest : public testing::Test {
protected:
    void SetUp() override { AllocatorSpy::Reset(); }
    void TearDown() override { AllocatorSpy::Reset(); }

    std::shared_ptr<FakeBackEnd> backEnd = NewBackEnd({});
    MemoryTrackSource source{FourCC("test"), 4, 2, {{1, 2, 3}, {4, 5, 6, 7, 8}}};
    FakeCodec codec{CxAV_DECODE, nullptr, backEnd};
};

TEST_F(CxAbstractAVCodecTest, WithoutASourceThereIsNoDataBufferAndNothingIsAllocated) {
    EXPECT_EQ(codec.GetDataBuffer(), nullptr);
    EXPECT_EQ(codec.GetDataBufferSize(), 0);
    EXPECT_EQ(AllocatorSpy::allocations, 0);
}

TEST_F(CxAbstractAVCodecTest, TheDataBufferIsPageAlignedAndOfTheSourcesLargestSample) {
    codec.SetDataSource(&source);
    uint8_t* const buffer = codec.GetDataBuffer();
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(AllocatorSpy::lastSize, 5);
    EXPECT_EQ(AllocatorSpy::lastAlignment, Platform::GetMemoryPageSize());
    EXPECT_EQ(codec.GetDataBufferSize(), 5);
    std::memset(buffer, 0x5a, 5);
}

TEST_F(CxAbstractAVCodecTest, ASecondGetDataBufferReturnsTheSamePointerThoughTheSizeHasChanged) {
    codec.SetDataSource(&source);
    uint8_t* const buffer = codec.GetDataBuffer();
    source.maxSampleSize = 1000;
    EXPECT_EQ(codec.GetDataBuffer(), buffer);
    EXPECT_EQ(codec.GetDataBufferSize(), 5);
    EXPECT_EQ(source.maxSampleSizeCalls, 1);
    EXPECT_EQ(AllocatorSpy::allocations, 1);
}

TEST_F(CxAbstractAVCodecTest, GetDataBufferSizeAllocatesOnFirstUse) {
    codec.SetDataSource(&source);
    EXPECT_EQ(codec.GetDataBufferSize(), 5);
    EXPECT_EQ(AllocatorSpy::allocations, 1);
    EXPECT_NE(codec.GetDataBuffer(), nullptr);
    EXPECT_EQ(AllocatorSpy::allocations, 1);
}

TEST_F(CxAbstractAVCodecTest, ADataBufferKeepsItsSizeWhenTheSourceIsTakenAway) {
    codec.SetDataSource(&source);
    uint8_t* const buffer = codec.GetDataBuffer();
    codec.getDataSource() = nullptr;
    EXPECT_EQ(codec.GetDataBufferSize(), 5);
    EXPECT_EQ(codec.GetDataBuffer(), buffer);
}

TEST_F(CxAbstractAVCodecTest, AFailedAllocationGivesNullAndZeroAndIsTriedAgain) {
    codec.SetDataSource(&source);
    AllocatorSpy::fails = true;
    EXPECT_EQ(codec.GetDataBuffer(), nullptr);
    EXPECT_EQ(codec.GetDataBufferSize(), 0);
    AllocatorSpy::fails = false;
    EXPECT_NE(codec.GetDataBuffer(), nullptr);
    EXPECT_EQ(codec.GetDataBufferSize(), 5);
}

TEST_F(CxAbstractAVCodecTest, TheDestructorFreesTheDataBufferAndLeavesTheSource) {
    {
        FakeCodec local(CxAV_DECODE, nullptr, backEnd);
        local.SetDataSource(&source);
        ASSERT_NE(local.GetDataBuffer(), nullptr);
    }
    EXPECT_EQ(AllocatorSpy::frees, 1);
    EXPECT_EQ(source.GetSampleCount(), 2);
}

TEST_F(CxAbstractAVCodecTest, ADataBufferThatCannotBeSharedForLackOfMemoryIsFreedAndTriedAgain) {
    codec.SetDataSource(&source);
    {
        const HeapSpy empty(0);
        EXPECT_EQ(codec.GetDataBuffer(), nullptr);
        EXPECT_TRUE(empty.RanOut());
    }
    EXPECT_EQ(AllocatorSpy::frees, 1);
    EXPECT_NE(codec.GetDataBuffer(), nullptr);
}

TEST_F(CxAbstractAVCodecTest, ACopySharesTheDataBufferWhichTheLastOwnerFrees) {
    codec.SetDataSource(&source);
    uint8_t* const buffer = codec.GetDataBuffer();
    {
        FakeCodec copy(codec);
        EXPECT_EQ(copy.GetDataBuffer(), buffer);
        EXPECT_EQ(copy.GetDataBufferSize(), 5);
        EXPECT_EQ(copy.getDataSource(), &source);
        EXPECT_EQ(copy.GetName(), codec.GetName());
    }
    EXPECT_EQ(AllocatorSpy::frees, 0);
    EXPECT_EQ(AllocatorSpy::allocations, 1);
    EXPECT_EQ(codec.GetDataBuffer(), buffer);
}

TEST_F(CxAbstractAVCodecTest, IsTypeOfComparesPointersSoThatASecondFactoryOfTheClassIsAnother) {
    FakeFactory maker(backEnd);
    FakeFactory other(backEnd);
    FakeCodec made(CxAV_DECODE, &maker, backEnd);
    EXPECT_TRUE(made.isTypeOf(&maker));
    EXPECT_FALSE(made.isTypeOf(&other));
    EXPECT_FALSE(made.isTypeOf(nullptr));
}

TEST_F(CxAbstractAVCodecTest, IsTypeOfNullIsTrueForACodecWithoutAFactory) {
    EXPECT_TRUE(codec.isTypeOf(nullptr));
}

TEST_F(CxAbstractAVCodecTest, SetDataSourceStoresTheSourceAndReturnsTheResultOfOpen) {
    backEnd->openResult = CxAV_UNSUPPORTED;
    EXPECT_EQ(codec.SetDataSource(&source), CxAV_UNSUPPORTED);
    EXPECT_EQ(codec.getDataSource(), &source);
    EXPECT_EQ(backEnd->opens, 1);
}

TEST_F(CxAbstractAVCodecTest, SetDataSourceOfNullStoresTheNullAndStillRunsOpen) {
    codec.SetDataSource(&source);
    EXPECT_EQ(codec.SetDataSource(nullptr), CxAV_INVALID_STATE);
    EXPECT_EQ(codec.getDataSource(), nullptr);
    EXPECT_EQ(backEnd->opens, 2);
}

TEST_F(CxAbstractAVCodecTest, TheSourceCanBeChangedByReferenceWithoutOpenBeingRun) {
    codec.getDataSource() = &source;
    EXPECT_EQ(codec.getDataSource(), &source);
    EXPECT_EQ(backEnd->opens, 0);
}

TEST_F(CxAbstractAVCodecTest, ACodecWithoutAFactoryIsNamedUnknown) { EXPECT_EQ(codec.GetName(), "Unknown"); }

TEST_F(CxAbstractAVCodecTest, ACodecKeepsTheNameThatItsFactoryHadWhenItWasMade) {
    FakeFactory maker(backEnd);
    maker.name = "Before";
    FakeCodec made(CxAV_DECODE, &maker, backEnd);
    maker.name = "After";
    EXPECT_EQ(made.GetName(), "Before");
}

TEST_F(CxAbstractAVCodecTest, TheOptionalOperationsDoNothingByDefault) {
    Image* image = nullptr;
    CxEncodedFrame frame;
    CxVideoSettings settings;
    codec.Flush();
    EXPECT_EQ(codec.SetEncoderSettings(settings), CxAV_OK);
    EXPECT_EQ(codec.EncodeFrame(image, frame), CxAV_OK);
    EXPECT_EQ(codec.GetTargetFrameSize(settings), 0);
    EXPECT_EQ(frame.data, nullptr);
    EXPECT_TRUE(settings.extraData.empty());
}

/// Shows where the data members of a codec stand.
class LayoutProbe : public FakeCodec {
public:
    using FakeCodec::FakeCodec;

    std::vector<const void*> Addresses() const {
        return {&dataBuffer, &dataBufferSize, &operation, &dataSource, &factory, &name};
    }
    CxAVOperation Operation() const { return operation; }
};

TEST_F(CxAbstractAVCodecTest, TheDataMembersKeepTheirOrder) {
    const LayoutProbe probe(CxAV_ENCODE, nullptr, backEnd);
    const std::vector<const void*> addresses = probe.Addresses();
    for (size_t i = 1; i < addresses.size(); ++i)
        EXPECT_LT(addresses[i - 1], addresses[i]) << "member " << i;
}

TEST_F(CxAbstractAVCodecTest, TheOperationIsTheOneGivenAtConstruction) {
    EXPECT_EQ(LayoutProbe(CxAV_ENCODE, nullptr, backEnd).Operation(), CxAV_ENCODE);
    EXPECT_EQ(LayoutProbe(CxAV_DECODE, nullptr, backEnd).Operation(), CxAV_DECODE);
}

/// A back-end for the factory template, which can fail to be made.
class TemplateCodec : public FakeCodec {
public:
    TemplateCodec(CxAVOperation op, const CxAbstractCodecFactory* maker)
        : FakeCodec(op, maker, NewBackEnd({})) {
        if (fails) throw std::runtime_error("can't be made");
    }
    static bool FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>& encoders,
                              std::string& name) {
        decoderFourCCs.insert(FourCC("tmpl"));
        encoders.push_back(EncoderRow("Template encoder"));
        name = "Template";
        if (fills) return accepts;
        throw std::runtime_error("can't be filled");
    }
    static void Shutdown() { ++shutdowns; }

    static inline bool fails = false;
    static inline bool fills = true;
    static inline bool accepts = true;
    static inline int shutdowns = 0;
};

TEST(CxAVCodecFactory, MakesACodecForTheOperationWithItselfAsTheMaker) {
    CxAVCodecFactory<TemplateCodec> factory;
    factory.name = "Template";
    const std::unique_ptr<CxAbstractAVCodec> codec(factory.CreateCodec(CxAV_ENCODE));
    ASSERT_NE(codec, nullptr);
    EXPECT_TRUE(codec->isTypeOf(&factory));
    EXPECT_EQ(codec->GetName(), "Template");
    EXPECT_EQ(codec->getDataSource(), nullptr);
}

TEST(CxAVCodecFactory, ACodecThatCannotBeMadeGivesNullAndNoException) {
    CxAVCodecFactory<TemplateCodec> factory;
    TemplateCodec::fails = true;
    CxAbstractAVCodec* codec = nullptr;
    EXPECT_NO_THROW(codec = factory.CreateCodec(CxAV_DECODE));
    TemplateCodec::fails = false;
    EXPECT_EQ(codec, nullptr);
}

TEST(CxAVCodecFactory, FillCodecInfoIsTheStaticRoutineOfTheBackEnd) {
    CxAVCodecFactory<TemplateCodec> factory;
    std::set<uint32_t> fourCCs;
    std::vector<CxEncoderInfo> rows;
    std::string name;
    EXPECT_TRUE(factory.FillCodecInfo(fourCCs, rows, name));
    EXPECT_EQ(fourCCs, std::set<uint32_t>{FourCC("tmpl")});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].name, "Template encoder");
    EXPECT_EQ(name, "Template");
    TemplateCodec::accepts = false;
    EXPECT_FALSE(factory.FillCodecInfo(fourCCs, rows, name));
    TemplateCodec::accepts = true;
}

TEST(CxAVCodecFactory, ABackEndWhoseFillCodecInfoThrowsHasRefused) {
    CxAVCodecFactory<TemplateCodec> factory;
    std::set<uint32_t> fourCCs;
    std::vector<CxEncoderInfo> rows;
    std::string name;
    TemplateCodec::fills = false;
    bool accepted = true;
    EXPECT_NO_THROW(accepted = factory.FillCodecInfo(fourCCs, rows, name));
    TemplateCodec::fills = true;
    EXPECT_FALSE(accepted);
}

TEST(CxAVCodecFactory, ShutdownRunsTheBackEndsOwn) {
    CxAVCodecFactory<TemplateCodec> factory;
    const int before = TemplateCodec::shutdowns;
    factory.Shutdown();
    EXPECT_EQ(TemplateCodec::shutdowns, before + 1);
}

TEST(CxAVCodecFactory, IsWithoutANameUntilItIsRegistered) {
    CxAVCodecFactory<TemplateCodec> named;
    const CxAbstractCodecFactory& factory = named;
    EXPECT_EQ(factory.GetName(), "");
    named.name = "Given";
    EXPECT_EQ(factory.GetName(), "Given");
    EXPECT_EQ(&factory.GetName(), &factory.name);
}

} // namespace
