#pragma once

#include "prores/PrxRowPass.h"

/// The vector form of the row pass of `v210`, for the instruction set in force: the same as the reference
/// form. Null where there is none.
PrxRowPass PrxSelectVectorV210RowPass();
