// Thumbnail items: loading and fitting pictures, paths and titles, and .thm
// files on disk.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "TestPictures.h"
#include "support/TempDir.h"
#include "thumbnails/FileError.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/ThmFile.h"
#include "thumbnails/ThumbnailItem.h"

using foundation::CFilePath;
using testpictures::Bytes;
using thumbnails::CThumbnailItem;
using thumbnails::FileError;

namespace {

class ThumbnailItemTest : public ::testing::Test {
protected:
    void SetUp() override {
        savedRoot_ = thumbnails::thumbnailRoot;
        thumbnails::thumbnailRoot = CFilePath();
        live_ = imaging::kernel::LiveStorageCount();
    }
    void TearDown() override {
        thumbnails::thumbnailRoot = savedRoot_;
        EXPECT_EQ(imaging::kernel::LiveStorageCount(), live_) << "every bitmap given back";
    }

    std::string Picture(const std::string& name, int32_t width, int32_t height) {
        return testpictures::WriteFile(dir_.File(name), testpictures::Bmp24(width, height));
    }

    testsupport::TempDir dir_;

private:
    CFilePath savedRoot_;
    size_t live_ = 0;
};

std::string Text(const Bytes& bytes, size_t at, size_t length) {
    return std::string(reinterpret_cast<const char*>(bytes.data()) + at, length);
}

uint32_t Word(const Bytes& bytes, size_t at) {
    uint32_t value = 0;
    std::memcpy(&value, bytes.data() + at, 4);
    return value;
}

}  // namespace

// ---- Loading and fitting ---------------------------------------------------------

TEST_F(ThumbnailItemTest, PicturesAreFittedIntoTheBox) {
    struct Case {
        int32_t width, height, fittedWidth, fittedHeight;
    };
    for (const Case& c :
         {Case{170, 128, 85, 64}, Case{200, 100, 85, 42}, Case{100, 200, 32, 64}, Case{10, 10, 64, 64}}) {
        const CFilePath picture(Picture("p.bmp", c.width, c.height));
        CThumbnailItem item;
        EXPECT_TRUE(item.LoadFromFile(&picture)) << c.width << " x " << c.height;
        EXPECT_EQ(item.bitmap.width, c.fittedWidth);
        EXPECT_EQ(item.bitmap.height, c.fittedHeight);
        EXPECT_EQ(item.bitmap.bitsPerPixel, 24);
        EXPECT_EQ(item.bitmap.colorOrder, imaging::kColorOrderBgr);
        EXPECT_EQ(item.filePath.path, picture.path);
    }
}

TEST_F(ThumbnailItemTest, AWidthOfZeroIsTheResizesToRefuse) {
    // 1 x 100 fits to 0 x 64; the resize refuses it and the bitmap keeps
    // its loaded size.
    const CFilePath picture(Picture("narrow.bmp", 1, 100));
    CThumbnailItem item;
    EXPECT_FALSE(item.LoadAndFit(&picture));
    EXPECT_EQ(item.bitmap.width, 1);
    EXPECT_EQ(item.bitmap.height, 100);
    EXPECT_NE(item.bitmap.storage, nullptr);
    EXPECT_TRUE(item.filePath.path.empty()) << "LoadAndFit sets no path";
}

TEST_F(ThumbnailItemTest, AMissingPictureFailsWithThePathSet) {
    const CFilePath picture(dir_.File("missing.bmp"));
    CThumbnailItem item;
    EXPECT_FALSE(item.LoadFromFile(&picture));
    EXPECT_EQ(item.filePath.path, picture.path);
    EXPECT_EQ(item.bitmap.storage, nullptr);
    EXPECT_FALSE(item.LoadFromFile(nullptr));
    EXPECT_EQ(item.filePath.path, picture.path) << "a null picture changes nothing";
}

