#include "cameraraw/automation/SafeArray.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <memory>
#include <vector>

namespace {

struct DestroyArray {
    void operator()(SAFEARRAY* array) const {
        array->cLocks = 0;
        SafeArrayDestroy(array);
    }
};
using ArrayPtr = std::unique_ptr<SAFEARRAY, DestroyArray>;

ArrayPtr Create(VARTYPE type, std::vector<SAFEARRAYBOUND> bounds) {
    return ArrayPtr(SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data()));
}

constexpr VARTYPE numberTypes[] = {VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_R4, VT_I8, VT_UI8, VT_R8};

TEST(SafeArray, TellsItsTypeDimensionsAndBounds) {
    const ArrayPtr array = Create(VT_UI2, {{3, -1}, {5, 10}});
    VARTYPE type = 0;
    EXPECT_EQ(SafeArrayGetVartype(array.get(), &type), S_OK);
    EXPECT_EQ(type, VT_UI2);
    EXPECT_EQ(SafeArrayGetDim(array.get()), 2u);
    LONG bounds[4];
    EXPECT_EQ(SafeArrayGetLBound(array.get(), 1, &bounds[0]), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(array.get(), 1, &bounds[1]), S_OK);
    EXPECT_EQ(SafeArrayGetLBound(array.get(), 2, &bounds[2]), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(array.get(), 2, &bounds[3]), S_OK);
    EXPECT_EQ(std::vector<LONG>(bounds, bounds + 4), (std::vector<LONG>{-1, 1, 10, 14}));
}

TEST(SafeArray, HoldsEveryTypeOfNumber) {
    for (const VARTYPE type : numberTypes) {
        const ArrayPtr array = Create(type, {{2, 0}});
        ASSERT_NE(array, nullptr) << type;
        EXPECT_EQ(array->cbElements, SizeOfElement(type));
    }
}

TEST(SafeArray, HoldsNoOtherType) {
    for (const VARTYPE type : {VT_EMPTY, VT_BSTR, VT_BOOL, VT_SAFEARRAY, VARTYPE{12}, VARTYPE{13}})
        EXPECT_EQ(Create(type, {{2, 0}}), nullptr) << type;
}

TEST(SafeArray, BeginsWithZeros) {
    const ArrayPtr array = Create(VT_I4, {{3, 0}});
    for (LONG index = 0; index < 3; ++index) {
        int32_t value = -1;
        EXPECT_EQ(SafeArrayGetElement(array.get(), &index, &value), S_OK);
        EXPECT_EQ(value, 0);
    }
}

TEST(SafeArray, HasTheElementsThatWerePutWhereTheAccessFindsThem) {
    const ArrayPtr array = Create(VT_I2, {{2, 0}, {2, 0}});
    for (LONG i = 0; i < 4; ++i) {
        LONG indices[2] = {i % 2, i / 2};
        auto value = static_cast<int16_t>(10 + i);
        EXPECT_EQ(SafeArrayPutElement(array.get(), indices, &value), S_OK);
    }
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array.get(), &data), S_OK);
    const auto* const values = static_cast<int16_t*>(data);
    EXPECT_EQ(std::vector<int16_t>(values, values + 4), (std::vector<int16_t>{10, 11, 12, 13}));
    EXPECT_EQ(SafeArrayUnaccessData(array.get()), S_OK);
}

TEST(SafeArray, GivesEachElementToItsOwnIndices) {
    const ArrayPtr array = Create(VT_I4, {{2, 1}, {3, -2}});
    for (LONG first = 1; first <= 2; ++first)
        for (LONG second = -2; second <= 0; ++second) {
            LONG indices[2] = {first, second};
            int32_t value = first * 100 + second;
            EXPECT_EQ(SafeArrayPutElement(array.get(), indices, &value), S_OK);
        }
    for (LONG first = 1; first <= 2; ++first)
        for (LONG second = -2; second <= 0; ++second) {
            LONG indices[2] = {first, second};
            int32_t value = 0;
            EXPECT_EQ(SafeArrayGetElement(array.get(), indices, &value), S_OK);
            EXPECT_EQ(value, first * 100 + second);
        }
}

TEST(SafeArray, RefusesIndicesOutsideItsBounds) {
    const ArrayPtr array = Create(VT_I4, {{2, 1}, {3, -2}});
    int32_t value = 7;
    for (const std::vector<LONG>& outside :
         {std::vector<LONG>{0, -2}, {3, -2}, {1, -3}, {1, 1}, {INT_MIN, -2}, {INT_MAX, -2}}) {
        std::vector<LONG> indices = outside;
        EXPECT_EQ(SafeArrayGetElement(array.get(), indices.data(), &value), DISP_E_BADINDEX);
        EXPECT_EQ(SafeArrayPutElement(array.get(), indices.data(), &value), DISP_E_BADINDEX);
    }
    EXPECT_EQ(value, 7);
}

TEST(SafeArray, MayHaveIndicesUpToTheLastLong) {
    const ArrayPtr array = Create(VT_UI1, {{2, INT_MAX - 1}});
    LONG bound = 0;
    EXPECT_EQ(SafeArrayGetUBound(array.get(), 1, &bound), S_OK);
    EXPECT_EQ(bound, INT_MAX);
    uint8_t value = 9;
    EXPECT_EQ(SafeArrayPutElement(array.get(), &bound, &value), S_OK);
}

TEST(SafeArray, IsNotMadeWithIndicesBeyondTheLastLong) {
    EXPECT_EQ(Create(VT_UI1, {{3, INT_MAX - 1}}), nullptr);
}

