#pragma once

#include "host/ColorConvert.h"

#include <optional>
#include <vector>

/// The host's colour conversion as this test program has it: it converts nothing, fails, and keeps what it
/// was called with. Its functions stand in the program itself and so take the place of the host library's.
struct RecordedColorConvert {
    struct Call {
        bool isWrite;
        Image* image;
        std::vector<TagItem> tags; ///< in order
    };

    /// The one call since the last `Forget`, or nothing if there was none or several.
    static std::optional<Call> OnlyCall();
    static void Forget();
};
