#include "framework/GrowableArray.h"

#include <gtest/gtest.h>

using framework::GrowableArray;

TEST(GrowableArray, FirstSizeAllocatesExactly) {
    GrowableArray<int> array;
    array.SetSize(5);
    EXPECT_EQ(array.GetSize(), 5);
    EXPECT_EQ(array.GetCapacity(), 5);
    for (ptrdiff_t i = 0; i < 5; ++i) EXPECT_EQ(array[i], 0);
}

TEST(GrowableArray, GrowthStepIsAnEighthBetweenFourAndAThousandTwentyFour) {
    GrowableArray<int> small;
    small.SetSize(5);
    small.SetSize(6);  // step max(4, 5/8) = 4
    EXPECT_EQ(small.GetCapacity(), 9);

    GrowableArray<int> medium;
    medium.SetSize(800);
    medium.SetSize(801);  // step 800/8 = 100
    EXPECT_EQ(medium.GetCapacity(), 900);

    GrowableArray<int> large;
    large.SetSize(20000);
    large.SetSize(20001);  // step capped at 1024
    EXPECT_EQ(large.GetCapacity(), 21024);

    GrowableArray<int> jump;
    jump.SetSize(10);
    jump.SetSize(500);  // the request beats capacity + step
    EXPECT_EQ(jump.GetCapacity(), 500);
}

TEST(GrowableArray, GrowBySetByTheCallerIsUsed) {
    GrowableArray<int> array;
    array.SetSize(3, 50);
    array.SetSize(4);
    EXPECT_EQ(array.GetCapacity(), 53);
    EXPECT_EQ(array.GetGrowBy(), 50);
}

TEST(GrowableArray, ElementsSurviveGrowthAndNewOnesAreZero) {
    GrowableArray<int> array;
    for (int i = 0; i < 100; ++i) array.Add(i + 1);
    EXPECT_EQ(array.GetSize(), 100);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(array[i], i + 1);
    array.SetSize(50);
    array.SetSize(60);
    EXPECT_EQ(array[55], 0) << "elements given back by shrinking come back as zero";
}

TEST(GrowableArray, ShrinkingKeepsCapacityAndZeroFrees) {
    GrowableArray<int> array;
    array.SetSize(40);
    array.SetSize(10);
    EXPECT_EQ(array.GetCapacity(), 40);
    array.SetSize(0);
    EXPECT_EQ(array.GetCapacity(), 0);
    EXPECT_EQ(array.GetData(), nullptr);
}

TEST(GrowableArray, OutOfRangeIndexThrowsInsteadOfTouchingMemory) {
    GrowableArray<int> array;
    array.SetSize(2);
    EXPECT_THROW(array[2], std::out_of_range);
    EXPECT_THROW(array[-1], std::out_of_range);
    EXPECT_THROW(array.SetSize(-1), std::length_error);
}
