#pragma once

#include "rawsdk/Object.h"
#include "rawsdk/clip/ClipFile.h"

#include <memory>

namespace rawsdk {

class FrameSettingsObject final : public Object<RawFrameSettings> {
public:
    explicit FrameSettingsObject(const FrameSettings& settings);

    HRESULT GetAttribute(uint32_t attribute, VARIANT* value) override;

    const FrameSettings& Settings() const { return settings_; }

private:
    FrameSettings settings_;
};

class ClipSettingsObject final : public Object<RawClipSettings> {
public:
    explicit ClipSettingsObject(std::shared_ptr<const ClipFile> file);

    HRESULT GetAttribute(uint32_t attribute, VARIANT* value) override;
    HRESULT SetAttribute(uint32_t attribute, VARIANT* value) override;
    HRESULT GetLut(RawLut** lut) override;

    const ClipSettings& Settings() const { return settings_; }

private:
    std::shared_ptr<const ClipFile> file_;
    ClipSettings settings_;
};

/// The table that `RawLut::GetTable` gives points at one of these.
using TableHandle = std::shared_ptr<const ColorTable>;

class Lut final : public Object<RawLut> {
public:
    explicit Lut(TableHandle table);

    HRESULT GetTable(void** table) override;

private:
    TableHandle table_;
};

} // namespace rawsdk
