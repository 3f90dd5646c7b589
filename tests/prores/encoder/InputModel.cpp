#include "prores/encoder/InputModel.h"

#include "prores/PrxFormats.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace input_model {

const std::vector<Format>& Formats() {
    static const std::vector<Format> formats = {
        {"2vuy", prxFormat2vuy, 1, true, {cb, luma, cr, luma}},
        {"yuvs", prxFormatYuvs, 1, true, {luma, cb, luma, cr}},
        {"v216", prxFormatV216, 2, true, {cb, luma, cr, luma}},
        {"y408", prxFormatY408, 1, false, {alpha, luma, cb, cr}},
        {"v408", prxFormatV408, 1, false, {cb, luma, cr, alpha}},
        {"r408", prxFormatR408, 1, false, {alpha, luma, cb, cr}},
        {"y416", prxFormatY416, 2, false, {alpha, luma, cb, cr}},
        {"r4fl", prxFormatR4fl, 4, false, {alpha, luma, cb, cr}},
    };
    return formats;
}

const Format& FormatOf(uint32_t pixelFormat) {
    return *std::ranges::find(Formats(), pixelFormat, &Format::pixelFormat);
}

double& Pixels::At(Channel channel, int32_t x, int32_t y) {
    return values[channel][static_cast<size_t>(y)][static_cast<size_t>(x)];
}
double Pixels::At(Channel channel, int32_t x, int32_t y) const {
    return values[channel][static_cast<size_t>(y)][static_cast<size_t>(x)];
}

void Pixels::Fill(const std::function<double()>& next) {
    for (auto& channel : values)
        for (auto& row : channel)
            std::ranges::generate(row, next);
}

std::vector<std::function<double()>> Fills(const Format& format, std::mt19937& random) {
    if (format.sampleBytes == 4) {
        constexpr float infinity = std::numeric_limits<float>::infinity();
        return {[&random] {
                    return static_cast<double>(std::uniform_real_distribution<float>(-0.2F, 1.2F)(random));
                },
                [&random] { // codes and halves between them
                    return static_cast<double>(static_cast<float>(random() % 8161) / 8160.0F);
                },
                [&random] { // any bits
                    const auto bits = static_cast<uint32_t>(random());
                    float value;
                    std::memcpy(&value, &bits, sizeof(value));
                    return static_cast<double>(value);
                },
                [&random] {
                    constexpr std::array<float, 6> odd = {infinity, -infinity, NAN, -0.0F, 3.4e38F, -3.4e38F};
                    return static_cast<double>(odd[random() % odd.size()]);
                }};
    }
    const int32_t highest = (1 << (8 * format.sampleBytes)) - 1;
    return {[&random, highest] {
                return static_cast<double>(std::uniform_int_distribution<int32_t>(0, highest)(random));
            },
            [&random, highest] { return static_cast<double>(random() % 2 == 0 ? 0 : highest); },
            [&random, highest] { return static_cast<double>(highest - static_cast<int32_t>(random() % 32)); },
            [] { return 0.0; }, [highest] { return static_cast<double>(highest); }};
}

int32_t SampleOf(const Format& format, Channel channel, double value) {
    switch (format.sampleBytes) {
    case 1:
        if (format.pixelFormat == prxFormatR408 && channel == luma)
            return static_cast<int32_t>(16 * std::min(value - 112, 127.0));
        return static_cast<int32_t>(16 * (value - 128));
    case 2: return static_cast<int32_t>(std::floor(std::min(value - 32768 + 8, 32767.0) / 16));
    default: {
        if (std::isnan(value)) value = 0;
        const double product = static_cast<double>(static_cast<float>(value) * 4080.0F);
        const double nearest = std::isinf(product) ? product : product - std::remainder(product, 1.0);
        const double sample = nearest - (channel == luma ? 1792 : 2048);
        return static_cast<int32_t>(std::max(-2048.0, std::min(sample, 2032.0)));
    }
    }
}

std::vector<int16_t> BlocksOf(const Format& format, const Pixels& pixels, int32_t chromaFormat, int32_t rows,
                              int32_t columns) {
    struct Block {
        Channel channel;
        int32_t left;
        int32_t top;
    };
    std::vector<Block> order = {{luma, 0, 0}, {luma, 8, 0}, {luma, 0, 8}, {luma, 8, 8},
                                {cb, 0, 0},   {cr, 0, 0},   {cb, 0, 8},   {cr, 0, 8}};
    if (chromaFormat == prxChroma444)
        order.insert(order.end(), {{cb, 8, 0}, {cr, 8, 0}, {cb, 8, 8}, {cr, 8, 8}});
    std::vector<int16_t> blocks;
    for (const Block& block : order) {
        for (int32_t i = 0; i < 64; ++i) {
            const bool halved = block.channel != luma && chromaFormat == prxChroma422;
            const int32_t wanted = (block.left + i % 8) * (halved ? 2 : 1);
            int32_t x = std::min(wanted, columns - 1);
            if (format.packed && block.channel != luma) x = x / 2 * 2;
            const int32_t y = std::min(block.top + i / 8, rows - 1);
            const double value = pixels.At(block.channel, x, y);
            blocks.push_back(static_cast<int16_t>(SampleOf(format, block.channel, value)));
        }
    }
    return blocks;
}

namespace {

void PackSample(const Format& format, double value, uint8_t* out) {
    if (format.sampleBytes == 4) {
        const auto number = static_cast<float>(value);
        std::memcpy(out, &number, sizeof(number));
    } else {
        for (int32_t i = 0; i < format.sampleBytes; ++i)
            out[i] = static_cast<uint8_t>(static_cast<uint32_t>(value) >> (8 * i));
    }
}

void PackRow(const Format& format, const Pixels& pixels, int32_t y, int32_t columns, uint8_t* out) {
    const int32_t samples = format.BytesOf(columns) / format.sampleBytes;
    for (int32_t i = 0; i < samples; ++i) {
        const Channel channel = format.order[static_cast<size_t>(i % 4)];
        int32_t x = format.packed ? i / 2 : i / 4;
        if (format.packed && channel != luma) x = x / 2 * 2;
        PackSample(format, pixels.At(channel, x, y), out + i * format.sampleBytes);
    }
}

} // namespace

PackedPixels::PackedPixels(const Format& format, const Pixels& pixels, Shape shape, GuardedBytes::Guard guard)
    : shape_(shape), stride_(format.BytesOf(shape.columns) + shape.gap),
      memory_(static_cast<size_t>(shape.rows * stride_ - shape.gap), guard) {
    for (int32_t y = 0; y < shape.rows; ++y)
        PackRow(format, pixels, y, shape.columns, Source() + y * RowBytes());
}

} // namespace input_model
