// Wrong calls, samples and sizes, and a library that fails.

#include "codecs/dnx/DNXTestSupport.h"
#include "framework/AllocatorSpy.h"

namespace {

class DNXFailures : public DNXTest {
protected:
    DNXFailures() {
        Script().information = FrameOf(1272);
        decoder_.SetDataSource(&track_);
    }

    void ExpectThatDecodingWorks() {
        Script().failing.clear();
        Script().decodedSize = 0;
        EXPECT_EQ(Decode(decoder_, 0, image_.get()), CxAV_OK);
        EXPECT_FALSE(IsFilledWith(*image_, marker));
    }
    void ExpectThatEncodingWorks() {
        Script().failing.clear();
        EXPECT_EQ(EncodeOnce(encoder_, LeastImage().get(), FrameToEncode(1272)), CxAV_OK);
    }
    /// Lets a frame fail, in words, and the next one work.
    void ExpectThatDecodingFails(const std::string& words) {
        EXPECT_EQ(WordsOf([&] { EXPECT_EQ(Decode(decoder_, 0, image_.get()), CxAV_FAILED); }), words);
        EXPECT_TRUE(IsFilledWith(*image_, marker));
        EXPECT_FALSE(image_->ImageInfo.IsTable());
        ExpectThatDecodingWorks();
    }
    void ExpectThatEncodingFails(const std::string& words) {
        EXPECT_EQ(WordsOf([&] {
                      EXPECT_EQ(EncodeOnce(encoder_, LeastImage().get(), FrameToEncode(1272)), CxAV_FAILED);
                  }),
                  words);
        ExpectThatEncodingWorks();
    }

