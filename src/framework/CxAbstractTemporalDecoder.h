#pragma once

#include "framework/CxAbstractAVCodec.h"
#include "framework/CxDecodedFramesCache.h"
#include "framework/Export.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

/// What a back-end is told of the sample that it decodes, and tells of the frame that came out. Times are
/// milliseconds.
struct CxDecodeRequest {
    int64_t decodeTime = 0; ///< in: decode time of the sample
    int64_t sampleTime = 0; ///< in: presentation time of the sample
    int64_t targetTime = 0; ///< in: presentation time of the frame that is wanted
    int64_t frameTime = 0;  ///< out: presentation time of the frame that came out
    int32_t reserved = 0;   ///< always 0
};

template <typename T>
struct CxSharedFramesCache;

/// Random access on top of a library's sequential decoder, whose frames are of type `T`. For each request it
/// takes a cached frame, goes on decoding from where it stands, or flushes and restarts at the key sample of
/// the wanted frame. Frames that come out on the way are cached.
///
/// Every frame has one owner at all times: the back-end until it gives the frame away, then this class.
///
/// A copy shares the sample buffer and the cache with its source, while the frames of the cache go on being
/// released by the object that made it: once that one gives its cache up the copies work on without one. The
/// original and its copies are driven by one thread at a time all together.
template <typename T>
class CxAbstractTemporalDecoder : public CxAbstractAVCodec {
public:
    /// Makes the cache, of `MAX_GOP_LENGTH` frames. The arguments are those of `CxAbstractAVCodec`.
    CxAbstractTemporalDecoder(CxAVOperation op, const CxAbstractCodecFactory* maker);
    CxAbstractTemporalDecoder(const CxAbstractTemporalDecoder& other);
    /// Copies; `other` stays as it is.
    CxAbstractTemporalDecoder(CxAbstractTemporalDecoder&& other);
    /// Gives up the own cache for that of `other`.
    CxAbstractTemporalDecoder& operator=(const CxAbstractTemporalDecoder& other);
    /// Copies; `other` stays as it is.
    CxAbstractTemporalDecoder& operator=(CxAbstractTemporalDecoder&& other);
    /// Releases no frame, because the back-end's `ReleaseDecodedFrame` is gone by now: a back-end calls
    /// `ReleaseFrameCache` in its own destructor. Frames of one that does not are never released.
    ~CxAbstractTemporalDecoder() override;

    /// Decodes frame `frame` into `image`. Not to be called after `ReleaseFrameCache`.
    /// @return `CxAV_INVALID_STATE` without a source, or for a frame that it does not have;
    ///         `CxAV_NEED_MORE_DATA` if the samples ended, or passed the frame by `MAX_GOP_LENGTH`, before it
    ///         came out;
    ///         `CxAV_FAILED` if the frames that came out passed it so far, or `ConvertFrameToImage` failed;
    ///         the back-end's own result if `DecodeSample` failed
    CxAVError GetDecodedFrame(int32_t frame, Image*& image) override;

    /// Releases one frame and sets the pointer to null. Must not use the cache, whose lock may be held.
    virtual void ReleaseDecodedFrame(T*& frame) = 0;
    /// Feeds one sample to the library's decoder and takes at most one frame from it. Frames that come out
    /// before the one that is returned go to `CacheDecodedFrame`.
    /// @param data   the sample, valid during the call; null drains the decoder
    /// @param size   bytes at `data`; 0 if `data` is null
    /// @param frame  in: null; out: the frame, which is the caller's, if the result is `CxAV_OK`
    /// @return `CxAV_OK`: `frame` and `request.frameTime` are set;
    ///         `CxAV_NEED_MORE_DATA`: no frame yet, or no more if the decoder is drained;
    ///         any other value: a failure
    virtual CxAVError DecodeSample(uint8_t* data, int32_t size, T*& frame, CxDecodeRequest& request) = 0;
    /// Copies a decoded frame, which stays the caller's, into the image and sets its metadata.
    /// @return false if it can't be converted
    virtual bool ConvertFrameToImage(T* frame, Image*& image) = 0;
    /// Gives a frame to the cache. One that the cache does not take (its time is negative or taken, or the
    /// object that made the cache is gone) is kept aside and released with the next restart, flush,
    /// `ClearCachedFrames` or `ReleaseFrameCache`, or once as many others as the cache holds were kept aside
    /// after it. After `ReleaseFrameCache` this does nothing, and the frame stays the caller's.
    virtual void CacheDecodedFrame(int64_t time, T* frame);
    /// Looks a frame up; it stays the cache's.
    /// @return whether there is a frame of that time; false without a cache
    virtual bool FindCachedFrame(int64_t time, T*& frame);
    /// Releases the frames of the cache, if there is one, and those kept aside.
    virtual void ClearCachedFrames();

    /// Releases the frames kept aside and gives up the cache: the object that made it releases all its
    /// frames, a copy drops its share. May be called again, and does nothing then.
    void ReleaseFrameCache();

protected:
    int64_t lastSample = -1; ///< the last sample fed to the decoder; -1 after a flush
    int64_t lastFrame = -1;  ///< the number of the last frame that came out; -1 after a flush
    std::shared_ptr<CxSharedFramesCache<T>> frameCache; ///< null after `ReleaseFrameCache`

private:
    /// The frame that a request is for.
    struct Wanted {
        int64_t time;  ///< its presentation time
        int64_t limit; ///< a time from which on it is missing
        Image*& image; ///< what it is converted to
    };

    CxDecodedFramesCache<T>* Cache() const;
    bool MadeTheCache() const;
    int32_t NextSample() const;
    bool CanGoOn(int32_t frame, int32_t sample, int32_t key, int32_t lastOfTrack);
    void ForgetPosition();
    CxAVError DecodeFrom(int32_t next, const Wanted& wanted);
    CxAVError FeedSample(int32_t sample, T*& frame, CxDecodeRequest& request, bool& isDrained);
    std::optional<CxAVError> TakeFrame(T* frame, int64_t time, const Wanted& wanted);
    CxAVError Convert(T* frame, Image*& image);
    void KeepAside(T* frame);
    void ReleaseAside();

    /// Frames without a place in the cache, each owned until a younger one takes its place: a stream may be
    /// full of them, and memory is not. Not copied.
    std::array<T*, CxDecodedFramesCache<T>::MAX_GOP_LENGTH> aside = {};
    uint32_t asideCount = 0; ///< frames that were ever kept aside; modulo the size, the oldest one's place
};

#include "framework/CxAbstractTemporalDecoder-inl.h"

// The module makes and exports the decoders of these frame types; a program makes those of its own.
extern template class CORVEX_API CxAbstractTemporalDecoder<AVFrame>;
extern template class CORVEX_API CxAbstractTemporalDecoder<IMFSample>;
