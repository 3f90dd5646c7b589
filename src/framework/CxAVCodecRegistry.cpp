#include "framework/CxAVCodecRegistry.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace {

/// The registry between its construction and its teardown. Initialised before any code runs.
constinit std::atomic<CxAVCodecRegistry*> instance{nullptr};

} // namespace

CxAVCodecRegistry::CxAVCodecRegistry() { instance = this; }

CxAVCodecRegistry::~CxAVCodecRegistry() {
    instance = nullptr;
    for (CxAbstractCodecFactory* factory : factories) {
        factory->Shutdown();
        delete factory;
    }
}

CxAVCodecRegistry* CxAVCodecRegistry::getInstance() noexcept {
    static CxAVCodecRegistry registry;
    return instance;
}

bool CxAVCodecRegistry::IsRegistered(const CxAbstractCodecFactory* factory) const {
    return std::find(factories.begin(), factories.end(), factory) != factories.end();
}

CxAbstractCodecFactory* CxAVCodecRegistry::AddCodec(CxAbstractCodecFactory* factory) {
    if (factory == nullptr) return nullptr;
    std::set<uint32_t> decoderFourCCs;
    std::vector<CxEncoderInfo> rows;
    std::string name;
    const bool accepted = factory->FillCodecInfo(decoderFourCCs, rows, name);
    if (accepted) factory->name = std::move(name);

    const std::lock_guard<std::mutex> guard(lock);
    const bool isNew = !IsRegistered(factory);
    if (!accepted) {
        if (isNew) delete factory;
        return nullptr;
    }
    for (const uint32_t fourCC : decoderFourCCs)
        decoders.emplace(fourCC, factory);
    for (const CxEncoderInfo& row : rows) {
        // Equal keys keep the order of insertion, which lets the earliest factory win.
        encoders.emplace(row.name, factory);
        encoderInfos.push_back(row);
    }
    if (isNew) factories.push_back(factory);
    return factory;
}

bool CxAVCodecRegistry::CanCreateDecoder(uint32_t fourCC) {
    const CxAVCodecRegistry* registry = instance;
    return registry != nullptr && registry->decoders.contains(fourCC);
}

CxAbstractAVCodec* CxAVCodecRegistry::CreateDecoder(CxAbstractDataSource* source) {
    const CxAVCodecRegistry* registry = instance;
    if (registry == nullptr || source == nullptr) return nullptr;
    const auto [first, last] = registry->decoders.equal_range(source->GetFourCC());
    for (auto entry = first; entry != last; ++entry) {
        CxAbstractAVCodec* codec = entry->second->CreateCodec(CxAV_DECODE);
        if (codec == nullptr) continue;
        if (codec->SetDataSource(source) == CxAV_OK) return codec;
        delete codec;
    }
    return nullptr;
}

CxAbstractAVCodec* CxAVCodecRegistry::CreateEncoder(const std::string& name) {
    const CxAVCodecRegistry* registry = instance;
    if (registry == nullptr) return nullptr;
    const auto entry = registry->encoders.lower_bound(name);
    if (entry == registry->encoders.end() || entry->first != name) return nullptr;
    return entry->second->CreateCodec(CxAV_ENCODE);
}

std::vector<const CxAbstractCodecFactory*> CxAVCodecRegistry::GetDecoderFactories(uint32_t fourCC) {
    std::vector<const CxAbstractCodecFactory*> found;
    const CxAVCodecRegistry* registry = instance;
    if (registry == nullptr) return found;
    const auto [first, last] = registry->decoders.equal_range(fourCC);
    for (auto entry = first; entry != last; ++entry)
        found.push_back(entry->second);
    return found;
}

bool CxAVCodecRegistry::ListAllCodecs(bool encoders, std::vector<CxEncoderInfo>& out) {
    const CxAVCodecRegistry* registry = instance;
    if (encoders && registry != nullptr)
        out.insert(out.end(), registry->encoderInfos.begin(), registry->encoderInfos.end());
    // Rows that the caller had already count, and decoders are never listed. Kept.
    return !out.empty();
}
