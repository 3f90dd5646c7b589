#pragma once

#include "mediafoundation/PictureDecoder.h"
#include "mediafoundation/PictureFormats.h"
#include "mediafoundation/SampleAccess.h"
#include "mediafoundation/Transform.h"

#include <deque>
#include <map>

namespace mediafoundation {

/// Decodes H.264: takes a sample for each access unit of a byte stream, and gives one for each picture, in
/// presentation order. The input type leads. Its size is taken for that of the stream; if a picture of
/// another size comes out the stream changes, and the output type is to be set again.
class Decoder final : public Transform {
public:
    Decoder() : Transform(Side::Input) {}

private:
    Held<MediaType> AvailableType(Side side, DWORD index) override;
    HRESULT PrepareFor(Side side, IMFMediaType& type) override;
    HRESULT Take(IMFSample& sample) override;
    HRESULT Give(IMFSample& sample) override;
    bool HasOutput() const override { return !pictures_.empty(); }
    DWORD OutputBytes() const override;
    void Drain() override { decoder_.Drain(pictures_); }
    void Flush() override;
    bool KnowsProperty(REFGUID property) const override;

    SampleTiming TakeTiming(uint64_t tag);

    NumberPair surface_;                    ///< in whole macroblocks; zeros while it isn't known
    const PictureFormat* format_ = nullptr; ///< null before the output type is set
    PictureDecoder decoder_;
    PictureDecoder::Output pictures_; ///< that wait to be given
    /// Times of the samples whose pictures didn't come out yet, by the samples' numbers.
    std::map<uint64_t, SampleTiming> timings_;
    uint64_t samples_ = 0; ///< taken so far
};

} // namespace mediafoundation
