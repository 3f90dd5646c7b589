#include "dnx/RgbRows.h"

#include "dnx/CodeScale.h"
#include "dnx/RgbPixels.h"
#include "dnx/RgbWords.h"

#include <vector>

namespace dnx {

namespace {

constexpr size_t rgbPixelBytes = 8;
constexpr int wordDepth = 16;

// Planes of FFmpeg's R'G'B' frames.
constexpr int greenPlane = 0;
constexpr int bluePlane = 1;
constexpr int redPlane = 2;

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
        const size_t width = planes_.Width();
        Spread(1, row, cb_);
        Spread(2, row, cr_);
        StoreRgbPixelsVector({Codes(0, row, width), scale_, cb_.data(), cr_.data()}, matrix_, width, output);
    }

private:
    /// A row of `count` codes, valid until the next one: bytes are made words.
    const uint16_t* Codes(int plane, size_t row, size_t count) {
        const Sample* const samples = planes_.Row(plane, row);
        if constexpr (sizeof(Sample) == sizeof(uint16_t)) {
            return samples;
        } else {
            wide_.assign(samples, samples + count);
            return wide_.data();
        }
    }

    /// Gives each pixel its chroma.
    void Spread(int plane, size_t row, std::vector<float>& chroma) {
        const size_t width = planes_.Width();
        if (half_) {
            SpreadChromaVector(Codes(plane, row, (width + 1) / 2), scale_, width, chroma.data());
            return;
        }
        const uint16_t* const codes = Codes(plane, row, width);
        for (size_t x = 0; x < width; ++x)
            chroma[x] = static_cast<float>(codes[x]) * scale_ - noChroma;
    }

    Planes<Sample> planes_;
    bool half_; ///< a chroma sample for two pixels
    VideoMatrix matrix_;
    float scale_; ///< from codes to words
    std::vector<uint16_t> wide_;
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
            samples[pair] = static_cast<Sample>(codes(mean + noChroma));
        }
    }

    Planes<Sample> planes_;
    CodesOfWords codes_;
    std::vector<float> cb_;
    std::vector<float> cr_;
};

template <typename Sample>
void WriteYCbCr(const AVFrame& frame, const PlaneFormat& format, RowBand band, LumaWeights weights,
                uint8_t* output) {
    const Planes<Sample> planes(frame);
    YCbCrToRgb<Sample> converter(frame, format, weights);
    for (size_t row = band.first; row < band.end; ++row)
        converter.Convert(row, output + row * planes.Width() * rgbPixelBytes);
}

template <typename Sample>
void ReadYCbCr(const uint8_t* input, int depth, RowBand band, AVFrame& frame) {
    const Planes<Sample> planes(frame);
    RgbToYCbCr<Sample> converter(frame, depth);
    for (size_t row = band.first; row < band.end; ++row)
        converter.Convert(input + row * planes.Width() * rgbPixelBytes, row);
}

} // namespace

void WriteRgb(const AVFrame& frame, const PlaneFormat& planes, RowBand band, LumaWeights weights,
              uint8_t* output) {
    if (planes.color != PlaneColor::Rgb) {
        if (planes.depth == 8)
            WriteYCbCr<uint8_t>(frame, planes, band, weights, output);
        else
            WriteYCbCr<uint16_t>(frame, planes, band, weights, output);
        return;
    }
    const Planes<uint16_t> rows(frame);
    for (size_t row = band.first; row < band.end; ++row)
        WriteRgbRow(rows, row, planes.depth, output + row * rows.Width() * rgbPixelBytes);
}

void ReadRgb(const uint8_t* input, const PlaneFormat& planes, RowBand band, AVFrame& frame) {
    if (planes.color != PlaneColor::Rgb) {
        if (planes.depth == 8)
            ReadYCbCr<uint8_t>(input, planes.depth, band, frame);
        else
            ReadYCbCr<uint16_t>(input, planes.depth, band, frame);
        return;
    }
    const Planes<uint16_t> rows(frame);
    for (size_t row = band.first; row < band.end; ++row)
        ReadRgbRow(input + row * rows.Width() * rgbPixelBytes, row, planes.depth, rows);
}

} // namespace dnx
