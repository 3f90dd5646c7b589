#pragma once

#include <libavcodec/version.h>

/// The table of FFmpeg's functions, from which they are declared (FFmpegFunctions.h) and found in the
/// libraries (FFmpegBinding.cpp). A function that the module is to call is one row here and nothing else.
///
/// ROW(library, name, first, last): the library that has the function, its name, and the majors of libavcodec
/// whose FFmpeg has it, the last of which is `later` if none is known to lack it. FFmpeg 4 has major 58,
/// FFmpeg 5 has 59, and so on; 59 counts from FFmpeg 5.1. Every row of the major that the module is built for
/// is demanded, also where the module calls another function, or none: a set of libraries that lacks one is
/// not a whole one. Functions are looked for in the order of the rows.
///
/// Where a later FFmpeg took a function away and another does its work in every major, the module calls that
/// one: `av_muxer_iterate` for `av_oformat_next`, `av_packet_alloc` and `av_packet_free` for
/// `av_init_packet`, `avcodec_send_frame` and `avcodec_receive_packet` for `avcodec_encode_video2`,
/// `avcodec_free_context` alone for `avcodec_close`. `av_stream_get_r_frame_rate` and
/// `av_frame_get_best_effort_timestamp` give what the field of that name has. Default channel layouts differ
/// in kind, not only in name.
// clang-format off
#define CORVEX_FFMPEG_FUNCTIONS(ROW) \
    ROW(avformat, av_register_all, 58, 58) \
    ROW(avformat, avformat_open_input, 58, later) \
    ROW(avformat, avformat_find_stream_info, 58, later) \
    ROW(avformat, av_find_best_stream, 58, later) \
    ROW(avformat, avformat_free_context, 58, later) \
    ROW(avformat, avformat_close_input, 58, later) \
    ROW(avformat, av_seek_frame, 58, later) \
    ROW(avformat, av_read_frame, 58, later) \
    ROW(avformat, avformat_flush, 58, later) \
    ROW(avformat, avformat_seek_file, 58, later) \
    ROW(avformat, av_stream_get_r_frame_rate, 58, 58) \
    ROW(avformat, av_oformat_next, 58, 58) \
    ROW(avformat, av_muxer_iterate, 58, later) \
    ROW(avformat, avio_closep, 58, later) \
    ROW(avformat, av_guess_format, 58, later) \
    ROW(avformat, avformat_alloc_output_context2, 58, later) \
    ROW(avformat, avio_open, 58, later) \
    ROW(avformat, av_interleaved_write_frame, 58, later) \
    ROW(avformat, av_write_trailer, 58, later) \
    ROW(avformat, avformat_new_stream, 58, later) \
    ROW(avformat, avformat_write_header, 58, later) \
    ROW(avformat, av_write_frame, 58, later) \
    ROW(avformat, avio_flush, 58, later) \
    ROW(avformat, avformat_query_codec, 58, later) \
    ROW(avutil, av_free, 58, later) \
    ROW(avutil, av_freep, 58, later) \
    ROW(avutil, av_mallocz, 58, later) \
    ROW(avutil, av_frame_alloc, 58, later) \
    ROW(avutil, av_frame_free, 58, later) \
    ROW(avutil, av_frame_clone, 58, later) \
    ROW(avutil, av_image_alloc, 58, later) \
    ROW(avutil, av_frame_get_best_effort_timestamp, 58, 58) \
    ROW(avutil, av_dict_set, 58, later) \
    ROW(avutil, av_dict_free, 58, later) \
    ROW(avutil, av_pix_fmt_desc_get, 58, later) \
    ROW(avutil, av_dict_set_int, 58, later) \
    ROW(avutil, av_malloc, 58, later) \
    ROW(avutil, av_opt_set, 58, later) \
    ROW(avutil, av_get_default_channel_layout, 58, 60) \
    ROW(avutil, av_channel_layout_default, 59, later) \
    ROW(avutil, av_log_set_callback, 58, later) \
    ROW(avutil, av_frame_get_channels, 58, 58) \
    ROW(avutil, av_opt_set_int, 58, later) \
    ROW(avutil, av_rescale_rnd, 58, later) \
    ROW(avutil, av_get_bytes_per_sample, 58, later) \
    ROW(avcodec, avcodec_register_all, 58, 58) \
    ROW(avcodec, avcodec_flush_buffers, 58, later) \
    ROW(avcodec, avcodec_alloc_context3, 58, later) \
    ROW(avcodec, avcodec_find_decoder, 58, later) \
    ROW(avcodec, avcodec_find_encoder, 58, later) \
    ROW(avcodec, avcodec_open2, 58, later) \
    ROW(avcodec, avcodec_free_context, 58, later) \
    ROW(avcodec, avcodec_close, 58, 61) \
    ROW(avcodec, avcodec_decode_video2, 58, 58) \
    ROW(avcodec, av_init_packet, 58, 62) \
    ROW(avcodec, av_packet_alloc, 58, later) \
    ROW(avcodec, av_packet_free, 58, later) \
    ROW(avcodec, avcodec_get_name, 58, later) \
    ROW(avcodec, av_packet_unref, 58, later) \
    ROW(avcodec, avcodec_version, 58, later) \
    ROW(avcodec, avcodec_is_open, 58, later) \
    ROW(avcodec, av_packet_rescale_ts, 58, later) \
    ROW(avcodec, avcodec_encode_video2, 58, 58) \
    ROW(avcodec, avcodec_send_frame, 58, later) \
    ROW(avcodec, avcodec_receive_packet, 58, later) \
    ROW(avcodec, avcodec_parameters_from_context, 58, later) \
    ROW(avcodec, avcodec_parameters_to_context, 58, later) \
    ROW(avcodec, av_get_bits_per_sample, 58, later) \
    ROW(avcodec, avcodec_send_packet, 58, later) \
    ROW(avcodec, avcodec_receive_frame, 58, later) \
    ROW(swscale, sws_freeContext, 58, later) \
    ROW(swscale, sws_getCachedContext, 58, later) \
    ROW(swscale, sws_scale, 58, later) \
    ROW(swscale, sws_getCoefficients, 58, later) \
    ROW(swscale, sws_setColorspaceDetails, 58, later) \
    ROW(swresample, swr_alloc, 58, later) \
    ROW(swresample, swr_init, 58, later) \
    ROW(swresample, swr_is_initialized, 58, later) \
    ROW(swresample, swr_alloc_set_opts, 58, 60) \
    ROW(swresample, swr_free, 58, later) \
    ROW(swresample, swr_close, 58, later) \
    ROW(swresample, swr_convert, 58, later) \
    ROW(swresample, swr_get_out_samples, 58, later) \
    ROW(swresample, swr_convert_frame, 58, later)
