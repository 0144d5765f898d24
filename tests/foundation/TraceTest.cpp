// Built with the reporting functions and this file's traces switched on, to
// hold the trace formats to their exact texts.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "foundation/ReportError.h"

namespace {

static_assert(LUMBREL_TRACE_ON == 1, "this file tests the traces themselves");

class CapturedTraces {
public:
    CapturedTraces()
        : previous_(foundation::SetTraceHandler([this](const std::string& t) { texts.push_back(t); })) {}
    ~CapturedTraces() { foundation::SetTraceHandler(std::move(previous_)); }
    CapturedTraces(const CapturedTraces&) = delete;
    CapturedTraces& operator=(const CapturedTraces&) = delete;
    std::vector<std::string> texts;

private:
    foundation::TraceHandler previous_;
};

bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

// "<prefix><digits, maybe signed><suffix>"
bool HasNumberBetween(const std::string& text, const std::string& prefix, const std::string& suffix) {
    if (!StartsWith(text, prefix) || text.size() < prefix.size() + suffix.size() + 1) return false;
    if (text.compare(text.size() - suffix.size(), suffix.size(), suffix) != 0) return false;
    const std::string number = text.substr(prefix.size(), text.size() - prefix.size() - suffix.size());
    std::size_t i = number[0] == '-' ? 1 : 0;
    if (i == number.size()) return false;
    for (; i < number.size(); ++i)
        if (number[i] < '0' || number[i] > '9') return false;
    return true;
}

}  // namespace

TEST(Trace, ReportingFailureFormat) {
    CapturedTraces traces;
    LUMBREL_TRACE_REPORT_FAILURE("ReportError", 61);
    ASSERT_EQ(traces.texts.size(), 1u);
    EXPECT_EQ(traces.texts[0], "ERROR: File = ReportError, Line = 61\n");
}

TEST(Trace, InvalidArgumentsFormat) {
    CapturedTraces traces;
    LUMBREL_TRACE_INVALID_ARGUMENTS("Bitmap", 12);
    ASSERT_EQ(traces.texts.size(), 1u);
    EXPECT_EQ(traces.texts[0], "Invalid arguments file = Bitmap, line = 12\n");
}

TEST(Trace, ThrownLineFormatCarriesTheLastError) {
    CapturedTraces traces;
    LUMBREL_TRACE_THROWN_LINE("Bitmap", 140);
    ASSERT_EQ(traces.texts.size(), 1u);
    EXPECT_TRUE(HasNumberBetween(traces.texts[0], "Error in file = Bitmap, line = 140, last error = ", "\n"))
        << traces.texts[0];
}

TEST(Trace, WideFailureFormatPutsTheErrorAfterTheLineBreak) {
    CapturedTraces traces;
    LUMBREL_TRACE_WIDE_FAILURE("ReportError", 99);
    ASSERT_EQ(traces.texts.size(), 1u);
    EXPECT_TRUE(HasNumberBetween(traces.texts[0], "ERROR: File = ReportError, Line = 99\n, Error = ", ""))
        << traces.texts[0];
}

TEST(Trace, ArgumentsAreEvaluatedWhenOn) {
    CapturedTraces traces;
    int evaluated = 0;
    LUMBREL_TRACE("%d", ++evaluated);
    EXPECT_EQ(evaluated, 1);
    ASSERT_EQ(traces.texts.size(), 1u);
    EXPECT_EQ(traces.texts[0], "1");
}

TEST(Trace, AFailingSinkIsTracedByTheReportingFunction) {
    CapturedTraces traces;
    foundation::ScopedErrorLineHandler throwing([](const std::string&) { throw std::runtime_error("sink"); });
    foundation::ReportErrorMessage("m", "f", 1);
    ASSERT_EQ(traces.texts.size(), 1u);
    EXPECT_TRUE(HasNumberBetween(traces.texts[0], "ERROR: File = ReportError, Line = ", "\n"))
        << traces.texts[0];
}

TEST(Trace, AThrowingTraceHandlerDoesNotEscape) {
    const foundation::TraceHandler previous =
        foundation::SetTraceHandler([](const std::string&) { throw std::runtime_error("trace"); });
    EXPECT_NO_THROW(LUMBREL_TRACE_REPORT_FAILURE("f", 1));
    foundation::SetTraceHandler(previous);
}

TEST(Trace, ReportsStillComposeTheirLines) {
    std::vector<std::string> lines;
    foundation::ScopedErrorLineHandler capture([&lines](const std::string& line) { lines.push_back(line); });
    CapturedTraces traces;
    foundation::ReportErrorNumber("GraphicDlg", 397, 3);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], "GraphicDlg, Line 397: Error number = 3");
    EXPECT_TRUE(traces.texts.empty()) << "a report that succeeds traces nothing";
}
