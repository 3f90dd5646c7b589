#include "iostream/peer/HeaderTrace.h"

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <sstream>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/bsf.h>
#include <libavutil/log.h>
}

namespace {

struct FilterDeleter {
    void operator()(AVBSFContext* filter) const { av_bsf_free(&filter); }
};
struct PacketDeleter {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

/// Where the log goes while headers are traced.
HeaderTrace* traceInHand = nullptr;

/// Takes a line as "position name bits = value", and any other as the title of the next unit.
void TakeLine(const std::string& line) {
    std::istringstream words(line);
    uint64_t position = 0;
    std::string name;
    std::string bits;
    char equals = 0;
    int64_t value = 0;
    if (!(words >> position >> name >> bits >> equals >> value) || equals != '=')
        traceInHand->push_back({line.substr(0, line.find('\n')), {}});
    else if (!traceInHand->empty())
        traceInHand->back().elements[name] = value;
}

void LogIntoTrace(void*, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_INFO) return;
    char line[512];
    vsnprintf(line, sizeof line, format, arguments);
    TakeLine(line);
}

void Check(int result, const char* what) {
    if (result < 0) throw std::runtime_error(what);
}

void PassThroughTrace(const std::string& codec, const std::vector<uint8_t>& stream) {
    AVBSFContext* allocated = nullptr;
    Check(av_bsf_alloc(av_bsf_get_by_name("trace_headers"), &allocated), "no filter");
    const std::unique_ptr<AVBSFContext, FilterDeleter> filter(allocated);
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get_by_name(codec.c_str());
    if (descriptor == nullptr) throw std::runtime_error("no codec");
    filter->par_in->codec_type = AVMEDIA_TYPE_VIDEO;
    filter->par_in->codec_id = descriptor->id;
    Check(av_bsf_init(filter.get()), "the filter does not start");
    const std::unique_ptr<AVPacket, PacketDeleter> packet(av_packet_alloc());
    Check(av_new_packet(packet.get(), static_cast<int>(stream.size())), "no packet");
    std::copy(stream.begin(), stream.end(), packet->data);
    Check(av_bsf_send_packet(filter.get(), packet.get()), "packet not taken");
    Check(av_bsf_receive_packet(filter.get(), packet.get()), "headers refused");
}

} // namespace

int64_t TracedUnit::operator[](const std::string& element) const {
    const auto found = elements.find(element);
    return found == elements.end() ? 0 : found->second;
}

HeaderTrace TraceHeaders(const std::string& codec, const std::vector<uint8_t>& stream) {
    HeaderTrace trace;
    traceInHand = &trace;
    av_log_set_callback(LogIntoTrace);
    const auto restore = [](HeaderTrace*) {
        av_log_set_callback(av_log_default_callback);
        traceInHand = nullptr;
    };
    const std::unique_ptr<HeaderTrace, decltype(restore)> logging(&trace, restore);
    PassThroughTrace(codec, stream);
    return trace;
}

const TracedUnit& LastOf(const HeaderTrace& trace, const std::string& kind) {
    for (auto unit = trace.rbegin(); unit != trace.rend(); ++unit)
        if (unit->kind == kind) return *unit;
    throw std::runtime_error("no " + kind);
}
