#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// One NAL unit as libavcodec reads it: its syntax elements by their names in the standard, those of arrays
/// with their subscripts ("cpb_cnt_minus1[0]").
struct TracedUnit {
    std::string kind; ///< "Sequence Parameter Set" and so on
    std::map<std::string, int64_t> elements;

    bool Has(const std::string& element) const { return elements.count(element) != 0; }
    /// The element's value, 0 for one that is not there.
    int64_t operator[](const std::string& element) const;
};

/// The units of a byte stream, in its order.
using HeaderTrace = std::vector<TracedUnit>;

/// Reads the headers of a byte stream through FFmpeg's trace of them. Throws `std::runtime_error` if FFmpeg
/// refuses any of it. One call at a time: FFmpeg has one log.
/// @param codec  FFmpeg's name, "h264" or "hevc"
HeaderTrace TraceHeaders(const std::string& codec, const std::vector<uint8_t>& stream);

/// The last unit of a kind. Throws `std::runtime_error` without one.
const TracedUnit& LastOf(const HeaderTrace& trace, const std::string& kind);
