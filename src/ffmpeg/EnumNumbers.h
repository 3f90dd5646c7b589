#pragma once

#include <cstdint>
#include <cstring>

namespace CxFFMPEG {

/// The number in a field of one of FFmpeg's enumerations. As these are C's a field holds any number of 32
/// bits, which this language does not let an enumeration of known values have.
template <typename Enum>
int32_t NumberIn(const Enum& field) {
    int32_t number = 0;
    static_assert(sizeof(field) == sizeof(number));
    std::memcpy(&number, &field, sizeof(number));
    return number;
}

/// Puts a number into such a field.
template <typename Enum>
void SetNumber(Enum& field, int32_t number) {
    static_assert(sizeof(field) == sizeof(number));
    std::memcpy(&field, &number, sizeof(number));
}

} // namespace CxFFMPEG
