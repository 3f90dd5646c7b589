#include "ffmpeg/EncoderCatalogue.h"

#include "ffmpeg/FFmpegBinding.h"
#include "support/HeapSpy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <set>
#include <tuple>
#include <utility>

namespace {

using namespace CxFFMPEG;

using Options = EncoderOptions;
using Labels = std::set<std::string>;

Labels LabelsOf(int32_t codecId) {
    Labels labels;
    for (const auto& [label, entry] : GetEncoderTable())
        if (entry.codecId == codecId) labels.insert(label);
    return labels;
}

bool Lists(const AVCodec& encoder, int32_t pixelFormat) {
    for (const AVPixelFormat* format = encoder.pix_fmts; *format != AV_PIX_FMT_NONE; ++format)
        if (*format == pixelFormat) return true;
    return false;
}

/// A row of the table of profiles: codec id, profile, text, pixel format.
using ProfileRow = std::tuple<int32_t, int32_t, std::string, int32_t>;

TEST(EncoderCatalogue, TheTableOfProfilesHasItsSixteenRows) {
    const std::vector<ProfileRow> expected = {
        {2, 4, "", AV_PIX_FMT_YUV420P},
        {2, 0, "422", AV_PIX_FMT_YUV422P},
        {12, -99, "", AV_PIX_FMT_YUV420P},
        {27, 66, "Baseline", AV_PIX_FMT_YUV420P},
        {27, 77, "Main", AV_PIX_FMT_YUV420P},
        {27, 100, "High", AV_PIX_FMT_YUV420P},
        {27, 110, "High10", AV_PIX_FMT_YUV420P10LE},
        {27, 122, "High_422", AV_PIX_FMT_YUV422P},
        {27, 110, "High10_422", AV_PIX_FMT_YUV422P10LE},
        {27, 144, "High_444", AV_PIX_FMT_YUV444P},
        {30, -99, "420", AV_PIX_FMT_YUV420P},
        {30, -99, "422", AV_PIX_FMT_YUV422P},
        {30, -99, "444", AV_PIX_FMT_YUV444P},
        {97, -99, "", AV_PIX_FMT_RGB8},
        {173, 1, "", AV_PIX_FMT_YUV422P},
        {173, 2, "10Bit", AV_PIX_FMT_YUV422P10LE},
    };
    std::vector<ProfileRow> rows;
    for (const auto& [codec, profiles] : GetProfileTable()) {
        for (const EncoderEntry& profile : profiles) {
            rows.emplace_back(codec, profile.profile, profile.label, profile.pixelFormat);
            EXPECT_EQ(profile.codecId, codec);
            EXPECT_EQ(profile.encoder, nullptr);
        }
    }
    EXPECT_EQ(rows, expected);
}

TEST(EncoderCatalogue, WithAllEncodersPresentTheLabelsAreTheSixteen) {
    ASSERT_TRUE(LoadFFmpeg());
    EXPECT_EQ(LabelsOf(27), (Labels{"H.264 [Baseline]", "H.264 [Main]", "H.264 [High]", "H.264 [High10]",
                                    "H.264 [High_422]", "H.264 [High10_422]", "H.264 [High_444]"}));
    EXPECT_EQ(LabelsOf(173), (Labels{"HEVC", "HEVC [10Bit]"}));
    EXPECT_EQ(LabelsOf(2), (Labels{"MPEG2", "MPEG2 [422]"}));
    EXPECT_EQ(LabelsOf(30), (Labels{"Theora [420]", "Theora [422]", "Theora [444]"}));
    EXPECT_EQ(LabelsOf(12), (Labels{"MPEG4"}));
    EXPECT_EQ(LabelsOf(97), (Labels{"GIF"}));
}

TEST(EncoderCatalogue, RowsAreTestedAgainstTheFirstEncoderOfTheCodecAlone) {
    ASSERT_TRUE(LoadFFmpeg());
    for (const auto& [codec, profiles] : GetProfileTable()) {
        const AVCodec* const encoder = FFmpeg().avcodec_find_encoder(static_cast<AVCodecID>(codec));
        ASSERT_NE(encoder, nullptr) << codec;
        size_t taken = 0;
        for (const EncoderEntry& profile : profiles)
            taken += Lists(*encoder, profile.pixelFormat);
        EXPECT_EQ(LabelsOf(codec).size(), taken) << codec;
    }
}

TEST(EncoderCatalogue, EveryEntryHasAnEncoderThatListsItsPixelFormat) {
    ASSERT_TRUE(LoadFFmpeg());
    for (const auto& [label, entry] : GetEncoderTable()) {
        ASSERT_NE(entry.encoder, nullptr) << label;
        EXPECT_EQ(entry.label, label);
        EXPECT_EQ(entry.encoder->id, entry.codecId) << label;
        EXPECT_TRUE(Lists(*entry.encoder, entry.pixelFormat)) << label;
    }
}

TEST(EncoderCatalogue, ContainersGoByTheirLongNames) {
    ASSERT_TRUE(LoadFFmpeg());
    EXPECT_STREQ(FindContainer("Matroska").format->name, "matroska");
    EXPECT_STREQ(FindContainer("QuickTime / MOV").format->name, "mov");
    EXPECT_EQ(FindContainer("matroska").format, nullptr);
}

TEST(EncoderCatalogue, AMuxersDefaultCodecIsListedWhateverTheQuerySays) {
    ASSERT_TRUE(LoadFFmpeg());
    for (const auto& [name, entry] : GetContainerTable()) {
        const AVCodecID codec = entry.format->video_codec;
        const Labels labels(entry.labels.begin(), entry.labels.end());
        for (const std::string& label : LabelsOf(codec))
            EXPECT_TRUE(labels.contains(label)) << name << ": " << label;
    }
}

TEST(EncoderCatalogue, AContainerListsExactlyTheCodecsThatItHolds) {
    ASSERT_TRUE(LoadFFmpeg());
    for (const auto& [name, entry] : GetContainerTable()) {
        EXPECT_FALSE(entry.labels.empty()) << name;
        for (const auto& [label, encoder] : GetEncoderTable()) {
            const auto codec = static_cast<AVCodecID>(encoder.codecId);
            const bool holds = codec == entry.format->video_codec ||
                               FFmpeg().avformat_query_codec(entry.format, codec, 1) == 1;
            EXPECT_EQ(std::count(entry.labels.begin(), entry.labels.end(), label), holds ? 1 : 0)
                << name << ": " << label;
        }
    }
}

TEST(EncoderCatalogue, TheGifContainerHoldsOneEncoder) {
    ASSERT_TRUE(LoadFFmpeg());
    EXPECT_EQ(GetEncoderLabels("CompuServe Graphics Interchange Format (GIF)"),
              (std::list<std::string>{"GIF"}));
}

TEST(EncoderCatalogue, UnknownNamesGiveEmptyEntries) {
    EXPECT_EQ(FindContainer("no such container").format, nullptr);
    EXPECT_TRUE(FindContainer("no such container").labels.empty());
    EXPECT_EQ(FindEncoder("no such encoder").codecId, 0);
    EXPECT_TRUE(GetEncoderLabels("no such container").empty());
}

TEST(EncoderCatalogue, TheNamesAreTheKeysOfTheTable) {
    const std::list<std::string> names = GetContainerNames();
    EXPECT_EQ(names.size(), GetContainerTable().size());
    for (const std::string& name : names)
        EXPECT_TRUE(GetContainerTable().contains(name)) << name;
}

/// Empties a table, and sees that it comes back whole however often memory ran out on the way.
template <typename Table>
void ExpectBuiltAnew(const Table& (*get)()) {
    // The object behind the reference is not constant: its first use has filled it.
    auto& table = const_cast<Table&>(get());
    const Table whole = std::exchange(table, Table());
    for (const int allocations : {0, 1, 7, 20}) {
        bool isOut = false;
        try {
            const HeapSpy spy(allocations);
            get();
        } catch (const std::bad_alloc&) {
            isOut = true;
        }
        EXPECT_TRUE(isOut) << allocations;
    }
    EXPECT_EQ(get().size(), whole.size());
    for (const auto& [name, entry] : whole)
        EXPECT_TRUE(get().contains(name)) << name;
}

TEST(EncoderCatalogue, ATableThatFindsTooLittleMemoryIsBuiltAnewByTheNextCall) {
    ASSERT_TRUE(LoadFFmpeg());
    ExpectBuiltAnew(GetEncoderTable);
    ExpectBuiltAnew(GetContainerTable);
}

TEST(EncoderOptions, ThePairBehindTheLastSeparatorIsLost) {
    EXPECT_EQ(ParseEncoderOptions("preset=slow,crf=18"), (Options{{"preset", "slow"}}));
    EXPECT_EQ(ParseEncoderOptions("preset=slow,crf=18,"), (Options{{"preset", "slow"}, {"crf", "18"}}));
    EXPECT_EQ(ParseEncoderOptions("a=1"), Options());
    EXPECT_EQ(ParseEncoderOptions(""), Options());
}

TEST(EncoderOptions, RunsOfSeparatorsCountAsOne) {
    EXPECT_EQ(ParseEncoderOptions("a=1;;b=2\n"), (Options{{"a", "1"}, {"b", "2"}}));
    EXPECT_EQ(ParseEncoderOptions(";|:,\na=1,:|;\n,b=2;"), (Options{{"a", "1"}, {"b", "2"}}));
}

TEST(EncoderOptions, AnEmptyKeyIsAPair) { EXPECT_EQ(ParseEncoderOptions("=x;"), (Options{{"", "x"}})); }

TEST(EncoderOptions, ASegmentWithoutAnEqualsSignIsSkipped) {
    EXPECT_EQ(ParseEncoderOptions("novalue;"), Options());
    EXPECT_EQ(ParseEncoderOptions("novalue;a=1;"), (Options{{"a", "1"}}));
}

TEST(EncoderOptions, TheFirstEqualsSignSplitsKeyAndValue) {
    EXPECT_EQ(ParseEncoderOptions("a=b=c;"), (Options{{"a", "b=c"}}));
    EXPECT_EQ(ParseEncoderOptions("a=;"), (Options{{"a", ""}}));
}

TEST(EncoderOptions, AColonInAValueEndsIt) {
    EXPECT_EQ(ParseEncoderOptions("x=1:2;"), (Options{{"x", "1"}}));
    EXPECT_EQ(ParseEncoderOptions("path=C:/a;b=2;"), (Options{{"path", "C"}, {"b", "2"}}));
}

TEST(EncoderOptions, ATextOfSeparatorsHasNoPairs) {
    EXPECT_EQ(ParseEncoderOptions(std::string(10000, ',')), Options());
}

} // namespace
