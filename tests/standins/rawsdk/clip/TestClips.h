#pragma once

#include "rawsdk/clip/ClipWriter.h"
#include "rawsdk/clip/FrameRecord.h"
#include "rawsdk/clip/StripCodec.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

/// A directory that is removed with its owner.
class TestFolder {
public:
    TestFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "clips-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
        path_ = pattern;
    }
    ~TestFolder() { std::filesystem::remove_all(path_); }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

inline rawsdk::ClipProperties TestClip(uint32_t width, uint32_t height) {
    rawsdk::ClipProperties properties;
    properties.width = width;
    properties.height = height;
    return properties;
}

/// Samples of a frame: another picture for each seed.
inline std::vector<uint16_t> TestSamples(uint32_t width, uint32_t height, uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<uint16_t> samples(size_t{width} * height);
    for (uint16_t& sample : samples)
        sample = random() & 0xFFF;
    return samples;
}

/// Writes frames with the samples of seeds 0, 1 and so on and ISO 100, 200 and so on.
inline void WriteTestClip(const std::string& path, const rawsdk::ClipProperties& properties, int frames) {
    rawsdk::ClipWriter writer(path, properties);
    for (int i = 0; i < frames; ++i) {
        rawsdk::FrameProperties frame;
        frame.settings.iso = static_cast<int16_t>(100 * (i + 1));
        frame.metadata = {{u"number", rawsdk::NumberValue(i)}};
        writer.Add(frame, TestSamples(properties.width, properties.height, static_cast<uint32_t>(i)));
    }
    writer.Finish();
}

/// Decompresses a frame.
inline std::vector<uint16_t> SamplesOf(const rawsdk::FrameRecord& record, uint32_t width, uint32_t height) {
    std::vector<uint16_t> samples(size_t{width} * height);
    std::span<uint16_t> rest = samples;
    for (uint32_t strip = 0; strip < rawsdk::StripsOf(height); ++strip) {
        const size_t count = size_t{rawsdk::RowsOfStrip(height, strip)} * width;
        rawsdk::DecompressStrip(record.strips[strip], rest.first(count), width);
        rest = rest.subspan(count);
    }
    return samples;
}

/// A table that changes nothing.
inline rawsdk::ColorTable TestTable(uint32_t size) {
    rawsdk::ColorTable table{size, {}};
    const float last = static_cast<float>(size - 1);
    for (uint32_t i = 0; i < size * size * size; ++i)
        table.colors.push_back({static_cast<float>(i % size) / last,
                                static_cast<float>(i / size % size) / last,
                                static_cast<float>(i / size / size) / last});
    return table;
}
