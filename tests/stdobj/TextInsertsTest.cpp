#include "foundation/TextInserts.h"

#include <gtest/gtest.h>

TEST(FormatInserts, ReplacesNumberedPlaces) {
    EXPECT_EQ(foundation::FormatInserts("Assertion in %1 at line %2.", {"Stdobj", "223"}),
              "Assertion in Stdobj at line 223.");
    EXPECT_EQ(foundation::FormatInserts("%2-%1-%2", {"a", "b"}), "b-a-b");
}

TEST(FormatInserts, MissingOrNullInsertsLeaveThePlaceEmpty) {
    EXPECT_EQ(foundation::FormatInserts("[%1][%2][%9]", {"x"}), "[x][][]");
    EXPECT_EQ(foundation::FormatInserts("[%1]", {nullptr}), "[]");
    EXPECT_EQ(foundation::FormatInserts("[%1]", {}), "[]");
}

TEST(FormatInserts, OtherPercentSignsStay) {
    EXPECT_EQ(foundation::FormatInserts("100% %s %0 %% %", {"x"}), "100% %s %0 %% %");
}
