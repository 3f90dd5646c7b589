// What FFmpeg says of a failure.

#include "media/AvErrorWords.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/log.h>
}

namespace {

const AVClass speaker = [] {
    AVClass made{};
    made.class_name = "speaker";
    made.item_name = av_default_item_name;
    made.version = LIBAVUTIL_VERSION_INT;
    return made;
}();

TEST(AvErrorWords, AreThoseOfTheFirstErrorWithTheNameOfWhoSpeaks) {
    const AvErrorWords words;
    const AVClass* object = &speaker;
    av_log(&object, AV_LOG_WARNING, "only a warning\n");
    av_log(&object, AV_LOG_ERROR, "size %d is odd\n", 63);
    av_log(&object, AV_LOG_ERROR, "so it fails\n");
    EXPECT_EQ(words.First("nothing"), "speaker: size 63 is odd\n");
}

TEST(AvErrorWords, HaveNoNameWithoutAnObject) {
    const AvErrorWords words;
    av_log(nullptr, AV_LOG_FATAL, "broken");
    EXPECT_EQ(words.First("nothing"), "broken");
}

TEST(AvErrorWords, AreTheOthersWhereNothingWasSaid) {
    {
        const AvErrorWords earlier;
        av_log(nullptr, AV_LOG_ERROR, "earlier");
    }
    const AvErrorWords words;
    EXPECT_EQ(words.First("nothing"), "nothing");
}

} // namespace
