#pragma once

#include "ffmpeg/FormatTestSupport.h"
#include "ffmpeg/SavedMovie.h"
#include "framework/ImageMetadata.h"
#include "host/AudioBlock.h"
#include "host/Operator.h"
#include "host/Request.h"

#include <random>
#include <string>
#include <vector>

/// Keeps FFmpeg from writing to standard error during its life.
class QuietFFmpeg {
public:
    QuietFFmpeg() : level_(av_log_get_level()) { av_log_set_level(AV_LOG_QUIET); }
    ~QuietFFmpeg() { av_log_set_level(level_); }
    QuietFFmpeg(const QuietFFmpeg&) = delete;
    QuietFFmpeg& operator=(const QuietFFmpeg&) = delete;

private:
    int level_;
};

/// A saver tool with the format's controls, which is used as the host's user does.
class Saver {
public:
    explicit Saver(const char* container = "Matroska", const char* encoder = "MPEG4")
        : format(nullptr, ScriptVal(), TagList()), tool(CorvexDoc::Get(), &format) {
        format.AddSaveInputs(&tool);
        tool.SendDefaults();
        Choose("Container", container);
        Choose("EncoderProfile", encoder);
    }

    void Choose(const char* id, const char* entry) {
        EXPECT_TRUE(tool.SetInput(id, IDParameter(CxID(entry, true)), CxTime_None));
    }
    void Set(const char* id, double number) {
        EXPECT_TRUE(tool.SetInput(id, NumberParameter(number), CxTime_None));
    }
    void SetOptions(const std::string& text) {
        EXPECT_TRUE(tool.SetInput("Options", TextParameter(text), CxTime_None));
    }

    void Setup() {
        Request request(0.0);
        format.SetupSave(&tool, &request);
    }
    /// Reads the controls and makes the file.
    bool Start(const std::string& path, Image& image) {
        Setup();
        return format.SaveHeaderTagList(path.c_str(), &image, tags);
    }
    bool Save(Image& image) { return format.SaveFrameTagList(0, &image, tags); }
    void End() {
        const std::string words = WordsOf([&] { format.CleanupSave(&tool); });
        EXPECT_NE(words.find("Cleanup Save\n"), std::string::npos);
    }

    const QuietFFmpeg quiet;
    CxFFMPEG::FFMPEGFileFormats format;
    Operator tool;
    TagList tags; ///< of the header and of every frame
};

/// An image all over in the grey of a frame: `FrameOfImage` tells which.
inline ImagePtr GreyImage(int32_t frame, int32_t width = 64, int32_t height = 48) {
    ImagePtr image = MakeImage(width, height);
    const int32_t grey = (LumaOfFrame(frame) - 16) * 65535 / 219;
    const Pixel pixel = {grey, grey, grey, 65535};
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            image->SetPixel(pixel, image->RowAddress(y) + x * image->PixelStride, nullptr, image.get());
    return image;
}

/// An image that no encoder makes small.
inline ImagePtr NoiseImage(uint32_t seed, int32_t width = 64, int32_t height = 48) {
    ImagePtr image = MakeImage(width, height);
    std::mt19937 random(seed);
    const auto value = [&] { return static_cast<int32_t>(random() & 0xffff); };
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            const Pixel pixel = {value(), value(), value(), 65535};
            image->SetPixel(pixel, image->RowAddress(y) + x * image->PixelStride, nullptr, image.get());
        }
    }
    return image;
}

/// Saves frames of grey as a movie; all of it has to succeed.
/// @param spoil  what is changed of each image first, if anything
template <typename Spoil>
void SaveGreyMovie(Saver& saver, const std::string& path, int32_t frames, const Spoil& spoil) {
    for (int32_t frame = 0; frame < frames; ++frame) {
        const ImagePtr image = GreyImage(frame);
        spoil(*image);
        if (frame == 0) {
            ASSERT_TRUE(saver.Start(path, *image));
        }
        ASSERT_TRUE(saver.Save(*image)) << frame;
    }
    saver.End();
}

inline void SaveGreyMovie(Saver& saver, const std::string& path, int32_t frames) {
    SaveGreyMovie(saver, path, frames, [](Image&) {});
}

/// The frames whose pictures a movie holds, as the format loads them; -1 for one that is of none.
inline std::vector<int32_t> LoadGreyMovie(const std::string& path) {
    LoadedFormat loaded;
    std::vector<int32_t> frames;
    if (!loaded.Open(path)) return frames;
    for (int32_t frame = 0; frame < loaded.Count(); ++frame)
        frames.push_back(loaded.Load(static_cast<uint32_t>(frame)));
    return frames;
}

/// The first numbers from 0 on.
inline std::vector<int32_t> Numbers(int32_t count) {
    std::vector<int32_t> numbers;
    for (int32_t i = 0; i < count; ++i)
        numbers.push_back(i);
    return numbers;
}
