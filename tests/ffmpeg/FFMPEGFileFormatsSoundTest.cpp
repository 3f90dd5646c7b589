// Sound that goes with the pictures of a save.

#include "ffmpeg/SaveTestSupport.h"

#include <bit>
#include <cmath>
#include <filesystem>

namespace {

using namespace CxFFMPEG;

constexpr int32_t sampleRate = 48000;
constexpr int32_t samplesOfFrame = 2000; ///< of each channel, at 24 frames per second

/// A container and a kind of sound that it holds as it is.
struct SoundCase {
    const char* container;
    uint8_t bits;
    uint8_t channels;
};

/// Bytes of sound that no conversion would leave as they are: no two samples next to each other are equal.
std::vector<uint8_t> MakeSound(const SoundCase& kind, int32_t frames) {
    std::vector<uint8_t> bytes;
    const size_t size = kind.bits / 8U;
    const size_t count = static_cast<size_t>(frames) * samplesOfFrame * kind.channels;
    for (size_t i = 0; i < count; ++i) {
        const auto word = static_cast<uint32_t>(i * 2654435761U);
        const uint32_t sample =
            kind.bits == 32 ? std::bit_cast<uint32_t>(std::sin(static_cast<float>(i))) : word;
        const auto* const first = reinterpret_cast<const uint8_t*>(&sample);
        bytes.insert(bytes.end(), first, first + size);
    }
    return bytes;
}

class SavedSound : public testing::Test {
protected:
    /// Saves grey frames, each with its share of the sound; all of it has to succeed.
    void Save(const SoundCase& kind, std::vector<uint8_t>& bytes, int32_t frames) {
        Saver saver(kind.container, "MPEG4");
        const auto share = static_cast<int32_t>(bytes.size()) / frames;
        AudioBlock block = {bytes.data(), sampleRate, kind.bits, kind.channels, share};
        saver.tags.SetPtr(AudioTag_Block, &block);
        ASSERT_TRUE(saver.Start(path, *GreyImage(0)));
        for (int32_t frame = 0; frame < frames; ++frame) {
            ASSERT_TRUE(saver.Save(*GreyImage(frame))) << frame;
            block.Data += share;
        }
        saver.End();
    }

