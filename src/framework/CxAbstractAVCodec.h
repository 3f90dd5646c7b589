#pragma once

#include "framework/CxAVTypes.h"
#include "framework/CxAlignedBuffer.h"
#include "framework/Export.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

class CxAbstractAVCodec;

/// One video track of one open file, implemented by the caller of the registry.
///
/// A sample is one compressed access unit, indexed in decode order from 0; a frame is a position in
/// presentation order, from 0. Times are milliseconds. A source must outlive every codec that reads it, and
/// is called from one thread at a time.
class CxAbstractDataSource {
public:
    /// Frame width in pixels.
    virtual int32_t GetWidth() = 0;
    /// Frame height in pixels.
    virtual int32_t GetHeight() = 0;
    /// Presentation time of a sample. Also called for up to 32 samples past the last one, where a time later
    /// than that of every sample is right.
    virtual int64_t GetSampleTime(int32_t sample) = 0;
    /// Number of samples.
    virtual int32_t GetSampleCount() = 0;
    /// Bytes of the largest sample; sets the size of the codec's buffer.
    virtual int32_t GetMaxSampleSize() = 0;
    /// Reads one sample.
    /// @param size  in: capacity of `buffer` in bytes; out: the sample's size
    /// @return the sample's bytes, in `buffer` or in memory of the source that is valid until the next call;
    ///         null if there is no such sample or it can't be read
    virtual uint8_t* ReadSample(int32_t sample, uint8_t* buffer, int32_t& size) = 0;
    /// The track's codec configuration bytes, which may be empty; owned by the source.
    virtual const std::vector<uint8_t>* GetCodecPrivateData() = 0;
    /// The track's code, by which the registry finds a decoder.
    virtual uint32_t GetFourCC() = 0;
    /// The sample that carries a frame; negative if there is none.
    virtual int32_t GetSampleForFrame(int32_t frame) = 0;
    /// 1 progressive; 2 top field first; 3 bottom field first; 4 top field coded first, bottom field shown
    /// first; 5 bottom field coded first, top field shown first.
    virtual int32_t GetFieldOrder() = 0;
    /// 2 full range, anything else video range.
    virtual int32_t GetColorRange() = 0;
    /// 3 BT.601, 4 SMPTE 240M, 5 BT.2020 with constant luminance, anything else BT.709.
    virtual int32_t GetColorMatrix() = 0;
    /// 2 BT.601 with 625 lines, 3 SMPTE 240M, 4 BT.2020, anything else BT.709.
    virtual int32_t GetColorPrimaries() = 0;
    /// Keeps its place in the order; no codec calls it.
    virtual int32_t GetReserved() = 0;
    /// The last key sample at or before a sample: the start of its group of pictures.
    virtual int32_t GetKeySample(int32_t sample) = 0;
    /// Decode time of a sample.
    virtual int64_t GetDecodeTime(int32_t sample) = 0;
    /// The frame whose presentation time is `time`.
    virtual int32_t GetFrameForTime(int64_t time) = 0;

    virtual ~CxAbstractDataSource() = default;
};

/// Makes the codecs of one back-end. The registry owns it from `AddCodec` on, to the end of the process if it
/// was accepted. No exception leaves any operation.
class CxAbstractCodecFactory {
public:
    /// Makes a codec for one operation; the caller owns it. Null if it can't be made.
    virtual CxAbstractAVCodec* CreateCodec(CxAVOperation op) = 0;
    /// Run once at registration: adds the codes that the back-end decodes and the encoders that it offers,
    /// and gives the factory's name. False: the back-end can't run, and the factory is dropped.
    virtual bool FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>& encoders,
                               std::string& name) = 0;
    /// Run once when the registry is torn down, before the factory is deleted.
    virtual void Shutdown() {}
    /// The name that registration gave; empty before.
    virtual const std::string& GetName() const { return name; }
    virtual ~CxAbstractCodecFactory() = default;

    std::string name; ///< empty until `CxAVCodecRegistry::AddCodec` sets it
};

