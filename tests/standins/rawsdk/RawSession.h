#pragma once

#include "rawsdk/Control.h"
#include "rawsdk/clip/ClipWriter.h"

#include "cameraraw/RavenlightRawAPI.h"
#include "cameraraw/automation/BstrText.h"

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// One reference to an object.
template <typename Type>
class Held {
public:
    Held() = default;
    explicit Held(Type* object) : object_(object) {}
    Held(Held&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Held& operator=(Held&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Held() { Release(); }

    Type* Get() const { return object_; }
    Type* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

    /// Gives the reference back, and the place for another one.
    Type** Receive() {
        Release();
        return &object_;
    }
    void Release() {
        if (object_ != nullptr) std::exchange(object_, nullptr)->Release();
    }

private:
    Type* object_ = nullptr;
};

/// Another interface of an object; empty if it has none.
template <typename Type>
Held<Type> Query(IUnknown* object, REFIID identifier) {
    void* found = nullptr;
    object->QueryInterface(identifier, &found);
    return Held<Type>(static_cast<Type*>(found));
}

/// A value that is cleared with its owner.
struct Value : VARIANT {
    Value() { VariantInit(this); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    ~Value() { VariantClear(this); }
};

/// A directory that is removed with its owner.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

/// What a callback was told of a job that has finished.
struct Finished {
    std::string kind; ///< "read", "decode" or "process"
    HRESULT result;
    Held<IUnknown> product;
    std::thread::id thread;
};

/// Collects what a codec tells.
class Callback final : public IRavenlightRawCallback {
public:
    HRESULT QueryInterface(REFIID, void**) override { return E_FAIL; }
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }
    void ReadFinished(RawJob* job, HRESULT result, IUnknown* product) override;
    void DecodeFinished(RawJob* job, HRESULT result) override;
    void ProcessFinished(RawJob* job, HRESULT result, IUnknown* product) override;
    void Progress(RawJob* job, float progress) override;
    void LastFinished(RawJob* job, HRESULT result) override;
    void JobStarted(RawJob* job) override;
    void QueueIdle() override;
    void JobWarning(RawJob* job, HRESULT warning) override;

    /// Waits for the next job that finishes.
    Finished Wait();
    /// What else was told, as "started", "idle" and "progress".
    std::vector<std::string> Notices();

private:
    void Add(const char* kind, HRESULT result, IUnknown* product);
    void Add(const char* notice);

    std::mutex mutex_; ///< guards what follows
    std::condition_variable added_;
    std::vector<Finished> finished_;
    std::vector<std::string> notices_;
};

/// The library's control.
rawsdk::Control& SdkControl();

/// A picture of planes R, G, B.
using Words = std::vector<uint16_t>;

/// The library with a codec that is set up and has a callback. Its end sees that no object is left.
class RawSession {
public:
    RawSession();
    ~RawSession();

    /// The result of opening a clip, which takes the place of the one before.
    HRESULT Open(const std::string& path);

    /// Submits a job and waits for it.
    Finished Run(RawJob* job);
    /// Reads a frame of the open clip into `bitstream`.
    Finished Read(uint64_t frame);
    /// Reads a frame and makes it ready for decoding.
    Held<RawFrame> ReadyFrame(uint64_t frame);
    /// Fills `state` for a frame and makes room for what its jobs write.
    HRESULT Fill(RawFrame* frame);
    /// Decodes and processes a frame; empty if a step fails, which `failure` then tells.
    Words Decode(uint64_t frame);

    Callback callback;
    Held<RawFactory> factory;
    Held<RawCodec> codec;
    Held<RawManualFlow> flow;
    Held<RawClip> clip;
    Held<RawClipReader> reader;
    Held<RawClipSettings> settings; ///< of the open clip
    std::vector<uint8_t> bitstream;
    std::vector<uint8_t> state;
    Words decoded;
    Words processed;
    HRESULT failure = S_OK;
};

// Clips.

/// A picture of as many samples as the properties say.
std::vector<uint16_t> RandomSamples(const rawsdk::ClipProperties& properties, uint32_t seed);
rawsdk::ClipProperties SizedClip(uint32_t width, uint32_t height);
/// Writes a clip of frames with samples from seeds 0, 1 and so on.
void WriteClip(const std::string& path, const rawsdk::ClipProperties& properties,
               const std::vector<rawsdk::FrameProperties>& frames);
