#pragma once

#include "standins/mediafoundation/Peer.h"

/// A decoder that is set up as the module does it, on a thread that has COM.
class DecoderDriver {
public:
    /// @param width, height  of the input type; 0 leaves them out
    explicit DecoderDriver(uint32_t width, uint32_t height, const GUID& output = MFVideoFormat_YUY2);

    IMFTransform& Transform() { return *transform_; }
    HRESULT SetInput(uint32_t width, uint32_t height);
    HRESULT SetOutput(const GUID& subtype);

    /// Feeds samples and takes all that comes out, setting the output type again where the stream changes.
    std::vector<TimedBytes> Decode(const std::vector<TimedBytes>& samples);
    std::vector<TimedBytes> Drain();
    /// Feeds and drains.
    std::vector<TimedBytes> DecodeAll(const std::vector<TimedBytes>& samples);

    int streamChanges = 0;

private:
    void Take(std::vector<TimedBytes>& outputs);

    ComThread com_;
    GUID output_;
    Ptr<IMFTransform> transform_;
};

std::vector<Bytes> BytesOf(const std::vector<TimedBytes>& outputs);
std::vector<int64_t> TimesOf(const std::vector<TimedBytes>& outputs);
/// Times of the first pictures of a movie.
std::vector<int64_t> TimesOfFirst(size_t count);
