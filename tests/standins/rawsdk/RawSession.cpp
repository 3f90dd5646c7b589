#include "standins/rawsdk/RawSession.h"

#include <gtest/gtest.h>

#include <random>
#include <stdlib.h>

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "rawsdk-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() { std::filesystem::remove_all(path_); }

void Callback::ReadFinished(RawJob*, HRESULT result, IUnknown* product) { Add("read", result, product); }
void Callback::DecodeFinished(RawJob*, HRESULT result) { Add("decode", result, nullptr); }
void Callback::ProcessFinished(RawJob*, HRESULT result, IUnknown* product) {
    Add("process", result, product);
}
void Callback::Progress(RawJob*, float) { Add("progress"); }
void Callback::LastFinished(RawJob*, HRESULT result) { Add("last", result, nullptr); }
void Callback::JobStarted(RawJob*) { Add("started"); }
void Callback::QueueIdle() { Add("idle"); }
void Callback::JobWarning(RawJob*, HRESULT) { Add("warning"); }

void Callback::Add(const char* kind, HRESULT result, IUnknown* product) {
    if (product != nullptr) product->AddRef();
    const std::scoped_lock lock(mutex_);
    finished_.push_back({kind, result, Held<IUnknown>(product), std::this_thread::get_id()});
    added_.notify_all();
}

void Callback::Add(const char* notice) {
    const std::scoped_lock lock(mutex_);
    notices_.emplace_back(notice);
}

Finished Callback::Wait() {
    std::unique_lock lock(mutex_);
    added_.wait(lock, [&] { return !finished_.empty(); });
    Finished first = std::move(finished_.front());
    finished_.erase(finished_.begin());
    return first;
}

std::vector<std::string> Callback::Notices() {
    const std::scoped_lock lock(mutex_);
    return notices_;
}

rawsdk::Control& SdkControl() {
    // Asked for once, as asking is a call that is recorded itself.
    static auto* const control = [] {
        const Held<RawFactory> factory(CreateRavenlightRawFactoryInstance());
        return Query<rawsdk::Control>(factory.Get(), rawsdk::IID_Control).Get();
    }();
    return *control;
}

RawSession::RawSession() : factory(CreateRavenlightRawFactoryInstance()) {
    EXPECT_EQ(factory->CreateCodec(codec.Receive()), S_OK);
    const auto setup = Query<RawPipelineSetup>(codec.Get(), IID_RawPipelineSetup);
    EXPECT_EQ(setup->SetPipelineOption(0), S_OK);
    EXPECT_EQ(setup->SetPipeline(rawPipelineCpu, nullptr, nullptr), S_OK);
    flow = Query<RawManualFlow>(codec.Get(), IID_RawManualFlowCpu);
    EXPECT_TRUE(flow);
    EXPECT_EQ(codec->SetCallback(&callback), S_OK);
}

RawSession::~RawSession() {
    settings.Release();
    reader.Release();
    clip.Release();
    flow.Release();
    codec->SetCallback(nullptr);
    codec.Release();
    factory.Release();
    EXPECT_EQ(SdkControl().LiveObjects(), 0u);
    SdkControl().Reset();
}

HRESULT RawSession::Open(const std::string& path) {
    settings.Release();
    reader.Release();
    const HRESULT result = codec->OpenClip(BstrHolder(path).Get(), clip.Receive());
    if (result != S_OK || !clip) return result;
    reader = Query<RawClipReader>(clip.Get(), IID_RawClipReader);
    return clip->CloneClipSettings(settings.Receive());
}

Finished RawSession::Run(RawJob* job) {
    const HRESULT result = job->Submit();
    if (result != S_OK) return {"", result, {}, {}};
    return callback.Wait();
}

Finished RawSession::Read(uint64_t frame) {
    uint32_t bound = 0;
    HRESULT result = reader->GetBitstreamBound(&bound);
    bitstream.assign(bound, 0);
    Held<RawJob> job;
    if (result == S_OK) result = reader->CreateReadJob(frame, bitstream.data(), bound, job.Receive());
    return job ? Run(job.Get()) : Finished{"", result, {}, {}};
}

Held<RawFrame> RawSession::ReadyFrame(uint64_t frame) {
    Finished read = Read(frame);
    failure = read.result;
    if (!read.product) return {};
    // The product is handed over as its first interface.
    auto* const ready = static_cast<RawFrame*>(read.product.Get());
    ready->AddRef();
    ready->SetResourceFormat(rawFormatPlanar16);
    ready->SetResolutionScale(rawScaleFull);
    return Held<RawFrame>(ready);
}

HRESULT RawSession::Fill(RawFrame* frame) {
    uint32_t size = 0;
    flow->GetFrameStateSize(&size);
    state.assign(size, 0);
    Held<RawFrameSettings> frameSettings;
    frame->CloneFrameSettings(frameSettings.Receive());
    const HRESULT result =
        flow->FillFrameState(frame, settings.Get(), frameSettings.Get(), state.data(), size);
    if (result != S_OK) return result;
    flow->GetDecodedSize(state.data(), &size);
    decoded.assign(size / sizeof(uint16_t), 0);
    flow->GetProcessedSize(state.data(), &size);
    processed.assign(size / sizeof(uint16_t), 0);
    return S_OK;
}

Words RawSession::Decode(uint64_t number) {
    const Held<RawFrame> frame = ReadyFrame(number);
    if (!frame) return {};
    failure = Fill(frame.Get());
    if (failure != S_OK) return {};
    Held<RawLut> lut;
    void* table = nullptr;
    if (settings->GetLut(lut.Receive()) == S_OK && lut) lut->GetTable(&table);
    Held<RawJob> job;
    failure = flow->CreateDecodeJob(state.data(), bitstream.data(), decoded.data(), job.Receive());
    if (failure == S_OK) failure = Run(job.Get()).result;
    if (failure != S_OK) return {};
    failure = flow->CreateProcessJob(state.data(), decoded.data(), processed.data(), table, job.Receive());
    if (failure == S_OK) failure = Run(job.Get()).result;
    return failure == S_OK ? processed : Words{};
}

std::vector<uint16_t> RandomSamples(const rawsdk::ClipProperties& properties, uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<uint16_t> samples(size_t{properties.width} * properties.height);
    for (uint16_t& sample : samples)
        sample = random() & 0xFFF;
    return samples;
}

rawsdk::ClipProperties SizedClip(uint32_t width, uint32_t height) {
    rawsdk::ClipProperties properties;
    properties.width = width;
    properties.height = height;
    return properties;
}

void WriteClip(const std::string& path, const rawsdk::ClipProperties& properties,
               const std::vector<rawsdk::FrameProperties>& frames) {
    rawsdk::ClipWriter writer(path, properties);
    for (uint32_t i = 0; i < frames.size(); ++i)
        writer.Add(frames[i], RandomSamples(properties, i));
    writer.Finish();
}
