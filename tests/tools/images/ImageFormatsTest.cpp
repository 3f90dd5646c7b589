#include "images/ImageFormats.h"

#include "media/ToolError.h"

#include <gtest/gtest.h>

namespace {

void ExpectStorage(const char* path, ImageDepth depth, ImageDataKind kind, int bits) {
    const ImageStorage storage = ChooseImageStorage(path, depth);
    EXPECT_EQ(storage.kind, kind) << path;
    EXPECT_EQ(storage.bitsPerChannel, bits) << path;
}

ExitStatus StatusOf(const char* path, ImageDepth depth) {
    try {
        ChooseImageStorage(path, depth);
    } catch (const ToolError& error) {
        return error.status();
    }
    return ExitStatus::Done;
}

} // namespace

TEST(ImageFormats, HasADefaultDepthForEachExtension) {
    ExpectStorage("a.exr", ImageDepth::Default, ImageData_RGBAHalf, 16);
    ExpectStorage("a.png", ImageDepth::Default, ImageData_RGBA16, 16);
    ExpectStorage("a.TIF", ImageDepth::Default, ImageData_RGBA16, 16);
    ExpectStorage("a.tiff", ImageDepth::Default, ImageData_RGBA16, 16);
    ExpectStorage("a.dpx", ImageDepth::Default, ImageData_RGBA16, 10);
}

TEST(ImageFormats, TakesTheDepthThatIsAskedFor) {
    ExpectStorage("a.png", ImageDepth::Bits8, ImageData_RGBA8, 8);
    ExpectStorage("a.dpx", ImageDepth::Bits16, ImageData_RGBA16, 16);
    ExpectStorage("a.exr", ImageDepth::Float, ImageData_RGBAFloat, 32);
    ExpectStorage("a.tif", ImageDepth::Half, ImageData_RGBAHalf, 16);
}

TEST(ImageFormats, RefusesADepthThatTheFormatDoesNotHave) {
    EXPECT_EQ(StatusOf("a.png", ImageDepth::Half), ExitStatus::Usage);
    EXPECT_EQ(StatusOf("a.dpx", ImageDepth::Float), ExitStatus::Usage);
    EXPECT_EQ(StatusOf("a.exr", ImageDepth::Bits8), ExitStatus::Usage);
}

TEST(ImageFormats, RefusesOtherExtensions) {
    for (const char* path : {"a.jpg", "a", "exr", "a.mov", ".", ""})
        EXPECT_EQ(StatusOf(path, ImageDepth::Default), ExitStatus::Usage) << path;
}
