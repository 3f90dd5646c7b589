#pragma once

// The interfaces of the camera maker's SDK, as far as they are called here, slot by slot. Each call gives
// `S_OK` or a failure; each out pointer to an interface, string or value hands it over to the caller, and is
// null or empty after a failure. An interface may be used by one thread at a time. The SDK keeps none of the
// pointers that it is given longer than it says.

#include "cameraraw/automation/Automation.h"

#include <cstdint>

/// A four-character code with its first character in the top byte.
constexpr uint32_t RawCode(const char (&text)[5]) {
    uint32_t code = 0;
    for (int i = 0; i < 4; ++i)
        code = code << 8 | static_cast<uint8_t>(text[i]);
    return code;
}

// Attributes of a frame.
inline constexpr uint32_t rawWhiteBalanceKelvin = RawCode("wbkv"); ///< `VT_UI4`
inline constexpr uint32_t rawWhiteBalanceTint = RawCode("wbtn");   ///< `VT_I2`
inline constexpr uint32_t rawExposure = RawCode("expo");           ///< `VT_R4`, stops
inline constexpr uint32_t rawIso = RawCode("fiso");                ///< `VT_I2`

// Attributes of a clip.
inline constexpr uint32_t rawContrast = RawCode("tcon");               ///< `VT_R4`
inline constexpr uint32_t rawSaturation = RawCode("tsat");             ///< `VT_R4`
inline constexpr uint32_t rawMidpoint = RawCode("tmid");               ///< `VT_R4`
inline constexpr uint32_t rawHighlights = RawCode("thih");             ///< `VT_R4`
inline constexpr uint32_t rawShadows = RawCode("tsha");                ///< `VT_R4`
inline constexpr uint32_t rawBlackLevel = RawCode("tblk");             ///< `VT_R4`
inline constexpr uint32_t rawWhiteLevel = RawCode("twit");             ///< `VT_R4`
inline constexpr uint32_t rawVideoBlackLevel = RawCode("tvbl");        ///< `VT_UI2`
inline constexpr uint32_t rawHighlightRecovery = RawCode("hlry");      ///< `VT_UI2`
inline constexpr uint32_t rawColorScienceGeneration = RawCode("csgn"); ///< `VT_UI2`
inline constexpr uint32_t rawGamut = RawCode("gamt");                  ///< `VT_BSTR`
inline constexpr uint32_t rawGamma = RawCode("gama");                  ///< `VT_BSTR`
inline constexpr uint32_t rawGain = RawCode("gain");                   ///< `VT_R4`
inline constexpr uint32_t rawLutMode = RawCode("lutm");                ///< `VT_BSTR`, can be set

inline constexpr uint32_t rawPipelineCpu = RawCode("cpub");
inline constexpr uint32_t rawFormatPlanar16 =
    RawCode("16pl"); ///< three planes R, G, B of native 16-bit words
inline constexpr uint32_t rawScaleFull = RawCode("full");

class RawClip;
class RawClipSettings;
class RawCodec;
class RawFrame;
class RawFrameSettings;
class RawJob;
class RawLut;
class RawMetadataIterator;
class IRavenlightRawCallback;

/// What the library begins with.
class RawFactory : public IUnknown {
public:
    virtual HRESULT CreateCodec(RawCodec** codec) = 0;

protected:
    ~RawFactory() = default;
};

/// Opens clips and runs their jobs. Has `RawConstants`, `RawExtras`, `RawPipelineSetup` and `RawManualFlow`.
class RawCodec : public IUnknown {
public:
    virtual HRESULT OpenClip(BSTR path, RawClip** clip) = 0;
    /// Sets whom finished jobs are told to; null for nobody. The codec keeps the pointer until the next call,
    /// which returns once no thread of the codec is inside the callback set before.
    virtual HRESULT SetCallback(IRavenlightRawCallback* callback) = 0;

protected:
    ~RawCodec() = default;
};

/// Which values the attributes may take for a model of camera.
class RawConstants : public IUnknown {
public:
    /// @param minimum, maximum  out: of the attribute's type; emptied without being looked at
    virtual HRESULT GetClipAttributeRange(BSTR camera, uint32_t attribute, VARIANT* minimum, VARIANT* maximum,
                                          bool* readOnly) = 0;
    /// @param values  out: the attribute's values, or null to ask for their number
    /// @param count   out: how many there are; in, with `values`: how many fit
    virtual HRESULT GetAttributeList(BSTR camera, uint32_t attribute, VARIANT* values, uint32_t* count,
                                     bool* readOnly) = 0;
    virtual HRESULT GetFrameAttributeRange(BSTR camera, uint32_t attribute, VARIANT* minimum,
                                           VARIANT* maximum, bool* readOnly) = 0;

protected:
    ~RawConstants() = default;
};

