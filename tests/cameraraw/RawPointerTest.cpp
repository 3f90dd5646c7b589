#include "cameraraw/RawPointer.h"

#include <gtest/gtest.h>

namespace {

/// Counts its references.
class Counted : public IUnknown {
public:
    HRESULT QueryInterface(REFIID identifier, void** interface) override {
        const bool has = identifier == IID_IUnknown;
        *interface = has ? static_cast<IUnknown*>(this) : nullptr;
        if (has) AddRef();
        return has ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }

    ULONG references = 1;
};

TEST(RawPointer, TakesAReferenceOverAndReleasesItAtItsEnd) {
    Counted object;
    {
        const RawPointer<IUnknown> pointer(&object);
        EXPECT_EQ(object.references, 1U);
        EXPECT_EQ(pointer.Get(), &object);
    }
    EXPECT_EQ(object.references, 0U);
}

TEST(RawPointer, ASharedObjectGetsAReferenceMore) {
    Counted object;
    { EXPECT_TRUE(RawPointer<IUnknown>::Share(&object)); }
    EXPECT_EQ(object.references, 1U);
    EXPECT_FALSE(RawPointer<IUnknown>::Share(nullptr));
}

TEST(RawPointer, AssigningReleasesWhatItHeld) {
    Counted first;
    Counted second;
    RawPointer<IUnknown> pointer(&first);
    pointer = RawPointer<IUnknown>(&second);
    EXPECT_EQ(first.references, 0U);
    EXPECT_EQ(second.references, 1U);
    pointer.Reset();
    EXPECT_EQ(second.references, 0U);
    EXPECT_FALSE(pointer);
}

TEST(RawPointer, AssigningItToItselfKeepsTheReference) {
    Counted object;
    RawPointer<IUnknown> pointer(&object);
    RawPointer<IUnknown>& same = pointer;
    pointer = std::move(same);
    EXPECT_EQ(object.references, 1U);
    EXPECT_TRUE(pointer);
}

TEST(RawPointer, MovingHandsTheReferenceOver) {
    Counted object;
    RawPointer<IUnknown> pointer(&object);
    const RawPointer<IUnknown> other(std::move(pointer));
    EXPECT_EQ(other.Get(), &object);
    EXPECT_EQ(object.references, 1U);
}

TEST(RawPointer, ReleasesItsObjectBeforeItReceivesAnother) {
    Counted first;
    Counted second;
    RawPointer<IUnknown> pointer(&first);
    IUnknown** const place = pointer.Receive();
    EXPECT_EQ(first.references, 0U);
    EXPECT_EQ(*place, nullptr);
    *place = &second;
    EXPECT_EQ(pointer.Get(), &second);
}

TEST(RawPointer, AQuestionReleasesWhatItHeldAndGivesANewReferenceOrNone) {
    Counted first;
    Counted second;
    RawPointer<IUnknown> pointer(&first);
    EXPECT_EQ(QueryRaw(&second, IID_IUnknown, pointer), S_OK);
    EXPECT_EQ(first.references, 0U);
    EXPECT_EQ(second.references, 2U);
    EXPECT_EQ(QueryRaw(&first, GUID{}, pointer), E_NOINTERFACE);
    EXPECT_EQ(second.references, 1U);
    EXPECT_FALSE(pointer);
}

} // namespace
