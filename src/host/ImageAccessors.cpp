#include "host/ImageAccessors.h"

#include "host/Half.h"

#include <array>
#include <cstring>

namespace {

/// `value` limited to 0..1, times `white`, to the nearest integer; not-a-number gives 0. Double precision
/// holds the product exactly, so that the result is the nearest one always.
constexpr int32_t Quantize(float value, int32_t white) {
    constexpr double halfStep = 0.5;
    if (!(value > 0.0f)) return 0;
    if (value >= 1.0f) return white;
    return static_cast<int32_t>(static_cast<double>(value) * white + halfStep);
}

/// The host stores the low 16 bits of an integer channel: callers hand in sign-extended words.
constexpr int32_t LowWord(int32_t value) { return value & 0xffff; }

struct Channel8 {
    using Stored = uint8_t;
    static constexpr int32_t ToInt(Stored stored) { return stored * 257; }
    static constexpr Stored FromInt(int32_t value) {
        return static_cast<Stored>((LowWord(value) + 128) / 257);
    }
    static constexpr float ToFloat(Stored stored) { return stored / 255.0f; }
    static constexpr Stored FromFloat(float value) { return static_cast<Stored>(Quantize(value, 255)); }
};

struct Channel16 {
    using Stored = uint16_t;
    static constexpr int32_t ToInt(Stored stored) { return stored; }
    static constexpr Stored FromInt(int32_t value) { return static_cast<Stored>(LowWord(value)); }
    static constexpr float ToFloat(Stored stored) { return stored / 65535.0f; }
    static constexpr Stored FromFloat(float value) { return static_cast<Stored>(Quantize(value, 65535)); }
};

struct ChannelFloat {
    using Stored = float;
    static constexpr int32_t ToInt(Stored stored) { return Quantize(stored, 65535); }
    static constexpr Stored FromInt(int32_t value) { return LowWord(value) / 65535.0f; }
    static constexpr float ToFloat(Stored stored) { return stored; }
    static constexpr Stored FromFloat(float value) { return value; }
};

struct ChannelHalf {
    using Stored = uint16_t;
    static constexpr int32_t ToInt(Stored stored) { return ChannelFloat::ToInt(HalfToFloat(stored)); }
    static constexpr Stored FromInt(int32_t value) { return FloatToHalf(ChannelFloat::FromInt(value)); }
    static constexpr float ToFloat(Stored stored) { return HalfToFloat(stored); }
    static constexpr Stored FromFloat(float value) { return FloatToHalf(value); }
};

template <typename Channel>
using StoredPixel = std::array<typename Channel::Stored, 4>;

/// Whether `data` is an address: on an image without main data it is a mere offset.
bool HasPixel(const uint8_t* data, const Image& image) { return data != nullptr && image.HasMainData(); }

/// The stored channels at `data`, or transparent black if there is no pixel.
template <typename Channel>
StoredPixel<Channel> Load(const uint8_t* data, const Image& image) {
    StoredPixel<Channel> stored = {};
    if (HasPixel(data, image)) std::memcpy(stored.data(), data, sizeof stored);
    return stored;
}

template <typename Channel>
void Store(const StoredPixel<Channel>& stored, uint8_t* data, const Image& image) {
    if (HasPixel(data, image)) std::memcpy(data, stored.data(), sizeof stored);
}

template <typename Channel>
void GetPixel(Pixel& pixel, const uint8_t* data, const uint8_t*, Image* image) {
    const auto stored = Load<Channel>(data, *image);
    pixel = {Channel::ToInt(stored[0]), Channel::ToInt(stored[1]), Channel::ToInt(stored[2]),
             Channel::ToInt(stored[3])};
}

template <typename Channel>
void SetPixel(const Pixel& pixel, uint8_t* data, uint8_t*, Image* image) {
    Store<Channel>({Channel::FromInt(pixel.R), Channel::FromInt(pixel.G), Channel::FromInt(pixel.B),
                    Channel::FromInt(pixel.A)},
                   data, *image);
}

template <typename Channel>
void GetPixelFloat(PixelFloat& pixel, const uint8_t* data, const uint8_t*, Image* image) {
    const auto stored = Load<Channel>(data, *image);
    pixel = {Channel::ToFloat(stored[0]), Channel::ToFloat(stored[1]), Channel::ToFloat(stored[2]),
             Channel::ToFloat(stored[3])};
}

template <typename Channel>
void SetPixelFloat(const PixelFloat& pixel, uint8_t* data, uint8_t*, Image* image) {
    Store<Channel>({Channel::FromFloat(pixel.R), Channel::FromFloat(pixel.G), Channel::FromFloat(pixel.B),
                    Channel::FromFloat(pixel.A)},
                   data, *image);
}

template <typename Channel>
constexpr ImageKindDescriptor Describe(ImageDataKind kind) {
    return {{kind, sizeof(StoredPixel<Channel>)},
            GetPixel<Channel>,
            SetPixel<Channel>,
            GetPixelFloat<Channel>,
            SetPixelFloat<Channel>};
}

constexpr ImageKindDescriptor imageKinds[] = {
    Describe<Channel8>(ImageData_RGBA8),
    Describe<Channel16>(ImageData_RGBA16),
    Describe<ChannelHalf>(ImageData_RGBAHalf),
    Describe<ChannelFloat>(ImageData_RGBAFloat),
};

} // namespace

const ImageKindDescriptor* FindImageKind(uint32_t kind) {
    for (const ImageKindDescriptor& descriptor : imageKinds) {
        if (descriptor.format.Kind == kind) return &descriptor;
    }
    return nullptr;
}
