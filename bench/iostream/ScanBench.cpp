// The scan of a byte stream on one thread: 200 MB of video beside FFmpeg's parser over the same bytes, and
// 100 MB of each kind of data that is all trouble beside half of it, which is to take half the time.

#include "StreamMaterial.h"

#include "iostream/PayloadAccess.h"

#include <benchmark/benchmark.h>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <algorithm>
#include <array>
#include <memory>
#include <string>

namespace {

using Bytes = std::vector<uint8_t>;

/// Data that is scanned again and again.
class RescannedPayload : public PayloadAccess<IOStream::IOH264NALPayload> {
public:
    explicit RescannedPayload(std::span<const uint8_t> bytes) {
        data.assign(bytes.begin(), bytes.end());
        dataSize = static_cast<uint32_t>(bytes.size());
    }
    void ScanAll() {
        scanPos = 0;
        entries.clear();
        lastParsed = -1;
        ScanData();
        GetStreamInfo();
    }
};

void CountBytes(benchmark::State& state, size_t bytes) {
    state.SetBytesProcessed(static_cast<int64_t>(bytes) * static_cast<int64_t>(state.iterations()));
}

void Scan(benchmark::State& state, std::span<const uint8_t> bytes) {
    RescannedPayload payload(bytes);
    for (auto _ : state)
        payload.ScanAll();
    if (payload.entries.size() < ByteStream().samples.size()) state.SkipWithError("units are missing");
    CountBytes(state, bytes.size());
}

struct CloseParser {
    void operator()(AVCodecParserContext* parser) const { av_parser_close(parser); }
};
struct FreeContext {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};

/// Walks a byte stream with FFmpeg's parser.
/// @return the frames in it
size_t Parse(std::span<const uint8_t> bytes) {
    const std::unique_ptr<AVCodecContext, FreeContext> context(
        avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_H264)));
    const std::unique_ptr<AVCodecParserContext, CloseParser> parser(av_parser_init(AV_CODEC_ID_H264));
    size_t frames = 0;
    while (!bytes.empty()) {
        uint8_t* frame = nullptr;
        int frameSize = 0;
        const int taken = av_parser_parse2(parser.get(), context.get(), &frame, &frameSize, bytes.data(),
                                           static_cast<int>(bytes.size()), AV_NOPTS_VALUE, AV_NOPTS_VALUE, 0);
        bytes = bytes.subspan(static_cast<size_t>(taken));
        frames += frameSize > 0 ? 1 : 0;
    }
    return frames;
}

void ScanVideo(benchmark::State& state) { Scan(state, ByteStream().data); }

void ParseVideo(benchmark::State& state) {
    const StreamMaterial& stream = ByteStream();
    for (auto _ : state)
        if (Parse(stream.data) + 1 < stream.samples.size()) state.SkipWithError("frames are missing");
    CountBytes(state, stream.data.size());
}

/// `size` bytes of one pattern.
Bytes Repeated(const Bytes& pattern, size_t size) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = pattern[i % pattern.size()];
    return bytes;
}

void ScanPattern(benchmark::State& state, const Bytes& pattern, size_t size) {
    RescannedPayload payload(Repeated(pattern, size));
    for (auto _ : state)
        payload.ScanAll();
    CountBytes(state, size);
}

/// Bytes that are appended one by one.
void AppendBytes(benchmark::State& state, size_t size) {
    const Bytes zeros(size);
    for (auto _ : state) {
        IOStream::IOH264NALPayload payload(true);
        for (const uint8_t& byte : zeros)
            payload.AppendData(&byte, 1);
        benchmark::DoNotOptimize(payload.GetData());
    }
    CountBytes(state, size);
}

template <class Function, class... Arguments>
void Register(const std::string& name, Function function, Arguments... arguments) {
    benchmark::RegisterBenchmark(name.c_str(), function, arguments...)->Unit(benchmark::kMillisecond);
}

struct Pattern {
    const char* name;
    Bytes bytes;
    size_t size; ///< of the data that repeats it
};

bool RegisterAll() {
    constexpr size_t whole = 100000000;
    Bytes pictureSet(whole);
    std::ranges::copy(std::array<uint8_t, 5>{0, 0, 0, 1, 0x68}, pictureSet.begin());
    // Each empty slice costs an exception.
    const Pattern patterns[] = {
        {"start_codes", {0, 0, 1}, whole},
        {"zeros", {0}, whole},
        {"00_00_03", {0, 0, 3}, whole},
        {"picture_set_of_zeros", pictureSet, whole},
        {"empty_sequence_sets", {0, 0, 1, 0x67}, whole},
        {"empty_slices_10MB", {0, 0, 1, 0x65}, whole / 10},
    };
    Register("iostream/scan_video/ours", ScanVideo);
    Register("iostream/scan_video/h264_parser", ParseVideo);
    for (const Pattern& pattern : patterns) {
        const std::string what = std::string("iostream/scan_") + pattern.name;
        Register(what + "/ours", ScanPattern, pattern.bytes, pattern.size);
        Register(what + "/half_of_it", ScanPattern, pattern.bytes, pattern.size / 2);
    }
    Register("iostream/append_bytes/ours", AppendBytes, whole);
    Register("iostream/append_bytes/half_of_it", AppendBytes, whole / 2);
    return true;
}

const bool registered = RegisterAll();

} // namespace
