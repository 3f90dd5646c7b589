#include "host/Object.h"

#include "host/CorvexDoc.h"

#include <new>

Reuser::~Reuser() = default;

size_t Reuser::ObjectSize() const { return sizeof(Reuser); }

void* Reuser::operator new(size_t size) { return ::operator new(size); }

void Reuser::operator delete(void* block) { ::operator delete(block); }

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

bool Object::RegInit(Registry*) { return true; }

void Object::RegCleanup(Registry*) {}
