// Saves pictures of a raw file through the host format: the side of bench/save_movies that is ours.
//
// usage: save_frames RAW WIDTH HEIGHT OUTPUT CONTAINER ENCODER OPTIONS
// RAW holds pictures of `rgb48le`, top row first.

#include "ffmpeg/FFMPEGFileFormats.h"
#include "host/Operator.h"
#include "host/Request.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <span>

namespace {

constexpr double keyFrames = 12;

void SetControls(Operator& tool, const char* container, const char* encoder, const char* options) {
    tool.SetInput("Container", IDParameter(CxID(container, true)), CxTime_None);
    tool.SetInput("EncoderProfile", IDParameter(CxID(encoder, true)), CxTime_None);
    tool.SetInput("KeyFrames", NumberParameter(keyFrames), CxTime_None);
    tool.SetInput("Options", TextParameter(options), CxTime_None);
}

/// Reads the next picture; false at the end.
bool Read(std::ifstream& raw, Image& image) {
    std::vector<uint16_t> row(size_t(image.Width) * 3);
    for (int y = image.Height - 1; y >= 0; --y) {
        if (!raw.read(reinterpret_cast<char*>(row.data()), std::streamsize(row.size() * 2))) return false;
        auto* const pixels = reinterpret_cast<uint16_t*>(image.RowTable[y]);
        for (int x = 0; x < image.Width; ++x) {
            for (int channel = 0; channel < 3; ++channel)
                pixels[x * 4 + channel] = row[size_t(x) * 3 + channel];
            pixels[x * 4 + 3] = 0xFFFF;
        }
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 8) return 2;
    const std::span<char*> arguments(argv, size_t(argc));
    CxFFMPEG::FFMPEGFileFormats format(nullptr, ScriptVal(), TagList());
    Operator tool(CorvexDoc::Get(), &format);
    format.AddSaveInputs(&tool);
    tool.SendDefaults();
    SetControls(tool, arguments[5], arguments[6], arguments[7]);
    Request request(0.0);
    format.SetupSave(&tool, &request);

    std::ifstream raw(arguments[1], std::ios::binary);
    Image* image = Image::Allocate(std::atoi(arguments[2]), std::atoi(arguments[3]), ImageData_RGBA16);
    TagList tags;
    bool isDone = image != nullptr && format.SaveHeaderTagList(arguments[4], image, tags);
    uint32_t frame = 0;
    while (isDone && Read(raw, *image))
        isDone = format.SaveFrameTagList(frame++, image, tags);
    format.CleanupSave(&tool);
    Image::Free(image);
    return isDone && frame > 0 ? 0 : 1;
}
