#include "MediaFiles.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    std::string pattern = (fs::temp_directory_path() / "corvex-media-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    folder = pattern;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

size_t TempFolder::FileCount() const {
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

std::string RunCommand(const std::string& command) {
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) throw std::runtime_error(command);
    std::string output;
    std::array<char, 4096> buffer{};
    while (const size_t count = fread(buffer.data(), 1, buffer.size(), pipe))
        output.append(buffer.data(), count);
    if (pclose(pipe) != 0) throw std::runtime_error(command);
    return output;
}

void RunFfmpeg(const std::string& arguments) { RunCommand("ffmpeg -nostdin -v error -y " + arguments); }

std::vector<std::vector<std::string>> Probe(const std::string& path, const std::string& entries) {
    std::istringstream lines(RunCommand("ffprobe -v error -select_streams v:0 -of csv=p=0 -show_entries " +
                                        entries + " '" + path + "'"));
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(lines, line);) {
        if (line.empty()) continue;
        std::istringstream fields(line);
        rows.emplace_back();
        for (std::string field; std::getline(fields, field, ',');)
            rows.back().push_back(field);
    }
    return rows;
}

std::string ProbeValue(const std::string& path, const std::string& entry) {
    const auto rows = Probe(path, entry);
    return rows.empty() || rows.front().empty() ? "" : rows.front().front();
}

std::vector<uint8_t> ReadBytes(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::ofstream stream(path, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

std::vector<uint8_t> FfmpegBytes(const std::string& path, const std::string& arguments) {
    const std::string output = path + ".bytes";
    RunFfmpeg("-i '" + path + "' -map 0:v:0 -vsync passthrough " + arguments + " -f rawvideo '" + output +
              "'");
    std::vector<uint8_t> bytes = ReadBytes(output);
    fs::remove(output);
    return bytes;
}

std::string TestPicture(int width, int height, const std::string& rate, int frames) {
    return "-f lavfi -i 'testsrc=s=" + std::to_string(width) + "x" + std::to_string(height) + ":r=" + rate +
           "' -frames:v " + std::to_string(frames);
}
