// `qlt verify` against damage done on purpose to a good container, one kind
// of damage at a time, and truncation of a container at every length.
#include <gtest/gtest.h>

#include <filesystem>

#include "QltTestSupport.h"
#include "containers/ArtContainer.h"
#include "tools/qlt/Verify.h"

using containers::ArtLayoutInfo;
using qlttest::LongAt;
using qlttest::PutLong;

namespace {

// A small container with a bit of everything: all three methods, renditions,
// and a keyword index with lists.
containers::ArtContainerWriter SampleWriter() {
    containers::ArtContainerWriter writer;
    const int32_t methods[3] = {0, 1, 2};
    for (int i = 0; i < 3; ++i) {
        containers::ArtItemSource item;
        item.name = "item" + std::to_string(i + 1);
        item.path = "C:\\Art\\item" + std::to_string(i + 1) + ".wmf";
        item.data = qlttest::TextData(static_cast<size_t>(300 + 100 * i), static_cast<unsigned int>(i));
        item.method = methods[i];
        item.renditions.push_back(
            containers::ArtRenditionSource{0x40, qlttest::RandomData(40, 1), 0, 0, 0, 0});
        if (i != 1)
            item.renditions.push_back(
                containers::ArtRenditionSource{0x80, qlttest::RandomData(60, 2), 0, 0, 0, 0});
        item.keywords = {"all", "item" + std::to_string(i + 1)};
        if (i == 2) item.keywords.push_back("last");
        writer.AddItem(item);
    }
    return writer;
}

class VerifyTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(SampleWriter().Build(good, error, &layout)) << error;
    }

    // The problems that verify finds in `bytes`, as "where: message" lines.
    static std::vector<std::string> Problems(const std::vector<uint8_t>& bytes) {
        const qlt::VerifyReport report = qlt::VerifyContainerBytes(bytes);
        std::vector<std::string> problems;
        for (const qlt::Finding& finding : report.findings)
            if (finding.problem) problems.push_back(finding.where + ": " + finding.message);
        return problems;
    }

    static std::string Joined(const std::vector<std::string>& lines) {
        std::string text;
        for (const std::string& line : lines) text += line + "\n";
        return text;
    }

    // One problem, at a place that begins with `where`, whose message holds
    // `words`.
    void ExpectOneProblem(const std::vector<uint8_t>& bytes, const std::string& where,
                          const std::string& words) {
        const std::vector<std::string> problems = Problems(bytes);
        ASSERT_EQ(problems.size(), 1u) << Joined(problems);
        EXPECT_EQ(problems[0].compare(0, where.size(), where), 0) << problems[0];
        EXPECT_NE(problems[0].find(words), std::string::npos) << problems[0];
    }

    int32_t DataOffset(int item) const { return layout.items[static_cast<size_t>(item - 1)].dataOffset; }
    int32_t EntryOffset(int item) const { return layout.items[static_cast<size_t>(item - 1)].entryOffset; }

    std::vector<uint8_t> good;
    ArtLayoutInfo layout;
    testsupport::TempDir dir;
};

TEST_F(VerifyTest, GoodContainerHasNoFindings) {
    const qlt::VerifyReport report = qlt::VerifyContainerBytes(good);
    EXPECT_TRUE(report.readable);
    EXPECT_EQ(report.itemCount, 3);
    EXPECT_TRUE(report.findings.empty()) << report.findings[0].where << ": " << report.findings[0].message;
}

TEST_F(VerifyTest, DataChunkRunningPastTheEnd) {
    std::vector<uint8_t> bytes = good;
    PutLong(bytes, DataOffset(1), 1 << 20);
    ExpectOneProblem(bytes, "item 1 data", "runs past the end of the file");
}

TEST_F(VerifyTest, DataChunkSizeBelowTwelve) {
    std::vector<uint8_t> bytes = good;
    PutLong(bytes, DataOffset(2), 11);
    ExpectOneProblem(bytes, "item 2 data", "below 12");
}

TEST_F(VerifyTest, UnknownMethod) {
    std::vector<uint8_t> bytes = good;
    PutLong(bytes, DataOffset(1) + 8, 7);
    ExpectOneProblem(bytes, "item 1 data", "method 7");
}

