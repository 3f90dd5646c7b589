#pragma once

#include "ffmpeg/FFmpegFunctionTable.h"
#include "ffmpeg/FFmpegSearch.h"

#include <limits>
#include <string>
#include <vector>

/// One row of the table of functions, as data.
struct FunctionRow {
    FFmpegLibrary library;
    std::string libraryName;
    std::string name;
    int first; ///< majors of libavcodec
    int last;

    static constexpr int later = std::numeric_limits<int>::max();
    bool IsIn(int major) const { return major >= first && major <= last; }
};

/// The rows of all majors, in their order.
inline std::vector<FunctionRow> FunctionRows() {
    constexpr int later = FunctionRow::later;
#define LIST_ROW(library, name, first, last) {FFmpegLibrary::library, #library, #name, first, last},
    return {CORVEX_FFMPEG_FUNCTIONS(LIST_ROW)};
#undef LIST_ROW
}

/// The rows that are demanded of a major.
inline std::vector<FunctionRow> FunctionRowsOf(int major) {
    std::vector<FunctionRow> rows = FunctionRows();
    std::erase_if(rows, [major](const FunctionRow& row) { return !row.IsIn(major); });
    return rows;
}
