#include "framework/StringMap.h"

#include <gtest/gtest.h>

using framework::StringMap;
using Pairs = std::vector<std::pair<std::string, std::string>>;

TEST(StringMap, HashIsTimes33PlusSignedCharacters) {
    EXPECT_EQ(StringMap::HashKey(""), 0u);
    EXPECT_EQ(StringMap::HashKey("dog"), 112666u);
    EXPECT_EQ(StringMap::HashKey("dog") % 17, 7u);
    // A byte above 0x7F counts as negative.
    EXPECT_EQ(StringMap::HashKey("\xff"), 0xFFFFFFFFu);
    EXPECT_EQ(StringMap::HashKey("a\xe9"), 97u * 33u - 23u);
}

TEST(StringMap, WalkGoesByBucketThenFromTheChainsHead) {
    StringMap map;
    map.SetAt("cat", "16");  // bucket 16
    map.SetAt("a", "12");    // bucket 12
    map.SetAt("ant", "1");   // bucket 1
    map.SetAt("r", "12b");   // bucket 12, at its head
    EXPECT_EQ(map.Pairs(), (Pairs{{"ant", "1"}, {"r", "12b"}, {"a", "12"}, {"cat", "16"}}));
}

TEST(StringMap, SetAtOnAnExistingKeyKeepsItsPlace) {
    StringMap map;
    map.SetAt("a", "1");
    map.SetAt("r", "2");
    map.SetAt("a", "3");
    EXPECT_EQ(map.GetCount(), 2);
    EXPECT_EQ(map.Pairs(), (Pairs{{"r", "2"}, {"a", "3"}}));
}

TEST(StringMap, RemoveThenAddMovesToTheHead) {
    StringMap map;
    map.SetAt("a", "1");
    map.SetAt("r", "2");
    EXPECT_TRUE(map.RemoveKey("a"));
    EXPECT_FALSE(map.RemoveKey("a"));
    map.SetAt("a", "1");
    EXPECT_EQ(map.Pairs(), (Pairs{{"a", "1"}, {"r", "2"}}));
    EXPECT_EQ(map.GetCount(), 2);
}

TEST(StringMap, LookupIsExactAndCaseSensitive) {
    StringMap map;
    map.SetAt("Dog", "x");
    std::string value = "unchanged";
    EXPECT_FALSE(map.Lookup("dog", value));
    EXPECT_EQ(value, "unchanged");
    EXPECT_TRUE(map.Lookup("Dog", value));
    EXPECT_EQ(value, "x");
}

TEST(StringMap, TextsEndAtAnEmbeddedNul) {
    StringMap map;
    map.SetAt(std::string("key\0tail", 8), std::string("val\0ue", 6));
    std::string value;
    EXPECT_TRUE(map.Lookup("key", value));
    EXPECT_EQ(value, "val");
    EXPECT_EQ(map.Pairs().front().first, "key");
}

TEST(StringMap, RemoveAllEmpties) {
    StringMap map;
    for (int i = 0; i < 100; ++i) map.SetAt(std::to_string(i), "v");
    EXPECT_EQ(map.GetCount(), 100);
    map.RemoveAll();
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_TRUE(map.Pairs().empty());
}