TEST_F(VerifyTest, WrongUncompressedSizeForEveryMethod) {
    for (int item = 1; item <= 3; ++item) {
        SCOPED_TRACE(item);
        for (int delta : {-1, 1}) {
            std::vector<uint8_t> bytes = good;
            const int32_t at = DataOffset(item) + 12;
            PutLong(bytes, at, LongAt(bytes, at) + delta);
            ExpectOneProblem(bytes, "item " + std::to_string(item) + " data",
                             "method " + std::to_string(item - 1));
        }
    }
    std::vector<uint8_t> bytes = good;
    PutLong(bytes, DataOffset(2) + 12, -4);
    ExpectOneProblem(bytes, "item 2 data", "negative");
}

TEST_F(VerifyTest, DamagedStreams) {
    std::vector<uint8_t> zlib = good;
    zlib[static_cast<size_t>(DataOffset(2)) + 16] ^= 0xFF;
    ExpectOneProblem(zlib, "item 2 data", "zlib stream is damaged");

    std::vector<uint8_t> implode = good;
    implode[static_cast<size_t>(DataOffset(3)) + 16] = 7;
    ExpectOneProblem(implode, "item 3 data", "implode stream is damaged");

    std::vector<uint8_t> cut = good;
    PutLong(cut, DataOffset(3), LongAt(cut, DataOffset(3)) / 2);
    ExpectOneProblem(cut, "item 3 data", "method 2");
}

TEST_F(VerifyTest, RenditionProblems) {
    const int32_t entry = EntryOffset(1);
    std::vector<uint8_t> outside = good;
    PutLong(outside, entry + 516 + 4 * 3, static_cast<int32_t>(good.size()) - 4);
    ExpectOneProblem(outside, "item 1 rendition 0x40", "needs 20 bytes");

    std::vector<uint8_t> header = good;
    PutLong(header, entry + 516 + 4 * 4, 100);
    ExpectOneProblem(header, "item 1 rendition 0x80", "inside the fixed start");

    std::vector<uint8_t> small = good;
    PutLong(small, layout.items[0].renditionOffsets[3], 19);
    ExpectOneProblem(small, "item 1 rendition 0x40", "smaller than the 20-byte header");

    std::vector<uint8_t> large = good;
    PutLong(large, layout.items[0].renditionOffsets[4], 1000000);
    ExpectOneProblem(large, "item 1 rendition 0x80", "runs past the end");
}

TEST_F(VerifyTest, EntryTableProblems) {
    std::vector<uint8_t> noTable = good;
    PutLong(noTable, 312, 0);
    ExpectOneProblem(noTable, "entry table", "no entry table");

    std::vector<uint8_t> tooMany = good;
    PutLong(tooMany, 280, 1000);
    const std::vector<std::string> problems = Problems(tooMany);
    ASSERT_FALSE(problems.empty());
    EXPECT_NE(problems[0].find("past the end of the file"), std::string::npos) << problems[0];

    std::vector<uint8_t> negative = good;
    PutLong(negative, 280, -1);
    EXPECT_FALSE(Problems(negative).empty());

    std::vector<uint8_t> name = good;
    std::fill(name.begin() + EntryOffset(2) + 4, name.begin() + EntryOffset(2) + 259, 'x');
    ExpectOneProblem(name, "item 2", "name has no NUL");
}

TEST_F(VerifyTest, KeywordMapProblems) {
    std::vector<uint8_t> outside = good;
    PutLong(outside, 300, static_cast<int32_t>(good.size()) + 10);
    ExpectOneProblem(outside, "keyword map", "file ends");

    std::vector<uint8_t> count = good;
    PutLong(count, layout.keywordMapOffset, 0x50);  // short count 0x50, and two bytes of the first key
    EXPECT_FALSE(Problems(count).empty());

    std::vector<uint8_t> badList = good;
    PutLong(badList, layout.listOffsets[0], -2);
    ExpectOneProblem(badList, "keyword", "negative count");

    std::vector<uint8_t> strayItem = good;
    PutLong(strayItem, layout.listOffsets[0] + 4, 99);
    ExpectOneProblem(strayItem, "keyword", "names item 99");

    std::vector<uint8_t> longList = good;
    PutLong(longList, layout.listOffsets[0], 1 << 24);
    ExpectOneProblem(longList, "keyword", "runs past the end");
}

