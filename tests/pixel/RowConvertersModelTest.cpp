// All packings against a plain model of their layouts, on random images of each kind.

#include "pixel/RowConverters.h"

#include "PixelTestSupport.h"
#include "framework/CxAVTypes.h"
#include "pixel/PixelConvert.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace {

using Bytes = std::vector<uint8_t>;

/// A packing as a line of text: channels in memory order and what stands for each.
struct Model {
    uint32_t fourCC;
    const char* channels;
    enum Word { Byte, Big, Little, Video, Fourteen, Ten, Planes } word;
    bool isSigned;
};

constexpr Model models[] = {
    {24, "RGB", Model::Byte, false},
    {32, "ARGB", Model::Byte, false},
    {FourCC("24BG"), "BGR", Model::Byte, false},
    {FourCC("ABGR"), "ABGR", Model::Byte, false},
    {FourCC("abgr"), "ABGR", Model::Byte, false},
    {FourCC("BGRA"), "BGRA", Model::Byte, false},
    {FourCC("RGBA"), "RGBA", Model::Byte, false},
    {FourCC("rgba"), "RGBA", Model::Byte, false},
    {FourCC("b48r"), "RGB", Model::Big, false},
    {FourCC("l48r"), "RGB", Model::Little, true},
    {FourCC("b64a"), "ARGB", Model::Big, false},
    {FourCC("l64r"), "ARGB", Model::Little, false},
    {FourCC("a48r"), "ARGB", Model::Video, false},
    {FourCC("r214"), "RGB", Model::Fourteen, true},
    {FourCC("r210"), "RGB", Model::Ten, false},
    {FourCC("rp16"), "RGB", Model::Planes, true},
};

int64_t WordBytes(const Model& model) { return model.word == Model::Byte ? 1 : 2; }

int64_t PixelBytesOf(const Model& model) {
    if (model.word == Model::Ten) return 4;
    if (model.word == Model::Planes) return 2;
    return WordBytes(model) * static_cast<int64_t>(std::string(model.channels).size());
}

int32_t& Channel(Pixel& pixel, char name) {
    switch (name) {
    case 'R': return pixel.R;
    case 'G': return pixel.G;
    case 'B': return pixel.B;
    default: return pixel.A;
    }
}

/// One channel as the number that the packing's word holds.
uint32_t Encode(const Model& model, char name, int32_t value) {
    switch (model.word) {
    case Model::Byte: return static_cast<uint32_t>(value / 256);
    case Model::Fourteen: return static_cast<uint32_t>(value / 4);
    case Model::Video: {
        if (name == 'A') return static_cast<uint32_t>(value);
        const float product = static_cast<float>(value) * 0.8554818f;
        const float sum = product + 4096.0f;
        return static_cast<uint32_t>(std::min(std::max(std::trunc(sum), 4096.0f), 60160.0f));
    }
    default: return static_cast<uint32_t>(value);
    }
}

/// The channel that a word's number stands for.
int32_t Decode(const Model& model, char name, int32_t number) {
    if (model.isSigned && number >= 32768) number -= 65536;
    switch (model.word) {
    case Model::Byte: return number * 257;
    case Model::Fourteen: return number * 4;
    case Model::Video: {
        if (name == 'A') return number;
        const float product = static_cast<float>(std::min(std::max(number, 4096), 60160) - 4096) * 1.168932f;
        return static_cast<int32_t>(std::trunc(product));
    }
    default: return number;
    }
}

bool IsBigEndian(const Model& model) { return model.word == Model::Big; }

void WritePixel(const Model& model, Pixel pixel, uint8_t* out) {
    for (const char* name = model.channels; *name != 0; ++name) {
        const uint32_t number = Encode(model, *name, Channel(pixel, *name));
        if (WordBytes(model) == 1) {
            *out++ = static_cast<uint8_t>(number);
        } else {
            *out++ = static_cast<uint8_t>(IsBigEndian(model) ? number / 256 : number % 256);
            *out++ = static_cast<uint8_t>(IsBigEndian(model) ? number % 256 : number / 256);
        }
    }
}