TEST_F(ThumbnailItemTest, RelativeNamesAreTheRightmostCharacters) {
    const std::string path = Picture("rel.bmp", 20, 10);
    const CFilePath picture(path);
    const std::string directory = dir_.Path().string();
    {
        thumbnails::thumbnailRoot = CFilePath(directory);
        CThumbnailItem item;
        EXPECT_TRUE(item.LoadFromFileRelative(&picture));
        EXPECT_EQ(item.relativeName, "\\rel.bmp");
        EXPECT_TRUE(item.filePath.path.empty());
        CFilePath full;
        item.GetFullPath(full);
        EXPECT_EQ(full.path, path) << "root and relative name joined as they stand";
        imaging::FreeBitmap(&item.bitmap);  // relative-only items keep their pixels
    }
    {
        // The root is not checked to be a prefix: only its length counts.
        thumbnails::thumbnailRoot = CFilePath(std::string(directory.size(), 'x'));
        CThumbnailItem item;
        item.LoadFromFileRelative(&picture);
        EXPECT_EQ(item.relativeName, "\\rel.bmp");
        imaging::FreeBitmap(&item.bitmap);
    }
    {
        thumbnails::thumbnailRoot = CFilePath();
        CThumbnailItem item;
        item.LoadFromFileRelative(&picture);
        EXPECT_EQ(item.relativeName, path) << "an empty root takes the whole path";
        imaging::FreeBitmap(&item.bitmap);
    }
    {
        thumbnails::thumbnailRoot = CFilePath(path + "\\longer");
        CThumbnailItem item;
        EXPECT_TRUE(item.LoadFromFileRelative(&picture));
        EXPECT_EQ(item.relativeName, "") << "a root longer than the path leaves nothing";
    }
}

// ---- Paths and titles -------------------------------------------------------------

TEST_F(ThumbnailItemTest, FullPathAndTitle) {
    thumbnails::thumbnailRoot = CFilePath("c:\\thumbs");
    CThumbnailItem item;
    CFilePath full("unchanged");
    std::string title;

    item.GetFullPath(full);
    EXPECT_EQ(full.path, "c:\\thumbs") << "with both texts empty: the root itself";
    item.GetTitle(title);
    EXPECT_EQ(title, "");

    item.relativeName = "\\art\\sun.set.jpg";
    item.GetFullPath(full);
    EXPECT_EQ(full.path, "c:\\thumbs\\art\\sun.set.jpg");
    item.GetTitle(title);
    EXPECT_EQ(title, "sun");

    item.filePath = CFilePath("d:\\pics\\Moon.bmp");
    item.GetFullPath(full);
    EXPECT_EQ(full.path, "d:\\pics\\Moon.bmp");
    item.GetTitle(title);
    EXPECT_EQ(title, "Moon");
}

TEST_F(ThumbnailItemTest, ContainerEntriesLookLikeFilesInAFolder) {
    CThumbnailItem item;
    item.filePath = CFilePath("c:\\art\\animals.qlt");
    item.filePath.path = item.filePath.path.substr(0, item.filePath.path.find('.')) + "\\Lion.wmf";
    std::string title;
    item.GetTitle(title);
    EXPECT_EQ(title, "Lion");
}

// ---- The destructor ------------------------------------------------------------------

TEST_F(ThumbnailItemTest, TheDestructorGivesThePixelsBack) {
    const CFilePath picture(Picture("d.bmp", 30, 30));
    const size_t before = imaging::kernel::LiveStorageCount();
    {
        CThumbnailItem item;
        ASSERT_TRUE(item.LoadFromFile(&picture));
        EXPECT_EQ(imaging::kernel::LiveStorageCount(), before + 1);
    }
    EXPECT_EQ(imaging::kernel::LiveStorageCount(), before);
    {
        // Both texts empty: freed as well.
        CThumbnailItem item;
        ASSERT_TRUE(item.LoadAndFit(&picture));
    }
    EXPECT_EQ(imaging::kernel::LiveStorageCount(), before);
}

TEST_F(ThumbnailItemTest, ARelativeOnlyItemLeavesItsPixelsAlone) {
    const CFilePath picture(Picture("r.bmp", 30, 30));
    imaging::BitmapDescriptor copy{};
    const size_t before = imaging::kernel::LiveStorageCount();
    {
        CThumbnailItem item;
        ASSERT_TRUE(item.LoadFromFileRelative(&picture));
        ASSERT_FALSE(item.relativeName.empty());
        copy = item.bitmap;
    }
    EXPECT_EQ(imaging::kernel::LiveStorageCount(), before + 1) << "deliberately still held";
    EXPECT_EQ(imaging::FreeBitmap(&copy), imaging::kSuccess) << "the pixels are still live";
}

// ---- .thm files ---------------------------------------------------------------------

