#include "ffmpeg/BaseFormatSpy.h"

#include "host/ImageFormat.h"

#include <dlfcn.h>

TagList BaseFormatSpy::tags;
uint32_t BaseFormatSpy::frame = 0;
bool BaseFormatSpy::isRefusing = false;

bool ImageFormat::LoadFrameTagList(uint32_t frame, Image*& image, TagList& tags) {
    using Load = bool(ImageFormat*, uint32_t, Image*&, TagList&);
    // The host's own function, which this one hides.
    static auto* const host =
        reinterpret_cast<Load*>(dlsym(RTLD_NEXT, "_ZN11ImageFormat16LoadFrameTagListEjRP5ImageR7TagList"));
    BaseFormatSpy::tags = tags;
    BaseFormatSpy::frame = frame;
    return !BaseFormatSpy::isRefusing && host(this, frame, image, tags);
}
