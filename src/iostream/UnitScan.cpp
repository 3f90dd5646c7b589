#include "iostream/UnitScan.h"

#include "iostream/StartCodes.h"

namespace IOStream {

std::optional<StartCode> FindUnit(const uint8_t* data, uint32_t from, uint32_t size) {
    if (size - from < 5) return std::nullopt;
    const uint32_t end = size - 1;
    const auto place = from + static_cast<uint32_t>(FindStartCode(data + from, end - from));
    if (place == end) return std::nullopt;
    if (place > from && data[place - 1] == 0) return StartCode{place - 1, 4};
    if (place + 4 > end) return std::nullopt;
    return StartCode{place, 3};
}

} // namespace IOStream
