#include "cameraraw/IOMetadataMap.h"

#include "cameraraw/RawResult.h"
#include "cameraraw/RawValue.h"

#include <cstring>
#include <utility>

namespace {

constexpr char lutDataKey[] = "lut_data";

template <typename Element>
std::vector<Element> Copy(const void* elements, size_t count) {
    std::vector<Element> copied(count);
    std::memcpy(copied.data(), elements, count * sizeof(Element));
    return copied;
}

QVariant Flat(const std::string& text) { return QString::fromStdString(text); }
QVariant Flat(int64_t number) { return static_cast<qlonglong>(number); }
QVariant Flat(float number) { return static_cast<double>(number); }

template <typename Value>
void Flatten(const std::map<std::string, Value>& map, QMap<QString, QVariant>& out) {
    for (const auto& [key, value] : map)
        out.insert(QString::fromStdString(key), Flat(value));
}

} // namespace

bool IOMetadataMap::Add(const std::string& key, VARIANT* value) {
    if (value == nullptr) return false;
    switch (value->vt) {
    case VT_BSTR: strings_[key] = TextOfBstr(value->bstrVal); return true;
    case VT_I2: integers_[key] = value->iVal; return true;
    case VT_I4: integers_[key] = value->lVal; return true;
    case VT_UI2: integers_[key] = value->uiVal; return true;
    case VT_UI4: integers_[key] = value->ulVal; return true;
    case VT_R4: floats_[key] = value->fltVal; return true;
    case VT_SAFEARRAY: return AddArray(key, value->parray);
    default: return false;
    }
}

/// Null for a type that isn't taken.
IOMetadataMap::AddElements IOMetadataMap::AdderOf(VARTYPE type) {
    switch (type) {
    case VT_UI1: return &IOMetadataMap::AddIntegers<uint8_t>;
    case VT_I2: return &IOMetadataMap::AddIntegers<int16_t>;
    case VT_I4: return &IOMetadataMap::AddIntegers<int32_t>;
    case VT_UI2: return &IOMetadataMap::AddIntegers<uint16_t>;
    case VT_UI4: return &IOMetadataMap::AddIntegers<uint32_t>;
    case VT_R4: return &IOMetadataMap::AddFloats;
    default: return nullptr;
    }
}

bool IOMetadataMap::AddArray(const std::string& key, SAFEARRAY* array) {
    if (SafeArrayGetDim(array) != 1) return false;
    VARTYPE type = VT_EMPTY;
    if (!RawSucceeds([&] { return SafeArrayGetVartype(array, &type); })) return false;
    const AddElements add = AdderOf(type);
    if (add == nullptr) return false;
    LONG lower = 0;
    LONG upper = 0;
    void* elements = nullptr;
    if (!RawSucceeds([&] { return SafeArrayGetLBound(array, 1, &lower); }) ||
        !RawSucceeds([&] { return SafeArrayGetUBound(array, 1, &upper); }) ||
        !RawSucceeds([&] { return SafeArrayAccessData(array, &elements); }))
        return false;
    // An array of a single element is dropped with the empty ones, and stays accessed. Kept.
    if (lower >= upper) return false;
    const auto count = static_cast<size_t>(int64_t{upper} - lower + 1);
    if (elements != nullptr) (this->*add)(key, elements, count);
    RawSucceeds([&] { return SafeArrayUnaccessData(array); });
    return true;
}

template <typename Element>
void IOMetadataMap::AddIntegers(const std::string& key, const void* elements, size_t count) {
    const std::vector<Element> copied = Copy<Element>(elements, count);
    integerArrays_[key].assign(copied.begin(), copied.end());
}

void IOMetadataMap::AddFloats(const std::string& key, const void* elements, size_t count) {
    floatArrays_[key] = Copy<float>(elements, count);
}

void IOMetadataMap::ToMap(QMap<QString, QVariant>& out) const {
    out.clear();
    Flatten(strings_, out);
    Flatten(integers_, out);
    Flatten(floats_, out);
}

void ReadIterator(RawPointer<RawMetadataIterator> iterator, IOMetadataMap& map) {
    do {
        BstrHolder key;
        if (iterator->GetKey(key.Receive()) != S_OK) break;
        const std::string name = key.Text();
        if (name == lutDataKey) continue;
        RawValue value;
        if (iterator->GetData(value.Receive()) == S_OK) map.Add(name, value.Get());
    } while (iterator->Next() == S_OK);
}
