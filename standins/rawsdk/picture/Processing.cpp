#include "rawsdk/picture/Processing.h"

#include <utility>

namespace rawsdk {

namespace {

constexpr float lumaRed = 0.2126f;
constexpr float lumaGreen = 0.7152f;
constexpr float lumaBlue = 0.0722f;

/// A code as a word; 0 for what is no number.
uint16_t ToWord(float code) {
    const float limited = code > 0 ? (code < 65535 ? code : 65535) : 0;
    return static_cast<uint16_t>(limited + 0.5f);
}

void Saturate(const PlanarPicture& output, uint32_t row, float saturation) {
    uint16_t* const red = output.Row(0, row);
    uint16_t* const green = output.Row(1, row);
    uint16_t* const blue = output.Row(2, row);
    for (uint32_t x = 0; x < output.width; ++x) {
        const float luma = lumaRed * red[x] + lumaGreen * green[x] + lumaBlue * blue[x];
        red[x] = ToWord(luma + (red[x] - luma) * saturation);
        green[x] = ToWord(luma + (green[x] - luma) * saturation);
        blue[x] = ToWord(luma + (blue[x] - luma) * saturation);
    }
}

} // namespace

Processing::Processing(const ToneParameters& parameters, std::shared_ptr<const ColorTable> table)
    : curves_{ToneCurve(parameters, 0), ToneCurve(parameters, 1), ToneCurve(parameters, 2)},
      saturation_(parameters.saturation), table_(std::move(table)) {}

void Processing::Process(const PlanarPicture& colors, const PlanarPicture& output, uint32_t firstRow,
                         uint32_t rows) const {
    for (uint32_t row = firstRow; row < firstRow + rows; ++row) {
        for (size_t channel = 0; channel < curves_.size(); ++channel)
            curves_[channel].Apply(colors.Row(channel, row), output.Row(channel, row), output.width);
        if (saturation_ != 1) Saturate(output, row, saturation_);
        if (table_ != nullptr) ApplyTable(output, row);
    }
}

void Processing::ApplyTable(const PlanarPicture& output, uint32_t row) const {
    for (uint32_t x = 0; x < output.width; ++x) {
        const std::array<uint16_t, 3> color =
            table_->Apply({output.Row(0, row)[x], output.Row(1, row)[x], output.Row(2, row)[x]});
        for (size_t channel = 0; channel < color.size(); ++channel)
            output.Row(channel, row)[x] = color[channel];
    }
}

} // namespace rawsdk
