#include "pixel/RowConverters.h"

#include "pixel/PixelCursor.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace {

/// Where a pixel record holds a channel.
template <RowChannel Name>
constexpr int32_t Pixel::*placeOf =
    std::array{&Pixel::R, &Pixel::G, &Pixel::B, &Pixel::A}[static_cast<size_t>(Name)];

bool HasFloatPixels(const Image& image) {
    return image.DataFormat != nullptr &&
           (image.DataFormat->Kind == ImageData_RGBAHalf || image.DataFormat->Kind == ImageData_RGBAFloat);
}

// ---------------------------------------------------------------------------------------------------------
// Words of one channel

constexpr int32_t opaqueAlpha = 65535;

int32_t ToVideoRange(int32_t channel) {
    using namespace video_range16;
    const float scaled = static_cast<float>(channel) * fromFull + static_cast<float>(black);
    return static_cast<int32_t>(std::clamp<float>(scaled, black, white));
}

int32_t FromVideoRange(int32_t word) {
    using namespace video_range16;
    return static_cast<int32_t>(static_cast<float>(std::clamp(word, black, white) - black) * toFull);
}

template <RowScale Scale, RowChannel Name>
int32_t ToScale(int32_t channel) {
    if constexpr (Scale == RowScale::VideoRange && Name != RowChannel::A) return ToVideoRange(channel);
    if constexpr (Scale == RowScale::FourteenBits) return static_cast<uint16_t>(channel) >> 2;
    return channel;
}

template <RowScale Scale, RowChannel Name>
int32_t FromScale(int32_t word) {
    if constexpr (Scale == RowScale::VideoRange && Name != RowChannel::A) return FromVideoRange(word);
    if constexpr (Scale == RowScale::FourteenBits) return word * 4;
    return word;
}

/// Writes one word and returns the address behind it.
template <RowWord Word>
uint8_t* PutWord(uint8_t* out, int32_t value) {
    const auto high = static_cast<uint8_t>(value >> 8);
    const auto low = static_cast<uint8_t>(value);
    if constexpr (Word == RowWord::Byte) {
        *out = high;
        return out + 1;
    }
    out[0] = Word == RowWord::BigEndian16 ? high : low;
    out[1] = Word == RowWord::BigEndian16 ? low : high;
    return out + 2;
}

/// Reads one word and steps over it.
template <RowWord Word, bool IsSigned>
int32_t TakeWord(const uint8_t*& in) {
    if constexpr (Word == RowWord::Byte) return *in++ * 257;
    const int32_t word = Word == RowWord::BigEndian16 ? in[0] << 8 | in[1] : in[1] << 8 | in[0];
    in += 2;
    return IsSigned ? static_cast<int16_t>(word) : word;
}

// ---------------------------------------------------------------------------------------------------------
// Packings whose channels follow each other as bytes or 16-bit words. The channels of a pixel are expanded at
// compile time, one statement for each.

template <RowPacking Packing>
using ChannelPlaces = std::make_index_sequence<LayoutOf(Packing).channels>;

/// Writes the channels of one pixel and returns the address behind them.
template <RowPacking Packing, size_t... Place>
uint8_t* PutPixel(const Pixel& pixel, uint8_t* out, std::index_sequence<Place...>) {
    constexpr RowLayout layout = LayoutOf(Packing);
    ((out = PutWord<layout.word>(
          out, ToScale<layout.scale, layout.order[Place]>(pixel.*placeOf<layout.order[Place]>))),
     ...);
    return out;
}

/// Reads the channels of one pixel and steps over them.
template <RowPacking Packing, size_t... Place>
void TakePixel(const uint8_t*& in, Pixel& pixel, std::index_sequence<Place...>) {
    constexpr RowLayout layout = LayoutOf(Packing);
    ((pixel.*placeOf<layout.order[Place]> =
          FromScale<layout.scale, layout.order[Place]>(TakeWord<layout.word, layout.isSigned>(in))),
     ...);
}

template <RowPacking Packing>
void WriteInterleaved(Image* image, const RowContext& context, int32_t row) {
    uint8_t* out = context.Row(row);
    PixelCursor cursor(image, ImageRowOf(*image, row));
    for (int32_t x = 0, width = image->Width; x < width; ++x, cursor.Step()) {
        Pixel pixel;
        cursor.Get(pixel);
        out = PutPixel<Packing>(pixel, out, ChannelPlaces<Packing>());
    }
}

template <RowPacking Packing>
void ReadInterleaved(Image* image, const RowContext& context, int32_t row) {
    const uint8_t* in = context.Row(row);
    PixelCursor cursor(image, ImageRowOf(*image, row));
    for (int32_t x = 0, width = image->Width; x < width; ++x, cursor.Step()) {
        Pixel pixel;
        pixel.A = opaqueAlpha;
        TakePixel<Packing>(in, pixel, ChannelPlaces<Packing>());
        cursor.Set(pixel);
    }
}

// ---------------------------------------------------------------------------------------------------------
// r210

/// A channel from 0..65535, which gives 64..940 without a clamp.
uint32_t TenBitsOf(int32_t channel) {
    using namespace video_range10;
    return static_cast<uint32_t>(channel) * range / 65535u + black;
}

