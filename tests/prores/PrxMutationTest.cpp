// Frames with bits flipped, cut short, and with lies in their tables. Input and target end at memory that may
// not be touched; after all damage the decoder still decodes an intact frame to the same bytes.

#include "prores/PrxDecoder.h"

#include "prores/StreamFrame.h"
#include "prores/TestFrames.h"
#include "prores/TestTarget.h"
#include "support/GuardedBytes.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using stream::Bytes;

constexpr uint32_t mutationSeed = 20; ///< the same frames in every run

/// A frame and the format to which it is decoded.
struct Subject {
    const char* name;
    int chromaFormat;
    int interlaceMode;
    int alphaType;
    bool shortForm;
    uint32_t format;
};

void PrintTo(const Subject& subject, std::ostream* out) { *out << subject.name; }

constexpr Subject subjects[] = {
    {"Direct422", 2, 0, 0, false, prxFormatV216},          {"RowRoute422", 2, 1, 0, false, prxFormatB64a},
    {"V210Of422", 2, 2, 0, false, prxFormatV210},          {"ChromaPass422", 2, 0, 1, false, prxFormatY416},
    {"ShortForm422", 2, 0, 0, true, prxFormat2vuy},        {"Rgb444", 3, 0, 2, false, prxFormatBgra},
    {"Float444Interlaced", 3, 1, 2, false, prxFormatR4fl}, {"Bytes444", 3, 0, 1, false, prxFormatV408},
};

class PrxMutation : public testing::TestWithParam<Subject> {
protected:
    PrxMutation() : spec_(SpecOf(GetParam())), target_(GetParam().format, spec_) {
        intact_ = stream::BuildFrame(spec_, &places_);
        EXPECT_EQ(DecodeGuarded(intact_), static_cast<int32_t>(intact_.size()));
        expected_ = target_.Bytes();
    }

    ~PrxMutation() override {
        EXPECT_EQ(DecodeGuarded(intact_), static_cast<int32_t>(intact_.size()));
        EXPECT_EQ(target_.Bytes(), expected_);
    }

    /// Decodes a frame, and tests what holds whatever its bytes are.
    int32_t DecodeGuarded(const Bytes& frame) {
        const GuardedBytes input(frame.size(), GuardedBytes::Guard::Behind);
        std::copy(frame.begin(), frame.end(), input.begin());
        target_.Restore();
        const int32_t result =
            decoder_.decodeFrame({input.data(), input.size(), nullptr}, target_.Get(), 1, false, nullptr);
        if (result > 0) {
            EXPECT_LE(static_cast<size_t>(result), frame.size());
        } else {
            EXPECT_TRUE(result <= -1 && result >= -4) << result;
            EXPECT_TRUE(target_.Untouched());
        }
        return result;
    }

    const stream::FrameSpec& Spec() const { return spec_; }
    const Bytes& Intact() const { return intact_; }
    const stream::FramePlaces& Places() const { return places_; }

private:
    static stream::FrameSpec SpecOf(const Subject& subject) {
        stream::FrameSpec spec = FrameOf(subject.chromaFormat, subject.interlaceMode, subject.alphaType);
        spec.width = 50;
        spec.height = 35;
        spec.log2SliceMbWidth = 1;
        spec.shortForm = subject.shortForm;
        return spec;
    }

    stream::FrameSpec spec_;
    stream::FramePlaces places_;
    Bytes intact_;
    TestTarget target_;
    Bytes expected_;
    PrxDecoder decoder_{2, nullptr};
};

TEST_P(PrxMutation, FlippedBitsGiveAFrameOrADocumentedFailure) {
    std::mt19937 random(mutationSeed);
    for (int round = 0; round < 300; ++round) {
        Bytes frame = Intact();
        // The headers take as many flips as all the rest.
        const size_t range = round % 2 == 0 ? frame.size() : Places().pictures[0].slices[0] + 8;
        for (uint32_t flips = 1 + random() % 8; flips > 0; --flips)
            frame[random() % range] ^= static_cast<uint8_t>(1 << random() % 8);
        DecodeGuarded(frame);
    }
}

TEST_P(PrxMutation, AFrameCutAnywhereIsDamaged) {
    constexpr int32_t damaged = -2;
    for (size_t size = 0; size < Intact().size(); size += 1 + size / 40)
        EXPECT_EQ(DecodeGuarded(Bytes(Intact().begin(), Intact().begin() + static_cast<ptrdiff_t>(size))),
                  damaged);
}

TEST_P(PrxMutation, AFrameThatIsCutAndSaysSoKeepsToItsBytes) {
    int decoded = 0;
    for (size_t size = 4; size < Intact().size(); size += 1 + size / 60) {
        Bytes frame(Intact().begin(), Intact().begin() + static_cast<ptrdiff_t>(size));
        stream::Patch32(frame, 0, static_cast<uint32_t>(size));
        decoded += DecodeGuarded(frame) > 0 ? 1 : 0;
    }
    EXPECT_GT(decoded, 10);
}

TEST_P(PrxMutation, LiesInTheSliceTableDoNotMatterToTheFrame) {
    std::mt19937 random(mutationSeed);
    for (const stream::PicturePlaces& picture : Places().pictures) {
        for (size_t slice = 0; slice < picture.slices.size(); ++slice) {
            for (const uint32_t lie :
                 {0U, 1U, 5U, 0x7fffU, 0xffffU, static_cast<uint32_t>(random() & 0xffff)}) {
                Bytes frame = Intact();
                stream::Patch16(frame, picture.sliceTable + 2 * slice, lie);
                EXPECT_EQ(DecodeGuarded(frame), static_cast<int32_t>(frame.size()));
            }
        }
    }
}

TEST_P(PrxMutation, LiesInTheSliceHeadersDoNotMatterToTheFrame) {
    std::mt19937 random(mutationSeed);
    for (const stream::PicturePlaces& picture : Places().pictures) {
        for (const size_t slice : picture.slices) {
            for (const size_t field : {0U, 2U, 4U, 6U}) {
                Bytes frame = Intact();
                stream::Patch16(frame, slice + field, random() % 3 == 0 ? 0xffffU : random() & 0xffffU);
                EXPECT_EQ(DecodeGuarded(frame), static_cast<int32_t>(frame.size()));
            }
        }
    }
}

TEST_P(PrxMutation, AnyBytesBehindTheHeadersGiveAFrame) {
    std::mt19937 random(mutationSeed);
    for (int round = 0; round < 50; ++round) {
        Bytes frame = Intact();
        for (const stream::PicturePlaces& picture : Places().pictures) {
            // Mostly slice data; every fifth time the slice headers and their sizes too.
            for (const size_t slice : picture.slices) {
                const size_t begin = slice + (round % 5 == 0 ? 0 : 8);
                for (size_t i = begin; i < begin + 60 && i < frame.size(); ++i)
                    frame[i] = static_cast<uint8_t>(random());
            }
        }
        // The second picture's header may be among what was overwritten.
        const int32_t result = DecodeGuarded(frame);
        EXPECT_TRUE(result > 0 || Spec().interlaceMode != 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Frames, PrxMutation, testing::ValuesIn(subjects),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
