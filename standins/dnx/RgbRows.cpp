#include "dnx/RgbRows.h"

#include "dnx/CodeScale.h"

#include <vector>

namespace dnx {

namespace {

constexpr size_t rgbPixelBytes = 8;
constexpr float middle = 32768; ///< chroma of no colour, in words
constexpr int wordDepth = 16;

// Places of the words of a pixel.
constexpr size_t alphaAt = 0;
constexpr size_t redAt = 1;
constexpr size_t greenAt = 2;
constexpr size_t blueAt = 3;

// Planes of FFmpeg's R'G'B' frames.
constexpr int greenPlane = 0;
constexpr int bluePlane = 1;
constexpr int redPlane = 2;

void StorePixel(uint8_t* row, size_t x, uint32_t red, uint32_t green, uint32_t blue) {
    StoreSample<uint16_t>(row, 4 * x + alphaAt, 65535);
    StoreSample<uint16_t>(row, 4 * x + redAt, red);
    StoreSample<uint16_t>(row, 4 * x + greenAt, green);
    StoreSample<uint16_t>(row, 4 * x + blueAt, blue);
}

/// Rounds to nearest and limits to codes that aren't negative.
int32_t RoundToCode(float value, int32_t lowest, int32_t highest) {
    return std::min(std::max(static_cast<int32_t>(value + 0.5f), lowest), highest);
}
uint32_t RoundToWord(float value) { return static_cast<uint32_t>(RoundToCode(value, 0, 65535)); }

template <typename Sample>
void WriteRgbRow(const Planes<Sample>& planes, size_t row, int depth, uint8_t* __restrict output) {
    const CodeScale scale(depth, wordDepth);
    const Sample* const red = planes.Row(redPlane, row);
    const Sample* const green = planes.Row(greenPlane, row);
    const Sample* const blue = planes.Row(bluePlane, row);
    for (size_t x = 0, width = planes.Width(); x < width; ++x)
        StorePixel(output, x, scale(red[x]), scale(green[x]), scale(blue[x]));
}

void ReadRgbRow(const uint8_t* input, size_t row, int depth, const Planes<uint16_t>& planes) {
    const CodeScale scale(wordDepth, depth);
    const auto code = [&](size_t x, size_t place) {
        return static_cast<uint16_t>(scale(LoadSample<uint16_t>(input, 4 * x + place)));
    };
    uint16_t* const red = planes.Row(redPlane, row);
    uint16_t* const green = planes.Row(greenPlane, row);
    uint16_t* const blue = planes.Row(bluePlane, row);
    for (size_t x = 0, width = planes.Width(); x < width; ++x) {
        red[x] = code(x, redAt);
        green[x] = code(x, greenAt);
        blue[x] = code(x, blueAt);
    }
}

/// Converts rows of Y'CbCr planes to R'G'B' words. It keeps the chroma of one row, a sample for each pixel.
template <typename Sample>
class YCbCrToRgb {
public:
    YCbCrToRgb(const AVFrame& frame, const PlaneFormat& format, LumaWeights weights)
        : planes_(frame), half_(format.color == PlaneColor::YCbCr422), matrix_(weights),
          scale_(static_cast<float>(1 << (wordDepth - format.depth))), cb_(planes_.Width()),
          cr_(planes_.Width()) {}

    void Convert(size_t row, uint8_t* output) {
        Spread(planes_.Row(1, row), cb_);
        Spread(planes_.Row(2, row), cr_);
        ConvertPixels(planes_.Row(0, row), cb_.data(), cr_.data(), output);
    }

private:
    void ConvertPixels(const Sample* luma, const float* cb, const float* cr,
                       uint8_t* __restrict output) const {
        const VideoMatrix matrix = matrix_;
        const float scale = scale_;
        for (size_t x = 0, width = planes_.Width(); x < width; ++x) {
            const float y = static_cast<float>(luma[x]) * scale;
            StorePixel(output, x, RoundToWord(y + matrix.redFromCr * cr[x]),
                       RoundToWord(y + matrix.greenFromCb * cb[x] + matrix.greenFromCr * cr[x]),
                       RoundToWord(y + matrix.blueFromCb * cb[x]));
        }
    }

    float Difference(Sample code) const { return static_cast<float>(code) * scale_ - middle; }

    /// Gives each pixel its chroma.
    void Spread(const Sample* codes, std::vector<float>& chroma) const {
        const size_t width = planes_.Width();
        if (!half_) {
            for (size_t x = 0; x < width; ++x)
                chroma[x] = Difference(codes[x]);
            return;
        }
        const size_t last = (width - 1) / 2;
        for (size_t pair = 0; pair < last; ++pair) {
            chroma[2 * pair] = Difference(codes[pair]);
            chroma[2 * pair + 1] = (Difference(codes[pair]) + Difference(codes[pair + 1])) / 2;
        }
        for (size_t x = 2 * last; x < width; ++x)
            chroma[x] = Difference(codes[last]);
    }

