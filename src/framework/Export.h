#pragma once

/// Marks a symbol as part of the module's exported interface; everything else stays hidden.
#define CORVEX_API __attribute__((visibility("default")))
