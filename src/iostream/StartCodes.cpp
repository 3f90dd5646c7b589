#include "iostream/StartCodes.h"

namespace IOStream {

size_t FindStartCodeScalar(const uint8_t* data, size_t size) {
    for (size_t place = 0; place + 3 <= size; ++place)
        if (data[place] == 0 && data[place + 1] == 0 && data[place + 2] == 1) return place;
    return size;
}

} // namespace IOStream
