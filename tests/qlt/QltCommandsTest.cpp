// qlt's commands end to end, run in-process: a manifest goes in, a container
// comes out, and every reading command reports what was put in.
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

#include "QltTestSupport.h"
#include "containers/ArtContainer.h"
#include "foundation/UserMessage.h"
#include "tools/qlt/Json.h"
#include "tools/qlt/Manifest.h"

using qlttest::Lines;
using qlttest::ReadFile;
using qlttest::RunQlt;
using qlttest::RunResult;
using qlttest::WriteText;

namespace {

class QltCommandsTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(dir.Path() / "art" / "thumbs");
        dogData = qlttest::TextData(12000, 11);
        catData = qlttest::RandomData(2500, 12);
        owlData = qlttest::TextData(800, 13);
        qlttest::WriteText(dir.File("art/dog.wmf"), std::string(dogData.begin(), dogData.end()));
        WriteBytes("art/cat.bmp", catData);
        WriteBytes("art/owl.wmf", owlData);
        for (int kind : {0x10, 0x20, 0x30, 0x40, 0x80})
            WriteBytes("art/thumbs/dog" + std::to_string(kind) + ".bmp",
                       qlttest::RandomData(static_cast<size_t>(kind) + 5, static_cast<unsigned int>(kind)));
        WriteBytes("art/thumbs/cat64.bmp", qlttest::Bytes("BM cat small"));
        manifest = dir.File("art/gallery.manifest");
        WriteText(manifest,
                  "# Three animals\n"
                  "notice Test gallery\n"
                  "header-value 5\n"
                  "\n"
                  "item Golden dog\n"
                  "path C:\\Art\\Dogs\\dog.wmf\n"
                  "code 7\n"
                  "data dog.wmf\n"
                  "method 1\n"
                  "rendition 0x10 thumbs/dog16.bmp\n"
                  "rendition 0x20 thumbs/dog32.bmp\n"
                  "rendition 48 thumbs/dog48.bmp\n"
                  "rendition 0x40 thumbs/dog64.bmp\n"
                  "rendition 0x80 thumbs/dog128.bmp\n"
                  "keywords dog, animal, pet\n"
                  "\n"
                  "item Cat\r\n"
                  "data cat.bmp\r\n"
                  "method 2\r\n"
                  "rendition 0x40 thumbs/cat64.bmp\r\n"
                  "keywords cat, animal\r\n"
                  "keyword rock, paper\r\n"
                  "\n"
                  "item Owl\n"
                  "  data   owl.wmf  \n"
                  "  method 0\n");
        container = dir.File("gallery.qlt");
    }

    void WriteBytes(const std::string& name, const std::vector<uint8_t>& bytes) {
        WriteText(dir.File(name), std::string(bytes.begin(), bytes.end()));
    }

    void Create() {
        const RunResult result = RunQlt({"create", container, "--manifest", manifest});
        ASSERT_EQ(result.status, 0) << result.err;
        ASSERT_TRUE(std::filesystem::exists(container));
    }

    testsupport::TempDir dir;
    std::vector<uint8_t> dogData;
    std::vector<uint8_t> catData;
    std::vector<uint8_t> owlData;
    std::string manifest;
    std::string container;
};