TEST_F(VerifyTest, OddButReadableIndexGivesWarningsOnly) {
    containers::ArtContainerWriter writer = SampleWriter();
    containers::KeywordIndexPlan index;
    index.lists = {{1}, {2}};
    index.pairs.push_back({containers::MapText::Narrow("dog"), 0, {}});
    index.pairs.push_back({containers::MapText::Narrow("dog"), 1, {}});
    index.pairs.push_back({containers::MapText::Narrow("nothing"), -1, containers::MapText::Narrow("0")});
    index.bufferSize = 4096;
    writer.SetKeywordIndex(index);
    std::vector<uint8_t> bytes;
    std::string error;
    ASSERT_TRUE(writer.Build(bytes, error)) << error;
    const qlt::VerifyReport report = qlt::VerifyContainerBytes(bytes);
    EXPECT_EQ(report.Problems(), 0);
    EXPECT_EQ(report.Warnings(), 2) << "a repeated keyword and a buffer size that isn't the map's length";
}

TEST_F(VerifyTest, EveryProblemIsListedAndTheCommandFails) {
    std::vector<uint8_t> bytes = good;
    PutLong(bytes, DataOffset(1) + 8, 9);
    PutLong(bytes, layout.items[2].renditionOffsets[4], 5);
    PutLong(bytes, layout.listOffsets[1] + 4, 0);
    ASSERT_EQ(Problems(bytes).size(), 3u) << Joined(Problems(bytes));

    const std::string path = dir.Write("damaged.qlt", bytes);
    const qlttest::RunResult text = qlttest::RunQlt({"verify", path});
    EXPECT_EQ(text.status, 1);
    const std::vector<std::string> lines = qlttest::Lines(text.out);
    ASSERT_EQ(lines.size(), 4u) << text.out;
    for (size_t i = 0; i < 3; ++i) EXPECT_EQ(lines[i].compare(0, 9, "problem: "), 0) << lines[i];
    EXPECT_NE(lines[3].find("3 problem(s)"), std::string::npos);

    const qlttest::RunResult json = qlttest::RunQlt({"verify", path, "--json"});
    EXPECT_EQ(json.status, 1);
    const std::vector<std::string> objects = qlttest::Lines(json.out);
    ASSERT_EQ(objects.size(), 4u);
    EXPECT_EQ(objects[0].compare(0, 22, "{\"severity\":\"problem\","), 0) << objects[0];
    EXPECT_NE(objects[3].find("\"problems\":3"), std::string::npos) << objects[3];
    EXPECT_NE(objects[3].find("\"ok\":false"), std::string::npos);
}

TEST_F(VerifyTest, EveryTruncationIsAProblem) {
    for (size_t length = 0; length < good.size(); ++length) {
        const std::vector<uint8_t> cut(good.begin(), good.begin() + static_cast<ptrdiff_t>(length));
        ASSERT_FALSE(Problems(cut).empty()) << "cut at " << length;
    }
}

