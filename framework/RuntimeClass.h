// Runtime class records: a class's name and base, for "is this object a
// ..." tests by class and by name, and for creating an object from its class
// name where the class allows it.
//
//   class Shape : public framework::Object { LUMBREL_DECLARE_RUNTIME_CLASS(Shape) };
//   class Circle : public Shape { LUMBREL_DECLARE_RUNTIME_CLASS(Circle) };
//   LUMBREL_IMPLEMENT_RUNTIME_CLASS(Shape, framework::Object)   // in Shape.cpp
//   LUMBREL_IMPLEMENT_DYNAMIC_CREATION(Circle, Shape)           // Circle() exists
//
//   framework::CreateObjectByName("Circle")  -> a new Circle, owned by the caller
#pragma once

#include <memory>

namespace framework {

class Object;

class RuntimeClass {
public:
    using Factory = Object* (*)();
    RuntimeClass(const char* name, const RuntimeClass* base, Factory factory);
    RuntimeClass(const RuntimeClass&) = delete;
    RuntimeClass& operator=(const RuntimeClass&) = delete;

    const char* Name() const { return name_; }
    const RuntimeClass* Base() const { return base_; }
    bool CanCreate() const { return factory_ != nullptr; }
    bool IsDerivedFrom(const RuntimeClass* other) const;
    // A new object of this class, or null when the class has no dynamic creation.
    std::unique_ptr<Object> CreateObject() const;

    // The registered class of that name, or null.
    static const RuntimeClass* Find(const char* name);

private:
    const char* name_;
    const RuntimeClass* base_;
    Factory factory_;
    const RuntimeClass* next_;
};

class Object {
public:
    virtual ~Object() = default;
    static const RuntimeClass& StaticRuntimeClass();
    virtual const RuntimeClass* GetRuntimeClass() const { return &StaticRuntimeClass(); }
    bool IsKindOf(const RuntimeClass& runtimeClass) const {
        return GetRuntimeClass()->IsDerivedFrom(&runtimeClass);
    }
};

std::unique_ptr<Object> CreateObjectByName(const char* name);

}  // namespace framework

// Declares a class's record; the class derives from framework::Object.
#define LUMBREL_DECLARE_RUNTIME_CLASS(Class)                            \
public:                                                                 \
    static const ::framework::RuntimeClass& StaticRuntimeClass();       \
    const ::framework::RuntimeClass* GetRuntimeClass() const override { \
        return &StaticRuntimeClass();                                   \
    }                                                                   \
                                                                        \
private:

#define LUMBREL_IMPLEMENT_RUNTIME_CLASS_WITH(Class, Base, factory)                                   \
    const ::framework::RuntimeClass& Class::StaticRuntimeClass() {                                   \
        static const ::framework::RuntimeClass record(#Class, &Base::StaticRuntimeClass(), factory); \
        return record;                                                                               \
    }                                                                                                \
    [[maybe_unused]] static const ::framework::RuntimeClass& lumbrelRuntimeClass##Class =            \
        Class::StaticRuntimeClass();

// A class that is known by name but not made from it.
#define LUMBREL_IMPLEMENT_RUNTIME_CLASS(Class, Base) \
    LUMBREL_IMPLEMENT_RUNTIME_CLASS_WITH(Class, Base, nullptr)

// A class that can also be made from its name, through its default constructor.
#define LUMBREL_IMPLEMENT_DYNAMIC_CREATION(Class, Base) \
    LUMBREL_IMPLEMENT_RUNTIME_CLASS_WITH(Class, Base, []() -> ::framework::Object* { return new Class(); })
