// The encoding side of WMFCodec.

#include "codecs/WMFAnnexB.h"
#include "codecs/WMFCodec.h"
#include "codecs/WMFConfigRecords.h"
#include "codecs/WMFSamples.h"
#include "codecs/WMFTimes.h"
#include "codecs/WMFTransform.h"
#include "framework/CatchAll.h"
#include "host/Image.h"
#include "host/Platform.h"
#include "pixel/PixelConvert.h"

#include <algorithm>
#include <limits>
#include <span>
#include <utility>

namespace CxWMF {

namespace {

/// Times of the encoder begin here, in milliseconds, and those that are told at 0.
constexpr double startTime = 100000;

bool IsSizeEncoded(const Image& image) {
    constexpr int32_t most = std::numeric_limits<uint16_t>::max();
    return image.Width >= 0 && image.Width <= most && image.Height >= 0 && image.Height <= most;
}

/// The image as the encoder takes it.
CxAVError NewPicture(Image*& image, uint32_t packing, WMFPointer<IMFMediaBuffer>& buffer, DWORD& size) {
    const int32_t rowBytes = PixelConvert::CalcRowBytes(packing, static_cast<uint32_t>(image->Width));
    const uint64_t bytes = static_cast<uint64_t>(rowBytes) * static_cast<uint64_t>(image->Height);
    if (FAILED(NewBuffer(bytes, buffer))) return CxAV_UNSUPPORTED;
    const WMFBufferLock lock(*buffer);
    if (lock.Room().size() < bytes) return CxAV_UNSUPPORTED;
    size = static_cast<DWORD>(bytes);
    // Without pixels there may be no memory, and nothing is to be converted.
    if (size == 0) return CxAV_OK;
    // A conversion that finds no memory leaves the picture as it is, which then isn't what was there before.
    std::ranges::fill(lock.Room().first(size), uint8_t{0});
    uint8_t* pixels = lock.Room().data();
    const bool isConverted =
        PixelConvert::ImageToBlob(image, static_cast<int32_t>(packing), rowBytes, pixels, false);
    return isConverted ? CxAV_OK : CxAV_INVALID_STATE;
}

void ReadTiming(IMFSample& sample, uint32_t encodedBefore, CxEncodedTiming& timing) {
    UINT32 cleanPoint = 0;
    LONGLONG time = 0;
    LONGLONG duration = 0;
    if (FAILED(sample.GetUINT32(MFSampleExtension_CleanPoint, &cleanPoint))) cleanPoint = 0;
    if (FAILED(sample.GetSampleTime(&time))) time = 0;
    if (FAILED(sample.GetSampleDuration(&duration))) duration = 0;
    const float milliseconds = static_cast<float>(duration) / static_cast<float>(ticksPerMillisecond);
    timing.presentationTime =
        Truncated(static_cast<double>(time) / static_cast<double>(ticksPerMillisecond) - startTime);
    timing.duration = Truncated(milliseconds);
    timing.decodeTime = WrappingProduct(encodedBefore, timing.duration);
    timing.timeBase = 32;
    timing.isKeyFrame = cleanPoint == 1;
}

/// Turns what the encoder gave into memory of the caller's. Without any it is false, and allocates nothing.
bool MakeFrame(IMFSample& sample, uint8_t*& data, uint32_t& size) {
    const WMFPointer<IMFMediaBuffer> buffer = ContentOf(sample);
    if (buffer == nullptr) return false;
    const WMFBufferLock lock(*buffer);
    const std::span<const uint8_t> stream = lock.Content();
    if (stream.empty()) return false;
    // For start codes that are shorter than lengths.
    constexpr size_t extraBytes = 1024;
    constexpr int alignment = 4096;
    const size_t capacity = stream.size() + extraBytes;
    auto* const block =
        static_cast<uint8_t*>(Platform::AllocMemAligned(static_cast<int64_t>(capacity), alignment));
    if (block == nullptr) return false;
    data = block;
    size = static_cast<uint32_t>(LengthPrefixesFromAnnexB(stream, {block, capacity}));
    return true;
}

} // namespace

CxAVError WMFCodec::SetEncoderSettings(CxVideoSettings& given) {
    if (operation != CxAV_ENCODE) return lastError = CxAV_INVALID_STATE;
    lastError = CatchAll(CxAV_FAILED, [&] { return MakeEncoder(given); });
    // Memory may have run out once the encoder had begun.
    if (lastError != CxAV_OK) transform->End();
    return lastError;
}

CxAVError WMFCodec::MakeEncoder(CxVideoSettings& given) {
    settings = given;
    frameWidth = static_cast<uint16_t>(given.width);
    frameHeight = static_cast<uint16_t>(given.height);
    extraData.clear();
    encodedIn = 0;
    encodedOut = 0;
    lastError = CxAV_OK;
    const CxAVError result = SetupTransform();
    if (result != CxAV_OK) return result;
    std::vector<uint8_t> record = AvcRecordFromAnnexB(extraData);
    if (!record.empty()) given.extraData = std::move(record);
    return CxAV_OK;
}

CxAVError WMFCodec::EncodeFrame(Image*& image, CxEncodedFrame& frame) {
    frame.data = nullptr;
    frame.size = 0;
    if (image != nullptr) {
        if (!IsSizeEncoded(*image)) return lastError = CxAV_INVALID_STATE;
        frameWidth = static_cast<uint16_t>(image->Width);
        frameHeight = static_cast<uint16_t>(image->Height);
    }
    uint8_t* data = nullptr;
    uint32_t size = 0;
    const CxAVError result = EncodeSample(image, data, size, frame.timing);
    // The encoder holds the first images back. Only the last error tells it. Kept.
    if (result == CxAV_NEED_MORE_DATA) return CxAV_OK;
    if (result != CxAV_OK) return result;
    frame.data = data;
    frame.size = size;
    return CxAV_OK;
}

CxAVError WMFCodec::EncodeSample(Image*& image, uint8_t*& data, uint32_t& size, CxEncodedTiming& timing) {
    size = 0;
    DWORD outputSize = 0;
    if (!transform->IsFound() || FAILED(transform->OutputSize(outputSize)))
        return lastError = CxAV_UNSUPPORTED;
    lastError = CxAV_OK;
    if (image != nullptr) {
        // The host's row threads throw where memory is short.
        lastError = CatchAll(CxAV_INVALID_STATE, [&] { return GiveImage(image); });
    } else {
        transform->Tell(MFT_MESSAGE_COMMAND_DRAIN);
    }
    if (lastError == CxAV_OK) lastError = TakeSample(data, size, timing);
    return lastError;
}

CxAVError WMFCodec::GiveImage(Image*& image) {
    if (!IsSizeEncoded(*image)) return CxAV_INVALID_STATE;
    WMFPointer<IMFMediaBuffer> buffer;
    DWORD size = 0;
    const CxAVError result = NewPicture(image, GetPixelFormat(), buffer, size);
    if (result != CxAV_OK) return result;
    WMFPointer<IMFSample> sample;
    if (FAILED(NewInputSample(*buffer, size, sample))) return CxAV_UNSUPPORTED;
    // Ticks of the time scale are taken for milliseconds. Kept.
    const double duration = settings.frameDuration;
    const double time = encodedIn * duration + startTime;
    ++encodedIn;
    sample->SetSampleTime(TicksOf(Truncated(time)));
    sample->SetSampleDuration(Truncated(duration * static_cast<double>(ticksPerMillisecond)));
    return SUCCEEDED(transform->Give(*sample)) ? CxAV_OK : CxAV_INVALID_STATE;
}

CxAVError WMFCodec::TakeSample(uint8_t*& data, uint32_t& size, CxEncodedTiming& timing) {
    DWORD outputSize = 0;
    if (FAILED(transform->AskForOutputStatus()) || FAILED(transform->OutputSize(outputSize)))
        return CxAV_FAILED;
    WMFOutputSample output;
    if (FAILED(NewOutputSample(outputSize, output))) return CxAV_FAILED;
    const HRESULT result = transform->Fill(output.sample);
    if (FAILED(result)) return result == MF_E_TRANSFORM_NEED_MORE_INPUT ? CxAV_NEED_MORE_DATA : CxAV_FAILED;
    ReadTiming(*output.sample, encodedOut, timing);
    ++encodedOut;
    return MakeFrame(*output.sample, data, size) ? CxAV_OK : CxAV_FAILED;
}

} // namespace CxWMF
