#include "cameraraw/automation/Variant.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

VARIANT Dirty() {
    VARIANT value;
    std::memset(&value, 0xEE, sizeof(value));
    return value;
}

TEST(Variant, IsEmptyOnceItIsInitialised) {
    VARIANT value = Dirty();
    VariantInit(&value);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(Variant, IsEmptyOnceItsNumberIsCleared) {
    for (const VARTYPE type :
         {VT_EMPTY, VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_I8, VT_UI8, VT_R4, VT_R8, VT_BOOL}) {
        VARIANT value = Dirty();
        value.vt = type;
        EXPECT_EQ(VariantClear(&value), S_OK);
        EXPECT_EQ(value.vt, VT_EMPTY);
    }
}

TEST(Variant, FreesItsString) {
    VARIANT value = {};
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(u"text");
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(value.bstrVal, nullptr);
}

TEST(Variant, FreesItsArray) {
    SAFEARRAYBOUND bound = {4, 0};
    VARIANT value = {};
    value.vt = VT_SAFEARRAY;
    value.parray = SafeArrayCreate(VT_I4, 1, &bound);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(Variant, FreesItsArrayAlsoWhileAnAccessLasts) {
    SAFEARRAYBOUND bound = {1, 0};
    VARIANT value = {};
    value.vt = VT_SAFEARRAY;
    value.parray = SafeArrayCreate(VT_I4, 1, &bound);
    void* data = nullptr;
    ASSERT_EQ(SafeArrayAccessData(value.parray, &data), S_OK);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(Variant, MayOwnNothing) {
    for (const VARTYPE type : {VT_BSTR, VT_SAFEARRAY}) {
        VARIANT value = {};
        value.vt = type;
        EXPECT_EQ(VariantClear(&value), S_OK);
    }
}

TEST(Variant, OfATypeThatItDoesNotListIsLeft) {
    VARIANT value = {};
    value.vt = 13;
    EXPECT_EQ(VariantClear(&value), DISP_E_BADVARTYPE);
    EXPECT_EQ(value.vt, 13);
}

TEST(Variant, ThatIsNullIsRefused) {
    VariantInit(nullptr);
    EXPECT_EQ(VariantClear(nullptr), E_INVALIDARG);
}

TEST(Variant, HasTheSizeThatThePlatformGivesIt) {
    EXPECT_EQ(sizeof(VARIANT), 16u);
    EXPECT_EQ(offsetof(VARIANT, llVal), 8u);
}

} // namespace