    const Workspace workspace;
    const std::string path = workspace.Path("movie");
};

class ExactSound : public SavedSound, public testing::WithParamInterface<SoundCase> {};

TEST_P(ExactSound, ArrivesSampleForSample) {
    const SoundCase& kind = GetParam();
    constexpr int32_t frames = 3;
    std::vector<uint8_t> bytes = MakeSound(kind, frames);
    Save(kind, bytes, frames);
    const SavedMovie movie(path);
    ASSERT_NE(movie.Sound(), nullptr);
    EXPECT_EQ(movie.Sound()->codecpar->sample_rate, sampleRate);
    EXPECT_EQ(movie.Sound()->codecpar->ch_layout.nb_channels, kind.channels);
    EXPECT_EQ(av_get_bits_per_sample(movie.Sound()->codecpar->codec_id), kind.bits);
    EXPECT_TRUE(movie.sound == bytes);
    EXPECT_EQ(movie.pictureCount, frames);
}

constexpr char avi[] = "AVI (Audio Video Interleaved)";
constexpr char quickTime[] = "QuickTime / MOV";

INSTANTIATE_TEST_SUITE_P(
    Containers, ExactSound,
    testing::Values(SoundCase{"Matroska", 16, 1}, SoundCase{"Matroska", 16, 2}, SoundCase{"Matroska", 16, 6},
                    SoundCase{"Matroska", 24, 1}, SoundCase{"Matroska", 24, 2}, SoundCase{"Matroska", 24, 6},
                    SoundCase{"Matroska", 32, 1}, SoundCase{"Matroska", 32, 2}, SoundCase{"Matroska", 32, 6},
                    SoundCase{avi, 16, 1}, SoundCase{avi, 24, 2}, SoundCase{avi, 32, 6},
                    SoundCase{quickTime, 16, 6}, SoundCase{quickTime, 24, 1}, SoundCase{quickTime, 32, 2}));

TEST_F(SavedSound, ChannelsHaveTheirUsualPlaces) {
    for (const auto& [channels, mask] : {std::pair(1, 4U), std::pair(2, 3U), std::pair(6, 0x3FU)}) {
        const SoundCase kind = {avi, 16, static_cast<uint8_t>(channels)};
        std::vector<uint8_t> bytes = MakeSound(kind, 1);
        const OpenedDecoders opened;
        Save(kind, bytes, 1);
        EXPECT_EQ(OpenedDecoders::asGiven.ch_layout.u.mask, mask) << channels;
    }
}

TEST_F(SavedSound, TwentyBitsBecomeBytes) {
    std::vector<uint8_t> bytes(3 * samplesOfFrame);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(i);
    Save({"Matroska", 20, 1}, bytes, 3);
    const SavedMovie movie(path);
    ASSERT_NE(movie.Sound(), nullptr);
    EXPECT_EQ(movie.Sound()->codecpar->codec_id, AV_CODEC_ID_PCM_U8);
    EXPECT_TRUE(movie.sound == bytes);
}

TEST_F(SavedSound, SoundAheadOfPicturesThatAreHeldBackGoesIntoAnAsf) {
    const SoundCase kind = {"ASF (Advanced / Active Streaming Format)", 16, 2};
    std::vector<uint8_t> bytes = MakeSound(kind, 48);
    Save(kind, bytes, 48);
    EXPECT_GT(std::filesystem::file_size(path), bytes.size());
}

TEST_F(SavedSound, EachBlockFollowsTheOneBeforeInTime) {
    const SoundCase kind = {quickTime, 16, 2};
    std::vector<uint8_t> bytes = MakeSound(kind, 4);
    Save(kind, bytes, 4);
    const SavedMovie movie(path);
    ASSERT_NE(movie.Sound(), nullptr);
    EXPECT_EQ(movie.Sound()->duration * av_q2d(movie.Sound()->time_base), 4.0 * samplesOfFrame / sampleRate);
}

TEST_F(SavedSound, AFrameWithoutABlockSavesThePictureAlone) {
    Saver saver;
    std::vector<uint8_t> bytes = MakeSound({"Matroska", 16, 1}, 1);
    AudioBlock block = {bytes.data(), sampleRate, 16, 1, static_cast<int32_t>(bytes.size())};
    saver.tags.SetPtr(AudioTag_Block, &block);
    ASSERT_TRUE(saver.Start(path, *GreyImage(0)));
    EXPECT_TRUE(saver.Save(*GreyImage(0)));
    saver.tags = TagList();
    EXPECT_TRUE(saver.Save(*GreyImage(1)));
    saver.End();
    const SavedMovie movie(path);
    EXPECT_TRUE(movie.sound == bytes);
    EXPECT_EQ(movie.pictureCount, 2);
}

TEST_F(SavedSound, ABlockThatTheHeaderDidNotTellOfIsRefused) {
    Saver saver;
    uint8_t samples[4] = {};
    AudioBlock block = {samples, sampleRate, 16, 1, sizeof samples};
    ASSERT_TRUE(saver.Start(path, *GreyImage(0)));
    saver.tags.SetPtr(AudioTag_Block, &block);
    EXPECT_FALSE(saver.Save(*GreyImage(0)));
    saver.tags = TagList();
    EXPECT_TRUE(saver.Save(*GreyImage(1)));
    saver.End();
    EXPECT_EQ(LoadGreyMovie(path), Numbers(2)) << "the picture was saved all the same";
}

TEST_F(SavedSound, BlocksThatHoldNoSoundAreRefused) {
    Saver saver;
    uint8_t samples[4] = {};
    AudioBlock block = {samples, sampleRate, 16, 1, sizeof samples};
    saver.tags.SetPtr(AudioTag_Block, &block);
    ASSERT_TRUE(saver.Start(path, *GreyImage(0)));
    block.Size = -4;
    EXPECT_FALSE(saver.Save(*GreyImage(0)));
    block = {nullptr, sampleRate, 16, 1, 4};
    EXPECT_FALSE(saver.Save(*GreyImage(1)));
    block = {samples, sampleRate, 16, 1, sizeof samples};
    EXPECT_TRUE(saver.Save(*GreyImage(2)));
    saver.End();
    const SavedMovie movie(path);
    EXPECT_EQ(movie.sound.size(), sizeof samples);
    EXPECT_EQ(movie.pictureCount, 3);
}

TEST_F(SavedSound, ABlockOfNoSamplesIsFine) {
    Saver saver("AVI (Audio Video Interleaved)");
    uint8_t samples[4] = {};
    AudioBlock block = {samples, sampleRate, 16, 1, 0};
    saver.tags.SetPtr(AudioTag_Block, &block);
    ASSERT_TRUE(saver.Start(path, *GreyImage(0)));
    EXPECT_TRUE(saver.Save(*GreyImage(0)));
    block.Data = nullptr;
    EXPECT_TRUE(saver.Save(*GreyImage(1)));
    saver.End();
    EXPECT_EQ(LoadGreyMovie(path), Numbers(2));
}

TEST_F(SavedSound, SoundThatCannotBeIsRefusedWithTheHeader) {
    uint8_t samples[4] = {};
    for (const AudioBlock& bad : {AudioBlock{samples, 0, 16, 1, 4}, AudioBlock{samples, -1, 16, 1, 4},
                                  AudioBlock{samples, sampleRate, 16, 0, 4}}) {
        Saver saver;
        saver.tags.SetPtr(AudioTag_Block, &bad);
        EXPECT_FALSE(saver.Start(path, *GreyImage(0)));
        EXPECT_FALSE(saver.Save(*GreyImage(0)));
        saver.tags = TagList();
        SaveGreyMovie(saver, path, 2);
        EXPECT_EQ(LoadGreyMovie(path), Numbers(2));
    }
}

TEST_F(SavedSound, AContainerThatHoldsNoSuchSoundRefusesTheFrames) {
    Saver saver("CompuServe Graphics Interchange Format (GIF)", "GIF");
    uint8_t samples[4] = {};
    AudioBlock block = {samples, sampleRate, 16, 1, sizeof samples};
    saver.tags.SetPtr(AudioTag_Block, &block);
    ASSERT_TRUE(saver.Start(path, *GreyImage(0)));
    EXPECT_FALSE(saver.Save(*GreyImage(0)));
    EXPECT_FALSE(saver.Save(*GreyImage(1)));
    saver.End();
    EXPECT_FALSE(SavedMovie(path).IsOpen());
}

} // namespace
