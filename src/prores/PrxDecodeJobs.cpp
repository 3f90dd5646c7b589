#include "prores/PrxDecodeJobs.h"

#include <algorithm>

namespace {

constexpr uint32_t entrySize = 2;

/// Adds up the next `count` entries of the slice table and moves `table` behind them.
uint64_t SumEntries(PrxBufferPiece* table, uint32_t count) {
    const uint64_t size = uint64_t{entrySize} * count;
    const bool inOnePiece = table->size >= size;
    uint64_t sum = 0;
    for (uint64_t at = 0; at < size; at += entrySize) {
        sum += inOnePiece ? table->data[at] << 8 | table->data[at + 1] : PrxRead16At(*table, at);
    }
    *table = PrxAdvance(*table, size);
    return sum;
}

} // namespace

void PrxAppendRowJobs(const PrxPictureContext& picture, std::vector<PrxRowJob>* jobs) {
    const PrxPictureLayout& layout = picture.layout;
    const uint64_t tableSize = uint64_t{entrySize} * layout.sliceCount;
    PrxBufferPiece table = layout.sliceTable;
    uint64_t remaining = PrxTotalSize(PrxAdvance(table, tableSize));
    uint64_t dataOffset = tableSize;
    ptrdiff_t outOffset = 0;
    int32_t rowsLeft = std::min(picture.height >> picture.VShift(), picture.outHeight);

    for (uint32_t row = 0; row < layout.mbHeight; ++row) {
        // Once the input has ended all slices are empty: a table of any claimed size costs nothing.
        const uint64_t promised = remaining == 0 ? 0 : SumEntries(&table, layout.slicesPerRow);
        const uint64_t dataSize = std::min(promised, remaining);
        const int32_t rows = std::min(rowsLeft, 16 >> picture.VShift());
        const uint32_t tableOffset = entrySize * layout.slicesPerRow * row;
        // Behind the last row there may be no address to form.
        uint8_t* outRow = rows > 0 ? picture.outBase + outOffset : nullptr;
        jobs->push_back({&picture, dataOffset, dataSize, outRow, tableOffset, rows, false, false});
        dataOffset += dataSize;
        remaining -= dataSize;
        rowsLeft -= rows;
        outOffset += rows * picture.rowBytes;
    }
}
