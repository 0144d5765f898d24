#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "ContainerImage.h"
#include "containers/ArtContainer.h"
#include "support/TempDir.h"

using containers::CArtContainer;
using containers::ItemNumberArray;
using framework::StringMap;
using testsupport::ArchiveBytes;
using testsupport::ContainerImage;
using testsupport::MakeEntry;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

// Builds a container whose keyword map is `map` (already in archive form);
// item lists are appended first so that their offsets can go into the map.
class KeywordContainer {
public:
    KeywordContainer() {
        std::vector<containers::ArtEntryRecord> entries;
        for (int i = 1; i <= 20; ++i) entries.push_back(MakeEntry(i, "item" + std::to_string(i), "p"));
        image.AppendEntryTable(entries);
    }

    int32_t AddList(const std::vector<int32_t>& numbers) {
        int32_t at = image.AppendLong(static_cast<int32_t>(numbers.size()));
        for (int32_t n : numbers) image.AppendLong(n);
        return at;
    }

    // A map of keyword -> list offset text, in the given order.
    void SetMap(const Pairs& pairs, int32_t bufferSize = 0) {
        ArchiveBytes archive;
        archive.Count(static_cast<uint32_t>(pairs.size()));
        for (const auto& [key, value] : pairs) archive.String(key).String(value);
        SetMapBytes(archive.bytes, bufferSize);
    }

    void SetMapBytes(const std::vector<uint8_t>& bytes, int32_t bufferSize = 0) {
        image.keywordDirectory.keywordMapOffset = image.Append(bytes);
        image.keywordDirectory.keywordMapBufferSize =
            bufferSize != 0 ? bufferSize : static_cast<int32_t>(bytes.size());
    }

    bool Open(CArtContainer& container, std::vector<uint8_t>* bytesOut = nullptr) {
        auto bytes = image.Bytes();
        if (bytesOut != nullptr) *bytesOut = bytes;
        return container.Open(dir.Write("keywords.qlt", bytes));
    }

    ContainerImage image;
    testsupport::TempDir dir;
};

std::vector<int32_t> Items(const ItemNumberArray& array) {
    return std::vector<int32_t>(array.GetData(), array.GetData() + array.GetSize());
}

}  // namespace

TEST(KeywordIndex, ContainerWithoutKeywordMap) {
    KeywordContainer k;
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    StringMap map;
    map.SetAt("stale", "x");
    EXPECT_FALSE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.GetCount(), 0) << "the out map is emptied before any test";
    ItemNumberArray items;
    items.Add(5);
    EXPECT_FALSE(container.FindItemsByKeyword("dog", items));
    EXPECT_EQ(items.GetSize(), 0);
    StringMap inverted;
    EXPECT_TRUE(container.LoadItemKeywordMap(inverted));
    EXPECT_EQ(inverted.GetCount(), 0);
    EXPECT_EQ(container.GetItemKeywords(1), "");
}

