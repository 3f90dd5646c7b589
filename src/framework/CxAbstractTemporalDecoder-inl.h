#pragma once

// Definitions of CxAbstractTemporalDecoder.h, which includes this file.

#include "framework/CxAbstractTemporalDecoder.h"
#include "framework/SampleSize.h"

#include <algorithm>
#include <limits>

/// A cache that a decoder and its copies share.
template <typename T>
struct CxSharedFramesCache {
    explicit CxSharedFramesCache(CxAbstractTemporalDecoder<T>* decoder)
        : maker(decoder), cache(std::make_unique<CxDecodedFramesCache<T>>(
                              [this](T*& frame) {
                                  if (maker != nullptr) maker->ReleaseDecodedFrame(frame);
                              },
                              static_cast<int32_t>(CxDecodedFramesCache<T>::MAX_GOP_LENGTH))) {}

    CxAbstractTemporalDecoder<T>* maker;            ///< releases the frames; null once it can't any more
    std::unique_ptr<CxDecodedFramesCache<T>> cache; ///< null once the maker gave it up
};

/// `sample` + `distance` in 32-bit arithmetic, which wraps around.
inline int32_t CxSampleAt(int64_t sample, int32_t distance) {
    return static_cast<int32_t>(static_cast<uint32_t>(sample) + static_cast<uint32_t>(distance));
}

template <typename T>
CxAbstractTemporalDecoder<T>::CxAbstractTemporalDecoder(CxAVOperation op, const CxAbstractCodecFactory* maker)
    : CxAbstractAVCodec(op, maker), frameCache(std::make_shared<CxSharedFramesCache<T>>(this)) {}

template <typename T>
CxAbstractTemporalDecoder<T>::CxAbstractTemporalDecoder(const CxAbstractTemporalDecoder& other)
    : CxAbstractAVCodec(other), lastSample(other.lastSample), lastFrame(other.lastFrame),
      frameCache(other.frameCache) {}

template <typename T>
CxAbstractTemporalDecoder<T>::CxAbstractTemporalDecoder(CxAbstractTemporalDecoder&& other)
    : CxAbstractTemporalDecoder(static_cast<const CxAbstractTemporalDecoder&>(other)) {}

template <typename T>
CxAbstractTemporalDecoder<T>&
CxAbstractTemporalDecoder<T>::operator=(const CxAbstractTemporalDecoder& other) {
    if (frameCache != other.frameCache) ReleaseFrameCache();
    CxAbstractAVCodec::operator=(other);
    lastSample = other.lastSample;
    lastFrame = other.lastFrame;
    frameCache = other.frameCache;
    return *this;
}

template <typename T>
CxAbstractTemporalDecoder<T>& CxAbstractTemporalDecoder<T>::operator=(CxAbstractTemporalDecoder&& other) {
    return *this = static_cast<const CxAbstractTemporalDecoder&>(other);
}

template <typename T>
CxAbstractTemporalDecoder<T>::~CxAbstractTemporalDecoder() {
    if (!MadeTheCache()) return;
    // A back-end that has not given its cache up can't release the frames any more; copies do without.
    frameCache->maker = nullptr;
    frameCache->cache.reset();
}

template <typename T>
CxAVError CxAbstractTemporalDecoder<T>::GetDecodedFrame(int32_t frame, Image*& image) {
    if (dataSource == nullptr || frame < 0) return CxAV_INVALID_STATE;
    const int32_t sample = dataSource->GetSampleForFrame(frame);
    if (sample < 0) return CxAV_INVALID_STATE;
    const int64_t time = dataSource->GetSampleTime(sample);
    // Asked for past the track's end too: a source answers there.
    const int64_t limit =
        dataSource->GetSampleTime(CxSampleAt(sample, CxDecodedFramesCache<T>::MAX_GOP_LENGTH));
    T* cached = nullptr;
    if (FindCachedFrame(time, cached)) return Convert(cached, image);

    const int32_t lastOfTrack = CxSampleAt(dataSource->GetSampleCount(), -1);
    const int32_t key = dataSource->GetKeySample(sample);
    if (CanGoOn(frame, sample, key, lastOfTrack)) return DecodeFrom(NextSample(), {time, limit, image});
    lastSample = lastFrame = -1;
    // This class's own, not the virtual operation. Kept.
    CxAbstractTemporalDecoder::ClearCachedFrames();
    Flush();
    return DecodeFrom(std::max(key, 0), {time, limit, image});
}

/// Whether decoding on from the present position reaches a frame sooner than a restart at its key sample.
template <typename T>
bool CxAbstractTemporalDecoder<T>::CanGoOn(int32_t frame, int32_t sample, int32_t key, int32_t lastOfTrack) {
    const bool isBehind = lastFrame == -1 || frame <= lastFrame;
    if (isBehind) return false;
    // The first test compares a sample number with a frame number. Kept.
    const bool isAhead = sample > lastFrame + 1 || NextSample() < sample;
    return !isAhead || key <= dataSource->GetKeySample(std::min(lastOfTrack, NextSample()));
}

