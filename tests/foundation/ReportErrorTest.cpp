#include "foundation/ReportError.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "framework/File.h"
#include "support/TempDir.h"

namespace {

static_assert(LUMBREL_TRACE_ON == 0, "these tests see the product's build, traces off");

// Collects every line handed to the sink while it lives. `lines` is declared
// before the handler so that it exists when the first line arrives.
class CapturedLines {
public:
    CapturedLines() : scope_([this](const std::string& line) { lines.push_back(line); }) {}
    std::vector<std::string> lines;

private:
    foundation::ScopedErrorLineHandler scope_;
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

std::string ReportedLine(const std::function<void()>& report) {
    CapturedLines captured;
    report();
    EXPECT_EQ(captured.lines.size(), 1u);
    return captured.lines.empty() ? std::string() : captured.lines.front();
}

}  // namespace

TEST(ReportErrorMessage, ComposesFileLineAndMessage) {
    EXPECT_EQ(ReportedLine([] { foundation::ReportErrorMessage("Disk full", "GraphicDlg", 397); }),
              "GraphicDlg, Line 397: Disk full");
}

TEST(ReportError, WithoutMessageKeepsTheTrailingBlank) {
    EXPECT_EQ(ReportedLine([] { foundation::ReportError("GraphicDlg", 397); }), "GraphicDlg, Line 397: ");
}

TEST(ReportError, NullFileReportsUnderTheReportingSourcesName) {
    EXPECT_EQ(ReportedLine([] { foundation::ReportError(nullptr, 12); }), "ReportError, Line 12: ");
}

TEST(ReportErrorMessage, NullMessageAndNullFile) {
    EXPECT_EQ(ReportedLine([] { foundation::ReportErrorMessage(nullptr, nullptr, 0); }),
              "ReportError, Line 0: ");
}

TEST(ReportErrorMessage, EmptyMessageIsLikeNoMessage) {
    EXPECT_EQ(ReportedLine([] { foundation::ReportErrorMessage("", "resstr", 53); }), "resstr, Line 53: ");
}

TEST(ReportErrorMessage, NegativeLineKeepsItsSign) {
    EXPECT_EQ(ReportedLine([] { foundation::ReportErrorMessage("m", "f", -3); }), "f, Line -3: m");
}

TEST(ReportErrorMessage, LineCarriesNoDateOrTime) {
    const std::string line = ReportedLine([] { foundation::ReportErrorMessage("m", "Stdobj", 223); });
    EXPECT_EQ(line, "Stdobj, Line 223: m");
    EXPECT_EQ(line.find('/'), std::string::npos);
}

TEST(ReportErrorNumber, FormatsTheNumber) {
    EXPECT_EQ(ReportedLine([] { foundation::ReportErrorNumber("GraphicDlg", 10, 42); }),
              "GraphicDlg, Line 10: Error number = 42");
    EXPECT_EQ(ReportedLine([] { foundation::ReportErrorNumber("GraphicDlg", 10, -5); }),
              "GraphicDlg, Line 10: Error number = -5");
}

TEST(ReportErrorNumber, NumbersOfAnySizeStayInsideTheBuffer) {
    for (long number : {LONG_MIN, LONG_MAX, 0L}) {
        const std::string line = ReportedLine([number] { foundation::ReportErrorNumber("f", 1, number); });
        EXPECT_EQ(line, "f, Line 1: Error number = " + std::to_string(number));
        EXPECT_LT(line.size() - std::strlen("f, Line 1: "), 256u);
    }
}

TEST(ReportErrorWide, ConvertsTheMessage) {
    EXPECT_EQ(ReportedLine([] { foundation::ReportErrorWide(L"Wide text", "ArtContainer", 7); }),
              "ArtContainer, Line 7: Wide text");
}

TEST(ReportErrorWide, NullMessageReportsWithoutMessage) {
    EXPECT_EQ(ReportedLine([] { foundation::ReportErrorWide(nullptr, "f", 2); }), "f, Line 2: ");
    EXPECT_EQ(ReportedLine([] { foundation::ReportErrorWide(nullptr, nullptr, 2); }),
              "ReportError, Line 2: ");
}

TEST(ReportErrorWide, EmptyMessage) {
    EXPECT_EQ(ReportedLine([] { foundation::ReportErrorWide(L"", "f", 3); }), "f, Line 3: ");
}

TEST(ReportUnexpectedException, ReportsTheCatchAllText) {
    EXPECT_EQ(ReportedLine([] { foundation::ReportUnexpectedException("Bitmap", 88); }),
              "Bitmap, Line 88: Unexpected exception!");
}

TEST(ReportException, FileExceptionReportsItsOwnText) {
    const framework::FileException error("Access denied");
    EXPECT_EQ(ReportedLine([&] { foundation::ReportException(error, "ArtContainer", 5); }),
              "ArtContainer, Line 5: Access denied");
}

TEST(ReportException, MemoryExceptionReportsItsOwnText) {
    const std::bad_alloc error;
    EXPECT_EQ(ReportedLine([&] { foundation::ReportException(error, "ArtContainer", 6); }),
              std::string("ArtContainer, Line 6: ") + error.what());
}

TEST(ReportException, ExceptionWithoutTextReportsNoMessage) {
    const std::runtime_error error("");
    EXPECT_EQ(ReportedLine([&] { foundation::ReportException(error, "f", 4); }), "f, Line 4: ");
}

TEST(ReportingTexts, AreTheSystemsOwn) {
    EXPECT_STREQ(foundation::kUnexpectedExceptionText, "Unexpected exception!");
    EXPECT_STREQ(foundation::kExceptionText, "Exception");
    EXPECT_STREQ(foundation::kStringLoadMemoryText, "Memory error loading string.");
    EXPECT_EQ(foundation::StringLoadFailureText(6049), "Failed to load string resource, number = 6049");
    EXPECT_EQ(foundation::StringLoadFailureText(LONG_MIN),
              "Failed to load string resource, number = " + std::to_string(LONG_MIN));
}

TEST(ReportError, ASinkThatThrowsDoesNotEscape) {
    static_assert(noexcept(foundation::ReportError(nullptr, 0)));
    static_assert(noexcept(foundation::ReportErrorNumber(nullptr, 0, 0)));
    static_assert(noexcept(foundation::ReportErrorMessage(nullptr, nullptr, 0)));
    static_assert(noexcept(foundation::ReportErrorWide(nullptr, nullptr, 0)));
    int calls = 0;
    foundation::ScopedErrorLineHandler throwing([&calls](const std::string&) {
        ++calls;
        throw std::runtime_error("sink failed");
    });
    EXPECT_NO_THROW(foundation::ReportError("f", 1));
    EXPECT_NO_THROW(foundation::ReportErrorNumber("f", 1, 2));
    EXPECT_NO_THROW(foundation::ReportErrorMessage("m", "f", 1));
    EXPECT_NO_THROW(foundation::ReportErrorWide(L"m", "f", 1));
    EXPECT_NO_THROW(foundation::WriteErrorLine("line"));
    EXPECT_EQ(calls, 5);
}

TEST(ReportError, ASinkThatThrowsAnIntDoesNotEscape) {
    foundation::ScopedErrorLineHandler throwing([](const std::string&) { throw 17; });
    EXPECT_NO_THROW(foundation::ReportErrorMessage("m", "f", 1));
}

namespace {

// A careful function in the shape the system uses: a thrown line number or
// anything else ends it with -1; a report on the way is not a failure.
long catchAllLine = 0;
int CarefulDivide(int numerator, int denominator, bool unexpected) {
    int result = 0;
    try {
        if (unexpected) throw std::runtime_error("unexpected");
        if (denominator == 0) THROW_LINE();
        result = numerator / denominator;
        if (result > 100) REPORT_ERROR_MESSAGE("large quotient");
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
        result = -1;
    } catch (...) {
        const long line = __LINE__;
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, line);
        catchAllLine = line;
        result = -1;
    }
    return result;
}

}  // namespace

