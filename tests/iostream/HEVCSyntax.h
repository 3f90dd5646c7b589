#pragma once

#include "iostream/BitStreamWriter.h"

#include <array>
#include <functional>

/// HEVC units as a test wants them (ISO/IEC 23008-2, 7.3). What a test does not name has the values of a
/// plain Main profile stream.

/// Syntax that a test fills in.
using SyntaxPart = std::function<void(BitStreamWriter&)>;

/// A flag, and what it opens if there is any.
inline void WriteOptional(BitStreamWriter& bits, const SyntaxPart& part) {
    bits.Flag(part != nullptr);
    if (part) part(bits);
}

struct HEVCSequenceSet {
    uint32_t maxSubLayersMinus1 = 0;
    bool isNested = true;
    uint32_t profile = 1; ///< general_profile_space, general_tier_flag and general_profile_idc in 8 bits
    uint32_t compatibility = 0x60000000;
    std::array<uint8_t, 6> constraints = {0x90, 0, 0, 0, 0, 0};
    uint32_t level = 93;
    SyntaxPart subLayers = nullptr; ///< what follows general_level_idc
    uint32_t id = 0;
    uint32_t chromaFormat = 1;
    bool hasSeparatePlanes = false;
    uint32_t width = 64;
    uint32_t height = 48;
    SyntaxPart window = nullptr; ///< conformance window
    uint32_t lumaDepthMinus8 = 0;
    uint32_t chromaDepthMinus8 = 0;
    uint32_t log2MaxPicOrderCntMinus4 = 4;
    bool hasOrderingOfEachLayer = false;
    SyntaxPart scalingLists = nullptr; ///< from sps_scaling_list_data_present_flag on
    SyntaxPart pcm = nullptr;
    SyntaxPart shortTerm = [](BitStreamWriter& bits) { bits.UE(0); }; ///< number of sets, and the sets
    SyntaxPart longTerm = nullptr;
    SyntaxPart vui = nullptr;

    /// The whole unit with its header.
    std::vector<uint8_t> Unit() const {
        BitStreamWriter bits;
        WriteHead(bits);
        WriteFormat(bits);
        WriteTools(bits);
        WriteReferences(bits);
        WriteOptional(bits, vui);
        bits.Flag(false).Trailing(); // sps_extension_present_flag
        return NALUnit({33 << 1, 1}, bits.Bytes());
    }

private:
    void WriteHead(BitStreamWriter& bits) const {
        bits.U(4, 0).U(3, maxSubLayersMinus1).Flag(isNested);
        bits.U(8, profile).U(32, compatibility);
        for (const uint8_t byte : constraints)
            bits.U(8, byte);
        bits.U(8, level);
        if (subLayers) subLayers(bits);
    }
    void WriteFormat(BitStreamWriter& bits) const {
        bits.UE(id).UE(chromaFormat);
        if (chromaFormat == 3) bits.Flag(hasSeparatePlanes);
        bits.UE(width).UE(height);
        WriteOptional(bits, window);
        bits.UE(lumaDepthMinus8).UE(chromaDepthMinus8).UE(log2MaxPicOrderCntMinus4);
    }
    void WriteTools(BitStreamWriter& bits) const {
        bits.Flag(hasOrderingOfEachLayer);
        for (uint32_t layer = 0; layer <= (hasOrderingOfEachLayer ? maxSubLayersMinus1 : 0); ++layer)
            bits.UE(4).UE(0).UE(0);
        bits.UE(0).UE(3).UE(0).UE(3).UE(1).UE(1);
        WriteOptional(bits, scalingLists);
        bits.Flag(true).Flag(false);
        WriteOptional(bits, pcm);
    }
    void WriteReferences(BitStreamWriter& bits) const {
        shortTerm(bits);
        WriteOptional(bits, longTerm);
        bits.Flag(true).Flag(true);
    }
};

struct HEVCVui {
    SyntaxPart aspect = nullptr;      ///< aspect_ratio_idc and what follows
    SyntaxPart videoSignal = nullptr; ///< from video_format on
    SyntaxPart chromaLocation = nullptr;
    bool hasFrameFieldInfo = false;
    SyntaxPart displayWindow = nullptr;
    SyntaxPart timing =
        nullptr; ///< from vui_num_units_in_tick to vui_hrd_parameters_present_flag and the parameters
    SyntaxPart restrictions = nullptr;

    void operator()(BitStreamWriter& bits) const {
        WriteOptional(bits, aspect);
        bits.Flag(false); // overscan_info_present_flag
        WriteOptional(bits, videoSignal);
        WriteOptional(bits, chromaLocation);
        bits.Flag(false).Flag(false).Flag(hasFrameFieldInfo);
        WriteOptional(bits, displayWindow);
        WriteOptional(bits, timing);
        WriteOptional(bits, restrictions);
    }
};

/// Timing of the VUI parameters; `hrd` may be empty.
inline SyntaxPart HEVCTiming(uint32_t units, uint32_t timeScale, const SyntaxPart& hrd = nullptr) {
    return [=](BitStreamWriter& bits) {
        bits.U(32, units).U(32, timeScale).Flag(false);
        WriteOptional(bits, hrd);
    };
}

/// VUI parameters with nothing but 50 frames in 2 seconds: a parser that finds them has kept its place.
inline SyntaxPart HEVCLandmark() { return HEVCVui{.timing = HEVCTiming(2, 50)}; }

struct HEVCPictureSet {
    bool hasQPDelta = false;
    bool hasTiles = false;
    bool hasWavefronts = false;

    std::vector<uint8_t> Unit() const {
        BitStreamWriter bits;
        bits.UE(0).UE(0).U(7, 0).UE(0).UE(0).SE(0).U(2, 0);
        bits.Flag(hasQPDelta);
        if (hasQPDelta) bits.UE(1);
        bits.SE(-1).SE(1).U(4, 0);
        bits.Flag(hasTiles).Flag(hasWavefronts);
        if (hasTiles) bits.UE(1).UE(0).Flag(true).Flag(true); // two columns, one row, of equal size
        bits.Flag(true).Flag(false).Flag(false).Flag(false).UE(0).Flag(false).Flag(false).Trailing();
        return NALUnit({34 << 1, 1}, bits.Bytes());
    }
};

/// A message of supplemental enhancement information, of less than 255 bytes.
struct HEVCMessage {
    uint32_t type;
    std::vector<uint8_t> payload;
};

/// A unit of prefix messages.
inline std::vector<uint8_t> HEVCPrefixSEI(const std::vector<HEVCMessage>& messages) {
    BitStreamWriter bits;
    for (const HEVCMessage& message : messages) {
        bits.U(8, message.type).U(8, static_cast<uint32_t>(message.payload.size()));
        for (const uint8_t byte : message.payload)
            bits.U(8, byte);
    }
    return NALUnit({39 << 1, 1}, bits.Trailing().Bytes());
}

/// A pic_timing message without anything but pic_struct.
inline HEVCMessage HEVCPicTiming(uint32_t picStruct) {
    return {1, BitStreamWriter().U(4, picStruct).U(2, 1).U(1, 0).Trailing().Bytes()};
}
