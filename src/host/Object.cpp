#include "host/Object.h"

#include "host/CorvexDoc.h"

Reuser::~Reuser() = default;

size_t Reuser::ObjectSize() const { return sizeof(Reuser); }

void* Reuser::operator new(size_t size) { return ::operator new(size); }

void* Reuser::operator new(size_t size, std::align_val_t alignment) {
    return ::operator new(size, alignment);
}

void* Reuser::operator new(size_t size, const std::nothrow_t& tag) noexcept {
    return ::operator new(size, tag);
}

void* Reuser::operator new(size_t size, std::align_val_t alignment, const std::nothrow_t& tag) noexcept {
    return ::operator new(size, alignment, tag);
}

void Reuser::operator delete(void* block) noexcept { ::operator delete(block); }

void Reuser::operator delete(void* block, std::align_val_t alignment) noexcept {
    ::operator delete(block, alignment);
}

void Reuser::operator delete(void* block, const std::nothrow_t& tag) noexcept {
    ::operator delete(block, tag);
}

void Reuser::operator delete(void* block, std::align_val_t alignment, const std::nothrow_t& tag) noexcept {
    ::operator delete(block, alignment, tag);
}

bool RefObject::SetAttrsTagList(const TagList&) { return false; }

bool RefObject::CopyAttr(Tag, void*) { return false; }

int32_t RefObject::GetAttr(Tag key, int32_t defaultValue) {
    int32_t value = 0;
    return KindOf(key) == TagKind_Integer && CopyAttr(key, &value) ? value : defaultValue;
}

double RefObject::GetAttr(Tag key, double defaultValue) {
    double value = 0.0;
    return KindOf(key) == TagKind_Double && CopyAttr(key, &value) ? value : defaultValue;
}

Object::Object(const Registry* registry, const ScriptVal&, const TagList&) : registry_(registry) {}

CorvexDoc* Object::GetDoc() const { return CorvexDoc::Get(); }

const char* Object::futr(const char* text) { return text; }

bool Object::RegInit(Registry*) { return true; }

void Object::RegCleanup(Registry*) {}
