// What becomes of the factories when the process ends.

#include "framework/CxAVCodecRegistry.h"

#include "framework/FakeBackEnd.h"
#include "framework/MemoryTrackSource.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

/// Writes what happens to it to the standard error stream, where a death test reads it.
class TellingFactory : public FakeFactory {
public:
    explicit TellingFactory(const char* text)
        : FakeFactory(NewBackEnd({FourCC("tell")}, {EncoderRow("Telling encoder")})), letter(text) {}
    ~TellingFactory() override { fprintf(stderr, "delete %s;", letter); }
    void Shutdown() override {
        fprintf(stderr, "shutdown %s;", letter);
        if (FindsAnything()) fprintf(stderr, "found something;");
    }

private:
    static bool FindsAnything() {
        MemoryTrackSource source(FourCC("tell"), 4, 2, {});
        std::vector<CxEncoderInfo> rows;
        return CxAVCodecRegistry::getInstance() != nullptr ||
               CxAVCodecRegistry::CreateDecoder(&source) != nullptr ||
               CxAVCodecRegistry::CanCreateDecoder(FourCC("tell")) ||
               CxAVCodecRegistry::CreateEncoder("Telling encoder") != nullptr ||
               !CxAVCodecRegistry::GetDecoderFactories(FourCC("tell")).empty() ||
               CxAVCodecRegistry::ListAllCodecs(true, rows);
    }

    const char* letter;
};

class CxAVCodecRegistryTeardown : public testing::Test {
protected:
    void SetUp() override { testing::FLAGS_gtest_death_test_style = "threadsafe"; }

    static void AddAndExit(std::initializer_list<CxAbstractCodecFactory*> factories) {
        for (CxAbstractCodecFactory* factory : factories)
            CxAVCodecRegistry::getInstance()->AddCodec(factory);
        std::exit(0);
    }
};

TEST_F(CxAVCodecRegistryTeardown, ShutsEachFactoryDownAndDeletesItInOrderWhileLookUpsFindNothing) {
    EXPECT_EXIT(AddAndExit({new TellingFactory("A"), new TellingFactory("B")}), testing::ExitedWithCode(0),
                "^shutdown A;delete A;shutdown B;delete B;$");
}

TEST_F(CxAVCodecRegistryTeardown, AFactoryAddedTwiceIsDeletedOnce) {
    EXPECT_EXIT(
        {
            auto* const factory = new TellingFactory("A");
            AddAndExit({factory, factory});
        },
        testing::ExitedWithCode(0), "^shutdown A;delete A;$");
}

} // namespace
