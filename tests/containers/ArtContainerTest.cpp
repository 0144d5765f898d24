#include "containers/ArtContainer.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "ContainerImage.h"
#include "foundation/UserMessage.h"
#include "support/TempDir.h"

using containers::ArtItemInfo;
using containers::CArtContainer;
using testsupport::ContainerImage;
using testsupport::MakeEntry;

namespace {

std::vector<uint8_t> Bytes(const std::string& text) {
    return std::vector<uint8_t>(text.begin(), text.end());
}

// Records every message that would be shown to the user.
class MessageRecorder {
public:
    MessageRecorder() : scope_([this](const std::string& text) { messages.push_back(text); }) {}
    std::vector<std::string> messages;

private:
    foundation::ScopedUserMessageHandler scope_;
};

class ArtContainerTest : public ::testing::Test {
protected:
    std::string Write(const ContainerImage& image, const std::string& name = "art.qlt") {
        return dir.Write(name, image.Bytes());
    }
    testsupport::TempDir dir;
    MessageRecorder recorder;
};

// Three items: renditions of every kind on item 1, a stored data chunk, and
// a 0 and a -1 offset side by side on item 2.
ContainerImage ThreeItemImage() {
    ContainerImage image;
    auto one = MakeEntry(11, "First", "C:\\art\\one.bmp");
    auto two = MakeEntry(22, "Second", "C:\\art\\two.jpg");
    auto three = MakeEntry(33, "Third", "three.png");
    for (int i = 0; i < 5; ++i)
        one.renditionOffsets[i] = image.AppendRendition(Bytes("kind" + std::to_string(i)), 100 * i);
    one.dataOffset = image.AppendData(0, Bytes("stored data"), 11, 77);
    two.renditionOffsets[3] = 0;   // 0x40: no rendition, yet reads as AUTOMATIC
    two.renditionOffsets[4] = -1;  // 0x80: NONE
    image.AppendEntryTable({one, two, three});
    return image;
}

}  // namespace

TEST_F(ArtContainerTest, ContainerWithNoItemsOpensAndCountsZero) {
    ContainerImage image;
    image.AppendEntryTable({});
    CArtContainer container;
    EXPECT_TRUE(container.Open(Write(image)));
    EXPECT_EQ(container.GetItemCount(), 0);
    int32_t size = -1;
    EXPECT_EQ(container.ReadRendition(1, 0x80, &size), nullptr);
    EXPECT_TRUE(recorder.messages.empty());
}

TEST_F(ArtContainerTest, EmptyPathFailsWithoutMessage) {
    CArtContainer container;
    EXPECT_FALSE(container.Open(""));
    EXPECT_TRUE(recorder.messages.empty());
}

TEST_F(ArtContainerTest, FileThatWillNotOpenShowsOneMessageAndLooksEmpty) {
    CArtContainer container;
    const std::string missing = dir.File("missing.qlt");
    EXPECT_FALSE(container.Open(missing));
    ASSERT_EQ(recorder.messages.size(), 1u);
    EXPECT_NE(recorder.messages[0].find(missing), std::string::npos);
    EXPECT_GT(recorder.messages[0].size(), missing.size() + 2) << "the system's reason follows the path";
    EXPECT_EQ(container.GetItemCount(), 0);
}

TEST_F(ArtContainerTest, OtherVersionAndNoticeAreAccepted) {
    ContainerImage image = ThreeItemImage();
    image.header.version = 2.0;
    std::memset(image.header.notice, 0, sizeof image.header.notice);
    std::strcpy(image.header.notice, "Someone else's maker");
    image.header.headerWord2 = 4242;
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    EXPECT_EQ(container.GetItemCount(), 3);
    EXPECT_EQ(container.GetHeaderValue(), 4242);
    EXPECT_DOUBLE_EQ(container.Header()->version, 2.0);
}

TEST_F(ArtContainerTest, DefaultsAfterConstruction) {
    CArtContainer container;
    EXPECT_EQ(container.GetItemCount(), 0);
    EXPECT_DOUBLE_EQ(container.Header()->version, 1.0);
    EXPECT_STREQ(container.Header()->notice, containers::kDefaultNotice);
    EXPECT_EQ(container.EntryDirectory()->entryTableOffset, 0);
    EXPECT_EQ(container.KeywordDirectory()->keywordMapOffset, 0);
}

