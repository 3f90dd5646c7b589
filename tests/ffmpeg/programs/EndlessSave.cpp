// Saves pictures of noise as a Matroska, through the controls of a saver tool, until it is killed:
//
//   ffmpeg_endless_save FILE
//
// Exit status: 0 after more pictures than any test waits for, 1 if the save can't be begun or goes wrong, 2
// for wrong usage.

#include "ffmpeg/FFMPEGFileFormats.h"
#include "host/Operator.h"
#include "host/Request.h"
#include "support/TestSupport.h"

#include <random>

namespace {

void FillWithNoise(Image& image, std::mt19937& random) {
    const auto value = [&] { return static_cast<int32_t>(random() & 0xffff); };
    for (int32_t y = 0; y < image.Height; ++y) {
        for (int32_t x = 0; x < image.Width; ++x) {
            const Pixel pixel = {value(), value(), value(), 65535};
            image.SetPixel(pixel, image.RowAddress(y) + x * image.PixelStride, nullptr, &image);
        }
    }
}

bool StartSave(CxFFMPEG::FFMPEGFileFormats& format, const char* path, Image& image) {
    Operator tool(CorvexDoc::Get(), &format);
    format.AddSaveInputs(&tool);
    tool.SendDefaults();
    tool.SetInput("EncoderProfile", IDParameter(CxID("MPEG4", true)), CxTime_None);
    Request request(0.0);
    format.SetupSave(&tool, &request);
    TagList tags;
    return format.SaveHeaderTagList(path, &image, tags);
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) return 2;
    const ImagePtr image = MakeImage(64, 48);
    std::mt19937 random(1);
    CxFFMPEG::FFMPEGFileFormats format(nullptr, ScriptVal(), TagList());
    if (!StartSave(format, arguments[1], *image)) return 1;
    TagList tags;
    for (int frame = 0; frame < 20000; ++frame) {
        FillWithNoise(*image, random);
        if (!format.SaveFrameTagList(0, image.get(), tags)) return 1;
    }
    return 0;
}