TEST_F(ThumbnailItemTest, WriteThmLayout) {
    const CFilePath picture(Picture("w.bmp", 170, 128));
    CThumbnailItem item;
    ASSERT_TRUE(item.LoadFromFile(&picture));
    item.relativeName = "rel\\w.bmp";
    const CFilePath thm(dir_.File("w.thm"));
    EXPECT_TRUE(item.WriteThm(&thm));

    const Bytes bytes = testpictures::ReadFile(thm.path);
    const size_t p = picture.path.size();
    ASSERT_GE(bytes.size(), 12 + p + 9 + 54);
    EXPECT_EQ(Word(bytes, 0), p);
    EXPECT_EQ(Text(bytes, 4, p), picture.path);
    EXPECT_EQ(Word(bytes, 4 + p), 9u);
    EXPECT_EQ(Text(bytes, 8 + p, 9), "rel\\w.bmp");
    const uint32_t imageSize = Word(bytes, 17 + p);
    EXPECT_EQ(bytes.size(), 21 + p + imageSize) << "the image ends the file";
    // A 24-bit BMP of 85 x 64: rows of 256 bytes.
    const size_t image = 21 + p;
    EXPECT_EQ(Text(bytes, image, 2), "BM");
    EXPECT_EQ(Word(bytes, image + 18), 85u);
    EXPECT_EQ(Word(bytes, image + 22), 64u);
    EXPECT_EQ(bytes[image + 28], 24);
    EXPECT_EQ(imageSize, 54u + 256u * 64u);
}

TEST_F(ThumbnailItemTest, ThmRoundTrip) {
    const CFilePath picture(Picture("t.bmp", 200, 100));
    CThumbnailItem written;
    ASSERT_TRUE(written.LoadFromFile(&picture));
    const CFilePath thm(dir_.File("t.thm"));
    ASSERT_TRUE(written.WriteThm(&thm));

    CThumbnailItem read;
    EXPECT_TRUE(read.ReadThm(&thm));
    EXPECT_EQ(read.filePath.path, picture.path);
    EXPECT_EQ(read.relativeName, "");
    ASSERT_EQ(read.bitmap.width, 85);
    ASSERT_EQ(read.bitmap.height, 42);
    EXPECT_EQ(read.bitmap.bitsPerPixel, 24);
    for (int32_t y = 0; y < 42; ++y) {
        const auto* a = static_cast<const uint8_t*>(written.bitmap.storage) + y * written.bitmap.bytesPerLine;
        const auto* b = static_cast<const uint8_t*>(read.bitmap.storage) + y * read.bitmap.bytesPerLine;
        ASSERT_EQ(std::memcmp(a, b, 85 * 3), 0) << "row " << y;
    }
    // Writing what was read gives the same file.
    const CFilePath again(dir_.File("again.thm"));
    read.WriteThm(&again);
    EXPECT_EQ(testpictures::ReadFile(again.path), testpictures::ReadFile(thm.path));
}

TEST_F(ThumbnailItemTest, AnEightByteFileFailsAtTheImageSizeWithBothTextsEmptied) {
    const CFilePath thm(testpictures::WriteFile(dir_.File("eight.thm"), Bytes(8, 0)));
    CThumbnailItem item;
    item.filePath = CFilePath("c:\\old.bmp");
    item.relativeName = "old";
    EXPECT_FALSE(item.ReadThm(&thm));
    EXPECT_EQ(item.filePath.path, "");
    EXPECT_EQ(item.relativeName, "");
    EXPECT_EQ(item.bitmap.storage, nullptr);
}

TEST_F(ThumbnailItemTest, AJpegImageLoads) {
    const Bytes jpeg = testpictures::Jpeg(40, 30);
    ASSERT_FALSE(jpeg.empty());
    const CFilePath thm(testpictures::WriteFile(
        dir_.File("jpeg.thm"), thumbnails::EncodeThm("c:\\a.jpg", "", jpeg.data(), jpeg.size())));
    CThumbnailItem item;
    EXPECT_TRUE(item.ReadThm(&thm));
    EXPECT_EQ(item.filePath.path, "c:\\a.jpg");
    EXPECT_EQ(item.bitmap.width, 40) << "a .thm image keeps its size when read";
    EXPECT_EQ(item.bitmap.height, 30);
    EXPECT_EQ(item.bitmap.bitsPerPixel, 24);
}

