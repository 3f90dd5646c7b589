#pragma once

#include "mediafoundation/Attributes.h"

namespace mediafoundation {

/// Makes transforms, a new one each time.
class Activate final : public Attributes<IMFActivate> {
public:
    using Maker = Held<IMFTransform> (*)();

    /// @param make  makes one; throws std::bad_alloc
    explicit Activate(Maker make) : make_(make) {}

    HRESULT ActivateObject(REFIID interfaceId, void** object) override;
    HRESULT ShutdownObject() override { return S_OK; }
    HRESULT DetachObject() override { return E_NOTIMPL; }

private:
    Maker make_;
};

} // namespace mediafoundation
