#pragma once

#include "media/MovieTrackWriter.h"

#include <cstdint>
#include <span>

/// The colour tags of ProRes movies. Each frame has a set of its own, which readers believe before that of
/// the container, and the encoder fills in no more of it than the matrix.

bool IsProRes(uint32_t fourCC);

/// The matrix with which the encoder makes Y'CbCr of RGB, in FFmpeg's numbering, which is that of RDD 36.
/// @param height  of the frame, in rows
int ProResMatrix(int height);

/// Writes the movie's primaries and transfer function into a frame: the codes of SMPTE RDD 36, or "not told"
/// where it has none. A transfer function that differs from BT.709 by name alone gets the code of that.
/// A frame with another form of header, or that is too short for one, stays as it is.
void TagProResFrame(const MovieTrackSettings& settings, std::span<uint8_t> frame);
