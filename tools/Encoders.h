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
