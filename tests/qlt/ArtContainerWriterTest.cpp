// The container writer, checked through the reader: whatever it writes must
// read back as it was given, byte for byte.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <set>

#include "QltTestSupport.h"
#include "containers/ArtContainer.h"
#include "containers/ImplodeAdapters.h"
#include "containers/writer/ChunkCodec.h"

using containers::ArtContainerWriter;
using containers::ArtItemSource;
using containers::ArtLayoutInfo;
using containers::ArtRenditionSource;
using containers::CArtContainer;
using containers::ItemNumberArray;
using containers::KeywordIndexPlan;
using containers::KeywordPair;
using containers::MapText;
using framework::StringMap;
using qlttest::Bytes;
using qlttest::LongAt;

namespace {

class ArtContainerWriterTest : public ::testing::Test {
protected:
    std::string Write(const ArtContainerWriter& writer, ArtLayoutInfo* layout = nullptr,
                      const std::string& name = "out.qlt") {
        return qlttest::WriteContainer(writer, dir.File(name), layout);
    }

    std::vector<uint8_t> Build(const ArtContainerWriter& writer, ArtLayoutInfo* layout = nullptr) {
        std::vector<uint8_t> bytes;
        std::string error;
        EXPECT_TRUE(writer.Build(bytes, error, layout)) << error;
        return bytes;
    }

    static ArtItemSource Item(const std::string& name, std::vector<std::string> keywords = {}) {
        ArtItemSource item;
        item.name = name;
        item.path = "C:\\Art\\" + name + ".wmf";
        item.keywords = std::move(keywords);
        return item;
    }

    static std::vector<int32_t> Items(const ItemNumberArray& array) {
        return std::vector<int32_t>(array.GetData(), array.GetData() + array.GetSize());
    }

    testsupport::TempDir dir;
};

std::vector<uint8_t> Payload(const std::unique_ptr<uint8_t[]>& data, int32_t size) {
    return std::vector<uint8_t>(data.get(), data.get() + size);
}

// ---------------------------------------------------------------- layout

TEST_F(ArtContainerWriterTest, FixedStartHoldsTheDefaultsAndTheDirectories) {
    ArtContainerWriter writer;
    writer.AddItem(Item("a"));
    writer.AddItem(Item("b"));
    writer.AddItem(Item("c"));
    const std::vector<uint8_t> bytes = Build(writer);

    ASSERT_GE(bytes.size(), 324u + 3 * 540u);
    EXPECT_EQ(LongAt(bytes, 0), 0);
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes.data() + 4), containers::kDefaultNotice);
    const uint8_t version[8] = {0, 0, 0, 0, 0, 0, 0xF0, 0x3F};
    EXPECT_EQ(std::memcmp(bytes.data() + 264, version, 8), 0) << "version 1.0";
    EXPECT_EQ(LongAt(bytes, 280), 3) << "item count";
    for (int offset : {272, 276, 284, 288, 292}) EXPECT_EQ(LongAt(bytes, offset), 0) << offset;
    EXPECT_EQ(LongAt(bytes, 296), 0) << "keyword directory word0";
    EXPECT_EQ(LongAt(bytes, 300), 0) << "no keywords, no map";
    EXPECT_EQ(LongAt(bytes, 308), 0);
    EXPECT_EQ(LongAt(bytes, 312), 324) << "the entry table takes the first free byte";
    EXPECT_EQ(LongAt(bytes, 316), 0);
    EXPECT_EQ(LongAt(bytes, 320), 0);
    // Item n's record at table + (n - 1) * 540.
    for (int n = 1; n <= 3; ++n)
        EXPECT_STREQ(reinterpret_cast<const char*>(bytes.data() + 324 + (n - 1) * 540 + 4),
                     std::string(1, static_cast<char>('a' + n - 1)).c_str());
}

TEST_F(ArtContainerWriterTest, HeaderAndDirectoryWordsAreWrittenAsGiven) {
    containers::ArtWriterOptions options;
    options.notice = "Made by hand";
    options.version = 2.5;
    options.headerWord0 = 10;
    options.headerWord1 = 11;
    options.headerWord2 = 12;
    options.headerWord3 = 13;
    options.headerWord4 = 14;
    options.headerWord5 = 15;
    options.keywordDirectoryWord0 = 16;
    options.entryDirectoryWord0 = 17;
    options.reservedWord0 = 18;
    options.reservedWord1 = -19;
    ArtContainerWriter writer(options);
    writer.AddItem(Item("a"));

    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    EXPECT_EQ(container.GetHeaderValue(), 12);
    const containers::ArtContainerHeader& header = *container.Header();
    EXPECT_STREQ(header.notice, "Made by hand");
    EXPECT_EQ(header.version, 2.5);
    EXPECT_EQ(header.headerWord0, 10);
    EXPECT_EQ(header.headerWord1, 11);
    EXPECT_EQ(header.headerWord3, 13);
    EXPECT_EQ(header.headerWord4, 14);
    EXPECT_EQ(header.headerWord5, 15);
    EXPECT_EQ(container.KeywordDirectory()->word0, 16);
    EXPECT_EQ(container.EntryDirectory()->word0, 17);
    EXPECT_EQ(container.ReservedDirectory()->word0, 18);
    EXPECT_EQ(container.ReservedDirectory()->word1, -19);
}

