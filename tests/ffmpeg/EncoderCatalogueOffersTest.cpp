// What is offered where FFmpeg lacks encoders, formats of pictures, or itself.

#include "ffmpeg/EncoderCatalogue.h"

#include "ffmpeg/FFmpegSpy.h"
#include "ffmpeg/StandIns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <set>
#include <utility>

namespace {

using namespace CxFFMPEG;

using Labels = std::set<std::string>;

/// Empties the tables, so that the next call builds them anew, and puts them back at the end of its life.
/// Made before functions are replaced.
class FreshTables {
public:
    // The objects behind the references are not constant: their first use has filled them.
    FreshTables()
        : containers_(const_cast<ContainerTable&>(GetContainerTable())),
          encoders_(const_cast<EncoderTable&>(GetEncoderTable())),
          keptContainers_(std::exchange(containers_, {})), keptEncoders_(std::exchange(encoders_, {})) {}
    ~FreshTables() {
        containers_ = std::move(keptContainers_);
        encoders_ = std::move(keptEncoders_);
    }
    FreshTables(const FreshTables&) = delete;
    FreshTables& operator=(const FreshTables&) = delete;

private:
    ContainerTable& containers_;
    EncoderTable& encoders_;
    ContainerTable keptContainers_;
    EncoderTable keptEncoders_;
};

Labels AllLabels() {
    Labels labels;
    for (const auto& [label, entry] : GetEncoderTable())
        labels.insert(label);
    return labels;
}

bool IsH264(const std::string& label) { return label.starts_with("H.264 ["); }

Labels LabelsOfH264() {
    Labels labels = AllLabels();
    std::erase_if(labels, [](const std::string& label) { return !IsH264(label); });
    return labels;
}

Labels LabelsIn(const std::string& container) {
    const std::list<std::string> labels = GetEncoderLabels(container);
    return {labels.begin(), labels.end()};
}

TEST(EncoderOffers, WithoutAnEncoderOfH264ItsRowsAloneAreMissing) {
    Labels others = AllLabels();
    ASSERT_GT(std::erase_if(others, IsH264), 0U);
    const FreshTables fresh;
    const ReplacedFunction find(&FFmpegFunctions::avcodec_find_encoder, [](AVCodecID id) {
        return id == AV_CODEC_ID_H264 ? nullptr : avcodec_find_encoder(id);
    });
    EXPECT_EQ(AllLabels(), others);
    const Labels matroska = LabelsIn("Matroska");
    EXPECT_TRUE(matroska.contains("HEVC"));
    EXPECT_EQ(std::count_if(matroska.begin(), matroska.end(), IsH264), 0);
    EXPECT_EQ(FindEncoder("H.264 [High]").codecId, 0);
}

/// Gives H.264 an encoder with other pixel formats.
const AVPixelFormat* otherFormats;
const AVCodec* FindOther(AVCodecID id) {
    static AVCodec other;
    const AVCodec* const encoder = avcodec_find_encoder(id);
    if (id != AV_CODEC_ID_H264) return encoder;
    other = *encoder;
    other.pix_fmts = otherFormats;
    return &other;
}

TEST(EncoderOffers, AnEncoderOfEightBitsAndHalvedChromaLosesTheOtherRows) {
    const FreshTables fresh;
    const ReplacedFunction find(&FFmpegFunctions::avcodec_find_encoder, FindOther);
    constexpr AVPixelFormat formats[] = {AV_PIX_FMT_NV12, AV_PIX_FMT_YUV420P, AV_PIX_FMT_NONE,
                                         AV_PIX_FMT_YUV444P};
    otherFormats = formats;
    EXPECT_EQ(LabelsOfH264(), (Labels{"H.264 [Baseline]", "H.264 [Main]", "H.264 [High]"}));
    EXPECT_TRUE(AllLabels().contains("HEVC [10Bit]"));
}

TEST(EncoderOffers, AnEncoderThatListsNoFormatsLosesAllRows) {
    const FreshTables fresh;
    const ReplacedFunction find(&FFmpegFunctions::avcodec_find_encoder, FindOther);
    otherFormats = nullptr;
    EXPECT_EQ(LabelsOfH264(), Labels());
    EXPECT_TRUE(AllLabels().contains("HEVC"));
}

TEST(EncoderOffers, OnlyAMuxersDefaultCodecIsListedWhateverTheQuerySays) {
    static int answer;
    for (const int said : {0, -1, AVERROR_PATCHWELCOME, 2}) {
        const FreshTables fresh;
        const ReplacedFunction query(&FFmpegFunctions::avformat_query_codec,
                                     [](const AVOutputFormat*, AVCodecID, int) { return answer; });
        answer = said;
        EXPECT_EQ(LabelsIn("Matroska"), LabelsOfH264()) << said;
        for (const auto& [name, entry] : GetContainerTable())
            for (const std::string& label : entry.labels)
                EXPECT_EQ(FindEncoder(label).codecId, entry.format->video_codec) << name << ": " << label;
    }
}

TEST(EncoderOffers, ACodecThatTheQueryGrantsIsListed) {
    const FreshTables fresh;
    const ReplacedFunction query(&FFmpegFunctions::avformat_query_codec,
                                 [](const AVOutputFormat*, AVCodecID, int) { return 1; });
    for (const auto& [name, entry] : GetContainerTable())
        EXPECT_EQ(LabelsIn(name), AllLabels()) << name;
}

/// The muxers that FFmpeg has: two that hold what a Matroska holds.
AVOutputFormat muxers[2];
const AVOutputFormat* NextMuxer(void** position) {
    const auto index = reinterpret_cast<uintptr_t>(*position);
    if (index == std::size(muxers)) return nullptr;
    *position = reinterpret_cast<void*>(index + 1);
    return &muxers[index];
}

void NameMuxers(const char* firstLongName, const char* secondLongName) {
    muxers[0] = muxers[1] = *FindContainer("Matroska").format;
    muxers[0].long_name = firstLongName;
    muxers[1].long_name = secondLongName;
}

TEST(EncoderOffers, AMuxerWithoutALongNameGoesByItsShortOne) {
    NameMuxers(nullptr, "Another");
    const FreshTables fresh;
    const ReplacedFunction iterate(&FFmpegFunctions::av_muxer_iterate, NextMuxer);
    EXPECT_EQ(GetContainerTable().size(), 2U);
    EXPECT_EQ(FindContainer("matroska").format, &muxers[0]);
    EXPECT_EQ(FindContainer("Another").format, &muxers[1]);
}

TEST(EncoderOffers, ALaterMuxerReplacesAnEarlierOneOfTheSameName) {
    NameMuxers("Twin", "Twin");
    muxers[0].video_codec = AV_CODEC_ID_GIF;
    const FreshTables fresh;
    const ReplacedFunction iterate(&FFmpegFunctions::av_muxer_iterate, NextMuxer);
    EXPECT_EQ(GetContainerNames(), std::list<std::string>({"Twin"}));
    EXPECT_EQ(FindContainer("Twin").format, &muxers[1]);
    EXPECT_FALSE(LabelsIn("Twin").contains("GIF")) << "the labels are the later one's too";
}

TEST(EncoderOffers, AMuxerWithoutALabelReplacesNone) {
    NameMuxers("Twin", "Twin");
    muxers[1] = *av_guess_format("wav", nullptr, nullptr);
    muxers[1].long_name = "Twin";
    const FreshTables fresh;
    const ReplacedFunction iterate(&FFmpegFunctions::av_muxer_iterate, NextMuxer);
    EXPECT_EQ(FindContainer("Twin").format, &muxers[0]);
}

/// Whether a process without FFmpeg finds the table of profiles and nothing else.
bool OffersNothing() {
    return !LoadFFmpeg() && GetProfileTable().size() == 6 && GetEncoderTable().empty() &&
           GetContainerTable().empty() && GetContainerNames().empty() &&
           GetEncoderLabels("Matroska").empty() && FindContainer("Matroska").format == nullptr &&
           FindEncoder("MPEG4").codecId == 0;
}

TEST(EncoderOffersDeathTest, WithoutFFmpegAllListsAreEmptyAndNobodyIsTold) {
    // In this style the process that exits is the program begun anew, which binds what the environment names.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const EnvironmentVariable nowhere("CORVEX_FFMPEG_DIR", "/no/such/directory");
    EXPECT_EXIT(std::exit(OffersNothing() ? 0 : 1), testing::ExitedWithCode(0), "^$");
}

} // namespace
