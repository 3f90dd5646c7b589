#include "frames/FrameInput.h"

#include "frames/ClipInput.h"
#include "frames/MovieInput.h"
#include "frames/SequenceInput.h"
#include "images/ImageFormats.h"

std::unique_ptr<FrameInput> OpenFrameInput(const std::string& name, const FrameInputOptions& options) {
    if (FindImageFormat(name) != nullptr) return std::make_unique<SequenceInput>(name, options.missingFrames);
    if (ClipInput::IsClip(name)) return std::make_unique<ClipInput>(name, options.road);
    return std::make_unique<MovieInput>(name, options.road);
}