TEST(KeywordIndex, ListTextsOfItemNumbers) {
    KeywordContainer k;
    const int32_t list = k.AddList({3, 7, 12});
    k.SetMap({{"dog", std::to_string(list)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.Pairs(), (Pairs{{"dog", ",3,7,12,"}}));
}

TEST(KeywordIndex, TheDocumentedBytesOfOneKeyword) {
    // The word dog with its list at offset 1000: 03 64 6F 67 04 31 30 30 30.
    ContainerImage image;
    image.AppendEntryTable({MakeEntry(1, "one", "p")});
    while (image.Offset() < 1000) image.Append("\0", 1);
    ASSERT_EQ(image.AppendLong(2), 1000);
    image.AppendLong(4);
    image.AppendLong(2);
    const std::vector<uint8_t> map = {0x01, 0x00, 0x03, 0x64, 0x6F, 0x67, 0x04, 0x31, 0x30, 0x30, 0x30};
    image.keywordDirectory.keywordMapOffset = image.Append(map);
    image.keywordDirectory.keywordMapBufferSize = static_cast<int32_t>(map.size());
    testsupport::TempDir dir;
    CArtContainer container;
    ASSERT_TRUE(container.Open(dir.Write("dog.qlt", image.Bytes())));
    ItemNumberArray items;
    ASSERT_TRUE(container.FindItemsByKeyword("dog", items));
    EXPECT_EQ(Items(items), (std::vector<int32_t>{4, 2})) << "numbers keep the writer's order";
}

TEST(KeywordIndex, EmptyListGivesALoneComma) {
    KeywordContainer k;
    const int32_t list = k.AddList({});
    k.SetMap({{"empty", std::to_string(list)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.Pairs(), (Pairs{{"empty", ","}}));
    ItemNumberArray items;
    EXPECT_TRUE(container.FindItemsByKeyword("empty", items));
    EXPECT_EQ(items.GetSize(), 0);
}

TEST(KeywordIndex, ValueParsingToZeroIsLeftOut) {
    KeywordContainer k;
    const int32_t list = k.AddList({1});
    k.SetMap({{"none", "0"}, {"words", "abc"}, {"dog", std::to_string(list)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.Pairs(), (Pairs{{"dog", ",1,"}}));
    ItemNumberArray items;
    EXPECT_FALSE(container.FindItemsByKeyword("none", items));
    EXPECT_FALSE(container.FindItemsByKeyword("words", items));
}

TEST(KeywordIndex, ValuesParseLikeAtol) {
    KeywordContainer k;
    const int32_t list = k.AddList({9});
    k.SetMap({{"dog", " \t+" + std::to_string(list) + "xyz"}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    ItemNumberArray items;
    ASSERT_TRUE(container.FindItemsByKeyword("dog", items));
    EXPECT_EQ(Items(items), (std::vector<int32_t>{9}));
}

TEST(KeywordIndex, NegativeOffsetFailsTheWholeMap) {
    KeywordContainer k;
    const int32_t list = k.AddList({9});
    k.SetMap({{"dog", std::to_string(list)}, {"bad", "-40"}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    StringMap map;
    EXPECT_FALSE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.GetCount(), 0);
    ItemNumberArray items;
    EXPECT_TRUE(container.FindItemsByKeyword("dog", items));
    EXPECT_FALSE(container.FindItemsByKeyword("bad", items));
}

TEST(KeywordIndex, FindTrimsBlanksButRespectsCase) {
    KeywordContainer k;
    const int32_t list = k.AddList({3});
    k.SetMap({{"dog", std::to_string(list)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    ItemNumberArray items;
    EXPECT_TRUE(container.FindItemsByKeyword(" dog ", items));
    EXPECT_EQ(Items(items), (std::vector<int32_t>{3}));
    EXPECT_FALSE(container.FindItemsByKeyword("Dog", items));
    EXPECT_EQ(items.GetSize(), 0);
    EXPECT_FALSE(container.FindItemsByKeyword("   ", items)) << "blanks pass the emptiness test, then fail";
    EXPECT_FALSE(container.FindItemsByKeyword("", items));
}

TEST(KeywordIndex, FindKeepsTheArraysGrowBy) {
    KeywordContainer k;
    const int32_t list = k.AddList({1, 2, 3, 4, 5, 6});
    k.SetMap({{"dog", std::to_string(list)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    ItemNumberArray items;
    items.SetSize(0, 32);
    ASSERT_TRUE(container.FindItemsByKeyword("dog", items));
    EXPECT_EQ(items.GetSize(), 6);
    EXPECT_EQ(items.GetGrowBy(), 32);
}

TEST(KeywordIndex, KeywordWithACommaCannotBeToldFromTwoKeywords) {
    KeywordContainer k;
    const int32_t list = k.AddList({4});
    k.SetMap({{"red,blue", std::to_string(list)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    EXPECT_EQ(container.GetItemKeywords(4), ",red,blue,");
}

TEST(KeywordIndex, WordOrderFollowsTheMapsBuckets) {
    // "dog" hashes to bucket 7, "cat" to 16, "ant" to 1: the walk goes by
    // bucket, whatever order the file gives.
    KeywordContainer k;
    const int32_t dogs = k.AddList({2});
    const int32_t cats = k.AddList({2});
    const int32_t ants = k.AddList({2});
    k.SetMap({{"cat", std::to_string(cats)}, {"dog", std::to_string(dogs)}, {"ant", std::to_string(ants)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    EXPECT_EQ(container.GetItemKeywords(2), ",ant,dog,cat,");
}

TEST(KeywordIndex, KeysOfOneBucketAreReversedOncePerMap) {
    // "a" and "r" share bucket 12. Read from the file in the order a, r, the
    // map walks r, a; the keyword map built from that walk holds a at the
    // head, and the inverted map walks it in that order.
    KeywordContainer k;
    const int32_t list = k.AddList({5});
    k.SetMap({{"a", std::to_string(list)}, {"r", std::to_string(list)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    StringMap keywordToItems;
    ASSERT_TRUE(container.LoadKeywordMap(keywordToItems));
    EXPECT_EQ(keywordToItems.Pairs(), (Pairs{{"a", ",5,"}, {"r", ",5,"}}));
    EXPECT_EQ(container.GetItemKeywords(5), ",a,r,");
}

TEST(KeywordIndex, LaterPairWithTheSameKeyWins) {
    KeywordContainer k;
    const int32_t first = k.AddList({1});
    const int32_t second = k.AddList({2, 3});
    k.SetMap({{"dog", std::to_string(first)}, {"dog", std::to_string(second)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.Pairs(), (Pairs{{"dog", ",2,3,"}}));
}

TEST(KeywordIndex, InvertedMapAppendsToWhatTheCallerHolds) {
    KeywordContainer k;
    const int32_t list = k.AddList({3});
    k.SetMap({{"dog", std::to_string(list)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    StringMap inverted;
    inverted.SetAt("3", ",old,");
    inverted.SetAt("4", "");
    ASSERT_TRUE(container.LoadItemKeywordMap(inverted));
    std::string value;
    ASSERT_TRUE(inverted.Lookup("3", value));
    EXPECT_EQ(value, ",old,dog,");
}

TEST(KeywordIndex, ExtendingAKeyMovesItToTheHeadOfItsBucket) {
    // "3" and "11" share bucket 0. "11" was added later, so it leads, until
    // "3" is extended: that removes and re-adds it at the head.
    KeywordContainer k;
    const int32_t list = k.AddList({3});
    k.SetMap({{"dog", std::to_string(list)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    StringMap inverted;
    inverted.SetAt("3", ",old,");
    inverted.SetAt("11", ",x,");
    ASSERT_EQ(inverted.Pairs().front().first, "11");
    ASSERT_TRUE(container.LoadItemKeywordMap(inverted));
    EXPECT_EQ(inverted.Pairs().front(), (std::pair<std::string, std::string>("3", ",old,dog,")));
}

TEST(KeywordIndex, EmptyValueInTheCallersMapIsReplacedInPlace) {
    KeywordContainer k;
    const int32_t list = k.AddList({3});
    k.SetMap({{"dog", std::to_string(list)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    StringMap inverted;
    inverted.SetAt("3", "");
    inverted.SetAt("11", ",x,");
    ASSERT_TRUE(container.LoadItemKeywordMap(inverted));
    EXPECT_EQ(inverted.Pairs(), (Pairs{{"11", ",x,"}, {"3", ",dog,"}}));
}

TEST(KeywordIndex, ItemsOfEveryKeyword) {
    KeywordContainer k;
    const int32_t dogs = k.AddList({1, 2});
    const int32_t cats = k.AddList({2, 3});
    k.SetMap({{"dog", std::to_string(dogs)}, {"cat", std::to_string(cats)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    EXPECT_EQ(container.GetItemKeywords(1), ",dog,");
    EXPECT_EQ(container.GetItemKeywords(2), ",dog,cat,");
    EXPECT_EQ(container.GetItemKeywords(3), ",cat,");
    EXPECT_EQ(container.GetItemKeywords(4), "");
}

TEST(KeywordIndex, LongLengthPrefixes) {
    KeywordContainer k;
    const int32_t list = k.AddList({7});
    const std::string medium(300, 'm');
    const std::string huge(0x10005, 'h');
    k.SetMap({{medium, std::to_string(list)}, {huge, std::to_string(list)}});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    ItemNumberArray items;
    EXPECT_TRUE(container.FindItemsByKeyword(medium, items));
    EXPECT_TRUE(container.FindItemsByKeyword(huge, items));
    EXPECT_EQ(Items(items), (std::vector<int32_t>{7}));
}

TEST(KeywordIndex, LongCountForm) {
    KeywordContainer k;
    const int32_t list = k.AddList({1});
    ArchiveBytes archive;
    archive.Word(0xFFFF)
        .Dword(2)
        .String("one")
        .String(std::to_string(list))
        .String("two")
        .String(std::to_string(list));
    k.SetMapBytes(archive.bytes);
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.GetCount(), 2);
}

TEST(KeywordIndex, Utf16TextsAreConvertedToAnsi) {
    KeywordContainer k;
    const int32_t list = k.AddList({8});
    ArchiveBytes archive;
    archive.Count(1).WideString(u"caf\u00e9\u20ac\u4e2d").String(std::to_string(list));
    k.SetMapBytes(archive.bytes);
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.Pairs(), (Pairs{{"caf\xe9\x80?", ",8,"}}));
}

TEST(KeywordIndex, MapWithNoPairsFails) {
    KeywordContainer k;
    k.SetMap({});
    CArtContainer container;
    ASSERT_TRUE(k.Open(container));
    StringMap map;
    EXPECT_FALSE(container.LoadKeywordMap(map));
    ItemNumberArray items;
    EXPECT_FALSE(container.FindItemsByKeyword("dog", items));
}

TEST(KeywordIndex, BufferSizeFieldDoesNotChangeTheResult) {
    for (int32_t bufferSize : {1, 127, 128, 4096, 0x7FFFFFFF, -5}) {
        KeywordContainer k;
        const int32_t list = k.AddList({1, 2});
        k.SetMap({{"dog", std::to_string(list)}, {"cat", std::to_string(list)}}, bufferSize);
        CArtContainer container;
        ASSERT_TRUE(k.Open(container));
        StringMap map;
        ASSERT_TRUE(container.LoadKeywordMap(map)) << bufferSize;
        EXPECT_EQ(map.GetCount(), 2);
    }
}

TEST(KeywordIndex, ListCountsTheFileCannotHoldFail) {
    for (int32_t count : {-1, 1000, 0x7FFFFFFF}) {
        KeywordContainer k;
        const int32_t good = k.AddList({1});
        const int32_t bad = k.image.AppendLong(count);
        k.SetMap({{"good", std::to_string(good)}, {"bad", std::to_string(bad)}});
        CArtContainer container;
        ASSERT_TRUE(k.Open(container));
        StringMap map;
        EXPECT_FALSE(container.LoadKeywordMap(map)) << count;
        EXPECT_EQ(map.GetCount(), 0);
        ItemNumberArray items;
        EXPECT_FALSE(container.FindItemsByKeyword("bad", items));
        EXPECT_EQ(items.GetSize(), 0);
        EXPECT_TRUE(container.FindItemsByKeyword("good", items));
    }
}

TEST(KeywordIndex, TruncatedMapsFailAtEveryLength) {
    KeywordContainer k;
    const int32_t list = k.AddList({1, 2});
    k.SetMap({{"dog", std::to_string(list)}, {std::string(300, 'w'), std::to_string(list)}});
    std::vector<uint8_t> whole;
    {
        CArtContainer container;
        ASSERT_TRUE(k.Open(container, &whole));
    }
    const size_t mapStart = static_cast<size_t>(k.image.keywordDirectory.keywordMapOffset);
    for (size_t length = mapStart; length < whole.size(); ++length) {
        std::vector<uint8_t> cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length));
        CArtContainer container;
        ASSERT_TRUE(container.Open(k.dir.Write("cut.qlt", cut)));
        StringMap map;
        EXPECT_FALSE(container.LoadKeywordMap(map)) << length;
        EXPECT_EQ(container.GetItemKeywords(1), "");
    }
}

TEST(KeywordIndex, MapOffsetOutsideTheFileFails) {
    for (int32_t offset : {-8, 0x7FFFFF00}) {
        KeywordContainer k;
        k.image.keywordDirectory.keywordMapOffset = offset;
        CArtContainer container;
        ASSERT_TRUE(k.Open(container));
        StringMap map;
        EXPECT_FALSE(container.LoadKeywordMap(map));
        StringMap inverted;
        EXPECT_TRUE(container.LoadItemKeywordMap(inverted));
    }
}
