#include "prores/encoder/PrxRateTables.h"

#include <cmath>
#include <cstddef>

namespace {

int32_t Fixed(double value) { return static_cast<int32_t>(std::lround(65536 * value)); }

PrxRateTables MakeTables() {
    PrxRateTables tables;
    for (size_t i = 0; i < 1024; ++i) {
        const double fraction = static_cast<double>(i) / 1024;
        tables.power[i] = Fixed(std::pow(3.0, fraction));
        tables.root[i] = Fixed(std::sqrt(fraction));
        tables.log[i] = i == 0 ? 0 : Fixed(std::log(fraction) / std::log(3.0));
    }
    return tables;
}

} // namespace

const PrxRateTables& PrxGetRateTables() {
    static const PrxRateTables tables = MakeTables();
    return tables;
}
