// Keyword maps that ask the reader for far more text than their size: many
// keywords naming one item thousands of times, many keywords sharing one long
// list. The results stay exactly those of the plain algorithm, and the text
// built from one map stops at kMaxKeywordTextSize.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "containers/ArtContainer.h"
#include "containers/writer/ArtContainerWriter.h"
#include "support/TempDir.h"

using containers::ArtContainerWriter;
using containers::CArtContainer;
using containers::KeywordIndexPlan;
using containers::KeywordPair;
using containers::kMaxKeywordTextSize;
using containers::MapText;
using framework::StringMap;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

KeywordPair PairOf(const std::string& keyword, int listIndex) {
    KeywordPair pair;
    pair.key = MapText::Narrow(keyword);
    pair.listIndex = listIndex;
    return pair;
}

// A container of `items` items whose keyword index is `index`, written by the
// container writer into `dir`.
std::string WriteContainer(testsupport::TempDir& dir, const KeywordIndexPlan& index, int items = 1,
                           size_t* fileSize = nullptr) {
    ArtContainerWriter writer;
    for (int i = 1; i <= items; ++i) {
        containers::ArtItemSource item;
        item.name = "item" + std::to_string(i);
        item.path = "item" + std::to_string(i) + ".bmp";
        writer.AddItem(item);
    }
    writer.SetKeywordIndex(index);
    std::vector<uint8_t> bytes;
    std::string error;
    EXPECT_TRUE(writer.Build(bytes, error)) << error;
    if (fileSize != nullptr) *fileSize = bytes.size();
    return dir.Write("keywords.qlt", bytes);
}

// The inversion as the plain algorithm states it: look the item up, and
// either store the first text or remove the key and store the longer text.
void InvertPlainly(const StringMap& keywordToItems, StringMap& itemToKeywords) {
    keywordToItems.ForEach([&](const std::string& keyword, const std::string& list) {
        size_t prev = 0;
        for (;;) {
            const size_t next = list.find(',', prev + 1);
            if (next == std::string::npos || next - prev - 1 == 0) break;
            const std::string item = list.substr(prev + 1, next - prev - 1);
            std::string value;
            if (!itemToKeywords.Lookup(item, value) || value.empty()) {
                itemToKeywords.SetAt(item, "," + keyword + ",");
            } else {
                itemToKeywords.RemoveKey(item);
                itemToKeywords.SetAt(item, value + keyword + ",");
            }
            prev = next;
        }
    });
}

size_t TextSize(const StringMap& map) {
    size_t total = 0;
    map.ForEach([&](const std::string&, const std::string& value) { total += value.size(); });
    return total;
}

}  // namespace

TEST(HostileKeywordMap, OneItemNamedThousandsOfTimesKeepsItsExactText) {
    // 22 KB: sixteen keywords share one list that names item 1 5,200 times.
    KeywordIndexPlan index;
    index.lists.push_back(std::vector<int32_t>(5200, 1));
    for (int k = 0; k < 16; ++k) index.pairs.push_back(PairOf("keyword" + std::to_string(100 + k), 0));
    testsupport::TempDir dir;
    size_t fileSize = 0;
    const std::string path = WriteContainer(dir, index, 1, &fileSize);
    EXPECT_GT(fileSize, 21000u);
    EXPECT_LT(fileSize, 23000u);

    CArtContainer container;
    ASSERT_TRUE(container.Open(path));
    StringMap keywordToItems;
    ASSERT_TRUE(container.LoadKeywordMap(keywordToItems));
    ASSERT_EQ(keywordToItems.GetCount(), 16);
    std::string expected = ",";
    keywordToItems.ForEach([&](const std::string& keyword, const std::string& list) {
        std::string ones = ",";
        for (int i = 0; i < 5200; ++i) ones += "1,";
        EXPECT_TRUE(list == ones) << keyword;
        for (int i = 0; i < 5200; ++i) expected += keyword + ",";
    });
    // Compared without printing: the text is 915,201 bytes long.
    const std::string keywords = container.GetItemKeywords(1);
    EXPECT_EQ(keywords.size(), expected.size());
    EXPECT_TRUE(keywords == expected);
    StringMap inverted;
    ASSERT_TRUE(container.LoadItemKeywordMap(inverted));
    EXPECT_EQ(inverted.GetCount(), 1);
    EXPECT_TRUE(inverted.Pairs() == (Pairs{{"1", expected}}));
    EXPECT_EQ(container.GetItemKeywords(2), "");
}

TEST(HostileKeywordMap, InversionAgreesWithThePlainAlgorithmOnCrowdedBuckets) {
    // Short keywords over few letters and item numbers up to 40 crowd the
    // buckets of both maps; lists repeat items in any order. The caller's map
    // sometimes holds texts already, empty ones among them.
    std::mt19937 random(3);
    testsupport::TempDir dir;
    for (int round = 0; round < 60; ++round) {
        KeywordIndexPlan index;
        const int lists = 1 + static_cast<int>(random() % 6);
        for (int l = 0; l < lists; ++l) {
            std::vector<int32_t> numbers(random() % 30);
            for (int32_t& n : numbers) n = 1 + static_cast<int32_t>(random() % 40);
            index.lists.push_back(numbers);
        }
        const int pairs = 1 + static_cast<int>(random() % 25);
        for (int p = 0; p < pairs; ++p) {
            std::string keyword;
            for (size_t length = 1 + random() % 3; keyword.size() < length;)
                keyword += static_cast<char>('a' + random() % 4);
            index.pairs.push_back(PairOf(keyword, static_cast<int>(random() % lists)));
        }
        const std::string path = WriteContainer(dir, index, 40);
        SCOPED_TRACE("round " + std::to_string(round));

        CArtContainer container;
        ASSERT_TRUE(container.Open(path));
        StringMap held;
        for (int i = 0; i < 4; ++i)
            held.SetAt(std::to_string(1 + random() % 40), random() % 2 ? ",old," : "");
        StringMap inverted = held;
        ASSERT_TRUE(container.LoadItemKeywordMap(inverted));
        StringMap keywordToItems;
        ASSERT_TRUE(container.LoadKeywordMap(keywordToItems));
        StringMap expected = held;
        InvertPlainly(keywordToItems, expected);
        EXPECT_EQ(inverted.Pairs(), expected.Pairs());

        StringMap fresh;
        InvertPlainly(keywordToItems, fresh);
        for (int32_t item = 0; item <= 41; ++item) {
            std::string text;
            fresh.Lookup(std::to_string(item), text);
            EXPECT_EQ(container.GetItemKeywords(item), text) << item;
        }
    }
}

