#include <windows.h>

#include <gtest/gtest.h>

#include <cwchar>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "foundation/ReportError.h"
#include "support/TempDir.h"

namespace {

constexpr char kSoftwareKey[] = "Software\\Lumbrel";
constexpr char kDiagnosticsKey[] = "Software\\Lumbrel\\Diagnostics";
constexpr char kValue[] = "LogErrors";

bool KeyExists(const char* name) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, name, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

void SetLogErrors(DWORD type, const void* data, DWORD size) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, kDiagnosticsKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key,
                              nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExA(key, kValue, 0, type, static_cast<const BYTE*>(data), size), ERROR_SUCCESS);
    RegCloseKey(key);
}

void SetLogErrors(DWORD value) {
    SetLogErrors(REG_DWORD, &value, sizeof value);
}

void DeleteLogErrors() {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, kDiagnosticsKey, 0, KEY_SET_VALUE, &key) != ERROR_SUCCESS) return;
    RegDeleteValueA(key, kValue);
    RegCloseKey(key);
}

// Puts the diagnostics switch back as the test found it, the keys included,
// and makes the next line read it again.
class LogErrorsGuard {
public:
    LogErrorsGuard()
        : softwareExisted_(KeyExists(kSoftwareKey)), diagnosticsExisted_(KeyExists(kDiagnosticsKey)) {
        HKEY key = nullptr;
        if (RegOpenKeyExA(HKEY_CURRENT_USER, kDiagnosticsKey, 0, KEY_QUERY_VALUE, &key) == ERROR_SUCCESS) {
            DWORD size = sizeof data_;
            valueExisted_ = RegQueryValueExA(key, kValue, nullptr, &type_, data_, &size) == ERROR_SUCCESS;
            size_ = size;
            RegCloseKey(key);
        }
        foundation::ForgetErrorLogSwitch();
    }
    ~LogErrorsGuard() {
        if (valueExisted_)
            SetLogErrors(type_, data_, size_);
        else
            DeleteLogErrors();
        if (!diagnosticsExisted_) RegDeleteKeyA(HKEY_CURRENT_USER, kDiagnosticsKey);
        if (!softwareExisted_) RegDeleteKeyA(HKEY_CURRENT_USER, kSoftwareKey);
        foundation::ForgetErrorLogSwitch();
    }
    LogErrorsGuard(const LogErrorsGuard&) = delete;
    LogErrorsGuard& operator=(const LogErrorsGuard&) = delete;

private:
    bool softwareExisted_;
    bool diagnosticsExisted_;
    bool valueExisted_ = false;
    DWORD type_ = 0;
    BYTE data_[256] = {};
    DWORD size_ = 0;
};

class ErrorLogPathGuard {
public:
    ~ErrorLogPathGuard() { foundation::errorLogPath = saved_; }

private:
    std::string saved_ = foundation::errorLogPath;
};

std::string ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool FileExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace

TEST(ErrorLogSwitch, OnAppendsEachComposedLineToTheLogPath) {
    LogErrorsGuard registry;
    ErrorLogPathGuard logPath;
    testsupport::TempDir dir;
    const std::string log = dir.File("QUORL_ERRORS.txt");
    ASSERT_TRUE(foundation::SetErrorLogPath(log.c_str()));
    SetLogErrors(1);
    foundation::ReportError("GraphicDlg", 397);
    foundation::ReportErrorNumber("Bitmap", 12, -7);
    foundation::ReportErrorMessage("Failed to load string resource, number = 6049", "resstr", 53);
    EXPECT_TRUE(foundation::IsErrorLogSwitchedOn());
    EXPECT_EQ(ReadAll(log),
              "GraphicDlg, Line 397: \r\n"
              "Bitmap, Line 12: Error number = -7\r\n"
              "resstr, Line 53: Failed to load string resource, number = 6049\r\n");
}

TEST(ErrorLogSwitch, ZeroWritesNothing) {
    LogErrorsGuard registry;
    ErrorLogPathGuard logPath;
    testsupport::TempDir dir;
    ASSERT_TRUE(foundation::SetErrorLogPath(dir.File("log.txt").c_str()));
    SetLogErrors(0);
    foundation::ReportError("f", 1);
    EXPECT_FALSE(foundation::IsErrorLogSwitchedOn());
    EXPECT_FALSE(FileExists(dir.File("log.txt")));
}

