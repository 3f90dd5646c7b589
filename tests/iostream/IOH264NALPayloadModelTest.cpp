// The scan beside a model of its rules, word for word, on data that arrives in any pieces.

#include "iostream/RecordingPayload.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using Bytes = std::vector<uint8_t>;

/// A 32-bit word slides over the bytes; one that ends on the last byte does not count.
class ScanModel {
public:
    Bytes data;
    size_t scanPos = 0;
    std::vector<IOStream::NALEntry> entries;

    bool Scan() {
        while (data.size() >= scanPos + 5) {
            size_t place = scanPos;
            while (place + 4 < data.size() && LengthAt(place) == 0)
                ++place;
            if (place + 4 >= data.size()) break;
            const uint8_t length = LengthAt(place);
            const uint8_t header = data[place + length];
            if (header >= 128) return false;
            entries.push_back({static_cast<uint8_t>(header & 31), length, static_cast<uint32_t>(place)});
            scanPos = place + length + 1;
        }
        if (data.size() >= 3) scanPos = data.size() - 3;
        return true;
    }

private:
    /// Bytes of the start code that the word at a place is, or 0.
    uint8_t LengthAt(size_t place) const {
        uint32_t word = 0;
        for (size_t byte = 0; byte < 4; ++byte)
            word = word << 8 | data[place + byte];
        if (word == 1) return 4;
        return word >> 8 == 1 ? 3 : 0;
    }
};

/// Start codes, what nearly is one, and in one stream of four a forbidden bit.
Bytes MakeStream(std::mt19937& random) {
    constexpr uint8_t values[] = {0, 0, 0, 0, 1, 1, 3, 0x67, 0x41, 0xE5};
    const size_t valueCount = random() % 4 == 0 ? 10 : 9;
    Bytes stream(random() % 400);
    std::ranges::generate(stream, [&] { return values[random() % valueCount]; });
    return stream;
}

/// The first bytes of `stream`, taken off it.
Bytes TakePiece(Bytes& stream, size_t size) {
    const auto end = stream.begin() + static_cast<ptrdiff_t>(std::min(size, stream.size()));
    const Bytes piece(stream.begin(), end);
    stream.erase(stream.begin(), end);
    return piece;
}

TEST(IOH264NALPayloadModel, TheScanEqualsTheModelInAllPieces) {
    std::mt19937 random = MakeRandom();
    for (uint32_t round = 0; round < 1000; ++round) {
        Bytes stream = MakeStream(random);
        const size_t largest = 1 + random() % 100;
        ScanModel model;
        RecordingPayload payload;
        while (!stream.empty()) {
            const Bytes piece = TakePiece(stream, 1 + random() % largest);
            model.data.insert(model.data.end(), piece.begin(), piece.end());
            const bool isSound = model.Scan();
            payload.Append(piece);
            ASSERT_EQ(payload.ScanData(), isSound);
            // The second scan finds nothing new, and neither does the model's.
            ASSERT_EQ(model.Scan(), isSound);
            ASSERT_EQ(payload.scanPos, model.scanPos);
        }
        ASSERT_EQ(payload.entries, model.entries) << "round " << round;
    }
}

TEST(IOH264NALPayloadModel, EachUnitReachesTheParserOnceAndWhole) {
    std::mt19937 random = MakeRandom();
    for (uint32_t round = 0; round < 1000; ++round) {
        const Bytes stream = MakeStream(random);
        ScanModel model;
        model.data = stream;
        model.Scan();
        std::vector<ParsedUnit> expected;
        for (size_t i = 0; i < model.entries.size(); ++i) {
            const size_t begin = model.entries[i].offset + model.entries[i].startCodeLength + 1u;
            const size_t end = i + 1 < model.entries.size() ? model.entries[i + 1].offset : stream.size();
            expected.push_back({model.entries[i].type, {stream.begin() + begin, stream.begin() + end}});
        }
        RecordingPayload payload;
        payload.Append(stream);
        payload.GetStreamInfo();
        ASSERT_EQ(payload.parsed, expected) << "round " << round;
    }
}

} // namespace
