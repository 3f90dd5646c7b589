#include "cameraraw/RawDefaults.h"

#include "cameraraw/RawResult.h"
#include "cameraraw/RawValue.h"

#include <algorithm>
#include <bit>

namespace {

constexpr char cameraModel[] = "Ravenlight Heron Field S2";

/// No attribute has more values; a larger number is not believed.
constexpr uint32_t mostNames = 4096;

using RangeCall = HRESULT (RawConstants::*)(BSTR, uint32_t, VARIANT*, VARIANT*, bool*);

/// Reads the limits of one camera.
class LimitsReader {
public:
    explicit LimitsReader(RawConstants& constants) : constants_(constants) {}

    template <typename Number>
    void ReadFrame(uint32_t attribute, RawRange<Number>& range) {
        Read(&RawConstants::GetFrameAttributeRange, attribute, range);
    }
    template <typename Number>
    void ReadClip(uint32_t attribute, RawRange<Number>& range) {
        Read(&RawConstants::GetClipAttributeRange, attribute, range);
    }
    void ReadList(uint32_t attribute, RawNames& list);

private:
    template <typename Number>
    void Read(RangeCall call, uint32_t attribute, RawRange<Number>& range) {
        RawValue lowest;
        RawValue highest;
        bool isReadOnly = range.isReadOnly;
        if (!RawSucceeds([&] {
                return (constants_.*call)(camera_.Get(), attribute, lowest.Receive(), highest.Receive(),
                                          &isReadOnly);
            }))
            return;
        lowest.StoreIn(range.lowest);
        highest.StoreIn(range.highest);
        range.isReadOnly = isReadOnly;
    }

    RawConstants& constants_;
    BstrHolder camera_{cameraModel};
};

/// The values of a list, which are cleared with their owner.
class RawValues {
public:
    explicit RawValues(uint32_t count) : values_(count) { std::ranges::for_each(values_, InitValue); }
    RawValues(const RawValues&) = delete;
    RawValues& operator=(const RawValues&) = delete;
    ~RawValues() { std::ranges::for_each(values_, ClearValue); }

    /// Clears the values, and gives the place for others.
    VARIANT* Receive() {
        std::ranges::for_each(values_, ClearValue);
        return values_.data();
    }
    /// The strings among the first `count` values.
    std::vector<std::string> Texts(uint32_t count) const {
        std::vector<std::string> texts;
        for (size_t i = 0; i < std::min<size_t>(count, values_.size()); ++i)
            if (values_[i].vt == VT_BSTR) texts.push_back(TextOfBstr(values_[i].bstrVal));
        return texts;
    }

private:
    static void InitValue(VARIANT& value) { VariantInit(&value); }
    static void ClearValue(VARIANT& value) { VariantClear(&value); }

    std::vector<VARIANT> values_;
};

void LimitsReader::ReadList(uint32_t attribute, RawNames& list) {
    uint32_t count = 0;
    bool isReadOnly = list.isReadOnly;
    const auto ask = [&](VARIANT* values) {
        return constants_.GetAttributeList(camera_.Get(), attribute, values, &count, &isReadOnly);
    };
    if (!RawSucceeds([&] { return ask(nullptr); }) || count > mostNames) return;
    const uint32_t capacity = count;
    RawValues values(capacity);
    const bool isRead = RawSucceeds([&] {
        count = capacity;
        return ask(values.Receive());
    });
    if (!isRead) return;
    list = {values.Texts(count), isReadOnly};
}

template <typename Number>
void ClampPreset(RawRange<Number>& range) {
    // The limits come from outside, and may be the wrong way round.
    range.preset = std::max(range.lowest, std::min(range.preset, range.highest));
}

void CenterPreset(RawRange<float>& range) { range.preset = (range.lowest + range.highest) / 2; }

void ChoosePresets(RawRanges& ranges) {
    ClampPreset(ranges.whiteBalanceKelvin);
    ClampPreset(ranges.whiteBalanceTint);
    CenterPreset(ranges.exposure);
    CenterPreset(ranges.contrast);
    CenterPreset(ranges.highlights);
    CenterPreset(ranges.shadows);
    ranges.saturation.preset = 1.0F;
    ranges.midpoint.preset = std::bit_cast<float>(0x3ED16976U);
}

} // namespace

RawDefaults ReadRawDefaults(RawConstants& constants) {
    RawDefaults defaults;
    LimitsReader reader(constants);
    reader.ReadFrame(rawWhiteBalanceKelvin, defaults.whiteBalanceKelvin);
    reader.ReadFrame(rawWhiteBalanceTint, defaults.whiteBalanceTint);
    reader.ReadFrame(rawExposure, defaults.exposure);
    reader.ReadClip(rawContrast, defaults.contrast);
    reader.ReadClip(rawSaturation, defaults.saturation);
    reader.ReadClip(rawMidpoint, defaults.midpoint);
    reader.ReadClip(rawHighlights, defaults.highlights);
    reader.ReadClip(rawShadows, defaults.shadows);
    reader.ReadClip(rawBlackLevel, defaults.blackLevel);
    reader.ReadClip(rawWhiteLevel, defaults.whiteLevel);
    reader.ReadList(rawGamut, defaults.gamuts);
    reader.ReadList(rawGamma, defaults.gammas);
    ChoosePresets(defaults);
    return defaults;
}
