#pragma once

#include "host/CxID.h"
#include "host/Object.h"

/// A control of a tool.
class CORVEX_HOST_API Input : public RefObject {
public:
    /// Id that the control holds at `time`, in frames: of a combo control the chosen entry's. The empty id
    /// for a control that holds none, which is the default.
    virtual CxID GetID(double time) const;
};
