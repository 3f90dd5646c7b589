#include "report/Progress.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <unistd.h>
#include <utility>

namespace {

constexpr int64_t kBarWidth = 40; ///< characters

} // namespace

Progress::Progress(std::string work, int64_t total, ProgressStyle style)
    : work_(std::move(work)), total_(total), style_(style), terminal_(isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    if (style_ == ProgressStyle::Bar && terminal_ && done_ > 0) std::fputc('\n', stderr);
}

void Progress::Step() {
    ++done_;
    if (style_ == ProgressStyle::Json)
        PrintJson();
    else if (terminal_)
        DrawBar();
}

void Progress::DrawBar() const {
    const int64_t filled = total_ > 0 ? kBarWidth * done_ / total_ : kBarWidth;
    const std::string bar = std::string(static_cast<size_t>(filled), '=') +
                            std::string(static_cast<size_t>(kBarWidth - filled), ' ');
    std::fprintf(stderr, "\r%s [%s] %lld/%lld", work_.c_str(), bar.c_str(), static_cast<long long>(done_),
                 static_cast<long long>(total_));
}

void Progress::PrintJson() const {
    const nlohmann::ordered_json line = {{"progress", work_}, {"done", done_}, {"total", total_}};
    std::fprintf(stderr, "%s\n", line.dump().c_str());
}