TEST_F(ArtContainerWriterTest, EmptyContainerOpensWithNoItemsAndNoTable) {
    ArtContainerWriter writer;
    const std::string path = Write(writer);
    EXPECT_EQ(std::filesystem::file_size(path), 324u);
    CArtContainer container;
    ASSERT_TRUE(container.Open(path));
    EXPECT_EQ(container.GetItemCount(), 0);
    EXPECT_EQ(container.EntryDirectory()->entryTableOffset, 0);
    EXPECT_EQ(container.KeywordDirectory()->keywordMapOffset, 0);
}

TEST_F(ArtContainerWriterTest, ItemTextsAndCodeReadBack) {
    ArtContainerWriter writer;
    ArtItemSource item = Item("Golden retriever");
    item.path = "C:\\Art\\Dogs\\retriever.wmf";
    item.code = -42;
    writer.AddItem(item);
    writer.AddItem(Item("second"));

    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    ASSERT_EQ(container.GetItemCount(), 2);
    containers::ArtItemInfo info;
    ASSERT_TRUE(container.GetItemInfo(1, info));
    EXPECT_EQ(info.name, "Golden retriever");
    EXPECT_EQ(info.path, "C:\\Art\\Dogs\\retriever.wmf");
    EXPECT_EQ(info.code, -42);
    ASSERT_TRUE(container.GetItemInfo(2, info));
    EXPECT_EQ(info.name, "second");
}

TEST_F(ArtContainerWriterTest, TextsOf254CharactersFitAndLongerOnesAreRejected) {
    const std::string longest(254, 'n');
    {
        ArtContainerWriter writer;
        ArtItemSource item = Item(longest);
        item.path = std::string(254, 'p');
        writer.AddItem(item);
        CArtContainer container;
        ASSERT_TRUE(container.Open(Write(writer)));
        containers::ArtItemInfo info;
        ASSERT_TRUE(container.GetItemInfo(1, info));
        EXPECT_EQ(info.name, longest);
        EXPECT_EQ(info.path, std::string(254, 'p'));
    }
    for (const char* field : {"name", "path"}) {
        ArtContainerWriter writer;
        writer.AddItem(Item("fine"));
        ArtItemSource item = Item("second");
        (std::string(field) == "name" ? item.name : item.path) = std::string(255, 'x');
        writer.AddItem(item);
        std::vector<uint8_t> bytes;
        std::string error;
        EXPECT_FALSE(writer.Build(bytes, error));
        EXPECT_NE(error.find(field), std::string::npos) << error;
        EXPECT_NE(error.find("item 2"), std::string::npos) << error;
        EXPECT_NE(error.find("254"), std::string::npos) << error;
    }
}

TEST_F(ArtContainerWriterTest, TextsWithANulAreRejected) {
    ArtContainerWriter writer;
    ArtItemSource item = Item("x");
    item.name = std::string("a\0b", 3);
    writer.AddItem(item);
    std::vector<uint8_t> bytes;
    std::string error;
    EXPECT_FALSE(writer.Build(bytes, error));
    EXPECT_NE(error.find("NUL"), std::string::npos) << error;
}

TEST_F(ArtContainerWriterTest, NoticeMustLeaveRoomForItsNul) {
    containers::ArtWriterOptions options;
    options.notice = std::string(259, 'n');
    std::vector<uint8_t> bytes;
    std::string error;
    EXPECT_TRUE(ArtContainerWriter(options).Build(bytes, error)) << error;
    EXPECT_EQ(bytes[4 + 259], 0);
    options.notice += 'n';
    EXPECT_FALSE(ArtContainerWriter(options).Build(bytes, error));
}

// ---------------------------------------------------------------- data chunks

class DataRoundTrip : public ArtContainerWriterTest, public ::testing::WithParamInterface<int32_t> {};

TEST_P(DataRoundTrip, EveryDataShapeReadsBackByItsMethod) {
    const int32_t method = GetParam();
    const std::vector<std::vector<uint8_t>> samples = {
        {}, Bytes("x"), qlttest::TextData(5000), qlttest::RandomData(3000), std::vector<uint8_t>(70000, 'A')};
    ArtContainerWriter writer;
    for (size_t i = 0; i < samples.size(); ++i) {
        ArtItemSource item = Item("item" + std::to_string(i));
        item.data = samples[i];
        item.method = method;
        item.dataWord1 = 100 + static_cast<int32_t>(i);
        writer.AddItem(item);
    }
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    for (size_t i = 0; i < samples.size(); ++i) {
        SCOPED_TRACE("sample " + std::to_string(i));
        const int32_t number = static_cast<int32_t>(i + 1);
        int32_t uncompressedSize = -1;
        std::unique_ptr<containers::ArtRawChunk> raw = container.ReadRawItemData(&uncompressedSize, number);
        ASSERT_NE(raw, nullptr);
        EXPECT_EQ(raw->method, method);
        EXPECT_EQ(raw->word1, 100 + static_cast<int32_t>(i));
        EXPECT_EQ(uncompressedSize, static_cast<int32_t>(samples[i].size()));
        const size_t stored = static_cast<size_t>(raw->chunkSize - 12);
        if (method == containers::kMethodStored) {
            EXPECT_EQ(stored, samples[i].size());
        }

        int32_t size = -1;
        std::unique_ptr<uint8_t[]> data = container.ReadItemData(number, &size);
        if (method == containers::kMethodImplode) {
            // The reader reports a well-exploded chunk as a failure; the
            // explode adapter itself gives the data back.
            EXPECT_EQ(data, nullptr);
            EXPECT_EQ(size, 0);
            std::vector<uint8_t> exploded(samples[i].size() + 1);
            uint32_t crc = 0;
            ASSERT_EQ(containers::ExplodeMemory(&crc, raw->data.get(), static_cast<uint32_t>(stored),
                                                exploded.data(), static_cast<uint32_t>(samples[i].size())),
                      1);
            exploded.resize(samples[i].size());
            EXPECT_EQ(exploded, samples[i]);
        } else {
            ASSERT_NE(data, nullptr);
            EXPECT_EQ(size, static_cast<int32_t>(samples[i].size()));
            EXPECT_EQ(Payload(data, size), samples[i]);
        }
        std::vector<uint8_t> decoded;
        std::string error;
        EXPECT_TRUE(containers::DecompressChunk(raw->method, raw->data.get(), stored, uncompressedSize,
                                                decoded, error))
            << error;
        EXPECT_EQ(decoded, samples[i]);
    }
}

