#include "framework/RuntimeClass.h"

#include <cstring>

namespace framework {

namespace {
// Head of the list of every record made so far; records live to the end of
// the process.
const RuntimeClass*& FirstClass() {
    static const RuntimeClass* first = nullptr;
    return first;
}
}  // namespace

RuntimeClass::RuntimeClass(const char* name, const RuntimeClass* base, Factory factory)
    : name_(name), base_(base), factory_(factory), next_(FirstClass()) {
    FirstClass() = this;
}

bool RuntimeClass::IsDerivedFrom(const RuntimeClass* other) const {
    for (const RuntimeClass* c = this; c != nullptr; c = c->base_)
        if (c == other) return true;
    return false;
}

std::unique_ptr<Object> RuntimeClass::CreateObject() const {
    if (factory_ == nullptr) return nullptr;
    return std::unique_ptr<Object>(factory_());
}

const RuntimeClass* RuntimeClass::Find(const char* name) {
    if (name == nullptr) return nullptr;
    for (const RuntimeClass* c = FirstClass(); c != nullptr; c = c->next_)
        if (std::strcmp(c->name_, name) == 0) return c;
    return nullptr;
}

const RuntimeClass& Object::StaticRuntimeClass() {
    static const RuntimeClass record("Object", nullptr, nullptr);
    return record;
}

std::unique_ptr<Object> CreateObjectByName(const char* name) {
    const RuntimeClass* runtimeClass = RuntimeClass::Find(name);
    return runtimeClass != nullptr ? runtimeClass->CreateObject() : nullptr;
}

}  // namespace framework
