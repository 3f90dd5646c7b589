#pragma once

#include "framework/CxAVTypes.h"

#include <string>
#include <vector>

/// The encoder rows of the registry, in order of registration.
std::vector<CxEncoderInfo> RegistryEncoders();

/// The first row with this display name.
/// @throw ToolError  `Unsupported`, listing close names
CxEncoderInfo FindEncoder(const std::string& name);

/// What the row's back-end takes as `CxEncodedFrame::codecTag`.
uint32_t CodecTag(const CxEncoderInfo& row);

/// Whether the encoder can be asked to code the alpha channel.
bool OffersAlpha(const CxEncoderInfo& row);

/// Whether the frames of a row hold R'G'B', although its code is that of Y'CbCr too: the 4:4:4 ones of DNx.
bool CodesRgb(const CxEncoderInfo& row);

/// The field order that the frames of a row tell whatever they are made of, as in `CxEncodedFrame`: those of
/// DNx, which are progressive or have the top field first. 0 for frames that follow what is asked for.
int OwnFieldOrder(const CxEncoderInfo& row);
