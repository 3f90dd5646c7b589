#pragma once

#include "framework/CxAbstractTemporalDecoder.h"

#include <string>
#include <vector>

/// Classes that override every virtual operation of the codec interface, compiled apart from the test that
/// calls them. Each call appends the operation's name and arguments to `log`.
namespace VtableProbes {

extern std::vector<std::string> log;

CxAbstractAVCodec* NewCodec();
CxAbstractCodecFactory* NewFactory();
CxAbstractDataSource* NewSource();

/// What the temporal decoder below decodes.
struct Frame {};
CxAbstractTemporalDecoder<Frame>* NewTemporalDecoder();

} // namespace VtableProbes
