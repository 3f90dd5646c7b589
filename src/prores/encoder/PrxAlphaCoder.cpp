#include "prores/encoder/PrxAlphaCoder.h"

#include "prores/PrxFormats.h"
#include "prores/PrxRoundToNearest.h"
#include "prores/encoder/PrxBitWriter.h"
#include "prores/encoder/PrxCodeWord.h"

#include <bit>
#include <cassert>
#include <cstdlib>
#include <cstring>

namespace {

// A sample takes no more than its value, 9 or 17 bits, and 1 bit for a run of 0; one that is repeated takes
// 15 more for two samples or more. That is 320 or 576 bytes for 256 samples at most, and the buffer has 512
// or 768.

/// Alpha of 8 and of 16 bits.
template <uint32_t Bits, uint32_t ShortBits>
struct Depth {
    static constexpr uint32_t bits = Bits;
    static constexpr int32_t fullValue = (1 << Bits) - 1;
    static constexpr uint32_t shortBits = ShortBits; ///< of a small difference's magnitude
};
using Depth8 = Depth<8, 3>;
using Depth16 = Depth<16, 6>;

/// The difference of a value to the one before it.
template <class Depth>
PrxCodeWord DifferenceWord(int32_t difference) {
    const int32_t magnitude = std::abs(difference) - 1;
    if (magnitude < 1 << Depth::shortBits)
        return {static_cast<uint32_t>(magnitude << 1 | (difference < 0 ? 1 : 0)), Depth::shortBits + 2};
    const auto low = static_cast<uint32_t>(difference & Depth::fullValue);
    return {uint64_t{1} << Depth::bits | low, Depth::bits + 1};
}

/// How often a value is repeated: 0 to 2047.
PrxCodeWord RunWord(uint32_t run) {
    if (run == 0) return {1, 1};
    return {run, run < 16 ? 5u : 16u};
}

/// Writes values and their runs.
template <class Depth>
class AlphaWriter {
public:
    AlphaWriter(uint8_t* out, uint32_t capacity) : writer_(out, capacity) {}

    void Write(int32_t value, uint32_t run) {
        const PrxCodeWord difference = DifferenceWord<Depth>(value - previous_);
        const PrxCodeWord runWord = RunWord(run);
        previous_ = value;
        all_ &= value;
        if (difference.length + runWord.length <= 32) {
            Write(difference.Then(runWord));
        } else {
            Write(difference);
            Write(runWord);
        }
    }

    uint32_t Flush() { return writer_.Flush(); }
    bool Opaque() const { return (all_ & Depth::fullValue) == Depth::fullValue; }

private:
    void Write(const PrxCodeWord& word) { writer_.WriteBits(word.bits, word.length); }

    PrxBitWriter writer_;
    int32_t previous_ = -1;
    int32_t all_ = -1;
};

/// Where a format has its alpha: at byte `Offset` of a pixel of `PixelBytes`, as a `Sample`.
template <size_t PixelBytes, size_t Offset, class SampleType>
struct Place {
    using Sample = SampleType;

    static Sample At(const uint8_t* pixels, size_t x) {
        Sample sample;
        std::memcpy(&sample, pixels + x * PixelBytes + Offset, sizeof sample);
        return sample;
    }