TEST_F(QltCommandsTest, CreateMakesWhatTheReaderReadsBack) {
    Create();
    containers::CArtContainer reader;
    ASSERT_TRUE(reader.Open(container));
    ASSERT_EQ(reader.GetItemCount(), 3);
    EXPECT_EQ(reader.GetHeaderValue(), 5);
    EXPECT_STREQ(reader.Header()->notice, "Test gallery");
    containers::ArtItemInfo info;
    ASSERT_TRUE(reader.GetItemInfo(1, info));
    EXPECT_EQ(info.name, "Golden dog");
    EXPECT_EQ(info.path, "C:\\Art\\Dogs\\dog.wmf");
    EXPECT_EQ(info.code, 7);
    ASSERT_TRUE(reader.GetItemInfo(2, info));
    EXPECT_EQ(info.name, "Cat") << "a CR before the line feed is not part of the text";
    EXPECT_EQ(info.path, "cat.bmp") << "the path defaults to the data file's name";
    EXPECT_EQ(info.rendition80, "NONE");
    ASSERT_TRUE(reader.GetItemInfo(3, info));
    EXPECT_EQ(info.path, "owl.wmf");

    int32_t size = 0;
    std::unique_ptr<uint8_t[]> data = reader.ReadItemData(1, &size);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(std::vector<uint8_t>(data.get(), data.get() + size), dogData);
    int32_t uncompressed = 0;
    std::unique_ptr<containers::ArtRawChunk> raw = reader.ReadRawItemData(&uncompressed, 2);
    ASSERT_NE(raw, nullptr);
    EXPECT_EQ(raw->method, 2);
    EXPECT_EQ(uncompressed, 2500);
    data = reader.ReadRendition(1, 0x30, &size);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(size, 0x30 + 5);

    containers::ItemNumberArray items;
    ASSERT_TRUE(reader.FindItemsByKeyword("animal", items));
    ASSERT_EQ(items.GetSize(), 2);
    EXPECT_EQ(items[0], 1);
    EXPECT_EQ(items[1], 2);
    ASSERT_TRUE(reader.FindItemsByKeyword("rock, paper", items));
    ASSERT_EQ(items.GetSize(), 1);
    EXPECT_EQ(items[0], 2);
}

TEST_F(QltCommandsTest, ExtractGivesBackEveryItemsDataWhateverItsMethod) {
    Create();
    const std::vector<std::vector<uint8_t>> expected = {dogData, catData, owlData};
    for (int item = 1; item <= 3; ++item) {
        const std::string out = dir.File("out" + std::to_string(item));
        const RunResult result = RunQlt({"extract", container, std::to_string(item), "-o", out});
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(ReadFile(out), expected[static_cast<size_t>(item - 1)]) << item;
    }
    const RunResult byName = RunQlt({"extract", container, "Cat", "--output", dir.File("cat")});
    ASSERT_EQ(byName.status, 0) << byName.err;
    EXPECT_EQ(ReadFile(dir.File("cat")), catData);
}

TEST_F(QltCommandsTest, ExtractGivesBackEachRendition) {
    Create();
    for (int kind : {0x10, 0x20, 0x30, 0x40, 0x80}) {
        const std::string out = dir.File("thumb" + std::to_string(kind));
        const RunResult result =
            RunQlt({"extract", container, "1", "--rendition", std::to_string(kind), "-o", out});
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(ReadFile(out), ReadFile(dir.File("art/thumbs/dog" + std::to_string(kind) + ".bmp")))
            << kind;
    }
    const RunResult hex =
        RunQlt({"extract", container, "2", "--rendition=0x40", "-o", dir.File("c"), "--json"});
    ASSERT_EQ(hex.status, 0) << hex.err;
    EXPECT_EQ(qlttest::ReadText(dir.File("c")), "BM cat small");
    EXPECT_NE(hex.out.find("\"kind\":64"), std::string::npos) << hex.out;
    EXPECT_NE(hex.out.find("\"size\":12"), std::string::npos) << hex.out;
}

TEST_F(QltCommandsTest, ExtractOfWhatIsNotThereIsAProblem) {
    Create();
    const std::string out = dir.File("none");
    EXPECT_EQ(RunQlt({"extract", container, "2", "--rendition", "0x80", "-o", out}).status, 1);
    EXPECT_EQ(RunQlt({"extract", container, "4", "-o", out}).status, 1);
    EXPECT_EQ(RunQlt({"extract", container, "0", "-o", out}).status, 1);
    EXPECT_EQ(RunQlt({"extract", container, "Horse", "-o", out}).status, 1);
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_EQ(RunQlt({"extract", container, "1", "--rendition", "0x41", "-o", out}).status, 2);
    EXPECT_EQ(RunQlt({"extract", container, "1"}).status, 2) << "-o is required";
}

