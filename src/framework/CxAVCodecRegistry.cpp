#include "framework/CxAVCodecRegistry.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <memory>
#include <utility>

namespace {

/// The registry between its construction and its teardown. Initialised before any code runs.
constinit std::atomic<CxAVCodecRegistry*> instance{nullptr};

using CodecPointer = std::unique_ptr<CxAbstractAVCodec>;

/// An open decoder of the factory, or null. A codec that throws is one that does not open.
CodecPointer OpenDecoder(CxAbstractCodecFactory& factory, CxAbstractDataSource* source) {
    try {
        CodecPointer codec(factory.CreateCodec(CxAV_DECODE));
        return codec != nullptr && codec->SetDataSource(source) == CxAV_OK ? std::move(codec) : nullptr;
    } catch (...) {
        return nullptr;
    }
}

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

bool CxAVCodecRegistry::Owns(const CxAbstractCodecFactory* factory) {
    const std::lock_guard<std::mutex> guard(lock);
    return IsRegistered(factory);
}

CxAbstractCodecFactory* CxAVCodecRegistry::AddCodec(CxAbstractCodecFactory* factory) {
    if (factory == nullptr) return nullptr;
    bool accepted = false;
    try {
        Claims claims;
        accepted = factory->FillCodecInfo(claims.fourCCs, claims.rows, claims.name);
        if (accepted) Enter(factory, std::move(claims));
    } catch (...) {
        accepted = false;
    }
    if (accepted) return factory;
    // The lock is not held meanwhile: what the destructor does is the back-end's.
    if (!Owns(factory)) delete factory;
    return nullptr;
}

void CxAVCodecRegistry::Enter(CxAbstractCodecFactory* factory, Claims claims) {
    decltype(decoders) newDecoders;
    for (const uint32_t fourCC : claims.fourCCs)
        newDecoders.emplace(fourCC, factory);
    decltype(encoders) newEncoders;
    for (const CxEncoderInfo& row : claims.rows)
        newEncoders.emplace(row.name, factory);

    const std::lock_guard<std::mutex> guard(lock);
    encoderInfos.reserve(encoderInfos.size() + claims.rows.size());
    factories.reserve(factories.size() + 1);
    // All memory is there: nothing fails from here on, so that no factory is half entered.
    factory->name = std::move(claims.name);
    // Equal keys keep the order of insertion, which lets the earliest factory win.
    decoders.merge(newDecoders);
    encoders.merge(newEncoders);
    std::move(claims.rows.begin(), claims.rows.end(), std::back_inserter(encoderInfos));
    if (!IsRegistered(factory)) factories.push_back(factory);
}

bool CxAVCodecRegistry::CanCreateDecoder(uint32_t fourCC) {
    const CxAVCodecRegistry* registry = instance;
    return registry != nullptr && registry->decoders.contains(fourCC);
}

CxAbstractAVCodec* CxAVCodecRegistry::CreateDecoder(CxAbstractDataSource* source) {
    const CxAVCodecRegistry* registry = instance;
    if (registry == nullptr || source == nullptr) return nullptr;
    const auto [first, last] = registry->decoders.equal_range(source->GetFourCC());
    for (auto entry = first; entry != last; ++entry)
        if (CodecPointer codec = OpenDecoder(*entry->second, source)) return codec.release();
    return nullptr;
}

CxAbstractAVCodec* CxAVCodecRegistry::CreateEncoder(std::string name) {
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
