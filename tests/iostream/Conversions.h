#pragma once

#include "host/Platform.h"
#include "iostream/IOHEVCNALPayload.h"
#include "support/GuardedBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <vector>

/// The exported conversions on bytes that end at a page that may not be touched.

using Bytes = std::vector<uint8_t>;

/// A copy of the bytes that ends, or starts, at such a page.
class GuardedCopy : public GuardedBytes {
public:
    explicit GuardedCopy(const Bytes& bytes, Guard guard = Guard::Behind)
        : GuardedBytes(bytes.size(), guard) {
        std::copy(bytes.begin(), bytes.end(), begin());
    }
    Bytes Content() const { return {begin(), end()}; }
};

/// What a test puts into outputs, to see whether they are left alone.
inline const Bytes untouched = {0xAA, 0xBB};

/// A conversion that answers with its result, its output and a length size.
struct Converted {
    bool isDone;
    Bytes out;
    uint8_t lengthSize = 0xEE;
};

inline Converted ConvertH264(const Bytes& record) {
    const GuardedCopy data(record);
    Converted converted = {false, untouched};
    converted.isDone = IOStream::IOH264NALPayload::s_ConvertH264(data.data(), data.size(), converted.out,
                                                                 converted.lengthSize);
    return converted;
}

inline Converted ConvertHEVC(const Bytes& record) {
    const GuardedCopy data(record);
    Converted converted = {false, untouched};
    converted.isDone = IOStream::IOHEVCNALPayload::s_ConvertHEVC(data.data(), data.size(), converted.out,
                                                                 converted.lengthSize);
    return converted;
}

/// @param out  an earlier record, or nothing
inline Converted ConvertToAVCC(const Bytes& stream, const Bytes& out = {}) {
    const GuardedCopy data(stream);
    Converted converted = {false, out};
    converted.isDone = IOStream::IOH264NALPayload::s_ConvertToAVCC(
        data.data(), static_cast<uint32_t>(data.size()), converted.out);
    return converted;
}

inline Converted ConvertToHVCC(const Bytes& stream) {
    const GuardedCopy data(stream);
    Converted converted = {false, untouched};
    converted.isDone = IOStream::IOHEVCNALPayload::s_ConvertToHVCC(data.data(), data.size(), converted.out);
    return converted;
}

/// The sample of a byte stream; nothing if the conversion answers false, and then its outputs are checked to
/// be as they were.
inline std::optional<Bytes> ConvertToHVCCStream(const Bytes& stream) {
    const GuardedCopy data(stream);
    uint8_t mark = 0;
    uint8_t* block = &mark;
    uint64_t size = 77;
    if (!IOStream::IOHEVCNALPayload::s_ConvertToHVCCStream(data.data(), data.size(), block, size)) {
        EXPECT_EQ(block, &mark);
        EXPECT_EQ(size, 77U);
        return std::nullopt;
    }
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 32, 0U);
    Bytes sample(block, block + size);
    Platform::FreeMemAligned(block);
    return sample;
}

/// A sample turned into a byte stream.
struct AnnexBSample {
    bool isDone;
    Bytes input; ///< what the caller's buffer holds afterwards
    Bytes out;

    /// The byte stream, wherever it is.
    const Bytes& Stream() const { return out.empty() ? input : out; }
};

inline AnnexBSample ConvertToAnnexB(const Bytes& sample, uint8_t lengthSize) {
    const GuardedCopy data(sample);
    AnnexBSample converted = {false, {}, untouched};
    converted.isDone =
        IOStream::IOH264NALPayload::s_ConvertToAnnexB(data.data(), data.size(), lengthSize, converted.out);
    converted.input = data.Content();
    return converted;
}

/// The parameter sets that are extracted from a record.
struct Extracted {
    uint32_t lengthSize;
    std::vector<Bytes> units;
};

/// @tparam Payload  the class whose records these are
template <class Payload>
Extracted ExtractParameterSets(const Bytes& record) {
    std::vector<const uint8_t*> pointers;
    std::vector<uint64_t> sizes;
    Extracted extracted = {Payload::s_ExtractParameterSets(record, pointers, sizes), {}};
    EXPECT_EQ(pointers.size(), sizes.size());
    for (size_t index = 0; index < pointers.size(); ++index) {
        EXPECT_GE(pointers[index], record.data());
        EXPECT_LE(pointers[index] + sizes[index], record.data() + record.size());
        extracted.units.emplace_back(pointers[index], pointers[index] + sizes[index]);
    }
    return extracted;
}
