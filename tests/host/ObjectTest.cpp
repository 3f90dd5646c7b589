#include "host/Object.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>

namespace {

constexpr size_t cacheLine = 64;

/// An object of the host with data that vector code loads, which counts how many of them live.
class alignas(cacheLine) AlignedObject : public Reuser {
public:
    explicit AlignedObject(bool refuse = false) {
        if (refuse) throw std::runtime_error("refused");
        ++living;
    }
    ~AlignedObject() override { --living; }

    static inline int living = 0;

    uint8_t vector[cacheLine] = {};
};

class PlainObject : public Reuser {};

bool IsAligned(const void* address) { return reinterpret_cast<uintptr_t>(address) % cacheLine == 0; }

TEST(Reuser, AnObjectIsMadeAtTheAlignmentOfItsClassAndDeletedThroughItsBase) {
    for (int i = 0; i < 20; ++i) {
        const std::unique_ptr<Reuser> object(new AlignedObject);
        const std::unique_ptr<Reuser> neighbour(new PlainObject);
        EXPECT_TRUE(IsAligned(object.get()));
        EXPECT_EQ(AlignedObject::living, 1);
    }
    EXPECT_EQ(AlignedObject::living, 0);
}

TEST(Reuser, NewWithoutExceptionsMakesObjectsOfAnyAlignment) {
    const std::unique_ptr<Reuser> plain(new (std::nothrow) PlainObject);
    EXPECT_NE(plain, nullptr);
    const std::unique_ptr<Reuser> aligned(new (std::nothrow) AlignedObject);
    ASSERT_NE(aligned, nullptr);
    EXPECT_TRUE(IsAligned(aligned.get()));
}

TEST(Reuser, NewInGivenMemoryMakesTheObjectThereAndTakesNone) {
    alignas(cacheLine) uint8_t memory[sizeof(AlignedObject)];
    AlignedObject* const object = new (memory) AlignedObject;
    EXPECT_EQ(static_cast<void*>(object), memory);
    EXPECT_EQ(AlignedObject::living, 1);
    object->~AlignedObject();
    EXPECT_EQ(AlignedObject::living, 0);
}

TEST(Reuser, AConstructorThatThrowsGivesItsMemoryBackInEveryForm) {
    alignas(cacheLine) uint8_t memory[sizeof(AlignedObject)];
    EXPECT_THROW(new AlignedObject(true), std::runtime_error);
    EXPECT_THROW(new (std::nothrow) AlignedObject(true), std::runtime_error);
    EXPECT_THROW(new (memory) AlignedObject(true), std::runtime_error);
    EXPECT_EQ(AlignedObject::living, 0);
}

TEST(Object, TextIsItsOwnTranslation) {
    const char label[] = "Frame Rate (fps)";
    EXPECT_EQ(Object::futr(label), label);
    EXPECT_EQ(Object::futr(nullptr), nullptr);
}

} // namespace
