#include "rawsdk/MetadataIterator.h"

namespace rawsdk {

MetadataIterator::MetadataIterator(const Metadata& metadata)
    : Object("RawMetadataIterator.QueryInterface"), metadata_(metadata) {}

HRESULT MetadataIterator::Next() {
    return Perform({"RawMetadataIterator.Next"}, [&] {
        if (position_ < metadata_.size()) ++position_;
        if (position_ == metadata_.size()) throw Failure{S_FALSE};
    });
}

HRESULT MetadataIterator::GetKey(BSTR* key) {
    return Answer({"RawMetadataIterator.GetKey"}, key,
                  [&] { return VariantOf(TextValue(Entry().key)).bstrVal; });
}

HRESULT MetadataIterator::GetData(VARIANT* value) {
    return Answer({"RawMetadataIterator.GetData"}, value, [&] { return VariantOf(Entry().value); });
}

/// The entry on which it stands; behind the last one there is none.
const MetadataEntry& MetadataIterator::Entry() const {
    if (position_ == metadata_.size()) throw Failure{S_FALSE};
    return metadata_[position_];
}

} // namespace rawsdk