INSTANTIATE_TEST_SUITE_P(Methods, DataRoundTrip, ::testing::Values(0, 1, 2));

TEST_F(ArtContainerWriterTest, CompressingMethodsShrinkTextAndStoredDoesNot) {
    const std::vector<uint8_t> text = qlttest::TextData(20000);
    for (int32_t method : {0, 1, 2}) {
        ArtContainerWriter writer;
        ArtItemSource item = Item("t");
        item.data = text;
        item.method = method;
        writer.AddItem(item);
        ArtLayoutInfo layout;
        const std::vector<uint8_t> bytes = Build(writer, &layout);
        const int32_t chunkSize = LongAt(bytes, layout.items[0].dataOffset);
        if (method == 0)
            EXPECT_EQ(chunkSize, 20000 + 12);
        else
            EXPECT_LT(chunkSize, 10000) << "method " << method;
    }
}

TEST_F(ArtContainerWriterTest, ImplodedDataThatDoesNotShrinkIsStillWritten) {
    const std::vector<uint8_t> noise = qlttest::RandomData(4000);
    std::vector<uint8_t> scratch(noise.size());
    uint32_t crc = 0;
    uint32_t compressed = 0;
    ASSERT_EQ(containers::ImplodeMemory(&crc, &compressed, noise.data(), scratch.data(),
                                        static_cast<uint32_t>(noise.size())),
              0)
        << "the adapter limits its output to the input size";

    ArtContainerWriter writer;
    ArtItemSource item = Item("noise");
    item.data = noise;
    item.method = containers::kMethodImplode;
    writer.AddItem(item);
    ArtLayoutInfo layout;
    const std::vector<uint8_t> bytes = Build(writer, &layout);
    const int32_t stored = LongAt(bytes, layout.items[0].dataOffset) - 12;
    EXPECT_GT(stored, 4000);
    std::vector<uint8_t> decoded;
    std::string error;
    ASSERT_TRUE(containers::DecompressChunk(2, bytes.data() + layout.items[0].dataOffset + 16,
                                            static_cast<size_t>(stored), 4000, decoded, error))
        << error;
    EXPECT_EQ(decoded, noise);
}

TEST_F(ArtContainerWriterTest, ImplodeModeAndDictionarySizeAreThoseChosen) {
    const std::vector<uint8_t> text = qlttest::TextData(9000, 3);
    struct Choice {
        unsigned int type;
        unsigned int dictionary;
        uint8_t dictionaryBits;
    };
    for (const Choice& choice :
         {Choice{dcl::kCompressionAscii, 4096, 6}, Choice{dcl::kCompressionAscii, 1024, 4},
          Choice{dcl::kCompressionBinary, 2048, 5}, Choice{dcl::kCompressionBinary, 4096, 6}}) {
        SCOPED_TRACE("type " + std::to_string(choice.type) + ", dictionary " +
                     std::to_string(choice.dictionary));
        containers::ArtWriterOptions options;
        options.implodeType = choice.type;
        options.implodeDictionarySize = choice.dictionary;
        ArtContainerWriter writer(options);
        ArtItemSource item = Item("t");
        item.data = text;
        item.method = 2;
        writer.AddItem(item);
        ArtLayoutInfo layout;
        const std::vector<uint8_t> bytes = Build(writer, &layout);
        const int64_t payload = layout.items[0].dataOffset + 16;
        // An implode stream opens with its literal coding and dictionary size.
        EXPECT_EQ(bytes[static_cast<size_t>(payload)], choice.type);
        EXPECT_EQ(bytes[static_cast<size_t>(payload) + 1], choice.dictionaryBits);
        std::vector<uint8_t> exploded(text.size());
        uint32_t crc = 0;
        ASSERT_EQ(containers::ExplodeMemory(&crc, bytes.data() + payload,
                                            static_cast<uint32_t>(LongAt(bytes, payload - 16) - 12),
                                            exploded.data(), static_cast<uint32_t>(text.size())),
                  1);
        EXPECT_EQ(exploded, text);
    }
}

