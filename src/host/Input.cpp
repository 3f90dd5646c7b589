#include "host/Input.h"

CxID Input::GetID(double) const { return {}; }
