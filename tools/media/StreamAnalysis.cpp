#include "media/StreamAnalysis.h"

#include "framework/CxAVTypes.h"
#include "iostream/IOHEVCNALPayload.h"
#include "iostream/SampleFormat.h"

#include <algorithm>

namespace {

constexpr int32_t samplesForFrameTypes = 12;

class AVCStream : public IOStream::IOH264NALPayload {
public:
    static constexpr const char* recordName = "avcC";
    static constexpr uint32_t recordTag = FourCC("avcC");
    static constexpr size_t lengthSizeByte = 4;
    static constexpr bool countsReferences = true;
    AVCStream() : IOH264NALPayload(true) {}
};

class HEVCStream : public IOStream::IOHEVCNALPayload {
public:
    static constexpr const char* recordName = "hvcC";
    static constexpr uint32_t recordTag = FourCC("hvcC");
    static constexpr size_t lengthSizeByte = 21;
    static constexpr bool countsReferences = false;
    HEVCStream() : IOHEVCNALPayload(true) {}
};

void AppendBytes(IOStream::IOH264NALPayload& stream, const std::vector<uint8_t>& bytes) {
    stream.AppendData(bytes.data(), static_cast<uint32_t>(bytes.size()));
}

/// A payload with the track's parameter sets and one of its samples.
template <class Stream>
class SampleStream {
public:
    SampleStream(MovieTrackSource& source, int32_t sample) {
        const std::vector<uint8_t>& configuration = source.Info().extraData;
        const bool isByteStream = configuration.empty() || configuration[0] == 0;
        if (isByteStream)
            AppendBytes(stream_, configuration);
        else
            ReadRecord(configuration);
        int32_t size = 0;
        const uint8_t* const bytes = source.ReadSample(sample, nullptr, size);
        if (bytes == nullptr) return;
        if (lengthSize_ == 0)
            stream_.AppendData(bytes, static_cast<uint32_t>(size));
        else
            stream_.AppendSample(bytes, static_cast<uint32_t>(size), lengthSize_);
    }
    Stream& Payload() { return stream_; }
    uint32_t LengthSize() const { return lengthSize_; }

private:
    void ReadRecord(const std::vector<uint8_t>& record) {
        lengthSize_ = stream_.ParseConfigRecord(record, Stream::recordTag);
        // A record without sets still tells of the length fields; the sets are in the samples then.
        if (lengthSize_ == 0 && record.size() > Stream::lengthSizeByte)
            lengthSize_ = IOStream::LengthSize(record[Stream::lengthSizeByte]);
    }

    Stream stream_;
    uint32_t lengthSize_ = 0; ///< 0: samples are byte streams
};

template <class Stream>
StreamAnalysis Analyse(MovieTrackSource& source) {
    StreamAnalysis analysis;
    SampleStream<Stream> first(source, 0);
    analysis.lengthSize = first.LengthSize();
    analysis.source = analysis.lengthSize > 0 ? Stream::recordName : "Annex B";
    analysis.countsReferences = Stream::countsReferences;
    analysis.info = first.Payload().GetStreamInfo();
    // A payload keeps the type of its first slice, so each sample has one of its own.
    const int32_t count = std::min(samplesForFrameTypes, source.GetSampleCount());
    for (int32_t sample = 0; sample < count; ++sample)
        analysis.frameTypes.push_back(SampleStream<Stream>(source, sample).Payload().GetFrameType());
    return analysis;
}

} // namespace

std::optional<StreamAnalysis> AnalyseStream(MovieTrackSource& source) {
    if (source.Info().codecName == "h264") return Analyse<AVCStream>(source);
    if (source.Info().codecName == "hevc") return Analyse<HEVCStream>(source);
    return std::nullopt;
}