TEST(ReportError, NeverChangesWhatTheCallerReturns) {
    {
        CapturedLines captured;
        EXPECT_EQ(CarefulDivide(1000, 2, false), 500) << "the report is not the failure";
        EXPECT_EQ(captured.lines.size(), 1u);
        EXPECT_EQ(CarefulDivide(1, 0, false), -1);
        EXPECT_EQ(captured.lines.size(), 1u) << "a thrown line is traced, not reported";
        EXPECT_EQ(CarefulDivide(1, 1, true), -1);
        ASSERT_EQ(captured.lines.size(), 2u);
        EXPECT_GT(catchAllLine, 0);
        EXPECT_EQ(captured.lines[1],
                  "ReportErrorTest, Line " + std::to_string(catchAllLine) + ": Unexpected exception!");
    }
    foundation::ScopedErrorLineHandler throwing([](const std::string&) { throw std::bad_alloc(); });
    EXPECT_EQ(CarefulDivide(1000, 2, false), 500);
    EXPECT_EQ(CarefulDivide(1, 1, true), -1);
    EXPECT_EQ(CarefulDivide(9, 3, false), 3);
}

namespace {
constexpr int kThrowHereLine = __LINE__ + 2;
[[noreturn]] void ThrowHere() {
    THROW_LINE();
}
}  // namespace

