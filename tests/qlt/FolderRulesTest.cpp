// The portable rules of `qlt create --from`: the rendition box fit, the
// keyword file, the option checks, and the answer of a build that can't
// decode pictures.
#include <gtest/gtest.h>

#include <filesystem>

#include "QltTestSupport.h"
#include "tools/qlt/FolderSource.h"
#include "tools/qlt/KeywordFile.h"
#include "tools/qlt/RenditionFit.h"

using qlttest::RunQlt;
using qlttest::RunResult;

namespace {

TEST(RenditionFit, TheLongerSideTouchesTheBoxAndTheOtherKeepsTheProportion) {
    const qlt::RenditionSize wide = qlt::FitIntoBox(300, 120, 128);
    EXPECT_EQ(wide.width, 128);
    EXPECT_EQ(wide.height, 51) << "120 x 128 / 300 = 51.2";
    const qlt::RenditionSize tall = qlt::FitIntoBox(90, 200, 64);
    EXPECT_EQ(tall.width, 29) << "90 x 64 / 200 = 28.8";
    EXPECT_EQ(tall.height, 64);
    const qlt::RenditionSize square = qlt::FitIntoBox(37, 37, 48);
    EXPECT_EQ(square.width, 48);
    EXPECT_EQ(square.height, 48);
}

TEST(RenditionFit, HalvesRoundUpAndSmallPicturesAreEnlarged) {
    const qlt::RenditionSize half = qlt::FitIntoBox(32, 3, 16);
    EXPECT_EQ(half.width, 16);
    EXPECT_EQ(half.height, 2) << "3 x 16 / 32 = 1.5";
    const qlt::RenditionSize tiny = qlt::FitIntoBox(6, 4, 128);
    EXPECT_EQ(tiny.width, 128);
    EXPECT_EQ(tiny.height, 85) << "4 x 128 / 6 = 85.33";
}

TEST(RenditionFit, AThinPictureKeepsOnePixelAndNothingOverflows) {
    const qlt::RenditionSize line = qlt::FitIntoBox(16384, 1, 16);
    EXPECT_EQ(line.width, 16);
    EXPECT_EQ(line.height, 1);
    const qlt::RenditionSize huge = qlt::FitIntoBox(INT32_MAX, INT32_MAX - 1, INT32_MAX);
    EXPECT_EQ(huge.width, INT32_MAX);
    EXPECT_EQ(huge.height, INT32_MAX - 1);
    for (const auto& bad :
         {qlt::FitIntoBox(0, 10, 16), qlt::FitIntoBox(10, -1, 16), qlt::FitIntoBox(10, 10, 0)}) {
        EXPECT_EQ(bad.width, 0);
        EXPECT_EQ(bad.height, 0);
    }
}

TEST(RenditionFit, EachKindIsItsOwnBoxEdge) {
    EXPECT_EQ(qlt::RenditionBoxEdge(0x10), 16);
    EXPECT_EQ(qlt::RenditionBoxEdge(0x20), 32);
    EXPECT_EQ(qlt::RenditionBoxEdge(0x30), 48);
    EXPECT_EQ(qlt::RenditionBoxEdge(0x40), 64);
    EXPECT_EQ(qlt::RenditionBoxEdge(0x80), 128);
    EXPECT_EQ(qlt::RenditionBoxEdge(0x41), 0);
    EXPECT_EQ(qlt::RenditionBoxEdge(0), 0);
}

TEST(KeywordFile, LinesNameAPictureAndItsWords) {
    const qlt::KeywordFile file = qlt::ParseKeywordFile(
        "# the spring pictures\r\n"
        "\n"
        "  dog.png :  dog animal,pet , ,\r\n"
        "cat.bmp:\n"
        "Dog.PNG: brown\n",
        "k");
    ASSERT_TRUE(file.Ok());
    ASSERT_EQ(file.lines.size(), 3u);
    EXPECT_EQ(file.lines[0].line, 3);
    EXPECT_EQ(file.lines[0].name, "dog.png");
    EXPECT_EQ(file.lines[0].words, (std::vector<std::string>{"dog", "animal", "pet"}));
    EXPECT_TRUE(file.lines[1].words.empty());

    std::vector<std::string> messages;
    const std::vector<std::vector<std::string>> words =
        qlt::AssignKeywords(file, {"cat.bmp", "DOG.png"}, {}, "k", messages);
    EXPECT_TRUE(messages.empty());
    ASSERT_EQ(words.size(), 2u);
    EXPECT_TRUE(words[0].empty());
    EXPECT_EQ(words[1], (std::vector<std::string>{"dog", "animal", "pet", "brown"}))
        << "names match without case, and lines for one picture add up";
}

TEST(KeywordFile, ProblemsNameTheFileAndLine) {
    const qlt::KeywordFile file = qlt::ParseKeywordFile("dog.png dog\n: word\nok.png: fine\n", "words.txt");
    ASSERT_EQ(file.messages.size(), 2u);
    EXPECT_EQ(file.messages[0].rfind("words.txt:1: ", 0), 0u) << file.messages[0];
    EXPECT_EQ(file.messages[1].rfind("words.txt:2: ", 0), 0u) << file.messages[1];

    const qlt::KeywordFile names = qlt::ParseKeywordFile("readme.txt: a\n\nlost.png: b\nok.png: c\n", "w");
    std::vector<std::string> messages;
    qlt::AssignKeywords(names, {"ok.png"}, {"README.TXT"}, "w", messages);
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(messages[0], "w:1: 'readme.txt' is not a picture, so it has no item");
    EXPECT_EQ(messages[1], "w:3: 'lost.png' is no picture in the folder");
}

TEST(RenditionFormatOption, TakesBmpJpegAndPngWithoutCase) {
    qlt::RenditionFormat format = qlt::RenditionFormat::kBmp;
    EXPECT_TRUE(qlt::ParseRenditionFormat("JPEG", format));
    EXPECT_EQ(format, qlt::RenditionFormat::kJpeg);
    EXPECT_TRUE(qlt::ParseRenditionFormat("jpg", format));
    EXPECT_EQ(format, qlt::RenditionFormat::kJpeg);
    EXPECT_TRUE(qlt::ParseRenditionFormat("png", format));
    EXPECT_EQ(format, qlt::RenditionFormat::kPng);
    EXPECT_TRUE(qlt::ParseRenditionFormat("Bmp", format));
    EXPECT_EQ(format, qlt::RenditionFormat::kBmp);
    EXPECT_FALSE(qlt::ParseRenditionFormat("gif", format));
    EXPECT_FALSE(qlt::ParseRenditionFormat("", format));
    EXPECT_FALSE(qlt::ParseRenditionFormat("png ", format));
}

class CreateFromFolderOptions : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(dir.Path() / "pictures");
        folder = dir.File("pictures");
        out = dir.File("out.qlt");
        // An existing container that no failed run may replace.
        qlttest::WriteText(out, "the old container");
    }

    void ExpectOutUntouched() { EXPECT_EQ(qlttest::ReadText(out), "the old container"); }

    testsupport::TempDir dir;
    std::string folder;
    std::string out;
};

