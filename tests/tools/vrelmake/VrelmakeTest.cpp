// Runs the program that makes clips, on pictures that the test knows, and decodes what it made.

#include "standins/rawsdk/RawSession.h"
#include "tools/Workspace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>

namespace {

constexpr int width = 64;
constexpr int height = 48;
constexpr const char* sizes = "64x48";

/// A picture of planes R, G, B that changes slowly, another one for each number.
Words KnownPicture(int number) {
    Words words;
    for (int plane = 0; plane < 3; ++plane)
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const double wave = std::sin(0.02 * x + 0.03 * y + plane + number);
                words.push_back(static_cast<uint16_t>(32768 + 20000 * wave));
            }
    return words;
}

/// Writes known pictures as p.0.png, p.1.png and so on.
void WritePictures(const Workspace& workspace, int count) {
    std::string pixels;
    for (int number = 0; number < count; ++number) {
        const Words words = KnownPicture(number);
        const size_t plane = words.size() / 3;
        for (size_t i = 0; i < plane * 3; ++i) {
            const uint16_t word = words[i % 3 * plane + i / 3];
            pixels += {static_cast<char>(word & 0xFF), static_cast<char>(word >> 8)};
        }
    }
    workspace.Write("pixels", pixels);
    const ProgramRun run = workspace.Shell(std::string("ffmpeg -v error -f rawvideo -pix_fmt rgb48le -s ") +
                                           sizes + " -i pixels -start_number 0 p.%d.png");
    ASSERT_EQ(run.status, 0) << run.err;
}

ProgramRun RunVrelmake(const Workspace& workspace, const std::string& arguments) {
    return workspace.Shell("'" VRELMAKE_PROGRAM "' " + arguments);
}

/// A workspace with three known pictures.
class Vrelmake : public testing::Test {
protected:
    Vrelmake() { WritePictures(workspace_, 3); }

    void Make(const std::string& options) {
        const ProgramRun run = RunVrelmake(workspace_, "p.%d.png -o clip.vrel " + options);
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out + run.err, "");
        ASSERT_EQ(session_.Open(workspace_.Path("clip.vrel")), S_OK);
    }
    void ExpectFailure(const std::string& options, int status, const std::string& cause) {
        const ProgramRun run = RunVrelmake(workspace_, "-o failed.vrel " + options);
        EXPECT_EQ(run.status, status) << options;
        EXPECT_NE(run.err.find(cause), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_FALSE(workspace_.Has("failed.vrel"));
    }
    std::string Timecode(uint64_t frame) {
        BstrHolder text;
        session_.clip->GetTimecode(frame, text.Receive());
        return text.Text();
    }
    /// The entries of an iterator as "key type".
    static std::vector<std::string> EntriesOf(Held<RawMetadataIterator> iterator) {
        std::vector<std::string> entries;
        BstrHolder key;
        while (iterator->GetKey(key.Receive()) == S_OK) {
            Value value;
            iterator->GetData(&value);
            entries.push_back(key.Text() + " " + std::to_string(value.vt));
            iterator->Next();
        }
        return entries;
    }

    Workspace workspace_;
    RawSession session_;
};

double GreatestDifference(const Words& a, const Words& b) {
    double greatest = 0;
    for (size_t i = 0; i < a.size(); ++i)
        greatest = std::max(greatest, std::abs(static_cast<double>(a[i]) - b[i]));
    return greatest;
}

TEST_F(Vrelmake, MakesClipsThatDecodeToTheirPicturesWithinOnePercent) {
    Make("");
    for (const int frame : {2, 0, 1}) {
        const Words picture = session_.Decode(static_cast<uint64_t>(frame));
        ASSERT_EQ(picture.size(), KnownPicture(frame).size());
        EXPECT_LE(GreatestDifference(picture, KnownPicture(frame)), 655) << frame;
    }
}

TEST_F(Vrelmake, MakesClipsThatDecodeToTheirPicturesWhateverTheSettings) {
    for (const char* options : {"--gamma BT.709", "--gamma Linear --kelvin 3200 --tint 20 --exposure 0.5"}) {
        Make(options);
        EXPECT_LE(GreatestDifference(session_.Decode(1), KnownPicture(1)), 980) << options;
    }
}

TEST_F(Vrelmake, WritesTheFactsThatItIsTold) {
    Make("--fps 23.976 --camera 'Test Camera' --iso 1600");
    float rate = 0;
    uint64_t frames = 0;
    BstrHolder camera;
    session_.clip->GetFrameRate(&rate);
    session_.clip->GetFrameCount(&frames);
    session_.clip->GetCameraType(camera.Receive());
    EXPECT_EQ(rate, static_cast<float>(24000.0 / 1001));
    EXPECT_EQ(frames, 3u);
    EXPECT_EQ(camera.Text(), "Test Camera");
    const Held<RawFrame> frame = session_.ReadyFrame(0);
    Held<RawFrameSettings> settings;
    frame->CloneFrameSettings(settings.Receive());
    Value iso;
    settings->GetAttribute(rawIso, &iso);
    EXPECT_EQ(iso.iVal, 1600);
}

