#include "mediafoundation/Activate.h"

#include "mediafoundation/Apartment.h"

namespace mediafoundation {

HRESULT Activate::ActivateObject(REFIID interfaceId, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!IsApartmentEntered()) return notInitialized;
    return Guarded([&] { return make_()->QueryInterface(interfaceId, object); });
}

} // namespace mediafoundation
