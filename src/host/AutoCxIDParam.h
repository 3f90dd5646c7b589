#pragma once

#include "host/CxID.h"
#include "host/Input.h"

/// An argument that is an identifier, given as such or as the control that holds it. A control is read when
/// the object is made, and not kept.
class AutoCxIDParam {
public:
    AutoCxIDParam(const CxID& id) : id_(id) {}
    /// The id of `input` at `time`, in frames; a null control gives the empty id.
    AutoCxIDParam(const Input* input, double time) : id_(input != nullptr ? input->GetID(time) : CxID()) {}

    operator CxID() const { return id_; }

private:
    CxID id_;
};
