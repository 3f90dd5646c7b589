#pragma once

/// Marks a symbol of the host libraries `corvexsystem` and `corvexscript` as visible to other modules.
#define CORVEX_HOST_API __attribute__((visibility("default")))
