#pragma once

#include "prores/encoder/PrxQuantise.h"

/// The quantiser in the vectors of this machine's best instruction set: the same levels as the reference
/// form. Null on machines without vectors.
PrxQuantiser PrxVectorQuantiser();