// The reader on a written container cut short at every length: every
// operation either fails or gives exactly what the whole file gives.
TEST_F(VerifyTest, ReaderOnEveryTruncationFailsCleanly) {
    struct Results {
        int32_t count = 0;
        std::vector<std::string> infos;
        std::vector<std::vector<uint8_t>> renditions;
        std::vector<std::vector<uint8_t>> chunks;
        std::vector<std::string> keywordMap;
        std::vector<int32_t> allItems;
        std::string lastKeywords;
        bool mapLoaded = false;
        bool found = false;
    };
    auto readAll = [](const std::string& path, Results& results, bool& opened) {
        containers::CArtContainer container;
        opened = container.Open(path);
        results.count = container.GetItemCount();
        for (int32_t item = 0; item <= 4; ++item) {
            containers::ArtItemInfo info;
            results.infos.push_back(container.GetItemInfo(item, info)
                                        ? info.name + "|" + info.path + "|" + info.rendition40 +
                                              info.rendition80
                                        : "failed");
            for (int32_t kind : {0x40, 0x80, 0x10}) {
                int32_t size = -1;
                std::unique_ptr<uint8_t[]> data = container.ReadRendition(item, kind, &size);
                results.renditions.push_back(data ? std::vector<uint8_t>(data.get(), data.get() + size)
                                                  : std::vector<uint8_t>{0xEE});
                // Numbers past the count fail before the size is touched.
                if (!data && item <= results.count) {
                    EXPECT_EQ(size, 0);
                }
                std::unique_ptr<containers::ArtRawRendition> raw = container.ReadRawRendition(item, kind);
                if (raw) {
                    EXPECT_EQ(static_cast<size_t>(raw->chunkSize - 20), results.renditions.back().size());
                } else {
                    EXPECT_EQ(results.renditions.back(), std::vector<uint8_t>{0xEE});
                }
            }
            int32_t size = -1;
            std::unique_ptr<uint8_t[]> data = container.ReadItemData(item, &size);
            results.chunks.push_back(data ? std::vector<uint8_t>(data.get(), data.get() + size)
                                          : std::vector<uint8_t>{0xEE});
            int32_t uncompressed = 0;
            std::unique_ptr<containers::ArtRawChunk> raw = container.ReadRawItemData(&uncompressed, item);
            results.chunks.push_back(
                raw ? std::vector<uint8_t>(raw->data.get(), raw->data.get() + raw->chunkSize - 12)
                    : std::vector<uint8_t>{0xEE});
        }
        framework::StringMap map;
        results.mapLoaded = container.LoadKeywordMap(map);
        for (const auto& pair : map.Pairs()) results.keywordMap.push_back(pair.first + "=" + pair.second);
        containers::ItemNumberArray items;
        results.found = container.FindItemsByKeyword("all", items);
        for (ptrdiff_t i = 0; i < items.GetSize(); ++i) results.allItems.push_back(items[i]);
        results.lastKeywords = container.GetItemKeywords(3);
    };

    const std::string path = dir.Write("whole.qlt", good);
    Results whole;
    bool opened = false;
    readAll(path, whole, opened);
    ASSERT_TRUE(opened);
    ASSERT_EQ(whole.count, 3);
    ASSERT_TRUE(whole.mapLoaded);
    ASSERT_TRUE(whole.found);
    ASSERT_EQ(whole.allItems, (std::vector<int32_t>{1, 2, 3}));

    // Cutting from the end downwards: each length is one call to shrink the file.
    for (size_t length = good.size(); length-- > 0;) {
        std::filesystem::resize_file(path, length);
        Results cut;
        readAll(path, cut, opened);
        ASSERT_TRUE(opened) << length;
        SCOPED_TRACE("cut at " + std::to_string(length));
        // A cut before the count leaves the default of no items.
        if (length <= 280) {
            EXPECT_EQ(cut.count, 0);
        }
        if (cut.count == 0) continue;
        ASSERT_EQ(cut.count, whole.count);
        const std::vector<uint8_t> failed = {0xEE};
        for (size_t i = 0; i < cut.infos.size(); ++i) {
            // A short read of an entry isn't detected: the texts of a record
            // that the cut reaches come out as far as they go, or empty.
            const int64_t recordEnd = 324 + static_cast<int64_t>(i) * 540;
            const bool cutThrough = static_cast<int64_t>(length) < recordEnd;
            if (cut.infos[i] != "failed" && !cutThrough) {
                EXPECT_EQ(cut.infos[i], whole.infos[i]) << i;
            }
        }
        for (size_t i = 0; i < cut.renditions.size(); ++i) {
            if (cut.renditions[i] != failed) {
                EXPECT_EQ(cut.renditions[i], whole.renditions[i]) << i;
            }
        }
        for (size_t i = 0; i < cut.chunks.size(); ++i) {
            if (cut.chunks[i] != failed) {
                EXPECT_EQ(cut.chunks[i], whole.chunks[i]) << i;
            }
        }
        // The map is the last block, so every cut reaches it.
        EXPECT_FALSE(cut.mapLoaded);
        EXPECT_TRUE(cut.keywordMap.empty());
        EXPECT_FALSE(cut.found);
        EXPECT_TRUE(cut.allItems.empty());
        EXPECT_EQ(cut.lastKeywords, "");
    }
}

}  // namespace
