#pragma once

#include "host/TagList.h"

#include <cstdint>

/// Watches what a format class asks of its base, which the test program stands before: every load of a frame
/// goes through here on its way to the host.
struct BaseFormatSpy {
    static TagList tags;    ///< of the last load
    static uint32_t frame;  ///< of the last load
    static bool isRefusing; ///< the base answers no load
};
