#pragma once

#include "prores/encoder/PrxForwardTransform.h"

/// The transform in the vectors of this machine's best instruction set: the same results as the reference
/// form. Null on machines without vectors.
PrxForwardTransform PrxVectorForwardTransform();
