#pragma once

#include "prores/PrxCodeBooks.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

/// What the last coefficient of a component tells of the next one: the code books for its run and its level,
/// as one number.
namespace prx_context {

/// The code books that occur.
inline constexpr std::array<uint8_t, 6> runBooks = {8, 5, 0, 6, 1, 2};
inline constexpr std::array<uint8_t, 6> levelBooks = {9, 5, 8, 0, 1, 2};

inline constexpr uint32_t count = runBooks.size() * levelBooks.size();

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

/// Context after a coefficient of magnitude `level` behind a run of `run`.
constexpr uint32_t After(uint64_t run, uint64_t level) {
    return PrxBookAfter(afterRun, run) + PrxBookAfter(afterLevel, level);
}

inline constexpr uint32_t first = After(prxFirstRun, prxFirstLevel);

/// Code books for the run and for the level's magnitude less 1.
constexpr uint32_t RunBook(uint32_t context) { return runBooks[context / levelBooks.size()]; }
constexpr uint32_t LevelBook(uint32_t context) { return levelBooks[context % levelBooks.size()]; }

} // namespace prx_context