TEST_F(QltCommandsTest, InfoTellsTheHeader) {
    Create();
    const RunResult text = RunQlt({"info", container});
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_NE(text.out.find("notice:       Test gallery"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("items:        3"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("header value: 5"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("entry table:  offset 324"), std::string::npos) << text.out;

    const RunResult json = RunQlt({"info", container, "--json"});
    ASSERT_EQ(json.status, 0);
    const std::vector<std::string> lines = Lines(json.out);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].front(), '{');
    EXPECT_EQ(lines[0].back(), '}');
    EXPECT_NE(lines[0].find("\"itemCount\":3"), std::string::npos);
    EXPECT_NE(lines[0].find("\"version\":1,"), std::string::npos) << lines[0];
    EXPECT_NE(lines[0].find("\"size\":" + std::to_string(std::filesystem::file_size(container))),
              std::string::npos);
    EXPECT_NE(lines[0].find("\"entryTableOffset\":324"), std::string::npos);
}

TEST_F(QltCommandsTest, ListShowsEveryItem) {
    Create();
    const RunResult text = RunQlt({"list", container});
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_NE(text.out.find("#1 Golden dog"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("method 1 (zlib)"), std::string::npos);
    EXPECT_NE(text.out.find("method 2 (implode)"), std::string::npos);
    EXPECT_NE(text.out.find("method 0 (stored), 800 bytes stored, 800 bytes uncompressed"),
              std::string::npos);
    EXPECT_NE(text.out.find("0x40 (69 bytes), 0x80 (133 bytes)"), std::string::npos) << text.out;

    const RunResult json = RunQlt({"list", container, "--json"});
    ASSERT_EQ(json.status, 0);
    const std::vector<std::string> lines = Lines(json.out);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_NE(lines[0].find("\"item\":1"), std::string::npos);
    EXPECT_NE(lines[0].find("\"path\":\"C:\\\\Art\\\\Dogs\\\\dog.wmf\""), std::string::npos) << lines[0];
    EXPECT_NE(lines[1].find("\"renditions\":[{\"kind\":64,\"size\":12}]"), std::string::npos) << lines[1];
    EXPECT_NE(lines[1].find("\"rendition80\":\"NONE\""), std::string::npos) << lines[1];
    EXPECT_NE(lines[2].find("\"data\":{\"method\":0,\"storedSize\":800,\"uncompressedSize\":800}"),
              std::string::npos)
        << lines[2];
}

TEST_F(QltCommandsTest, KeywordsThroughTheReadersOperations) {
    Create();
    const RunResult all = RunQlt({"keywords", container});
    ASSERT_EQ(all.status, 0) << all.err;
    const std::vector<std::string> lines = Lines(all.out);
    EXPECT_EQ(lines.size(), 5u) << all.out;
    EXPECT_NE(all.out.find("animal: 1 2\n"), std::string::npos) << all.out;
    EXPECT_NE(all.out.find("rock, paper: 2\n"), std::string::npos) << all.out;

    const RunResult word = RunQlt({"keywords", container, "--word", "animal"});
    ASSERT_EQ(word.status, 0);
    EXPECT_EQ(word.out, "1\n2\n");
    const RunResult padded = RunQlt({"keywords", container, "--word", " pet ", "--json"});
    ASSERT_EQ(padded.status, 0);
    EXPECT_EQ(padded.out, "{\"keyword\":\" pet \",\"items\":[1]}\n");
    EXPECT_EQ(RunQlt({"keywords", container, "--word", "Pet"}).status, 1);

    const RunResult item = RunQlt({"keywords", container, "--item", "2", "--json"});
    ASSERT_EQ(item.status, 0);
    EXPECT_NE(item.out.find("\"item\":2"), std::string::npos);
    EXPECT_NE(item.out.find("\"rock\""), std::string::npos) << "a comma splits a keyword in an item's list";
    EXPECT_NE(item.out.find(",rock, paper,"), std::string::npos) << item.out;
    const RunResult owl = RunQlt({"keywords", container, "--item", "3"});
    EXPECT_EQ(owl.status, 0);
    EXPECT_EQ(owl.out, "");
    EXPECT_EQ(RunQlt({"keywords", container, "--item", "9"}).status, 1);
    EXPECT_EQ(RunQlt({"keywords", container, "--item", "1", "--word", "dog"}).status, 2);

    const RunResult json = RunQlt({"keywords", container, "--json"});
    EXPECT_NE(json.out.find("{\"keyword\":\"dog\",\"items\":[1]}\n"), std::string::npos) << json.out;
}

TEST_F(QltCommandsTest, KeywordsOfAContainerWithoutIndexAreNone) {
    WriteText(manifest, "item bare\n");
    Create();
    const RunResult result = RunQlt({"keywords", container});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "");
}

TEST_F(QltCommandsTest, EmptyIndexIsNoneButADamagedOneIsAProblem) {
    containers::ArtWriterOptions options;
    options.writeEmptyKeywordMap = true;
    containers::ArtContainerWriter empty(options);
    empty.AddItem(containers::ArtItemSource{});
    const RunResult none = RunQlt({"keywords", qlttest::WriteContainer(empty, dir.File("empty.qlt"))});
    EXPECT_EQ(none.status, 0) << none.err;
    EXPECT_EQ(none.out, "");

    containers::ArtContainerWriter writer;
    containers::ArtItemSource item;
    item.keywords = {"dog"};
    writer.AddItem(item);
    containers::ArtLayoutInfo layout;
    const std::string path = qlttest::WriteContainer(writer, dir.File("damaged.qlt"), &layout);
    std::vector<uint8_t> bytes = ReadFile(path);
    qlttest::PutLong(bytes, layout.listOffsets[0], 1 << 24);
    WriteBytes("damaged.qlt", bytes);
    const RunResult damaged = RunQlt({"keywords", path});
    EXPECT_EQ(damaged.status, 1);
    EXPECT_NE(damaged.err.find("verify"), std::string::npos) << damaged.err;
}

TEST_F(QltCommandsTest, ExtractRefusesDataThatDoesNotDecode) {
    containers::ArtContainerWriter writer;
    for (int32_t method : {0, 1, 2}) {
        containers::ArtItemSource item;
        item.name = "m" + std::to_string(method);
        item.rawData = containers::ArtRawData{method, 100, qlttest::Bytes("not what it claims")};
        writer.AddItem(item);
    }
    const std::string path = qlttest::WriteContainer(writer, dir.File("bad.qlt"));
    for (const char* item : {"1", "2", "3"}) {
        const std::string out = dir.File(std::string("bad") + item);
        const RunResult result = RunQlt({"extract", path, item, "-o", out});
        EXPECT_EQ(result.status, 1) << item;
        EXPECT_NE(result.err.find("item " + std::string(item)), std::string::npos) << result.err;
        EXPECT_FALSE(std::filesystem::exists(out)) << item;
    }
}

TEST_F(QltCommandsTest, VerifyPassesWhatCreateMade) {
    Create();
    const RunResult text = RunQlt({"verify", container});
    EXPECT_EQ(text.status, 0) << text.out;
    EXPECT_NE(text.out.find(": ok (3 items"), std::string::npos) << text.out;
    const RunResult json = RunQlt({"verify", container, "--json"});
    EXPECT_EQ(json.status, 0);
    EXPECT_NE(json.out.find("\"problems\":0"), std::string::npos) << json.out;
    EXPECT_NE(json.out.find("\"ok\":true"), std::string::npos);
}

TEST_F(QltCommandsTest, JsonEscapesEveryTextProperly) {
    WriteText(manifest, std::string("item say \"hi\" \\ tab\there \x01 caf\xE9 \x80\n"));
    Create();
    const RunResult json = RunQlt({"list", container, "--json"});
    ASSERT_EQ(json.status, 0) << json.err;
    EXPECT_NE(json.out.find("\"name\":\"say \\\"hi\\\" \\\\ tab\\there \\u0001 caf\\u00e9 \\u20ac\""),
              std::string::npos)
        << json.out;
    for (char c : json.out) EXPECT_LT(static_cast<unsigned char>(c), 0x80) << "JSON output stays ASCII";

    EXPECT_EQ(qlt::JsonString("a\nb\r\f\b/"), "\"a\\nb\\r\\f\\b/\"");
    EXPECT_EQ(qlt::JsonString("\x7F\x81\x9F\xA0\xFF"), "\"\\u007f\\u0081\\u0178\\u00a0\\u00ff\"");
    EXPECT_EQ(qlt::JsonObject().Real("v", std::numeric_limits<double>::infinity()).Str(), "{\"v\":null}");
}

TEST_F(QltCommandsTest, UnopenableFileIsAnUnreadableFileAndNeverAMessageBox) {
    std::vector<std::string> shown;
    foundation::ScopedUserMessageHandler outer([&shown](const std::string& text) { shown.push_back(text); });
    const std::string missing = dir.File("missing.qlt");
    for (const char* command : {"info", "list", "keywords"}) {
        const RunResult result = RunQlt({command, missing});
        EXPECT_EQ(result.status, 2) << command;
        EXPECT_NE(result.err.find("missing.qlt"), std::string::npos) << command << ": " << result.err;
        EXPECT_EQ(Lines(result.err).size(), 1u) << "the message box's text, as one line: " << result.err;
        EXPECT_EQ(result.out, "");
    }
    const RunResult verify = RunQlt({"verify", missing});
    EXPECT_EQ(verify.status, 2);
    EXPECT_NE(verify.err.find("missing.qlt"), std::string::npos);
    EXPECT_TRUE(shown.empty()) << "the command's own handler takes the reader's message";
    foundation::ShowUserMessage("after");
    EXPECT_EQ(shown, std::vector<std::string>{"after"}) << "the caller's handler is back";
}

TEST_F(QltCommandsTest, HelpAndUsageErrors) {
    const RunResult help = RunQlt({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* command : {"create", "info", "list", "extract", "keywords", "verify"}) {
        EXPECT_NE(help.out.find(command), std::string::npos) << command;
        const RunResult one = RunQlt({command, "--help"});
        EXPECT_EQ(one.status, 0) << command;
        EXPECT_EQ(one.out.compare(0, 11 + std::string(command).size(), std::string("usage: qlt ") + command),
                  0)
            << one.out;
    }
    EXPECT_EQ(RunQlt({}).status, 2);
    EXPECT_EQ(RunQlt({"frobnicate"}).status, 2);
    EXPECT_EQ(RunQlt({"info"}).status, 2);
    EXPECT_EQ(RunQlt({"info", "a", "b"}).status, 2);
    EXPECT_EQ(RunQlt({"info", "a", "--bogus"}).status, 2);
    EXPECT_EQ(RunQlt({"info", "a", "--json=yes"}).status, 2);
    EXPECT_EQ(RunQlt({"create", dir.File("x.qlt")}).status, 2) << "--manifest is required";
    EXPECT_EQ(RunQlt({"keywords", "a", "--word"}).status, 2) << "--word needs a value";
    const RunResult bad = RunQlt({"list", "--frob"});
    EXPECT_NE(bad.err.find("unknown option '--frob'"), std::string::npos) << bad.err;
}

TEST_F(QltCommandsTest, ManifestProblemsAreListedWithTheirLinesAndNothingIsWritten) {
    WriteText(manifest,
              "path before any item\n"
              "item ok\n"
              "method 5\n"
              "rendition 0x41 thumbs/cat64.bmp\n"
              "colour blue\n"
              "notice too late\n"
              "item " +
                  std::string(255, 'n') + "\n");
    const RunResult result = RunQlt({"create", container, "--manifest", manifest});
    EXPECT_EQ(result.status, 1);
    for (const char* line : {":1:", ":3:", ":4:", ":5:", ":6:", ":7:"})
        EXPECT_NE(result.err.find(std::string("gallery.manifest") + line), std::string::npos)
            << line << result.err;
    EXPECT_FALSE(std::filesystem::exists(container));
}

TEST_F(QltCommandsTest, MissingDataFileIsUnreadableAndLeavesTheOldContainer) {
    Create();
    const std::vector<uint8_t> before = ReadFile(container);
    WriteText(manifest, "item lost\ndata nowhere.wmf\n");
    const RunResult result = RunQlt({"create", container, "--manifest", manifest});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("nowhere.wmf"), std::string::npos) << result.err;
    EXPECT_EQ(ReadFile(container), before);
    EXPECT_EQ(RunQlt({"create", container, "--manifest", dir.File("no.manifest")}).status, 2);
}

TEST_F(QltCommandsTest, ManifestSettingsReachTheWriter) {
    containers::ArtContainerWriter writer;
    const qlt::ManifestResult result = qlt::ParseManifest(
        "none-offset 0\nimplode binary 2048\nversion 2.5\nitem a\ncode 0x10\nkeywords , x ,, y,\n",
        dir.File(""), "m", writer);
    ASSERT_EQ(result.status, qlt::ManifestStatus::kOk);
    EXPECT_EQ(writer.Options().noRenditionOffset, 0);
    EXPECT_EQ(writer.Options().implodeType, dcl::kCompressionBinary);
    EXPECT_EQ(writer.Options().implodeDictionarySize, 2048u);
    EXPECT_EQ(writer.Options().version, 2.5);
    const containers::KeywordIndexPlan index = writer.DeriveKeywordIndex();
    EXPECT_EQ(index.pairs.size(), 2u) << "empty words between commas are dropped";

    containers::ArtContainerWriter other;
    EXPECT_EQ(qlt::ParseManifest("implode fast\n", "", "m", other).status, qlt::ManifestStatus::kInvalid);
    EXPECT_EQ(qlt::ParseManifest("none-offset 1\n", "", "m", other).status, qlt::ManifestStatus::kInvalid);
    EXPECT_EQ(qlt::ParseManifest("item a\nmethod 2\n", "", "m", other).status, qlt::ManifestStatus::kInvalid);
}

TEST(QltManifestHelpers, NamesAndNumbers) {
    EXPECT_EQ(qlt::FolderOf("a/b/c.txt"), "a/b/");
    EXPECT_EQ(qlt::FolderOf("a\\b.txt"), "a\\");
    EXPECT_EQ(qlt::FolderOf("c.txt"), "");
    EXPECT_EQ(qlt::ResolveAgainst("a/", "b.bmp"), "a/b.bmp");
    EXPECT_EQ(qlt::ResolveAgainst("a/", "/abs/b.bmp"), "/abs/b.bmp");
    EXPECT_EQ(qlt::ResolveAgainst("a/", "C:\\b.bmp"), "C:\\b.bmp");
    int64_t value = 0;
    EXPECT_TRUE(qlt::ParseInteger("0x40", value));
    EXPECT_EQ(value, 64);
    EXPECT_TRUE(qlt::ParseInteger("010", value));
    EXPECT_EQ(value, 10);
    EXPECT_TRUE(qlt::ParseInteger("-5", value));
    EXPECT_EQ(value, -5);
    EXPECT_FALSE(qlt::ParseInteger("12x", value));
    EXPECT_FALSE(qlt::ParseInteger("", value));
    EXPECT_FALSE(qlt::ParseInteger(" 1", value));
}

}  // namespace
