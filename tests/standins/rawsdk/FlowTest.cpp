// From a frame to its picture, step by step.

#include "standins/rawsdk/RawSession.h"

#include "rawsdk/picture/Mosaic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>

namespace {

constexpr uint32_t width = 40;
constexpr uint32_t height = 70;

/// A picture that changes slowly, in codes.
Words SmoothPicture() {
    Words words;
    for (int plane = 0; plane < 3; ++plane)
        for (uint32_t y = 0; y < height; ++y)
            for (uint32_t x = 0; x < width; ++x)
                words.push_back(static_cast<uint16_t>(20000 + 300 * x + 200 * y + 4000 * plane));
    return words;
}

/// Writes a clip of one frame that shows a picture.
void WritePicture(const std::string& path, Words picture, rawsdk::ClipProperties clip,
                  const rawsdk::FrameSettings& settings = {}) {
    const rawsdk::Mosaic mosaic(rawsdk::ToneOf(clip.settings, settings));
    rawsdk::ClipWriter writer(path, std::move(clip));
    writer.Add({settings, {}, rawsdk::noTimecode}, mosaic.Samples({picture.data(), width, height}));
    writer.Finish();
}

int GreatestDifference(const Words& a, const Words& b) {
    int greatest = 0;
    for (size_t i = 0; i < a.size(); ++i)
        greatest = std::max(greatest, std::abs(a[i] - b[i]));
    return greatest;
}

/// A table that swaps red and blue, as text.
constexpr const char* swapText = "LUT_3D_SIZE 2\n0 0 0\n0 0 1\n0 1 0\n0 1 1\n1 0 0\n1 0 1\n1 1 0\n1 1 1\n";

Words Swapped(const Words& picture) {
    Words swapped = picture;
    const size_t plane = picture.size() / 3;
    std::swap_ranges(swapped.begin(), swapped.begin() + static_cast<ptrdiff_t>(plane),
                     swapped.end() - static_cast<ptrdiff_t>(plane));
    return swapped;
}

class Flow : public testing::Test {
protected:
    std::string Path() const { return folder_ / "clip.vrel"; }
    void Open(const rawsdk::ClipProperties& clip = SizedClip(width, height),
              const rawsdk::FrameSettings& settings = {}) {
        WritePicture(Path(), SmoothPicture(), clip, settings);
        ASSERT_EQ(session_.Open(Path()), S_OK);
    }

