#include "framework/CxAVCodecRegistry.h"

#include "framework/FakeBackEnd.h"
#include "framework/MemoryTrackSource.h"
#include "support/HeapSpy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <latch>
#include <stdexcept>
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

TEST(CxAVCodecRegistry, AFactoryThatThrowsHasRefused) {
    const uint32_t fourCC = NewFourCC();
    const auto throwing = NewBackEnd({fourCC}, {EncoderRow("Thrown encoder")});
    throwing->onFill = [] { throw std::runtime_error("can't run"); };
    CxAbstractCodecFactory* factory = nullptr;
    EXPECT_NO_THROW(factory = Register(throwing));
    EXPECT_EQ(factory, nullptr);
    EXPECT_EQ(throwing->factoriesDeleted, 1);
    EXPECT_FALSE(CxAVCodecRegistry::CanCreateDecoder(fourCC));
    EXPECT_EQ(CxAVCodecRegistry::CreateEncoder("Thrown encoder"), nullptr);
}

TEST(CxAVCodecRegistry, AFactoryThatThrowsWhenItIsAddedAgainStaysAsItWas) {
    const auto backEnd = NewBackEnd({NewFourCC()});
    CxAbstractCodecFactory* const factory = Register(backEnd);
    backEnd->name = "Another name";
    backEnd->onFill = [] { throw std::runtime_error("can't run"); };
    EXPECT_EQ(CxAVCodecRegistry::getInstance()->AddCodec(factory), nullptr);
    EXPECT_EQ(backEnd->factoriesDeleted, 0);
    EXPECT_EQ(factory->GetName(), "Fake");
}

TEST(CxAVCodecRegistry, AFactoryThatMemoryRunsOutForIsDeletedAndNothingOfItIsLeft) {
    const std::string name = "Encoder with a name that is too long to stand in the string itself";
    const size_t rowsBefore = AllRows().size();
    bool ranOut = true;
    for (int allocations = 0; ranOut; ++allocations) {
        const uint32_t fourCC = NewFourCC();
        const auto backEnd = NewBackEnd({fourCC, NewFourCC()}, {EncoderRow(name), EncoderRow(name)});
        auto* const factory = new FakeFactory(backEnd);
        const CxAbstractCodecFactory* added = nullptr;
        {
            const HeapSpy heap(allocations);
            added = CxAVCodecRegistry::getInstance()->AddCodec(factory);
            ranOut = heap.RanOut();
        }
        ASSERT_EQ(added == nullptr, ranOut);
        ASSERT_EQ(backEnd->factoriesDeleted, ranOut ? 1 : 0);
        ASSERT_EQ(CxAVCodecRegistry::CanCreateDecoder(fourCC), !ranOut);
        ASSERT_EQ(CodecPointer(CxAVCodecRegistry::CreateEncoder(name)) == nullptr, ranOut);
        ASSERT_EQ(AllRows().size(), rowsBefore + (ranOut ? 0 : 2));
    }
}

TEST(CxAVCodecRegistry, AFactoryMayAddAnotherFromItsFillCodecInfo) {
    const uint32_t fourCC = NewFourCC();
    const auto outer = NewBackEnd({fourCC});
    const auto inner = NewBackEnd({fourCC});
    const CxAbstractCodecFactory* innerFactory = nullptr;
    outer->onFill = [&] { innerFactory = Register(inner); };
    const CxAbstractCodecFactory* const outerFactory = Register(outer);
    EXPECT_EQ(CxAVCodecRegistry::GetDecoderFactories(fourCC), (Factories{innerFactory, outerFactory}));
    outer->onFill = nullptr;
}

TEST(CxAVCodecRegistry, ARefusingFactoryMayAddAnotherFromItsDestructor) {
    const uint32_t fourCC = NewFourCC();
    const auto refusing = NewBackEnd({fourCC});
    const CxAbstractCodecFactory* successor = nullptr;
    refusing->accepts = false;
    refusing->onDeleted = [&] { successor = Register(NewBackEnd({fourCC})); };
    EXPECT_EQ(Register(refusing), nullptr);
    EXPECT_NE(successor, nullptr);
    EXPECT_EQ(CxAVCodecRegistry::GetDecoderFactories(fourCC), Factories{successor});
}

TEST(CxAVCodecRegistry, AnOpenThatThrowsDeletesTheCodecAndFallsThroughToTheSecondFactory) {
    const uint32_t fourCC = NewFourCC();
    const auto throwing = NewBackEnd({fourCC});
    throwing->onOpen = [] { throw std::runtime_error("can't be opened"); };
    Register(throwing);
    CxAbstractCodecFactory* const second = Register(NewBackEnd({fourCC}));

    CodecPointer codec;
    EXPECT_NO_THROW(codec = OpenDecoder(fourCC));
    ASSERT_NE(codec, nullptr);
    EXPECT_TRUE(codec->isTypeOf(second));
    EXPECT_EQ(throwing->codecsMade, 1);
    EXPECT_EQ(throwing->codecsDeleted, 1);
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

TEST(CxAVCodecRegistry, ThreadsThatAskForTheInstanceAtTheSameMomentGetTheSame) {
    constexpr int count = 32;
    std::latch start(count);
    std::vector<CxAVCodecRegistry*> found(count);
    std::vector<std::thread> threads;
    for (CxAVCodecRegistry*& instance : found) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            instance = CxAVCodecRegistry::getInstance();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_NE(found[0], nullptr);
    EXPECT_EQ(std::count(found.begin(), found.end(), found[0]), count);
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

} // namespace
