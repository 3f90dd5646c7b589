#include "report/Report.h"

#include <cstdio>

namespace {

constexpr const char* kProgram = "corvexvf: ";

/// Text on one line, whatever a library put into its message.
std::string OneLine(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' '))
        text.pop_back();
    for (char& c : text) {
        if (c == '\n' || c == '\r') c = ' ';
    }
    return text;
}

std::string JsonText(const Report& report, const std::optional<ToolError>& failure) {
    nlohmann::ordered_json object;
    object["ok"] = !failure;
    object["errors"] = nlohmann::ordered_json::array();
    if (failure) object["errors"].push_back(OneLine(failure->what()));
    object["warnings"] = report.warnings;
    object["result"] = failure ? nlohmann::ordered_json() : report.result;
    // File names and metadata need not be UTF-8.
    return object.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

bool PrintAll(const std::string& text) {
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    return std::fflush(stdout) == 0 && written;
}

int Status(const std::optional<ToolError>& failure) {
    return static_cast<int>(failure ? failure->status() : ExitStatus::Done);
}

} // namespace

int Publish(const Report& report, bool asJson, const std::optional<ToolError>& failure) {
    for (const std::string& warning : report.warnings)
        std::fprintf(stderr, "%swarning: %s\n", kProgram, OneLine(warning).c_str());
    if (failure) std::fprintf(stderr, "%s%s\n", kProgram, OneLine(failure->what()).c_str());
    const std::string text = asJson ? JsonText(report, failure) : failure ? std::string() : report.text;
    if (!PrintAll(text) && !failure) {
        std::fprintf(stderr, "%sstandard output: cannot write\n", kProgram);
        return static_cast<int>(ExitStatus::CannotWrite);
    }
    return Status(failure);
}