TEST(ErrorLogSwitch, MissingValueIsOff) {
    LogErrorsGuard registry;
    ErrorLogPathGuard logPath;
    testsupport::TempDir dir;
    ASSERT_TRUE(foundation::SetErrorLogPath(dir.File("log.txt").c_str()));
    DeleteLogErrors();
    foundation::ReportError("f", 1);
    EXPECT_FALSE(foundation::IsErrorLogSwitchedOn());
    EXPECT_FALSE(FileExists(dir.File("log.txt")));
}

TEST(ErrorLogSwitch, OnlyADwordOfOneSwitchesItOn) {
    LogErrorsGuard registry;
    SetLogErrors(2);
    EXPECT_FALSE(foundation::IsErrorLogSwitchedOn());
    foundation::ForgetErrorLogSwitch();
    SetLogErrors(REG_SZ, "1", 2);
    EXPECT_FALSE(foundation::IsErrorLogSwitchedOn());
    foundation::ForgetErrorLogSwitch();
    SetLogErrors(1);
    EXPECT_TRUE(foundation::IsErrorLogSwitchedOn());
}

TEST(ErrorLogSwitch, IsReadOnceUntilForgotten) {
    LogErrorsGuard registry;
    ErrorLogPathGuard logPath;
    testsupport::TempDir dir;
    const std::string log = dir.File("log.txt");
    ASSERT_TRUE(foundation::SetErrorLogPath(log.c_str()));
    SetLogErrors(1);
    foundation::ReportError("first", 1);
    SetLogErrors(0);
    foundation::ReportError("second", 2);
    EXPECT_EQ(ReadAll(log), "first, Line 1: \r\nsecond, Line 2: \r\n")
        << "the switch was read at the first line";
    foundation::ForgetErrorLogSwitch();
    foundation::ReportError("third", 3);
    EXPECT_EQ(ReadAll(log), "first, Line 1: \r\nsecond, Line 2: \r\n");
}

TEST(ErrorLogSwitch, IsNotReadWithoutALine) {
    LogErrorsGuard registry;
    std::vector<std::string> lines;
    foundation::ScopedErrorLineHandler capture([&lines](const std::string& line) { lines.push_back(line); });
    SetLogErrors(0);
    foundation::ReportError("f", 1);
    SetLogErrors(1);
    EXPECT_TRUE(foundation::IsErrorLogSwitchedOn()) << "a handler's line did not read the switch";
    EXPECT_EQ(lines.size(), 1u);
}

TEST(ErrorLogSwitch, AHandlerTakesThePlaceOfTheFile) {
    LogErrorsGuard registry;
    ErrorLogPathGuard logPath;
    testsupport::TempDir dir;
    ASSERT_TRUE(foundation::SetErrorLogPath(dir.File("log.txt").c_str()));
    SetLogErrors(1);
    std::vector<std::string> lines;
    {
        foundation::ScopedErrorLineHandler capture(
            [&lines](const std::string& line) { lines.push_back(line); });
        foundation::ReportError("f", 1);
    }
    EXPECT_EQ(lines, std::vector<std::string>{"f, Line 1: "});
    EXPECT_FALSE(FileExists(dir.File("log.txt")));
}

TEST(ErrorLogSwitch, AnUnwritableLogIsQuiet) {
    LogErrorsGuard registry;
    ErrorLogPathGuard logPath;
    testsupport::TempDir dir;
    ASSERT_TRUE(foundation::SetErrorLogPath(dir.File("missing\\log.txt").c_str()));
    SetLogErrors(1);
    EXPECT_NO_THROW(foundation::ReportErrorMessage("m", "f", 1));
    EXPECT_FALSE(FileExists(dir.File("missing")));
}

TEST(ReportErrorWide, ConvertsThroughTheAnsiCodePageInOneBytePerCharacter) {
    const wchar_t* message = L"caf\u00e9 \u4e2d";
    const int count = static_cast<int>(std::wcslen(message)) + 1;
    std::unique_ptr<char[]> expected(new char[count]());
    const int converted =
        WideCharToMultiByte(CP_ACP, 0, message, count, expected.get(), count, nullptr, nullptr);
    std::vector<std::string> lines;
    foundation::ScopedErrorLineHandler capture([&lines](const std::string& line) { lines.push_back(line); });
    foundation::ReportErrorWide(message, "f", 1);
    if (converted == 0) {
        EXPECT_TRUE(lines.empty()) << "a text that needs more bytes is not reported";
    } else {
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0], std::string("f, Line 1: ") + expected.get());
    }
}

TEST(LastErrorCode, IsTheThreadsLastError) {
    SetLastError(1234);
    EXPECT_EQ(foundation::LastErrorCode(), 1234);
}
