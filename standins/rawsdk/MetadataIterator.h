#pragma once

#include "rawsdk/Object.h"
#include "rawsdk/clip/Metadata.h"

namespace rawsdk {

class MetadataIterator final : public Object<RawMetadataIterator> {
public:
    explicit MetadataIterator(const Metadata& metadata);

    HRESULT Next() override;
    HRESULT GetKey(BSTR* key) override;
    HRESULT GetData(VARIANT* value) override;

private:
    const MetadataEntry& Entry() const;

    Metadata metadata_;
    size_t position_ = 0;
};

} // namespace rawsdk