namespace {

// List texts of `total` bytes: 671 keywords share one list of 5,000 numbers
// of nine digits (50,001 bytes of text each), and one more keyword's list of
// small numbers fills up the rest.
KeywordIndexPlan ListTextsOf(size_t total) {
    KeywordIndexPlan index;
    index.lists.push_back(std::vector<int32_t>(5000, 100000000));
    const size_t sharedText = 5000 * 10 + 1;
    const int sharing = 671;
    size_t rest = total - sharing * sharedText;
    // One digit and a comma each, behind the list's leading comma; an even
    // rest takes one two-digit number.
    std::vector<int32_t> small;
    if (rest % 2 == 0) {
        small.push_back(17);
        rest -= 3;
    }
    small.resize(small.size() + (rest - 1) / 2, 7);
    index.lists.push_back(small);
    for (int k = 0; k < sharing; ++k) index.pairs.push_back(PairOf("k" + std::to_string(k), 0));
    index.pairs.push_back(PairOf("small", 1));
    return index;
}

}  // namespace

TEST(HostileKeywordMap, ListTextsUpToTheCapAreBuiltAndOneByteMoreFails) {
    testsupport::TempDir dir;
    {
        CArtContainer container;
        ASSERT_TRUE(container.Open(WriteContainer(dir, ListTextsOf(kMaxKeywordTextSize))));
        StringMap map;
        ASSERT_TRUE(container.LoadKeywordMap(map));
        EXPECT_EQ(map.GetCount(), 672);
        EXPECT_EQ(TextSize(map), kMaxKeywordTextSize);
    }
    {
        CArtContainer container;
        ASSERT_TRUE(container.Open(WriteContainer(dir, ListTextsOf(kMaxKeywordTextSize + 1))));
        StringMap map;
        map.SetAt("stale", "x");
        EXPECT_FALSE(container.LoadKeywordMap(map));
        EXPECT_EQ(map.GetCount(), 0);
        // As with a map that cannot be read: nothing to invert, no keywords.
        StringMap inverted;
        EXPECT_TRUE(container.LoadItemKeywordMap(inverted));
        EXPECT_EQ(inverted.GetCount(), 0);
        EXPECT_EQ(container.GetItemKeywords(1), "");
        containers::ItemNumberArray items;
        EXPECT_TRUE(container.FindItemsByKeyword("small", items)) << "one list is still read alone";
    }
}

namespace {

// 31 keywords of 600 characters, each with a list that names item 1 1,801
// times: 31 x 1,801 x 601 bytes of keyword text and the leading comma make
// exactly 32 MiB. With `oneMore`, an empty keyword names item 2 as well,
// whose text the caller already holds: one more byte, the comma.
KeywordIndexPlan InvertedTextAtTheCap(bool oneMore) {
    static_assert(31u * 1801u * 601u + 1u == kMaxKeywordTextSize, "the sizes below fill the cap");
    KeywordIndexPlan index;
    index.lists.push_back(std::vector<int32_t>(1801, 1));
    for (int k = 0; k < 31; ++k) {
        std::string keyword(600, static_cast<char>('a' + k % 26));
        keyword[0] = static_cast<char>('A' + k);
        index.pairs.push_back(PairOf(keyword, 0));
    }
    if (oneMore) {
        index.lists.push_back({2});
        index.pairs.push_back(PairOf("", 1));
    }
    return index;
}

}  // namespace

TEST(HostileKeywordMap, InvertedTextsUpToTheCapAreBuiltAndOneByteMoreFails) {
    testsupport::TempDir dir;
    {
        CArtContainer container;
        ASSERT_TRUE(container.Open(WriteContainer(dir, InvertedTextAtTheCap(false))));
        StringMap inverted;
        inverted.SetAt("2", ",x,");
        ASSERT_TRUE(container.LoadItemKeywordMap(inverted));
        ASSERT_EQ(inverted.GetCount(), 2);
        EXPECT_EQ(TextSize(inverted), kMaxKeywordTextSize + 3);
    }
    {
        CArtContainer container;
        ASSERT_TRUE(container.Open(WriteContainer(dir, InvertedTextAtTheCap(true))));
        StringMap keywordToItems;
        ASSERT_TRUE(container.LoadKeywordMap(keywordToItems)) << "the list texts are small";
        StringMap inverted;
        inverted.SetAt("2", ",x,");
        EXPECT_FALSE(container.LoadItemKeywordMap(inverted));
        EXPECT_LE(TextSize(inverted), kMaxKeywordTextSize + 3) << "nothing is built past the cap";
        EXPECT_TRUE(container.GetItemKeywords(1).empty()) << "no partial text of the refused map";
    }
}