Pixel ReadPixel(const Model& model, const uint8_t* in) {
    Pixel pixel = {0, 0, 0, 65535};
    for (const char* name = model.channels; *name != 0; ++name) {
        int32_t number = *in++;
        if (WordBytes(model) == 2) {
            const int32_t next = *in++;
            number = IsBigEndian(model) ? number * 256 + next : next * 256 + number;
        }
        Channel(pixel, *name) = Decode(model, *name, number);
    }
    return pixel;
}

bool IsFloat(ImageDataKind kind) { return kind == ImageData_RGBAHalf || kind == ImageData_RGBAFloat; }

// ---------------------------------------------------------------------------------------------------------
// r210, exact in 64-bit integers and in double precision, which holds each single-precision step before it is
// rounded

void PutTenBits(const int64_t (&values)[3], uint8_t* out) {
    const int64_t word = values[0] * (1 << 20) + values[1] * (1 << 10) + values[2];
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<uint8_t>(word / (int64_t{1} << (24 - 8 * i)) % 256);
}

int64_t TenBits(int32_t channel) { return int64_t{channel} * 876 / 65535 + 64; }

int64_t TenBits(float channel) {
    const float product = static_cast<float>(static_cast<double>(channel) * 876.0);
    const float sum = static_cast<float>(static_cast<double>(product) + 0.5);
    return static_cast<int64_t>(std::min(std::max(std::trunc(static_cast<double>(sum)) + 64.0, 0.0), 1023.0));
}

template <typename AnyPixel>
void WriteTen(const AnyPixel& pixel, uint8_t* out) {
    PutTenBits({TenBits(pixel.R), TenBits(pixel.G), TenBits(pixel.B)}, out);
}

int64_t TakeTenBits(const uint8_t* in, int channel) {
    const int64_t word = ((in[0] * int64_t{256} + in[1]) * 256 + in[2]) * 256 + in[3];
    return word / (int64_t{1} << (20 - 10 * channel)) % 1024;
}

int32_t FullRange(int64_t value) {
    return static_cast<int32_t>(std::min<int64_t>(std::max<int64_t>((value - 64) * 65535 / 876, 0), 65535));
}

float FloatRange(int64_t value) { return static_cast<float>(static_cast<double>(value - 64) / 876.0); }

// ---------------------------------------------------------------------------------------------------------
// Whole images

uint8_t* Address(Image& image, int64_t x, int32_t row) { return image.RowTable[row] + x * image.PixelStride; }

Bytes ModelBlob(const Model& model, Image& image, ImageDataKind kind, int64_t rowBytes, uint8_t filler) {
    Bytes blob(static_cast<size_t>(rowBytes * image.Height), filler);
    for (int32_t y = 0; y < image.Height; ++y) {
        for (int64_t x = 0; x < image.Width; ++x) {
            const uint8_t* address = Address(image, x, image.Height - 1 - y);
            uint8_t* out = blob.data() + y * rowBytes + x * PixelBytesOf(model);
            Pixel pixel;
            PixelFloat floats;
            image.GetPixel(pixel, address, nullptr, &image);
            image.GetPixelFloat(floats, address, nullptr, &image);
            if (model.word != Model::Ten) WritePixel(model, pixel, out);
            if (model.word == Model::Ten && IsFloat(kind)) WriteTen(floats, out);
            if (model.word == Model::Ten && !IsFloat(kind)) WriteTen(pixel, out);
        }
    }
    return blob;
}

void ModelRead(const Model& model, const Bytes& blob, ImageDataKind kind, int64_t rowBytes, Image& image) {
    for (int32_t y = 0; y < image.Height; ++y) {
        for (int64_t x = 0; x < image.Width; ++x) {
            uint8_t* address = Address(image, x, image.Height - 1 - y);
            const uint8_t* in = blob.data() + y * rowBytes + x * PixelBytesOf(model);
            if (model.word == Model::Ten && IsFloat(kind)) {
                image.SetPixelFloat({FloatRange(TakeTenBits(in, 0)), FloatRange(TakeTenBits(in, 1)),
                                     FloatRange(TakeTenBits(in, 2)), 1.0f},
                                    address, nullptr, &image);
                continue;
            }
            Pixel pixel = {0, 0, 0, 65535};
            if (model.word == Model::Ten) {
                pixel = {FullRange(TakeTenBits(in, 0)), FullRange(TakeTenBits(in, 1)),
                         FullRange(TakeTenBits(in, 2)), 65535};
            } else if (model.word == Model::Planes) {
                const int64_t plane = rowBytes * image.Height;
                const uint8_t words[] = {in[0],         in[1],         in[plane],
                                         in[plane + 1], in[2 * plane], in[2 * plane + 1]};
                pixel = ReadPixel(model, words);
            } else {
                pixel = ReadPixel(model, in);
            }
            image.SetPixel(pixel, address, nullptr, &image);
        }
    }
}

