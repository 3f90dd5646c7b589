#include "ffmpeg/FFmpegBinding.h"

#include "ffmpeg/FunctionRows.h"
#include "ffmpeg/StandIns.h"
#include "support/HeapSpy.h"

#include <gtest/gtest.h>

#include <new>

namespace {

/// What an attempt to bind the stand-ins gave.
struct Attempt {
    bool bound;
    std::string out;
    std::string err;

    /// Nothing bound and nothing said.
    bool FailedSilently() const { return !bound && out.empty() && err.empty(); }
};

Attempt Bind(const std::string& directory, FFmpegBinding& binding) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Attempt attempt = {binding.BindFFmpegFunctions(directory), "", ""};
    std::fflush(stdout);
    attempt.out = testing::internal::GetCapturedStdout();
    attempt.err = testing::internal::GetCapturedStderr();
    return attempt;
}

Attempt Bind(const std::string& directory) {
    FFmpegBinding binding;
    return Bind(directory, binding);
}

/// Whether an attempt with memory for so many allocations ends by an exception.
bool Throws(const std::string& directory, FFmpegBinding& binding, int allocations) {
    try {
        const HeapSpy spy(allocations);
        binding.BindFFmpegFunctions(directory);
        return false;
    } catch (const std::bad_alloc&) {
        return true;
    }
}

/// File that an address was loaded from.
std::string FileOf(void* address) {
    Dl_info info = {};
    return dladdr(address, &info) != 0 ? info.dli_fname : "";
}

/// Addresses of the functions, in the order of the table.
std::vector<void*> Addresses(const FFmpegFunctions& functions) {
#define LIST_ADDRESS(library, name, first, last)                                                             \
    CORVEX_FFMPEG_IN(first, last, reinterpret_cast<void*>(functions.name), )
    return {CORVEX_FFMPEG_FUNCTIONS(LIST_ADDRESS)};
#undef LIST_ADDRESS
}

TEST(FFmpegBinding, AWholeSetBindsAndSaysItsVersion) {
    const StandIns libraries;
    const ReportedVersion version(59, 37, 100);
    const Attempt attempt = Bind(libraries.Directory());
    EXPECT_TRUE(attempt.bound);
    EXPECT_EQ(attempt.out, "FFmpeg AVCodec Ver: 59.37.100\n");
    EXPECT_EQ(attempt.err, "");
    EXPECT_EQ(libraries.LoadedCount(), 5);
}

