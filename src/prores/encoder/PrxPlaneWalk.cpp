#include "prores/encoder/PrxPlaneWalk.h"

#include "prores/PrxScan.h"

#include <array>

namespace {

using Places = std::array<uint8_t, 64>;

Places Invert(std::span<const uint8_t> scan) {
    Places places = {};
    for (size_t i = 0; i < scan.size(); ++i)
        places[scan[i]] = static_cast<uint8_t>(i);
    return places;
}

} // namespace

void PrxWalkPlane(const PrxPlaneLevels& plane, PrxLevelList* list) {
    uint16_t position = 0;
    ptrdiff_t count = 0;
    for (const uint8_t inBlock : PrxScanTable(plane.interlaced, 0).subspan(1)) {
        for (uint32_t block = 0; block < plane.blockCount; ++block) {
            const uint16_t level = plane.levels[block * plane.blockDistance + inBlock];
            if (level >> 1 != 0) {
                list->Level(count) = level;
                list->Position(count) = position;
                ++count;
            }
            ++position;
        }
    }
    list->count = static_cast<size_t>(count);
}

const uint8_t* PrxCodingPlaces(bool interlaced) {
    static const std::array<Places, 2> places = {Invert(PrxScanTable(false, 0)),
                                                 Invert(PrxScanTable(true, 0))};
    return places[interlaced ? 1 : 0].data();
}