TEST_F(ArtContainerWriterTest, BadImplodeSettingsAndMethodsAreRejected) {
    for (int variant = 0; variant < 3; ++variant) {
        containers::ArtWriterOptions options;
        ArtItemSource item = Item("t");
        item.data = Bytes("data");
        item.method = 2;
        if (variant == 0) options.implodeType = 5;
        if (variant == 1) options.implodeDictionarySize = 3000;
        if (variant == 2) item.method = 3;
        ArtContainerWriter writer(options);
        writer.AddItem(item);
        std::vector<uint8_t> bytes;
        std::string error;
        EXPECT_FALSE(writer.Build(bytes, error)) << variant;
        EXPECT_FALSE(error.empty());
    }
}

TEST_F(ArtContainerWriterTest, ItemWithoutDataHasDataOffsetZero) {
    ArtContainerWriter writer;
    writer.AddItem(Item("nothing"));
    ArtItemSource empty = Item("empty");
    empty.data = std::vector<uint8_t>();
    writer.AddItem(empty);
    ArtLayoutInfo layout;
    const std::vector<uint8_t> bytes = Build(writer, &layout);
    EXPECT_EQ(LongAt(bytes, 324 + 536), 0);
    EXPECT_NE(LongAt(bytes, 324 + 540 + 536), 0) << "empty data is still a chunk";

    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    int32_t size = -1;
    EXPECT_EQ(container.ReadItemData(1, &size), nullptr);
    EXPECT_NE(container.ReadItemData(2, &size), nullptr);
    EXPECT_EQ(size, 0);
}

TEST_F(ArtContainerWriterTest, RawChunksAreWrittenVerbatim) {
    ArtContainerWriter writer;
    ArtItemSource item = Item("raw");
    item.rawData = containers::ArtRawData{9, 1234, Bytes("opaque")};
    item.dataWord1 = 77;
    writer.AddItem(item);
    ArtLayoutInfo layout;
    const std::vector<uint8_t> bytes = Build(writer, &layout);
    const int32_t at = layout.items[0].dataOffset;
    EXPECT_EQ(LongAt(bytes, at), 6 + 12);
    EXPECT_EQ(LongAt(bytes, at + 4), 77);
    EXPECT_EQ(LongAt(bytes, at + 8), 9);
    EXPECT_EQ(LongAt(bytes, at + 12), 1234);
    EXPECT_EQ(std::string(bytes.begin() + at + 16, bytes.begin() + at + 22), "opaque");
}

// ---------------------------------------------------------------- renditions

TEST_F(ArtContainerWriterTest, EveryRenditionKindReadsBackWithItsWords) {
    ArtContainerWriter writer;
    ArtItemSource item = Item("pictures");
    // Given out of order, to show that the kind alone decides the slot.
    for (int32_t kind : {0x80, 0x10, 0x40, 0x30, 0x20}) {
        ArtRenditionSource rendition;
        rendition.kind = kind;
        rendition.payload =
            qlttest::RandomData(static_cast<size_t>(kind) * 3, static_cast<unsigned int>(kind));
        rendition.word1 = kind + 1;
        rendition.word2 = kind + 2;
        rendition.word3 = kind + 3;
        rendition.word4 = kind + 4;
        item.renditions.push_back(rendition);
    }
    writer.AddItem(item);
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    for (int32_t kind : containers::kRenditionKinds) {
        SCOPED_TRACE(kind);
        const std::vector<uint8_t> expected =
            qlttest::RandomData(static_cast<size_t>(kind) * 3, static_cast<unsigned int>(kind));
        int32_t size = -1;
        std::unique_ptr<uint8_t[]> data = container.ReadRendition(1, kind, &size);
        ASSERT_NE(data, nullptr);
        EXPECT_EQ(Payload(data, size), expected);
        std::unique_ptr<containers::ArtRawRendition> raw = container.ReadRawRendition(1, kind);
        ASSERT_NE(raw, nullptr);
        EXPECT_EQ(raw->chunkSize, 20 + kind * 3);
        EXPECT_EQ(raw->word1, kind + 1);
        EXPECT_EQ(raw->word2, kind + 2);
        EXPECT_EQ(raw->word3, kind + 3);
        EXPECT_EQ(raw->word4, kind + 4);
    }
    int32_t size = 0;
    std::unique_ptr<uint8_t[]> other = container.ReadRendition(1, 0x41, &size);
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(size, 0x80 * 3) << "any other kind reads the large rendition";
    containers::ArtItemInfo info;
    ASSERT_TRUE(container.GetItemInfo(1, info));
    for (const std::string* text :
         {&info.rendition10, &info.rendition20, &info.rendition30, &info.rendition40, &info.rendition80})
        EXPECT_EQ(*text, "AUTOMATIC");
}

