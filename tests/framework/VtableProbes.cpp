#include "framework/VtableProbes.h"

namespace VtableProbes {

std::vector<std::string> log;

namespace {

/// Writes down a call and gives the value that the operation is to return.
template <typename Value>
Value Called(const std::string& call, Value value) {
    log.push_back(call);
    return value;
}

std::string Text(int64_t number) { return std::to_string(number); }

class Codec : public CxAbstractAVCodec {
public:
    Codec() : CxAbstractAVCodec(CxAV_DECODE, nullptr) {}
    ~Codec() override { log.emplace_back("destroyed"); }

    CxAVError GetDecodedFrame(int32_t frame, Image*& image) override {
        return Called("GetDecodedFrame " + Text(frame) + (image == nullptr ? " null" : ""), CxAV_READ_FAILED);
    }
    void Flush() override { log.emplace_back("Flush"); }
    std::string GetName() override { return Called<std::string>("GetName", "probe"); }
    int32_t GetWidth() override { return Called("GetWidth", 11); }
    int32_t GetHeight() override { return Called("GetHeight", 12); }
    CxAVError Open() override { return Called("Open", CxAV_UNSUPPORTED); }
    CxAVError SetEncoderSettings(CxVideoSettings& settings) override {
        return Called("SetEncoderSettings " + Text(settings.width), CxAV_FAILED);
    }
    CxAVError EncodeFrame(Image*&, CxEncodedFrame& frame) override {
        return Called("EncodeFrame " + Text(frame.codecTag), CxAV_INVALID_STATE);
    }
    int32_t GetTargetFrameSize(CxVideoSettings settings) override {
        return Called("GetTargetFrameSize " + Text(settings.height), 13);
    }
};

class TemporalDecoder : public CxAbstractTemporalDecoder<Frame> {
public:
    TemporalDecoder() : CxAbstractTemporalDecoder(CxAV_DECODE, nullptr) {}

    int32_t GetWidth() override { return 11; }
    int32_t GetHeight() override { return 12; }
    CxAVError Open() override { return CxAV_UNSUPPORTED; }
    void ReleaseDecodedFrame(Frame*&) override { log.emplace_back("ReleaseDecodedFrame"); }
    CxAVError DecodeSample(uint8_t*, int32_t size, Frame*&, CxDecodeRequest& request) override {
        return Called("DecodeSample " + Text(size) + " " + Text(request.sampleTime), CxAV_READ_FAILED);
    }
    bool ConvertFrameToImage(Frame*, Image*&) override { return Called("ConvertFrameToImage", true); }
    void CacheDecodedFrame(int64_t time, Frame*) override {
        log.push_back("CacheDecodedFrame " + Text(time));
    }
    bool FindCachedFrame(int64_t time, Frame*&) override {
        return Called("FindCachedFrame " + Text(time), true);
    }
    void ClearCachedFrames() override { log.emplace_back("ClearCachedFrames"); }
};

class Factory : public CxAbstractCodecFactory {
public:
    ~Factory() override { log.emplace_back("destroyed"); }

    CxAbstractAVCodec* CreateCodec(CxAVOperation op) override {
        return Called<CxAbstractAVCodec*>("CreateCodec " + Text(op), nullptr);
    }
    bool FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>&,
                       std::string& givenName) override {
        return Called("FillCodecInfo " + Text(static_cast<int64_t>(decoderFourCCs.size())) + givenName, true);
    }
    void Shutdown() override { log.emplace_back("Shutdown"); }
    const std::string& GetName() const override {
        log.emplace_back("GetName");
        return name;
    }
};

class Source : public CxAbstractDataSource {
public:
    ~Source() override { log.emplace_back("destroyed"); }

    int32_t GetWidth() override { return Called("GetWidth", 1); }
    int32_t GetHeight() override { return Called("GetHeight", 2); }
    int64_t GetSampleTime(int32_t sample) override {
        return Called("GetSampleTime " + Text(sample), int64_t{3} << 32);
    }
    int32_t GetSampleCount() override { return Called("GetSampleCount", 4); }
    int32_t GetMaxSampleSize() override { return Called("GetMaxSampleSize", 5); }
    uint8_t* ReadSample(int32_t sample, uint8_t* buffer, int32_t& size) override {
        return Called("ReadSample " + Text(sample) + " " + Text(size), buffer);
    }
    const std::vector<uint8_t>* GetCodecPrivateData() override {
        return Called<const std::vector<uint8_t>*>("GetCodecPrivateData", nullptr);
    }
    uint32_t GetFourCC() override { return Called("GetFourCC", FourCC("\xf0tst")); }
    int32_t GetSampleForFrame(int32_t frame) override {
        return Called("GetSampleForFrame " + Text(frame), 8);
    }
    int32_t GetFieldOrder() override { return Called("GetFieldOrder", 9); }
    int32_t GetColorRange() override { return Called("GetColorRange", 10); }
    int32_t GetColorMatrix() override { return Called("GetColorMatrix", 11); }
    int32_t GetColorPrimaries() override { return Called("GetColorPrimaries", 12); }
    int32_t GetReserved() override { return Called("GetReserved", 13); }
    int32_t GetKeySample(int32_t sample) override { return Called("GetKeySample " + Text(sample), 14); }
    int64_t GetDecodeTime(int32_t sample) override {
        return Called("GetDecodeTime " + Text(sample), int64_t{15} << 32);
    }
    int32_t GetFrameForTime(int64_t time) override { return Called("GetFrameForTime " + Text(time), 16); }
};

} // namespace

CxAbstractAVCodec* NewCodec() { return new Codec; }
CxAbstractCodecFactory* NewFactory() { return new Factory; }
CxAbstractDataSource* NewSource() { return new Source; }
CxAbstractTemporalDecoder<Frame>* NewTemporalDecoder() { return new TemporalDecoder; }

} // namespace VtableProbes
