#include "framework/CxAVCodecRegistry.h"

#include "framework/FakeBackEnd.h"
#include "framework/MemoryTrackSource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace {

using CodecPointer = std::unique_ptr<CxAbstractAVCodec>;
using Factories = std::vector<const CxAbstractCodecFactory*>;

MemoryTrackSource TrackOf(uint32_t fourCC) { return {fourCC, 4, 2, {}}; }

CodecPointer OpenDecoder(uint32_t fourCC) {
    // The fakes ask nothing of a source after `Open`, so that it may go before the codec does.
    MemoryTrackSource source = TrackOf(fourCC);
    return CodecPointer(CxAVCodecRegistry::CreateDecoder(&source));
}

std::vector<CxEncoderInfo> AllRows() {
    std::vector<CxEncoderInfo> rows;
    CxAVCodecRegistry::ListAllCodecs(true, rows);
    return rows;
}

TEST(CxAVCodecRegistry, ARefusingFactoryIsDeletedAndItsCodesGoToTheNext) {
    const uint32_t fourCC = NewFourCC();
    const auto refusing = NewBackEnd({fourCC});
    refusing->accepts = false;
    EXPECT_EQ(Register(refusing), nullptr);
    EXPECT_EQ(refusing->factoriesDeleted, 1);
    EXPECT_FALSE(CxAVCodecRegistry::CanCreateDecoder(fourCC));

    CxAbstractCodecFactory* const next = Register(NewBackEnd({fourCC}));
    const CodecPointer codec = OpenDecoder(fourCC);
    ASSERT_NE(codec, nullptr);
    EXPECT_TRUE(codec->isTypeOf(next));
}

TEST(CxAVCodecRegistry, ARefusingFactoryLeavesNoRows) {
    const size_t before = AllRows().size();
    const auto refusing = NewBackEnd({}, {EncoderRow("Refused encoder")});
    refusing->accepts = false;
    Register(refusing);
    EXPECT_EQ(AllRows().size(), before);
    EXPECT_EQ(CxAVCodecRegistry::CreateEncoder("Refused encoder"), nullptr);
}

TEST(CxAVCodecRegistry, AFailedOpenDeletesTheCodecAndFallsThroughToTheSecondFactory) {
    const uint32_t fourCC = NewFourCC();
    const auto failing = NewBackEnd({fourCC});
    failing->openResult = CxAV_FAILED;
    Register(failing);
    CxAbstractCodecFactory* const second = Register(NewBackEnd({fourCC}));

    const CodecPointer codec = OpenDecoder(fourCC);
    ASSERT_NE(codec, nullptr);
    EXPECT_TRUE(codec->isTypeOf(second));
    EXPECT_EQ(failing->codecsMade, 1);
    EXPECT_EQ(failing->codecsDeleted, 1);
}

TEST(CxAVCodecRegistry, OnlyResultZeroCountsAsOpen) {
    const uint32_t fourCC = NewFourCC();
    const auto needy = NewBackEnd({fourCC});
    needy->openResult = CxAV_NEED_MORE_DATA;
    Register(needy);
    EXPECT_EQ(OpenDecoder(fourCC), nullptr);
    EXPECT_EQ(needy->codecsDeleted, 1);
}

TEST(CxAVCodecRegistry, AFactoryThatMakesNoCodecIsSkipped) {
    const uint32_t fourCC = NewFourCC();
    const auto barren = NewBackEnd({fourCC});
    barren->makesCodecs = false;
    Register(barren);
    CxAbstractCodecFactory* const second = Register(NewBackEnd({fourCC}));
    const CodecPointer codec = OpenDecoder(fourCC);
    ASSERT_NE(codec, nullptr);
    EXPECT_TRUE(codec->isTypeOf(second));
}

TEST(CxAVCodecRegistry, TheFirstFactoryThatOpensWinsAndLaterOnesAreNotAsked) {
    const uint32_t fourCC = NewFourCC();
    CxAbstractCodecFactory* const first = Register(NewBackEnd({fourCC}));
    const auto later = NewBackEnd({fourCC});
    Register(later);
    const CodecPointer codec = OpenDecoder(fourCC);
    ASSERT_NE(codec, nullptr);
    EXPECT_TRUE(codec->isTypeOf(first));
    EXPECT_EQ(later->codecsMade, 0);
}

TEST(CxAVCodecRegistry, ADecoderHasTheSourceAndWasOpenedOnce) {
    const uint32_t fourCC = NewFourCC();
    const auto backEnd = NewBackEnd({fourCC});
    Register(backEnd);
    MemoryTrackSource source = TrackOf(fourCC);
    const CodecPointer codec(CxAVCodecRegistry::CreateDecoder(&source));
    ASSERT_NE(codec, nullptr);
    EXPECT_EQ(codec->getDataSource(), &source);
    EXPECT_EQ(backEnd->opens, 1);
    EXPECT_EQ(backEnd->lastOperation, CxAV_DECODE);
}

TEST(CxAVCodecRegistry, NoSourceOrAnUnclaimedCodeGivesNoDecoder) {
    EXPECT_EQ(CxAVCodecRegistry::CreateDecoder(nullptr), nullptr);
    EXPECT_EQ(OpenDecoder(NewFourCC()), nullptr);
}

