#include "foundation/SortStrings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using foundation::CompareNoCase;
using foundation::SortStrings;
using Names = std::vector<std::string>;

TEST(SortStrings, KeepsNamesThatDifferOnlyInCaseInTheirOrder) {
    Names names = {"b", "B"};
    SortStrings(names);
    EXPECT_EQ(names, (Names{"b", "B"}));
    Names reversed = {"B", "b"};
    SortStrings(reversed);
    EXPECT_EQ(reversed, (Names{"B", "b"}));
}

TEST(SortStrings, SortsWithoutCase) {
    Names names = {"Clipart", "animals", "Borders", "backgrounds"};
    SortStrings(names);
    EXPECT_EQ(names, (Names{"animals", "backgrounds", "Borders", "Clipart"}));
}

TEST(SortStrings, IsStableAcrossAllEqualNames) {
    Names names = {"x", "a", "X", "A", "x", "a"};
    SortStrings(names);
    EXPECT_EQ(names, (Names{"a", "A", "a", "x", "X", "x"}));
}

TEST(SortStrings, ComparesAsLowerCase) {
    Names names = {"a", "_", "Z"};
    SortStrings(names);
    EXPECT_EQ(names, (Names{"_", "a", "Z"})) << "'_' lies between upper and lower case letters";
}

TEST(SortStrings, PrefixComesFirst) {
    Names names = {"ab", "A"};
    SortStrings(names);
    EXPECT_EQ(names, (Names{"A", "ab"}));
}

TEST(SortStrings, BytesAboveAsciiComeAfterLetters) {
    Names names = {"\xe9t\xe9", "z"};
    SortStrings(names);
    EXPECT_EQ(names, (Names{"z", "\xe9t\xe9"}));
}

TEST(SortStrings, EmptyAndSingleLists) {
    Names none;
    SortStrings(none);
    EXPECT_TRUE(none.empty());
    Names one = {"only"};
    SortStrings(one);
    EXPECT_EQ(one, (Names{"only"}));
}

TEST(SortStrings, EmptyNameComesFirst) {
    Names names = {"a", "", "B"};
    SortStrings(names);
    EXPECT_EQ(names, (Names{"", "a", "B"}));
}

TEST(SortStrings, SortsALongReversedList) {
    Names names;
    for (char c = 'z'; c >= 'a'; --c) names.push_back(std::string(1, c) + "name");
    SortStrings(names);
    for (std::size_t i = 1; i < names.size(); ++i) EXPECT_LT(names[i - 1], names[i]);
    EXPECT_EQ(names.size(), 26u);
}

TEST(CompareNoCase, IgnoresTheCaseOfLettersOnly) {
    EXPECT_EQ(CompareNoCase("Abc", "aBC"), 0);
    EXPECT_LT(CompareNoCase("a", "B"), 0);
    EXPECT_GT(CompareNoCase("b", "A"), 0);
    EXPECT_LT(CompareNoCase("_", "a"), 0);
    EXPECT_LT(CompareNoCase("_", "A"), 0) << "'A' is taken as 'a', which lies above '_'";
    EXPECT_LT(CompareNoCase("\xc9", "\xe9"), 0) << "bytes above ASCII are not folded";
    EXPECT_GT(CompareNoCase("\xe9", "z"), 0) << "and compare as unsigned";
}

TEST(CompareNoCase, ShorterTextComesFirst) {
    EXPECT_LT(CompareNoCase("ab", "abc"), 0);
    EXPECT_GT(CompareNoCase("abc", "AB"), 0);
}

TEST(CompareNoCase, NullIsTheEmptyText) {
    EXPECT_EQ(CompareNoCase(nullptr, ""), 0);
    EXPECT_LT(CompareNoCase(nullptr, "a"), 0);
}

TEST(CompareNoCase, OverACountStopsThere) {
    EXPECT_EQ(CompareNoCase(R"(\\SRV\share\x)", R"(\\srv\share)", 11), 0);
    EXPECT_NE(CompareNoCase(R"(\\srv)", R"(\\srv\share)", 11), 0);
    EXPECT_EQ(CompareNoCase("abc", "xyz", 0), 0);
}
