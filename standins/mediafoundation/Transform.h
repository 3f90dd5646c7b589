#pragma once

#include "mediafoundation/MediaType.h"

#include <utility>
#include <vector>

namespace mediafoundation {

enum class Side { Input, Output };

/// What decoder and encoder have in common: one stream on each side, numbered 0, of which one leads. Its type
/// is set first, and decides on the types of the other. A sample is given for each one taken, at once or
/// later; while there is one to be taken, none is accepted. One thread at a time.
class Transform : public Object<IMFTransform, ICodecAPI> {
public:
    HRESULT GetStreamLimits(DWORD* leastInputs, DWORD* mostInputs, DWORD* leastOutputs,
                            DWORD* mostOutputs) final;
    HRESULT GetStreamCount(DWORD* inputs, DWORD* outputs) final;
    HRESULT GetStreamIDs(DWORD, DWORD*, DWORD, DWORD*) final { return E_NOTIMPL; }
    HRESULT GetInputStreamInfo(DWORD stream, MFT_INPUT_STREAM_INFO* information) final;
    HRESULT GetOutputStreamInfo(DWORD stream, MFT_OUTPUT_STREAM_INFO* information) final;
    HRESULT GetInputAvailableType(DWORD stream, DWORD index, IMFMediaType** type) final;
    HRESULT GetOutputAvailableType(DWORD stream, DWORD index, IMFMediaType** type) final;
    HRESULT SetInputType(DWORD stream, IMFMediaType* type, DWORD flags) final;
    HRESULT SetOutputType(DWORD stream, IMFMediaType* type, DWORD flags) final;
    HRESULT GetInputCurrentType(DWORD stream, IMFMediaType** type) final;
    HRESULT GetOutputCurrentType(DWORD stream, IMFMediaType** type) final;
    HRESULT GetInputStatus(DWORD stream, DWORD* flags) final;
    HRESULT GetOutputStatus(DWORD* flags) final;
    HRESULT ProcessMessage(MFT_MESSAGE_TYPE message, ULONG_PTR parameter) final;
    HRESULT ProcessInput(DWORD stream, IMFSample* sample, DWORD flags) final;
    HRESULT ProcessOutput(DWORD flags, DWORD count, MFT_OUTPUT_DATA_BUFFER* outputs, DWORD* status) final;

    HRESULT GetAttributes(IMFAttributes**) final { return E_NOTIMPL; }
    HRESULT GetInputStreamAttributes(DWORD, IMFAttributes**) final { return E_NOTIMPL; }
    HRESULT GetOutputStreamAttributes(DWORD, IMFAttributes**) final { return E_NOTIMPL; }
    HRESULT DeleteInputStream(DWORD) final { return E_NOTIMPL; }
    HRESULT AddInputStreams(DWORD, DWORD*) final { return E_NOTIMPL; }
    HRESULT SetOutputBounds(LONGLONG, LONGLONG) final { return E_NOTIMPL; }
    HRESULT ProcessEvent(DWORD, IMFMediaEvent*) final { return E_NOTIMPL; }

    // Properties are 32-bit numbers; they count when the type of the leading side is set.
    HRESULT IsSupported(const GUID* property) final;
    HRESULT SetValue(const GUID* property, VARIANT* value) final;
    HRESULT IsModifiable(const GUID* property) final { return IsSupported(property); }

    HRESULT GetParameterRange(const GUID*, VARIANT*, VARIANT*, VARIANT*) final { return E_NOTIMPL; }
    HRESULT GetParameterValues(const GUID*, VARIANT**, ULONG*) final { return E_NOTIMPL; }
    HRESULT GetDefaultValue(const GUID*, VARIANT*) final { return E_NOTIMPL; }
    HRESULT GetValue(const GUID*, VARIANT*) final { return E_NOTIMPL; }
    HRESULT RegisterForEvent(const GUID*, LONG_PTR) final { return E_NOTIMPL; }
    HRESULT UnregisterForEvent(const GUID*) final { return E_NOTIMPL; }
    HRESULT SetAllDefaults() final { return E_NOTIMPL; }
    HRESULT SetValueWithNotify(const GUID*, VARIANT*, GUID**, ULONG*) final { return E_NOTIMPL; }
    HRESULT SetAllDefaultsWithNotify(GUID**, ULONG*) final { return E_NOTIMPL; }
    HRESULT GetAllSettings(IStream*) final { return E_NOTIMPL; }
    HRESULT SetAllSettings(IStream*) final { return E_NOTIMPL; }
    HRESULT SetAllSettingsWithNotify(IStream*, GUID**, ULONG*) final { return E_NOTIMPL; }

protected:
    explicit Transform(Side leading) : leading_(leading) {}

    // What they differ in; each may throw std::bad_alloc.

    /// A type that `side` takes, or null if there is none of this index. Asked for the side that doesn't lead
    /// once the other has its type.
    virtual Held<MediaType> AvailableType(Side side, DWORD index) = 0;
    /// Prepares for a type, or refuses it. Asked as above.
    virtual HRESULT PrepareFor(Side side, IMFMediaType& type) = 0;
    /// Takes a sample. Asked while both types are set and there is no output.
    virtual HRESULT Take(IMFSample& sample) = 0;
    /// Fills a sample; asked while there is output. Stream changes come from here too.
    virtual HRESULT Give(IMFSample& sample) = 0;
    virtual bool HasOutput() const = 0;
    /// Bytes that an output sample needs.
    virtual DWORD OutputBytes() const = 0;
    /// Turns what was taken into output.
    virtual void Drain() = 0;
    /// Drops what was taken, and the output.
    virtual void Flush() = 0;
    virtual bool KnowsProperty(REFGUID property) const = 0;

    /// Unsets a type.
    void Unset(Side side) { TypeOf(side).reset(); }
    /// A property, or another number if it isn't set.
    UINT32 Property(REFGUID property, UINT32 otherwise) const;

private:
    Held<MediaType>& TypeOf(Side side) { return side == Side::Input ? inputType_ : outputType_; }
    bool IsOpen(Side side) { return side == leading_ || TypeOf(leading_) != nullptr; }
    bool IsSetUp() const { return inputType_ != nullptr && outputType_ != nullptr; }
    HRESULT GiveAvailableType(Side side, DWORD stream, DWORD index, IMFMediaType** type);
    HRESULT GiveCurrentType(Side side, DWORD stream, IMFMediaType** type);
    HRESULT SetType(Side side, DWORD stream, IMFMediaType* type, DWORD flags);

    Side leading_;
    Held<MediaType> inputType_;
    Held<MediaType> outputType_;
    std::vector<std::pair<GUID, UINT32>> properties_;
};

} // namespace mediafoundation
