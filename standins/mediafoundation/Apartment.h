#pragma once

#include "mediafoundation/Results.h"

namespace mediafoundation {

// Whether this thread has started COM. Without it no transform is made.

/// @param flags  of `CoInitializeEx`
/// @return S_OK, S_FALSE if it was started before, or RPC_E_CHANGED_MODE, and nothing is to be ended, if that
///         was with another concurrency
HRESULT EnterApartment(DWORD flags);
/// Ends one success of EnterApartment.
void LeaveApartment();
bool IsApartmentEntered();

} // namespace mediafoundation
