// One of the lanes that PrxSliceEntropyLanes.cpp reads side by side.

#pragma once

#include "prores/PrxBitReader.h"
#include "prores/PrxCodeBooks.h"
#include "prores/PrxCodeReader.h"
#include "prores/PrxDcPrediction.h"
#include "prores/PrxSliceEntropy.h"

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

/// The DC part of one component, to be read block by block.
class PrxDcLane {
public:
    /// Reads the DC value of the first block.
    HWY_INLINE explicit PrxDcLane(const PrxSliceComponent& component)
        : reader_(component.data, component.size), block_(component.coefficients),
          stride_(size_t{1} << component.log2BlockSize), blocksLeft_(1u << component.log2BlockCount) {
        uint64_t code;
        if (Read(firstCodes, prxFirstDcBook, &code)) Store(prediction_.First(code));
    }

    HWY_INLINE bool Done() const { return blocksLeft_ == 0; }

    /// Reads the DC value of the next block; the lane is done if there is none.
    HWY_INLINE void Advance() {
        uint64_t code;
        const uint32_t choice = prediction_.BookChoice();
        if (!Read(laterCodes[choice], prxDcBooks[choice], &code)) return;
        block_ += stride_;
        Store(prediction_.Next(code));
    }

    const PrxBitReader& Reader() const { return reader_; }

private:
    static constexpr PrxShortCodes firstCodes = PrxMakeShortCodes(prxFirstDcBook);
    static constexpr auto laterCodes = PrxMakeShortCodes(prxDcBooks);

    struct CodeRead {
        PrxBitReader reader;
        uint64_t code;
    };

    static HWY_NOINLINE CodeRead ReadLongCode(PrxBitReader reader, uint32_t book) {
        const uint64_t code = PrxReadCode(reader, book);
        return {reader, code};
    }

    /// Reads a code word. False, and the lane is done, if the stream has ended.
    HWY_INLINE bool Read(const PrxShortCodes& codes, uint32_t book, uint64_t* code) {
        const uint32_t zeros = reader_.LeadingZeros();
        if (HWY_LIKELY(zeros <= PrxShortCode::maxZeros)) {
            *code = codes[zeros].Read(reader_);
            reader_.Refill();
            return true;
        }
        if (reader_.Ended()) {
            blocksLeft_ = 0;
            return false;
        }
        const CodeRead read = ReadLongCode(reader_, book);
        reader_ = read.reader;
        *code = read.code;
        return true;
    }

    HWY_INLINE void Store(int16_t dc) {
        *block_ = dc;
        --blocksLeft_;
    }

    PrxBitReader reader_;
    PrxDcPrediction prediction_;
    int16_t* block_; ///< that was read last
    size_t stride_;
    uint32_t blocksLeft_;
};
