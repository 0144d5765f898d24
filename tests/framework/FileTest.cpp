#include "framework/File.h"

#include <gtest/gtest.h>

#include "support/TempDir.h"

using framework::File;
using framework::FileException;

TEST(File, ReadsAndSeeks) {
    testsupport::TempDir dir;
    File file;
    std::string error;
    ASSERT_TRUE(file.OpenForReading(dir.Write("f.bin", {1, 2, 3, 4, 5}), error));
    EXPECT_EQ(file.Length(), 5);
    file.SeekFromStart(3);
    uint8_t buffer[8] = {};
    EXPECT_EQ(file.Read(buffer, 8), 2u) << "a read past the end is short, not a failure";
    EXPECT_EQ(buffer[0], 4);
    EXPECT_EQ(file.Position(), 5);
}

TEST(File, SeekBeyondTheEndIsAllowedAndReadsNothing) {
    testsupport::TempDir dir;
    File file;
    std::string error;
    ASSERT_TRUE(file.OpenForReading(dir.Write("f.bin", {1, 2}), error));
    file.SeekFromStart(1000);
    uint8_t b = 0;
    EXPECT_EQ(file.Read(&b, 1), 0u);
}

TEST(File, NegativeSeekThrows) {
    testsupport::TempDir dir;
    File file;
    std::string error;
    ASSERT_TRUE(file.OpenForReading(dir.Write("f.bin", {1}), error));
    EXPECT_THROW(file.SeekFromStart(-1), FileException);
}

TEST(File, MissingFileGivesTheSystemsText) {
    testsupport::TempDir dir;
    File file;
    std::string error;
    EXPECT_FALSE(file.OpenForReading(dir.File("absent.bin"), error));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_NE(error.find("absent.bin"), std::string::npos);
    EXPECT_GT(error.size(), dir.File("absent.bin").size() + 1);
}

TEST(File, DirectoryDoesNotOpenAsAFile) {
    testsupport::TempDir dir;
    File file;
    std::string error;
    EXPECT_FALSE(file.OpenForReading(dir.Path().string(), error));
}

TEST(File, ClosedFileThrowsOnUse) {
    File file;
    uint8_t b;
    EXPECT_THROW(file.Read(&b, 1), FileException);
    EXPECT_THROW(file.SeekFromStart(0), FileException);
}

TEST(File, MovesItsHandle) {
    testsupport::TempDir dir;
    File file;
    std::string error;
    ASSERT_TRUE(file.OpenForReading(dir.Write("f.bin", {9}), error));
    File other = std::move(file);
    EXPECT_FALSE(file.IsOpen());
    ASSERT_TRUE(other.IsOpen());
    uint8_t b = 0;
    EXPECT_EQ(other.Read(&b, 1), 1u);
    EXPECT_EQ(b, 9);
}