TEST_F(ArtContainerTest, ResetRestoresDefaultsButKeepsTheKeywordBufferSize) {
    ContainerImage image = ThreeItemImage();
    image.keywordDirectory.word0 = 5;
    image.keywordDirectory.keywordMapOffset = 999;
    image.keywordDirectory.keywordMapBufferSize = 4321;
    image.reservedDirectory.word0 = 8;
    image.header.headerWord0 = 3;
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    EXPECT_EQ(container.ReservedDirectory()->word0, 8);
    EXPECT_TRUE(container.Reset());
    EXPECT_EQ(container.GetItemCount(), 0);
    EXPECT_EQ(container.Header()->headerWord0, 0);
    EXPECT_EQ(container.Header()->itemCount, 0);
    EXPECT_EQ(container.KeywordDirectory()->word0, 0);
    EXPECT_EQ(container.KeywordDirectory()->keywordMapOffset, 0);
    EXPECT_EQ(container.KeywordDirectory()->keywordMapBufferSize, 4321);
    EXPECT_EQ(container.EntryDirectory()->entryTableOffset, 0);
    EXPECT_EQ(container.ReservedDirectory()->word0, 0);
    // The file is closed: reads fail.
    ArtItemInfo info;
    EXPECT_FALSE(container.GetItemInfo(0, info));
}

TEST_F(ArtContainerTest, ItemTextsAndRenditionTexts) {
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(ThreeItemImage())));
    ArtItemInfo info;
    info.spare = "caller's";
    ASSERT_TRUE(container.GetItemInfo(1, info));
    EXPECT_EQ(info.code, 11);
    EXPECT_EQ(info.name, "First");
    EXPECT_EQ(info.path, "C:\\art\\one.bmp");
    EXPECT_EQ(info.spare, "caller's");
    EXPECT_EQ(info.rendition10, "AUTOMATIC");
    EXPECT_EQ(info.rendition80, "AUTOMATIC");
    ASSERT_TRUE(container.GetItemInfo(2, info));
    EXPECT_EQ(info.code, 22);
    EXPECT_EQ(info.rendition10, "NONE");
    EXPECT_EQ(info.rendition40, "AUTOMATIC") << "offset 0 reads as AUTOMATIC";
    EXPECT_EQ(info.rendition80, "NONE");
}

TEST_F(ArtContainerTest, TextsFillingTheirWholeFieldStopAtTheField) {
    ContainerImage image;
    auto entry = MakeEntry(1, "", "");
    std::memset(entry.name, 'N', sizeof entry.name);
    std::memset(entry.path, 'P', sizeof entry.path);
    image.AppendEntryTable({entry});
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    ArtItemInfo info;
    ASSERT_TRUE(container.GetItemInfo(1, info));
    EXPECT_EQ(info.name, std::string(255, 'N'));
    EXPECT_EQ(info.path, std::string(255, 'P'));
}

TEST_F(ArtContainerTest, ItemZeroTakesTheRecordJustBeforeTheTable) {
    ContainerImage image;
    auto before = MakeEntry(-7, "before the table", "x");
    image.AppendEntry(before);
    image.AppendEntryTable({MakeEntry(1, "one", "one.bmp")});
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    ArtItemInfo info;
    ASSERT_TRUE(container.GetItemInfo(0, info));
    EXPECT_EQ(info.code, -7);
    EXPECT_EQ(info.name, "before the table");
}

TEST_F(ArtContainerTest, ItemNumbersOutsideTheCountFail) {
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(ThreeItemImage())));
    ArtItemInfo info;
    EXPECT_FALSE(container.GetItemInfo(4, info));
    EXPECT_FALSE(container.GetItemInfo(-1, info));
    int32_t size = 99;
    EXPECT_EQ(container.ReadRendition(4, 0x80, &size), nullptr);
    EXPECT_EQ(size, 99) << "the range test comes before the size is cleared";
    EXPECT_EQ(container.ReadItemData(-1, &size), nullptr);
    EXPECT_EQ(container.ReadRawRendition(4, 0x10), nullptr);
    EXPECT_EQ(container.ReadRawItemData(&size, 4), nullptr);
}

