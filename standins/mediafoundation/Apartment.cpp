#include "mediafoundation/Apartment.h"

namespace mediafoundation {

namespace {

struct Apartment {
    uint32_t depth = 0;
    bool isOfOneThread = false;
};

constinit thread_local Apartment apartment;

} // namespace

HRESULT EnterApartment(DWORD flags) {
    const bool isOfOneThread = (flags & COINIT_APARTMENTTHREADED) != 0;
    if (apartment.depth > 0 && apartment.isOfOneThread != isOfOneThread) return changedMode;
    apartment.isOfOneThread = isOfOneThread;
    return apartment.depth++ == 0 ? S_OK : S_FALSE;
}

void LeaveApartment() {
    if (apartment.depth > 0) --apartment.depth;
}

bool IsApartmentEntered() { return apartment.depth > 0; }

} // namespace mediafoundation
