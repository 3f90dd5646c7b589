#pragma once

#include "mediafoundation/EncoderProperties.h"
#include "mediafoundation/PictureEncoder.h"
#include "mediafoundation/PictureFormats.h"
#include "mediafoundation/SampleAccess.h"
#include "mediafoundation/Transform.h"

#include <memory>
#include <vector>

namespace mediafoundation {

/// Encodes H.264: takes a sample for each picture, and gives one for each at once, an access unit of a byte
/// stream. The output type leads: it says size, frame rate, bit rate, profile and distance of key pictures,
/// and gets the parameter sets as MF_MT_MPEG_SEQUENCE_HEADER once it is set.
class Encoder final : public Transform {
public:
    Encoder() : Transform(Side::Output) {}

private:
    Held<MediaType> AvailableType(Side side, DWORD index) override;
    HRESULT PrepareFor(Side side, IMFMediaType& type) override;
    HRESULT Take(IMFSample& sample) override;
    HRESULT Give(IMFSample& sample) override;
    bool HasOutput() const override { return !stream_.empty(); }
    DWORD OutputBytes() const override;
    void Drain() override {}
    void Flush() override { stream_.clear(); }
    bool KnowsProperty(REFGUID property) const override { return IsEncoderProperty(property); }

    bool ReadSettings(IMFMediaType& type, EncoderSettings& settings) const;
    HRESULT PrepareForOutput(IMFMediaType& type);
    HRESULT PrepareForInput(IMFMediaType& type);

    EncoderSettings settings_;
    NumberPair frameRate_;
    std::unique_ptr<PictureEncoder> encoder_; ///< null before the output type is set
    const PictureFormat* format_ = nullptr;   ///< null before the input type is set
    std::vector<uint8_t> stream_;             ///< the access unit that waits to be given
    SampleTiming timing_;                     ///< its time
    bool isKey_ = false;                      ///< whether it is a key picture
};

} // namespace mediafoundation
