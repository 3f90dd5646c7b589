#pragma once

#include "prores/PrxCodeBooks.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

/// What a component's AC part told so far of what comes next, as one number: the code books of the next run
/// and of the next level, and whether the level comes first, as that of a run that was read already.
namespace prx_context {

/// The code books that occur.
inline constexpr std::array<uint8_t, 6> runBooks = {8, 5, 0, 6, 1, 2};
inline constexpr std::array<uint8_t, 6> levelBooks = {9, 5, 8, 0, 1, 2};

/// Contexts in which a level comes next stand behind those in which a run does.
inline constexpr uint32_t runContexts = runBooks.size() * levelBooks.size();
inline constexpr uint32_t count = 2 * runContexts;

/// For each entry of `books` its place among the `distinct` ones, times `step`.
template <size_t Size>
constexpr std::array<uint8_t, Size> PlacesOf(const std::array<uint8_t, Size>& books,
                                             const std::array<uint8_t, 6>& distinct, size_t step) {
    std::array<uint8_t, Size> places = {};
    for (size_t i = 0; i < Size; ++i)
        places[i] = static_cast<uint8_t>(step * (std::ranges::find(distinct, books[i]) - distinct.begin()));
    return places;
}
inline constexpr auto afterRun = PlacesOf(prxRunBooks, runBooks, levelBooks.size());
inline constexpr auto afterLevel = PlacesOf(prxLevelBooks, levelBooks, 1);

/// Places of a context's code books in `runBooks` and `levelBooks`.
constexpr uint32_t RunPlace(uint32_t context) { return context / levelBooks.size() % runBooks.size(); }
constexpr uint32_t LevelPlace(uint32_t context) { return context % levelBooks.size(); }

/// Code book for the next run, and the one for the next level's magnitude less 1.
constexpr uint32_t RunBook(uint32_t context) { return runBooks[RunPlace(context)]; }
constexpr uint32_t LevelBook(uint32_t context) { return levelBooks[LevelPlace(context)]; }

constexpr bool LevelComesNext(uint32_t context) { return context >= runContexts; }

/// Context after a run that was read in `context`.
constexpr uint32_t AfterRun(uint32_t context, uint64_t run) {
    return runContexts + PrxBookAfter(afterRun, run) + LevelPlace(context);
}

/// Context after a level of this magnitude that was read in `context`.
constexpr uint32_t AfterLevel(uint32_t context, uint64_t magnitude) {
    return context - runContexts - LevelPlace(context) + PrxBookAfter(afterLevel, magnitude);
}

inline constexpr uint32_t first = AfterLevel(AfterRun(0, prxFirstRun), prxFirstLevel);

} // namespace prx_context