TEST_F(ArtContainerTest, ItemZeroBeforeATableAtTheFileStartFails) {
    ContainerImage image;
    image.AppendEntryTable({MakeEntry(1, "one", "one.bmp")});
    image.entryDirectory.entryTableOffset = 100;  // item 0 would start at -440
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    ArtItemInfo info;
    EXPECT_FALSE(container.GetItemInfo(0, info));
    int32_t size = 5;
    EXPECT_EQ(container.ReadRendition(0, 0x80, &size), nullptr);
    EXPECT_EQ(size, 0);
}

TEST_F(ArtContainerTest, RenditionOfEachKind) {
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(ThreeItemImage())));
    const int32_t kinds[5] = {0x10, 0x20, 0x30, 0x40, 0x80};
    for (int i = 0; i < 5; ++i) {
        int32_t size = -1;
        auto payload = container.ReadRendition(1, kinds[i], &size);
        ASSERT_NE(payload, nullptr) << kinds[i];
        const std::string expected = "kind" + std::to_string(i);
        ASSERT_EQ(size, static_cast<int32_t>(expected.size()));
        EXPECT_EQ(std::string(reinterpret_cast<char*>(payload.get()), static_cast<size_t>(size)), expected);
    }
}

TEST_F(ArtContainerTest, AnyOtherKindReadsTheLargeRendition) {
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(ThreeItemImage())));
    for (int32_t kind : {0x41, 0, -1, 0x100}) {
        int32_t size = 0;
        auto payload = container.ReadRendition(1, kind, &size);
        ASSERT_NE(payload, nullptr);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(payload.get()), static_cast<size_t>(size)), "kind4");
    }
}

TEST_F(ArtContainerTest, MissingRenditionYieldsNullWithSizeZero) {
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(ThreeItemImage())));
    int32_t size = 5;
    EXPECT_EQ(container.ReadRendition(2, 0x40, &size), nullptr) << "offset 0";
    EXPECT_EQ(size, 0);
    size = 5;
    EXPECT_EQ(container.ReadRendition(2, 0x80, &size), nullptr) << "offset -1";
    EXPECT_EQ(size, 0);
}

TEST_F(ArtContainerTest, RawRenditionHandsOutTheHeaderWords) {
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(ThreeItemImage())));
    auto raw = container.ReadRawRendition(1, 0x30);
    ASSERT_NE(raw, nullptr);
    EXPECT_EQ(raw->chunkSize, 25);
    EXPECT_EQ(raw->word1, 200);
    EXPECT_EQ(raw->word2, 201);
    EXPECT_EQ(raw->word3, 202);
    EXPECT_EQ(raw->word4, 203);
    EXPECT_EQ(std::memcmp(raw->data.get(), "kind2", 5), 0);
}

TEST_F(ArtContainerTest, NoEntryTableMeansNoRenditionsOrData) {
    ContainerImage image = ThreeItemImage();
    image.entryDirectory.entryTableOffset = 0;
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    int32_t size = 3;
    EXPECT_EQ(container.ReadRendition(1, 0x80, &size), nullptr);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(container.ReadItemData(1, &size), nullptr);
    EXPECT_EQ(size, 0);
}

TEST_F(ArtContainerTest, EmptyRenditionPayloadIsABufferOfSizeZero) {
    ContainerImage image;
    auto entry = MakeEntry(1, "a", "a");
    entry.renditionOffsets[4] = image.AppendRendition({});
    image.AppendEntryTable({entry});
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    int32_t size = 9;
    EXPECT_NE(container.ReadRendition(1, 0x80, &size), nullptr);
    EXPECT_EQ(size, 0);
}

TEST_F(ArtContainerTest, RenditionSizesThatTheFileCannotHoldFail) {
    for (int32_t chunkSize : {19, 0, -100, 0x7FFFFFFF, 0x10000}) {
        ContainerImage image;
        auto entry = MakeEntry(1, "a", "a");
        entry.renditionOffsets[4] = image.AppendRendition(Bytes("12345"));
        image.PatchLong(entry.renditionOffsets[4], chunkSize);
        image.AppendEntryTable({entry});
        CArtContainer container;
        ASSERT_TRUE(container.Open(Write(image)));
        int32_t size = 1;
        EXPECT_EQ(container.ReadRendition(1, 0x80, &size), nullptr) << chunkSize;
        EXPECT_EQ(size, 0);
    }
}

