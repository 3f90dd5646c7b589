#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// A folder of its own for the files of one test, removed with this object.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    /// Path of a file in the folder.
    std::string operator/(const std::string& name) const { return (folder / name).string(); }
    /// Number of files in the folder.
    size_t FileCount() const;

private:
    std::filesystem::path folder;
};

/// Output of a shell command; throws `std::runtime_error` if it fails.
std::string RunCommand(const std::string& command);

/// Runs `ffmpeg` with these arguments; the last one is the output file.
void RunFfmpeg(const std::string& arguments);

/// Rows of `ffprobe` for the video track, split at the commas.
std::vector<std::vector<std::string>> Probe(const std::string& path, const std::string& entries);
/// The one value of `ffprobe` for one entry, such as "stream=codec_tag_string".
std::string ProbeValue(const std::string& path, const std::string& entry);

std::vector<uint8_t> ReadBytes(const std::string& path);
void WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes);
/// Bytes that `ffmpeg` writes for the video track with these output arguments and no container.
std::vector<uint8_t> FfmpegBytes(const std::string& path, const std::string& arguments);

/// Arguments of a moving test picture as ffmpeg's input.
std::string TestPicture(int width, int height, const std::string& rate, int frames);
