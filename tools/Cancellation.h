#pragma once

#include <string>

/// Makes SIGINT and SIGTERM cancel the running job at its next step instead of ending the process, and a
/// write beyond a file size limit or into a closed pipe an ordinary error.
void CatchSignals();

/// @param file  what the job works on
/// @throw ToolError  `Cancelled` once a signal has come
void ThrowIfCancelled(const std::string& file);
