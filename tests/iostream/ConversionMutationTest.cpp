// Damaged material, the same in every run: flipped bits, cut-off ends, lengths that lie.

#include "iostream/ConversionCheck.h"
#include "iostream/H264Sets.h"
#include "iostream/HEVCSyntax.h"
#include "iostream/IOHEVCNALPayload.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

namespace {

using Bytes = std::vector<uint8_t>;
using Check = void (*)(const Bytes&, uint8_t, size_t);

/// Material of one family, whole.
struct Family {
    Check check;
    std::vector<Bytes> materials;
};

Family H264Material() {
    SequenceSet interlaced;
    interlaced.frameMbsOnly = false;
    interlaced.vui = [](BitStreamWriter& bits) {
        bits.Flag(true).U(8, 4).Flag(false).Flag(true).U(3, 5).Flag(true).Flag(true).U(24, 0x010101);
        bits.Flag(false).Flag(true).U(32, 1001).U(32, 60000).Flag(true).Flag(false).Flag(false);
        bits.Flag(true).Flag(false);
    };
    const std::vector<Bytes> units = {
        NALUnit({9}, {0xF0}), NALUnit({0x67}, interlaced.Payload()), NALUnit({0x68}, PictureSet().Payload()),
        NALUnit({0x65}, {0x88, 0x84, 0, 0, 1, 0x33}), NALUnit({0x41}, {0x9A, 0x24, 0x6C})};
    Family family = {CheckH264, {AnnexB(units), AnnexB(units, 3), LengthPrefixed(units), {}}};
    Bytes& record = family.materials.back();
    const Bytes stream = AnnexB(units);
    IOStream::IOH264NALPayload::s_ConvertToAVCC(stream.data(), static_cast<uint32_t>(stream.size()), record);
    return family;
}

Family HEVCMaterial() {
    HEVCSequenceSet sequence;
    sequence.vui = HEVCVui{.hasFrameFieldInfo = true, .timing = HEVCTiming(1001, 30000)};
    const std::vector<Bytes> units = {{0x40, 1, 0x0C},
                                      sequence.Unit(),
                                      HEVCPictureSet{.hasTiles = true}.Unit(),
                                      HEVCPrefixSEI({HEVCPicTiming(1)}),
                                      {0x26, 1, 0xAF, 0, 0, 3, 1}};
    Family family = {CheckHEVC, {AnnexB(units), AnnexB(units, 3), LengthPrefixed(units), {}}};
    const Bytes stream = AnnexB(units);
    IOStream::IOHEVCNALPayload::s_ConvertToHVCC(stream.data(), stream.size(), family.materials.back());
    return family;
}

std::string Dump(const Bytes& bytes) {
    std::string text;
    for (const uint8_t byte : bytes)
        text += std::to_string(byte) + " ";
    return text;
}

void ExpectSound(Check check, const Bytes& bytes, uint8_t lengthSize, size_t pieceSize) {
    try {
        check(bytes, lengthSize, pieceSize);
    } catch (const std::exception& broken) {
        ADD_FAILURE() << broken.what() << ", length size " << int{lengthSize} << ", pieces of " << pieceSize
                      << ": " << Dump(bytes);
    }
}

/// Flips bits, sets bytes to what lengths and counts make the most of, cuts and repeats.
Bytes Damaged(Bytes bytes, std::mt19937& random) {
    const uint32_t changes = 1 + random() % 4;
    for (uint32_t change = 0; change < changes && !bytes.empty(); ++change) {
        const size_t place = random() % bytes.size();
        switch (random() % 6) {
        case 0: bytes[place] ^= static_cast<uint8_t>(1 << random() % 8); break;
        case 1: bytes[place] = 0xFF; break;
        case 2: bytes[place] = 0; break;
        case 3: bytes[place] += 1; break;
        case 4: bytes.resize(place); break;
        default: bytes.insert(bytes.end(), bytes.begin() + static_cast<ptrdiff_t>(place), bytes.end());
        }
    }
    return bytes;
}

class ConversionMutation : public testing::TestWithParam<Family (*)()> {};

TEST_P(ConversionMutation, WholeMaterialIsSoundWhateverItIsTakenFor) {
    const Family family = GetParam()();
    for (const Bytes& material : family.materials) {
        ASSERT_FALSE(material.empty());
        for (uint8_t lengthSize = 0; lengthSize <= 5; ++lengthSize)
            for (const size_t pieceSize : {1, 2, 3, 5, 1000})
                ExpectSound(family.check, material, lengthSize, pieceSize);
    }
}

TEST_P(ConversionMutation, MaterialCutOffAnywhereIsSound) {
    const Family family = GetParam()();
    for (const Bytes& material : family.materials)
        for (size_t size = 0; size < material.size(); ++size)
            ExpectSound(family.check, {material.begin(), material.begin() + static_cast<ptrdiff_t>(size)}, 4,
                        7);
}

TEST_P(ConversionMutation, MaterialWithAnyBitFlippedIsSound) {
    const Family family = GetParam()();
    for (const Bytes& material : family.materials) {
        for (size_t bit = 0; bit < material.size() * 8; ++bit) {
            Bytes flipped = material;
            flipped[bit / 8] ^= static_cast<uint8_t>(1 << bit % 8);
            ExpectSound(family.check, flipped, 4, 1000);
        }
    }
}

TEST_P(ConversionMutation, MaterialWithMuchDamageIsSound) {
    const Family family = GetParam()();
    std::mt19937 random(20);
    for (const Bytes& material : family.materials)
        for (int run = 0; run < 400; ++run)
            ExpectSound(family.check, Damaged(material, random), static_cast<uint8_t>(random() % 6),
                        1 + random() % 40);
}

INSTANTIATE_TEST_SUITE_P(Of, ConversionMutation, testing::Values(H264Material, HEVCMaterial),
                         [](const auto& info) { return info.index == 0 ? "H264" : "HEVC"; });

} // namespace
