#pragma once

#include "codecs/WMFPointer.h"

namespace CxWMF {

/// A side of a transform.
enum class WMFSide { Input, Output };

/// The decoder or encoder of Media Foundation that a codec works with, if one was found. The operations
/// return what the transform does, and but for `Find`, `IsFound` and `End` want one that was found. One
/// thread at a time.
class WMFTransform {
public:
    WMFTransform() = default;
    WMFTransform(const WMFTransform&) = delete;
    WMFTransform& operator=(const WMFTransform&) = delete;
    /// Ends the transform.
    ~WMFTransform() { End(); }

    /// Makes the first transform of a category that turns the one subtype into the other.
    /// @return MF_E_TOPO_CODEC_NOT_FOUND if there is none
    HRESULT Find(REFGUID category);
    bool IsFound() const { return transform != nullptr; }
    /// Drops the transform without a word to it.
    void Drop() { transform.reset(); }
    /// Tells the transform that no more comes, and drops it; does nothing without one.
    void End();

    /// Asks for the numbers of the two streams, which is to be done first.
    HRESULT AskForStreams();
    /// Gives the first type of video of a side's subtype, for its attributes to be set.
    HRESULT FindType(WMFSide side, WMFPointer<IMFMediaType>& type) const;
    HRESULT SetType(WMFSide side, IMFMediaType& type) const;
    /// Starts the transform, which must be ready for input.
    HRESULT Begin() const;
    /// Sends a message, twice if it fails.
    HRESULT Tell(MFT_MESSAGE_TYPE message) const;
    /// Gives a sample, which the transform may keep.
    HRESULT Give(IMFSample& sample) const;
    /// Bytes that output needs.
    HRESULT OutputSize(DWORD& size) const;
    HRESULT AskForOutputStatus() const;
    /// Has a sample filled, or replaced by one of the transform's own.
    HRESULT Fill(WMFPointer<IMFSample>& sample) const;
    /// Sets the output's type again, as the transform asks for after a change of the stream. Failures show in
    /// what comes next.
    void RenewOutputType() const;
    /// The properties of the transform; none if it has none to be set.
    WMFPointer<ICodecAPI> Properties() const;

    GUID inputSubtype = {};
    GUID outputSubtype = {};

private:
    /// Whether a type is one that is looked for, of this subtype.
    using TypeTest = bool (*)(IMFMediaType& type, REFGUID subtype);

    HRESULT AvailableType(WMFSide side, DWORD index, WMFPointer<IMFMediaType>& type) const;
    HRESULT FirstType(WMFSide side, TypeTest isWanted, WMFPointer<IMFMediaType>& type) const;

    WMFPointer<IMFTransform> transform;
    DWORD inputStream = 0;
    DWORD outputStream = 0;
};

} // namespace CxWMF
