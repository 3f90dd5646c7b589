#include "TestImages.h"
#include "images/ImageFileReader.h"
#include "images/ImageFileWriter.h"
#include "media/ToolError.h"
#include "tools/Workspace.h"

#include <OpenImageIO/imageio.h>
#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr int32_t kWidth = 37;
constexpr int32_t kHeight = 19;

/// Largest difference of any channel after a picture was written and read again.
float WorstAfterRoundTrip(const char* name, ImageStorage storage, bool withAlpha) {
    const Workspace workspace;
    const HostImage written = MakePattern(kWidth, kHeight, storage.kind);
    WriteImageFile(workspace.Path(name), *written, storage, withAlpha, {});
    EXPECT_FALSE(workspace.Has(std::string(name) + ".part"));
    ImageFileReader reader(workspace.Path(name));
    EXPECT_EQ(reader.Info().hasAlpha, withAlpha);
    const HostImage read = reader.Read();
    float worst = 0.0f;
    for (int32_t y = 0; y < kHeight; ++y) {
        for (int32_t x = 0; x < kWidth; ++x) {
            const PixelFloat a = PixelAt(*written, x, y);
            const PixelFloat b = PixelAt(*read, x, y);
            const float alpha = withAlpha ? std::abs(a.A - b.A) : std::abs(1.0f - b.A);
            worst = std::max({worst, std::abs(a.R - b.R), std::abs(a.G - b.G), std::abs(a.B - b.B), alpha});
        }
    }
    return worst;
}

ExitStatus StatusOfReading(const std::string& path) {
    try {
        ImageFileReader(path).Read();
    } catch (const ToolError& error) {
        EXPECT_EQ(error.file(), path);
        return error.status();
    }
    return ExitStatus::Done;
}

/// Writes a file with OpenImageIO itself, all values 0.5 and channels as `spec` names them.
void WriteWithPeer(const std::string& path, const OIIO::ImageSpec& spec) {
    const auto output = OIIO::ImageOutput::create(path);
    const std::vector<float> pixels(static_cast<size_t>(spec.width) * spec.height * spec.nchannels, 0.5f);
    ASSERT_TRUE(output && output->open(path, spec));
    ASSERT_TRUE(output->write_image(OIIO::TypeDesc::FLOAT, pixels.data()));
    ASSERT_TRUE(output->close());
}

} // namespace

TEST(ImageFile, KeepsFloatAndHalfValuesOfExrAsTheyAre) {
    for (const bool alpha : {false, true}) {
        EXPECT_EQ(WorstAfterRoundTrip("a.exr", {ImageData_RGBAFloat, 32}, alpha), 0.0f);
        EXPECT_EQ(WorstAfterRoundTrip("a.exr", {ImageData_RGBAHalf, 16}, alpha), 0.0f);
    }
}

TEST(ImageFile, KeepsIntegersAndStraightAlphaOfPngAndTiff) {
    for (const bool alpha : {false, true}) {
        for (const char* name : {"a.png", "a.tif", "a.tiff"}) {
            EXPECT_EQ(WorstAfterRoundTrip(name, {ImageData_RGBA8, 8}, alpha), 0.0f) << name;
            EXPECT_EQ(WorstAfterRoundTrip(name, {ImageData_RGBA16, 16}, alpha), 0.0f) << name;
        }
    }
}

TEST(ImageFile, KeepsFloatValuesOfTiff) {
    EXPECT_EQ(WorstAfterRoundTrip("a.tif", {ImageData_RGBAFloat, 32}, true), 0.0f);
    EXPECT_EQ(WorstAfterRoundTrip("a.tif", {ImageData_RGBAHalf, 16}, false), 0.0f);
}

TEST(ImageFile, KeepsTenBitsOfColourInDpx) {
    const float worst = WorstAfterRoundTrip("a.dpx", {ImageData_RGBA16, 10}, false);
    EXPECT_LE(worst, 1.0f / 1023);
    EXPECT_GT(worst, 0.0f);
}

TEST(ImageFile, TakesSixteenBitsForADpxWithAlpha) {
    EXPECT_EQ(WorstAfterRoundTrip("a.dpx", {ImageData_RGBA16, 10}, true), 0.0f);
}

