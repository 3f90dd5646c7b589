#include "support/CameraMaterial.h"

#include "prores/PrxFormats.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace {

/// Waves whose strength falls with their frequency, as in pictures of nature.
class Texture {
public:
    explicit Texture(uint32_t seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> angle(0.0f, 6.2831853f);
        float frequency = 0.004f;
        for (Wave& wave : waves_) {
            const float direction = angle(random);
            wave = {frequency * std::cos(direction), frequency * std::sin(direction), angle(random),
                    0.0016f / frequency};
            frequency *= 1.33f;
        }
    }
    float At(float x, float y) const {
        float sum = 0;
        for (const Wave& wave : waves_)
            sum += wave.strength * std::sin(wave.x * x + wave.y * y + wave.phase);
        return sum;
    }

private:
    struct Wave {
        float x, y, phase, strength;
    };
    std::array<Wave, 18> waves_;
};

constexpr uint16_t opaque = 1023;

uint16_t Code(float value) { return static_cast<uint16_t>(std::clamp(std::lround(value), 4l, 1019l)); }

void PutLittle(uint8_t* at, int word) {
    at[0] = static_cast<uint8_t>(word);
    at[1] = static_cast<uint8_t>(word >> 8);
}

void PutBig(uint8_t* at, int word) {
    at[0] = static_cast<uint8_t>(word >> 8);
    at[1] = static_cast<uint8_t>(word);
}

int Alpha16(uint16_t alpha) { return alpha << 6 | alpha >> 4; }

/// Cb Y Cr Y. The last pair of an odd width has its chroma too.
void PackV216(const CameraPicture& picture, size_t at, int32_t column, uint8_t* row) {
    uint8_t* const out = row + int64_t{column} * 4;
    PutLittle(out + 2, picture.luma[at] << 6);
    if (column % 2 != 0) return;
    PutLittle(out, picture.cb[at] << 6);
    PutLittle(out + 4, picture.cr[at] << 6);
}

void PackY416(const CameraPicture& picture, size_t at, int32_t column, uint8_t* row) {
    uint8_t* const out = row + int64_t{column} * 8;
    PutLittle(out, Alpha16(picture.alpha[at]));
    PutLittle(out + 2, picture.luma[at] << 6);
    PutLittle(out + 4, picture.cb[at] << 6);
    PutLittle(out + 6, picture.cr[at] << 6);
}

void PackB64a(const CameraPicture& picture, size_t at, int32_t column, uint8_t* row) {
    uint8_t* const out = row + int64_t{column} * 8;
    const double y = (picture.luma[at] - 64) / 876.0;
    const double cb = (picture.cb[at] - 512) / 896.0;
    const double cr = (picture.cr[at] - 512) / 896.0;
    const double rgb[] = {y + 1.5748 * cr, y - 0.187324 * cb - 0.468124 * cr, y + 1.8556 * cb};
    PutBig(out, Alpha16(picture.alpha[at]));
    for (size_t i = 0; i < 3; ++i)
        PutBig(out + 2 + 2 * i, static_cast<int>(std::lround(std::clamp(rgb[i], 0.0, 1.0) * 65535)));
}

} // namespace

CameraPicture MakeCameraPicture(int32_t width, int32_t height, int32_t index, float grain) {
    static const Texture light(1), blue(2), red(3);
    const auto pixels = static_cast<size_t>(width) * static_cast<size_t>(height);
    CameraPicture picture = {width, height, {}, {}, {}, std::vector<uint16_t>(pixels, opaque)};
    std::mt19937 random(static_cast<uint32_t>(index) + 77);
    std::normal_distribution<float> normal;
    const float zoom = 1920.0f / static_cast<float>(width);
    for (int32_t row = 0; row < height; ++row) {
        for (int32_t column = 0; column < width; ++column) {
            const float x = static_cast<float>(column) * zoom + 3.0f * static_cast<float>(index);
            const float y = static_cast<float>(row) * zoom;
            const bool bright = std::fmod(x + 0.6f * y, 310.0f) < 120.0f;
            const float base = (bright ? 560.0f : 420.0f) + 260.0f * light.At(x, y);
            picture.luma.push_back(Code(base + grain * normal(random)));
            picture.cb.push_back(Code(512.0f + 90.0f * blue.At(x, y) + 0.6f * grain * normal(random)));
            picture.cr.push_back(Code(512.0f + 90.0f * red.At(x, y) + 0.6f * grain * normal(random)));
        }
    }
    return picture;
}

void AddMatte(CameraPicture& picture) {
    static const Texture outline(4);
    const float zoom = 1920.0f / static_cast<float>(picture.width);
    size_t at = 0;
    for (int32_t row = 0; row < picture.height; ++row) {
        for (int32_t column = 0; column < picture.width; ++column, ++at) {
            const float x = static_cast<float>(column) * zoom;
            const float y = static_cast<float>(row) * zoom;
            const float inside = 420.0f - std::hypot(x - 960.0f, y - 540.0f) + 60.0f * outline.At(x, y);
            picture.alpha[at] =
                static_cast<uint16_t>(std::clamp(std::lround(512.0f + 40.0f * inside), 0l, long{opaque}));
        }
    }
}

std::vector<uint8_t> PackCameraPicture(const CameraPicture& picture, uint32_t pixelFormat,
                                       uint32_t rowBytes) {
    const auto pack =
        pixelFormat == prxFormatV216 ? PackV216 : (pixelFormat == prxFormatY416 ? PackY416 : PackB64a);
    std::vector<uint8_t> bytes(size_t{rowBytes} * static_cast<size_t>(picture.height));
    size_t at = 0;
    for (int32_t row = 0; row < picture.height; ++row)
        for (int32_t column = 0; column < picture.width; ++column, ++at)
            pack(picture, at, column, bytes.data() + size_t{rowBytes} * static_cast<size_t>(row));
    return bytes;
}
