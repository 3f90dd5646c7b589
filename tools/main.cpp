// The command: reads the command line, runs one of the commands and says how it ended.

#include "Cancellation.h"
#include "CommandLine.h"
#include "QuietLoading.h"

#include <cstdio>
#include <new>

namespace {

int RunCall(int argc, char** argv) {
    Report report;
    std::optional<ToolError> failure;
    CommandLine line;
    try {
        line.Parse(argc, argv);
        line.Run(report);
    } catch (const ToolError& error) {
        failure = error;
    } catch (const std::bad_alloc&) {
        failure = ToolError(ExitStatus::JobFailed, "memory", "not enough for this job");
    } catch (const std::exception& error) {
        failure = ToolError(ExitStatus::JobFailed, "internal error", error.what());
    }
    return Publish(report, line.WantsJson(), failure);
}

} // namespace

int main(int argc, char** argv) {
    EndQuietLoading();
    CatchSignals();
    try {
        return RunCall(argc, argv);
    } catch (...) {
        std::fputs("corvexvf: the result can't be told\n", stderr);
        return static_cast<int>(ExitStatus::JobFailed);
    }
}