TEST(ImageFile, KeepsEightAndSixteenBitsInDpx) {
    for (const bool alpha : {false, true}) {
        EXPECT_EQ(WorstAfterRoundTrip("a.dpx", {ImageData_RGBA16, 16}, alpha), 0.0f);
        EXPECT_EQ(WorstAfterRoundTrip("a.dpx", {ImageData_RGBA8, 8}, alpha), 0.0f);
    }
}

TEST(ImageFile, TellsItsDepthAndChannels) {
    const Workspace workspace;
    const HostImage image = MakePattern(4, 3, ImageData_RGBA16);
    WriteImageFile(workspace.Path("a.dpx"), *image, {ImageData_RGBA16, 10}, false, {});
    const ImageFileReader reader(workspace.Path("a.dpx"));
    EXPECT_EQ(reader.Info().format, "dpx");
    EXPECT_EQ(reader.Info().depth, "10 bits");
    EXPECT_EQ(reader.Info().channels, (std::vector<std::string>{"R", "G", "B"}));
    EXPECT_EQ(reader.Info().width, 4);
    EXPECT_EQ(reader.Info().height, 3);
}

TEST(ImageFile, WritesTimeCodeAndRateIntoExr) {
    const Workspace workspace;
    const HostImage image = MakePattern(4, 3, ImageData_RGBAHalf);
    WriteImageFile(workspace.Path("a.exr"), *image, {ImageData_RGBAHalf, 16}, false,
                   {0x01020304, 24000, 1001});
    const auto input = OIIO::ImageInput::open(workspace.Path("a.exr"));
    ASSERT_TRUE(input);
    const OIIO::ImageSpec& spec = input->spec();
    const auto* code = spec.find_attribute("smpte:TimeCode");
    const auto* rate = spec.find_attribute("FramesPerSecond", OIIO::TypeRational);
    ASSERT_TRUE(code != nullptr && rate != nullptr);
    EXPECT_EQ(static_cast<const uint32_t*>(code->data())[0], 0x01020304U);
    EXPECT_EQ(static_cast<const int*>(rate->data())[0], 24000);
    EXPECT_EQ(static_cast<const int*>(rate->data())[1], 1001);
}

TEST(ImageFile, SpreadsGreyOverTheThreeColours) {
    const Workspace workspace;
    WriteWithPeer(workspace.Path("grey.png"), OIIO::ImageSpec(5, 4, 1, OIIO::TypeDesc::UINT8));
    ImageFileReader reader(workspace.Path("grey.png"));
    const HostImage image = reader.Read();
    const PixelFloat pixel = PixelAt(*image, 2, 2);
    EXPECT_EQ(pixel.R, pixel.G);
    EXPECT_EQ(pixel.R, pixel.B);
    EXPECT_NEAR(pixel.R, 0.5f, 0.01f);
    EXPECT_EQ(pixel.A, 1.0f);
}

TEST(ImageFile, FindsChannelsByNameAmongOthers) {
    const Workspace workspace;
    OIIO::ImageSpec spec(5, 4, 5, OIIO::TypeDesc::HALF);
    spec.channelnames = {"R", "G", "B", "A", "depth.Z"};
    WriteWithPeer(workspace.Path("many.exr"), spec);
    ImageFileReader reader(workspace.Path("many.exr"));
    EXPECT_TRUE(reader.Info().hasAlpha);
    const HostImage image = reader.Read();
    EXPECT_EQ(PixelAt(*image, 4, 3).A, 0.5f);
}

TEST(ImageFile, PlacesTheDataWindowInTheWholePicture) {
    const Workspace workspace;
    OIIO::ImageSpec spec(6, 6, 4, OIIO::TypeDesc::HALF);
    spec.x = -2;
    spec.y = 3;
    spec.full_x = 0;
    spec.full_y = 0;
    spec.full_width = 8;
    spec.full_height = 5;
    WriteWithPeer(workspace.Path("window.exr"), spec);
    ImageFileReader reader(workspace.Path("window.exr"));
    const HostImage image = reader.Read();
    EXPECT_EQ(image->Width, 8);
    EXPECT_EQ(image->Height, 5);
    EXPECT_EQ(PixelAt(*image, 0, 2).R, 0.0f);
    EXPECT_EQ(PixelAt(*image, 0, 3).R, 0.5f);
    EXPECT_EQ(PixelAt(*image, 3, 4).R, 0.5f);
    EXPECT_EQ(PixelAt(*image, 4, 4).R, 0.0f);
}