/// Nothing of it is called; a codec that lacks it is of another kind.
class RawExtras : public IUnknown {
protected:
    ~RawExtras() = default;
};

/// Says what computes the frames.
class RawPipelineSetup : public IUnknown {
public:
    /// @param context, queue  of a graphics device; null here
    virtual HRESULT SetPipeline(uint32_t pipeline, void* context, void* queue) = 0;
    virtual HRESULT SetPipelineOption(uint32_t option) = 0;

protected:
    ~RawPipelineSetup() = default;
};

/// Decodes frames step by step into memory of the caller. A frame state is a block of the caller's of which
/// the SDK knows what is in it. Memory given to a job is the job's until it has finished.
class RawManualFlow : public IUnknown {
public:
    /// Describes in `state` how a frame is to be decoded.
    virtual HRESULT FillFrameState(RawFrame* frame, RawClipSettings* clipSettings,
                                   RawFrameSettings* frameSettings, void* state, uint32_t stateSize) = 0;
    /// Bytes that a frame state takes.
    virtual HRESULT GetFrameStateSize(uint32_t* size) = 0;
    /// Bytes that a decode job and a process job write.
    virtual HRESULT GetDecodedSize(void* state, uint32_t* size) = 0;
    virtual HRESULT GetProcessedSize(void* state, uint32_t* size) = 0;
    virtual HRESULT CreateDecodeJob(void* state, void* bitstream, void* decoded, RawJob** job) = 0;
    /// @param lutTable  of `RawLut`, whose owner keeps it while the job is created, or null for none
    virtual HRESULT CreateProcessJob(void* state, void* decoded, void* processed, void* lutTable,
                                     RawJob** job) = 0;

protected:
    ~RawManualFlow() = default;
};

/// An open clip. Has `RawClipReader`.
class RawClip : public IUnknown {
public:
    virtual HRESULT GetWidth(uint32_t* width) = 0;
    virtual HRESULT GetHeight(uint32_t* height) = 0;
    virtual HRESULT GetFrameRate(float* rate) = 0;
    virtual HRESULT GetFrameCount(uint64_t* count) = 0;
    virtual HRESULT GetTimecode(uint64_t frame, BSTR* timecode) = 0;
    virtual HRESULT GetMetadataIterator(RawMetadataIterator** iterator) = 0;
    virtual HRESULT GetCameraType(BSTR* camera) = 0;
    virtual HRESULT CloneClipSettings(RawClipSettings** settings) = 0;

protected:
    ~RawClip() = default;
};

/// Reads the compressed frames of a clip.
class RawClipReader : public IUnknown {
public:
    /// Bytes that hold any frame of the clip.
    virtual HRESULT GetBitstreamBound(uint32_t* size) = 0;
    /// @param buffer  of `size` bytes, the job's until it has finished
    virtual HRESULT CreateReadJob(uint64_t frame, void* buffer, uint32_t size, RawJob** job) = 0;

protected:
    ~RawClipReader() = default;
};

/// A frame as it was read: the product of a read job. Has `RawFrameSize`.
class RawFrame : public IUnknown {
public:
    virtual HRESULT GetMetadataIterator(RawMetadataIterator** iterator) = 0;
    virtual HRESULT CloneFrameSettings(RawFrameSettings** settings) = 0;
    virtual HRESULT SetResolutionScale(uint32_t scale) = 0;
    virtual HRESULT SetResourceFormat(uint32_t format) = 0;

protected:
    ~RawFrame() = default;
};

/// The size of a frame's picture.
class RawFrameSize : public IUnknown {
public:
    virtual HRESULT GetProcessedDimensions(uint32_t* width, uint32_t* height) = 0;

protected:
    ~RawFrameSize() = default;
};

/// How one frame is processed.
class RawFrameSettings : public IUnknown {
public:
    virtual HRESULT GetAttribute(uint32_t attribute, VARIANT* value) = 0;

protected:
    ~RawFrameSettings() = default;
};

/// How the frames of a clip are processed.
class RawClipSettings : public IUnknown {
public:
    virtual HRESULT GetAttribute(uint32_t attribute, VARIANT* value) = 0;
    /// @param value  stays the caller's
    virtual HRESULT SetAttribute(uint32_t attribute, VARIANT* value) = 0;
    /// The table of the LUT mode that is set; a success may give null.
    virtual HRESULT GetLut(RawLut** lut) = 0;

protected:
    ~RawClipSettings() = default;
};