/// A decoder or encoder of one track. Made by a factory, deleted by its owner; used by one thread at a time.
/// No exception leaves any operation; failures are values of `CxAVError`.
///
/// A back-end that can be copied shares its sample buffer with its copies, which are then driven by one
/// thread at a time all together; the last of them frees it.
///
/// The constructor, the destructor and the virtual operations are defined here, so that a class of another
/// binary can derive from this one although the module exports only the five members without `virtual`.
class CxAbstractAVCodec {
public:
    /// @param op     what the codec is for; fixed for its life
    /// @param maker  the factory, which gives the name and must outlive the codec; may be null
    CxAbstractAVCodec(CxAVOperation op, const CxAbstractCodecFactory* maker)
        : operation(op), factory(maker), name(maker != nullptr ? maker->name : "Unknown") {}

    /// Decodes frame `frame` into `image`, whose pixels are overwritten and which stays the caller's. Frames
    /// may be asked for in any order.
    virtual CxAVError GetDecodedFrame(int32_t frame, Image*& image) = 0;
    /// Drops all state that the decoder holds between samples; called before a seek.
    virtual void Flush() {}
    /// The factory's name, or "Unknown" for a codec without a factory.
    virtual std::string GetName() { return name; }
    /// Frame width in pixels; 0 before `Open`.
    virtual int32_t GetWidth() = 0;
    /// Frame height in pixels; 0 before `Open`.
    virtual int32_t GetHeight() = 0;
    /// Reads what it needs from the data source and prepares to decode. `CxAV_INVALID_STATE` without a
    /// source.
    virtual CxAVError Open() = 0;
    virtual ~CxAbstractAVCodec() = default;
    /// Prepares an encoder; back-ends that have one fill `settings.extraData`.
    virtual CxAVError SetEncoderSettings(CxVideoSettings& /*settings*/) { return CxAV_OK; }
    /// Encodes one image, in presentation order. An image of null drains a back-end that holds frames back.
    virtual CxAVError EncodeFrame(Image*& /*image*/, CxEncodedFrame& /*frame*/) { return CxAV_OK; }
    /// Bytes that one encoded frame aims for; 0 if the back-end gives no figure.
    virtual int32_t GetTargetFrameSize(CxVideoSettings /*settings*/) { return 0; }

    /// The sample buffer: page-aligned and of the source's `GetMaxSampleSize()`, allocated on first use and
    /// kept. Null without a source or memory.
    CORVEX_API uint8_t* GetDataBuffer();
    /// Bytes of the sample buffer, which is allocated on first use. With a buffer its size, whatever the
    /// source is now; otherwise 0 without a source or memory.
    CORVEX_API int32_t GetDataBufferSize();
    /// Stores the source, which is not owned, and returns the result of `Open`.
    CORVEX_API CxAVError SetDataSource(CxAbstractDataSource* source);
    /// The source pointer itself, through which it can be changed without `Open` being run.
    CORVEX_API CxAbstractDataSource*& getDataSource();
    /// Whether `maker` is the very factory that made this codec; null matches a codec without a factory.
    CORVEX_API bool isTypeOf(const CxAbstractCodecFactory* maker);

protected:
    /// Copies all members. There are no move forms of their own: a move copies.
    CxAbstractAVCodec(const CxAbstractAVCodec&) = default;
    CxAbstractAVCodec& operator=(const CxAbstractAVCodec&) = default;

    std::shared_ptr<uint8_t> dataBuffer; ///< shared by copies; null until first asked for
    int32_t dataBufferSize = 0;          ///< in bytes
    CxAVOperation operation;
    CxAbstractDataSource* dataSource = nullptr; ///< not owned; null for an encoder
    const CxAbstractCodecFactory* factory;      ///< not owned; may be null
    std::string name;
};

/// Factory of the back-end `T`, which offers a constructor (`CxAVOperation`, `const CxAbstractCodecFactory*`)
/// and a static `FillCodecInfo` of the same form as the factory's. A `T` with a static `Shutdown` has it run
/// when the registry is torn down; it must rely on no object with a destructor of its own that is younger
/// than the registry, because those are gone by then.
template <typename T>
class CxAVCodecFactory : public CxAbstractCodecFactory {
public:
    CxAbstractAVCodec* CreateCodec(CxAVOperation op) override {
        try {
            return new T(op, this);
        } catch (...) {
            return nullptr;
        }
    }
    bool FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>& encoders,
                       std::string& name) override {
        try {
            return T::FillCodecInfo(decoderFourCCs, encoders, name);
        } catch (...) {
            return false;
        }
    }
    void Shutdown() override {
        if constexpr (requires { T::Shutdown(); }) T::Shutdown();
    }
};