TEST_F(ThumbnailItemTest, ShortFilesFailWithTheFieldsReadSoFar) {
    const Bytes bmp = testpictures::Bmp24(3, 2);
    const Bytes whole = thumbnails::EncodeThm("c:\\p.bmp", "n", bmp.data(), bmp.size());
    for (size_t size = 0; size < whole.size(); ++size) {
        const CFilePath thm(testpictures::WriteFile(
            dir_.File("short.thm"), Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))));
        CThumbnailItem item;
        item.filePath = CFilePath("before");
        item.relativeName = "before";
        EXPECT_FALSE(item.ReadThm(&thm)) << size;
        EXPECT_EQ(item.filePath.path, size >= 12 ? "c:\\p.bmp" : "before") << size;
        EXPECT_EQ(item.relativeName, size >= 17 ? "n" : "before") << size;
        EXPECT_EQ(item.bitmap.storage, nullptr);
    }
    const CFilePath thm(testpictures::WriteFile(dir_.File("whole.thm"), whole));
    CThumbnailItem item;
    EXPECT_TRUE(item.ReadThm(&thm));
}

TEST_F(ThumbnailItemTest, AnImageTheImagingLayerCannotReadFails) {
    const Bytes junk = {'n', 'o', 't', ' ', 'a', 'n', ' ', 'i', 'm', 'a', 'g', 'e'};
    const CFilePath thm(testpictures::WriteFile(
        dir_.File("junk.thm"), thumbnails::EncodeThm("c:\\j", "", junk.data(), junk.size())));
    CThumbnailItem item;
    EXPECT_FALSE(item.ReadThm(&thm));
    EXPECT_EQ(item.filePath.path, "c:\\j");
    const CFilePath empty(
        testpictures::WriteFile(dir_.File("empty-image.thm"), thumbnails::EncodeThm("", "", nullptr, 0)));
    EXPECT_FALSE(item.ReadThm(&empty));
}

TEST_F(ThumbnailItemTest, AnEmptyBitmapIsWrittenAsAnEmptyImage) {
    CThumbnailItem item;
    item.filePath = CFilePath("c:\\nothing.bmp");
    const CFilePath thm(dir_.File("nothing.thm"));
    EXPECT_TRUE(item.WriteThm(&thm));
    EXPECT_EQ(testpictures::ReadFile(thm.path), thumbnails::EncodeThm("c:\\nothing.bmp", "", nullptr, 0));
    CThumbnailItem read;
    EXPECT_FALSE(read.ReadThm(&thm));
    EXPECT_EQ(read.filePath.path, "c:\\nothing.bmp");
}

TEST_F(ThumbnailItemTest, WriteThmTruncatesAnOlderFile) {
    const CFilePath thm(testpictures::WriteFile(dir_.File("old.thm"), Bytes(5000, 0x77)));
    CThumbnailItem item;
    EXPECT_TRUE(item.WriteThm(&thm));
    EXPECT_EQ(testpictures::ReadFile(thm.path).size(), 12u);
}

TEST_F(ThumbnailItemTest, FilesThatCannotBeOpenedThrow) {
    CThumbnailItem item;
    const CFilePath missing(dir_.File("missing.thm"));
    try {
        item.ReadThm(&missing);
        ADD_FAILURE() << "no exception";
    } catch (const FileError& error) {
        EXPECT_EQ(error.Cause(), thumbnails::kCauseFileNotFound);
        EXPECT_EQ(error.Path(), missing.path);
    }
    const CFilePath noDirectory(dir_.File("no\\such\\dir\\x.thm"));
    try {
        item.WriteThm(&noDirectory);
        ADD_FAILURE() << "no exception";
    } catch (const FileError& error) {
        EXPECT_EQ(error.Cause(), thumbnails::kCauseBadPath);
    }
    EXPECT_THROW(item.ReadThm(nullptr), FileError);
    EXPECT_THROW(item.WriteThm(nullptr), FileError);
    const CFilePath directory(dir_.Path().string());
    EXPECT_THROW(item.ReadThm(&directory), framework::FileException);
}

TEST_F(ThumbnailItemTest, AFileLockedForWritingCanStillBeRead) {
    const Bytes bmp = testpictures::Bmp24(3, 2);
    const std::string path = testpictures::WriteFile(
        dir_.File("shared.thm"), thumbnails::EncodeThm("c:\\s.bmp", "", bmp.data(), bmp.size()));
    framework::win32::UniqueFile reader(
        ::CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(reader);
    CThumbnailItem item;
    const CFilePath thm(path);
    EXPECT_TRUE(item.ReadThm(&thm)) << "readers share with readers";
    EXPECT_THROW(item.WriteThm(&thm), FileError) << "but no one writes while a reader denies it";
}