/// A table of colours.
class RawLut : public IUnknown {
public:
    /// @param table  out: for process jobs; lives as long as the object
    virtual HRESULT GetTable(void** table) = 0;

protected:
    ~RawLut() = default;
};

/// Goes through metadata; stands on the first entry at first.
class RawMetadataIterator : public IUnknown {
public:
    /// Goes to the next entry; not `S_OK` after the last.
    virtual HRESULT Next() = 0;
    virtual HRESULT GetKey(BSTR* key) = 0;
    /// @param value  out: empty before, released by the caller
    virtual HRESULT GetData(VARIANT* value) = 0;

protected:
    ~RawMetadataIterator() = default;
};

/// Work that threads of the codec do, and then tell the callback. It may be submitted again once it has
/// finished, also from the callback; its owner keeps it until then.
class RawJob : public IUnknown {
public:
    virtual HRESULT Submit() = 0;
    /// Keeps a pointer of the caller's.
    virtual HRESULT SetUserData(void* data) = 0;
    virtual HRESULT GetUserData(void** data) = 0;

protected:
    ~RawJob() = default;
};

/// Whom a codec tells of its jobs, on threads of its own. Objects passed are the callee's for the time of the
/// call.
class IRavenlightRawCallback : public IUnknown {
public:
    /// @param product  the frame, as its `IUnknown`; null if the job failed
    virtual void ReadFinished(RawJob* job, HRESULT result, IUnknown* product) = 0;
    virtual void DecodeFinished(RawJob* job, HRESULT result) = 0;
    /// @param product  the processed picture, if there is an object for it, or null
    virtual void ProcessFinished(RawJob* job, HRESULT result, IUnknown* product) = 0;
    /// @param progress  0 to 1
    virtual void Progress(RawJob* job, float progress) = 0;
    /// The end of the last kind of job, which none of the interfaces here creates.
    virtual void LastFinished(RawJob* job, HRESULT result) = 0;
    /// Notices that ask for nothing: a job left the queue, its threads have nothing to do, and a job goes on
    /// although something was not as it should be.
    virtual void JobStarted(RawJob* job) = 0;
    virtual void QueueIdle() = 0;
    virtual void JobWarning(RawJob* job, HRESULT warning) = 0;

protected:
    ~IRavenlightRawCallback() = default;
};

// Identifiers for `QueryInterface`.
inline constexpr IID IID_RawConstants = {
    0x6c1e0b52, 0x3a94, 0x4d7f, {0x9b, 0x21, 0x58, 0xe4, 0x0d, 0x7a, 0x36, 0xc1}};
inline constexpr IID IID_RawExtras = {
    0x0f93d2a7, 0x51c8, 0x4e06, {0xa4, 0x7d, 0x19, 0x62, 0xb8, 0x3f, 0xee, 0x54}};
inline constexpr IID IID_RawPipelineSetup = {
    0xd2477e19, 0x8b60, 0x42a3, {0x8e, 0xf5, 0x73, 0x0c, 0x91, 0xd6, 0x2a, 0x48}};
/// The flow of the pipeline `cpub`.
inline constexpr IID IID_RawManualFlowCpu = {
    0x37a85bc4, 0xe902, 0x4b1c, {0xb3, 0x68, 0xf1, 0x25, 0x4e, 0x97, 0x0a, 0xdd}};
/// The flow of every other pipeline.
inline constexpr IID IID_RawManualFlowDevice = {
    0xa15c6f30, 0x27de, 0x4895, {0x86, 0x0b, 0xc4, 0x7f, 0x32, 0xe8, 0x5d, 0x16}};
inline constexpr IID IID_RawClipReader = {
    0x58e20d9b, 0x74f1, 0x4c38, {0x92, 0xda, 0x0e, 0x81, 0x6b, 0xf7, 0xc5, 0x23}};
inline constexpr IID IID_RawFrameSize = {
    0xe4079a61, 0x1d35, 0x4f82, {0xad, 0x96, 0x3b, 0x5c, 0xf0, 0x48, 0x87, 0xbe}};

#pragma GCC visibility push(default)
/// The library's one export. Safe from any thread.
/// @return a new reference to the factory, or null
extern "C" RawFactory* CreateRavenlightRawFactoryInstance();
#pragma GCC visibility pop
