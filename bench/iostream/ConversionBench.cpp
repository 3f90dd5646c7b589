// Samples of 200 MB of video from byte stream to length-prefixed form and back, on one thread, beside a
// memcpy of the same samples and FFmpeg's filter.

#include "StreamMaterial.h"

#include "host/Platform.h"
#include "iostream/IOHEVCNALPayload.h"

#include <benchmark/benchmark.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/bsf.h>
}

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

using namespace IOStream;
using Bytes = std::vector<uint8_t>;

void CountBytes(benchmark::State& state, const StreamMaterial& material) {
    state.SetBytesProcessed(static_cast<int64_t>(material.data.size()) *
                            static_cast<int64_t>(state.iterations()));
}

void Copy(benchmark::State& state) {
    const StreamMaterial& stream = ByteStream();
    const auto bySize = [](std::span<uint8_t> a, std::span<uint8_t> b) { return a.size() < b.size(); };
    Bytes copy(std::ranges::max(stream.samples, bySize).size());
    for (auto _ : state) {
        for (const std::span<uint8_t> sample : stream.samples) {
            std::memcpy(copy.data(), sample.data(), sample.size());
            benchmark::ClobberMemory();
        }
    }
    CountBytes(state, stream);
}

void ToAnnexB(benchmark::State& state) {
    const StreamMaterial track = LengthPrefixedSamples(3);
    Bytes out;
    for (auto _ : state)
        for (const std::span<uint8_t> sample : track.samples)
            if (!IOH264NALPayload::s_ConvertToAnnexB(sample.data(), sample.size(), 3, out))
                state.SkipWithError("the conversion failed");
    CountBytes(state, track);
}

void ToAnnexBInPlace(benchmark::State& state) {
    StreamMaterial track = LengthPrefixedSamples(4);
    const Bytes original = track.storage;
    Bytes out;
    for (auto _ : state) {
        for (const std::span<uint8_t> sample : track.samples)
            if (!IOH264NALPayload::s_ConvertToAnnexB(sample.data(), sample.size(), 4, out))
                state.SkipWithError("the conversion failed");
        state.PauseTiming();
        std::ranges::copy(original, track.storage.begin());
        state.ResumeTiming();
    }
    CountBytes(state, track);
}

void ToLengthPrefixed(benchmark::State& state) {
    const StreamMaterial& stream = ByteStream();
    for (auto _ : state) {
        for (const std::span<uint8_t> sample : stream.samples) {
            uint8_t* out = nullptr;
            uint64_t size = 0;
            if (!IOHEVCNALPayload::s_ConvertToHVCCStream(sample.data(), sample.size(), out, size))
                state.SkipWithError("the conversion failed");
            Platform::FreeMemAligned(out);
        }
    }
    CountBytes(state, stream);
}

struct FreeFilter {
    void operator()(AVBSFContext* filter) const { av_bsf_free(&filter); }
};
struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using Filter = std::unique_ptr<AVBSFContext, FreeFilter>;

/// FFmpeg's filter for samples with length fields of four bytes; null without it.
Filter OpenFilter() {
    Bytes record;
    const std::span<uint8_t> stream = ByteStream().samples.front();
    if (!IOH264NALPayload::s_ConvertToAVCC(stream.data(), static_cast<uint32_t>(stream.size()), record))
        return nullptr;
    AVBSFContext* filter = nullptr;
    if (av_bsf_alloc(av_bsf_get_by_name("h264_mp4toannexb"), &filter) != 0) return nullptr;
    Filter owner(filter);
    filter->par_in->codec_id = AV_CODEC_ID_H264;
    filter->par_in->extradata =
        static_cast<uint8_t*>(av_mallocz(record.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    std::ranges::copy(record, filter->par_in->extradata);
    filter->par_in->extradata_size = static_cast<int>(record.size());
    return av_bsf_init(filter) == 0 ? std::move(owner) : nullptr;
}

/// Sends one sample through, without a copy on the way in.
bool FilterSample(AVBSFContext* filter, AVPacket* packet, std::span<uint8_t> sample) {
    packet->buf = av_buffer_create(
        sample.data(), sample.size(), [](void*, uint8_t*) {}, nullptr, 0);
    packet->data = sample.data();
    packet->size = static_cast<int>(sample.size());
    const bool isDone = av_bsf_send_packet(filter, packet) == 0 && av_bsf_receive_packet(filter, packet) == 0;
    av_packet_unref(packet);
    return isDone;
}

void ToAnnexBByFilter(benchmark::State& state) {
    const StreamMaterial track = LengthPrefixedSamples(4);
    const Filter filter = OpenFilter();
    const std::unique_ptr<AVPacket, FreePacket> packet(av_packet_alloc());
    if (!filter) {
        state.SkipWithError("no filter");
        return;
    }
    for (auto _ : state)
        for (const std::span<uint8_t> sample : track.samples)
            if (!FilterSample(filter.get(), packet.get(), sample)) state.SkipWithError("the filter failed");
    CountBytes(state, track);
}

BENCHMARK(ToAnnexB)->Name("iostream/to_annexb/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(Copy)->Name("iostream/to_annexb/memcpy")->Unit(benchmark::kMillisecond);
BENCHMARK(ToAnnexBByFilter)->Name("iostream/to_annexb/h264_mp4toannexb")->Unit(benchmark::kMillisecond);
BENCHMARK(ToAnnexBInPlace)->Name("iostream/to_annexb_in_place/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(Copy)->Name("iostream/to_annexb_in_place/memcpy")->Unit(benchmark::kMillisecond);
BENCHMARK(ToLengthPrefixed)->Name("iostream/to_length_prefixed/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(Copy)->Name("iostream/to_length_prefixed/memcpy")->Unit(benchmark::kMillisecond);

} // namespace
