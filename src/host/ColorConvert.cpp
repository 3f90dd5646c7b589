#include "host/ColorConvert.h"

#include "host/ColorConvertKernels.h"

bool CxYUV2RGBTagList(Image* image, const TagList& tags) {
    return ConvertColorToImage(image, tags, VectorColorKernels());
}

void* CxRGB2YUVTagList(Image* image, const TagList& tags) {
    return ConvertColorFromImage(image, tags, VectorColorKernels());
}