/// Feeds samples from `next` on until the wanted frame comes out or is missing.
template <typename T>
CxAVError CxAbstractTemporalDecoder<T>::DecodeFrom(int32_t next, const Wanted& wanted) {
    for (;; ++next) {
        CxDecodeRequest request;
        request.targetTime = wanted.time;
        T* frame = nullptr;
        bool isDrained = false;
        const CxAVError status = FeedSample(next, frame, request, isDrained);
        if (status == CxAV_NEED_MORE_DATA && (isDrained || request.sampleTime > wanted.limit)) break;
        if (status != CxAV_OK && status != CxAV_NEED_MORE_DATA) return status;
        lastSample = next;
        if (status == CxAV_OK)
            if (const auto result = TakeFrame(frame, request.frameTime, wanted)) return *result;
        // No sample has a higher number: a source without an end comes to one here.
        if (next == std::numeric_limits<int32_t>::max()) break;
    }
    ForgetPosition();
    return CxAV_NEED_MORE_DATA;
}

/// Reads one sample and decodes it.
/// @param isDrained  out: there was no sample
template <typename T>
CxAVError CxAbstractTemporalDecoder<T>::FeedSample(int32_t sample, T*& frame, CxDecodeRequest& request,
                                                   bool& isDrained) {
    request.decodeTime = dataSource->GetDecodeTime(sample);
    request.sampleTime = dataSource->GetSampleTime(sample);
    const int32_t capacity = GetDataBufferSize();
    uint8_t* const buffer = GetDataBuffer();
    int32_t size = capacity;
    uint8_t* const data = dataSource->ReadSample(sample, buffer, size);
    isDrained = data == nullptr;
    // A source may tell a size that is larger than the buffer that it filled.
    return DecodeSample(data, isDrained ? 0 : LimitToBuffer(size, data, buffer, capacity), frame, request);
}

/// Becomes the owner of a frame that came out.
/// @return the request's result, or nothing if decoding goes on
template <typename T>
std::optional<CxAVError> CxAbstractTemporalDecoder<T>::TakeFrame(T* frame, int64_t time,
                                                                 const Wanted& wanted) {
    lastFrame = dataSource->GetFrameForTime(time);
    if (time != wanted.time && time >= wanted.limit) {
        KeepAside(frame);
        return CxAV_FAILED;
    }
    CacheDecodedFrame(time, frame);
    if (frameCache == nullptr) KeepAside(frame);
    if (time != wanted.time) return std::nullopt;
    return Convert(frame, wanted.image);
}

template <typename T>
CxAVError CxAbstractTemporalDecoder<T>::Convert(T* frame, Image*& image) {
    return ConvertFrameToImage(frame, image) ? CxAV_OK : CxAV_FAILED;
}

/// Flushes the decoder, which stands nowhere then. The cached frames stay.
template <typename T>
void CxAbstractTemporalDecoder<T>::ForgetPosition() {
    lastSample = lastFrame = -1;
    ReleaseAside();
    Flush();
}

template <typename T>
void CxAbstractTemporalDecoder<T>::CacheDecodedFrame(int64_t time, T* frame) {
    if (frameCache == nullptr) return;
    if (Cache() == nullptr || !Cache()->CacheDecodedFrame(time, frame)) KeepAside(frame);
}

template <typename T>
bool CxAbstractTemporalDecoder<T>::FindCachedFrame(int64_t time, T*& frame) {
    return Cache() != nullptr && Cache()->UseCachedFrame(time, frame);
}

template <typename T>
void CxAbstractTemporalDecoder<T>::ClearCachedFrames() {
    if (Cache() != nullptr) Cache()->ClearCache();
    ReleaseAside();
}

template <typename T>
void CxAbstractTemporalDecoder<T>::ReleaseFrameCache() {
    ReleaseAside();
    if (MadeTheCache()) frameCache->cache.reset();
    frameCache.reset();
}

template <typename T>
void CxAbstractTemporalDecoder<T>::KeepAside(T* frame) {
    if (std::find(aside.begin(), aside.end(), frame) != aside.end()) return;
    T*& place = aside[asideCount++ % aside.size()];
    if (place != nullptr) ReleaseDecodedFrame(place);
    place = frame;
}

/// Releases the frames kept aside, the oldest first.
template <typename T>
void CxAbstractTemporalDecoder<T>::ReleaseAside() {
    for (size_t i = 0; i < aside.size(); ++i) {
        T*& place = aside[(asideCount + i) % aside.size()];
        if (place != nullptr) ReleaseDecodedFrame(place);
        place = nullptr;
    }
}

template <typename T>
CxDecodedFramesCache<T>* CxAbstractTemporalDecoder<T>::Cache() const {
    return frameCache != nullptr ? frameCache->cache.get() : nullptr;
}

template <typename T>
bool CxAbstractTemporalDecoder<T>::MadeTheCache() const {
    return frameCache != nullptr && frameCache->maker == this;
}

/// The sample after the last one that was fed.
template <typename T>
int32_t CxAbstractTemporalDecoder<T>::NextSample() const {
    return CxSampleAt(lastSample, 1);
}
