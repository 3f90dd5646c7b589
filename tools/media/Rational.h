#pragma once

#include <cstdint>

/// An exact fraction. A rate is frames per second, a time seconds; 0/1 where nothing is known.
struct Rational {
    int64_t num = 0;
    int64_t den = 1;

    friend bool operator==(const Rational&, const Rational&) = default;
};
