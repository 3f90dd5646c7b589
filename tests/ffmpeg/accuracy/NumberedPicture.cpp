#include "ffmpeg/accuracy/NumberedPicture.h"

namespace {

constexpr int blockSize = 16;
constexpr int bitCount = 8;
// Two rows of blocks: the bits and their inverse.
constexpr int numberWidth = bitCount * blockSize;
constexpr int numberHeight = 2 * blockSize;
// Codecs ring beside an edge, so only the middle of a block counts.
constexpr int margin = 4;
// A bit and its inverse differ by more than this: a quarter of the way from black to white.
constexpr int leastContrast = 65535 / 4;

constexpr uint8_t black = 30;
constexpr uint8_t white = 220;

bool IsWhite(int number, int x, int y) {
    const bool bit = (number >> (x / blockSize) & 1) != 0;
    return bit == (y < blockSize);
}

uint8_t Texture(int x, int y, int time) {
    const int cell = ((x + 3 * time) / 4 ^ (y + time) / 4) % 16;
    return static_cast<uint8_t>(64 + cell * 8);
}

uint8_t Luma(int number, int x, int y, bool isInterlaced) {
    if (x < numberWidth && y < numberHeight) return IsWhite(number, x, y) ? white : black;
    return Texture(x, y, 2 * number + (isInterlaced ? y % 2 : 0));
}

void AppendChroma(int number, PictureSize size, int base, std::vector<uint8_t>& planes) {
    for (int y = 0; y < size.height / 2; ++y)
        for (int x = 0; x < size.width / 2; ++x)
            planes.push_back(static_cast<uint8_t>(base + (x / 4 + y / 4 + number) % 16));
}

/// Mean brightness of every second row in the middle of a block.
int BlockBrightness(int left, int top, int firstRow, const BrightnessFunction& brightness) {
    int sum = 0;
    int count = 0;
    for (int y = top + margin + firstRow; y < top + blockSize - margin; y += 2)
        for (int x = left + margin; x < left + blockSize - margin; ++x, ++count)
            sum += brightness(x, y);
    return sum / count;
}

std::optional<int> ReadField(int firstRow, const BrightnessFunction& brightness) {
    int number = 0;
    for (int bit = 0; bit < bitCount; ++bit) {
        const int direct = BlockBrightness(bit * blockSize, 0, firstRow, brightness);
        const int inverse = BlockBrightness(bit * blockSize, blockSize, firstRow, brightness);
        if (direct - inverse > leastContrast)
            number |= 1 << bit;
        else if (inverse - direct <= leastContrast)
            return std::nullopt;
    }
    return number;
}

} // namespace

void AppendPicture(int number, PictureSize size, bool isInterlaced, std::vector<uint8_t>& planes) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            planes.push_back(Luma(number, x, y, isInterlaced));
    AppendChroma(number, size, 112, planes);
    AppendChroma(number, size, 128, planes);
}

std::optional<int> ReadNumber(PictureSize size, const BrightnessFunction& brightness) {
    if (size.width < numberWidth || size.height < numberHeight) return std::nullopt;
    const std::optional<int> even = ReadField(0, brightness);
    return even == ReadField(1, brightness) ? even : std::nullopt;
}

std::optional<int> ReadNumber(Image& image) {
    return ReadNumber({image.Width, image.Height}, [&image](int x, int y) {
        const int row = image.Height - 1 - y;
        Pixel pixel{};
        image.GetPixel(pixel, image.RowAddress(row) + x * image.PixelStride, image.AuxRowAddress(row),
                       &image);
        return pixel.G;
    });
}
