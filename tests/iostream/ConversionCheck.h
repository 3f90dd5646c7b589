#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Every exported function and every parser of one family, run on any bytes, with what must hold whatever the
/// bytes are. Each gets them in memory of exactly their size, so that sanitizers see every byte too many.
///
/// @param lengthSize  of the samples that the bytes are taken for, any value
/// @param pieceSize   bytes that a payload is given at a time; 1 or more
/// @throw std::logic_error  names the promise that is broken
void CheckH264(const std::vector<uint8_t>& bytes, uint8_t lengthSize, size_t pieceSize);
void CheckHEVC(const std::vector<uint8_t>& bytes, uint8_t lengthSize, size_t pieceSize);
