#include "CameraMaterial.h"

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

uint16_t Code(float value) { return static_cast<uint16_t>(std::clamp(std::lround(value), 4l, 1019l)); }

} // namespace

CameraPicture MakeCameraPicture(int32_t width, int32_t height, int32_t index) {
    static const Texture light(1), blue(2), red(3);
    CameraPicture picture = {width, height, {}, {}, {}};
    std::mt19937 random(static_cast<uint32_t>(index) + 77);
    std::normal_distribution<float> grain;
    const float zoom = 1920.0f / static_cast<float>(width);
    for (int32_t row = 0; row < height; ++row) {
        for (int32_t column = 0; column < width; ++column) {
            const float x = static_cast<float>(column) * zoom + 3.0f * static_cast<float>(index);
            const float y = static_cast<float>(row) * zoom;
            const bool bright = std::fmod(x + 0.6f * y, 310.0f) < 120.0f;
            const float base = (bright ? 560.0f : 420.0f) + 260.0f * light.At(x, y);
            picture.luma.push_back(Code(base + 5.0f * grain(random)));
            picture.cb.push_back(Code(512.0f + 90.0f * blue.At(x, y) + 3.0f * grain(random)));
            picture.cr.push_back(Code(512.0f + 90.0f * red.At(x, y) + 3.0f * grain(random)));
        }
    }
    return picture;
}