TEST(ImageFile, CantBeOpenedIfItIsNotThere) {
    const Workspace workspace;
    EXPECT_EQ(StatusOfReading(workspace.Path("none.exr")), ExitStatus::CannotOpen);
    std::filesystem::create_directory(workspace.Path("directory.exr"));
    EXPECT_EQ(StatusOfReading(workspace.Path("directory.exr")), ExitStatus::CannotOpen);
}

TEST(ImageFile, IsDamagedIfItIsNoImage) {
    const Workspace workspace;
    for (const char* name : {"text.exr", "text.png", "text.tif", "text.dpx"}) {
        workspace.Write(name, "this is no image");
        EXPECT_EQ(StatusOfReading(workspace.Path(name)), ExitStatus::Damaged) << name;
        workspace.Write(name, "");
        EXPECT_EQ(StatusOfReading(workspace.Path(name)), ExitStatus::Damaged) << name;
    }
}

TEST(ImageFile, IsDamagedIfItBreaksOff) {
    const Workspace workspace;
    for (const char* name : {"a.exr", "a.png", "a.tif", "a.dpx"}) {
        const bool isExr = std::string(name) == "a.exr";
        const ImageStorage storage =
            isExr ? ImageStorage{ImageData_RGBAHalf, 16} : ImageStorage{ImageData_RGBA16, 16};
        WriteImageFile(workspace.Path(name), *MakePattern(200, 100, storage.kind), storage, false, {});
        const std::string whole = workspace.Read(name);
        workspace.Write(name, whole.substr(0, whole.size() / 2));
        EXPECT_NE(StatusOfReading(workspace.Path(name)), ExitStatus::Done) << name;
    }
}

TEST(ImageFile, OfAnAbsurdSizeIsRefusedBeforeMemoryIsTaken) {
    const Workspace workspace;
    // A PNG header that claims 900000 pixels in each direction, with its checksum (ISO/IEC 15948, 11.2.2).
    const char header[] =
        "\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\x0d\xbb\xa0\0\x0d\xbb\xa0\x08\2\0\0\0\x5f\xdf\x06\xd8";
    workspace.Write("huge.png", std::string(header, sizeof(header) - 1));
    EXPECT_NE(StatusOfReading(workspace.Path("huge.png")), ExitStatus::Done);
    const HostImage image = MakePattern(8, 8, ImageData_RGBA16);
    WriteImageFile(workspace.Path("huge.dpx"), *image, {ImageData_RGBA16, 16}, false, {});
    std::string dpx = workspace.Read("huge.dpx");
    // Pixels per line and lines per element (SMPTE ST 268-1, image information header).
    for (const size_t offset : {772, 776})
        dpx.replace(offset, 4, std::string("\x7f\x7f\x7f\x7f"));
    workspace.Write("huge.dpx", dpx);
    EXPECT_EQ(StatusOfReading(workspace.Path("huge.dpx")), ExitStatus::Unsupported);
}

TEST(ImageFile, LeavesNothingBehindWhereItCantBeWritten) {
    const Workspace workspace;
    const HostImage image = MakePattern(4, 3, ImageData_RGBA16);
    const std::string path = workspace.Path("none/a.png");
    EXPECT_THROW(WriteImageFile(path, *image, {ImageData_RGBA16, 16}, false, {}), ToolError);
    std::filesystem::create_directory(workspace.Path("a.png"));
    EXPECT_THROW(WriteImageFile(workspace.Path("a.png"), *image, {ImageData_RGBA16, 16}, false, {}),
                 ToolError);
    EXPECT_FALSE(workspace.Has("a.png.part"));
}
