#pragma once

#include "host/Export.h"

/// Which edition of the host runs: true for the one that offers no ProRes encoders. False by default; set
/// before encoders are listed.
extern CORVEX_HOST_API bool g_IsPalisade;