TEST_F(ArtContainerTest, RenditionOffsetsOutsideTheFileFail) {
    for (int32_t offset : {-2, -1000, 0x7FFFFFF0}) {
        ContainerImage image;
        auto entry = MakeEntry(1, "a", "a");
        entry.renditionOffsets[4] = offset;
        image.AppendEntryTable({entry});
        CArtContainer container;
        ASSERT_TRUE(container.Open(Write(image)));
        int32_t size = 1;
        EXPECT_EQ(container.ReadRendition(1, 0x80, &size), nullptr) << offset;
    }
}

TEST_F(ArtContainerTest, StoredDataIsCopied) {
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(ThreeItemImage())));
    int32_t size = 0;
    auto data = container.ReadItemData(1, &size);
    ASSERT_NE(data, nullptr);
    ASSERT_EQ(size, 11);
    EXPECT_EQ(std::memcmp(data.get(), "stored data", 11), 0);
}

TEST_F(ArtContainerTest, StoredDataShorterThanItsUncompressedSizeFails) {
    ContainerImage image;
    auto entry = MakeEntry(1, "a", "a");
    entry.dataOffset = image.AppendData(0, Bytes("abc"), 4);
    image.AppendEntryTable({entry});
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    int32_t size = 7;
    EXPECT_EQ(container.ReadItemData(1, &size), nullptr);
    EXPECT_EQ(size, 0);
}

TEST_F(ArtContainerTest, StoredDataTakesOnlyItsUncompressedSize) {
    ContainerImage image;
    auto entry = MakeEntry(1, "a", "a");
    entry.dataOffset = image.AppendData(0, Bytes("abcdef"), 2);
    image.AppendEntryTable({entry});
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    int32_t size = 0;
    auto data = container.ReadItemData(1, &size);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(size, 2);
    EXPECT_EQ(std::memcmp(data.get(), "ab", 2), 0);
}

TEST_F(ArtContainerTest, NoDataChunkYieldsNull) {
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(ThreeItemImage())));
    int32_t size = 4;
    EXPECT_EQ(container.ReadItemData(2, &size), nullptr);
    EXPECT_EQ(size, 0);
}

namespace {
std::vector<uint8_t> Deflated(const std::vector<uint8_t>& data) {
    uLongf size = compressBound(static_cast<uLong>(data.size()));
    std::vector<uint8_t> out(size);
    EXPECT_EQ(compress(out.data(), &size, data.data(), static_cast<uLong>(data.size())), Z_OK);
    out.resize(size);
    return out;
}
std::vector<uint8_t> SampleData(size_t n) {
    std::vector<uint8_t> data(n);
    for (size_t i = 0; i < n; ++i)
        data[i] = static_cast<uint8_t>("the quick brown fox "[i % 20] + (i / 997) % 3);
    return data;
}
}  // namespace

TEST_F(ArtContainerTest, DeflatedDataIsInflated) {
    const auto data = SampleData(50000);
    ContainerImage image;
    auto entry = MakeEntry(1, "a", "a");
    entry.dataOffset = image.AppendData(1, Deflated(data), static_cast<int32_t>(data.size()));
    image.AppendEntryTable({entry});
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    int32_t size = 0;
    auto out = container.ReadItemData(1, &size);
    ASSERT_NE(out, nullptr);
    ASSERT_EQ(size, 50000);
    EXPECT_EQ(std::memcmp(out.get(), data.data(), data.size()), 0);
}

TEST_F(ArtContainerTest, DeflatedDataReportsTheLengthThatInflatingProduced) {
    const auto data = SampleData(1000);
    ContainerImage image;
    auto entry = MakeEntry(1, "a", "a");
    entry.dataOffset = image.AppendData(1, Deflated(data), 1500);
    image.AppendEntryTable({entry});
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    int32_t size = 0;
    auto out = container.ReadItemData(1, &size);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(size, 1000);
}

