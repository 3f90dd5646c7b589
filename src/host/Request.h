#pragma once

#include "host/Export.h"

#include <cstdint>

class Input;
class Parameter;

/// A render of a tool, for which the values of its controls are read. One thread at a time; no control
/// changes meanwhile.
class CORVEX_HOST_API Request {
public:
    /// A render at `time`, in frames.
    explicit Request(double time) : time_(time) {}

    /// Value of a control at the time of the render, or null if `input` is null or holds none. The control
    /// owns the value and keeps it until another one is set. The second argument is the host's and is always
    /// 0.
    Parameter* GetInputData(const Input* input, int32_t) const;

private:
    double time_;
};
