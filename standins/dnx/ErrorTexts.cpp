#include "dnx/ErrorTexts.h"

#include "codecs/DNXRecords.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace dnx {

namespace {

struct Text {
    Error error;
    const char* text;
};

constexpr Text texts[] = {
    {Error::None, "No error"},
    {Error::NoCodec, "FFmpeg's DNxHD decoder or encoder is missing"},
    {Error::NullArgument, "An argument is null"},
    {Error::RecordSize, "A record does not begin with its size"},
    {Error::OutOfMemory, "Out of memory"},
    {Error::NotAFrame, "The data is not a DNxHD or DNxHR frame"},
    {Error::UnknownCompression, "Frames of this compression cannot be encoded"},
    {Error::PictureSize, "The compression does not allow this picture size"},
    {Error::Alpha, "Alpha is not supported"},
    {Error::FrameStructure, "The compression does not allow this frame structure"},
    {Error::PictureFormat, "The format of the uncompressed picture is not supported"},
    {Error::FrameFormat, "The frame cannot be given in the format of the uncompressed picture"},
    {Error::FrameSize, "The frame has another size than the decoder was made for"},
    {Error::PictureBuffer, "The buffer of the uncompressed picture has a wrong size"},
    {Error::FrameBuffer, "The buffer of the compressed frame is too small"},
    {Error::DamagedFrame, "The frame is damaged"},
    {Error::EncodingFailed, "The picture could not be encoded"},
    {Error::ConstantLuminance, "Constant luminance cannot be converted to RGB"},
};

static_assert(std::ranges::all_of(texts, [](const Text& row) {
    return std::string_view(row.text).size() < dnxErrorTextSize;
}));

} // namespace

const char* ErrorText(int32_t error) {
    const auto row = std::ranges::find(texts, static_cast<Error>(error), &Text::error);
    return row != std::end(texts) ? row->text : "Unknown error";
}

} // namespace dnx