/// A channel with 1.0 as white, clamped to 0..1023. Not-a-number gives 0.
uint32_t TenBitsOf(float channel) {
    using namespace video_range10;
    const float scaled = channel * static_cast<float>(range) + 0.5f;
    if (!(scaled > -black)) return 0;
    return static_cast<uint32_t>(static_cast<int32_t>(std::min<float>(scaled, highest - black)) + black);
}

void SetFromTenBits(int32_t& channel, int32_t value) {
    using namespace video_range10;
    channel = std::clamp((value - black) * 65535 / range, 0, 65535);
}

/// Values below black give negative channels and values above white channels over 1.0: no clamp. Kept.
void SetFromTenBits(float& channel, int32_t value) {
    using namespace video_range10;
    channel = static_cast<float>(value - black) / static_cast<float>(range);
}

void SetOpaque(Pixel& pixel) { pixel.A = opaqueAlpha; }
void SetOpaque(PixelFloat& pixel) { pixel.A = 1.0f; }

template <typename AnyPixel>
void WriteTenBits(Image* image, const RowContext& context, int32_t row) {
    uint8_t* out = context.Row(row);
    PixelCursor cursor(image, ImageRowOf(*image, row));
    for (int32_t x = 0, width = image->Width; x < width; ++x, cursor.Step(), out += 4) {
        AnyPixel pixel;
        cursor.Get(pixel);
        const uint32_t word = (TenBitsOf(pixel.R) & 0x3FF) << 20 | (TenBitsOf(pixel.G) & 0x3FF) << 10 |
                              (TenBitsOf(pixel.B) & 0x3FF);
        for (int i = 0; i < 4; ++i)
            out[i] = static_cast<uint8_t>(word >> (24 - 8 * i));
    }
}

template <typename AnyPixel>
void ReadTenBits(Image* image, const RowContext& context, int32_t row) {
    const uint8_t* in = context.Row(row);
    PixelCursor cursor(image, ImageRowOf(*image, row));
    for (int32_t x = 0, width = image->Width; x < width; ++x, cursor.Step(), in += 4) {
        const uint32_t word = uint32_t{in[0]} << 24 | uint32_t{in[1]} << 16 | uint32_t{in[2]} << 8 | in[3];
        AnyPixel pixel;
        SetFromTenBits(pixel.R, word >> 20 & 0x3FF);
        SetFromTenBits(pixel.G, word >> 10 & 0x3FF);
        SetFromTenBits(pixel.B, word & 0x3FF);
        SetOpaque(pixel);
        cursor.Set(pixel);
    }
}

// ---------------------------------------------------------------------------------------------------------
// rp16

void ReadPlanes(Image* image, const RowContext& context, int32_t row) {
    const int64_t planeBytes = int64_t{context.rowBytes} * image->Height;
    const uint8_t* in = context.Row(row);
    PixelCursor cursor(image, ImageRowOf(*image, row));
    for (int32_t x = 0, width = image->Width; x < width; ++x, cursor.Step(), in += 2) {
        int16_t words[3];
        for (int plane = 0; plane < 3; ++plane)
            std::memcpy(&words[plane], in + plane * planeBytes, 2);
        cursor.Set(Pixel{words[0], words[1], words[2], opaqueAlpha});
    }
}

// ---------------------------------------------------------------------------------------------------------
// One converter for each packing

template <RowPacking Packing>
void WriteRow(Image* image, void* opaque, int row) {
    const RowContext& context = *static_cast<const RowContext*>(opaque);
    if constexpr (LayoutOf(Packing).word != RowWord::TenBits) {
        WriteInterleaved<Packing>(image, context, row);
    } else {
        const bool isFloat = HasFloatPixels(*image);
        (isFloat ? WriteTenBits<PixelFloat> : WriteTenBits<Pixel>)(image, context, row);
    }
}

template <RowPacking Packing>
void ReadRow(Image* image, void* opaque, int row) {
    const RowContext& context = *static_cast<const RowContext*>(opaque);
    if constexpr (LayoutOf(Packing).word == RowWord::Plane16) {
        ReadPlanes(image, context, row);
    } else if constexpr (LayoutOf(Packing).word == RowWord::TenBits) {
        const bool isFloat = HasFloatPixels(*image);
        (isFloat ? ReadTenBits<PixelFloat> : ReadTenBits<Pixel>)(image, context, row);
    } else {
        ReadInterleaved<Packing>(image, context, row);
    }
}

using RowFunctions = std::array<Image::RowFunction, rowPackingCount>;

template <RowPacking Packing>
constexpr Image::RowFunction WriterOf() {
    if constexpr (IsWritable(Packing)) {
        return &WriteRow<Packing>;
    } else {
        return nullptr;
    }
}

template <size_t... I>
constexpr RowFunctions AllWriters(std::index_sequence<I...>) {
    return {WriterOf<static_cast<RowPacking>(I)>()...};
}

template <size_t... I>
constexpr RowFunctions AllReaders(std::index_sequence<I...>) {
    return {&ReadRow<static_cast<RowPacking>(I)>...};
}

constexpr RowFunctions writers = AllWriters(std::make_index_sequence<rowPackingCount>());
constexpr RowFunctions readers = AllReaders(std::make_index_sequence<rowPackingCount>());

} // namespace

Image::RowFunction ScalarRowWriter(RowPacking packing) { return writers[static_cast<size_t>(packing)]; }

Image::RowFunction ScalarRowReader(RowPacking packing) { return readers[static_cast<size_t>(packing)]; }