TEST(CxAVCodecRegistry, CanCreateDecoderDoesNotOpenAnything) {
    const uint32_t fourCC = NewFourCC();
    const auto failing = NewBackEnd({fourCC});
    failing->openResult = CxAV_FAILED;
    Register(failing);
    EXPECT_TRUE(CxAVCodecRegistry::CanCreateDecoder(fourCC));
    EXPECT_EQ(failing->codecsMade, 0);
    EXPECT_FALSE(CxAVCodecRegistry::CanCreateDecoder(NewFourCC()));
}

TEST(CxAVCodecRegistry, DecoderFactoriesAreListedInOrderOfRegistration) {
    const uint32_t fourCC = NewFourCC();
    const CxAbstractCodecFactory* const first = Register(NewBackEnd({fourCC}));
    const CxAbstractCodecFactory* const second = Register(NewBackEnd({fourCC, NewFourCC()}));
    EXPECT_EQ(CxAVCodecRegistry::GetDecoderFactories(fourCC), (Factories{first, second}));
    EXPECT_TRUE(CxAVCodecRegistry::GetDecoderFactories(NewFourCC()).empty());
}

TEST(CxAVCodecRegistry, ListingWithoutEncodersReturnsFalseForAnEmptyList) {
    std::vector<CxEncoderInfo> rows;
    EXPECT_FALSE(CxAVCodecRegistry::ListAllCodecs(false, rows));
    EXPECT_TRUE(rows.empty());
}

TEST(CxAVCodecRegistry, ListingWithoutEncodersReturnsTrueForANonEmptyListAndLeavesIt) {
    std::vector<CxEncoderInfo> rows = {EncoderRow("Mine")};
    EXPECT_TRUE(CxAVCodecRegistry::ListAllCodecs(false, rows));
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].name, "Mine");
}

TEST(CxAVCodecRegistry, ListingEncodersAppendsAllRowsInOrderOfRegistration) {
    Register(NewBackEnd({}, {EncoderRow("Listed z"), EncoderRow("Listed a")}));
    Register(NewBackEnd({}, {EncoderRow("Listed m")}));
    std::vector<CxEncoderInfo> rows = {EncoderRow("Mine")};
    EXPECT_TRUE(CxAVCodecRegistry::ListAllCodecs(true, rows));
    EXPECT_EQ(rows.front().name, "Mine");
    ASSERT_GE(rows.size(), 4u);
    EXPECT_EQ(rows[rows.size() - 3].name, "Listed z");
    EXPECT_EQ(rows[rows.size() - 2].name, "Listed a");
    EXPECT_EQ(rows[rows.size() - 1].name, "Listed m");
}

TEST(CxAVCodecRegistry, CreateEncoderOfTheEmptyNameReturnsNull) {
    EXPECT_EQ(CxAVCodecRegistry::CreateEncoder(""), nullptr);
}

TEST(CxAVCodecRegistry, CreateEncoderComparesTheWholeNameWithItsCase) {
    Register(NewBackEnd({}, {EncoderRow("Exact name")}));
    EXPECT_EQ(CxAVCodecRegistry::CreateEncoder("Exact Name"), nullptr);
    EXPECT_EQ(CxAVCodecRegistry::CreateEncoder("Exact"), nullptr);
    EXPECT_EQ(CxAVCodecRegistry::CreateEncoder("Exact name "), nullptr);
    EXPECT_NE(CodecPointer(CxAVCodecRegistry::CreateEncoder("Exact name")), nullptr);
}

TEST(CxAVCodecRegistry, AnEncoderHasNoSourceAndIsNotOpened) {
    const auto backEnd = NewBackEnd({}, {EncoderRow("Unopened encoder")});
    Register(backEnd);
    const CodecPointer codec(CxAVCodecRegistry::CreateEncoder("Unopened encoder"));
    ASSERT_NE(codec, nullptr);
    EXPECT_EQ(codec->getDataSource(), nullptr);
    EXPECT_EQ(backEnd->opens, 0);
    EXPECT_EQ(backEnd->lastOperation, CxAV_ENCODE);
}

TEST(CxAVCodecRegistry, OfTwoEncodersWithOneNameTheEarliestFactoryWins) {
    CxAbstractCodecFactory* const first = Register(NewBackEnd({}, {EncoderRow("Shared encoder")}));
    Register(NewBackEnd({}, {EncoderRow("Shared encoder")}));
    const CodecPointer codec(CxAVCodecRegistry::CreateEncoder("Shared encoder"));
    ASSERT_NE(codec, nullptr);
    EXPECT_TRUE(codec->isTypeOf(first));
}

TEST(CxAVCodecRegistry, AFactoryGetsItsNameWhenItIsAdded) {
    const uint32_t fourCC = NewFourCC();
    const auto backEnd = NewBackEnd({fourCC});
    backEnd->name = "Named back-end";
    CxAbstractCodecFactory* const factory = Register(backEnd);
    EXPECT_EQ(factory->GetName(), "Named back-end");
    EXPECT_EQ(OpenDecoder(fourCC)->GetName(), "Named back-end");
}