TEST_F(ArtContainerWriterTest, MissingRenditionsAreMinusOneByDefaultOrZeroOnRequest) {
    for (int32_t none : {-1, 0}) {
        SCOPED_TRACE(none);
        containers::ArtWriterOptions options;
        options.noRenditionOffset = none;
        ArtContainerWriter writer(options);
        ArtItemSource item = Item("small only");
        item.renditions.push_back(ArtRenditionSource{0x40, Bytes("BM small"), 0, 0, 0, 0});
        writer.AddItem(item);
        const std::string path = Write(writer, nullptr, "none" + std::to_string(none) + ".qlt");
        const std::vector<uint8_t> bytes = qlttest::ReadFile(path);
        for (int slot : {0, 1, 2, 4}) EXPECT_EQ(LongAt(bytes, 324 + 516 + 4 * slot), none) << slot;
        EXPECT_GE(LongAt(bytes, 324 + 516 + 4 * 3), 324 + 540);

        CArtContainer container;
        ASSERT_TRUE(container.Open(path));
        containers::ArtItemInfo info;
        ASSERT_TRUE(container.GetItemInfo(1, info));
        const char* absent = none == -1 ? "NONE" : "AUTOMATIC";
        EXPECT_EQ(info.rendition10, absent);
        EXPECT_EQ(info.rendition80, absent);
        EXPECT_EQ(info.rendition40, "AUTOMATIC");
        int32_t size = -1;
        EXPECT_EQ(container.ReadRendition(1, 0x80, &size), nullptr);
        EXPECT_EQ(size, 0);
        EXPECT_NE(container.ReadRendition(1, 0x40, &size), nullptr);
    }
}

TEST_F(ArtContainerWriterTest, UnknownAndRepeatedRenditionKindsAreRejected) {
    for (bool repeated : {false, true}) {
        ArtContainerWriter writer;
        ArtItemSource item = Item("x");
        item.renditions.push_back(ArtRenditionSource{0x40, Bytes("a"), 0, 0, 0, 0});
        item.renditions.push_back(ArtRenditionSource{repeated ? 0x40 : 0x41, Bytes("b"), 0, 0, 0, 0});
        writer.AddItem(item);
        std::vector<uint8_t> bytes;
        std::string error;
        EXPECT_FALSE(writer.Build(bytes, error));
        EXPECT_NE(error.find("item 1"), std::string::npos) << error;
    }
}

// ---------------------------------------------------------------- keyword index

TEST_F(ArtContainerWriterTest, NoKeywordsMeansNoIndex) {
    ArtContainerWriter writer;
    writer.AddItem(Item("a"));
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    EXPECT_EQ(container.KeywordDirectory()->keywordMapOffset, 0);
    StringMap map;
    EXPECT_FALSE(container.LoadKeywordMap(map));
    ItemNumberArray items;
    EXPECT_FALSE(container.FindItemsByKeyword("dog", items));
    EXPECT_EQ(container.GetItemKeywords(1), "");
}

TEST_F(ArtContainerWriterTest, EmptyKeywordMapOnRequest) {
    containers::ArtWriterOptions options;
    options.writeEmptyKeywordMap = true;
    ArtContainerWriter writer(options);
    writer.AddItem(Item("a"));
    ArtLayoutInfo layout;
    const std::vector<uint8_t> bytes = Build(writer, &layout);
    ASSERT_NE(layout.keywordMapOffset, 0);
    EXPECT_EQ(LongAt(bytes, 300), layout.keywordMapOffset);
    EXPECT_EQ(LongAt(bytes, 304), 2) << "the buffer size is the map's length";
    EXPECT_EQ(bytes.size(), static_cast<size_t>(layout.keywordMapOffset) + 2);
    EXPECT_EQ(bytes[bytes.size() - 2], 0);
    EXPECT_EQ(bytes[bytes.size() - 1], 0);

    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    StringMap map;
    EXPECT_FALSE(container.LoadKeywordMap(map)) << "a map without pairs reads as no index";
}

TEST_F(ArtContainerWriterTest, KeywordsOfItemsBecomeTheIndex) {
    ArtContainerWriter writer;
    writer.AddItem(Item("one", {"dog", "animal"}));
    writer.AddItem(Item("two", {"cat", "animal", "animal"}));
    writer.AddItem(Item("three", {"dog"}));
    writer.AddItem(Item("four"));

    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.GetCount(), 3);
    std::string list;
    ASSERT_TRUE(map.Lookup("dog", list));
    EXPECT_EQ(list, ",1,3,");
    ASSERT_TRUE(map.Lookup("animal", list));
    EXPECT_EQ(list, ",1,2,") << "an item is listed once however often it names a word";
    ASSERT_TRUE(map.Lookup("cat", list));
    EXPECT_EQ(list, ",2,");

    ItemNumberArray items;
    ASSERT_TRUE(container.FindItemsByKeyword(" dog ", items));
    EXPECT_EQ(Items(items), (std::vector<int32_t>{1, 3}));
    EXPECT_FALSE(container.FindItemsByKeyword("Dog", items));

    const std::string first = container.GetItemKeywords(1);
    EXPECT_TRUE(first == ",dog,animal," || first == ",animal,dog,") << first;
    EXPECT_EQ(container.GetItemKeywords(3), ",dog,");
    EXPECT_EQ(container.GetItemKeywords(4), "");
}

TEST_F(ArtContainerWriterTest, MapBytesFollowTheClassicSerialisation) {
    ArtContainerWriter writer;
    writer.AddItem(Item("one", {"dog"}));
    ArtLayoutInfo layout;
    const std::vector<uint8_t> bytes = Build(writer, &layout);
    ASSERT_EQ(layout.listOffsets.size(), 1u);
    const int32_t list = layout.listOffsets[0];
    EXPECT_EQ(LongAt(bytes, list), 1);
    EXPECT_EQ(LongAt(bytes, list + 4), 1);

    std::vector<uint8_t> expected = {1, 0, 3, 'd', 'o', 'g'};
    const std::string value = std::to_string(list);
    expected.push_back(static_cast<uint8_t>(value.size()));
    expected.insert(expected.end(), value.begin(), value.end());
    ASSERT_EQ(layout.keywordMapSize, static_cast<int32_t>(expected.size()));
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + layout.keywordMapOffset,
                                   bytes.begin() + layout.keywordMapOffset + layout.keywordMapSize),
              expected);
    EXPECT_EQ(LongAt(bytes, 300), layout.keywordMapOffset);
    EXPECT_EQ(LongAt(bytes, 304), layout.keywordMapSize);
}

