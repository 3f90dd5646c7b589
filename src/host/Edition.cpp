#include "host/Edition.h"

bool g_IsPalisade = false;
