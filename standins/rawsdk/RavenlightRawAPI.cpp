// The library's export.

#include "cameraraw/RavenlightRawAPI.h"

#include "rawsdk/Codec.h"
#include "rawsdk/ControlAccess.h"
#include "rawsdk/Object.h"

namespace {

using namespace rawsdk;

class Factory final : public Object<RawFactory> {
public:
    Factory() : Object("RawFactory.QueryInterface") {}

    HRESULT CreateCodec(RawCodec** codec) override {
        return Answer({"RawFactory.CreateCodec"}, codec, [] { return new Codec; });
    }

protected:
    IUnknown* Find(REFIID identifier) override { return identifier == IID_Control ? GetControl() : nullptr; }
};

} // namespace

RawFactory* CreateRavenlightRawFactoryInstance() {
    RawFactory* factory = nullptr;
    const HRESULT result =
        Answer({"CreateRavenlightRawFactoryInstance"}, &factory, [] { return new Factory; });
    return result == S_OK ? factory : nullptr;
}