TEST(CxAVCodecRegistry, AFactoryAddedTwiceEntersItsCodesAndRowsTwice) {
    const uint32_t fourCC = NewFourCC();
    CxAbstractCodecFactory* const factory = Register(NewBackEnd({fourCC}, {EncoderRow("Twice added")}));
    EXPECT_EQ(CxAVCodecRegistry::getInstance()->AddCodec(factory), factory);
    EXPECT_EQ(CxAVCodecRegistry::GetDecoderFactories(fourCC), (Factories{factory, factory}));
    const std::vector<CxEncoderInfo> rows = AllRows();
    EXPECT_EQ(
        std::count_if(rows.begin(), rows.end(), [](const auto& row) { return row.name == "Twice added"; }),
        2);
}

TEST(CxAVCodecRegistry, AFactoryThatRefusesWhenItIsAddedAgainStaysAsItWas) {
    const uint32_t fourCC = NewFourCC();
    const auto backEnd = NewBackEnd({fourCC});
    CxAbstractCodecFactory* const factory = Register(backEnd);
    backEnd->accepts = false;
    EXPECT_EQ(CxAVCodecRegistry::getInstance()->AddCodec(factory), nullptr);
    EXPECT_EQ(backEnd->factoriesDeleted, 0);
    EXPECT_NE(OpenDecoder(fourCC), nullptr);
}

TEST(CxAVCodecRegistry, AddingNullReturnsNull) {
    EXPECT_EQ(CxAVCodecRegistry::getInstance()->AddCodec(nullptr), nullptr);
}

TEST(CxAVCodecRegistry, ManyThreadsGetTheSameInstanceAndLookUpAtOnce) {
    const uint32_t fourCC = NewFourCC();
    Register(NewBackEnd({fourCC}, {EncoderRow("Looked up at once")}));
    const CxAVCodecRegistry* const expected = CxAVCodecRegistry::getInstance();
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                std::vector<CxEncoderInfo> rows;
                if (CxAVCodecRegistry::getInstance() != expected) ++wrong;
                if (!CxAVCodecRegistry::CanCreateDecoder(fourCC)) ++wrong;
                if (CxAVCodecRegistry::GetDecoderFactories(fourCC).size() != 1) ++wrong;
                if (!CxAVCodecRegistry::ListAllCodecs(true, rows)) ++wrong;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(CxAVCodecRegistry, FactoriesCanBeAddedFromManyThreadsAtOnce) {
    const uint32_t fourCC = NewFourCC();
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([=] { Register(NewBackEnd({fourCC})); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(CxAVCodecRegistry::GetDecoderFactories(fourCC).size(), 8u);
}

/// Writes what happens to it to the standard error stream, where a death test reads it.
class TellingFactory : public FakeFactory {
public:
    explicit TellingFactory(const char* text)
        : FakeFactory(NewBackEnd({FourCC("tell")}, {EncoderRow("Telling encoder")})), letter(text) {}
    ~TellingFactory() override { fprintf(stderr, "delete %s;", letter); }
    void Shutdown() override {
        fprintf(stderr, "shutdown %s;", letter);
        if (FindsAnything()) fprintf(stderr, "found something;");
    }

private:
    static bool FindsAnything() {
        MemoryTrackSource source = TrackOf(FourCC("tell"));
        std::vector<CxEncoderInfo> rows;
        return CxAVCodecRegistry::getInstance() != nullptr ||
               CxAVCodecRegistry::CreateDecoder(&source) != nullptr ||
               CxAVCodecRegistry::CanCreateDecoder(FourCC("tell")) ||
               CxAVCodecRegistry::CreateEncoder("Telling encoder") != nullptr ||
               !CxAVCodecRegistry::GetDecoderFactories(FourCC("tell")).empty() ||
               CxAVCodecRegistry::ListAllCodecs(true, rows);
    }

    const char* letter;
};

class CxAVCodecRegistryTeardown : public testing::Test {
protected:
    void SetUp() override { testing::FLAGS_gtest_death_test_style = "threadsafe"; }

    static void AddAndExit(std::initializer_list<CxAbstractCodecFactory*> factories) {
        for (CxAbstractCodecFactory* factory : factories)
            CxAVCodecRegistry::getInstance()->AddCodec(factory);
        std::exit(0);
    }
};

TEST_F(CxAVCodecRegistryTeardown, ShutsEachFactoryDownAndDeletesItInOrderWhileLookUpsFindNothing) {
    EXPECT_EXIT(AddAndExit({new TellingFactory("A"), new TellingFactory("B")}), testing::ExitedWithCode(0),
                "^shutdown A;delete A;shutdown B;delete B;$");
}

TEST_F(CxAVCodecRegistryTeardown, AFactoryAddedTwiceIsDeletedOnce) {
    EXPECT_EXIT(
        {
            auto* const factory = new TellingFactory("A");
            AddAndExit({factory, factory});
        },
        testing::ExitedWithCode(0), "^shutdown A;delete A;$");
}

} // namespace
