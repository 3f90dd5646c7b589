#pragma once

#include "iostream/PayloadAccess.h"

#include <cstdint>
#include <ostream>
#include <stdexcept>
#include <vector>

/// What `ParseNAL` was given: the type and the bytes behind the unit's first one.
struct ParsedUnit {
    uint8_t type;
    std::vector<uint8_t> payload;

    bool operator==(const ParsedUnit&) const = default;
};

/// H.264 data whose units are written down in `parsed` and not parsed.
class RecordingParser : public IOStream::IOH264NALPayload {
public:
    using IOH264NALPayload::IOH264NALPayload;

    std::vector<ParsedUnit> parsed;
    bool throwsAlways = false; ///< after writing the unit down

protected:
    void ParseNAL(uint8_t type, const uint8_t* payload, uint32_t size) override {
        parsed.push_back({type, {payload, payload + size}});
        if (throwsAlways) throw std::runtime_error("a parser that fails");
    }
};
using RecordingPayload = PayloadAccess<RecordingParser>;

namespace IOStream {

inline bool operator==(const NALEntry& a, const NALEntry& b) {
    return a.type == b.type && a.startCodeLength == b.startCodeLength && a.offset == b.offset;
}

inline void PrintTo(const NALEntry& entry, std::ostream* out) {
    *out << "type " << int{entry.type} << " at " << entry.offset << " + " << int{entry.startCodeLength};
}

} // namespace IOStream
