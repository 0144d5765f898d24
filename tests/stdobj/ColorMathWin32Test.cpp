#include <windows.h>

#include <gtest/gtest.h>

#include "foundation/ColorMath.h"

// The colour arithmetic stands in for the system's MulDiv and RGB macros.
TEST(MulDivRound, AnswersAsTheSystemsMulDiv) {
    const int values[] = {0,     1,      -1,     2,          -2,          3,          7,        -7,
                          127,   -128,   255,    -255,       5355,        57600,      -57600,   1000,
                          46341, -46341, 100000, 2147483647, -2147483647, 1073741824, 99999999, -99999999};
    for (int a : values)
        for (int b : values)
            for (int c : values)
                ASSERT_EQ(foundation::MulDivRound(a, b, c), ::MulDiv(a, b, c)) << a << " " << b << " " << c;
}

TEST(MakeColorRef, IsTheSystemsRgb) {
    EXPECT_EQ(foundation::MakeColorRef(1, 2, 3), RGB(1, 2, 3));
    EXPECT_EQ(foundation::RedOf(RGB(9, 8, 7)), GetRValue(RGB(9, 8, 7)));
    EXPECT_EQ(foundation::GreenOf(RGB(9, 8, 7)), GetGValue(RGB(9, 8, 7)));
    EXPECT_EQ(foundation::BlueOf(RGB(9, 8, 7)), GetBValue(RGB(9, 8, 7)));
}
