#include "prores/PrxRunLevelTable.h"

#include "prores/StreamBits.h"
#include "prores/StreamCoefficients.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <utility>
#include <vector>

namespace {

constexpr uint32_t prefixBits = PrxRunLevelTable::prefixBits;

/// The context after the coefficient that was put last.
uint32_t ContextAfter(const std::pair<int, int>& previous) {
    return prx_context::After(static_cast<uint64_t>(previous.first), static_cast<uint64_t>(previous.second));
}

/// A previous run and a previous level for each context.
std::map<uint32_t, std::pair<int, int>> Contexts() {
    std::map<uint32_t, std::pair<int, int>> contexts;
    for (int run = 0; run < 20; ++run) {
        for (int level = 1; level < 20; ++level)
            contexts[ContextAfter({run, level})] = {run, level};
    }
    return contexts;
}

struct Coded {
    int run;
    int level; ///< with its sign
};

/// Appends the code of a coefficient, and makes it the previous one.
void Put(stream::BitWriter& bits, const Coded& coded, std::pair<int, int>& previous) {
    const int magnitude = std::abs(coded.level);
    stream::PutCode(bits, stream::RunBook(previous.first), static_cast<uint32_t>(coded.run));
    stream::PutCode(bits, stream::LevelBook(previous.second), static_cast<uint32_t>(magnitude - 1));
    bits.Put(coded.level < 0, 1);
    previous = {coded.run, magnitude};
}

/// The first bits of what was written.
uint32_t Prefix(stream::BitWriter bits) {
    bits.Put(0, prefixBits);
    return (static_cast<uint32_t>(bits.Data()[0]) << 8 | bits.Data()[1]) >> (16 - prefixBits);
}

const PrxRunLevelEntry& Entry(uint32_t context, uint32_t prefix) {
    return PrxRunLevelTable::Get().Entries(context)[prefix];
}

/// All coefficients whose code may fit.
std::vector<Coded> SmallCoefficients(int maxRun, int maxLevel) {
    std::vector<Coded> all;
    for (int run = 0; run <= maxRun; ++run) {
        for (int level = 1; level <= maxLevel; ++level) {
            all.push_back({run, level});
            all.push_back({run, -level});
        }
    }
    return all;
}

} // namespace

TEST(PrxRunLevelTable, HasAContextForEachPairOfCodeBooks) {
    EXPECT_EQ(Contexts().size(), prx_context::count);
    for (const auto& [context, previous] : Contexts()) {
        EXPECT_EQ(prxCodeBookBytes[prx_context::RunBook(context)], stream::RunBook(previous.first));
        EXPECT_EQ(prxCodeBookBytes[prx_context::LevelBook(context)], stream::LevelBook(previous.second));
    }
}

TEST(PrxRunLevelTable, StartsInTheContextOfRun4AndLevel2) {
    EXPECT_EQ(prx_context::first, prx_context::After(4, 2));
}

TEST(PrxRunLevelTable, HoldsEveryCoefficientThatFitsThePrefix) {
    for (const auto& [context, start] : Contexts()) {
        for (const Coded& coded : SmallCoefficients(31, 15)) {
            stream::BitWriter bits;
            auto previous = start;
            Put(bits, coded, previous);
            if (bits.Count() > prefixBits) continue;
            const PrxRunLevelEntry& entry = Entry(context, Prefix(bits));
            ASSERT_FALSE(entry.Empty()) << context << " " << coded.run << " " << coded.level;
            ASSERT_EQ(entry.FirstSkip(), static_cast<uint32_t>(coded.run)) << context;
            ASSERT_EQ(entry.FirstLevel(), coded.level) << context;
            ASSERT_EQ(entry.NextContext(), ContextAfter(previous)) << context;
        }
    }
}

TEST(PrxRunLevelTable, HoldsEveryPairOfCoefficientsThatFitsThePrefix) {
    for (const auto& [context, start] : Contexts()) {
        for (const Coded& first : SmallCoefficients(8, 8)) {
            for (const Coded& second : SmallCoefficients(8, 8)) {
                stream::BitWriter bits;
                auto previous = start;
                Put(bits, first, previous);
                Put(bits, second, previous);
                if (bits.Count() > prefixBits) continue;
                const PrxRunLevelEntry& entry = Entry(context, Prefix(bits));
                ASSERT_EQ(entry.Length() & 63, bits.Count()) << context;
                ASSERT_EQ(entry.FirstSkip(), static_cast<uint32_t>(first.run)) << context;
                ASSERT_EQ(entry.FirstLevel(), first.level) << context;
                ASSERT_EQ(entry.LastSkip(), static_cast<uint32_t>(first.run + 1 + second.run)) << context;
                ASSERT_EQ(entry.LastLevel(), second.level) << context;
                ASSERT_EQ(entry.NextContext(), ContextAfter(previous)) << context;
            }
        }
    }
}

TEST(PrxRunLevelTable, EveryEntryIsTheCodeOfItsPrefix) {
    for (const auto& [context, start] : Contexts()) {
        for (uint32_t prefix = 0; prefix < 1u << prefixBits; ++prefix) {
            const PrxRunLevelEntry& entry = Entry(context, prefix);
            if (entry.Empty()) continue;
            stream::BitWriter bits;
            auto previous = start;
            Put(bits, {static_cast<int>(entry.FirstSkip()), entry.FirstLevel()}, previous);
            if (entry.LastSkip() != entry.FirstSkip()) {
                const auto run = static_cast<int>(entry.LastSkip() - entry.FirstSkip()) - 1;
                Put(bits, {run, entry.LastLevel()}, previous);
            } else {
                ASSERT_EQ(entry.LastLevel(), 0);
            }
            ASSERT_EQ(entry.Length() & 63, bits.Count()) << context << " " << prefix;
            ASSERT_EQ(entry.NextContext(), ContextAfter(previous)) << context << " " << prefix;
            ASSERT_EQ(Prefix(bits) >> (prefixBits - bits.Count()), prefix >> (prefixBits - bits.Count()));
        }
    }
}

TEST(PrxRunLevelTable, HoldsNothingForAPrefixOfZeros) {
    for (uint32_t context = 0; context < prx_context::count; ++context)
        EXPECT_TRUE(Entry(context, 0).Empty()) << context;
}

TEST(PrxRunLevelTable, FindsTheContextOfItsEntries) {
    const PrxRunLevelTable& table = PrxRunLevelTable::Get();
    for (uint32_t context = 0; context < prx_context::count; ++context)
        EXPECT_EQ(table.ContextOf(table.Entries(context)), context);
}