TEST(ThrowLine, ThrowsTheSourceLineAsAPlainInt) {
    try {
        ThrowHere();
        FAIL() << "nothing thrown";
    } catch (int line) {
        EXPECT_EQ(line, kThrowHereLine);
    }
}

TEST(ThrowFailure, ThrowsTheIntOne) {
    try {
        THROW_FAILURE();
    } catch (int value) {
        EXPECT_EQ(value, 1);
        return;
    }
    FAIL() << "nothing thrown";
}

TEST(SourceName, IsTheFileNameWithoutDirectoryOrExtension) {
    using foundation::detail::MakeSourceName;
    EXPECT_STREQ(MakeSourceName("c:\\src\\browser\\GraphicDlg.cpp").text, "GraphicDlg");
    EXPECT_STREQ(MakeSourceName("/work/foundation/resstr.cpp").text, "resstr");
    EXPECT_STREQ(MakeSourceName("Stdobj").text, "Stdobj");
    EXPECT_STREQ(MakeSourceName("a/b.c.cpp").text, "b.c");
    EXPECT_STREQ(MakeSourceName("dir.d/file").text, "file");
    EXPECT_STREQ(MakeSourceName("").text, "");
    EXPECT_STREQ(LUMBREL_SOURCE_NAME, "ReportErrorTest");
}

TEST(ReportMacros, FillInTheCallingSourceAndLine) {
    CapturedLines captured;
    const long line = __LINE__ + 1;
    REPORT_ERROR();
    REPORT_ERROR_NUMBER(5);
    REPORT_ERROR_MESSAGE("gone");
    const std::string prefix = "ReportErrorTest, Line ";
    ASSERT_EQ(captured.lines.size(), 3u);
    EXPECT_EQ(captured.lines[0], prefix + std::to_string(line) + ": ");
    EXPECT_EQ(captured.lines[1], prefix + std::to_string(line + 1) + ": Error number = 5");
    EXPECT_EQ(captured.lines[2], prefix + std::to_string(line + 2) + ": gone");
}

TEST(Trace, ArgumentsAreNotEvaluatedWhenOff) {
    int evaluated = 0;
    int traced = 0;
    const foundation::TraceHandler previous =
        foundation::SetTraceHandler([&traced](const std::string&) { ++traced; });
    auto file = [&evaluated] {
        ++evaluated;
        return "f";
    };
    LUMBREL_TRACE("%d", ++evaluated);
    LUMBREL_TRACE_REPORT_FAILURE(file(), ++evaluated);
    LUMBREL_TRACE_WIDE_FAILURE(file(), ++evaluated);
    LUMBREL_TRACE_THROWN_LINE(file(), ++evaluated);
    LUMBREL_TRACE_INVALID_ARGUMENTS(file(), ++evaluated);
    foundation::SetTraceHandler(previous);
    EXPECT_EQ(evaluated, 0);
    EXPECT_EQ(traced, 0);
}

