// The virtual operations of the codec interface keep their slots: callers that were compiled apart reach them
// by number.

#include "framework/VtableProbes.h"
#include "support/VtableSlots.h"

#include <gtest/gtest.h>

namespace {

using Log = std::vector<std::string>;

class VtableOrder : public testing::Test {
protected:
    void SetUp() override { VtableProbes::log.clear(); }
};

TEST_F(VtableOrder, ACodecsDecodingOperationsTakeSlots0To5) {
    const std::unique_ptr<CxAbstractAVCodec> codec(VtableProbes::NewCodec());
    Image* image = nullptr;
    EXPECT_EQ((CallSlot<CxAVError, int32_t, Image*&>(codec.get(), 0, 77, image)), CxAV_READ_FAILED);
    CallSlot<void>(codec.get(), 1);
    EXPECT_EQ(CallSlot<std::string>(codec.get(), 2), "probe");
    EXPECT_EQ(CallSlot<int32_t>(codec.get(), 3), 11);
    EXPECT_EQ(CallSlot<int32_t>(codec.get(), 4), 12);
    EXPECT_EQ(CallSlot<CxAVError>(codec.get(), 5), CxAV_UNSUPPORTED);
    EXPECT_EQ(VtableProbes::log,
              (Log{"GetDecodedFrame 77 null", "Flush", "GetName", "GetWidth", "GetHeight", "Open"}));
}

TEST_F(VtableOrder, ACodecsDestructorsTakeSlots6And7) {
    // The deleting destructor frees the object, too; the leak check sees to that.
    CallSlot<void>(VtableProbes::NewCodec(), 7);
    EXPECT_EQ(VtableProbes::log, Log{"destroyed"});
    CxAbstractAVCodec* const codec = VtableProbes::NewCodec();
    CallSlot<void>(codec, 6);
    ::operator delete(codec);
    EXPECT_EQ(VtableProbes::log, (Log{"destroyed", "destroyed"}));
}

TEST_F(VtableOrder, ACodecsEncodingOperationsTakeSlots8To10) {
    const std::unique_ptr<CxAbstractAVCodec> codec(VtableProbes::NewCodec());
    Image* image = nullptr;
    CxVideoSettings settings;
    settings.width = 640;
    settings.height = 480;
    CxEncodedFrame frame;
    frame.codecTag = 1235;
    EXPECT_EQ((CallSlot<CxAVError, CxVideoSettings&>(codec.get(), 8, settings)), CxAV_FAILED);
    EXPECT_EQ((CallSlot<CxAVError, Image*&, CxEncodedFrame&>(codec.get(), 9, image, frame)),
              CxAV_INVALID_STATE);
    EXPECT_EQ((CallSlot<int32_t, CxVideoSettings>(codec.get(), 10, settings)), 13);
    EXPECT_EQ(VtableProbes::log,
              (Log{"SetEncoderSettings 640", "EncodeFrame 1235", "GetTargetFrameSize 480"}));
}

TEST_F(VtableOrder, ATemporalDecodersOperationsTakeSlots11To16) {
    using VtableProbes::Frame;
    const std::unique_ptr<CxAbstractTemporalDecoder<Frame>> decoder(VtableProbes::NewTemporalDecoder());
    Image* image = nullptr;
    Frame* frame = nullptr;
    CxDecodeRequest request;
    request.sampleTime = 31;
    uint8_t byte = 0;
    EXPECT_EQ((CallSlot<CxAVError, int32_t, Image*&>(decoder.get(), 0, 77, image)), CxAV_INVALID_STATE);
    EXPECT_EQ(CallSlot<int32_t>(decoder.get(), 4), 12);
    CallSlot<void, Frame*&>(decoder.get(), 11, frame);
    EXPECT_EQ((CallSlot<CxAVError, uint8_t*, int32_t, Frame*&, CxDecodeRequest&>(decoder.get(), 12, &byte, 1,
                                                                                 frame, request)),
              CxAV_READ_FAILED);
    EXPECT_TRUE((CallSlot<bool, Frame*, Image*&>(decoder.get(), 13, frame, image)));
    CallSlot<void, int64_t, Frame*>(decoder.get(), 14, int64_t{4} << 32, frame);
    EXPECT_TRUE((CallSlot<bool, int64_t, Frame*&>(decoder.get(), 15, 150, frame)));
    CallSlot<void>(decoder.get(), 16);
    EXPECT_EQ(VtableProbes::log,
              (Log{"ReleaseDecodedFrame", "DecodeSample 1 31", "ConvertFrameToImage",
                   "CacheDecodedFrame 17179869184", "FindCachedFrame 150", "ClearCachedFrames"}));
}

TEST_F(VtableOrder, AFactorysOperationsTakeSlots0To3AndItsDestructorsTheNextTwo) {
    CxAbstractCodecFactory* const factory = VtableProbes::NewFactory();
    std::set<uint32_t> fourCCs = {1, 2};
    std::vector<CxEncoderInfo> rows;
    std::string name = " names";
    EXPECT_EQ((CallSlot<CxAbstractAVCodec*, CxAVOperation>(factory, 0, CxAV_DECODE)), nullptr);
    EXPECT_TRUE((CallSlot<bool, std::set<uint32_t>&, std::vector<CxEncoderInfo>&, std::string&>(
        factory, 1, fourCCs, rows, name)));
    CallSlot<void>(factory, 2);
    EXPECT_EQ(&CallSlot<const std::string&>(factory, 3), &factory->name);
    CallSlot<void>(factory, 5);
    EXPECT_EQ(VtableProbes::log,
              (Log{"CreateCodec 2", "FillCodecInfo 2 names", "Shutdown", "GetName", "destroyed"}));
}

TEST_F(VtableOrder, ASourcesOperationsOfTheTrackAndItsSamplesTakeSlots0To8) {
    const std::unique_ptr<CxAbstractDataSource> source(VtableProbes::NewSource());
    uint8_t byte = 0;
    int32_t size = 6;
    EXPECT_EQ(CallSlot<int32_t>(source.get(), 0), 1);
    EXPECT_EQ(CallSlot<int32_t>(source.get(), 1), 2);
    EXPECT_EQ((CallSlot<int64_t, int32_t>(source.get(), 2, 30)), int64_t{3} << 32);
    EXPECT_EQ(CallSlot<int32_t>(source.get(), 3), 4);
    EXPECT_EQ(CallSlot<int32_t>(source.get(), 4), 5);
    EXPECT_EQ((CallSlot<uint8_t*, int32_t, uint8_t*, int32_t&>(source.get(), 5, 50, &byte, size)), &byte);
    EXPECT_EQ(CallSlot<const std::vector<uint8_t>*>(source.get(), 6), nullptr);
    EXPECT_EQ(CallSlot<uint32_t>(source.get(), 7), FourCC("\xf0tst"));
    EXPECT_EQ((CallSlot<int32_t, int32_t>(source.get(), 8, 80)), 8);
    EXPECT_EQ(VtableProbes::log,
              (Log{"GetWidth", "GetHeight", "GetSampleTime 30", "GetSampleCount", "GetMaxSampleSize",
                   "ReadSample 50 6", "GetCodecPrivateData", "GetFourCC", "GetSampleForFrame 80"}));
}

TEST_F(VtableOrder, ASourcesOperationsOfColourAndTimeTakeSlots9To16) {
    const std::unique_ptr<CxAbstractDataSource> source(VtableProbes::NewSource());
    EXPECT_EQ(CallSlot<int32_t>(source.get(), 9), 9);
    EXPECT_EQ(CallSlot<int32_t>(source.get(), 10), 10);
    EXPECT_EQ(CallSlot<int32_t>(source.get(), 11), 11);
    EXPECT_EQ(CallSlot<int32_t>(source.get(), 12), 12);
    EXPECT_EQ(CallSlot<int32_t>(source.get(), 13), 13);
    EXPECT_EQ((CallSlot<int32_t, int32_t>(source.get(), 14, 140)), 14);
    EXPECT_EQ((CallSlot<int64_t, int32_t>(source.get(), 15, 150)), int64_t{15} << 32);
    EXPECT_EQ((CallSlot<int32_t, int64_t>(source.get(), 16, int64_t{1} << 40)), 16);
    EXPECT_EQ(VtableProbes::log,
              (Log{"GetFieldOrder", "GetColorRange", "GetColorMatrix", "GetColorPrimaries", "GetReserved",
                   "GetKeySample 140", "GetDecodeTime 150", "GetFrameForTime 1099511627776"}));
}

TEST_F(VtableOrder, ASourcesDestructorsFollowItsOperations) {
    CallSlot<void>(VtableProbes::NewSource(), 18);
    EXPECT_EQ(VtableProbes::log, Log{"destroyed"});
}

} // namespace
