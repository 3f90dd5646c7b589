#include "prores/Prx.h"
#include "prores/PrxDecoder.h"

#include <memory>

struct PrxDecoderHandle {
    PrxDecoder* decoder;
};

namespace {

int32_t ModeOf(uint32_t quality) {
    switch (quality) {
    case 1: return 2;
    case 2: return 6;
    default: return 1;
    }
}

} // namespace

PrxDecoderRef PrxCreateDecoder(uint32_t workerCount, PrxThreadStartHook threadStartHook) {
    auto decoder = std::make_unique<PrxDecoder>(static_cast<int32_t>(workerCount), threadStartHook);
    auto* handle = new PrxDecoderHandle{decoder.get()};
    decoder.release();
    return handle;
}

int32_t PrxDecodeFrame(PrxDecoderRef handle, const uint8_t* data, int32_t size, const PrxPixelBuffer* buffer,
                       uint32_t quality, uint8_t ignoreAlpha) {
    constexpr int32_t missingArgument = -50;
    if (handle == nullptr || handle->decoder == nullptr || data == nullptr || buffer == nullptr) {
        return missingArgument;
    }
    const PrxBufferPiece input{data, size > 0 ? static_cast<uint64_t>(size) : 0, nullptr};
    const PrxOutputTarget target{buffer->baseAddress, buffer->rowBytes, buffer->pixelFormat, buffer->width,
                                 buffer->height};
    return handle->decoder->decodeFrame(input, target, ModeOf(quality), ignoreAlpha != 0, nullptr);
}

void PrxDeleteDecoder(PrxDecoderRef handle) {
    if (handle == nullptr) return;
    delete handle->decoder;
    handle->decoder = nullptr;
    delete handle;
}
