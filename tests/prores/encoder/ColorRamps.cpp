#include "prores/encoder/ColorRamps.h"

#include "prores/encoder/InputModel.h"

#include <array>
#include <cmath>
#include <cstring>

namespace ramps {

namespace {

constexpr int32_t bt601 = 6;

/// `fillRow(row, y)` fills row `y`.
template <typename FillRow>
InputPicture Fill(uint32_t pixelFormat, const FillRow& fillRow) {
    InputPicture picture = MakePicture(pixelFormat, width, height, Content::Flat);
    for (int32_t y = 0; y < height; ++y)
        fillRow(picture.bytes.data() + static_cast<ptrdiff_t>(y) * picture.buffer.rowBytes, y);
    return picture;
}

double ChannelOf(const Color& color, input_model::Channel channel) {
    switch (channel) {
    case input_model::luma: return color.y;
    case input_model::cb: return color.cb;
    case input_model::cr: return color.cr;
    default: return 255;
    }
}

void StoreSample(const input_model::Format& format, input_model::Channel channel, double value,
                 uint8_t* out) {
    const bool isLuma = channel == input_model::luma;
    if (format.sampleBytes == 4) {
        const double scaled = channel == input_model::alpha ? 1 : (value - (isLuma ? 16 : 0)) / 255;
        const auto number = static_cast<float>(scaled);
        std::memcpy(out, &number, sizeof(number));
    } else if (format.sampleBytes == 2) {
        const auto code = static_cast<uint16_t>(std::lrint(256 * value));
        std::memcpy(out, &code, sizeof(code));
    } else {
        const bool blackAt0 = isLuma && format.pixelFormat == prxFormatR408;
        *out = static_cast<uint8_t>(std::lrint(value) - (blackAt0 ? 16 : 0));
    }
}

void FillYcbcrRow(const input_model::Format& format, uint8_t* row, int32_t y) {
    const int32_t samples = format.BytesOf(width) / format.sampleBytes;
    for (int32_t i = 0; i < samples; ++i) {
        const input_model::Channel channel = format.order[static_cast<size_t>(i % 4)];
        const bool ofPair = format.packed && channel != input_model::luma;
        const int32_t x = ofPair ? i / 4 * 2 : format.packed ? i / 2 : i / 4;
        StoreSample(format, channel, ChannelOf(ColorAt(x, y), channel), row + i * format.sampleBytes);
    }
}

void FillV210Row(uint8_t* row, int32_t y) {
    for (int32_t i = 0; i < 2 * width; i += 3) {
        uint32_t word = 0;
        for (int32_t k = i; k < i + 3; ++k) {
            const Color color = ColorAt(k % 2 == 0 ? k / 4 * 2 : k / 2, y);
            const double value = k % 2 != 0 ? color.y : k % 4 == 0 ? color.cb : color.cr;
            word |= static_cast<uint32_t>(std::lrint(4 * value)) << (10 * (k - i));
        }
        std::memcpy(row + i / 3 * 4, &word, sizeof(word));
    }
}

rgb_input_model::Codes RgbAt(uint32_t pixelFormat, int32_t x, int32_t y) {
    const double max = OutMaxModel(pixelFormat);
    const auto code = [max](double share) { return static_cast<int32_t>(std::lrint(share * max)); };
    const double across = static_cast<double>(x) / width, down = static_cast<double>(y) / height;
    return {code(0.1 + 0.8 * across), code(0.9 - 0.8 * down), code(0.1 + 0.4 * (across + down))};
}

rgb_input_model::Codes RgbOf(uint32_t pixelFormat, const Color& color) {
    const auto luma = static_cast<int32_t>(std::lrint(256 * (color.y - 16)));
    const RgbModel exact = ExactRgb({luma, 256 * (color.cb - 128), 256 * (color.cr - 128)}, bt601,
                                    OutMaxModel(pixelFormat), 256);
    rgb_input_model::Codes codes;
    for (size_t i = 0; i < codes.size(); ++i)
        codes[i] = static_cast<int32_t>(std::lrint(exact[i]));
    return codes;
}

/// `codesAt(x)` are the pixels of the row.
template <typename CodesAt>
void FillRgbRow(uint32_t pixelFormat, const CodesAt& codesAt, uint8_t* row) {
    std::vector<rgb_input_model::Codes> pixels;
    for (int32_t x = 0; x < width; ++x)
        pixels.push_back(codesAt(x));
    std::ranges::copy(rgb_input_model::Pack(pixelFormat, pixels, 0xffff), row);
}

} // namespace

Color ColorAt(int32_t x, int32_t y) {
    const double across = static_cast<double>(x) / width, down = static_cast<double>(y) / height;
    return {100 + 50 * across, 88 + 80 * down, 148 - 20 * (across + down)};
}

InputPicture MakeColors(uint32_t pixelFormat) {
    return Fill(pixelFormat, [pixelFormat](uint8_t* row, int32_t y) {
        if (std::ranges::count(rgbFormats, pixelFormat) != 0) {
            FillRgbRow(
                pixelFormat, [&](int32_t x) { return RgbOf(pixelFormat, ColorAt(x, y)); }, row);
        } else if (pixelFormat == prxFormatV210) {
            FillV210Row(row, y);
        } else {
            FillYcbcrRow(input_model::FormatOf(pixelFormat), row, y);
        }
    });
}

InputPicture MakeRgb(uint32_t pixelFormat) {
    return Fill(pixelFormat, [pixelFormat](uint8_t* row, int32_t y) {
        FillRgbRow(
            pixelFormat, [&](int32_t x) { return RgbAt(pixelFormat, x, y); }, row);
    });
}

Color RgbColorAt(uint32_t pixelFormat, int32_t colorMatrix, int32_t x, int32_t y) {
    const Color color =
        rgb_input_model::Exact(RgbAt(pixelFormat, x, y), colorMatrix, {219, 224}, OutMaxModel(pixelFormat));
    return {color.y + 16, color.cb + 128, color.cr + 128};
}

std::vector<Color> Decode(const std::vector<uint8_t>& frame) {
    const DecoderPtr decoder(PrxCreateDecoder(1, nullptr));
    const auto rowBytes = static_cast<int32_t>(PrxGetBytesPerRow(width, prxFormatY416, 0));
    std::vector<uint8_t> bytes(static_cast<size_t>(rowBytes) * height);
    const PrxPixelBuffer target{bytes.data(), rowBytes, prxFormatY416, width, height};
    const auto size = static_cast<int32_t>(frame.size());
    if (PrxDecodeFrame(decoder.get(), frame.data(), size, &target, 0, 0) != size) return {};
    std::vector<Color> colors;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            std::array<uint16_t, 4> words;
            std::memcpy(words.data(), bytes.data() + static_cast<ptrdiff_t>(y) * rowBytes + 8 * x,
                        sizeof(words));
            colors.push_back({words[1] / 256.0, words[2] / 256.0, words[3] / 256.0});
        }
    return colors;
}

} // namespace ramps
