#pragma once

#include "prores/PrxInverseTransform.h"

/// The transform of `PrxSelectInverseTransform` in the vectors of this machine's best instruction set: the
/// same samples as the reference form. It touches no value outside the blocks and the 64 table entries. Null
/// for sizes that have no vector form, and on every machine but an x86 one with vectors.
PrxInverseTransform PrxVectorInverseTransform(int32_t hShift, int32_t vShift);
