#include "iostream/peer/H264PeerFacts.h"

#include <cstdlib>
#include <stdexcept>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace {

/// "30000/1001" or "4:3" as a number.
double Ratio(const std::string& text) {
    char* rest = nullptr;
    const double numerator = std::strtod(text.c_str(), &rest);
    return numerator / std::strtod(rest + 1, nullptr);
}

/// A fact that ffprobe names by a word.
uint32_t NumberOfWord(const std::map<std::string, uint32_t>& words, const std::string& word) {
    const auto found = words.find(word);
    if (found == words.end()) throw std::runtime_error("unknown word " + word);
    return found->second;
}

/// Collects facts from the places that FFmpeg tells them in.
class FactList {
public:
    FactList(const H264Parsers& payload, const H264PeerStream& peer)
        : payload_(payload), info_(payload.info), peer_(peer),
          sps_(LastOf(peer.trace, "Sequence Parameter Set")),
          pps_(LastOf(peer.trace, "Picture Parameter Set")) {
        AddFormat();
        AddFrameSize();
        AddPicture();
        AddColours();
        AddOrder();
        AddTiming();
        AddPictureSet();
    }
    std::vector<Fact> Take() { return std::move(facts_); }

private:
    void Add(const char* name, double ours, double theirs, bool isBehindChromaDepth = true) {
        facts_.push_back({name, ours, theirs, isBehindChromaDepth});
    }
    const std::string& Shown(const char* name) const { return peer_.shown.at(name); }
    uint32_t ShownNumber(const char* name) const { return static_cast<uint32_t>(std::stoul(Shown(name))); }

    void AddFormat() {
        constexpr double chromaFormats[] = {1, 420, 422, 444};
        Add("profile", info_.profile, ShownNumber("profile") & 255, false); // above them FFmpeg's own flags
        Add("level", info_.level, ShownNumber("level"), false);
        Add("bitDepth", info_.bitDepth, ShownNumber("bits_per_raw_sample"), false);
        const bool isTold = sps_.Has("chroma_format_idc");
        Add("chromaFormat", info_.chromaFormat, isTold ? chromaFormats[sps_["chroma_format_idc"]] : 420,
            false);
    }

    void AddFrameSize() {
        const auto unitX =
            static_cast<double>(info_.chromaFormat == 420 || info_.chromaFormat == 422 ? 2 : 1);
        const double unitY =
            (info_.chromaFormat == 420 ? 2 : 1) * (sps_["frame_mbs_only_flag"] != 0 ? 1.0 : 2.0);
        Add("width", info_.width, ShownNumber("width"));
        Add("height", info_.height, ShownNumber("height"));
        Add("cropLeft", info_.cropLeft, static_cast<double>(sps_["frame_crop_left_offset"]) * unitX);
        Add("cropRight", info_.cropRight, static_cast<double>(sps_["frame_crop_right_offset"]) * unitX);
        Add("cropTop", info_.cropTop, static_cast<double>(sps_["frame_crop_top_offset"]) * unitY);
        Add("cropBottom", info_.cropBottom, static_cast<double>(sps_["frame_crop_bottom_offset"]) * unitY);
    }

    void AddPicture() {
        Add("pixelAspect", info_.pixelAspect, static_cast<float>(Ratio(Shown("sample_aspect_ratio"))));
        Add("fieldOrder", info_.fieldOrder,
            NumberOfWord({{"progressive", 1}, {"tt", 2}, {"bb", 3}}, Shown("field_order")));
        Add("frameMbsOnly", payload_.frameMbsOnly, sps_["frame_mbs_only_flag"]);
        Add("mbAdaptiveFrameField", info_.mbAdaptiveFrameField, sps_["mb_adaptive_frame_field_flag"]);
        Add("maxRefFrames", info_.maxRefFrames, ShownNumber("refs"));
        Add("frameType", info_.frameType, NumberOfWord({{"I", 1}, {"P", 2}, {"B", 3}}, Shown("pict_type")),
            false);
        Add("deblockingEnabled", info_.deblockingEnabled, IsFilterOn());
    }

