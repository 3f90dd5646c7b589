#pragma once

#include <cstddef>
#include <cstdint>

namespace IOStream {

/// Place of the first 00 00 01 in `size` bytes, or `size` if there is none. Touches no byte outside of them
/// and reads each a fixed number of times at most. Safe on any thread.
size_t FindStartCode(const uint8_t* data, size_t size);

/// The same one byte at a time: what `FindStartCode` is held against, and what it does with a few bytes.
size_t FindStartCodeScalar(const uint8_t* data, size_t size);

} // namespace IOStream
