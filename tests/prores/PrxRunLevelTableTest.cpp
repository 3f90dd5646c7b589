#include "prores/PrxRunLevelTable.h"

#include "prores/StreamBits.h"
#include "prores/StreamCoefficients.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <vector>

namespace {

constexpr uint32_t prefixBits = PrxRunLevelTable::prefixBits;

/// Runs and levels that were read, of which the last run may still wait for its level.
struct Past {
    int run;
    int level;
    bool levelNext = false;

    uint32_t Context() const {
        const uint32_t afterRun = prx_context::AfterRun(0, static_cast<uint64_t>(run));
        const uint32_t afterLevel = prx_context::AfterLevel(afterRun, static_cast<uint64_t>(level));
        return levelNext ? prx_context::AfterRun(afterLevel, static_cast<uint64_t>(run)) : afterLevel;
    }
};

/// A past for each context.
std::map<uint32_t, Past> Contexts() {
    std::map<uint32_t, Past> contexts;
    for (int run = 0; run < 20; ++run) {
        for (int level = 1; level < 20; ++level) {
            for (const bool levelNext : {false, true}) {
                const Past past = {run, level, levelNext};
                contexts[past.Context()] = past;
            }
        }
    }
    return contexts;
}

struct Coded {
    int run;
    int level; ///< with its sign
};

void PutRun(stream::BitWriter& bits, int run, Past& past) {
    stream::PutCode(bits, stream::RunBook(past.run), static_cast<uint32_t>(run));
    past.run = run;
    past.levelNext = true;
}

void PutLevel(stream::BitWriter& bits, int level, Past& past) {
    const int magnitude = std::abs(level);
    stream::PutCode(bits, stream::LevelBook(past.level), static_cast<uint32_t>(magnitude - 1));
    bits.Put(level < 0, 1);
    past.level = magnitude;
    past.levelNext = false;
}

/// Appends the code of a coefficient, or of its level alone where its run is past.
void Put(stream::BitWriter& bits, const Coded& coded, Past& past) {
    if (!past.levelNext) PutRun(bits, coded.run, past);
    PutLevel(bits, coded.level, past);
}

/// The first bits of what was written.
uint32_t Prefix(stream::BitWriter bits) {
    bits.Put(0, 16);
    return (static_cast<uint32_t>(bits.Data()[0]) << 8 | bits.Data()[1]) >> (16 - prefixBits);
}

const PrxRunLevelEntry& Entry(uint32_t context, uint32_t prefix) {
    return PrxRunLevelTable::Get().Entry(context << PrxRunLevelEntry::contextShift, prefix);
}

uint32_t NextContext(const PrxRunLevelEntry& entry) { return entry.Next() >> PrxRunLevelEntry::contextShift; }

/// How far a coefficient is from the last one.
uint32_t StepTo(const Coded& coded, const Past& past) {
    return past.levelNext ? 0 : static_cast<uint32_t>(coded.run) + 1;
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

TEST(PrxRunLevelTable, HasAContextForEachPairOfCodeBooksAndEachPartOfACoefficient) {
    EXPECT_EQ(Contexts().size(), prx_context::count);
    for (const auto& [context, past] : Contexts()) {
        EXPECT_EQ(prxCodeBookBytes[prx_context::RunBook(context)], stream::RunBook(past.run));
        EXPECT_EQ(prxCodeBookBytes[prx_context::LevelBook(context)], stream::LevelBook(past.level));
        EXPECT_EQ(prx_context::LevelComesNext(context), past.levelNext);
    }
}

TEST(PrxRunLevelTable, StartsInTheContextOfRun4AndLevel2) {
    EXPECT_EQ(prx_context::first, (Past{4, 2}.Context()));
}

TEST(PrxRunLevelTable, HoldsEveryCoefficientThatFitsThePrefix) {
    for (const auto& [context, start] : Contexts()) {
        for (const Coded& coded : SmallCoefficients(30, 15)) {
            stream::BitWriter bits;
            Past past = start;
            Put(bits, coded, past);
            if (bits.Count() > prefixBits) continue;
            const PrxRunLevelEntry& entry = Entry(context, Prefix(bits));
            ASSERT_FALSE(entry.Empty()) << context << " " << coded.run << " " << coded.level;
            ASSERT_EQ(entry.FirstStep(), StepTo(coded, start)) << context;
            ASSERT_EQ(entry.FirstLevel(), coded.level) << context;
        }
    }
}

TEST(PrxRunLevelTable, HoldsEveryPairOfCoefficientsThatFitsThePrefix) {
    for (const auto& [context, start] : Contexts()) {
        for (const Coded& first : SmallCoefficients(8, 8)) {
            for (const Coded& second : SmallCoefficients(8, 7)) {
                stream::BitWriter bits;
                Past past = start;
                Put(bits, first, past);
                Put(bits, second, past);
                if (bits.Count() > prefixBits) continue;
                const PrxRunLevelEntry& entry = Entry(context, Prefix(bits));
                ASSERT_EQ(entry.Length() & 63, bits.Count()) << context;
                ASSERT_EQ(entry.FirstStep(), StepTo(first, start)) << context;
                ASSERT_EQ(entry.FirstLevel(), first.level) << context;
                ASSERT_EQ(entry.LastStep(), entry.FirstStep() + StepTo(second, {})) << context;
                ASSERT_EQ(entry.LastLevel(), second.level) << context;
                ASSERT_EQ(NextContext(entry), past.Context()) << context;
            }
        }
    }
}

TEST(PrxRunLevelTable, HoldsARunWhoseLevelDoesNotFitThePrefix) {
    for (const auto& [context, start] : Contexts()) {
        if (start.levelNext) continue;
        for (int run = 0; run <= 30; ++run) {
            stream::BitWriter bits;
            Past past = start;
            PutRun(bits, run, past);
            if (bits.Count() > prefixBits) continue;
            const PrxRunLevelEntry& entry = Entry(context, Prefix(bits)); // zeros begin a long level
            ASSERT_EQ(entry.Length() & 63, bits.Count()) << context << " " << run;
            ASSERT_EQ(entry.FirstStep(), static_cast<uint32_t>(run) + 1) << context;
            ASSERT_EQ(entry.FirstLevel(), 0) << context;
            ASSERT_EQ(NextContext(entry), past.Context()) << context;
        }
    }
}

TEST(PrxRunLevelTable, EveryEntryIsTheCodeOfItsPrefix) {
    for (const auto& [context, start] : Contexts()) {
        for (uint32_t prefix = 0; prefix < 1u << prefixBits; ++prefix) {
            const PrxRunLevelEntry& entry = Entry(context, prefix);
            if (entry.Empty()) continue;
            stream::BitWriter bits;
            Past past = start;
            if (!start.levelNext) PutRun(bits, static_cast<int>(entry.FirstStep()) - 1, past);
            if (entry.FirstLevel() != 0) PutLevel(bits, entry.FirstLevel(), past);
            if (entry.LastStep() != entry.FirstStep())
                PutRun(bits, static_cast<int>(entry.LastStep() - entry.FirstStep()) - 1, past);
            if (entry.LastLevel() != 0) PutLevel(bits, entry.LastLevel(), past);
            ASSERT_EQ(entry.Length() & 63, bits.Count()) << context << " " << prefix;
            ASSERT_EQ(NextContext(entry), past.Context()) << context << " " << prefix;
            ASSERT_EQ(Prefix(bits) >> (prefixBits - bits.Count()), prefix >> (prefixBits - bits.Count()));
        }
    }
}

TEST(PrxRunLevelTable, HoldsNothingForAPrefixOfZeros) {
    for (uint32_t context = 0; context < prx_context::count; ++context)
        EXPECT_TRUE(Entry(context, 0).Empty()) << context;
}