void FillRandomly(Image& image, ImageDataKind kind, std::mt19937& random) {
    std::uniform_real_distribution<float> channel(-0.5f, 1.5f);
    for (int32_t row = 0; row < image.Height; ++row) {
        for (int32_t x = 0; x < image.Width; ++x) {
            if (IsFloat(kind)) {
                SetPixelAt(image, x, row,
                           PixelFloat{channel(random), channel(random), channel(random), channel(random)});
                continue;
            }
            const auto word = [&] { return static_cast<int32_t>(random() & 0xFFFF); };
            SetPixelAt(image, x, row, Pixel{word(), word(), word(), word()});
        }
    }
}

class RowConvertersModel : public testing::TestWithParam<ImageDataKind> {};

TEST_P(RowConvertersModel, EveryPackingIsWrittenAsTheModelHasIt) {
    std::mt19937 random = MakeRandom();
    for (const Model& model : models) {
        if (model.word == Model::Planes) continue;
        for (const int32_t width : {1, 5, 131}) {
            ImagePtr owner = MakeImage(width, 4, GetParam());
            FillRandomly(*owner, GetParam(), random);
            const int64_t rowBytes = PixelBytesOf(model) * width + 3;
            Bytes blob(static_cast<size_t>(rowBytes * 4), 0xA5);
            Image* image = owner.get();
            uint8_t* data = blob.data();
            ASSERT_TRUE(PixelConvert::ImageToBlob(image, static_cast<int32_t>(model.fourCC),
                                                  static_cast<int32_t>(rowBytes), data, false));
            ASSERT_EQ(blob, ModelBlob(model, *image, GetParam(), rowBytes, 0xA5))
                << "code " << model.fourCC << ", width " << width;
        }
    }
}

TEST_P(RowConvertersModel, EveryPackingIsReadAsTheModelHasIt) {
    std::mt19937 random = MakeRandom();
    for (const Model& model : models) {
        for (const int32_t width : {1, 5, 131}) {
            const int64_t rowBytes = PixelBytesOf(model) * width + 3;
            const int planes = model.word == Model::Planes ? 3 : 1;
            Bytes blob(static_cast<size_t>(rowBytes * 4 * planes));
            for (uint8_t& byte : blob)
                byte = static_cast<uint8_t>(random());
            ImagePtr converted = MakeImage(width, 4, GetParam());
            ImagePtr expected = MakeImage(width, 4, GetParam());
            Image* image = converted.get();
            ASSERT_TRUE(
                PixelConvert::BlobToImage(blob.data(), static_cast<uint32_t>(rowBytes), model.fourCC, image));
            ModelRead(model, blob, GetParam(), rowBytes, *expected);
            ASSERT_EQ(PixelBytes(*converted, GetParam()), PixelBytes(*expected, GetParam()))
                << "code " << model.fourCC << ", width " << width;
        }
    }
}

std::string KindName(const testing::TestParamInfo<ImageDataKind>& info) {
    switch (info.param) {
    case ImageData_RGBA8: return "RGBA8";
    case ImageData_RGBA16: return "RGBA16";
    case ImageData_RGBAHalf: return "RGBAHalf";
    case ImageData_RGBAFloat: return "RGBAFloat";
    }
    return "";
}

INSTANTIATE_TEST_SUITE_P(EachKind, RowConvertersModel,
                         testing::Values(ImageData_RGBA8, ImageData_RGBA16, ImageData_RGBAHalf,
                                         ImageData_RGBAFloat),
                         KindName);

} // namespace
