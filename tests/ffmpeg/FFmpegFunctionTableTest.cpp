#include "ffmpeg/FunctionRows.h"

#include "ffmpeg/FFmpegFunctions.h"
#include "host/Platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

namespace {

/// What the oldest FFmpeg that is accepted has, in the order in which it is looked for.
const char oldestNames[] =
    "av_register_all avformat_open_input avformat_find_stream_info av_find_best_stream "
    "avformat_free_context avformat_close_input av_seek_frame av_read_frame avformat_flush "
    "avformat_seek_file av_stream_get_r_frame_rate av_oformat_next avio_closep av_guess_format "
    "avformat_alloc_output_context2 avio_open av_interleaved_write_frame av_write_trailer "
    "avformat_new_stream avformat_write_header av_write_frame avio_flush avformat_query_codec av_free "
    "av_freep av_mallocz av_frame_alloc av_frame_free av_frame_clone av_image_alloc "
    "av_frame_get_best_effort_timestamp av_dict_set av_dict_free av_pix_fmt_desc_get av_dict_set_int "
    "av_malloc av_opt_set av_get_default_channel_layout av_log_set_callback av_frame_get_channels "
    "av_opt_set_int av_rescale_rnd av_get_bytes_per_sample avcodec_register_all avcodec_flush_buffers "
    "avcodec_alloc_context3 avcodec_find_decoder avcodec_find_encoder avcodec_open2 "
    "avcodec_free_context avcodec_close avcodec_decode_video2 av_init_packet avcodec_get_name "
    "av_packet_unref avcodec_version avcodec_is_open av_packet_rescale_ts avcodec_encode_video2 "
    "avcodec_parameters_from_context avcodec_parameters_to_context av_get_bits_per_sample "
    "avcodec_send_packet avcodec_receive_frame sws_freeContext sws_getCachedContext sws_scale swr_alloc "
    "swr_init swr_is_initialized swr_alloc_set_opts swr_free swr_close swr_convert swr_get_out_samples "
    "swr_convert_frame ";

/// What later majors have in place of others, and the module calls in every major.
const std::set<std::string> successors = {"av_muxer_iterate", "av_packet_alloc", "av_packet_free",
                                          "avcodec_send_frame", "avcodec_receive_packet"};

/// What tells a scaler the colours of a frame.
const std::set<std::string> scalerColors = {"sws_getCoefficients", "sws_setColorspaceDetails"};

bool IsAddition(const std::string& name) { return successors.contains(name) || scalerColors.contains(name); }

using Names = std::vector<std::string>;

Names NamesOf(int major) {
    Names names;
    for (const FunctionRow& row : FunctionRowsOf(major))
        names.push_back(row.name);
    return names;
}

Names OldestNames() {
    std::istringstream text(oldestNames);
    return {std::istream_iterator<std::string>(text), {}};
}

std::string MajorsOf(const FunctionRow& row) {
    const std::string first = std::to_string(row.first);
    if (row.last == FunctionRow::later) return first + " on";
    return row.first == row.last ? first : first + " to " + std::to_string(row.last);
}

/// Handles of the installed libraries, by their number. They stay loaded: what these need in turn doesn't all
/// clean up when it is unloaded.
std::array<Platform::Library*, allFFmpegLibraries.size()> InstalledLibraries() {
    std::array<Platform::Library*, allFFmpegLibraries.size()> handles = {};
    for (const FFmpegLibrary library : allFFmpegLibraries)
        handles[static_cast<size_t>(library)] = Platform::LoadLib(FFmpegFileName(library), 0, nullptr);
    return handles;
}

TEST(FFmpegFunctionTable, Major58HasThe76NamesInTheirOrderAndTheAdditions) {
    Names names = NamesOf(58);
    const size_t erased = std::erase_if(names, IsAddition);
    EXPECT_EQ(erased, successors.size() + scalerColors.size());
    EXPECT_EQ(names.size(), 76u);
    EXPECT_EQ(names, OldestNames());
}

TEST(FFmpegFunctionTable, LaterMajorsLackWhatFFmpegTookAway) {
    EXPECT_EQ(NamesOf(59).size(), 76u);
    EXPECT_EQ(NamesOf(60), NamesOf(59));
    EXPECT_EQ(NamesOf(61).size(), 74u);
    EXPECT_EQ(NamesOf(62).size(), 73u);
    EXPECT_EQ(NamesOf(63).size(), 72u);
}

TEST(FFmpegFunctionTable, EveryMajorHasTheAdditions) {
    for (const int major : {58, 59, 60, 61, 62, 63}) {
        const Names names = NamesOf(major);
        const auto additions = std::count_if(names.begin(), names.end(), IsAddition);
        EXPECT_EQ(additions, static_cast<ptrdiff_t>(successors.size() + scalerColors.size())) << major;
    }
}

TEST(FFmpegFunctionTable, NoNameStandsTwice) {
    std::set<std::string> names;
    for (const FunctionRow& row : FunctionRows())
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
}

TEST(FFmpegFunctionTable, ThereIsAPointerForEachFunctionOfTheMajor) {
    EXPECT_EQ(sizeof(FFmpegFunctions) / sizeof(void*), FunctionRowsOf(LIBAVCODEC_VERSION_MAJOR).size());
}

TEST(FFmpegFunctionTable, TheInstalledLibrariesHaveExactlyTheFunctionsOfTheirMajor) {
    const auto libraries = InstalledLibraries();
    for (const FunctionRow& row : FunctionRows()) {
        Platform::Library* const library = libraries[static_cast<size_t>(row.library)];
        ASSERT_NE(library, nullptr) << row.libraryName;
        EXPECT_EQ(Platform::GetFuncAddress(library, row.name.c_str()) != nullptr,
                  row.IsIn(LIBAVCODEC_VERSION_MAJOR))
            << row.name;
    }
}

TEST(FFmpegFunctionTable, TheDocumentHasTheSameRows) {
    Names expected;
    for (const FunctionRow& row : FunctionRows())
        expected.push_back("| `" + row.name + "` | " + row.libraryName + " | " + MajorsOf(row) + " |");
    Names documented;
    std::ifstream document(CORVEX_SOURCE_DIR "/docs/ffmpeg-binding.md");
    bool isTable = false;
    for (std::string line; std::getline(document, line);
         isTable = isTable || line == "| function | library | majors |")
        if (isTable && line.starts_with("| `")) documented.push_back(line);
    EXPECT_EQ(documented, expected);
}

} // namespace
