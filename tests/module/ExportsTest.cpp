// The module's dynamic symbols are its interface families and nothing else, in every kind of build.

#include "framework/CxAVCodecRegistry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <dlfcn.h>
#include <elf.h>
#include <fstream>
#include <iterator>
#include <link.h>
#include <set>
#include <string>
#include <vector>

namespace {

using Names = std::set<std::string>;

#ifdef __clang__
bool IsOfCompleteAbstractDecoder(const std::string& name) {
    return name.starts_with("_ZN25CxAbstractTemporalDecoderI") && name.find("EC1E") != std::string::npos;
}
#endif

std::string PathOfTheModule() {
    Dl_info info = {};
    const auto address = reinterpret_cast<const void*>(&CxAVCodecRegistry::getInstance);
    return dladdr(address, &info) != 0 ? info.dli_fname : "";
}

/// A mangled name with what it stands for.
std::string Explained(const std::string& symbol) {
    int status = 0;
    char* const text = abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status);
    std::string explained = status == 0 ? symbol + ", " + text : symbol;
    std::free(text);
    return explained;
}

/// Copies the `index`-th record of a table that begins at `offset` of a file's bytes.
template <typename Record>
Record RecordAt(const std::vector<char>& file, size_t offset, size_t index) {
    Record record = {};
    const size_t start = offset + index * sizeof(Record);
    if (start + sizeof(Record) <= file.size()) std::memcpy(&record, file.data() + start, sizeof(Record));
    return record;
}

bool IsDefinedForOthers(const ElfW(Sym) & symbol) {
    return symbol.st_shndx != SHN_UNDEF && ELF64_ST_BIND(symbol.st_info) != STB_LOCAL &&
           ELF64_ST_VISIBILITY(symbol.st_other) == STV_DEFAULT;
}

/// Mangled names that an ELF file defines in its dynamic symbol table.
Names ExportedNames(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    const std::vector<char> file(std::istreambuf_iterator<char>(stream), {});
    const auto header = RecordAt<ElfW(Ehdr)>(file, 0, 0);
    Names names;
    for (size_t section = 0; section < header.e_shnum; ++section) {
        const auto symbols = RecordAt<ElfW(Shdr)>(file, header.e_shoff, section);
        if (symbols.sh_type != SHT_DYNSYM) continue;
        const auto strings = RecordAt<ElfW(Shdr)>(file, header.e_shoff, symbols.sh_link);
        for (size_t i = 0; i < symbols.sh_size / sizeof(ElfW(Sym)); ++i) {
            const auto symbol = RecordAt<ElfW(Sym)>(file, symbols.sh_offset, i);
            if (IsDefinedForOthers(symbol)) names.insert(file.data() + strings.sh_offset + symbol.st_name);
        }
    }
    return names;
}

Names ListedNames() {
    std::ifstream stream(CORVEX_SOURCE_DIR "/tests/module/exported-names.txt");
    Names names;
    for (std::string line; std::getline(stream, line);)
        names.insert(line);
#ifdef __clang__
    // No complete object of an abstract class is ever made, and Clang makes no constructor for one.
    std::erase_if(names, IsOfCompleteAbstractDecoder);
#endif
    return names;
}

TEST(Exports, AreExactlyTheListedNames) {
    const std::string path = PathOfTheModule();
    ASSERT_NE(path.find("libcorvexvideoformats.so"), std::string::npos) << path;
    const Names exported = ExportedNames(path);
    const Names listed = ListedNames();
    for (const std::string& name : exported)
        EXPECT_TRUE(listed.contains(name)) << "not listed: " << Explained(name);
    for (const std::string& name : listed)
        EXPECT_TRUE(exported.contains(name)) << "not exported: " << Explained(name);
    EXPECT_FALSE(exported.empty());
}

} // namespace
