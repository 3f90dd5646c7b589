#include "framework/CxAbstractTemporalDecoder.h"

// One line of each kind for every frame type of the module's back-ends.
template class CxDecodedFramesCache<AVFrame>;
template class CxAbstractTemporalDecoder<AVFrame>;
template class CxDecodedFramesCache<IMFSample>;
template class CxAbstractTemporalDecoder<IMFSample>;