    /// Whether samples are all equal to `sample`.
    template <size_t Count>
    static bool AllAre(const uint8_t* pixels, size_t x, Sample sample) {
        Sample different = 0;
        for (size_t i = 0; i < Count; ++i)
            different |= At(pixels, x + i) ^ sample;
        return different == 0;
    }
};

constexpr bool littleEndian = std::endian::native == std::endian::little;

struct FirstByte : Place<4, 0, uint8_t>, Depth8 {
    static int32_t ValueOf(uint8_t sample) { return sample; }
};
struct LastByte : Place<4, 3, uint8_t>, Depth8 {
    static int32_t ValueOf(uint8_t sample) { return sample; }
};
struct LittleEndianWord : Place<8, 0, uint16_t>, Depth16 {
    static int32_t ValueOf(uint16_t sample) { return littleEndian ? sample : __builtin_bswap16(sample); }
};
struct BigEndianWord : Place<8, 0, uint16_t>, Depth16 {
    static int32_t ValueOf(uint16_t sample) { return littleEndian ? __builtin_bswap16(sample) : sample; }
};
struct Float : Place<16, 0, uint32_t>, Depth16 {
    /// In single precision; what is not a number counts as 0.
    static int32_t ValueOf(uint32_t sample) {
        const auto value = std::bit_cast<float>(sample);
        if (!(value > 0.0F)) return 0;
        const float scaled = (value < 1.0F ? value : 1.0F) * 65535.0F;
        return static_cast<int32_t>(scaled + 0.5F);
    }
};

/// Takes the samples of an area, and writes a value when another one follows.
template <class Format>
class AlphaRuns {
public:
    AlphaRuns(const uint8_t* firstPixel, uint8_t* out, uint32_t capacity)
        : writer_(out, capacity), sample_(Format::At(firstPixel, 0)), value_(Format::ValueOf(sample_)) {}

    /// `extra` columns more have the last sample of the row.
    void AddRow(const uint8_t* pixels, size_t columns, uint32_t extra) {
        size_t x = 0;
        while (columns - x >= samplesAtOnce) {
            if (Format::template AllAre<samplesAtOnce>(pixels, x, sample_)) {
                count_ += samplesAtOnce;
            } else {
                AddSamples(pixels, x, x + samplesAtOnce);
            }
            x += samplesAtOnce;
        }
        AddSamples(pixels, x, columns);
        count_ += extra;
    }

    /// Writes the last value and returns the count of bytes.
    uint32_t Finish(bool* opaque) {
        writer_.Write(value_, count_ - 1);
        *opaque = writer_.Opaque();
        return writer_.Flush();
    }

private:
    static constexpr size_t samplesAtOnce = 16;

    void AddSamples(const uint8_t* pixels, size_t from, size_t to) {
        for (size_t x = from; x < to; ++x) {
            sample_ = Format::At(pixels, x);
            const int32_t value = Format::ValueOf(sample_);
            if (value != value_) {
                writer_.Write(value_, count_ - 1);
                value_ = value;
                count_ = 0;
            }
            ++count_;
        }
    }

    AlphaWriter<Format> writer_;
    typename Format::Sample sample_; ///< the last one
    int32_t value_;                  ///< its value
    uint32_t count_ = 0;             ///< of samples that have it
};

template <class Format>
uint32_t CodeArea(const PrxAlphaArea& area, uint8_t* out, uint32_t capacity, bool* opaque) {
    assert(area.columns > 0 && area.rows > 0 && (area.columns + area.extraColumns) * area.rows <= 2048);
    AlphaRuns<Format> runs(area.pixels, out, capacity);
    for (int32_t y = 0; y < area.rows; ++y)
        runs.AddRow(area.pixels + y * area.rowBytes, static_cast<size_t>(area.columns),
                    static_cast<uint32_t>(area.extraColumns));
    return runs.Finish(opaque);
}

uint32_t CodeFloatArea(const PrxAlphaArea& area, uint8_t* out, uint32_t capacity, bool* opaque) {
    return PrxRunRoundingToNearest<&CodeArea<Float>>(area, out, capacity, opaque);
}

template <class Format, decltype(PrxAlphaCoder::code) Code = CodeArea<Format>>
constexpr PrxAlphaCoder coderOf = {Format::bits / 8, Format::bits == 8 ? 2 : 3, Code};

} // namespace

PrxAlphaCoder PrxChooseAlphaCoder(bool hasAlpha, uint32_t pixelFormat) {
    constexpr PrxAlphaCoder none = {0, 0, nullptr};
    if (!hasAlpha) return none;
    switch (pixelFormat) {
    case prxFormatArgb:
    case prxFormatR408:
    case prxFormatY408: return coderOf<FirstByte>;
    case prxFormatV408: return coderOf<LastByte>;
    case prxFormatY416: return coderOf<LittleEndianWord>;
    case prxFormatB64a: return coderOf<BigEndianWord>;
    case prxFormatR4fl: return coderOf<Float, CodeFloatArea>;
    default: return none;
    }
}
