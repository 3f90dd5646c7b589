// The muxer alone: what FFmpeg is asked to do, and when.

#include "ffmpeg/FFmpegFileWriter.h"

#include "ffmpeg/MuxerCalls.h"
#include "ffmpeg/SaveTestSupport.h"

#include <filesystem>
#include <limits>
#include <utility>

namespace {

using namespace CxFFMPEG;

AudioDescription Sound(int32_t bits, int32_t channels) {
    AudioDescription audio;
    audio.format = "lpcm";
    audio.sampleRate = 48000;
    audio.channels = channels;
    audio.bitsPerSample = bits;
    return audio;
}

/// A writer of a Matroska and an encoder for it.
class FileWriter : public testing::Test {
protected:
    FileWriter() {
        settings.width = 64;
        settings.height = 48;
        settings.timeScale = 30000;
        settings.frameDuration = 1001;
        settings.bitRate = 1000000;
        settings.gopSize = 1;
        settings.value7 = settings.value8 = 1;
        settings.value3 = 300;
        EncoderOptions none;
        EXPECT_EQ(encoder.OpenEncoder(entry, settings, none), CxAV_OK);
        settings.value5 = reinterpret_cast<uintptr_t>(encoder.Context());
    }

    bool Open(const char* containerName = "Matroska", const std::string& reel = "") {
        const ContainerEntry container = FindContainer(containerName);
        return writer.Open(path, reel, &container);
    }
    /// Opens, and adds the stream of pictures.
    bool OpenPictures(const char* containerName = "Matroska", const std::string& reel = "") {
        return Open(containerName, reel) && writer.AddVideoStream(settings, entry);
    }
    bool WritePicture() {
        const ImagePtr grey = GreyImage(0);
        Image* image = grey.get();
        const PacketPointer packet(av_packet_alloc());
        int32_t gotPacket = 0;
        while (gotPacket == 0)
            if (encoder.EncodeImage(image, packet.get(), gotPacket) != CxAV_OK) return false;
        return writer.WriteVideoPacket(packet.get());
    }
    bool WriteSound(uint32_t size, int32_t track = 0) {
        std::vector<uint8_t> samples(size);
        return writer.WriteAudioData(track, samples.data(), size);
    }

