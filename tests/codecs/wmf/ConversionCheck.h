#pragma once

#include <cstdint>
#include <random>
#include <vector>

/// The conversions of the Media Foundation back-end, run on any bytes and held against slow models of them.
/// Each gets the bytes in memory of exactly their size, so that sanitizers see every byte too many.
///
/// @param capacity  bytes that a sample has room for
/// @throw std::logic_error  names the promise that is broken
void CheckAnnexB(const std::vector<uint8_t>& bytes, size_t capacity);
void CheckRecords(const std::vector<uint8_t>& bytes);

using Unit = std::vector<uint8_t>;

/// Units of random length that can stand in a byte stream: no start code inside, and no zero at the end.
std::vector<Unit> RandomUnits(size_t count, size_t mostBytes, std::mt19937& random);