TEST(ErrorLogPath, DefaultsToTheSystemsLogFile) {
    EXPECT_STREQ(foundation::kDefaultErrorLogPath, "c:\\QUORL_ERRORS.txt");
    EXPECT_EQ(foundation::errorLogPath, "c:\\QUORL_ERRORS.txt");
}

TEST(SetErrorLogPath, ReplacesThePath) {
    ErrorLogPathGuard guard;
    EXPECT_TRUE(foundation::SetErrorLogPath("d:\\logs\\errors.txt"));
    EXPECT_EQ(foundation::errorLogPath, "d:\\logs\\errors.txt");
    EXPECT_TRUE(foundation::SetErrorLogPath(""));
    EXPECT_EQ(foundation::errorLogPath, "");
}

TEST(SetErrorLogPath, NullFailsAndKeepsTheOldPath) {
    ErrorLogPathGuard guard;
    ASSERT_TRUE(foundation::SetErrorLogPath("d:\\kept.txt"));
    EXPECT_FALSE(foundation::SetErrorLogPath(nullptr));
    EXPECT_EQ(foundation::errorLogPath, "d:\\kept.txt");
}

TEST(WriteErrorLine, DefaultSinkWritesNothingWhenSwitchedOff) {
    ASSERT_FALSE(foundation::IsErrorLogSwitchedOn());
    testsupport::TempDir dir;
    ErrorLogPathGuard guard;
    ASSERT_TRUE(foundation::SetErrorLogPath(dir.File("errors.txt").c_str()));
    foundation::ReportErrorMessage("m", "f", 1);
    foundation::ReportErrorNumber("f", 1, 2);
    foundation::WriteErrorLine("line");
    EXPECT_FALSE(std::filesystem::exists(dir.File("errors.txt")));
}

TEST(WriteErrorLine, HandsTheLineToTheHandler) {
    CapturedLines captured;
    foundation::WriteErrorLine("as it is");
    foundation::WriteErrorLine(nullptr);
    ASSERT_EQ(captured.lines.size(), 1u) << "a null line is not a line";
    EXPECT_EQ(captured.lines[0], "as it is");
}

TEST(SetErrorLineHandler, EmptyHandlerRestoresTheDefault) {
    int calls = 0;
    foundation::SetErrorLineHandler([&calls](const std::string&) { ++calls; });
    foundation::ReportError("f", 1);
    const foundation::ErrorLineHandler replaced = foundation::SetErrorLineHandler(nullptr);
    foundation::ReportError("f", 2);
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(static_cast<bool>(replaced));
}

TEST(AppendErrorLogLine, AppendsTheLineAndCrLf) {
    testsupport::TempDir dir;
    const std::string path = dir.File("log.txt");
    EXPECT_TRUE(foundation::AppendErrorLogLine(path, "GraphicDlg, Line 397: "));
    EXPECT_TRUE(foundation::AppendErrorLogLine(path, "resstr, Line 53: x"));
    EXPECT_EQ(ReadAll(path), "GraphicDlg, Line 397: \r\nresstr, Line 53: x\r\n");
}

TEST(AppendErrorLogLine, FailsQuietlyWhenTheFileCannotBeOpened) {
    testsupport::TempDir dir;
    EXPECT_FALSE(foundation::AppendErrorLogLine(dir.File("missing-dir/log.txt"), "line"));
    EXPECT_FALSE(foundation::AppendErrorLogLine(dir.Path().string(), "line")) << "a directory";
}

#ifndef _WIN32
TEST(ErrorLogSwitch, IsOffWithoutARegistry) {
    foundation::ForgetErrorLogSwitch();
    EXPECT_FALSE(foundation::IsErrorLogSwitchedOn());
}
#endif
