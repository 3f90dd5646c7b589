#include "prores/PrxDecodeJobs.h"

#include "prores/StreamBits.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr int32_t targetRows = 1000;
constexpr int32_t targetRowBytes = 100;
uint8_t pixels[targetRows * targetRowBytes];

/// A picture of 5 by `mbHeight` macroblocks in slices of 4 and 1, whose slice table and data follow.
PrxPictureContext PictureOf(const stream::Bytes& bytes, uint32_t mbHeight) {
    PrxPictureContext picture{};
    picture.layout = {{bytes.data(), bytes.size(), nullptr}, 5, mbHeight, 4, 2, 2 * mbHeight};
    picture.outBase = pixels;
    picture.outHeight = targetRows;
    picture.height = static_cast<int32_t>(16 * mbHeight);
    picture.rowBytes = targetRowBytes;
    return picture;
}

stream::Bytes TableAndData(std::initializer_list<uint32_t> sizes, size_t dataSize) {
    stream::Bytes bytes;
    for (const uint32_t size : sizes)
        stream::Append16(bytes, size);
    bytes.resize(bytes.size() + dataSize);
    return bytes;
}

std::vector<PrxRowJob> JobsOf(const PrxPictureContext& picture) {
    std::vector<PrxRowJob> jobs;
    PrxAppendRowJobs(picture, &jobs);
    return jobs;
}

TEST(RowJobs, FindTheirSlicesBehindTheTable) {
    const stream::Bytes bytes = TableAndData({10, 20, 30, 40, 50, 60}, 210);
    const PrxPictureContext picture = PictureOf(bytes, 3);
    const std::vector<PrxRowJob> jobs = JobsOf(picture);
    ASSERT_EQ(jobs.size(), 3U);
    const uint64_t offsets[] = {12, 42, 112};
    const uint64_t sizes[] = {30, 70, 110};
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(jobs[i].picture, &picture);
        EXPECT_EQ(jobs[i].dataOffset, offsets[i]);
        EXPECT_EQ(jobs[i].dataSize, sizes[i]);
        EXPECT_EQ(jobs[i].tableOffset, 4 * i);
        EXPECT_FALSE(jobs[i].allOk);
        EXPECT_FALSE(jobs[i].outOfMemory);
    }
}

TEST(RowJobs, AreCutAtTheInputsEnd) {
    const stream::Bytes bytes = TableAndData({10, 20, 30, 0xffff, 50, 60}, 100);
    const PrxPictureContext picture = PictureOf(bytes, 3);
    const std::vector<PrxRowJob> jobs = JobsOf(picture);
    EXPECT_EQ(jobs[0].dataSize, 30U);
    EXPECT_EQ(jobs[1].dataSize, 70U);
    EXPECT_EQ(jobs[2].dataSize, 0U);
}

TEST(RowJobs, HaveNoDataIfTheTableItselfIsCut) {
    const stream::Bytes bytes = {0xff, 0xff, 0xff};
    const PrxPictureContext picture = PictureOf(bytes, 3);
    for (const PrxRowJob& job : JobsOf(picture))
        EXPECT_EQ(job.dataSize, 0U);
}

TEST(RowJobs, AreTheSameForAnInputInPieces) {
    const stream::Bytes bytes = TableAndData({10, 20, 30, 40, 50, 600}, 190);
    const std::vector<PrxRowJob> expected = JobsOf(PictureOf(bytes, 3));
    for (size_t cut = 0; cut <= bytes.size(); ++cut) {
        const PrxBufferPiece second{bytes.data() + cut, bytes.size() - cut, nullptr};
        PrxPictureContext picture = PictureOf(bytes, 3);
        picture.layout.sliceTable = {bytes.data(), cut, &second};
        const std::vector<PrxRowJob> jobs = JobsOf(picture);
        for (size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(jobs[i].dataOffset, expected[i].dataOffset) << cut;
            EXPECT_EQ(jobs[i].dataSize, expected[i].dataSize) << cut;
        }
    }
}

TEST(RowJobs, TakeTheirPlacesDownThePicture) {
    const stream::Bytes bytes = TableAndData({}, 0);
    PrxPictureContext picture = PictureOf(bytes, 3);
    picture.height = 40;
    const std::vector<PrxRowJob> jobs = JobsOf(picture);
    EXPECT_EQ(jobs[0].outRow, pixels);
    EXPECT_EQ(jobs[1].outRow, pixels + 1600);
    EXPECT_EQ(jobs[2].outRow, pixels + 3200);
    EXPECT_EQ(jobs[0].rows, 16);
    EXPECT_EQ(jobs[1].rows, 16);
    EXPECT_EQ(jobs[2].rows, 8);
}

TEST(RowJobs, BehindTheTargetHaveNoRows) {
    const stream::Bytes bytes = TableAndData({}, 0);
    PrxPictureContext picture = PictureOf(bytes, 3);
    picture.outHeight = 17;
    const std::vector<PrxRowJob> jobs = JobsOf(picture);
    EXPECT_EQ(jobs[0].rows, 16);
    EXPECT_EQ(jobs[1].rows, 1);
    EXPECT_EQ(jobs[2].rows, 0);
    EXPECT_EQ(jobs[2].outRow, nullptr);
}

TEST(RowJobs, OfAReducedPictureHaveReducedRows) {
    const stream::Bytes bytes = TableAndData({}, 0);
    PrxPictureContext picture = PictureOf(bytes, 2);
    picture.writerSetup = {3, 3, 1};
    picture.height = 17; // 2 rows remain, which are those of the first macroblocks
    const std::vector<PrxRowJob> jobs = JobsOf(picture);
    EXPECT_EQ(jobs[0].rows, 2);
    EXPECT_EQ(jobs[1].rows, 0);
}

TEST(RowJobs, OfTheLargestFrameAreOneForEachMacroblockRow) {
    const stream::Bytes bytes(1);
    PrxPictureContext picture = PictureOf(bytes, 4096);
    picture.layout = {{bytes.data(), bytes.size(), nullptr}, 4096, 4096, 1, 4096, 4096 * 4096};
    const std::vector<PrxRowJob> jobs = JobsOf(picture);
    EXPECT_EQ(jobs.size(), 4096U);
    EXPECT_LE(jobs.size() * sizeof(PrxRowJob), 200U * 1024);
}

} // namespace