// clang-format on

/// Gives the rest of its arguments where the major that the module is built for lies between the first two,
/// which are those of a row, and nothing elsewhere.
#define CORVEX_FFMPEG_IN(first, last, ...)                                                                   \
    CORVEX_FFMPEG_SINCE_##first(CORVEX_FFMPEG_UNTIL_##last(__VA_ARGS__))

#define CORVEX_FFMPEG_SINCE_58(...) __VA_ARGS__
#if LIBAVCODEC_VERSION_MAJOR >= 59
#define CORVEX_FFMPEG_SINCE_59(...) __VA_ARGS__
#else
#define CORVEX_FFMPEG_SINCE_59(...)
#endif

#define CORVEX_FFMPEG_UNTIL_later(...) __VA_ARGS__
#if LIBAVCODEC_VERSION_MAJOR <= 58
#define CORVEX_FFMPEG_UNTIL_58(...) __VA_ARGS__
#else
#define CORVEX_FFMPEG_UNTIL_58(...)
#endif
#if LIBAVCODEC_VERSION_MAJOR <= 60
#define CORVEX_FFMPEG_UNTIL_60(...) __VA_ARGS__
#else
#define CORVEX_FFMPEG_UNTIL_60(...)
#endif
#if LIBAVCODEC_VERSION_MAJOR <= 61
#define CORVEX_FFMPEG_UNTIL_61(...) __VA_ARGS__
#else
#define CORVEX_FFMPEG_UNTIL_61(...)
#endif
#if LIBAVCODEC_VERSION_MAJOR <= 62
#define CORVEX_FFMPEG_UNTIL_62(...) __VA_ARGS__
#else
#define CORVEX_FFMPEG_UNTIL_62(...)
#endif