    bool IsFilterOn() const {
        for (const TracedUnit& unit : peer_.trace)
            if (unit.kind == "Slice Header" && unit["nal_unit_type"] == 5)
                return unit["disable_deblocking_filter_idc"] == 0;
        throw std::runtime_error("no IDR slice");
    }

    void AddColours() {
        const auto range = info_.fullRangeBySPS.find(static_cast<uint32_t>(sps_["seq_parameter_set_id"]));
        Add("fullRange", range == info_.fullRangeBySPS.end() ? 0 : range->second,
            NumberOfWord({{"unknown", 0}, {"tv", 1}, {"pc", 2}}, Shown("color_range")));
        Add("colourPrimaries", info_.colourPrimaries,
            av_color_primaries_from_name(Shown("color_primaries").c_str()));
        Add("transferCharacteristics", info_.transferCharacteristics,
            av_color_transfer_from_name(Shown("color_transfer").c_str()));
        Add("matrixCoefficients", info_.matrixCoefficients,
            av_color_space_from_name(Shown("color_space").c_str()));
    }

    void AddOrder() {
        Add("log2MaxFrameNum", payload_.log2MaxFrameNum, sps_["log2_max_frame_num_minus4"] + 4);
        Add("picOrderCntType", payload_.picOrderCntType, sps_["pic_order_cnt_type"]);
        const bool hasLsb = sps_.Has("log2_max_pic_order_cnt_lsb_minus4");
        Add("log2MaxPicOrderCntLsb", payload_.log2MaxPicOrderCntLsb,
            hasLsb ? sps_["log2_max_pic_order_cnt_lsb_minus4"] + 4 : 0);
    }

    void AddTiming() {
        Add("frameRate", static_cast<double>(info_.frameRateNum) / info_.frameRateDen,
            Ratio(Shown("r_frame_rate")));
        Add("fixedFrameRate", info_.fixedFrameRate, sps_["fixed_frame_rate_flag"]);
        Add("picStructPresent", info_.picStructPresent, sps_["pic_struct_present_flag"]);
        const bool hasHrd = sps_["nal_hrd_parameters_present_flag"] != 0;
        Add("hrdPresent", info_.hrdPresent, hasHrd);
        Add("cpbRemovalDelayLength", info_.cpbRemovalDelayLength,
            hasHrd ? sps_["cpb_removal_delay_length_minus1"] + 1 : 24);
        Add("dpbOutputDelayLength", info_.dpbOutputDelayLength,
            hasHrd ? sps_["dpb_output_delay_length_minus1"] + 1 : 24);
        Add("timeOffsetLength", info_.timeOffsetLength, hasHrd ? sps_["time_offset_length"] : 24);
    }

    void AddPictureSet() {
        Add("entropyCodingMode", payload_.entropyCodingMode, pps_["entropy_coding_mode_flag"], false);
        Add("bottomFieldPicOrderPresent", payload_.bottomFieldPicOrderPresent,
            pps_["bottom_field_pic_order_in_frame_present_flag"], false);
        Add("deblockingControlPresent", payload_.deblockingControlPresent,
            pps_["deblocking_filter_control_present_flag"], false);
        Add("redundantPicCntPresent", payload_.redundantPicCntPresent, pps_["redundant_pic_cnt_present_flag"],
            false);
    }

    const H264Parsers& payload_;
    const IOStream::IOElementaryStreamInfo& info_;
    const H264PeerStream& peer_;
    const TracedUnit& sps_;
    const TracedUnit& pps_;
    std::vector<Fact> facts_;
};

} // namespace

std::vector<Fact> FactsOf(const H264Parsers& payload, const H264PeerStream& peer) {
    return FactList(payload, peer).Take();
}

std::vector<std::string> Differences(const std::vector<Fact>& facts) {
    std::vector<std::string> names;
    for (const Fact& fact : facts)
        if (fact.ours != fact.theirs) names.push_back(fact.name);
    return names;
}

H264Parsers ReadStream(const std::vector<uint8_t>& bytes) {
    H264Parsers payload;
    payload.Append(bytes);
    payload.GetStreamInfo();
    return payload;
}
