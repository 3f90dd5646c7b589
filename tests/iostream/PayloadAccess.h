#pragma once

#include "iostream/IOHEVCNALPayload.h"

#include <cstdint>
#include <vector>

/// The payload classes with what they know laid open. `H264Payload` and `HEVCPayload` have the same members:
/// the stream's facts in `info`, the scanner's state, and single units with `Parse`.
template <class Base>
class PayloadAccess : public Base {
public:
    explicit PayloadAccess(bool parseNALs = true) : Base(parseNALs) {}

    using Base::bottomFieldPicOrderPresent;
    using Base::data;
    using Base::dataSize;
    using Base::deblockingControlPresent;
    using Base::deblockingSeen;
    using Base::deltaPicOrderAlwaysZero;
    using Base::entries;
    using Base::entropyCodingMode;
    using Base::fieldSeen;
    using Base::frameFieldInfoPresent;
    using Base::frameMbsOnly;
    using Base::GetNALType;
    using Base::growQuantum;
    using Base::info;
    using Base::lastParsed;
    using Base::log2MaxFrameNum;
    using Base::log2MaxPicOrderCntLsb;
    using Base::ParseHRD;
    using Base::ParseNAL;
    using Base::parseNALs;
    using Base::ParseVUI;
    using Base::ParseVUICommon;
    using Base::picOrderCntType;
    using Base::redundantPicCntPresent;
    using Base::scanPos;
    using Base::separateColourPlane;
    using Base::Unit;

    /// Appends all of `bytes`.
    void Append(const std::vector<uint8_t>& bytes) {
        this->AppendData(bytes.data(), static_cast<uint32_t>(bytes.size()));
    }
    /// Parses a whole unit (header and all, no start code) as `ParseEntry` would, what the parsers throw left
    /// to the test.
    void Parse(const std::vector<uint8_t>& unit) {
        ParseNAL(GetNALType(unit.at(0)), unit.data() + 1, static_cast<uint32_t>(unit.size() - 1));
    }
};

using H264Payload = PayloadAccess<IOStream::IOH264NALPayload>;

/// As above, with the header of the configuration record.
class HEVCPayload : public PayloadAccess<IOStream::IOHEVCNALPayload> {
public:
    using IOHEVCNALPayload::ParseSEI;
    using IOHEVCNALPayload::ParseSPS;
    using IOHEVCNALPayload::record;
    using PayloadAccess::PayloadAccess;
};
