#include "rawsdk/clip/ColorTable.h"

#include "rawsdk/clip/Failure.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>

namespace rawsdk {

namespace {

bool IsSize(uint64_t size) { return size >= ColorTable::leastSize && size <= ColorTable::mostSize; }

float Limited(float value) { return std::isfinite(value) ? std::clamp(value, 0.0f, 1.0f) : 0; }

std::array<float, 3> ReadNumbers(std::istringstream& line) {
    std::array<float, 3> numbers{};
    line >> numbers[0] >> numbers[1] >> numbers[2];
    Require(!line.fail());
    return numbers;
}

std::array<float, 3> ReadColor(std::istringstream& line) {
    std::array<float, 3> color = ReadNumbers(line);
    std::ranges::transform(color, color.begin(), Limited);
    return color;
}

/// Reads a line that begins with a word.
void ReadWord(const std::string& word, std::istringstream& line, ColorTable& table) {
    if (word == "LUT_3D_SIZE") {
        uint32_t size = 0;
        line >> size;
        Require(!line.fail() && IsSize(size) && table.size == 0);
        table.size = size;
    } else if (word == "DOMAIN_MIN" || word == "DOMAIN_MAX") {
        const float limit = word == "DOMAIN_MAX" ? 1 : 0;
        Require(ReadNumbers(line) == std::array{limit, limit, limit});
    } else {
        Require(word == "TITLE");
    }
}

bool IsWord(char first) { return (first >= 'A' && first <= 'Z') || (first >= 'a' && first <= 'z'); }

uint64_t ColorsOf(const ColorTable& table) { return uint64_t{table.size} * table.size * table.size; }

} // namespace

std::array<uint16_t, 3> ColorTable::Apply(const std::array<uint16_t, 3>& codes) const {
    // The cell, and the place inside it along each axis with the step in the table that goes that way.
    struct Way {
        float place;
        size_t step;
    };
    std::array<Way, 3> ways{};
    size_t corner = 0;
    size_t step = 1;
    for (size_t axis = 0; axis < 3; ++axis) {
        const float position = codes[axis] * (static_cast<float>(size - 1) / 65535.0f);
        const size_t cell = std::min(static_cast<size_t>(position), size_t{size} - 2);
        ways[axis] = {position - static_cast<float>(cell), step};
        corner += cell * step;
        step *= size;
    }
    // From the near corner to the far one, along the longest way first.
    if (ways[0].place < ways[1].place) std::swap(ways[0], ways[1]);
    if (ways[1].place < ways[2].place) std::swap(ways[1], ways[2]);
    if (ways[0].place < ways[1].place) std::swap(ways[0], ways[1]);
    std::array<float, 3> color = colors[corner];
    for (const Way& way : ways) {
        const std::array<float, 3>& from = colors[corner];
        corner += way.step;
        for (size_t channel = 0; channel < 3; ++channel)
            color[channel] += (colors[corner][channel] - from[channel]) * way.place;
    }
    std::array<uint16_t, 3> result{};
    for (size_t channel = 0; channel < 3; ++channel)
        result[channel] = static_cast<uint16_t>(std::clamp(color[channel], 0.0f, 1.0f) * 65535.0f + 0.5f);
    return result;
}

ColorTable ReadColorTable(std::istream& text) {
    ColorTable table;
    for (std::string line; std::getline(text, line);) {
        std::istringstream words(line);
        if (!(words >> std::ws) || words.eof() || words.peek() == '#') continue;
        if (IsWord(static_cast<char>(words.peek()))) {
            std::string word;
            words >> word;
            ReadWord(word, words, table);
        } else {
            Require(table.colors.size() < ColorsOf(table));
            table.colors.push_back(ReadColor(words));
        }
    }
    Require(table.size != 0 && table.colors.size() == ColorsOf(table));
    return table;
}

void WriteColorTable(const ColorTable& table, ByteWriter& writer) {
    writer.Write(table.size);
    for (const std::array<float, 3>& color : table.colors)
        for (const float channel : color)
            writer.Write(channel);
}

ColorTable ReadColorTable(ByteReader& reader) {
    ColorTable table;
    table.size = reader.Read<uint32_t>();
    if (table.size == 0) return table;
    Require(IsSize(table.size) && reader.Left() / sizeof(float[3]) >= ColorsOf(table));
    table.colors.resize(ColorsOf(table));
    for (std::array<float, 3>& color : table.colors)
        for (float& channel : color)
            channel = Limited(reader.Read<float>());
    return table;
}

std::filesystem::path SidecarOf(std::filesystem::path clip) { return clip.replace_extension(".cube"); }

} // namespace rawsdk
