#include "rawsdk/SettingsObjects.h"

#include "rawsdk/AttributeValues.h"

#include <utility>

namespace rawsdk {

FrameSettingsObject::FrameSettingsObject(const FrameSettings& settings)
    : Object("RawFrameSettings.QueryInterface"), settings_(settings) {}

HRESULT FrameSettingsObject::GetAttribute(uint32_t attribute, VARIANT* value) {
    return Answer({"RawFrameSettings.GetAttribute", Subject::OfCode(attribute)}, value,
                  [&] { return ValueOf(RequireAttribute(FrameAttributes(), attribute), settings_); });
}

ClipSettingsObject::ClipSettingsObject(std::shared_ptr<const ClipFile> file)
    : Object("RawClipSettings.QueryInterface"), file_(std::move(file)), settings_(file_->Clip().settings) {}

HRESULT ClipSettingsObject::GetAttribute(uint32_t attribute, VARIANT* value) {
    return Answer({"RawClipSettings.GetAttribute", Subject::OfCode(attribute)}, value,
                  [&] { return ValueOf(RequireAttribute(ClipAttributes(), attribute), settings_); });
}

HRESULT ClipSettingsObject::SetAttribute(uint32_t attribute, VARIANT* value) {
    if (value == nullptr) return E_POINTER;
    return Perform({"RawClipSettings.SetAttribute", Subject::OfCode(attribute)},
                   [&] { SetValue(RequireAttribute(ClipAttributes(), attribute), settings_, *value); });
}

HRESULT ClipSettingsObject::GetLut(RawLut** lut) {
    return Answer({"RawClipSettings.GetLut"}, lut, [&]() -> RawLut* {
        TableHandle table = file_->Table(settings_.lutMode);
        return table == nullptr ? nullptr : new Lut(std::move(table));
    });
}

Lut::Lut(TableHandle table) : Object("RawLut.QueryInterface"), table_(std::move(table)) {}

HRESULT Lut::GetTable(void** table) {
    return Answer({"RawLut.GetTable"}, table, [&] { return &table_; });
}

} // namespace rawsdk
