#pragma once

#include "prores/encoder/PrxEncodeContext.h"
#include "prores/encoder/PrxEncodePicture.h"
#include "prores/encoder/PrxSlice.h"

/// Codes `slice` from its coefficients as `picture.pass` says. Called in a worker. Returns false, with the
/// slice's bytes lost, if there is no memory for what it takes.
bool PrxEncodeSlice(const PrxEncodePicture& picture, PrxSlice& slice, PrxEncodeContext& context);
