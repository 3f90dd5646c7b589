// Built outside the tree against an installed and moved copy of it.

#include "framework/CxAVCodecRegistry.h"
#include "host/Image.h"
#include "iostream/IOHEVCNALPayload.h"
#include "pixel/PixelConvert.h"

int main() {
    std::vector<CxEncoderInfo> encoders;
    const bool listed = CxAVCodecRegistry::ListAllCodecs(true, encoders);
    Image* image = Image::Allocate(49, 2, ImageData_RGBA16);
    const bool allocated = image != nullptr;
    Image::Free(image);
    const bool isCollected = IOStream::IOHEVCNALPayload::s_IsValidNalType(33);
    return listed && allocated && isCollected && PixelConvert::CalcRowBytes(FourCC("v210"), 49) == 256 ? 0
                                                                                                       : 1;
}
