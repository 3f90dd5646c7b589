// Libraries that the module is linked with. FFmpeg is found at run time, so a machine without it loads the
// module.

#include "framework/CxAVCodecRegistry.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <link.h>
#include <string>
#include <vector>

namespace {

/// The names in the module's list of needed libraries.
std::vector<std::string> NeededLibraries() {
    Dl_info info = {};
    link_map* module = nullptr;
    const auto address = reinterpret_cast<const void*>(&CxAVCodecRegistry::getInstance);
    if (dladdr1(address, &info, reinterpret_cast<void**>(&module), RTLD_DL_LINKMAP) == 0) return {};
    const char* strings = nullptr;
    for (const ElfW(Dyn)* entry = module->l_ld; entry->d_tag != DT_NULL; ++entry)
        if (entry->d_tag == DT_STRTAB) strings = reinterpret_cast<const char*>(entry->d_un.d_ptr);
    std::vector<std::string> names;
    for (const ElfW(Dyn)* entry = module->l_ld; entry->d_tag != DT_NULL; ++entry)
        if (entry->d_tag == DT_NEEDED) names.push_back(strings + entry->d_un.d_val);
    return names;
}

bool Has(const std::vector<std::string>& names, const std::string& start) {
    for (const std::string& name : names)
        if (name.starts_with(start)) return true;
    return false;
}

TEST(NeededLibraries, TheHostIsAmongThem) { EXPECT_TRUE(Has(NeededLibraries(), "libcorvexsystem.so")); }

TEST(NeededLibraries, FFmpegIsNotAmongThem) {
    const std::vector<std::string> names = NeededLibraries();
    EXPECT_FALSE(Has(names, "libav"));
    EXPECT_FALSE(Has(names, "libsw"));
}

TEST(NeededLibraries, TheCameraMakersSdkIsNotAmongThem) {
    EXPECT_FALSE(Has(NeededLibraries(), "libRavenlightRawAPI"));
}

} // namespace
