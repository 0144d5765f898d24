#include <windows.h>

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "foundation/FilePath.h"
#include "foundation/SortStrings.h"
#include "support/TempDir.h"

using foundation::CFilePath;

namespace {

std::string WriteFile(const testsupport::TempDir& dir, const std::string& name, const std::string& bytes) {
    const std::string path = dir.File(name);
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

bool FileExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string SystemTempDirectory() {
    char directory[MAX_PATH + 1] = {};
    GetTempPathA(MAX_PATH, directory);
    return directory;
}

class CurrentDirectoryGuard {
public:
    CurrentDirectoryGuard() { GetCurrentDirectoryA(MAX_PATH, saved_); }
    ~CurrentDirectoryGuard() { SetCurrentDirectoryA(saved_); }
    CurrentDirectoryGuard(const CurrentDirectoryGuard&) = delete;
    CurrentDirectoryGuard& operator=(const CurrentDirectoryGuard&) = delete;

private:
    char saved_[MAX_PATH + 1] = {};
};

class EnvironmentGuard {
public:
    explicit EnvironmentGuard(const char* name) : name_(name) {
        char value[32767];
        const DWORD length = GetEnvironmentVariableA(name, value, sizeof value);
        existed_ = length > 0 && length < sizeof value;
        if (existed_) value_.assign(value, length);
    }
    ~EnvironmentGuard() { SetEnvironmentVariableA(name_.c_str(), existed_ ? value_.c_str() : nullptr); }
    EnvironmentGuard(const EnvironmentGuard&) = delete;
    EnvironmentGuard& operator=(const EnvironmentGuard&) = delete;

private:
    std::string name_;
    std::string value_;
    bool existed_ = false;
};

}  // namespace

// ---- IsNonEmptyFile and Exists ---------------------------------------------------

TEST(IsNonEmptyFile, TrueForAFileWithBytes) {
    testsupport::TempDir dir;
    EXPECT_TRUE(foundation::IsNonEmptyFile(WriteFile(dir, "one.bin", "x")));
}

TEST(IsNonEmptyFile, FalseForAFileOfZeroBytes) {
    testsupport::TempDir dir;
    EXPECT_FALSE(foundation::IsNonEmptyFile(WriteFile(dir, "empty.bin", "")));
}

TEST(IsNonEmptyFile, FalseForADirectory) {
    testsupport::TempDir dir;
    EXPECT_FALSE(foundation::IsNonEmptyFile(dir.Path().string()));
    EXPECT_FALSE(foundation::IsNonEmptyFile(dir.Path().string() + "\\"));
    EXPECT_FALSE(foundation::IsNonEmptyFile(foundation::GetWindowsDirectoryPath().path));
}

TEST(IsNonEmptyFile, FalseForADirectoryWithFurtherAttributes) {
    testsupport::TempDir dir;
    const std::string sub = dir.File("sub");
    ASSERT_TRUE(CreateDirectoryA(sub.c_str(), nullptr));
    WriteFile(dir, "sub\\inside.bin", "bytes");
    SetFileAttributesA(sub.c_str(), FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(foundation::IsNonEmptyFile(sub));
    SetFileAttributesA(sub.c_str(), FILE_ATTRIBUTE_DIRECTORY);
}

TEST(IsNonEmptyFile, TrueForAReadOnlyFile) {
    testsupport::TempDir dir;
    const std::string path = WriteFile(dir, "ro.bin", "abc");
    ASSERT_TRUE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(foundation::IsNonEmptyFile(path));
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(IsNonEmptyFile, FalseForWhatCannotBeExamined) {
    testsupport::TempDir dir;
    WriteFile(dir, "a.txt", "text");
    EXPECT_FALSE(foundation::IsNonEmptyFile(dir.File("missing.txt")));
    EXPECT_FALSE(foundation::IsNonEmptyFile(""));
    EXPECT_FALSE(foundation::IsNonEmptyFile(dir.File("*.txt"))) << "a pattern is not a file";
}

TEST(CFilePathExists, IsIsNonEmptyFile) {
    testsupport::TempDir dir;
    EXPECT_TRUE(CFilePath(WriteFile(dir, "a.bin", "a")).Exists());
    EXPECT_FALSE(CFilePath(WriteFile(dir, "b.bin", "")).Exists());
    EXPECT_FALSE(CFilePath(dir.File("c.bin")).Exists());
}

// ---- Directories of the process and of the system --------------------------------

TEST(GetCurrentDirectoryPath, IsTheProcessesCurrentDirectory) {
    testsupport::TempDir dir;
    CurrentDirectoryGuard guard;
    ASSERT_TRUE(SetCurrentDirectoryA(dir.Path().string().c_str()));
    char expected[MAX_PATH + 1] = {};
    ASSERT_NE(GetCurrentDirectoryA(MAX_PATH, expected), 0u);
    const CFilePath current = foundation::GetCurrentDirectoryPath();
    EXPECT_EQ(current.path, expected);
    EXPECT_EQ(foundation::CompareNoCase(current.path.c_str(), dir.Path().string().c_str()), 0);
}

TEST(GetWindowsDirectoryPath, IsTheSystemsWindowsDirectory) {
    char expected[MAX_PATH + 1] = {};
    ASSERT_NE(GetWindowsDirectoryA(expected, MAX_PATH), 0u);
    const CFilePath windows = foundation::GetWindowsDirectoryPath();
    EXPECT_EQ(windows.path, expected);
    EXPECT_FALSE(windows.IsRelative());
}

// ---- Temporary names --------------------------------------------------------------------

TEST(SetTempName, KeptNameIsANewEmptyFileInTheTemporaryDirectory) {
    CFilePath temp("previous");
    temp.SetTempName(true);
    const std::string directory = SystemTempDirectory();
    ASSERT_GT(temp.path.size(), directory.size());
    EXPECT_EQ(foundation::CompareNoCase(temp.path.c_str(), directory.c_str(), directory.size()), 0)
        << temp.path;
    const std::string name = temp.GetFileName();
    EXPECT_EQ(foundation::CompareNoCase(name.c_str(), "Lum", 3), 0) << name;
    EXPECT_EQ(foundation::CompareNoCase(temp.GetExtension().c_str(), "tmp"), 0) << name;
    EXPECT_TRUE(FileExists(temp.path));
    EXPECT_FALSE(temp.Exists()) << "the reserved file has no bytes";
    DeleteFileA(temp.path.c_str());
}

TEST(SetTempName, WithoutKeepTheFileIsDeletedAndTheNameIsFree) {
    CFilePath temp;
    temp.SetTempName(false);
    ASSERT_FALSE(temp.path.empty());
    EXPECT_FALSE(FileExists(temp.path));
}

TEST(SetTempName, EachNameIsNew) {
    CFilePath first;
    CFilePath second;
    first.SetTempName(true);
    second.SetTempName(true);
    EXPECT_NE(first.path, second.path);
    DeleteFileA(first.path.c_str());
    DeleteFileA(second.path.c_str());
}

TEST(SetTempName, WithoutAUsableTemporaryDirectoryThePathBecomesEmpty) {
    testsupport::TempDir dir;
    const std::string missing = dir.File("no-such-directory");
    EnvironmentGuard tmp("TMP");
    EnvironmentGuard temp("TEMP");
    ASSERT_TRUE(SetEnvironmentVariableA("TMP", missing.c_str()));
    ASSERT_TRUE(SetEnvironmentVariableA("TEMP", missing.c_str()));
    CFilePath path("previous");
    path.SetTempName(true);
    EXPECT_EQ(path.path, "");
}

TEST(MakeTempFilePath, IsANewPathWithSetTempNameRun) {
    const CFilePath kept = foundation::MakeTempFilePath(true);
    EXPECT_TRUE(FileExists(kept.path));
    DeleteFileA(kept.path.c_str());
    const CFilePath free = foundation::MakeTempFilePath(false);
    ASSERT_FALSE(free.path.empty());
    EXPECT_FALSE(FileExists(free.path));
}

// ---- Short and found names ----------------------------------------------------------------

TEST(GetShortPath, IsTheSystemsShortForm) {
    testsupport::TempDir dir;
    const std::string path = WriteFile(dir, "a rather long file name.jpeg", "bytes");
    char expected[MAX_PATH + 1] = {};
    ASSERT_NE(GetShortPathNameA(path.c_str(), expected, MAX_PATH), 0u);
    const CFilePath shortPath = CFilePath(path).GetShortPath();
    EXPECT_EQ(shortPath.path, expected);
    EXPECT_TRUE(shortPath.Exists()) << "names the same file";
}

TEST(GetShortPath, OfAMissingFileIsACopy) {
    testsupport::TempDir dir;
    const CFilePath missing(dir.File("missing file name.jpeg"));
    EXPECT_EQ(missing.GetShortPath().path, missing.path);
}

TEST(GetFoundName, IsTheNameAloneInItsCaseOnDisk) {
    testsupport::TempDir dir;
    WriteFile(dir, "Photo.JPG", "x");
    EXPECT_EQ(CFilePath(dir.File("photo.jpg")).GetFoundName().path, "Photo.JPG");
}

TEST(GetFoundName, FindsThroughWildcards) {
    testsupport::TempDir dir;
    WriteFile(dir, "Photo.JPG", "x");
    EXPECT_EQ(CFilePath(dir.File("*.jpg")).GetFoundName().path, "Photo.JPG");
}

TEST(GetFoundName, OfAMissingFileIsEmptyNotACopy) {
    testsupport::TempDir dir;
    EXPECT_EQ(CFilePath(dir.File("missing.jpg")).GetFoundName().path, "");
}

// ---- Network names (no network in the test session) -------------------------------------

TEST(ToUncPath, LocalDriveIsLeftAlone) {
    const std::string windows = foundation::GetWindowsDirectoryPath().path;
    ASSERT_GE(windows.size(), 2u);
    ASSERT_EQ(windows[1], ':');
    EXPECT_EQ(foundation::ToUncPath(windows + "\\a.txt"), windows + "\\a.txt");
}

TEST(ToUncPath, PathWithoutDriveIsLeftAlone) {
    EXPECT_EQ(foundation::ToUncPath(R"(\\srv\share\a)"), R"(\\srv\share\a)");
    EXPECT_EQ(foundation::ToUncPath("a"), "a");
}

TEST(ToDrivePath, NetworkNameWithoutAConnectedDriveIsLeftAlone) {
    EXPECT_EQ(foundation::ToDrivePath(R"(\\nosuchserver\share\a.qlt)"), R"(\\nosuchserver\share\a.qlt)");
}

TEST(ToDrivePath, PathWithADriveIsLeftAlone) {
    EXPECT_EQ(foundation::ToDrivePath(R"(c:\a.qlt)"), R"(c:\a.qlt)");
}
