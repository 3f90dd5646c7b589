#include "host/Platform.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

TEST(PlatformFile, AFileExistsAndADirectoryOrNothingDoesNot) {
    const std::filesystem::path directory = std::filesystem::path(testing::TempDir()) / "corvex-file-exists";
    std::filesystem::create_directories(directory);
    const std::filesystem::path file = directory / "file \xC3\xA9.bin";
    std::ofstream(file) << "x";
    EXPECT_TRUE(Platform::FileExists(file.c_str()));
    EXPECT_FALSE(Platform::FileExists(directory.c_str()));
    std::filesystem::remove_all(directory);
    EXPECT_FALSE(Platform::FileExists(file.c_str()));
    EXPECT_FALSE(Platform::FileExists(""));
    EXPECT_FALSE(Platform::FileExists(nullptr));
}

TEST(PlatformFile, APathIsTakenAsItIsGiven) {
    const std::filesystem::path directory = testing::TempDir();
    const std::filesystem::path library = directory / "libCorvexAsGiven.so";
    std::ofstream(library) << "x";
    EXPECT_TRUE(Platform::FileExists(library.c_str()));
    EXPECT_FALSE(Platform::FileExists((directory / "CorvexAsGiven.dll").c_str()));
    std::filesystem::remove(library);
}

TEST(EnvString, GivesTheValueAtTheTimeItWasMade) {
    setenv("CORVEX_ENVSTRING_TEST", "first", 1);
    const EnvString value("CORVEX_ENVSTRING_TEST", "default", true);
    setenv("CORVEX_ENVSTRING_TEST", "second", 1);
    EXPECT_STREQ(value, "first");
    unsetenv("CORVEX_ENVSTRING_TEST");
}

TEST(EnvString, AVariableThatIsNotSetGivesTheDefault) {
    unsetenv("CORVEX_ENVSTRING_TEST");
    EXPECT_STREQ(EnvString("CORVEX_ENVSTRING_TEST", "default", true), "default");
    EXPECT_EQ(static_cast<const char*>(EnvString("CORVEX_ENVSTRING_TEST", nullptr, true)), nullptr);
    EXPECT_EQ(static_cast<const char*>(EnvString(nullptr, nullptr, true)), nullptr);
}

TEST(EnvString, AnEmptyValueIsAValue) {
    setenv("CORVEX_ENVSTRING_TEST", "", 1);
    EXPECT_STREQ(EnvString("CORVEX_ENVSTRING_TEST", "default", true), "");
    unsetenv("CORVEX_ENVSTRING_TEST");
}

TEST(GetPathFromFileName, KeepsTheDirectoryWithItsLastSeparator) {
    EXPECT_STREQ(GetPathFromFileName("/opt/lib/file.so"), "/opt/lib/");
    EXPECT_STREQ(GetPathFromFileName("/opt/lib/"), "/opt/lib/");
    EXPECT_STREQ(GetPathFromFileName("/file"), "/");
}

TEST(GetPathFromFileName, ABackslashIsNoSeparator) {
    EXPECT_STREQ(GetPathFromFileName("dir\\sub\\file.dll"), "");
    EXPECT_STREQ(GetPathFromFileName("dir\\sub/file.dll"), "dir\\sub/");
    EXPECT_STREQ(GetPathFromFileName("/dir/sub\\file.dll"), "/dir/");
}

TEST(GetPathFromFileName, APlainNameHasNoDirectory) {
    EXPECT_STREQ(GetPathFromFileName("file.so"), "");
    EXPECT_STREQ(GetPathFromFileName(""), "");
    EXPECT_STREQ(GetPathFromFileName(nullptr), "");
}

} // namespace
