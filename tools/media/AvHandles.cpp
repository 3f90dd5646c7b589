#include "media/AvHandles.h"

#include <array>
#include <mutex>
#include <new>
#include <numeric>
#include <utility>

AvPacket NewPacket() {
    AvPacket packet(av_packet_alloc());
    if (!packet) throw std::bad_alloc();
    return packet;
}

AvFrame NewFrame() {
    AvFrame frame(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    return frame;
}

AvCodecContext OpenDecoder(const AVCodecParameters& parameters, int errorRecognition) {
    const AVCodec* const codec = avcodec_find_decoder(parameters.codec_id);
    AvCodecContext decoder(codec != nullptr ? avcodec_alloc_context3(codec) : nullptr);
    if (!decoder || avcodec_parameters_to_context(decoder.get(), &parameters) < 0) return nullptr;
    decoder->err_recognition |= errorRecognition;
    return avcodec_open2(decoder.get(), codec, nullptr) >= 0 ? std::move(decoder) : nullptr;
}

std::string AvErrorText(int error) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(error, text.data(), text.size());
    return text.data();
}

void SilenceLibav() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_QUIET); });
}

Rational TicksToSeconds(int64_t ticks, AVRational timeBase) {
    const int64_t common = std::gcd(ticks, static_cast<int64_t>(timeBase.den));
    if (common == 0) return {};
    Rational seconds{0, timeBase.den / common};
    if (__builtin_mul_overflow(ticks / common, static_cast<int64_t>(timeBase.num), &seconds.num)) return {};
    const int64_t rest = std::gcd(seconds.num, seconds.den);
    return {seconds.num / rest, seconds.den / rest};
}