TEST(FFmpegBinding, EveryFunctionComesFromItsOwnLibrary) {
    const StandIns libraries;
    FFmpegBinding binding;
    ASSERT_TRUE(Bind(libraries.Directory(), binding).bound);
    const std::vector<FunctionRow> rows = FunctionRowsOf(LIBAVCODEC_VERSION_MAJOR);
    const std::vector<void*> addresses = Addresses(binding.Functions());
    ASSERT_EQ(addresses.size(), rows.size());
    for (size_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ(FileOf(addresses[i]), libraries.Path(rows[i].library)) << rows[i].name;
}

TEST(FFmpegBinding, Version58Point0Point0Passes) {
    const StandIns libraries;
    const ReportedVersion version(58, 0, 0);
    const Attempt attempt = Bind(libraries.Directory());
    EXPECT_TRUE(attempt.bound);
    EXPECT_EQ(attempt.out, "FFmpeg AVCodec Ver: 58.0.0\n");
}

TEST(FFmpegBinding, AnyHigherMajorPasses) {
    for (const unsigned major : {59u, 60u, 61u, 300u, 0x7fffu}) {
        const StandIns libraries;
        const ReportedVersion version(major, 1, 2);
        const Attempt attempt = Bind(libraries.Directory());
        EXPECT_TRUE(attempt.bound) << major;
        EXPECT_EQ(attempt.out, "FFmpeg AVCodec Ver: " + std::to_string(major) + ".1.2\n");
    }
}

TEST(FFmpegBinding, Major57IsRefusedWhateverTheMinor) {
    for (const unsigned minor : {0u, 64u, 255u}) {
        const StandIns libraries;
        const ReportedVersion version(57, minor, 255);
        const Attempt attempt = Bind(libraries.Directory());
        EXPECT_FALSE(attempt.bound);
        EXPECT_EQ(attempt.out, "");
        EXPECT_EQ(attempt.err,
                  "Ignoring unsupported FFmpeg AVCodec Ver: 57." + std::to_string(minor) + ".255\n");
        EXPECT_EQ(libraries.LoadedCount(), 0);
    }
}

TEST(FFmpegBinding, AVersionWithTheHighestBitSetIsNegativeAndRefused) {
    const StandIns libraries;
    const ReportedVersion version(0x80000102u);
    const Attempt attempt = Bind(libraries.Directory());
    EXPECT_FALSE(attempt.bound);
    EXPECT_EQ(attempt.err, "Ignoring unsupported FFmpeg AVCodec Ver: -32768.1.2\n");
}

TEST(FFmpegBinding, WithoutSwresampleTheFailureComesAtSwrAllocAndAllAreUnloaded) {
    const StandIns libraries;
    libraries.Remove(FFmpegLibrary::swresample);
    FFmpegBinding binding;
    EXPECT_TRUE(Bind(libraries.Directory(), binding).FailedSilently());
    EXPECT_NE(binding.Functions().sws_scale, nullptr);
    EXPECT_EQ(binding.Functions().swr_alloc, nullptr);
    EXPECT_EQ(libraries.LoadedCount(), 0);
}

TEST(FFmpegBinding, WithoutAvcodecTheOthersStayLoaded) {
    const StandIns libraries;
    libraries.Remove(FFmpegLibrary::avcodec);
    FFmpegBinding binding;
    EXPECT_TRUE(Bind(libraries.Directory(), binding).FailedSilently());
    EXPECT_EQ(binding.Functions().avformat_open_input, nullptr);
    EXPECT_EQ(libraries.LoadedCount(), 4);
}

TEST(FFmpegBinding, WithoutAvformatAvutilOrSwscaleTheOthersStayLoaded) {
    for (const auto library : {FFmpegLibrary::avformat, FFmpegLibrary::avutil, FFmpegLibrary::swscale}) {
        const StandIns libraries;
        libraries.Remove(library);
        EXPECT_TRUE(Bind(libraries.Directory()).FailedSilently()) << FFmpegFileName(library);
        EXPECT_EQ(libraries.LoadedCount(), 4) << FFmpegFileName(library);
    }
}

TEST(FFmpegBinding, AnyMissingFunctionFailsSilentlyAndUnloadsAll) {
    const std::vector<FunctionRow> rows = FunctionRowsOf(LIBAVCODEC_VERSION_MAJOR);
    for (size_t i = 0; i < rows.size(); ++i) {
        const StandIns libraries;
        ASSERT_TRUE(libraries.RemoveFunction(rows[i].library, rows[i].name)) << rows[i].name;
        FFmpegBinding binding;
        EXPECT_TRUE(Bind(libraries.Directory(), binding).FailedSilently()) << rows[i].name;
        EXPECT_EQ(libraries.LoadedCount(), 0) << rows[i].name;
        const std::vector<void*> addresses = Addresses(binding.Functions());
        const auto missing = addresses.begin() + static_cast<ptrdiff_t>(i);
        EXPECT_EQ(std::count(addresses.begin(), missing, nullptr), 0) << rows[i].name;
        EXPECT_EQ(std::count(missing, addresses.end(), nullptr), addresses.end() - missing) << rows[i].name;
    }
}

TEST(FFmpegBinding, WhatAnAttemptLoadedBeforeItsExceptionIsUnloadedByTheNext) {
    const StandIns libraries;
    const ReportedVersion version(57, 0, 0);
    const std::string directory = libraries.Directory();
    FFmpegBinding binding;
    int allocations = 0;
    testing::internal::CaptureStderr();
    while (Throws(directory, binding, allocations))
        ++allocations;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Ignoring unsupported FFmpeg AVCodec Ver: 57.0.0\n");
    EXPECT_GT(allocations, 5);
    EXPECT_EQ(libraries.LoadedCount(), 0);
}

TEST(FFmpegBinding, ADirectoryWithoutTheLibrariesFailsSilently) {
    const Workspace nothing;
    EXPECT_TRUE(Bind(nothing.Path("")).FailedSilently());
    EXPECT_TRUE(Bind("/no/such/directory/").FailedSilently());
}

TEST(FFmpegBinding, FilesThatAreNoLibrariesFailSilently) {
    const StandIns libraries;
    for (const FFmpegLibrary library : allFFmpegLibraries)
        std::ofstream(libraries.Path(library)) << "no library";
    EXPECT_TRUE(Bind(libraries.Directory()).FailedSilently());
    EXPECT_EQ(libraries.LoadedCount(), 0);
}

} // namespace
