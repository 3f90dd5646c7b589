#include "host/ColorConvertImage.h"

namespace {

/// Addresses of the pixels of one row, which are mere offsets where the image has no such data.
class PixelAddresses {
public:
    PixelAddresses(const Image& image, int32_t row)
        : data_(reinterpret_cast<uintptr_t>(image.RowAddress(row))),
          aux_(reinterpret_cast<uintptr_t>(image.AuxRowAddress(row))), stride_(image.PixelStride),
          auxStride_(image.AuxPixelStride) {}

    uint8_t* Data(int64_t x) const { return At(data_, stride_ * x); }
    uint8_t* Aux(int64_t x) const { return At(aux_, auxStride_ * x); }

private:
    static uint8_t* At(uintptr_t base, int64_t offset) {
        return reinterpret_cast<uint8_t*>(base + static_cast<uintptr_t>(offset));
    }

    uintptr_t data_;
    uintptr_t aux_;
    int64_t stride_;
    int64_t auxStride_;
};

void SetPixels(Image& image, int32_t row, int64_t width, const float* pixels) {
    const PixelAddresses addresses(image, row);
    for (int64_t x = 0; x < width; ++x) {
        const float* channels = pixels + 4 * x;
        const PixelFloat pixel = {channels[0], channels[1], channels[2], channels[3]};
        image.SetPixelFloat(pixel, addresses.Data(x), addresses.Aux(x), &image);
    }
}

void GetPixels(Image& image, int32_t row, int64_t width, float* pixels) {
    const PixelAddresses addresses(image, row);
    for (int64_t x = 0; x < width; ++x) {
        PixelFloat pixel = {};
        image.GetPixelFloat(pixel, addresses.Data(x), addresses.Aux(x), &image);
        float* channels = pixels + 4 * x;
        channels[0] = pixel.R;
        channels[1] = pixel.G;
        channels[2] = pixel.B;
        channels[3] = pixel.A;
    }
}

} // namespace

ColorImage::ColorImage(Image& image, const ColorKernels& kernels, bool precise)
    : image_(image), toImage_(kernels.toImage(WorkingKind(), precise)),
      fromImage_(kernels.fromImage(WorkingKind(), precise)) {}

ImageDataKind ColorImage::WorkingKind() const {
    return image_.HasPlainPixels() ? static_cast<ImageDataKind>(image_.DataFormat->Kind)
                                   : ImageData_RGBAFloat;
}

bool ColorImage::IsUsable() const {
    if (image_.HasHostAccessors()) return image_.HasMainData();
    return image_.GetPixelFloat != nullptr && image_.SetPixelFloat != nullptr;
}

double ColorImage::White() const {
    switch (WorkingKind()) {
    case ImageData_RGBA8: return 255;
    case ImageData_RGBA16: return 65535;
    case ImageData_RGBAHalf:
    case ImageData_RGBAFloat: break;
    }
    return 1;
}

void ColorImage::WriteRow(int64_t row, int64_t width, const ColorLines& lines, const ColorToRgb& matrix,
                          float* pixels) const {
    const int32_t imageRow = ImageRow(row);
    if (image_.HasPlainPixels()) return toImage_(lines, matrix, image_.RowAddress(imageRow), width);
    toImage_(lines, matrix, reinterpret_cast<uint8_t*>(pixels), width);
    SetPixels(image_, imageRow, width, pixels);
}

void ColorImage::ReadRow(int64_t row, int64_t width, const ColorFromRgb& matrix, const ColorLines& lines,
                         float* pixels) const {
    const int32_t imageRow = ImageRow(row);
    if (image_.HasPlainPixels()) return fromImage_(image_.RowAddress(imageRow), matrix, lines, width);
    GetPixels(image_, imageRow, width, pixels);
    fromImage_(reinterpret_cast<const uint8_t*>(pixels), matrix, lines, width);
}