TEST_F(ArtContainerTest, DeflatedDataLargerThanItsSizeFails) {
    const auto data = SampleData(1000);
    ContainerImage image;
    auto entry = MakeEntry(1, "a", "a");
    entry.dataOffset = image.AppendData(1, Deflated(data), 999);
    image.AppendEntryTable({entry});
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    int32_t size = 5;
    EXPECT_EQ(container.ReadItemData(1, &size), nullptr);
    EXPECT_EQ(size, 0);
}

TEST_F(ArtContainerTest, CorruptDeflatedDataFails) {
    auto deflated = Deflated(SampleData(1000));
    deflated[deflated.size() / 2] ^= 0x55;
    deflated[deflated.size() / 2 + 1] ^= 0xAA;
    ContainerImage image;
    auto entry = MakeEntry(1, "a", "a");
    entry.dataOffset = image.AppendData(1, deflated, 1000);
    image.AppendEntryTable({entry});
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    int32_t size = 0;
    EXPECT_EQ(container.ReadItemData(1, &size), nullptr);
    EXPECT_EQ(size, 0);
}

TEST_F(ArtContainerTest, UnknownMethodGivesAZeroFilledBufferOfTheUncompressedSize) {
    ContainerImage image;
    auto entry = MakeEntry(1, "a", "a");
    entry.dataOffset = image.AppendData(9, Bytes("payload"), 64);
    image.AppendEntryTable({entry});
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    int32_t size = 0;
    auto out = container.ReadItemData(1, &size);
    ASSERT_NE(out, nullptr);
    ASSERT_EQ(size, 64);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(out[static_cast<size_t>(i)], 0);
}

TEST_F(ArtContainerTest, UncompressedSizesBeyondAnyBoundFailWithoutAllocating) {
    for (int32_t method : {0, 1, 2, 9}) {
        for (int32_t claimed : {0x7FFFFFFF, -1}) {
            ContainerImage image;
            auto entry = MakeEntry(1, "a", "a");
            entry.dataOffset = image.AppendData(method, Bytes("tiny"), claimed);
            image.AppendEntryTable({entry});
            CArtContainer container;
            ASSERT_TRUE(container.Open(Write(image)));
            int32_t size = 3;
            EXPECT_EQ(container.ReadItemData(1, &size), nullptr) << method << " " << claimed;
            EXPECT_EQ(size, 0);
        }
    }
}

TEST_F(ArtContainerTest, DataChunkSizesThatTheFileCannotHoldFail) {
    for (int32_t chunkSize : {11, -5, 0x7FFFFFFF, 0x10000}) {
        ContainerImage image;
        auto entry = MakeEntry(1, "a", "a");
        entry.dataOffset = image.AppendData(0, Bytes("abcd"), 4);
        image.PatchLong(entry.dataOffset, chunkSize);
        image.AppendEntryTable({entry});
        CArtContainer container;
        ASSERT_TRUE(container.Open(Write(image)));
        int32_t size = 3;
        EXPECT_EQ(container.ReadItemData(1, &size), nullptr) << chunkSize;
        EXPECT_EQ(container.ReadRawItemData(&size, 1), nullptr) << chunkSize;
    }
}

TEST_F(ArtContainerTest, RawDataChunkHandsOutItsHeader) {
    const auto deflated = Deflated(SampleData(300));
    ContainerImage image;
    auto entry = MakeEntry(1, "a", "a");
    entry.dataOffset = image.AppendData(1, deflated, 300, 555);
    image.AppendEntryTable({entry});
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    int32_t uncompressed = 0;
    auto raw = container.ReadRawItemData(&uncompressed, 1);
    ASSERT_NE(raw, nullptr);
    EXPECT_EQ(uncompressed, 300);
    EXPECT_EQ(raw->chunkSize, static_cast<int32_t>(deflated.size() + 12));
    EXPECT_EQ(raw->word1, 555);
    EXPECT_EQ(raw->method, 1);
    EXPECT_EQ(std::memcmp(raw->data.get(), deflated.data(), deflated.size()), 0);
}

