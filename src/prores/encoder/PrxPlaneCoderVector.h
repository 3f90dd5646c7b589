#pragma once

#include "prores/encoder/PrxPlaneCoder.h"

#include <optional>

/// The coder of `PrxScalarPlaneCoder` in the vectors of this machine's best instruction set: same results. It
/// reads no value but the 64 of each block. None on machines without vectors.
std::optional<PrxPlaneCoder> PrxVectorPlaneCoder();
