#pragma once

#include "framework/CxAbstractAVCodec.h"

#include <map>
#include <mutex>

/// The one place where a track's FourCC or an encoder's display name turns into a codec object.
///
/// Filled while the module loads and read afterwards: look-ups take no lock, so `AddCodec` must not run
/// beside them. The object lives from the first `getInstance` to the end of the process, when each factory is
/// shut down and deleted in the order of registration. From then on every look-up gives the empty answer.
class CxAVCodecRegistry {
public:
    /// The registry, built on the first call; null once it is torn down. Safe from any thread. The process is
    /// aborted if it can't be built.
    CORVEX_API static CxAVCodecRegistry* getInstance() noexcept;

    /// Registers a factory, which the registry owns from then on. Adding one again enters its codes and rows
    /// again; it stays one factory, also if it refuses then. A factory may call this itself, from its
    /// `FillCodecInfo` or its destructor.
    /// @return the factory; null if its `FillCodecInfo` refused or threw, or if memory is short: then a new
    ///         factory was deleted, and nothing else has changed; null for null
    CORVEX_API CxAbstractCodecFactory* AddCodec(CxAbstractCodecFactory* factory);

    /// Whether any factory claims the code. Nothing is opened, so `CreateDecoder` may still fail.
    CORVEX_API static bool CanCreateDecoder(uint32_t fourCC);
    /// Opens a decoder for the source's FourCC: the first factory in order of registration whose codec opens.
    /// An `Open` that throws has failed.
    /// @return the decoder, which the caller owns, or null
    CORVEX_API static CxAbstractAVCodec* CreateDecoder(CxAbstractDataSource* source);
    /// Makes an encoder by its exact display name; the earliest factory wins. `Open` is not run.
    /// @return the encoder, which the caller owns, or null
    CORVEX_API static CxAbstractAVCodec* CreateEncoder(std::string name);
    /// Factories that claim the code, in order of registration; one that was added twice is listed twice.
    CORVEX_API static std::vector<const CxAbstractCodecFactory*> GetDecoderFactories(uint32_t fourCC);
    /// Appends all encoder rows, in order of registration, if `encoders` is true; decoders are never listed.
    /// @return whether `out` is non-empty, rows that were there before the call included
    CORVEX_API static bool ListAllCodecs(bool encoders, std::vector<CxEncoderInfo>& out);

private:
    CxAVCodecRegistry();
    ~CxAVCodecRegistry();
    CxAVCodecRegistry(const CxAVCodecRegistry&) = delete;
    CxAVCodecRegistry& operator=(const CxAVCodecRegistry&) = delete;

    /// What a factory says of itself.
    struct Claims {
        std::set<uint32_t> fourCCs;
        std::vector<CxEncoderInfo> rows;
        std::string name;
    };
    /// Enters the factory with all its claims or, if it throws, changes nothing. Takes the lock.
    void Enter(CxAbstractCodecFactory* factory, Claims claims);
    /// Whether the factory is registered. Takes the lock.
    bool Owns(const CxAbstractCodecFactory* factory);
    /// The same for a caller that holds the lock.
    bool IsRegistered(const CxAbstractCodecFactory* factory) const;

    std::mutex lock; ///< guards all below; taken by `AddCodec` only
    std::multimap<uint32_t, CxAbstractCodecFactory*> decoders;
    std::multimap<std::string, CxAbstractCodecFactory*> encoders;
    std::vector<CxEncoderInfo> encoderInfos;
    std::vector<CxAbstractCodecFactory*> factories; ///< each once; owned
};
