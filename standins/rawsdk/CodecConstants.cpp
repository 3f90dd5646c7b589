// The codec's `RawConstants`.

#include "rawsdk/AttributeValues.h"
#include "rawsdk/Codec.h"

namespace rawsdk {

namespace {

constexpr std::string_view knownCamera = "Ravenlight Heron Field S2";

/// What the range of an attribute is told in.
struct RangeOut {
    VARIANT* minimum;
    VARIANT* maximum;
    bool* readOnly;
};

template <typename Owner>
HRESULT GiveRange(const Call& call, BSTR camera, std::span<const Attribute<Owner>> attributes, uint32_t code,
                  const RangeOut& out) {
    if (out.maximum == nullptr || out.readOnly == nullptr) return E_POINTER;
    *out.maximum = {};
    *out.readOnly = false;
    return Answer(call, out.minimum, [&] {
        const Attribute<Owner>& attribute = RequireAttribute(attributes, code);
        RequireArgument(TextOfBstr(camera) == knownCamera && attribute.limits.Any());
        *out.maximum = LimitOf(attribute, attribute.limits.highest);
        return LimitOf(attribute, attribute.limits.lowest);
    });
}

void GiveChoices(std::span<const char* const> choices, VARIANT* values) {
    for (size_t i = 0; i < choices.size(); ++i)
        values[i] = {};
    for (size_t i = 0; i < choices.size(); ++i)
        values[i] = ToVariant(std::string_view(choices[i]));
}

} // namespace

HRESULT Codec::GetClipAttributeRange(BSTR camera, uint32_t attribute, VARIANT* minimum, VARIANT* maximum,
                                     bool* readOnly) {
    return GiveRange({"RawConstants.GetClipAttributeRange", Subject::OfCode(attribute)}, camera,
                     ClipAttributes(), attribute, {minimum, maximum, readOnly});
}

HRESULT Codec::GetFrameAttributeRange(BSTR camera, uint32_t attribute, VARIANT* minimum, VARIANT* maximum,
                                      bool* readOnly) {
    return GiveRange({"RawConstants.GetFrameAttributeRange", Subject::OfCode(attribute)}, camera,
                     FrameAttributes(), attribute, {minimum, maximum, readOnly});
}

HRESULT Codec::GetAttributeList(BSTR camera, uint32_t attribute, VARIANT* values, uint32_t* count,
                                bool* readOnly) {
    if (count == nullptr || readOnly == nullptr) return E_POINTER;
    const uint32_t room = *count;
    *readOnly = false;
    return Answer({"RawConstants.GetAttributeList", Subject::OfCode(attribute)}, count, [&] {
        const auto choices = RequireAttribute(ClipAttributes(), attribute).choices;
        RequireArgument(TextOfBstr(camera) == knownCamera && !choices.empty());
        RequireArgument(values == nullptr || room >= choices.size());
        if (values != nullptr) GiveChoices(choices, values);
        return static_cast<uint32_t>(choices.size());
    });
}

} // namespace rawsdk
