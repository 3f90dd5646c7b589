#pragma once

#include "ffmpeg/FFmpegFunctionTable.h"

// FFmpeg's headers give types, constants and the kinds of the functions. The libraries are never linked, so a
// call of a function by its bare name does not link either.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
#include <libavutil/channel_layout.h>
#include <libavutil/dict.h>
#include <libavutil/imgutils.h>
#include <libavutil/log.h>
#include <libavutil/mathematics.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

// The table has functions that FFmpeg wants to lose; a pointer to one is no use of it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

/// Pointers to FFmpeg's functions, one for each row of the table that the major has, under the function's own
/// name. A pointer that was not found is null.
struct FFmpegFunctions {
#define DECLARE_FUNCTION(library, name, first, last)                                                         \
    CORVEX_FFMPEG_IN(first, last, decltype(&::name) name = nullptr;)
    CORVEX_FFMPEG_FUNCTIONS(DECLARE_FUNCTION)
#undef DECLARE_FUNCTION
};

#pragma GCC diagnostic pop
