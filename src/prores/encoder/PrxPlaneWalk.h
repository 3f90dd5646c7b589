#pragma once

#include "prores/encoder/PrxLevelList.h"
#include "prores/encoder/PrxPlaneCoder.h"

/// Appends the AC levels of `plane` that are not zero to `list`, which is empty. They stand in coding order:
/// one scan position of all blocks after the other. The reference form.
void PrxWalkPlane(const PrxPlaneLevels& plane, PrxLevelList* list);

/// Place in the scan of each of the 64 raster positions.
const uint8_t* PrxCodingPlaces(bool interlaced);