TEST_F(ArtContainerWriterTest, PairsGoOutInTheMapsIterationOrder) {
    // "a" (97) and "r" (114) share bucket 12, "b" (98) has bucket 13. A later
    // key goes to the head of its bucket, and the walk goes bucket by bucket.
    ArtContainerWriter writer;
    writer.AddItem(Item("one", {"a", "b", "r"}));
    const KeywordIndexPlan index = writer.DeriveKeywordIndex();
    std::vector<std::string> keys;
    for (const KeywordPair& pair : index.pairs) keys.push_back(pair.key.narrow);
    EXPECT_EQ(keys, (std::vector<std::string>{"r", "a", "b"}));

    ArtLayoutInfo layout;
    const std::vector<uint8_t> bytes = Build(writer, &layout);
    std::vector<std::string> written;
    size_t at = static_cast<size_t>(layout.keywordMapOffset) + 2;
    for (int i = 0; i < 3; ++i) {
        written.push_back(std::string(1, static_cast<char>(bytes[at + 1])));
        at += 2;
        at += 1 + bytes[at];
    }
    EXPECT_EQ(written, keys);
}

TEST_F(ArtContainerWriterTest, KeywordWithNoItemsHasTheEmptyList) {
    ArtContainerWriter writer;
    writer.AddItem(Item("one"));
    KeywordIndexPlan index;
    index.lists = {{}};
    index.pairs.push_back(KeywordPair{MapText::Narrow("lonely"), 0, {}});
    writer.SetKeywordIndex(index);
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    std::string list;
    ASSERT_TRUE(map.Lookup("lonely", list));
    EXPECT_EQ(list, ",");
    ItemNumberArray items;
    items.Add(9);
    EXPECT_TRUE(container.FindItemsByKeyword("lonely", items));
    EXPECT_EQ(items.GetSize(), 0);
}

TEST_F(ArtContainerWriterTest, ItemListsKeepTheOrderGiven) {
    ArtContainerWriter writer;
    for (int i = 0; i < 3; ++i) writer.AddItem(Item("i" + std::to_string(i)));
    KeywordIndexPlan index;
    index.lists = {{3, 1, 2}};
    index.pairs.push_back(KeywordPair{MapText::Narrow("mixed"), 0, {}});
    writer.SetKeywordIndex(index);
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    ItemNumberArray items;
    ASSERT_TRUE(container.FindItemsByKeyword("mixed", items));
    EXPECT_EQ(Items(items), (std::vector<int32_t>{3, 1, 2}));
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    std::string list;
    ASSERT_TRUE(map.Lookup("mixed", list));
    EXPECT_EQ(list, ",3,1,2,");
}

TEST_F(ArtContainerWriterTest, ManyWordsOverManyItems) {
    ArtContainerWriter writer;
    std::vector<std::set<std::string>> wordsOfItem(50);
    for (int item = 0; item < 50; ++item) {
        std::vector<std::string> words;
        for (int word = 0; word < 600; ++word)
            if ((word + item) % 7 == 0 || word % 50 == item) words.push_back("w" + std::to_string(word));
        wordsOfItem[static_cast<size_t>(item)].insert(words.begin(), words.end());
        writer.AddItem(Item("item" + std::to_string(item), words));
    }
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.GetCount(), 600);
    for (int word = 0; word < 600; word += 37) {
        std::vector<int32_t> expected;
        for (int item = 0; item < 50; ++item)
            if (wordsOfItem[static_cast<size_t>(item)].count("w" + std::to_string(word)) != 0)
                expected.push_back(item + 1);
        ItemNumberArray items;
        ASSERT_TRUE(container.FindItemsByKeyword("w" + std::to_string(word), items));
        EXPECT_EQ(Items(items), expected) << word;
    }
    for (int item : {1, 17, 50}) {
        const std::string list = container.GetItemKeywords(item);
        std::set<std::string> words;
        size_t start = 1;
        while (start < list.size()) {
            const size_t comma = list.find(',', start);
            words.insert(list.substr(start, comma - start));
            start = comma + 1;
        }
        EXPECT_EQ(words, wordsOfItem[static_cast<size_t>(item - 1)]) << item;
    }
}

TEST_F(ArtContainerWriterTest, WordWithACommaStaysWhole) {
    ArtContainerWriter writer;
    writer.AddItem(Item("one", {"rock, paper", "scissors"}));
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    ItemNumberArray items;
    ASSERT_TRUE(container.FindItemsByKeyword("rock, paper", items));
    EXPECT_EQ(Items(items), (std::vector<int32_t>{1}));
    const std::string list = container.GetItemKeywords(1);
    EXPECT_NE(list.find(",rock, paper,"), std::string::npos) << list;
}

