#include "iostream/PayloadProbe.h"

namespace PayloadProbe {

std::vector<std::string> log;

namespace {

using IOStream::BitBuffer;

class Probe : public IOStream::IOH264NALPayload {
public:
    Probe() : IOH264NALPayload(true) {}
    ~Probe() override { log.push_back("destroyed"); }

    uint8_t* GetData() override { return Called("GetData", nullptr); }
    uint32_t GetDataSize() const override { return Called("GetDataSize", 3u); }
    void SetStreamID(uint16_t value) override { log.push_back("SetStreamID " + std::to_string(value)); }
    uint32_t GetFrameType() override { return Called("GetFrameType", 5u); }
    bool ScanData() override { return Called("ScanData", false); }
    const IOStream::IOElementaryStreamInfo& GetStreamInfo() override {
        log.push_back("GetStreamInfo");
        return info;
    }
    bool GetConfigRecord(std::vector<uint8_t>&, uint32_t&) override {
        return Called("GetConfigRecord", true);
    }
    uint32_t ParseConfigRecord(const std::vector<uint8_t>&, uint32_t) override {
        return Called("ParseConfigRecord", 9u);
    }
    bool AppendSample(const uint8_t*, uint32_t, uint32_t) override { return Called("AppendSample", false); }

protected:
    uint8_t GetNALType(uint8_t firstByte) const override { return Called("GetNALType", firstByte); }
    void ParseNAL(uint8_t, const uint8_t*, uint32_t) override { log.push_back("ParseNAL"); }
    bool ParseVUI(BitBuffer&, uint32_t) override { return Called("ParseVUI", true); }
    bool ParseHRD(BitBuffer&) override { return Called("ParseHRD", true); }

private:
    /// Writes down a call and gives the value that the operation is to return.
    template <typename Value>
    static Value Called(const char* call, Value value) {
        log.push_back(call);
        return value;
    }
};

} // namespace

IOStream::IOH264NALPayload* New() { return new Probe; }

} // namespace PayloadProbe