    Planes<Sample> planes_;
    bool half_; ///< a chroma sample for two pixels
    VideoMatrix matrix_;
    float scale_; ///< from codes to words
    std::vector<float> cb_;
    std::vector<float> cr_;
};

/// Takes values in words to codes of a depth, which it rounds to nearest and limits to those of video.
class CodesOfWords {
public:
    explicit CodesOfWords(int depth)
        : scale_(1.0f / static_cast<float>(1 << (wordDepth - depth))),
          lowest_(static_cast<int32_t>(LowestCode(depth))),
          highest_(static_cast<int32_t>(HighestCode(depth))) {}

    int32_t operator()(float word) const { return RoundToCode(word * scale_, lowest_, highest_); }

private:
    float scale_;
    int32_t lowest_;
    int32_t highest_;
};

/// Converts rows of R'G'B' words to 4:2:2 planes. It keeps the chroma of each pixel of a row, with one more
/// on both sides.
template <typename Sample>
class RgbToYCbCr {
public:
    RgbToYCbCr(const AVFrame& frame, int depth)
        : planes_(frame), codes_(depth), cb_(planes_.Width() + 2), cr_(planes_.Width() + 2) {}

    void Convert(const uint8_t* input, size_t row) {
        ConvertPixels(input, planes_.Row(0, row), cb_.data() + 1, cr_.data() + 1);
        Halve(cb_, planes_.Row(1, row));
        Halve(cr_, planes_.Row(2, row));
    }

private:
    void ConvertPixels(const uint8_t* input, Sample* __restrict luma, float* __restrict cb,
                       float* __restrict cr) const {
        constexpr VideoMatrix matrix(weightsBT709);
        const CodesOfWords codes = codes_;
        for (size_t x = 0, width = planes_.Width(); x < width; ++x) {
            const auto red = static_cast<float>(LoadSample<uint16_t>(input, 4 * x + redAt));
            const auto green = static_cast<float>(LoadSample<uint16_t>(input, 4 * x + greenAt));
            const auto blue = static_cast<float>(LoadSample<uint16_t>(input, 4 * x + blueAt));
            const float y = matrix.red * red + matrix.green * green + matrix.blue * blue;
            luma[x] = static_cast<Sample>(codes(y));
            cb[x] = matrix.cbScale * (blue - y);
            cr[x] = matrix.crScale * (red - y);
        }
    }

    void Halve(std::vector<float>& chroma, Sample* __restrict samples) const {
        const size_t width = planes_.Width();
        chroma[0] = chroma[1];
        chroma[width + 1] = chroma[width];
        const CodesOfWords codes = codes_;
        const float* const first = chroma.data();
        for (size_t pair = 0; pair < (width + 1) / 2; ++pair) {
            const float* const three = first + 2 * pair;
            const float mean = (three[0] + 2 * three[1] + three[2]) / 4;
            samples[pair] = static_cast<Sample>(codes(mean + middle));
        }
    }

    Planes<Sample> planes_;
    CodesOfWords codes_;
    std::vector<float> cb_;
    std::vector<float> cr_;
};

template <typename Sample>
void WriteYCbCr(const AVFrame& frame, const PlaneFormat& format, LumaWeights weights, uint8_t* output) {
    const Planes<Sample> planes(frame);
    YCbCrToRgb<Sample> converter(frame, format, weights);
    for (size_t row = 0; row < planes.Height(); ++row)
        converter.Convert(row, output + row * planes.Width() * rgbPixelBytes);
}

template <typename Sample>
void ReadYCbCr(const uint8_t* input, int depth, AVFrame& frame) {
    const Planes<Sample> planes(frame);
    RgbToYCbCr<Sample> converter(frame, depth);
    for (size_t row = 0; row < planes.Height(); ++row)
        converter.Convert(input + row * planes.Width() * rgbPixelBytes, row);
}

} // namespace

void WriteRgb(const AVFrame& frame, const PlaneFormat& planes, LumaWeights weights, uint8_t* output) {
    if (planes.color != PlaneColor::Rgb) {
        if (planes.depth == 8)
            WriteYCbCr<uint8_t>(frame, planes, weights, output);
        else
            WriteYCbCr<uint16_t>(frame, planes, weights, output);
        return;
    }
    const Planes<uint16_t> rows(frame);
    for (size_t row = 0; row < rows.Height(); ++row)
        WriteRgbRow(rows, row, planes.depth, output + row * rows.Width() * rgbPixelBytes);
}

void ReadRgb(const uint8_t* input, const PlaneFormat& planes, AVFrame& frame) {
    if (planes.color != PlaneColor::Rgb) {
        if (planes.depth == 8)
            ReadYCbCr<uint8_t>(input, planes.depth, frame);
        else
            ReadYCbCr<uint16_t>(input, planes.depth, frame);
        return;
    }
    const Planes<uint16_t> rows(frame);
    for (size_t row = 0; row < rows.Height(); ++row)
        ReadRgbRow(input + row * rows.Width() * rgbPixelBytes, row, planes.depth, rows);
}

} // namespace dnx