TEST_F(ArtContainerWriterTest, LongWordsTakeTheLongLengthPrefixes) {
    struct Case {
        size_t length;
        std::vector<uint8_t> prefix;
    };
    const std::vector<Case> cases = {
        {254, {0xFE}},
        {255, {0xFF, 0xFF, 0x00}},
        {300, {0xFF, 0x2C, 0x01}},
        {0xFFFD, {0xFF, 0xFD, 0xFF}},
        {0xFFFE, {0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0x00, 0x00}},
        {70000, {0xFF, 0xFF, 0xFF, 0x70, 0x11, 0x01, 0x00}},
    };
    ArtContainerWriter writer;
    std::vector<std::string> words;
    for (const Case& c : cases) words.push_back(std::string(c.length, static_cast<char>('a' + words.size())));
    writer.AddItem(Item("long", words));
    ArtLayoutInfo layout;
    const std::vector<uint8_t> bytes = Build(writer, &layout);

    // Each prefix stands just before its word's text in the map.
    for (size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(cases[i].length);
        const std::vector<uint8_t>& prefix = cases[i].prefix;
        std::vector<uint8_t> needle = prefix;
        needle.insert(needle.end(), words[i].begin(), words[i].begin() + 4);
        const auto mapBegin = bytes.begin() + layout.keywordMapOffset;
        EXPECT_NE(std::search(mapBegin, bytes.end(), needle.begin(), needle.end()), bytes.end());
    }

    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.GetCount(), static_cast<int>(cases.size()));
    for (const std::string& word : words) {
        std::string list;
        EXPECT_TRUE(map.Lookup(word, list)) << word.size();
        EXPECT_EQ(list, ",1,");
    }
    ItemNumberArray items;
    EXPECT_TRUE(container.FindItemsByKeyword(words.back(), items));
}

TEST_F(ArtContainerWriterTest, LaterOfTwoEqualKeysWins) {
    ArtContainerWriter writer;
    for (int i = 0; i < 4; ++i) writer.AddItem(Item("i" + std::to_string(i)));
    KeywordIndexPlan index;
    index.lists = {{1}, {2, 4}};
    index.pairs.push_back(KeywordPair{MapText::Narrow("dog"), 0, {}});
    index.pairs.push_back(KeywordPair{MapText::Narrow("cat"), 0, {}});
    index.pairs.push_back(KeywordPair{MapText::Narrow("dog"), 1, {}});
    writer.SetKeywordIndex(index);
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    ItemNumberArray items;
    ASSERT_TRUE(container.FindItemsByKeyword("dog", items));
    EXPECT_EQ(Items(items), (std::vector<int32_t>{2, 4}));
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.GetCount(), 2);
}

TEST_F(ArtContainerWriterTest, PairCountsFromFFFFOnTakeTheLongForm) {
    std::vector<uint8_t> count;
    containers::AppendArchiveCount(count, 0xFFFE);
    EXPECT_EQ(count, (std::vector<uint8_t>{0xFE, 0xFF}));
    count.clear();
    containers::AppendArchiveCount(count, 0xFFFF);
    EXPECT_EQ(count, (std::vector<uint8_t>{0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00}));

    const uint32_t pairs = 0x10000 + 5;
    ArtContainerWriter writer;
    writer.AddItem(Item("one"));
    writer.AddItem(Item("two"));
    KeywordIndexPlan index;
    index.lists = {{2}, {1, 2}};
    for (uint32_t i = 0; i < pairs; ++i)
        index.pairs.push_back(
            KeywordPair{MapText::Narrow("k" + std::to_string(i)), static_cast<int>(i % 2), {}});
    writer.SetKeywordIndex(index);
    ArtLayoutInfo layout;
    const std::vector<uint8_t> bytes = Build(writer, &layout);
    EXPECT_EQ(bytes[static_cast<size_t>(layout.keywordMapOffset)], 0xFF);
    EXPECT_EQ(bytes[static_cast<size_t>(layout.keywordMapOffset) + 1], 0xFF);
    EXPECT_EQ(static_cast<uint32_t>(LongAt(bytes, layout.keywordMapOffset + 2)), pairs);

    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    // One load only: the classic map's 17 buckets make every load of so many
    // keys slow.
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.GetCount(), static_cast<int>(pairs));
    std::string list;
    ASSERT_TRUE(map.Lookup("k65539", list));
    EXPECT_EQ(list, ",1,2,");
    ASSERT_TRUE(map.Lookup("k65540", list));
    EXPECT_EQ(list, ",2,");
}

TEST_F(ArtContainerWriterTest, Utf16KeysReadBackAsAnsi) {
    std::vector<uint8_t> text;
    containers::AppendArchiveText(text, MapText::Wide(u"Caf\u00e9"));
    EXPECT_EQ(text, (std::vector<uint8_t>{0xFF, 0xFE, 0xFF, 4, 'C', 0, 'a', 0, 'f', 0, 0xE9, 0}));

    ArtContainerWriter writer;
    writer.AddItem(Item("one"));
    KeywordIndexPlan index;
    index.lists = {{1}};
    index.pairs.push_back(KeywordPair{MapText::Wide(u"Caf\u00e9 \u20ac"), 0, {}});
    writer.SetKeywordIndex(index);
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    ItemNumberArray items;
    ASSERT_TRUE(container.FindItemsByKeyword("Caf\xE9 \x80", items));
    EXPECT_EQ(Items(items), (std::vector<int32_t>{1}));
}