TEST_F(CreateFromFolderOptions, UsageErrorsWriteNothing) {
    const std::string manifest = dir.File("m.manifest");
    qlttest::WriteText(manifest, "item a\n");
    const std::vector<std::vector<std::string>> calls = {
        {"create", out, "--from", folder, "--manifest", manifest},
        {"create", out, "--manifest", manifest, "--rendition-format", "png"},
        {"create", out, "--manifest", manifest, "--method", "1"},
        {"create", out, "--manifest", manifest, "--keywords", manifest},
        {"create", out, "--from", folder, "--rendition-format", "gif"},
        {"create", out, "--from", folder, "--method", "3"},
        {"create", out, "--from"},
    };
    for (const std::vector<std::string>& call : calls) {
        const RunResult result = RunQlt(call);
        EXPECT_EQ(result.status, 2) << call[2] << " " << call.back() << ": " << result.err;
        EXPECT_NE(result.err.find("qlt create: "), std::string::npos) << result.err;
    }
    const RunResult format = RunQlt({"create", out, "--from", folder, "--rendition-format", "gif"});
    EXPECT_NE(format.err.find("bmp, jpeg or png, not 'gif'"), std::string::npos) << format.err;
    ExpectOutUntouched();
}

#ifndef _WIN32
TEST_F(CreateFromFolderOptions, ThisBuildSaysThatOnlyTheWindowsBuildReadsPictures) {
    EXPECT_FALSE(qlt::CanCreateFromFolder());
    const RunResult result = RunQlt({"create", out, "--from", folder});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("--from needs the Windows build of qlt"), std::string::npos) << result.err;
    EXPECT_TRUE(result.out.empty());
    ExpectOutUntouched();
}
#endif

}  // namespace
