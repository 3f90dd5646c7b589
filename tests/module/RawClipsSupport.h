#pragma once

#include "host/ImageFormat.h"
#include "host/Platform.h"
#include "host/Registry.h"
#include "rawsdk/Control.h"
#include "support/RawClips.h"
#include "support/TestSupport.h"
#include "tools/Workspace.h"

#include "cameraraw/RavenlightRawAPI.h"
#include "cameraraw/RawPointer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

/// A factory of the library that the module loads too.
inline RawPointer<RawFactory> NewFactory() {
    Platform::Library* const library = Platform::LoadLib("RavenlightRawAPI.dll", 0, nullptr);
    using Create = RawFactory*();
    auto* const create =
        reinterpret_cast<Create*>(Platform::GetFuncAddress(library, "CreateRavenlightRawFactoryInstance"));
    return RawPointer<RawFactory>(create());
}

/// How the library is made to misbehave and what it was asked.
inline rawsdk::Control& SdkControl() {
    void* control = nullptr;
    NewFactory()->QueryInterface(rawsdk::IID_Control, &control);
    return *static_cast<rawsdk::Control*>(control);
}

/// An object of the class that the host finds for clips; null if there is not exactly one.
inline std::unique_ptr<ImageFormat> NewFormat() {
    const std::vector<Registry*> formats = Registry::FormatsForExtension(".vrel");
    if (formats.size() != 1) return nullptr;
    std::unique_ptr<Object> object = formats.front()->Create(ScriptVal(), TagList());
    std::unique_ptr<ImageFormat> format(dynamic_cast<ImageFormat*>(object.get()));
    if (format != nullptr) static_cast<void>(object.release());
    return format;
}

/// A format object and a place for clips. At its end no object of the library lives.
class RawClips : public testing::Test {
protected:
    ~RawClips() override {
        format.reset();
        EXPECT_EQ(SdkControl().LiveObjects(), 0U);
        SdkControl().Reset();
    }

    std::string Write(const RawClipRecipe& recipe = {}, const std::string& name = "clip.vrel") const {
        WriteRawClip(workspace.Path(name), recipe);
        return workspace.Path(name);
    }
    bool Open(const std::string& path) { return format->LoadHeaderTagList(path.c_str(), tags); }
    /// Loads a frame into an image that the base makes; null if that fails.
    ImagePtr Load(uint32_t frame) {
        Image* image = nullptr;
        const bool isLoaded = format->LoadFrameTagList(frame, image, tags);
        ImagePtr loaded(image);
        return isLoaded ? std::move(loaded) : nullptr;
    }

    Workspace workspace;
    std::unique_ptr<ImageFormat> format = NewFormat();
    TagList tags;
};