TEST_F(ArtContainerWriterTest, ValueTextsGivenVerbatimAreParsedAsLongs) {
    ArtContainerWriter writer;
    writer.AddItem(Item("one"));
    writer.AddItem(Item("two"));
    KeywordIndexPlan probe;
    probe.lists = {{2}};
    probe.pairs.push_back(KeywordPair{MapText::Narrow("x"), 0, {}});
    writer.SetKeywordIndex(probe);
    ArtLayoutInfo layout;
    Build(writer, &layout);
    // The lists lie before the map, so their place doesn't depend on the map.
    const std::string offset = std::to_string(layout.listOffsets[0]);

    KeywordIndexPlan index = probe;
    index.pairs.clear();
    index.pairs.push_back(
        KeywordPair{MapText::Narrow("padded"), -1, MapText::Narrow("  +" + offset + "xyz")});
    index.pairs.push_back(KeywordPair{MapText::Narrow("wide"), -1,
                                      MapText::Wide(std::u16string(offset.begin(), offset.end()))});
    index.pairs.push_back(KeywordPair{MapText::Narrow("zero"), -1, MapText::Narrow("0")});
    index.pairs.push_back(KeywordPair{MapText::Narrow("words"), -1, MapText::Narrow("none")});
    writer.SetKeywordIndex(index);
    ArtLayoutInfo second;
    Build(writer, &second);
    ASSERT_EQ(second.listOffsets, layout.listOffsets);

    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(writer)));
    ItemNumberArray items;
    ASSERT_TRUE(container.FindItemsByKeyword("padded", items));
    EXPECT_EQ(Items(items), (std::vector<int32_t>{2}));
    ASSERT_TRUE(container.FindItemsByKeyword("wide", items));
    EXPECT_EQ(Items(items), (std::vector<int32_t>{2}));
    EXPECT_FALSE(container.FindItemsByKeyword("zero", items));
    EXPECT_FALSE(container.FindItemsByKeyword("words", items));
    StringMap map;
    ASSERT_TRUE(container.LoadKeywordMap(map));
    EXPECT_EQ(map.GetCount(), 2) << "pairs whose value parses to 0 are left out";
}

TEST_F(ArtContainerWriterTest, PairNamingAMissingListIsRejected) {
    ArtContainerWriter writer;
    KeywordIndexPlan index;
    index.pairs.push_back(KeywordPair{MapText::Narrow("x"), 3, {}});
    writer.SetKeywordIndex(index);
    std::vector<uint8_t> bytes;
    std::string error;
    EXPECT_FALSE(writer.Build(bytes, error));
    EXPECT_FALSE(error.empty());
}

TEST_F(ArtContainerWriterTest, SerializedStringMapMatchesTheDerivedIndex) {
    StringMap map;
    map.SetAt("dog", "1000");
    map.SetAt(std::string(300, 'z'), "7");
    const std::vector<uint8_t> bytes = containers::SerializeStringMap(map);
    std::vector<uint8_t> expected = {2, 0};
    map.ForEach([&](const std::string& key, const std::string& value) {
        containers::AppendArchiveText(expected, MapText::Narrow(key));
        containers::AppendArchiveText(expected, MapText::Narrow(value));
    });
    EXPECT_EQ(bytes, expected);
    const std::vector<uint8_t> dog = {3, 'd', 'o', 'g', 4, '1', '0', '0', '0'};
    EXPECT_NE(std::search(bytes.begin(), bytes.end(), dog.begin(), dog.end()), bytes.end());
}

// ---------------------------------------------------------------- writing files

TEST_F(ArtContainerWriterTest, WriteReplacesAnExistingFileAndLeavesNoTemporaryFile) {
    const std::string path = dir.File("box.qlt");
    qlttest::WriteText(path, "old contents");
    ArtContainerWriter writer;
    writer.AddItem(Item("a"));
    std::string error;
    ASSERT_TRUE(writer.Write(path, error)) << error;
    std::vector<uint8_t> expected;
    ASSERT_TRUE(writer.Build(expected, error));
    EXPECT_EQ(qlttest::ReadFile(path), expected);
    ASSERT_TRUE(writer.Write(path, error)) << error;
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir.Path())) {
        (void)entry;
        ++files;
    }
    EXPECT_EQ(files, 1u);
}

TEST_F(ArtContainerWriterTest, FailedWriteLeavesTheExistingFileAlone) {
    const std::string path = dir.File("box.qlt");
    qlttest::WriteText(path, "good old container");
    ArtContainerWriter writer;
    writer.AddItem(Item(std::string(300, 'x')));
    std::string error;
    EXPECT_FALSE(writer.Write(path, error));
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(qlttest::ReadText(path), "good old container");
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir.Path())) {
        (void)entry;
        ++files;
    }
    EXPECT_EQ(files, 1u);
}

TEST_F(ArtContainerWriterTest, WriteIntoAMissingFolderFails) {
    ArtContainerWriter writer;
    std::string error;
    EXPECT_FALSE(writer.Write(dir.File("no-such-folder/box.qlt"), error));
    EXPECT_NE(error.find("box.qlt"), std::string::npos) << error;
    EXPECT_FALSE(std::filesystem::exists(dir.File("no-such-folder")));
}

}  // namespace
