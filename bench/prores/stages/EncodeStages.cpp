// Prints a Markdown table of what the stages of encoding a picture take on one worker: processor time, of
// each stage the least of several encodes.
//
// usage: encode_stages [REPETITIONS]

#include "prores/PrxFormats.h"
#include "prores/PrxSizes.h"
#include "prores/PrxThreadPool.h"
#include "prores/encoder/PrxEncodeRow.h"
#include "prores/encoder/PrxEncodeSlice.h"
#include "prores/encoder/PrxFrameWriter.h"
#include "prores/encoder/PrxPictureEncoder.h"
#include "support/CameraMaterial.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <vector>

namespace {

/// Passes over a picture, and the part of the first one in which its slices are counted.
enum Stage : size_t { Measure, Count, Write, Fit, stageCount };
using StageTimes = std::array<double, stageCount>; ///< milliseconds

/// Processor time of this thread in milliseconds.
double ThreadTime() {
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

/// Those of the picture under way; changed by the one worker alone.
StageTimes times;

Stage StageOf(PrxCodingPass pass) {
    switch (pass) {
    case PrxCodingPass::Measure: return Measure;
    case PrxCodingPass::Write: return Write;
    case PrxCodingPass::Fit: return Fit;
    }
    return Measure;
}

/// Runs a job and adds what it takes. In the first pass the slices are counted a second time, to know what
/// that took the first time.
void RunTimed(PrxEncodeRowJob* job, PrxEncodeContext* context) {
    const PrxCodingPass pass = job->picture->pass;
    const double start = ThreadTime();
    PrxEncodeRow(job, context);
    const double end = ThreadTime();
    times[StageOf(pass)] += end - start;
    if (pass != PrxCodingPass::Measure) return;
    for (PrxSlice& slice : job->slices)
        PrxEncodeSlice(*job->picture, slice, *context);
    times[Count] += ThreadTime() - end;
}

struct Material {
    const char* codecName;
    uint32_t codecType;
    const char* formatName;
    uint32_t pixelFormat;
    int32_t width;
    int32_t height;
    float grain;
};

/// What a progressive frame of the material aims for.
PrxRateTarget TargetOf(const Material& material) {
    constexpr auto overhead = static_cast<int32_t>(prxFirstPictureOffset + 50);
    const PrxProfile profile = PrxGetProfile(material.codecType);
    const int64_t size = PrxGetTargetSize(material.codecType, PrxCountPixels(material.width, material.height),
                                          material.pixelFormat);
    return {.startQuantIndex = profile.startQuantIndex,
            .matrixIndex = profile.matrixIndex,
            .targetHigh = static_cast<int32_t>(size) - overhead,
            .targetLow = static_cast<int32_t>(size * 8 / 9) - overhead,
            .chromaFormat = PrxGetChromaFormat(material.codecType, material.pixelFormat),
            .colorMatrix = 1};
}

/// The least that each stage took in `repetitions` encodes.
StageTimes TimeStages(const Material& material, int repetitions) {
    const uint32_t rowBytes =
        PrxGetBytesPerRow(static_cast<uint32_t>(material.width), material.pixelFormat, 0);
    CameraPicture picture = MakeCameraPicture(material.width, material.height, 0, material.grain);
    AddMatte(picture);
    std::vector<uint8_t> pixels = PackCameraPicture(picture, material.pixelFormat, rowBytes);
    const PrxPictureSource source = {.rows = pixels.data(),
                                     .rowBytes = rowBytes,
                                     .pixelFormat = material.pixelFormat,
                                     .width = material.width,
                                     .height = material.height,
                                     .isField = false};
    const PrxRateTarget target = TargetOf(material);
    const PrxAlphaCoder alpha =
        PrxChooseAlphaCoder(target.chromaFormat == prxChroma444, material.pixelFormat);
    const bool hasAlpha = alpha.alphaType != 0;
    std::vector<uint8_t> output(static_cast<size_t>(
        PrxGetFrameSizeBound(material.codecType, hasAlpha, material.width, material.height)));
    const PrxThreadPoolPtr pool(
        PrxThreadPool::create(1, nullptr, prxPoolClientFor<PrxEncodeRowJob, PrxEncodeContext, RunTimed>));
    if (pool == nullptr) std::exit(EXIT_FAILURE);
    PrxPictureEncoder encoder;
    StageTimes best;
    best.fill(std::numeric_limits<double>::max());
    for (int i = 0; i < repetitions; ++i) {
        times = {};
        encoder.Encode(*pool, source, target, alpha, output);
        std::ranges::transform(best, times, best.begin(),
                               [](double least, double now) { return std::min(least, now); });
    }
    return best;
}

void PrintRow(const Material& material, const StageTimes& stages) {
    const double all = stages[Measure] + stages[Write] + stages[Fit];
    std::printf("| %s %s | %d | %.0f | %.2f |", material.codecName, material.formatName, material.height,
                static_cast<double>(material.grain), all);
    for (const double part : {stages[Measure] - stages[Count], stages[Count], stages[Write], stages[Fit]})
        std::printf(" %.0f %% |", 100 * part / all);
    std::printf("\n");
}

} // namespace

int main(int count, char** arguments) {
    const int repetitions = count > 1 ? std::max(std::atoi(arguments[1]), 1) : 20;
    std::printf("| what | rows | grain | ms | conversion + transform | counting | writing | fitting |\n"
                "|---|---|---|---|---|---|---|---|\n");
    struct Picture {
        int32_t width;
        int32_t height;
        float grain;
    };
    for (const Picture& picture :
         {Picture{1920, 1080, 2}, Picture{1920, 1080, 5}, Picture{3840, 2160, 2}, Picture{3840, 2160, 5}}) {
        for (Material material : {Material{"apch", prxCodecApch, "v216", prxFormatV216, 0, 0, 0},
                                  Material{"apcn", prxCodecApcn, "v216", prxFormatV216, 0, 0, 0},
                                  Material{"ap4h", prxCodecAp4h, "b64a", prxFormatB64a, 0, 0, 0}}) {
            material.width = picture.width;
            material.height = picture.height;
            material.grain = picture.grain;
            PrintRow(material, TimeStages(material, repetitions));
        }
    }
    return EXIT_SUCCESS;
}
