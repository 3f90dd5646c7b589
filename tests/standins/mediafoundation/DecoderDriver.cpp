#include "standins/mediafoundation/DecoderDriver.h"

#include <algorithm>

DecoderDriver::DecoderDriver(uint32_t width, uint32_t height, const GUID& output)
    : output_(output), transform_(NewTransform(MFT_CATEGORY_VIDEO_DECODER)) {
    SetInput(width, height);
    SetOutput(output);
}

HRESULT DecoderDriver::SetInput(uint32_t width, uint32_t height) {
    const Ptr<IMFMediaType> type = InputTypeOf(*transform_, MFVideoFormat_H264);
    if (width != 0) type->SetUINT64(MF_MT_FRAME_SIZE, PairOf(width, height));
    type->SetUINT32(MF_MT_INTERLACE_MODE, MFVideoInterlace_MixedInterlaceOrProgressive);
    return transform_->SetInputType(0, type.get(), 0);
}

HRESULT DecoderDriver::SetOutput(const GUID& subtype) {
    const Ptr<IMFMediaType> type = OutputTypeOf(*transform_, subtype);
    return type != nullptr ? transform_->SetOutputType(0, type.get(), 0) : E_FAIL;
}

void DecoderDriver::Take(std::vector<TimedBytes>& outputs) {
    for (;;) {
        TimedBytes output;
        const HRESULT result = TakeOne(*transform_, output);
        if (result == MF_E_TRANSFORM_STREAM_CHANGE) {
            ++streamChanges;
            SetOutput(output_);
        } else if (FAILED(result)) {
            return;
        } else {
            outputs.push_back(std::move(output));
        }
    }
}

std::vector<TimedBytes> DecoderDriver::Decode(const std::vector<TimedBytes>& samples) {
    std::vector<TimedBytes> outputs;
    for (const TimedBytes& sample : samples) {
        Feed(*transform_, sample);
        Take(outputs);
    }
    return outputs;
}

std::vector<TimedBytes> DecoderDriver::Drain() {
    std::vector<TimedBytes> outputs;
    Tell(*transform_, MFT_MESSAGE_NOTIFY_END_OF_STREAM);
    Tell(*transform_, MFT_MESSAGE_COMMAND_DRAIN);
    Take(outputs);
    return outputs;
}

std::vector<TimedBytes> DecoderDriver::DecodeAll(const std::vector<TimedBytes>& samples) {
    std::vector<TimedBytes> outputs = Decode(samples);
    std::ranges::move(Drain(), std::back_inserter(outputs));
    return outputs;
}

std::vector<Bytes> BytesOf(const std::vector<TimedBytes>& outputs) {
    std::vector<Bytes> all;
    for (const TimedBytes& output : outputs)
        all.push_back(output.bytes);
    return all;
}

std::vector<int64_t> TimesOf(const std::vector<TimedBytes>& outputs) {
    std::vector<int64_t> times;
    for (const TimedBytes& output : outputs)
        times.push_back(output.time.value_or(-1));
    return times;
}

std::vector<int64_t> TimesOfFirst(size_t count) {
    std::vector<int64_t> times;
    for (size_t number = 0; number < count; ++number)
        times.push_back(TimeOf(number));
    return times;
}
