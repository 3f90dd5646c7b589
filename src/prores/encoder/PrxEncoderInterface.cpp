#include "prores/Prx.h"
#include "prores/encoder/PrxEncoder.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>

struct PrxEncoderHandle {
    PrxEncoder* encoder;
};

namespace {

constexpr int32_t wrongArgument = -50;
constexpr int32_t wrongOptionSize = -2184;
constexpr int32_t unknownOption = -2195;

struct OptionRow {
    uint32_t name;
    int32_t PrxEncoderOptions::*field;
    int32_t largest; ///< the least is 0
};
constexpr int32_t noLimit = std::numeric_limits<int32_t>::max();
constexpr OptionRow optionRows[] = {
    {0x66617370, &PrxEncoderOptions::aspectRatioCode, 3},        // "fasp"
    {0x66636f6c, &PrxEncoderOptions::colorPrimaries, noLimit},   // "fcol"
    {0x66667073, &PrxEncoderOptions::frameRateCode, 8},          // "ffps"
    {0x666d6174, &PrxEncoderOptions::colorMatrix, noLimit},      // "fmat"
    {0x66786672, &PrxEncoderOptions::transferFunction, noLimit}, // "fxfr"
};

} // namespace

PrxEncoderRef PrxCreateEncoder(uint32_t workerCount, PrxThreadStartHook threadStartHook) {
    auto encoder = std::make_unique<PrxEncoder>(static_cast<int32_t>(workerCount), threadStartHook);
    auto* handle = new PrxEncoderHandle{encoder.get()};
    encoder.release();
    return handle;
}

int32_t PrxEncodeFrame(PrxEncoderRef handle, const PrxEncodeSettings* settings, const PrxPixelBuffer* pixels,
                       uint8_t* output, int32_t capacity, int32_t* outputSize, uint8_t* allOpaque) {
    if (handle == nullptr || handle->encoder == nullptr || settings == nullptr || pixels == nullptr ||
        output == nullptr) {
        return wrongArgument;
    }
    const PrxEncodeRequest request{*settings, *pixels, {output, static_cast<size_t>(std::max(capacity, 0))}};
    PrxEncodedFrame frame;
    const int32_t result = handle->encoder->EncodeFrame(request, &frame);
    if (result != 0) return result;
    if (outputSize != nullptr) *outputSize = frame.size;
    if (allOpaque != nullptr) *allOpaque = frame.allOpaque ? 1 : 0;
    return 0;
}

int32_t PrxSetEncoderOption(PrxEncoderRef handle, uint32_t optionFourCC, uint32_t size, const void* value) {
    int32_t given;
    if (handle == nullptr || handle->encoder == nullptr || value == nullptr) return wrongArgument;
    if (size != sizeof given) return wrongOptionSize;
    const auto* row = std::ranges::find(optionRows, optionFourCC, &OptionRow::name);
    if (row == std::end(optionRows)) return unknownOption;
    std::memcpy(&given, value, sizeof given);
    if (given < 0 || given > row->largest) return wrongArgument;
    handle->encoder->options.*row->field = given;
    return 0;
}

void PrxDeleteEncoder(PrxEncoderRef handle) {
    if (handle == nullptr) return;
    delete handle->encoder;
    handle->encoder = nullptr;
    delete handle;
}
