#include "framework/RuntimeClass.h"

#include <gtest/gtest.h>

namespace {

class Shape : public framework::Object {
    LUMBREL_DECLARE_RUNTIME_CLASS(Shape)
};

class Circle : public Shape {
    LUMBREL_DECLARE_RUNTIME_CLASS(Circle)

public:
    int radius = 7;
};

class Square : public Shape {
    LUMBREL_DECLARE_RUNTIME_CLASS(Square)
};

}  // namespace

LUMBREL_IMPLEMENT_RUNTIME_CLASS(Shape, framework::Object)
LUMBREL_IMPLEMENT_DYNAMIC_CREATION(Circle, Shape)
LUMBREL_IMPLEMENT_RUNTIME_CLASS(Square, Shape)

TEST(RuntimeClass, KindOfFollowsTheBases) {
    Circle circle;
    EXPECT_TRUE(circle.IsKindOf(Circle::StaticRuntimeClass()));
    EXPECT_TRUE(circle.IsKindOf(Shape::StaticRuntimeClass()));
    EXPECT_TRUE(circle.IsKindOf(framework::Object::StaticRuntimeClass()));
    EXPECT_FALSE(circle.IsKindOf(Square::StaticRuntimeClass()));
    const Shape& shape = circle;
    EXPECT_STREQ(shape.GetRuntimeClass()->Name(), "Circle");
}

TEST(RuntimeClass, CreationByName) {
    auto object = framework::CreateObjectByName("Circle");
    ASSERT_NE(object, nullptr);
    ASSERT_TRUE(object->IsKindOf(Circle::StaticRuntimeClass()));
    EXPECT_EQ(static_cast<Circle*>(object.get())->radius, 7);
}

TEST(RuntimeClass, ClassWithoutDynamicCreationIsKnownButNotMade) {
    const framework::RuntimeClass* square = framework::RuntimeClass::Find("Square");
    ASSERT_NE(square, nullptr);
    EXPECT_FALSE(square->CanCreate());
    EXPECT_EQ(framework::CreateObjectByName("Square"), nullptr);
}

TEST(RuntimeClass, UnknownNameGivesNothing) {
    EXPECT_EQ(framework::RuntimeClass::Find("NoSuchClass"), nullptr);
    EXPECT_EQ(framework::RuntimeClass::Find(nullptr), nullptr);
    EXPECT_EQ(framework::CreateObjectByName("NoSuchClass"), nullptr);
}
