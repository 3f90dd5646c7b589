// Whatever is wrong with a file, it is refused, or what it gives is what was written.

#include "rawsdk/clip/ClipFile.h"
#include "rawsdk/clip/Failure.h"
#include "standins/rawsdk/clip/TestClips.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

namespace {

using namespace rawsdk;
using Bytes = std::vector<uint8_t>;

constexpr uint32_t width = 6;
constexpr uint32_t height = 66;
constexpr size_t crcOffset = ClipHeader::bytes - sizeof(uint32_t);

class DamagedClips : public testing::Test {
protected:
    DamagedClips() {
        ClipProperties properties = TestClip(width, height);
        properties.metadata = {{u"text", TextValue(u"value")},
                               {u"array", ArrayValue<int16_t>({1, 2, 3})},
                               {u"number", NumberValue(1.5f)}};
        properties.table = TestTable(2);
        WriteTestClip(path_, properties, 2);
        std::ifstream file(path_, std::ios::binary);
        clip_.assign(std::istreambuf_iterator<char>(file), {});
    }

    void Write(const Bytes& bytes) const {
        // Over the file that is there: file systems are slow to empty one and fill it again.
        std::fstream file(path_, std::ios::binary | std::ios::in | std::ios::out);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        file.close();
        if (std::filesystem::file_size(path_) != bytes.size())
            std::filesystem::resize_file(path_, bytes.size());
    }

    /// Opens a file of these bytes and decompresses its frames.
    /// @return whether all of it could be read
    bool Reads(const Bytes& bytes) {
        Write(bytes);
        try {
            const ClipFile clip(path_);
            Bytes buffer(clip.BitstreamBound());
            frames_.clear();
            for (uint64_t frame = 0; frame < clip.FrameCount(); ++frame)
                frames_.push_back(SamplesOf(clip.Read(frame, buffer), clip.Clip().width, clip.Clip().height));
            return true;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.result, damagedClip);
            return false;
        }
    }

    static uint64_t Number(const Bytes& bytes, size_t offset) {
        uint64_t number = 0;
        std::memcpy(&number, &bytes[offset], sizeof(number));
        return number;
    }
    static void Store(Bytes& bytes, size_t offset, uint32_t number) {
        std::memcpy(&bytes[offset], &number, sizeof(number));
    }
    size_t DirectoryOffset() const { return Number(clip_, 16); }

    /// Makes the check sums of header and directory right again.
    void Seal(Bytes& bytes) const {
        const size_t offset = DirectoryOffset();
        Store(bytes, 12, Crc32({bytes.data() + offset, bytes.size() - offset}));
        Store(bytes, crcOffset, Crc32({bytes.data(), crcOffset}));
    }

    TestFolder folder_;
    std::string path_ = folder_ / "clip.vrel";
    Bytes clip_;
    std::vector<std::vector<uint16_t>> frames_;
};

TEST_F(DamagedClips, AreReadIfNothingIsWrong) {
    EXPECT_TRUE(Reads(clip_));
    EXPECT_EQ(frames_.size(), 2u);
}

TEST_F(DamagedClips, WithAByteChangedAreRefusedOrGiveTheSameFrames) {
    std::mt19937 random = MakeRandom();
    size_t refused = 0;
    for (size_t i = 0; i < clip_.size(); ++i) {
        Bytes damaged = clip_;
        damaged[i] ^= 1u << random() % 8;
        if (!Reads(damaged)) {
            ++refused;
            continue;
        }
        ASSERT_EQ(frames_.size(), 2u) << i;
        ASSERT_EQ(frames_[0], TestSamples(width, height, 0)) << i;
        ASSERT_EQ(frames_[1], TestSamples(width, height, 1)) << i;
    }
    EXPECT_GT(refused, clip_.size() * 9 / 10);
}

TEST_F(DamagedClips, ThatAreCutOffAreRefused) {
    for (size_t size = 0; size < clip_.size(); size += 3)
        ASSERT_FALSE(Reads(Bytes(clip_.begin(), clip_.begin() + static_cast<ptrdiff_t>(size)))) << size;
}

TEST_F(DamagedClips, WithBytesBehindTheEndAreRefused) {
    Bytes longer = clip_;
    longer.push_back(0);
    EXPECT_FALSE(Reads(longer));
}

TEST_F(DamagedClips, SurviveEveryByteOfTheDirectoryThatHasItsCheckSum) {
    std::mt19937 random = MakeRandom();
    size_t refused = 0;
    for (size_t i = DirectoryOffset(); i < clip_.size(); ++i) {
        Bytes damaged = clip_;
        damaged[i] = static_cast<uint8_t>(random());
        Seal(damaged);
        refused += Reads(damaged) ? 0 : 1;
    }
    EXPECT_GT(refused, 50u);
}

TEST_F(DamagedClips, SurviveNumbersOfTheDirectoryThatAreAsLargeAsCanBe) {
    size_t refused = 0;
    for (size_t i = DirectoryOffset(); i + 4 <= clip_.size(); ++i) {
        Bytes damaged = clip_;
        Store(damaged, i, 0xFFFFFFFF);
        Seal(damaged);
        refused += Reads(damaged) ? 0 : 1;
    }
    EXPECT_GT(refused, 50u);
}

TEST_F(DamagedClips, SurviveEveryByteInFrontOfTheStripsThatHasItsCheckSum) {
    std::mt19937 random = MakeRandom();
    const size_t record = ClipHeader::bytes;
    const size_t headBytes = Number(clip_, record + 4) & 0xFFFFFFFF;
    size_t refused = 0;
    for (size_t i = 0; i < headBytes; ++i) {
        Bytes damaged = clip_;
        damaged[record + 12 + i] = static_cast<uint8_t>(random());
        Store(damaged, record + 8, Crc32({damaged.data() + record + 12, headBytes}));
        refused += Reads(damaged) ? 0 : 1;
    }
    EXPECT_GT(refused, 5u);
}

TEST_F(DamagedClips, OfNoPictureSizeAreRefused) {
    for (const auto& [offset, size] : {std::pair<size_t, uint32_t>{0, 0}, {4, 0}, {0, 3}, {4, 0x10000}}) {
        Bytes damaged = clip_;
        Store(damaged, DirectoryOffset() + offset, size);
        Seal(damaged);
        EXPECT_FALSE(Reads(damaged));
    }
}

TEST_F(DamagedClips, ThatHaveBecomeShorterSinceTheyWereOpenedGiveNoFrame) {
    Write(clip_);
    const ClipFile clip(path_);
    Bytes buffer(clip.BitstreamBound());
    std::filesystem::resize_file(path_, ClipHeader::bytes + 4);
    EXPECT_THROW(clip.Read(0, buffer), Failure);
}

} // namespace