TEST_F(ArtContainerTest, TruncatedHeaderLeavesTheDefaults) {
    for (size_t length : {0u, 3u, 100u, 280u}) {
        std::vector<uint8_t> bytes = ThreeItemImage().Bytes();
        bytes.resize(length);
        CArtContainer container;
        EXPECT_TRUE(container.Open(dir.Write("short.qlt", bytes))) << length;
        EXPECT_EQ(container.GetItemCount(), 0) << length;
        EXPECT_DOUBLE_EQ(container.Header()->version, 1.0);
    }
}

TEST_F(ArtContainerTest, HeaderCutInsideTheCountKeepsTheBytesThatWereRead) {
    // Three of the count's four bytes are in the file; the fourth keeps its
    // default of zero.
    std::vector<uint8_t> bytes = ThreeItemImage().Bytes();
    bytes.resize(283);
    CArtContainer container;
    ASSERT_TRUE(container.Open(dir.Write("short.qlt", bytes)));
    EXPECT_EQ(container.GetItemCount(), 3);
    EXPECT_EQ(container.EntryDirectory()->entryTableOffset, 0) << "the directories were not reached";
}

TEST_F(ArtContainerTest, OpeningAnotherFileReplacesTheHeader) {
    ContainerImage other;
    other.AppendEntryTable({MakeEntry(5, "only", "only.bmp")});
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(ThreeItemImage(), "three.qlt")));
    ASSERT_EQ(container.GetItemCount(), 3);
    ASSERT_TRUE(container.Open(Write(other, "one.qlt")));
    EXPECT_EQ(container.GetItemCount(), 1);
    ArtItemInfo info;
    ASSERT_TRUE(container.GetItemInfo(1, info));
    EXPECT_EQ(info.name, "only");
}

TEST_F(ArtContainerTest, OpenFailureAfterASuccessKeepsTheEarlierHeader) {
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(ThreeItemImage())));
    EXPECT_FALSE(container.Open(dir.File("nothing-here.qlt")));
    EXPECT_EQ(recorder.messages.size(), 1u);
    EXPECT_EQ(container.GetItemCount(), 3);
    ArtItemInfo info;
    EXPECT_FALSE(container.GetItemInfo(1, info)) << "the file itself is closed";
}

TEST_F(ArtContainerTest, FileHeldOpenForWritingByOthersStillOpens) {
    const std::string path = Write(ThreeItemImage());
    std::ofstream writer(path, std::ios::binary | std::ios::app);
    ASSERT_TRUE(writer.is_open());
    CArtContainer container;
    EXPECT_TRUE(container.Open(path));
    EXPECT_EQ(container.GetItemCount(), 3);
}

TEST_F(ArtContainerTest, ItemCountBeyondTheTableReadsZeroRecords) {
    ContainerImage image = ThreeItemImage();
    image.header.itemCount = 1000;
    CArtContainer container;
    ASSERT_TRUE(container.Open(Write(image)));
    ArtItemInfo info;
    ASSERT_TRUE(container.GetItemInfo(999, info)) << "a record past the end reads as zeros";
    EXPECT_EQ(info.code, 0);
    EXPECT_EQ(info.name, "");
    int32_t size = 1;
    EXPECT_EQ(container.ReadRendition(999, 0x80, &size), nullptr);
    EXPECT_EQ(container.ReadItemData(999, &size), nullptr);
}

TEST_F(ArtContainerTest, TruncationAtEveryLengthNeverCrashes) {
    const std::vector<uint8_t> whole = ThreeItemImage().Bytes();
    int fullReads = 0;
    for (size_t length = 0; length <= whole.size(); ++length) {
        std::vector<uint8_t> bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length));
        CArtContainer container;
        ASSERT_TRUE(container.Open(dir.Write("cut.qlt", bytes)));
        for (int32_t item = -1; item <= container.GetItemCount() + 1; ++item) {
            ArtItemInfo info;
            container.GetItemInfo(item, info);
            for (int32_t kind : {0x10, 0x20, 0x30, 0x40, 0x80}) {
                int32_t size = 0;
                auto payload = container.ReadRendition(item, kind, &size);
                EXPECT_TRUE(payload != nullptr || size == 0);
            }
            int32_t size = 0;
            auto data = container.ReadItemData(item, &size);
            if (data) ++fullReads;
        }
    }
    EXPECT_GT(fullReads, 0);
}