TEST(SafeArray, IsNotMadeIfItsBytesDoNotFitASize) {
    EXPECT_EQ(Create(VT_R8, {{0x7FFFFFFF, 0}, {0x7FFFFFFF, 0}}), nullptr);
    EXPECT_EQ(Create(VT_R8, {{0x7FFFFFFF, 0}, {0x7FFFFFFF, 0}, {0x7FFFFFFF, 0}}), nullptr);
}

TEST(SafeArray, IsNotMadeWithoutDimensionsOrBounds) {
    SAFEARRAYBOUND bound = {1, 0};
    EXPECT_EQ(SafeArrayCreate(VT_I4, 0, &bound), nullptr);
    EXPECT_EQ(SafeArrayCreate(VT_I4, 1, nullptr), nullptr);
}

TEST(SafeArray, OfNoElementsEndsBelowItsFirstIndex) {
    const ArrayPtr array = Create(VT_I4, {{0, 5}});
    LONG bound = 0;
    EXPECT_EQ(SafeArrayGetUBound(array.get(), 1, &bound), S_OK);
    EXPECT_EQ(bound, 4);
    LONG index = 5;
    int32_t value = 0;
    EXPECT_EQ(SafeArrayGetElement(array.get(), &index, &value), DISP_E_BADINDEX);
}

TEST(SafeArray, TellsNoBoundOfADimensionThatItDoesNotHave) {
    const ArrayPtr array = Create(VT_I4, {{2, 0}});
    LONG bound = 7;
    for (const UINT dimension : {0u, 2u}) {
        EXPECT_EQ(SafeArrayGetLBound(array.get(), dimension, &bound), DISP_E_BADINDEX);
        EXPECT_EQ(SafeArrayGetUBound(array.get(), dimension, &bound), DISP_E_BADINDEX);
    }
    EXPECT_EQ(bound, 7);
}

TEST(SafeArray, IsNotDestroyedWhileAnAccessLasts) {
    const ArrayPtr array = Create(VT_I4, {{2, 0}});
    void* data = nullptr;
    ASSERT_EQ(SafeArrayAccessData(array.get(), &data), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array.get()), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayGetDim(array.get()), 1u);
}

TEST(SafeArray, RefusesAnAccessAfterTheLastThatItCounts) {
    const ArrayPtr array = Create(VT_I4, {{2, 0}});
    array->cLocks = 65535;
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array.get(), &data), E_UNEXPECTED);
    EXPECT_EQ(data, nullptr);
}

TEST(SafeArray, EndsNoAccessThatWasNotBegun) {
    const ArrayPtr array = Create(VT_I4, {{2, 0}});
    EXPECT_EQ(SafeArrayUnaccessData(array.get()), E_UNEXPECTED);
}

TEST(SafeArray, ThatIsOnlyDescribedHasNoTypeAndNoElements) {
    SAFEARRAY* described = nullptr;
    ASSERT_EQ(SafeArrayAllocDescriptor(1, &described), S_OK);
    const ArrayPtr array(described);
    VARTYPE type = 7;
    EXPECT_EQ(SafeArrayGetVartype(array.get(), &type), E_INVALIDARG);
    EXPECT_EQ(type, 7);
    void* data = &type;
    EXPECT_EQ(SafeArrayAccessData(array.get(), &data), S_OK);
    EXPECT_EQ(data, nullptr);
    LONG index = 0;
    EXPECT_EQ(SafeArrayGetElement(array.get(), &index, &type), E_INVALIDARG);
}

TEST(SafeArray, MayBeDescribedWithAType) {
    SAFEARRAY* described = nullptr;
    ASSERT_EQ(SafeArrayAllocDescriptorEx(VT_R4, 2, &described), S_OK);
    const ArrayPtr array(described);
    VARTYPE type = 0;
    EXPECT_EQ(SafeArrayGetVartype(array.get(), &type), S_OK);
    EXPECT_EQ(type, VT_R4);
}

TEST(SafeArray, IsNotDescribedWithoutDimensionsOrWithATypeThatItDoesNotHold) {
    SAFEARRAY* array = nullptr;
    EXPECT_EQ(SafeArrayAllocDescriptor(0, &array), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAllocDescriptor(65536, &array), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAllocDescriptor(1, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAllocDescriptorEx(VT_BSTR, 1, &array), E_INVALIDARG);
    EXPECT_EQ(array, nullptr);
}

TEST(SafeArray, ThatIsNullHasNoDimensionsAndRefusesTheRest) {
    VARTYPE type;
    LONG bound = 0;
    void* data;
    EXPECT_EQ(SafeArrayGetDim(nullptr), 0u);
    EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
    EXPECT_EQ(SafeArrayGetVartype(nullptr, &type), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &bound), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetUBound(nullptr, 1, &bound), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);
    EXPECT_EQ(SafeArrayUnaccessData(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(nullptr, &bound, &type), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPutElement(nullptr, &bound, &type), E_INVALIDARG);
}

TEST(SafeArray, RefusesNullToWriteTo) {
    const ArrayPtr array = Create(VT_I4, {{2, 0}});
    LONG index = 0;
    int32_t value = 0;
    EXPECT_EQ(SafeArrayGetVartype(array.get(), nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetLBound(array.get(), 1, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetUBound(array.get(), 1, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAccessData(array.get(), nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(array.get(), &index, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPutElement(array.get(), &index, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(array.get(), nullptr, &value), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPutElement(array.get(), nullptr, &value), E_INVALIDARG);
}

} // namespace
