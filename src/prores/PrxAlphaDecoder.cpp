#include "prores/PrxAlphaDecoder.h"

#include "prores/PrxBitReader.h"
#include "prores/PrxFormats.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace {

/// Streams of 8 and of 16 bits.
struct Stream8 {
    using Value = uint8_t;
    static constexpr uint32_t shortBits = 4; ///< bits of a small delta
};
struct Stream16 {
    using Value = uint16_t;
    static constexpr uint32_t shortBits = 7;
};

/// The sample types. `From` makes a sample of a stream's value.
struct FullRange8 {
    using Sample = uint8_t;
    static Sample From(uint8_t value) { return value; }
    static Sample From(uint16_t value) { return static_cast<Sample>((value * 65281u + 0x800000) >> 24); }
};

/// round(16 + value * 219 / 255); no value lies halfway.
constexpr std::array<uint8_t, 256> videoRangeOfByte = [] {
    std::array<uint8_t, 256> table = {};
    for (uint32_t value = 0; value < 256; ++value)
        table[value] = static_cast<uint8_t>(16 + (value * 219 * 2 + 255) / (255 * 2));
    return table;
}();

struct VideoRange8 {
    using Sample = uint8_t;
    static Sample From(uint8_t value) { return videoRangeOfByte[value]; }
    static Sample From(uint16_t value) {
        return static_cast<Sample>(((value * 56065u + 0x800000) >> 24) + 16);
    }
};

struct Words {
    using Sample = uint16_t;
    static Sample From(uint8_t value) { return static_cast<Sample>(value * 257); }
    static Sample From(uint16_t value) { return value; }
};

/// The float nearest to value / 255 or value / 65535 in any rounding mode of the thread: integers are
/// rounded, and the float arithmetic is exact.
struct Floats {
    using Sample = float;
    static Sample From(uint8_t value) { return From(static_cast<uint16_t>(value * 257)); }
    static Sample From(uint16_t value) {
        // The binary digits of value / 65535 are the value's 16 over and over. The first 48 decide the
        // rounding: no quotient lies halfway between two floats.
        const uint64_t digits = value * uint64_t{0x100010001};
        const int dropped = std::max(static_cast<int>(std::bit_width(digits)) - 24, 1);
        const uint64_t nearest = (digits + (uint64_t{1} << (dropped - 1))) >> dropped << dropped;
        return static_cast<Sample>(static_cast<int64_t>(nearest)) * 0x1p-48F;
    }
};

/// The area that is filled, sample by sample. Rows that follow each other without a gap are one long row.
template <class Sample>
class SampleArea {
public:
    SampleArea(uint8_t* dst, ptrdiff_t dstStride, int32_t width, int32_t rows)
        : row_(dst), stride_(dstStride), width_(static_cast<size_t>(std::max(width, 0))),
          rows_(static_cast<size_t>(std::max(rows, 0))) {
        if (static_cast<size_t>(dstStride) == width_ * sizeof(Sample)) {
            width_ *= rows_;
            rows_ = std::min<size_t>(rows_, 1);
        }
        if (width_ == 0) rows_ = 0;
    }

    bool Full() const { return rows_ == 0; }

    /// Stores `count` samples; what does not fit is dropped.
    void Store(Sample sample, size_t count) {
        while (count >= width_ - column_) {
            count -= width_ - column_;
            Fill(sample, width_ - column_);
            column_ = 0;
            if (--rows_ == 0) return;
            row_ += stride_;
        }
        Fill(sample, count);
        column_ += count;
    }

private:
    void Fill(Sample sample, size_t count) {
        std::fill_n(reinterpret_cast<Sample*>(row_) + column_, count, sample);
    }

    uint8_t* row_;
    ptrdiff_t stride_;
    size_t width_;
    size_t rows_; ///< that are not yet full
    size_t column_ = 0;
};

/// Reads the difference of a value to the one before it, 17 bits at most.
template <class Stream>
typename Stream::Value ReadDelta(PrxBitReader& reader) {
    using Value = typename Stream::Value;
    if (reader.Read(1) != 0) return static_cast<Value>(reader.Read(8 * sizeof(Value)));
    const auto code = static_cast<int32_t>(reader.Read(Stream::shortBits));
    const int32_t magnitude = (code >> 1) + 1;
    return static_cast<Value>(code & 1 ? -magnitude : magnitude);
}

/// Reads how many samples have the value, 16 bits at most.
size_t ReadCount(PrxBitReader& reader) {
    if (reader.Read(1) != 0) return 1;
    const uint64_t run = reader.Read(4);
    return 1 + (run != 0 ? run : reader.Read(11));
}

template <class Stream, class Output>
bool DecodeAlpha(const uint8_t* data, size_t size, uint8_t* dst, ptrdiff_t dstStride, int32_t width,
                 int32_t rows) {
    using Value = typename Stream::Value;
    constexpr Value opaque = static_cast<Value>(~Value{0});
    static_assert(PrxBitReader::refilledBits >= 17 + 16, "a value and its count need one refill");

    PrxBitReader reader(data, size);
    SampleArea<typename Output::Sample> area(dst, dstStride, width, rows);
    Value alpha = opaque;
    Value all = opaque;
    while (!area.Full()) {
        alpha = static_cast<Value>(alpha + ReadDelta<Stream>(reader));
        all &= alpha;
        area.Store(Output::From(alpha), ReadCount(reader));
        reader.Refill();
    }
    return all == opaque;
}

template <class Stream>
PrxAlphaDecoder SelectFor(uint32_t pixelFormat) {
    switch (pixelFormat) {
    case prxFormatArgb:
    case prxFormatBgra:
    case prxFormatR408:
    case prxFormatY408: return DecodeAlpha<Stream, FullRange8>;
    case prxFormatV408: return DecodeAlpha<Stream, VideoRange8>;
    case prxFormatB64a:
    case prxFormatY416: return DecodeAlpha<Stream, Words>;
    case prxFormatR4fl: return DecodeAlpha<Stream, Floats>;
    default: return nullptr;
    }
}

} // namespace

PrxAlphaDecoder PrxSelectAlphaDecoder(uint32_t alphaType, uint32_t pixelFormat) {
    switch (alphaType) {
    case 1: return SelectFor<Stream8>(pixelFormat);
    case 2: return SelectFor<Stream16>(pixelFormat);
    default: return nullptr;
    }
}