TEST_F(Vrelmake, CountsTimecodes) {
    Make("--timecode 01:00:59:23");
    EXPECT_EQ(Timecode(0), "01:00:59:23");
    EXPECT_EQ(Timecode(1), "01:01:00:00");
}

TEST_F(Vrelmake, CountsTimecodesThatDropFrames) {
    Make("--fps 29.97 --timecode '01:00:59;29'");
    EXPECT_EQ(Timecode(0), "01:00:59;29");
    EXPECT_EQ(Timecode(1), "01:01:00;02");
}

TEST_F(Vrelmake, WritesNoTimecodeIfItIsToldNone) {
    Make("");
    EXPECT_EQ(Timecode(0), "");
}

TEST_F(Vrelmake, WritesMetadataOfEveryType) {
    workspace_.Write("m.json", R"({"clip": {"text": "a", "i4": -5, "ui4": 4000000000, "i8": 5000000000,
        "r4": 1.5, "bool": true, "list": [1, 2], "floats": [1, 2.5],
        "ui2": {"type": "ui2", "value": 7}, "bytes": {"type": "ui1", "value": [1, 2, 3]}},
        "everyFrame": {"lens": "50 mm"}, "frames": [{}, {"note": "second"}]})");
    Make("--metadata m.json");
    Held<RawMetadataIterator> clip;
    session_.clip->GetMetadataIterator(clip.Receive());
    EXPECT_EQ(EntriesOf(std::move(clip)),
              (std::vector<std::string>{"text 8", "i4 3", "ui4 19", "i8 20", "r4 4", "bool 11", "list 27",
                                        "floats 27", "ui2 18", "bytes 27"}));
    Held<RawMetadataIterator> second;
    session_.ReadyFrame(1)->GetMetadataIterator(second.Receive());
    EXPECT_EQ(EntriesOf(std::move(second)), (std::vector<std::string>{"lens 8", "note 8"}));
    Held<RawMetadataIterator> third;
    session_.ReadyFrame(2)->GetMetadataIterator(third.Receive());
    EXPECT_EQ(EntriesOf(std::move(third)), (std::vector<std::string>{"lens 8"}));
}

TEST_F(Vrelmake, PutsATableIntoTheClipAndAnotherBesideIt) {
    workspace_.Write("black.cube", "LUT_3D_SIZE 2\n0 0 0\n0 0 0\n0 0 0\n0 0 0\n0 0 0\n0 0 0\n0 0 0\n0 0 0\n");
    workspace_.Write("white.cube", "LUT_3D_SIZE 2\n1 1 1\n1 1 1\n1 1 1\n1 1 1\n1 1 1\n1 1 1\n1 1 1\n1 1 1\n");
    Make("--lut black.cube --sidecar-lut white.cube --lut-mode Embedded");
    EXPECT_EQ(session_.Decode(0), Words(width * height * 3, 0));
    Value mode;
    mode.vt = VT_BSTR;
    mode.bstrVal = BstrOfText("Sidecar");
    session_.settings->SetAttribute(rawLutMode, &mode);
    EXPECT_EQ(session_.Decode(0), Words(width * height * 3, 65535));
}

TEST_F(Vrelmake, SaysWhatIsWrongWithItsCommandLine) {
    ExpectFailure("", 2, "input");
    ExpectFailure("p.%d.png --fps none", 2, "--fps none");
    ExpectFailure("p.%d.png --kelvin 10", 2, "kelvin");
    ExpectFailure("p.%d.png --timecode 1:2:3", 2, "--timecode");
}

TEST_F(Vrelmake, SaysWhatIsWrongWithItsFiles) {
    workspace_.Write("bad.cube", "LUT_3D_SIZE 2\n");
    workspace_.Write("bad.json", "{");
    ExpectFailure("none.%d.png", 3, "none.%d.png");
    ExpectFailure("p.%d.png --lut none.cube", 3, "none.cube");
    ExpectFailure("p.%d.png --sidecar-lut bad.cube", 4, "bad.cube");
    ExpectFailure("p.%d.png --metadata bad.json", 4, "bad.json");
}

TEST_F(Vrelmake, RefusesPicturesThatAreTooSmall) {
    ASSERT_EQ(workspace_.Shell("ffmpeg -v error -i p.0.png -vf scale=3:3 small.png").status, 0);
    ExpectFailure("small.png", 5, "size");
}

TEST_F(Vrelmake, LeavesNoClipIfAPictureIsMissingItsData) {
    workspace_.Write("p.2.png", "no picture");
    ExpectFailure("p.%d.png", 4, "p.2.png");
}

TEST_F(Vrelmake, SaysThatItCannotWrite) {
    const ProgramRun run = RunVrelmake(workspace_, "p.%d.png -o none/clip.vrel");
    EXPECT_EQ(run.status, 6);
    EXPECT_NE(run.err.find("none/clip.vrel"), std::string::npos);
}

} // namespace
