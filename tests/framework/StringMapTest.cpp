#include "framework/StringMap.h"

#include <gtest/gtest.h>

#include <random>

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

TEST(StringMap, ValueOfGivesTheStoredTextWithoutACopy) {
    StringMap map;
    map.SetAt("dog", "1");
    const std::string* value = map.ValueOf("dog");
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(*value, "1");
    EXPECT_EQ(map.ValueOf("Dog"), nullptr);
    EXPECT_EQ(map.ValueOf(std::string("dog\0x", 5)), value) << "the key ends at its NUL, as in SetAt";
}

TEST(StringMap, ExtendValueIsRemoveThenSetAtOfTheLongerText) {
    // Four keys of one bucket: extending the head, the middle and the tail.
    StringMap extended;
    StringMap removed;
    const std::vector<std::string> keys = {"3", "11", "22", "33"};  // all in bucket 0
    for (const std::string& key : keys) {
        ASSERT_EQ(StringMap::HashKey(key) % StringMap::kBucketCount, 0u) << key;
        extended.SetAt(key, "v" + key);
        removed.SetAt(key, "v" + key);
    }
    for (const char* key : {"11", "3", "3", "33", "22"}) {
        EXPECT_TRUE(extended.ExtendValue(key, ",x"));
        std::string value;
        ASSERT_TRUE(removed.Lookup(key, value));
        removed.RemoveKey(key);
        removed.SetAt(key, value + ",x");
        EXPECT_EQ(extended.Pairs(), removed.Pairs()) << "after extending " << key;
    }
    EXPECT_FALSE(extended.ExtendValue("4", "never"));
    EXPECT_EQ(extended.GetCount(), 4);
    EXPECT_EQ(extended.ValueOf("4"), nullptr);
}

TEST(StringMap, ExtendValueStopsAtAnEmbeddedNul) {
    StringMap map;
    map.SetAt("a", ",x,");
    EXPECT_TRUE(map.ExtendValue("a", std::string("w\0tail", 6)));
    EXPECT_EQ(*map.ValueOf("a"), ",x,w");
}

TEST(StringMap, AgreesWithAPlainModelOfTheBucketChains) {
    // The classic map, modelled as it stands: 17 chains searched from their
    // heads. Random operations over a few keys that crowd some buckets.
    struct Model {
        std::vector<std::pair<std::string, std::string>> chains[StringMap::kBucketCount];
        std::vector<std::pair<std::string, std::string>>& Chain(const std::string& key) {
            return chains[StringMap::HashKey(key) % StringMap::kBucketCount];
        }
        void SetAt(const std::string& key, const std::string& value) {
            auto& chain = Chain(key);
            for (auto& pair : chain)
                if (pair.first == key) {
                    pair.second = value;
                    return;
                }
            chain.insert(chain.begin(), {key, value});
        }
        bool RemoveKey(const std::string& key) {
            auto& chain = Chain(key);
            for (auto it = chain.begin(); it != chain.end(); ++it)
                if (it->first == key) {
                    chain.erase(it);
                    return true;
                }
            return false;
        }
        Pairs All() const {
            Pairs all;
            for (const auto& chain : chains) all.insert(all.end(), chain.begin(), chain.end());
            return all;
        }
    };
    std::mt19937 random(5);
    StringMap map;
    Model model;
    for (int step = 0; step < 20000; ++step) {
        const std::string key = std::to_string(random() % 60);
        const std::string value = std::to_string(step);
        std::string before;
        switch (random() % 5) {
            case 0:
            case 1:
                map.SetAt(key, value);
                model.SetAt(key, value);
                break;
            case 2: EXPECT_EQ(map.RemoveKey(key), model.RemoveKey(key)); break;
            case 3:
                if (map.Lookup(key, before)) {
                    ASSERT_TRUE(map.ExtendValue(key, value));
                    model.RemoveKey(key);
                    model.SetAt(key, before + value);
                } else {
                    EXPECT_FALSE(map.ExtendValue(key, value));
                }
                break;
            default:
                if (random() % 50 == 0) {
                    map.RemoveAll();
                    model = Model{};
                }
                break;
        }
        ASSERT_EQ(map.Pairs(), model.All()) << "step " << step;
    }
}
