// The temporal decoder and its cache as another binary uses them: for frames that only FFmpeg knows, through
// the instances that the module exports.

#include "framework/CxAbstractTemporalDecoder.h"
#include "framework/MemoryTrackSource.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <array>
#include <string>
#include <utility>

namespace {

/// Decodes a sample of one byte into the frame of that number, which is never looked into.
class ForeignDecoder : public CxAbstractTemporalDecoder<AVFrame> {
public:
    ForeignDecoder() : CxAbstractTemporalDecoder(CxAV_DECODE, nullptr) {}
    ForeignDecoder(const ForeignDecoder&) = default;
    ForeignDecoder(ForeignDecoder&&) = default;
    ForeignDecoder& operator=(const ForeignDecoder&) = default;
    ForeignDecoder& operator=(ForeignDecoder&&) = default;
    ~ForeignDecoder() override { ReleaseFrameCache(); }

    int32_t GetWidth() override { return 1; }
    int32_t GetHeight() override { return 1; }
    CxAVError Open() override { return CxAV_OK; }
    void ReleaseDecodedFrame(AVFrame*& frame) override {
        ++releases[NumberOf(frame)];
        frame = nullptr;
    }
    CxAVError DecodeSample(uint8_t* data, int32_t size, AVFrame*& frame, CxDecodeRequest& request) override {
        if (data == nullptr || size != 1) return CxAV_NEED_MORE_DATA;
        frame = reinterpret_cast<AVFrame*>(&frames[*data]);
        request.frameTime = request.sampleTime;
        ++decoded;
        return CxAV_OK;
    }
    bool ConvertFrameToImage(AVFrame* frame, Image*&) override {
        converted = NumberOf(frame);
        return true;
    }

    size_t converted = 0;
    int decoded = 0;

    static inline std::array<int, 8> releases = {};

private:
    static size_t NumberOf(const AVFrame* frame) {
        return static_cast<size_t>(reinterpret_cast<const char*>(frame) - frames.data());
    }
    static inline std::array<char, 8> frames = {};
};

class TemporalDecoderOfTheModule : public testing::Test {
protected:
    void SetUp() override { ForeignDecoder::releases = {}; }

    MemoryTrackSource source{FourCC("test"), 1, 1, {{0}, {1}, {2}, {3}, {4}, {5}, {6}, {7}}};
    Image* image = nullptr;
};

/// The file that an address belongs to.
std::string FileOf(const void* address) {
    Dl_info info = {};
    return dladdr(address, &info) != 0 ? info.dli_fname : "";
}

TEST_F(TemporalDecoderOfTheModule, DecodesAnyFrameAndReleasesEachOnce) {
    {
        ForeignDecoder decoder;
        decoder.SetDataSource(&source);
        for (const int32_t frame : {0, 1, 1, 0, 5, 6}) {
            EXPECT_EQ(decoder.GetDecodedFrame(frame, image), CxAV_OK);
            EXPECT_EQ(decoder.converted, static_cast<size_t>(frame));
        }
        EXPECT_EQ(decoder.decoded, 4);
    }
    EXPECT_EQ(ForeignDecoder::releases, (std::array<int, 8>{1, 1, 0, 0, 0, 1, 1, 0}));
}

TEST_F(TemporalDecoderOfTheModule, CanBeCopiedMovedAndAssigned) {
    {
        ForeignDecoder decoder;
        decoder.SetDataSource(&source);
        decoder.GetDecodedFrame(3, image);
        ForeignDecoder copy(decoder);
        ForeignDecoder moved(std::move(copy));
        ForeignDecoder assigned;
        assigned = moved;
        ForeignDecoder moveAssigned;
        moveAssigned = std::move(assigned);
        EXPECT_EQ(moveAssigned.GetDecodedFrame(3, image), CxAV_OK);
        EXPECT_EQ(moveAssigned.decoded, 1);
    }
    EXPECT_EQ(ForeignDecoder::releases[3], 1);
}

TEST_F(TemporalDecoderOfTheModule, CanBeAskedForAtRunTime) {
    const std::unique_ptr<CxAbstractAVCodec> codec = std::make_unique<ForeignDecoder>();
    EXPECT_NE(dynamic_cast<CxAbstractTemporalDecoder<AVFrame>*>(codec.get()), nullptr);
}

TEST_F(TemporalDecoderOfTheModule, TheCacheAndItsSizeAreTheModules) {
    char frame = 0;
    AVFrame* found = nullptr;
    CxDecodedFramesCache<AVFrame> cache(nullptr, 0);
    EXPECT_TRUE(cache.CacheDecodedFrame(3, reinterpret_cast<AVFrame*>(&frame)));
    EXPECT_TRUE(cache.UseCachedFrame(3, found));
    cache.ClearCache();
    EXPECT_FALSE(cache.UseCachedFrame(3, found));
    void* const size = dlsym(RTLD_DEFAULT, "_ZN20CxDecodedFramesCacheI7AVFrameE14MAX_GOP_LENGTHE");
    ASSERT_NE(size, nullptr);
    EXPECT_EQ(*static_cast<const uint32_t*>(size), 32u);
    EXPECT_NE(FileOf(size).find("libcorvexvideoformats.so"), std::string::npos) << FileOf(size);
}

} // namespace
