#pragma once

#include "ffmpeg/FFmpegBinding.h"

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

/// Puts a function in the place of one of FFmpeg's, for all code that calls it through the table, until the
/// end of its life.
template <typename Function>
class ReplacedFunction {
public:
    ReplacedFunction(Function* FFmpegFunctions::*name, std::type_identity_t<Function>* replacement)
        : place_(Bound().*name), original_(place_) {
        place_ = replacement;
    }
    ~ReplacedFunction() { place_ = original_; }
    ReplacedFunction(const ReplacedFunction&) = delete;
    ReplacedFunction& operator=(const ReplacedFunction&) = delete;

private:
    /// The table once it is filled: binding would write over what is put into it before.
    static FFmpegFunctions& Bound() {
        LoadFFmpeg();
        // The object behind the reference is not constant: binding has filled it.
        return const_cast<FFmpegFunctions&>(FFmpeg());
    }

    Function*& place_;
    Function* original_;
};

/// Sees the decoders that are opened during its life.
class OpenedDecoders {
public:
    OpenedDecoders() : replaced_(&FFmpegFunctions::avcodec_open2, Open) {
        last = nullptr;
        options.clear();
        result = 0;
    }

    static inline AVCodecContext* last = nullptr;  ///< as long as its codec keeps it
    static inline AVCodecContext asGiven = {};     ///< members of the last one before it was opened
    static inline std::string options;             ///< of the last one, "key=value;" each
    static inline std::vector<uint8_t> extradata;  ///< of the last one
    static inline std::vector<uint8_t> afterwards; ///< bytes that follow the extradata
    static inline int result = 0;                  ///< given instead of opening, if negative

private:
    static int Open(AVCodecContext* context, const AVCodec* codec, AVDictionary** dictionary) {
        last = context;
        asGiven = *context;
        const uint8_t* const end = context->extradata + context->extradata_size;
        const uint8_t* const start = context->extradata;
        extradata.assign(start, end);
        afterwards.clear();
        if (context->extradata != nullptr) afterwards.assign(end, end + AV_INPUT_BUFFER_PADDING_SIZE);
        options.clear();
        const AVDictionaryEntry* entry = nullptr;
        while (dictionary != nullptr && (entry = av_dict_get(*dictionary, "", entry, AV_DICT_IGNORE_SUFFIX)))
            options += std::string(entry->key) + "=" + entry->value + ";";
        return result < 0 ? result : avcodec_open2(context, codec, dictionary);
    }

    ReplacedFunction<decltype(avcodec_open2)> replaced_;
};
