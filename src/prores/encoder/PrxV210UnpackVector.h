#pragma once

#include "prores/encoder/PrxV210Unpack.h"

/// The unpacker in the vectors of this machine's best instruction set: the same pixels as the reference form.
/// Null on machines without vectors.
PrxV210Unpacker PrxSelectVectorV210Unpacker();
