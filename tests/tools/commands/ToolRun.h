#pragma once

#include "tools/Workspace.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

/// Runs the command with these arguments in the workspace.
inline ProgramRun RunTool(const Workspace& workspace, const std::string& arguments) {
    return workspace.Shell(std::string("'" CORVEXVF_PROGRAM "' ").append(arguments));
}

/// Runs a line that the test stands on, such as one of ffmpeg.
inline void Prepare(const Workspace& workspace, const std::string& line) {
    const ProgramRun run = workspace.Shell(line);
    ASSERT_EQ(run.status, 0) << line << "\n" << run.err;
}

/// Makes a small movie with ffmpeg's test picture.
inline void MakeMovie(const Workspace& workspace, const std::string& name,
                      const std::string& codec = "-c:v r210", int frames = 3,
                      const std::string& size = "64x48") {
    const std::string source = std::string("ffmpeg -v error -f lavfi -i testsrc2=rate=25:size=").append(size);
    const std::string count = std::string(" -frames:v ").append(std::to_string(frames)).append(" ");
    Prepare(workspace, source + count + codec + " " + name);
}

/// Makes numbered PNG images of ffmpeg's test picture.
inline void MakeImages(const Workspace& workspace, const std::string& pattern, int first, int frames,
                       const std::string& size = "64x48") {
    const std::string number = std::string("-start_number ").append(std::to_string(first));
    MakeMovie(workspace, pattern, number + " -pix_fmt rgb24", frames, size);
}

/// Expects a failure: its exit status, one line of words that names `subject`, and nothing on standard
/// output.
inline void ExpectFailure(const ProgramRun& run, int status, const std::string& subject) {
    EXPECT_EQ(run.status, status) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_EQ(run.err.find("corvexvf: "), 0U) << run.err;
    EXPECT_NE(run.err.find(subject), std::string::npos) << run.err;
}

/// Expects that no file that was being written is left.
inline void ExpectNoPartFiles(const Workspace& workspace) {
    EXPECT_EQ(workspace.Shell("find . -name '*.part' | grep . ").out, "");
}
