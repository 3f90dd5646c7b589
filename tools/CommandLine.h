#pragma once

#include "report/Report.h"

#include <functional>

/// A call of the command, read from its command line.
class CommandLine {
public:
    /// Reads the arguments. Also after a failure `WantsJson` tells how the call wants its answer.
    /// @throw ToolError  `Usage`
    void Parse(int argc, char** argv);

    /// Runs the command that was asked for, or gives the help that was asked for.
    /// @throw ToolError
    void Run(Report& report) const { run_(report); }

    bool WantsJson() const { return json_; }

private:
    bool json_ = false;
    std::function<void(Report&)> run_;
};
