// The decoding side of WMFCodec.

#include "codecs/SampleBlobs.h"
#include "codecs/WMFAnnexB.h"
#include "codecs/WMFCodec.h"
#include "codecs/WMFSamples.h"
#include "codecs/WMFTimes.h"
#include "codecs/WMFTransform.h"
#include "framework/CatchAll.h"
#include "pixel/PixelConvert.h"

#include <algorithm>
#include <limits>
#include <span>
#include <utility>

namespace CxWMF {

namespace {

/// A track's sample as the decoder takes it. A time of 0 counts as unknown. Kept.
HRESULT NewTrackSample(std::span<const uint8_t> data, int64_t time, WMFPointer<IMFSample>& sample) {
    WMFPointer<IMFMediaBuffer> buffer;
    if (const HRESULT result = NewBuffer(data.size(), buffer); FAILED(result)) return result;
    {
        const WMFBufferLock lock(*buffer);
        if (lock.Room().size() < data.size()) return E_OUTOFMEMORY;
        const std::span<uint8_t> copy = lock.Room().first(data.size());
        std::ranges::copy(data, copy.begin());
        AnnexBFromLengthPrefixes(copy);
    }
    const HRESULT result = NewInputSample(*buffer, static_cast<DWORD>(data.size()), sample);
    if (FAILED(result) || time == 0) return result;
    constexpr LONGLONG oneSecond = 10000000;
    sample->SetSampleTime(TicksOf(time));
    sample->SetSampleDuration(oneSecond);
    return result;
}

HRESULT Feed(const WMFTransform& transform, const uint8_t* data, int32_t size, int64_t time) {
    if (data == nullptr || size < 0) return E_INVALIDARG;
    WMFPointer<IMFSample> sample;
    const HRESULT result = NewTrackSample({data, static_cast<size_t>(size)}, time, sample);
    return FAILED(result) ? result : transform.Give(*sample);
}

/// The time of a frame in milliseconds; 0 for one that has none.
int64_t TimeOf(IMFSample& frame) {
    LONGLONG time = 0;
    LONGLONG duration = 0;
    const bool hasTime = SUCCEEDED(frame.GetSampleTime(&time));
    // Nothing needs it. Kept.
    frame.GetSampleDuration(&duration);
    return hasTime ? MillisecondsOf(time) : 0;
}

} // namespace

/// Gives the decoder the stream's parameter sets, which it may refuse.
CxAVError WMFCodec::FeedExtraData() {
    WMFPointer<IMFSample> sample;
    if (FAILED(NewTrackSample(extraData, 0, sample))) return CxAV_FAILED;
    transform->Give(*sample);
    return CxAV_OK;
}

CxAVError WMFCodec::DecodeSample(uint8_t* data, int32_t size, IMFSample*& frame, CxDecodeRequest& request) {
    frame = nullptr;
    if (!transform->IsFound()) return lastError = CxAV_UNSUPPORTED;
    const auto feedTwice = [&] {
        return Twice([&] { return Feed(*transform, data, size, request.sampleTime); });
    };
    HRESULT fed = S_OK;
    if (size != 0) {
        fed = feedTwice();
    } else {
        transform->Tell(MFT_MESSAGE_NOTIFY_END_OF_STREAM);
        transform->Tell(MFT_MESSAGE_COMMAND_DRAIN);
    }
    const bool isHungry = CollectFrames(frame, request) == MF_E_TRANSFORM_NEED_MORE_INPUT;
    if (fed == MF_E_NOTACCEPTING && isHungry) feedTwice();
    if (frame != nullptr) return lastError = CxAV_OK;
    return lastError = isHungry && size != 0 ? CxAV_NEED_MORE_DATA : CxAV_INVALID_STATE;
}

/// Takes all frames that are ready: the wanted one into `frame`, the others into the cache.
/// @return the decoder's result with which it ended
int32_t WMFCodec::CollectFrames(IMFSample*& frame, CxDecodeRequest& request) {
    // More than any decoder holds. One that goes on without an end, or changes its stream for ever, ends
    // here.
    constexpr int mostRounds = 256;
    DWORD size = 0;
    if (const HRESULT result = transform->OutputSize(size); FAILED(result)) return result;
    for (int round = 0; round < mostRounds; ++round) {
        WMFOutputSample output;
        if (const HRESULT made = NewOutputSample(size, output); FAILED(made)) return made;
        const HRESULT result = transform->Fill(output.sample);
        if (result == MF_E_TRANSFORM_STREAM_CHANGE) {
            transform->RenewOutputType();
            if (const HRESULT asked = transform->OutputSize(size); FAILED(asked)) return asked;
        } else if (FAILED(result)) {
            return result;
        } else {
            KeepFrame(output.sample.release(), frame, request);
        }
    }
    return E_FAIL;
}

/// Becomes the owner of a frame that came out.
void WMFCodec::KeepFrame(IMFSample* sample, IMFSample*& frame, CxDecodeRequest& request) {
    const int64_t time = TimeOf(*sample);
    if (time == request.targetTime) {
        // Of several frames of this time the last one counts.
        std::swap(frame, sample);
        request.frameTime = time;
    } else {
        CacheDecodedFrame(time, sample);
        // Once the cache was given up nobody else takes it.
        if (frameCache != nullptr) sample = nullptr;
    }
    ReleaseDecodedFrame(sample);
}

void WMFCodec::ReleaseDecodedFrame(IMFSample*& frame) {
    if (frame != nullptr) frame->Release();
    frame = nullptr;
}

bool WMFCodec::ConvertFrameToImage(IMFSample* frame, Image*& image) {
    if (frame == nullptr || image == nullptr) return false;
    const WMFPointer<IMFMediaBuffer> buffer = ContentOf(*frame);
    if (buffer == nullptr) return false;
    const WMFBufferLock lock(*buffer);
    const std::span<uint8_t> picture = lock.Content();
    if (picture.empty()) return false;
    // Decoders give whole macroblocks.
    constexpr uint32_t macroblock = 16;
    const uint32_t codedWidth = (frameWidth + macroblock - 1) & ~(macroblock - 1);
    const uint32_t packing = GetPixelFormat();
    const int32_t rowBytes = PixelConvert::CalcRowBytes(packing, codedWidth);
    const size_t size = std::min<size_t>(picture.size(), std::numeric_limits<int32_t>::max());
    if (!HoldsImage(static_cast<int32_t>(size), packing, rowBytes, *image)) return false;
    // The host's row threads throw where memory is short.
    return CatchAll(false, [&] {
        // A refusal, as of rows too short for the image, is not looked at. Kept.
        PixelConvert::BlobToImage(picture.data(), static_cast<uint32_t>(rowBytes), packing, image);
        return true;
    });
}

} // namespace CxWMF