    MemoryTrackSource track_ = DNXTrack();
    DNXCodec decoder_{CxAV_DECODE, nullptr};
    DNXCodec encoder_{CxAV_ENCODE, nullptr};
    ImagePtr image_ = MarkedImage(4, 2);
};

TEST_F(DNXFailures, OpenWithoutASourceIsAnInvalidState) {
    EXPECT_EQ(decoder_.SetDataSource(nullptr), CxAV_INVALID_STATE);
    EXPECT_EQ(decoder_.getDataSource(), nullptr);
}

TEST_F(DNXFailures, DecodingWithoutASourceOrAnImageIsAnInvalidState) {
    EXPECT_EQ(Decode(decoder_, 0, nullptr), CxAV_INVALID_STATE);
    decoder_.getDataSource() = nullptr;
    EXPECT_EQ(Decode(decoder_, 0, image_.get()), CxAV_INVALID_STATE);
    EXPECT_TRUE(Script().calls.empty());
}

TEST_F(DNXFailures, ASampleThatIsMissingOrEmptyFailsWithoutWordsAndWithoutTheLibrary) {
    track_ = DNXTrack({{}});
    const std::string words = WordsOf([&] {
        for (const int32_t frame : {0, 1, -1})
            EXPECT_EQ(Decode(decoder_, frame, image_.get()), CxAV_FAILED);
    });
    EXPECT_EQ(words, "");
    EXPECT_TRUE(IsFilledWith(*image_, marker));
    EXPECT_TRUE(Script().calls.empty());
}

TEST_F(DNXFailures, ASampleCutToTheCodecsBufferIsGivenAsFarAsItGoes) {
    track_.delivery = MemoryTrackSource::Delivery::CallersBuffer;
    track_.maxSampleSize = 2;
    EXPECT_EQ(Decode(decoder_, 0, image_.get()), CxAV_OK);
    EXPECT_EQ(Script().data, (Bytes{1, 2}));
}

TEST_F(DNXFailures, AFrameThatTheLibraryDoesNotKnowIsLine309) {
    Script().failing = "GetInfoFromCompressedFrame";
    ExpectThatDecodingFails("Error: error 42 - DNXCodec:309\n");
}

TEST_F(DNXFailures, ADecoderThatIsNotMadeIsLine381AndTheNextFrameTriesAgain) {
    Script().failing = "CreateDecoder";
    ExpectThatDecodingFails("Error: error 42 - DNXCodec:381\n");
    EXPECT_EQ(CallsOf("CreateDecoder"), 2);
}

TEST_F(DNXFailures, AFrameThatDoesNotDecodeIsLine389AndTheDecoderStays) {
    Script().failing = "DecodeFrame";
    ExpectThatDecodingFails("Error: error 42 - DNXCodec:389\n");
    EXPECT_EQ(CallsOf("CreateDecoder"), 1);
}

TEST_F(DNXFailures, ABufferOfASmallImageThatTheLibraryRefusesIsLine389) {
    image_ = MarkedImage(2, 2);
    Script().decodedSize = 4 * 4 * 2;
    ExpectThatDecodingFails("Error: error 43 - DNXCodec:389\n");
}

TEST_F(DNXFailures, AnEncoderThatIsNotMadeIsLine241AndTheNextFrameTriesAgain) {
    Script().failing = "CreateEncoder";
    ExpectThatEncodingFails("Error: error 42 - DNXCodec:241\n");
    EXPECT_EQ(CallsOf("CreateEncoder"), 2);
}

TEST_F(DNXFailures, AFrameThatDoesNotEncodeIsLine258AndTheEncoderStays) {
    Script().failing = "EncodeFrame";
    ExpectThatEncodingFails("Error: error 42 - DNXCodec:258\n");
    EXPECT_EQ(CallsOf("CreateEncoder"), 1);
}

TEST_F(DNXFailures, TheBufferOfAFrameThatDoesNotEncodeStaysTheCallers) {
    ExpectThatEncodingWorks();
    Script().failing = "EncodeFrame";
    CxEncodedFrame frame = FrameToEncode(1272);
    const ImagePtr picture = LeastImage();
    Image* image = picture.get();
    AllocatorSpy::Reset();
    WordsOf([&] { EXPECT_EQ(encoder_.EncodeFrame(image, frame), CxAV_FAILED); });
    EXPECT_EQ(AllocatorSpy::allocations - AllocatorSpy::frees, 1);
    ASSERT_NE(frame.data, nullptr);
    EXPECT_EQ(frame.size, 64U);
    Platform::FreeMemAligned(frame.data);
}

TEST_F(DNXFailures, AFrameWhoseEncoderIsNotMadeLeavesTheRecordAlone) {
    Script().failing = "CreateEncoder";
    CxEncodedFrame frame = FrameToEncode(1272);
    const ImagePtr picture = LeastImage();
    Image* image = picture.get();
    WordsOf([&] { EXPECT_EQ(encoder_.EncodeFrame(image, frame), CxAV_FAILED); });
    EXPECT_EQ(frame.data, nullptr);
    EXPECT_EQ(frame.size, 0U);
}

TEST_F(DNXFailures, ABufferSizeOf0GoesToTheLibraryAsItIs) {
    Script().failing = "GetCompressedBufferSize";
    EXPECT_EQ(EncodeOnce(encoder_, LeastImage().get(), FrameToEncode(1272)), CxAV_OK);
    EXPECT_EQ(Script().outputSize, 0U);
}

TEST_F(DNXFailures, AnErrorWithoutATextIsToldByItsLineAlone) {
    Script().failing = "DecodeFrame GetErrorString";
    ExpectThatDecodingFails("Error:  - DNXCodec:389\n");
}

TEST_F(DNXFailures, ADecoderThatIsNotDeletedIsLeftToTheLibraryWithoutWords) {
    Script().failing = "DeleteDecoder";
    const std::string words = WordsOf([&] {
        DNXCodec codec(CxAV_DECODE, nullptr);
        codec.SetDataSource(&track_);
        EXPECT_EQ(Decode(codec, 0, image_.get()), CxAV_OK);
    });
    EXPECT_EQ(words, "");
    EXPECT_EQ(CallsOf("DeleteDecoder"), 1);
    EXPECT_EQ(Script().decoders--, 1);
    ExpectThatDecodingWorks();
}

TEST_F(DNXFailures, AnEncoderThatIsNotDeletedIsLeftToTheLibraryWithoutWords) {
    Script().failing = "DeleteEncoder";
    const std::string words = WordsOf([] {
        DNXCodec codec(CxAV_ENCODE, nullptr);
        EXPECT_EQ(EncodeOnce(codec, LeastImage().get(), FrameToEncode(1272)), CxAV_OK);
    });
    EXPECT_EQ(words, "");
    EXPECT_EQ(CallsOf("DeleteEncoder"), 1);
    EXPECT_EQ(Script().encoders--, 1);
    ExpectThatEncodingWorks();
}

TEST_F(DNXFailures, TheLongestTextThatTheLibraryMayWriteIsSaidWhole) {
    Script().failing = "DecodeFrame";
    Script().errorText = std::string(575, 'x');
    ExpectThatDecodingFails("Error: " + Script().errorText + " - DNXCodec:389\n");
}

TEST_F(DNXFailures, ATextWithoutAnEndIsCutToItsBuffer) {
    Script().failing = "DecodeFrame";
    Script().errorText = std::string(576, 'x');
    ExpectThatDecodingFails("Error: " + std::string(575, 'x') + " - DNXCodec:389\n");
}

TEST_F(DNXFailures, AnImageWithMoreRowsThanTheTrackFailsAndKeepsItsPixels) {
    image_ = MarkedImage(4, 3);
    EXPECT_EQ(Decode(decoder_, 0, image_.get()), CxAV_FAILED);
    EXPECT_TRUE(IsFilledWith(*image_, marker));
    EXPECT_FALSE(image_->ImageInfo.IsTable());
}

TEST_F(DNXFailures, ATrackWithoutRowsOrBeyondAnyBufferFails) {
    for (const int32_t height : {0, -1, 0x7fffffff}) {
        track_.height = height;
        ASSERT_EQ(decoder_.Open(), CxAV_OK);
        EXPECT_EQ(Decode(decoder_, 0, image_.get()), CxAV_FAILED) << height;
        EXPECT_TRUE(IsFilledWith(*image_, marker));
    }
    EXPECT_EQ(CallsOf("DecodeFrame"), 0);
}

TEST_F(DNXFailures, ATrackWithoutMemoryForItsPictureFailsAndDecodesLater) {
    AllocatorSpy::Reset();
    AllocatorSpy::fails = true;
    EXPECT_EQ(Decode(decoder_, 0, image_.get()), CxAV_FAILED);
    AllocatorSpy::Reset();
    ExpectThatDecodingWorks();
}

TEST_F(DNXFailures, AnImageWithoutMemoryForItsPictureFailsAndEncodesLater) {
    const ImagePtr picture = LeastImage();
    AllocatorSpy::Reset();
    AllocatorSpy::fails = true;
    EXPECT_EQ(EncodeOnce(encoder_, picture.get(), FrameToEncode(1272)), CxAV_FAILED);
    AllocatorSpy::Reset();
    EXPECT_EQ(CallsOf("EncodeFrame"), 0);
    ExpectThatEncodingWorks();
}

TEST_F(DNXFailures, AFrameWithoutMemoryForItsBufferFailsAndEncodesLater) {
    ExpectThatEncodingWorks();
    CxEncodedFrame frame = FrameToEncode(1272);
    const ImagePtr picture = LeastImage();
    Image* image = picture.get();
    AllocatorSpy::Reset();
    AllocatorSpy::fails = true;
    EXPECT_EQ(encoder_.EncodeFrame(image, frame), CxAV_FAILED);
    AllocatorSpy::Reset();
    EXPECT_EQ(frame.data, nullptr);
    EXPECT_EQ(CallsOf("EncodeFrame"), 1);
    ExpectThatEncodingWorks();
}

} // namespace
