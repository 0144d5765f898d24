#include "foundation/BracketNames.h"

#include <gtest/gtest.h>

#include "StdobjTestStrings.h"

TEST(BracketNames, RowsByIndex) {
    const struct {
        long id;
        int code;
        int kind;
    } expected[] = {{6010, -2, 16}, {6011, -3, 32}, {6012, -4, 8}};
    for (int i = 0; i < 3; ++i) {
        foundation::BracketEntry* entry = foundation::FindBracketEntryByIndex(i);
        ASSERT_NE(entry, nullptr) << i;
        EXPECT_EQ(entry->name.Id(), expected[i].id);
        EXPECT_EQ(entry->code, expected[i].code);
        EXPECT_EQ(entry->kind, expected[i].kind);
    }
    EXPECT_EQ(foundation::FindBracketEntryByIndex(-1), nullptr);
    EXPECT_EQ(foundation::FindBracketEntryByIndex(3), nullptr);
    EXPECT_EQ(foundation::FindBracketEntryByIndex(0)->name.GetText(), "[All Pictures]");
}

TEST(BracketNames, RowsByCode) {
    EXPECT_EQ(foundation::FindBracketEntryByCode(-2), foundation::FindBracketEntryByIndex(0));
    EXPECT_EQ(foundation::FindBracketEntryByCode(-3), foundation::FindBracketEntryByIndex(1));
    EXPECT_EQ(foundation::FindBracketEntryByCode(-4), foundation::FindBracketEntryByIndex(2));
    EXPECT_EQ(foundation::FindBracketEntryByCode(-1), nullptr);
    EXPECT_EQ(foundation::FindBracketEntryByCode(16), nullptr) << "kinds are no codes";
}

TEST(BracketNames, KindOfANameComparedWithoutCase) {
    EXPECT_EQ(foundation::GetBracketKind("[All Pictures]"), 16);
    EXPECT_EQ(foundation::GetBracketKind("[recent]"), 32);
    EXPECT_EQ(foundation::GetBracketKind("[SEARCH RESULTS]"), 8);
    EXPECT_TRUE(foundation::IsBracketName("[Recent]"));
}

TEST(BracketNames, OtherTextsAreKindOne) {
    EXPECT_EQ(foundation::GetBracketKind("Recent"), 1);
    EXPECT_EQ(foundation::GetBracketKind("[Recent"), 1);
    EXPECT_EQ(foundation::GetBracketKind("[Recent] "), 1);
    EXPECT_EQ(foundation::GetBracketKind("[Other]"), 1);
    EXPECT_EQ(foundation::GetBracketKind("["), 1);
    EXPECT_EQ(foundation::GetBracketKind(""), 1);
    EXPECT_EQ(foundation::GetBracketKind(nullptr), 1);
    EXPECT_FALSE(foundation::IsBracketName("c:\\pictures"));
    EXPECT_FALSE(foundation::IsBracketName(nullptr));
}
