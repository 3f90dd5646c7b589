#include "prores/PrxCoefficientPlaces.h"

#include "prores/PrxScan.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace {

/// A component has 1 to 32 blocks: a slice is at most 8 macroblocks wide, with 4 blocks each.
constexpr uint32_t blockCounts = 6;

/// A decode keeps a whole scan or its first half, and chroma blocks stand twice as far apart as luma blocks.
constexpr uint32_t blockSizes = 3;

constexpr size_t allBlocks = (1 << blockCounts) - 1; ///< in one table of each block count
constexpr size_t allScanPositions = 64 + 16 + 4 + 1 + 64 + 32 + 8 + 2;

/// The tables of one scan, one behind the other.
struct ScanPlaces {
    std::span<const uint8_t> scan;
    uint32_t log2SmallestBlock;
    uint16_t* places;

    size_t Size() const { return scan.size() * blockSizes * allBlocks; }

    uint16_t* Table(uint32_t log2BlockCount, uint32_t size) const {
        return places + scan.size() * (size * allBlocks + (size_t{1} << log2BlockCount) - 1);
    }

    void Fill(uint32_t log2BlockCount, uint32_t size) const {
        uint16_t* place = Table(log2BlockCount, size);
        for (const uint8_t inBlock : scan) {
            for (uint32_t block = 0; block < 1u << log2BlockCount; ++block)
                *place++ = static_cast<uint16_t>((block << (log2SmallestBlock + size)) + inBlock);
        }
    }
};

class AllPlaces {
public:
    AllPlaces() {
        uint16_t* next = storage_.data();
        for (size_t i = 0; i < scans_.size(); ++i) {
            const auto scan = PrxScanTable(i % 2 != 0, static_cast<int32_t>(i / 2));
            const auto log2Size = static_cast<uint32_t>(std::bit_width(scan.size())) - 1;
            scans_[i] = {scan, std::max(log2Size, 1u) - 1, next};
            next += scans_[i].Size();
            for (uint32_t size = 0; size < blockSizes; ++size) {
                for (uint32_t count = 0; count < blockCounts; ++count)
                    scans_[i].Fill(count, size);
            }
        }
    }
    AllPlaces(const AllPlaces&) = delete;
    AllPlaces& operator=(const AllPlaces&) = delete;

    const ScanPlaces* Find(std::span<const uint8_t> scan) const {
        const auto found =
            std::ranges::find(scans_, scan.data(), [](const auto& its) { return its.scan.data(); });
        return found != scans_.end() && found->scan.size() == scan.size() ? &*found : nullptr;
    }

private:
    std::array<ScanPlaces, 8> scans_;
    std::array<uint16_t, allScanPositions * blockSizes * allBlocks + prxPlacesBehind> storage_;
};

} // namespace

const uint16_t* PrxCoefficientPlaces(std::span<const uint8_t> scan, uint32_t log2BlockCount,
                                     uint32_t log2BlockSize) {
    static const AllPlaces all;
    const ScanPlaces* places = all.Find(scan);
    if (places == nullptr || log2BlockCount >= blockCounts) return nullptr;
    const uint32_t size = log2BlockSize - places->log2SmallestBlock;
    return size < blockSizes ? places->Table(log2BlockCount, size) : nullptr;
}