    const QuietFFmpeg quiet;
    const Workspace workspace;
    const std::string path = workspace.Path("movie.mkv");
    const EncoderEntry entry = FindEncoder("MPEG4");
    CxVideoSettings settings;
    FFMPEGCodecs encoder{CxAV_ENCODE, nullptr};
    const MuxerCalls calls;
    FFmpegFileWriter writer;
};

TEST_F(FileWriter, WithoutAContainerOrAPathNothingOpens) {
    const ContainerEntry matroska = FindContainer("Matroska");
    const ContainerEntry unknown;
    EXPECT_FALSE(writer.Open(path, "", nullptr));
    EXPECT_FALSE(writer.Open(path, "", &unknown));
    EXPECT_FALSE(writer.Open(workspace.Path("missing/movie.mkv"), "", &matroska));
    EXPECT_EQ(FFmpegFileWriter::Create({path, 24, ""}, &unknown), nullptr);
    EXPECT_FALSE(workspace.Has("movie.mkv"));
    EXPECT_NE(FFmpegFileWriter::Create({path, 24, ""}, &matroska), nullptr);
    EXPECT_TRUE(workspace.Has("movie.mkv"));
}

TEST_F(FileWriter, AClosedWriterTakesNothing) {
    uint8_t samples[4] = {};
    AVPacket* packet = av_packet_alloc();
    EXPECT_FALSE(writer.AddVideoStream(settings, entry));
    EXPECT_FALSE(writer.AddAudioStream(Sound(16, 1)));
    EXPECT_FALSE(writer.WriteVideoPacket(packet));
    EXPECT_FALSE(writer.WriteAudioData(0, samples, sizeof samples));
    EXPECT_TRUE(writer.Close());
    EXPECT_TRUE(writer.Close());
    av_packet_free(&packet);
}

TEST_F(FileWriter, PicturesNeedTheContextOfAnEncoder) {
    ASSERT_TRUE(Open());
    settings.value5 = 0;
    EXPECT_FALSE(writer.AddVideoStream(settings, entry));
    AVPacket* packet = av_packet_alloc();
    EXPECT_FALSE(writer.WriteVideoPacket(packet)) << "there is no stream of them";
    av_packet_free(&packet);
    EXPECT_TRUE(MuxerCalls::all.empty());
}

TEST_F(FileWriter, TheAverageRateOfPicturesIsTheTimeOfOne) {
    ASSERT_TRUE(OpenPictures());
    const AVStream& stream = MuxerCalls::LastStream();
    EXPECT_EQ(stream.time_base.num, 1001);
    EXPECT_EQ(stream.time_base.den, 30000);
    EXPECT_EQ(stream.avg_frame_rate.num, 1001);
    EXPECT_EQ(stream.avg_frame_rate.den, 30000);
    EXPECT_EQ(stream.codecpar->codec_id, AV_CODEC_ID_MPEG4);
    EXPECT_EQ(stream.codecpar->width, 64);
}

TEST_F(FileWriter, TheTimeCodeCountsAtTheRateWithoutItsFraction) {
    ASSERT_TRUE(OpenPictures());
    EXPECT_EQ(MuxerCalls::FileTag("timecode"), "00:00:10:10") << "300 frames at 29";
}

TEST_F(FileWriter, OfATimeCodeTheLowHalfCounts) {
    settings.value3 = 0x7fffffff0000001d;
    ASSERT_TRUE(OpenPictures());
    EXPECT_EQ(MuxerCalls::FileTag("timecode"), "00:00:01:00");
}

TEST_F(FileWriter, AReelNameStandsWithThePictures) {
    ASSERT_TRUE(OpenPictures("Matroska", "A001C002"));
    EXPECT_EQ(MuxerCalls::TextOf(MuxerCalls::LastStream().metadata, "reel_name"), "A001C002");
    ASSERT_TRUE(OpenPictures());
    EXPECT_EQ(MuxerCalls::TextOf(MuxerCalls::LastStream().metadata, "reel_name"), "(none)");
}

TEST_F(FileWriter, OnlyLinearPcmIsSound) {
    ASSERT_TRUE(Open());
    for (const char* const format : {"", "lpcm ", "LPCM", "sowt"}) {
        AudioDescription audio = Sound(16, 2);
        audio.format = format;
        EXPECT_FALSE(writer.AddAudioStream(audio)) << format;
    }
    EXPECT_TRUE(MuxerCalls::streams.empty());
}

TEST_F(FileWriter, TheBitsOfASampleChooseItsCodec) {
    const std::pair<int32_t, AVCodecID> rows[] = {{16, AV_CODEC_ID_PCM_S16LE}, {24, AV_CODEC_ID_PCM_S24LE},
                                                  {32, AV_CODEC_ID_PCM_F32LE}, {8, AV_CODEC_ID_PCM_U8},
                                                  {20, AV_CODEC_ID_PCM_U8},    {0, AV_CODEC_ID_PCM_U8}};
    for (const auto& [bits, codec] : rows) {
        ASSERT_TRUE(OpenPictures());
        EXPECT_TRUE(writer.AddAudioStream(Sound(bits, 2))) << bits;
        EXPECT_EQ(MuxerCalls::LastStream().codecpar->codec_id, codec) << bits;
    }
}

TEST_F(FileWriter, ChannelsHaveTheLayoutsOfMonoStereoOrFFmpeg) {
    AVChannelLayout six = {};
    av_channel_layout_default(&six, 6);
    for (const auto& [channels, mask] :
         {std::pair(1, uint64_t{4}), std::pair(2, uint64_t{3}), std::pair(6, six.u.mask)}) {
        ASSERT_TRUE(OpenPictures());
        ASSERT_TRUE(writer.AddAudioStream(Sound(16, channels)));
        const AVCodecParameters& parameters = *MuxerCalls::LastStream().codecpar;
        EXPECT_EQ(parameters.ch_layout.nb_channels, channels);
        EXPECT_EQ(parameters.ch_layout.u.mask, mask) << channels;
        EXPECT_EQ(parameters.block_align, 2 * channels);
        EXPECT_EQ(parameters.bit_rate, 16 * channels * 48000);
        EXPECT_EQ(MuxerCalls::LastStream().time_base.den, 48000);
    }
}

TEST_F(FileWriter, SoundThatNoNumberOfAnEncoderHoldsIsRefused) {
    constexpr int32_t most = std::numeric_limits<int32_t>::max();
    ASSERT_TRUE(OpenPictures());
    for (const auto& [bits, channels] : {std::pair(16, most), std::pair(most, 2), std::pair(most, most),
                                         std::pair(-most, 2), std::pair(16, 0), std::pair(16, -1)})
        EXPECT_FALSE(writer.AddAudioStream(Sound(bits, channels))) << bits << " " << channels;
    EXPECT_EQ(MuxerCalls::streams.size(), 1U);
}

TEST_F(FileWriter, AnEncoderOfSoundWithoutSampleFormatsIsNone) {
    ASSERT_TRUE(OpenPictures());
    const ReplacedFunction find(&FFmpegFunctions::avcodec_find_encoder, [](AVCodecID id) -> const AVCodec* {
        static AVCodec encoder;
        encoder = *avcodec_find_encoder(id);
        encoder.sample_fmts = nullptr;
        return &encoder;
    });
    EXPECT_FALSE(writer.AddAudioStream(Sound(16, 2)));
    EXPECT_EQ(MuxerCalls::streams.size(), 1U);
}

TEST_F(FileWriter, SoundAloneBringsItsOwnTimeCode) {
    ASSERT_TRUE(Open());
    AudioDescription audio = Sound(16, 1);
    audio.rate = {25, 1};
    audio.timeCodeFrames = 90001;
    ASSERT_TRUE(writer.AddAudioStream(audio));
    EXPECT_EQ(MuxerCalls::FileTag("timecode"), "01:00:00:01");
}

TEST_F(FileWriter, SoundBesidePicturesKeepsTheirTimeCode) {
    ASSERT_TRUE(OpenPictures());
    ASSERT_TRUE(writer.AddAudioStream(Sound(16, 1)));
    EXPECT_EQ(MuxerCalls::FileTag("timecode"), "00:00:10:10");
}

TEST_F(FileWriter, ARateOfNothingCountsItsTimeCodeInSeconds) {
    ASSERT_TRUE(Open());
    AudioDescription audio = Sound(16, 1);
    audio.rate = {0, 0};
    audio.timeCodeFrames = 61;
    ASSERT_TRUE(writer.AddAudioStream(audio));
    EXPECT_EQ(MuxerCalls::FileTag("timecode"), "00:01:01:00");
}

TEST_F(FileWriter, TheHeaderGoesOutOnceWithTheFirstPacketOfEitherStream) {
    ASSERT_TRUE(OpenPictures());
    ASSERT_TRUE(writer.AddAudioStream(Sound(16, 1)));
    EXPECT_TRUE(MuxerCalls::all.empty());
    EXPECT_TRUE(WriteSound(4));
    EXPECT_TRUE(WritePicture());
    EXPECT_EQ(MuxerCalls::all, Calls({"header", "packet", "packet", "flush"}));
    MuxerCalls::all.clear();
    ASSERT_TRUE(OpenPictures());
    MuxerCalls::all.clear();
    EXPECT_TRUE(WritePicture());
    EXPECT_EQ(MuxerCalls::all, Calls({"header", "packet", "flush"})) << "and once in each file";
}

TEST_F(FileWriter, AHeaderThatFailsIsNotTriedAgain) {
    MuxerCalls::headerResult = AVERROR(EIO);
    ASSERT_TRUE(OpenPictures());
    ASSERT_TRUE(writer.AddAudioStream(Sound(16, 1)));
    EXPECT_FALSE(WritePicture());
    EXPECT_FALSE(WriteSound(4));
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(MuxerCalls::all, Calls({"header"})) << "and there is no end without it";
}

TEST_F(FileWriter, AFileWithoutAPacketStaysAsItWasMade) {
    ASSERT_TRUE(OpenPictures());
    EXPECT_TRUE(writer.Close());
    EXPECT_TRUE(MuxerCalls::all.empty());
    EXPECT_EQ(std::filesystem::file_size(path), 0U);
}

TEST_F(FileWriter, TheEndIsWrittenOnce) {
    ASSERT_TRUE(OpenPictures());
    EXPECT_TRUE(WritePicture());
    MuxerCalls::all.clear();
    EXPECT_TRUE(writer.Close());
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(MuxerCalls::all, Calls({"end of packets", "trailer"}));
    EXPECT_EQ(SavedMovie(path).pictureCount, 1);
}

TEST_F(FileWriter, AWriterThatGoesEndsItsFile) {
    auto other = FFmpegFileWriter::Create({path, 30000, ""}, &GetContainerTable().at("Matroska"));
    ASSERT_NE(other, nullptr);
    ASSERT_TRUE(other->AddAudioStream(Sound(16, 1)));
    uint8_t samples[960] = {};
    EXPECT_TRUE(other->WriteAudioData(0, samples, sizeof samples));
    other.reset();
    EXPECT_EQ(MuxerCalls::all.back(), "trailer");
    EXPECT_EQ(SavedMovie(path).sound.size(), sizeof samples);
}

TEST_F(FileWriter, MuxersThatOpenTheirOwnFilesGetNoEmptyPacket) {
    ASSERT_TRUE(OpenPictures("image2 sequence"));
    EXPECT_TRUE(WritePicture());
    MuxerCalls::all.clear();
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(MuxerCalls::all, Calls({"trailer"}));
}

TEST_F(FileWriter, OnlyAnAsfHasItsPacketsSorted) {
    for (const auto& [container, call] :
         {std::pair("Matroska", "packet"), std::pair("QuickTime / MOV", "packet"),
          std::pair("ASF (Advanced / Active Streaming Format)", "sorted packet")}) {
        ASSERT_TRUE(OpenPictures(container));
        MuxerCalls::all.clear();
        EXPECT_TRUE(WritePicture());
        EXPECT_EQ(MuxerCalls::all, Calls({"header", call, "flush"})) << container;
    }
}

TEST_F(FileWriter, APictureLastsOneFrameInTheTimeOfItsStream) {
    ASSERT_TRUE(OpenPictures("QuickTime / MOV"));
    EXPECT_TRUE(WritePicture());
    const std::vector<int64_t> first = MuxerCalls::times;
    EXPECT_TRUE(WritePicture());
    const int64_t duration = av_rescale_q(1, {1001, 30000}, MuxerCalls::LastStream().time_base);
    EXPECT_GT(duration, 1);
    EXPECT_EQ(MuxerCalls::times, std::vector<int64_t>({first[0] + duration, first[1] + duration, duration}));
}

TEST_F(FileWriter, AFileThatTheMuxerTookAwayIsNotFlushed) {
    static AVIOContext* taken;
    ASSERT_TRUE(OpenPictures());
    {
        const ReplacedFunction write(&FFmpegFunctions::av_write_frame, [](AVFormatContext* file, AVPacket*) {
            taken = std::exchange(file->pb, nullptr);
            return 0;
        });
        EXPECT_TRUE(WritePicture());
    }
    EXPECT_EQ(MuxerCalls::all, Calls({"header"}));
    MuxerCalls::file->pb = taken;
}

TEST_F(FileWriter, SoundFollowsItselfInSamples) {
    ASSERT_TRUE(OpenPictures("AVI (Audio Video Interleaved)"));
    ASSERT_TRUE(writer.AddAudioStream(Sound(24, 2)));
    EXPECT_TRUE(WriteSound(600));
    EXPECT_EQ(MuxerCalls::times, std::vector<int64_t>({0, 0, 100}));
    EXPECT_TRUE(WriteSound(1200));
    EXPECT_EQ(MuxerCalls::times, std::vector<int64_t>({100, 100, 200}));
    EXPECT_TRUE(WriteSound(6));
    EXPECT_EQ(MuxerCalls::times, std::vector<int64_t>({300, 300, 1}));
    EXPECT_EQ(MuxerCalls::packetStream, 1);
}

TEST_F(FileWriter, PicturesGoToTheirStreamAlsoBehindSound) {
    ASSERT_TRUE(Open());
    ASSERT_TRUE(writer.AddAudioStream(Sound(16, 1)));
    ASSERT_TRUE(writer.AddVideoStream(settings, entry));
    EXPECT_TRUE(WritePicture());
    EXPECT_EQ(MuxerCalls::packetStream, 1);
}

TEST_F(FileWriter, SoundThatIsNotThereIsRefused) {
    ASSERT_TRUE(OpenPictures());
    EXPECT_FALSE(WriteSound(4)) << "no stream of it";
    ASSERT_TRUE(writer.AddAudioStream(Sound(16, 1)));
    EXPECT_FALSE(WriteSound(4, 1));
    EXPECT_FALSE(WriteSound(4, -1));
    uint8_t samples[4] = {};
    EXPECT_FALSE(writer.WriteAudioData(0, nullptr, 4));
    EXPECT_FALSE(writer.WriteAudioData(0, samples, 0x80000000U)) << "more than a packet holds";
    EXPECT_TRUE(WriteSound(4));
}

TEST_F(FileWriter, OpeningAgainEndsTheFileBefore) {
    ASSERT_TRUE(OpenPictures());
    EXPECT_TRUE(WritePicture());
    const ContainerEntry container = FindContainer("Matroska");
    EXPECT_TRUE(writer.Open(workspace.Path("second.mkv"), "", &container));
    EXPECT_EQ(SavedMovie(path).pictureCount, 1);
    EXPECT_FALSE(WriteSound(4)) << "the streams are gone";
}

} // namespace
