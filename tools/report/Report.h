#pragma once

#include "media/ToolError.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

/// What a command found: the same for programs and for people.
struct Report {
    nlohmann::ordered_json result = nlohmann::ordered_json::object();
    std::string text; ///< lines, each with its end
    std::vector<std::string> warnings;
};

/// Says how a call ended: the result on standard output, as text or as one JSON object with `ok`, `errors`,
/// `warnings` and `result`, which is null after a failure; the failure and the warnings on standard error, a
/// line each.
///
/// @param failure  what ended the job; none if it is done
/// @return exit status of the process; also `CannotWrite` if standard output takes no more
int Publish(const Report& report, bool asJson, const std::optional<ToolError>& failure);
