// Headers of AVC-Intra by the width of the pictures.

#include "codecs/WMFAvcHeaders.h"

#include <gtest/gtest.h>

namespace {

/// Bytes of the header for a width, which tell the headers apart.
size_t SizeFor(int32_t width) { return CxWMF::AvcHeader(width).size(); }

TEST(WMFAvcHeaders, From1920OnAreThoseOfProgressivePictures) {
    for (const int32_t width : {1920, 1921, 4096})
        EXPECT_EQ(SizeFor(width), 81U) << width;
}

TEST(WMFAvcHeaders, OneIsFor1440Exactly) { EXPECT_EQ(SizeFor(1440), 97U); }

TEST(WMFAvcHeaders, UpTo1280IsOne) {
    for (const int32_t width : {0, 1, 640, 1280})
        EXPECT_EQ(SizeFor(width), 89U) << width;
}

TEST(WMFAvcHeaders, OtherWidthsHaveNone) {
    for (const int32_t width : {1281, 1439, 1441, 1600, 1919})
        EXPECT_EQ(SizeFor(width), 0U) << width;
}

} // namespace
