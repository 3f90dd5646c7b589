#pragma once

#include <cstdint>
#include <string>

enum class ProgressStyle {
    Bar,  ///< a bar if standard error is a terminal, else nothing
    Json, ///< one JSON line per step
};

/// Shows on standard error how far a job is. One thread at a time.
class Progress {
public:
    /// @param work   what is being done, e.g. "decode"
    /// @param total  steps until the job is done
    Progress(std::string work, int64_t total, ProgressStyle style);
    /// Ends the line of the bar.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Step();

private:
    void DrawBar() const;
    void PrintJson() const;

    std::string work_;
    int64_t total_;
    int64_t done_ = 0;
    ProgressStyle style_;
    bool terminal_;
};
