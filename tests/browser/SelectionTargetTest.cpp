#include "browser/SelectionTarget.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "browser/PathExists.h"
#include "support/TempDir.h"

using namespace browser;

TEST(IsPictureFile, EveryTypeInAnyCase) {
    for (const char* name :
         {"a.bmp", "a.JPG", "a.jpeg", "a.Emf", "a.cmp", "a.png", "a.wmf", "a.tif", "a.EPS"})
        EXPECT_TRUE(IsPictureFile(name)) << name;
}

TEST(IsPictureFile, PicJpegIsAPictureButJpeIsNot) {
    EXPECT_TRUE(IsPictureFile("PIC.Jpeg"));
    EXPECT_FALSE(IsPictureFile("pic.jpe"));
}

TEST(IsPictureFile, TheTextBehindTheFirstDotDecides) {
    EXPECT_FALSE(IsPictureFile("holiday.2000.jpg"));
    EXPECT_FALSE(IsPictureFile("a.qlt.txt"));
    EXPECT_FALSE(IsPictureFile("a.tiff"));
    EXPECT_FALSE(IsPictureFile("a.gif"));
    EXPECT_FALSE(IsPictureFile("bmp"));
    EXPECT_FALSE(IsPictureFile(""));
    EXPECT_FALSE(IsPictureFile("a."));
    EXPECT_TRUE(IsPictureFile(".bmp"));
}

namespace {
ExistsTest ExistingPaths(std::set<std::string> paths) {
    return [paths](const std::string& path) { return paths.count(path) != 0; };
}
}  // namespace

TEST(TargetOfPath, PlainPathThatExistsIsAPicture) {
    auto target = TargetOfPath("C:\\art\\cat.bmp", ExistingPaths({"C:\\art\\cat.bmp"}));
    EXPECT_EQ(target.kind, TargetKind::Picture);
    EXPECT_EQ(target.path, "C:\\art\\cat.bmp");
}

TEST(TargetOfPath, DirectoryIsAPlainTargetToo) {
    auto target = TargetOfPath("C:\\art", ExistingPaths({"C:\\art"}));
    EXPECT_EQ(target.kind, TargetKind::Picture);
}

TEST(TargetOfPath, ContainerGetsUpperCaseExtension) {
    std::vector<std::string> asked;
    auto target = TargetOfPath("C:\\art\\cats", [&](const std::string& path) {
        asked.push_back(path);
        return path == "C:\\art\\cats.QLT";  // the file system answers whatever the case on disk
    });
    EXPECT_EQ(target.kind, TargetKind::Container);
    EXPECT_EQ(target.path, "C:\\art\\cats.QLT");
    EXPECT_EQ(asked, (std::vector<std::string>{"C:\\art\\cats", "C:\\art\\cats.QLT"})) << "plain path first";
}

TEST(TargetOfPath, NeitherExistsGivesNothing) {
    auto target = TargetOfPath("C:\\gone", ExistingPaths({}));
    EXPECT_EQ(target.kind, TargetKind::Nothing);
    EXPECT_EQ(target.path, "");
}

TEST(TargetOfPath, BothExistingIsPlainForTheTreeAndContainerForTheGallery) {
    auto both = ExistingPaths({"C:\\art\\cats", "C:\\art\\cats.QLT"});
    EXPECT_EQ(TargetOfPath("C:\\art\\cats", both).kind, TargetKind::Picture);
    auto gallery = TargetOfPathContainerFirst("C:\\art\\cats", both);
    EXPECT_EQ(gallery.kind, TargetKind::Container);
    EXPECT_EQ(gallery.path, "C:\\art\\cats.QLT");
}

TEST(TargetOfPathContainerFirst, MissingPathIsStillAPlainPicture) {
    auto target = TargetOfPathContainerFirst("C:\\gone.bmp", ExistingPaths({}));
    EXPECT_EQ(target.kind, TargetKind::Picture);
    EXPECT_EQ(target.path, "C:\\gone.bmp");
}

TEST(PathExistsOnDisk, FilesAndDirectoriesExist) {
    testsupport::TempDir dir;
    const std::string file = dir.Write("cats.qlt", {1});
    EXPECT_TRUE(PathExistsOnDisk(file));
    EXPECT_TRUE(PathExistsOnDisk(dir.Path().string()));
    EXPECT_FALSE(PathExistsOnDisk(dir.File("dogs.qlt")));
}

TEST(TargetOfPath, OnDiskContainerIsFoundByItsTreePath) {
    testsupport::TempDir dir;
    dir.Write("cats.QLT", {1});
    auto target = TargetOfPath(dir.File("cats"), PathExistsOnDisk);
    EXPECT_EQ(target.kind, TargetKind::Container);
    EXPECT_EQ(target.path, dir.File("cats") + ".QLT");
}

#ifdef _WIN32
// Only where file names are case-insensitive does a container named in lower
// case answer to the path with ".QLT"; it is reported with the extension in
// upper case all the same, by both rules.
TEST(TargetOfPath, OnDiskLowerCaseContainerIsReportedWithUpperCaseExtension) {
    testsupport::TempDir dir;
    dir.Write("cats.qlt", {1});
    ASSERT_TRUE(PathExistsOnDisk(dir.File("cats.QLT")));
    const auto target = TargetOfPath(dir.File("cats"), PathExistsOnDisk);
    EXPECT_EQ(target.kind, TargetKind::Container);
    EXPECT_EQ(target.path, dir.File("cats") + ".QLT");
    const auto gallery = TargetOfPathContainerFirst(dir.File("cats"), PathExistsOnDisk);
    EXPECT_EQ(gallery.kind, TargetKind::Container);
    EXPECT_EQ(gallery.path, dir.File("cats") + ".QLT");
}
#endif
