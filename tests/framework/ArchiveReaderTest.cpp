#include "framework/ArchiveReader.h"

#include <gtest/gtest.h>

#include "support/TempDir.h"

using framework::ArchiveException;
using framework::ArchiveReader;
using framework::File;

namespace {

class ArchiveReaderTest : public ::testing::Test {
protected:
    File& OpenWith(const std::vector<uint8_t>& bytes) {
        std::string error;
        EXPECT_TRUE(file.OpenForReading(dir.Write("archive.bin", bytes), error)) << error;
        return file;
    }
    testsupport::TempDir dir;
    File file;
};

}  // namespace

TEST_F(ArchiveReaderTest, IntegersAreLittleEndian) {
    ArchiveReader archive(OpenWith({0x01, 0x34, 0x12, 0x78, 0x56, 0x34, 0x12}), 128);
    EXPECT_EQ(archive.ReadByte(), 0x01);
    EXPECT_EQ(archive.ReadWord(), 0x1234);
    EXPECT_EQ(archive.ReadDword(), 0x12345678u);
}

TEST_F(ArchiveReaderTest, CountsInShortAndLongForm) {
    ArchiveReader archive(OpenWith({0xFE, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x01, 0x00}), 128);
    EXPECT_EQ(archive.ReadCount(), 0xFFFEu);
    EXPECT_EQ(archive.ReadCount(), 0x10000u);
}

TEST_F(ArchiveReaderTest, TextsWithEveryLengthPrefix) {
    std::vector<uint8_t> bytes = {3, 'a', 'b', 'c', 0xFF, 0x00, 0x01};
    bytes.insert(bytes.end(), 256, 'm');
    bytes.insert(bytes.end(), {0xFF, 0xFF, 0xFF, 0x02, 0x00, 0x00, 0x00, 'h', 'i'});
    bytes.insert(bytes.end(), {0});
    ArchiveReader archive(OpenWith(bytes), 128);
    EXPECT_EQ(archive.ReadString(), "abc");
    EXPECT_EQ(archive.ReadString(), std::string(256, 'm'));
    EXPECT_EQ(archive.ReadString(), "hi") << "a long prefix may also carry a short length";
    EXPECT_EQ(archive.ReadString(), "");
}

TEST_F(ArchiveReaderTest, WideTextsBecomeAnsi) {
    ArchiveReader archive(OpenWith({0xFF, 0xFE, 0xFF, 3, 'O', 0, 0xAC, 0x20, 0x3A, 0x04,  //
                                    0xFF, 0xFE, 0xFF, 0xFF, 0x01, 0x00, 'x', 0}),
                          128);
    EXPECT_EQ(archive.ReadString(), "O\x80?");
    EXPECT_EQ(archive.ReadString(), "x") << "the wide length may itself take the word form";
}

TEST_F(ArchiveReaderTest, RunningOutOfBytesThrows) {
    ArchiveReader archive(OpenWith({5, 'a', 'b'}), 128);
    EXPECT_THROW(archive.ReadString(), ArchiveException);
}

TEST_F(ArchiveReaderTest, LengthBeyondTheFileThrowsBeforeAllocating) {
    ArchiveReader archive(OpenWith({0xFF, 0xFF, 0xFF, 0xF0, 0xFF, 0xFF, 0xFF, 'a'}), 0x7FFFFFFF);
    EXPECT_THROW(archive.ReadString(), ArchiveException);
}

TEST_F(ArchiveReaderTest, SmallBuffersReadAcrossRefills) {
    std::vector<uint8_t> bytes;
    for (int i = 0; i < 100; ++i) {
        bytes.push_back(7);
        const char* word = "seventy";
        bytes.insert(bytes.end(), word, word + 7);
    }
    ArchiveReader archive(OpenWith(bytes), 1);
    for (int i = 0; i < 100; ++i) ASSERT_EQ(archive.ReadString(), "seventy");
    EXPECT_THROW(archive.ReadByte(), ArchiveException);
}

TEST(Utf16UnitToAnsi, WesternCodePage) {
    EXPECT_EQ(framework::Utf16UnitToAnsi('A'), 'A');
    EXPECT_EQ(framework::Utf16UnitToAnsi(0xE9), '\xe9');
    EXPECT_EQ(framework::Utf16UnitToAnsi(0x20AC), '\x80');
    EXPECT_EQ(framework::Utf16UnitToAnsi(0x2122), '\x99');
    EXPECT_EQ(framework::Utf16UnitToAnsi(0x81), '?') << "a C1 control has no 8-bit form here";
    EXPECT_EQ(framework::Utf16UnitToAnsi(0x4E2D), '?');
}
