#include "host/Platform.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string LoadError(const char* name) {
    CxString error;
    EXPECT_EQ(Platform::LoadLib(name, 0, &error), nullptr);
    return error.c_str();
}

TEST(PlatformLibrary, ALibraryThatIsThereGivesItsFunctions) {
    CxString error;
    Platform::Library* const library = Platform::LoadLib("libm.so.6", 0, &error);
    ASSERT_NE(library, nullptr) << error;
    const auto cosine = reinterpret_cast<double (*)(double)>(Platform::GetFuncAddress(library, "cos"));
    ASSERT_NE(cosine, nullptr);
    EXPECT_EQ(cosine(0.0), 1.0);
    EXPECT_TRUE(error.IsEmpty());
    Platform::UnloadLib(library);
}

TEST(PlatformLibrary, AMissingFunctionIsNull) {
    Platform::Library* const library = Platform::LoadLib("libm.so.6", 0, nullptr);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(Platform::GetFuncAddress(library, "no_such_function_here"), nullptr);
    EXPECT_EQ(Platform::GetFuncAddress(library, nullptr), nullptr);
    Platform::UnloadLib(library);
}

TEST(PlatformLibrary, AMissingLibraryIsNullWithTheReason) {
    EXPECT_NE(LoadError("libNoSuchLibrary.so.9").find("libNoSuchLibrary.so.9"), std::string::npos);
    EXPECT_EQ(Platform::LoadLib("libNoSuchLibrary.so.9", 0, nullptr), nullptr);
}

TEST(PlatformLibrary, ADllNameBecomesThePlatformsOwnForm) {
    EXPECT_NE(LoadError("NoSuchCodec.dll").find("libNoSuchCodec.so:"), std::string::npos);
    EXPECT_NE(LoadError("NoSuchCodec.DLL").find("libNoSuchCodec.so:"), std::string::npos);
    EXPECT_NE(LoadError("avcodec-99.dll").find("libavcodec-99.so:"), std::string::npos);
}

TEST(PlatformLibrary, ADllPathKeepsItsDirectory) {
    EXPECT_NE(LoadError("/no/such.dir/NoSuchCodec.dll").find("/no/such.dir/libNoSuchCodec.so:"),
              std::string::npos);
}

TEST(PlatformLibrary, ABackslashIsPartOfALibrarysName) {
    EXPECT_NE(LoadError("no\\NoSuchCodec.dll").find("libno\\NoSuchCodec.so:"), std::string::npos);
}

TEST(PlatformLibrary, OtherNamesStayAsTheyAre) {
    for (const char* name : {"NoSuchCodec.so", "libNoSuchCodec.so.2", "NoSuchCodec", "NoSuchCodec.dll.1"}) {
        EXPECT_EQ(LoadError(name).find(name), 0u) << name;
    }
}

TEST(PlatformLibrary, AHostLibraryIsFoundByItsPlainName) {
    Platform::Library* const library = Platform::LoadLib("corvexscript.dll", 0, nullptr);
    ASSERT_NE(library, nullptr);
    EXPECT_NE(Platform::GetFuncAddress(library, "g_IsPalisade"), nullptr);
    Platform::UnloadLib(library);
}

TEST(PlatformLibrary, NoNameGivesNullWithAReason) {
    EXPECT_FALSE(LoadError("").empty());
    EXPECT_FALSE(LoadError(nullptr).empty());
}

TEST(PlatformLibrary, NullLibrariesHaveNoFunctionsAndUnloadQuietly) {
    EXPECT_EQ(Platform::GetFuncAddress(nullptr, "cos"), nullptr);
    Platform::UnloadLib(nullptr);
}

} // namespace
