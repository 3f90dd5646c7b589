#include "cameraraw/automation/Bstr.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

std::u16string UnitsOf(BSTR string) { return {string, string + SysStringLen(string)}; }

TEST(Bstr, HoldsTheTextThatItWasMadeOf) {
    const BSTR string = SysAllocString(u"clip");
    EXPECT_EQ(UnitsOf(string), u"clip");
    SysFreeString(string);
}

TEST(Bstr, EndsWithAZeroBehindItsLength) {
    const BSTR string = SysAllocStringLen(u"clip", 2);
    EXPECT_EQ(SysStringLen(string), 2u);
    EXPECT_EQ(string[2], u'\0');
    SysFreeString(string);
}

TEST(Bstr, HoldsZerosInItsMidst) {
    const BSTR string = SysAllocStringLen(u"a\0b", 3);
    EXPECT_EQ(UnitsOf(string), std::u16string(u"a\0b", 3));
    SysFreeString(string);
}

TEST(Bstr, MadeOfNoTextHasZerosToFill) {
    const BSTR string = SysAllocStringLen(nullptr, 3);
    EXPECT_EQ(UnitsOf(string), std::u16string(3, u'\0'));
    SysFreeString(string);
}

TEST(Bstr, OfAnEmptyTextIsNotNull) {
    const BSTR string = SysAllocString(u"");
    ASSERT_NE(string, nullptr);
    EXPECT_EQ(SysStringLen(string), 0u);
    SysFreeString(string);
}

TEST(Bstr, OfANullTextIsNull) { EXPECT_EQ(SysAllocString(nullptr), nullptr); }

TEST(Bstr, ThatIsNullIsEmptyAndCanBeFreed) {
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    SysFreeString(nullptr);
}

TEST(Bstr, IsAlignedForEveryType) {
    const BSTR string = SysAllocString(u"x");
    EXPECT_EQ(reinterpret_cast<uintptr_t>(string) % alignof(std::max_align_t), 0u);
    SysFreeString(string);
}

} // namespace
