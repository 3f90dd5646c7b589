#pragma once

#include "framework/CxAVCodecRegistry.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A code that no other caller of this function has; the registry is one for the process.
inline uint32_t NewFourCC() {
    static uint32_t next = FourCC("~000");
    return next++;
}

/// An encoder row with a name and the code that the file carries.
inline CxEncoderInfo EncoderRow(const std::string& name, uint32_t fourCC = 0) {
    CxEncoderInfo row;
    row.name = name;
    row.fourCC = fourCC;
    return row;
}

/// What a fake back-end does, and what was done with it. Outlives the factory, which the registry owns.
struct FakeBackEnd {
    std::set<uint32_t> fourCCs;
    std::vector<CxEncoderInfo> rows;
    std::string name = "Fake";
    bool accepts = true;
    bool makesCodecs = true;
    CxAVError openResult = CxAV_OK;
    std::function<void()> onFill;    ///< run by `FillCodecInfo`, once it has given everything
    std::function<void()> onOpen;    ///< run by `Open`
    std::function<void()> onDeleted; ///< run by the factory's destructor

    int factoriesDeleted = 0;
    int codecsMade = 0;
    int codecsDeleted = 0;
    int opens = 0;
    CxAVOperation lastOperation = {};
};

class FakeCodec : public CxAbstractAVCodec {
public:
    FakeCodec(CxAVOperation op, const CxAbstractCodecFactory* maker, std::shared_ptr<FakeBackEnd> fake)
        : CxAbstractAVCodec(op, maker), backEnd(std::move(fake)) {
        ++backEnd->codecsMade;
        backEnd->lastOperation = op;
    }
    ~FakeCodec() override { ++backEnd->codecsDeleted; }

    CxAVError GetDecodedFrame(int32_t, Image*&) override { return CxAV_NEED_MORE_DATA; }
    int32_t GetWidth() override { return 0; }
    int32_t GetHeight() override { return 0; }
    CxAVError Open() override {
        ++backEnd->opens;
        if (backEnd->onOpen) backEnd->onOpen();
        return dataSource == nullptr ? CxAV_INVALID_STATE : backEnd->openResult;
    }

private:
    std::shared_ptr<FakeBackEnd> backEnd;
};

class FakeFactory : public CxAbstractCodecFactory {
public:
    explicit FakeFactory(std::shared_ptr<FakeBackEnd> fake) : backEnd(std::move(fake)) {}
    ~FakeFactory() override {
        ++backEnd->factoriesDeleted;
        if (backEnd->onDeleted) backEnd->onDeleted();
    }

    CxAbstractAVCodec* CreateCodec(CxAVOperation op) override {
        return backEnd->makesCodecs ? new FakeCodec(op, this, backEnd) : nullptr;
    }
    bool FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>& encoders,
                       std::string& givenName) override {
        decoderFourCCs.insert(backEnd->fourCCs.begin(), backEnd->fourCCs.end());
        encoders.insert(encoders.end(), backEnd->rows.begin(), backEnd->rows.end());
        givenName = backEnd->name;
        if (backEnd->onFill) backEnd->onFill();
        return backEnd->accepts;
    }

private:
    std::shared_ptr<FakeBackEnd> backEnd;
};

/// A fake back-end that claims the given codes, not yet registered.
inline std::shared_ptr<FakeBackEnd> NewBackEnd(std::set<uint32_t> fourCCs,
                                               std::vector<CxEncoderInfo> rows = {}) {
    auto backEnd = std::make_shared<FakeBackEnd>();
    backEnd->fourCCs = std::move(fourCCs);
    backEnd->rows = std::move(rows);
    return backEnd;
}

/// Registers a fake back-end; null if it refuses.
inline CxAbstractCodecFactory* Register(const std::shared_ptr<FakeBackEnd>& backEnd) {
    return CxAVCodecRegistry::getInstance()->AddCodec(new FakeFactory(backEnd));
}