    TemporaryFolder folder_;
    RawSession session_;
};

TEST_F(Flow, GivesAKnownPictureBack) {
    Open();
    EXPECT_LE(GreatestDifference(session_.Decode(0), SmoothPicture()), 250);
}

TEST_F(Flow, GivesAKnownPictureBackWhateverTheLightWas) {
    Open(SizedClip(width, height), {3200, 15, 0.5f, 400});
    EXPECT_LE(GreatestDifference(session_.Decode(0), SmoothPicture()), 400);
}

TEST_F(Flow, AppliesTheSettingsThatItIsGiven) {
    Open();
    Value saturation;
    saturation.vt = VT_R4;
    saturation.fltVal = 0;
    ASSERT_EQ(session_.settings->SetAttribute(rawSaturation, &saturation), S_OK);
    const Words picture = session_.Decode(0);
    const size_t plane = picture.size() / 3;
    EXPECT_TRUE(std::equal(picture.begin(), picture.begin() + static_cast<ptrdiff_t>(plane),
                           picture.begin() + static_cast<ptrdiff_t>(plane)));
}

TEST_F(Flow, AppliesTheTableInTheClip) {
    rawsdk::ClipProperties clip = SizedClip(width, height);
    std::istringstream text(swapText);
    clip.table = rawsdk::ReadColorTable(text);
    clip.settings.lutMode = rawsdk::lutEmbedded;
    Open(clip);
    EXPECT_LE(GreatestDifference(session_.Decode(0), Swapped(SmoothPicture())), 250);
}

TEST_F(Flow, AppliesTheTableBesideTheClip) {
    std::ofstream(folder_ / "clip.cube") << swapText;
    rawsdk::ClipProperties clip = SizedClip(width, height);
    clip.settings.lutMode = rawsdk::lutSidecar;
    Open(clip);
    EXPECT_LE(GreatestDifference(session_.Decode(0), Swapped(SmoothPicture())), 250);
}

TEST_F(Flow, AppliesNoTableThatIsDisabledOrMissing) {
    std::ofstream(folder_ / "clip.cube") << swapText;
    for (const char* mode : {rawsdk::lutDisabled, rawsdk::lutEmbedded}) {
        rawsdk::ClipProperties clip = SizedClip(width, height);
        clip.settings.lutMode = mode;
        Open(clip);
        Held<RawLut> lut;
        EXPECT_EQ(session_.settings->GetLut(lut.Receive()), S_OK);
        EXPECT_FALSE(lut);
        EXPECT_LE(GreatestDifference(session_.Decode(0), SmoothPicture()), 250);
    }
}

TEST_F(Flow, TellsTheSizesOfItsBuffers) {
    Open();
    const Held<RawFrame> frame = session_.ReadyFrame(0);
    ASSERT_EQ(session_.Fill(frame.Get()), S_OK);
    EXPECT_EQ(session_.decoded.size(), width * height * 4u);
    EXPECT_EQ(session_.processed.size(), width * height * 3u);
    const auto size = Query<RawFrameSize>(frame.Get(), IID_RawFrameSize);
    uint32_t dimensions[2] = {};
    EXPECT_EQ(size->GetProcessedDimensions(&dimensions[0], &dimensions[1]), S_OK);
    EXPECT_EQ(dimensions[0], width);
    EXPECT_EQ(dimensions[1], height);
}

TEST_F(Flow, HasOneScaleAndOneFormat) {
    Open();
    const Held<RawFrame> frame = session_.ReadyFrame(0);
    EXPECT_EQ(frame->SetResolutionScale(RawCode("half")), E_INVALIDARG);
    EXPECT_EQ(frame->SetResourceFormat(RawCode("8bit")), E_INVALIDARG);
}

TEST_F(Flow, FillsNoStateOfAFrameThatIsNotReady) {
    Open();
    const Finished read = session_.Read(0);
    EXPECT_EQ(session_.Fill(static_cast<RawFrame*>(read.product.Get())), E_INVALIDARG);
}

TEST_F(Flow, FillsNoStateWithoutRoomOrArguments) {
    Open();
    const Held<RawFrame> frame = session_.ReadyFrame(0);
    Held<RawFrameSettings> settings;
    frame->CloneFrameSettings(settings.Receive());
    uint32_t size = 0;
    ASSERT_EQ(session_.flow->GetFrameStateSize(&size), S_OK);
    std::vector<uint8_t> state(size, 0xEE);
    const auto fill = [&](RawFrame* of, RawClipSettings* clip, RawFrameSettings* own, void* into,
                          uint32_t room) { return session_.flow->FillFrameState(of, clip, own, into, room); };
    RawClipSettings* const clip = session_.settings.Get();
    EXPECT_EQ(fill(frame.Get(), clip, settings.Get(), state.data(), size - 1), E_INVALIDARG);
    EXPECT_EQ(fill(nullptr, clip, settings.Get(), state.data(), size), E_INVALIDARG);
    EXPECT_EQ(fill(frame.Get(), nullptr, settings.Get(), state.data(), size), E_INVALIDARG);
    EXPECT_EQ(fill(frame.Get(), clip, nullptr, state.data(), size), E_INVALIDARG);
    EXPECT_EQ(fill(frame.Get(), clip, settings.Get(), nullptr, size), E_INVALIDARG);
    EXPECT_EQ(state, std::vector<uint8_t>(size, 0xEE));
}

TEST_F(Flow, RefusesStatesThatItHasNotFilled) {
    Open();
    const Held<RawFrame> frame = session_.ReadyFrame(0);
    ASSERT_EQ(session_.Fill(frame.Get()), S_OK);
    for (size_t i = 0; i < session_.state.size(); ++i) {
        std::vector<uint8_t> state = session_.state;
        state[i] ^= 0x10;
        uint32_t size = 7;
        EXPECT_EQ(session_.flow->GetDecodedSize(state.data(), &size), E_INVALIDARG) << i;
        EXPECT_EQ(size, 0u);
        EXPECT_EQ(session_.flow->GetProcessedSize(state.data(), &size), E_INVALIDARG) << i;
    }
}

TEST_F(Flow, CreatesNoJobsWithoutBuffers) {
    Open();
    const Held<RawFrame> frame = session_.ReadyFrame(0);
    ASSERT_EQ(session_.Fill(frame.Get()), S_OK);
    void* const state = session_.state.data();
    uint16_t* const words = session_.decoded.data();
    void* const odd = reinterpret_cast<uint8_t*>(words) + 1;
    Held<RawJob> job;
    RawManualFlow& flow = *session_.flow.Get();
    EXPECT_EQ(flow.CreateDecodeJob(nullptr, session_.bitstream.data(), words, job.Receive()), E_INVALIDARG);
    EXPECT_EQ(flow.CreateDecodeJob(state, nullptr, words, job.Receive()), E_INVALIDARG);
    EXPECT_EQ(flow.CreateDecodeJob(state, session_.bitstream.data(), odd, job.Receive()), E_INVALIDARG);
    EXPECT_EQ(flow.CreateProcessJob(state, nullptr, words, nullptr, job.Receive()), E_INVALIDARG);
    EXPECT_EQ(flow.CreateProcessJob(state, words, nullptr, nullptr, job.Receive()), E_INVALIDARG);
    EXPECT_EQ(flow.CreateProcessJob(state, words, words, nullptr, nullptr), E_POINTER);
    uint32_t bound = 0;
    session_.reader->GetBitstreamBound(&bound);
    EXPECT_EQ(session_.reader->CreateReadJob(0, nullptr, bound, job.Receive()), E_INVALIDARG);
    EXPECT_EQ(session_.reader->CreateReadJob(1, words, bound, job.Receive()), E_INVALIDARG);
    EXPECT_FALSE(job);
}

TEST_F(Flow, FailsToReadIntoABufferThatIsTooSmall) {
    Open();
    std::vector<uint8_t> buffer(100);
    Held<RawJob> job;
    ASSERT_EQ(session_.reader->CreateReadJob(0, buffer.data(), 100, job.Receive()), S_OK);
    EXPECT_EQ(session_.Run(job.Get()).result, E_INVALIDARG);
}

TEST_F(Flow, FailsToDecodeABitstreamThatWasChanged) {
    Open();
    const Held<RawFrame> frame = session_.ReadyFrame(0);
    ASSERT_EQ(session_.Fill(frame.Get()), S_OK);
    size_t failures = 0;
    for (size_t i = 0; i < session_.bitstream.size(); i += 7) {
        std::vector<uint8_t> damaged = session_.bitstream;
        damaged[i] ^= 0x55;
        Held<RawJob> job;
        ASSERT_EQ(session_.flow->CreateDecodeJob(session_.state.data(), damaged.data(),
                                                 session_.decoded.data(), job.Receive()),
                  S_OK);
        failures += session_.Run(job.Get()).result != S_OK ? 1 : 0;
    }
    EXPECT_GT(failures, session_.bitstream.size() / 7 * 9 / 10);
}

TEST_F(Flow, FailsToDecodeTheBitstreamOfAnotherFrame) {
    rawsdk::FrameProperties other;
    other.settings.iso = 800;
    WriteClip(Path(), SizedClip(width, height), {{}, other});
    ASSERT_EQ(session_.Open(Path()), S_OK);
    const Held<RawFrame> first = session_.ReadyFrame(0);
    ASSERT_EQ(session_.Fill(first.Get()), S_OK);
    const Finished second = session_.Read(1);
    Held<RawJob> job;
    ASSERT_EQ(session_.flow->CreateDecodeJob(session_.state.data(), session_.bitstream.data(),
                                             session_.decoded.data(), job.Receive()),
              S_OK);
    EXPECT_NE(session_.Run(job.Get()).result, S_OK);
}

TEST_F(Flow, ReadsFramesOfEveryHeightAboutThatOfAStrip) {
    for (const uint32_t rows : {4u, 5u, 63u, 64u, 65u, 66u, 127u, 129u}) {
        WriteClip(Path(), SizedClip(9, rows), {{}});
        ASSERT_EQ(session_.Open(Path()), S_OK);
        EXPECT_EQ(session_.Decode(0).size(), 9u * rows * 3) << rows;
    }
}

} // namespace
