// The system's own fault reports. They never reach the user and never change
// what a failing function returns: a report composes one line (source, line
// number, message) and hands it to the log sink, which writes nothing unless
// a field installation switches it on.
//
// Careful functions follow one convention: inside a try block each platform
// call is tested at once, and a failure throws the current source line as a
// plain int (THROW_LINE), or the int 1 where the line is of no use
// (THROW_FAILURE). The catch clauses, in this order:
//
//     catch (int line) { LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line); result = failure; }
//     catch (...) { ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__); result = failure; }
//
// Traces are printf-style and cost nothing unless the translation unit is
// built with LUMBREL_TRACE_ON=1: their arguments are then not evaluated.
#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <string>
#include <utility>

namespace foundation {

// ---- The log -------------------------------------------------------------

inline constexpr char kDefaultErrorLogPath[] = "c:\\QUORL_ERRORS.txt";

// Where the file sink appends its lines. Built at load time with
// kDefaultErrorLogPath; not to be read by other static initialisers.
extern std::string errorLogPath;

// Replaces errorLogPath. False, with the old value kept, for a null path or
// when the assignment fails.
bool SetErrorLogPath(const char* path) noexcept;

// ---- Composing reports -----------------------------------------------------

// The name under which the reporting functions report for a caller that gave
// no file, and under which they trace their own failures.
inline constexpr char kReportingSourceName[] = "ReportError";

// Texts of the careful functions' last catch clauses and of the string table.
inline constexpr char kUnexpectedExceptionText[] = "Unexpected exception!";
inline constexpr char kExceptionText[] = "Exception";
inline constexpr char kStringLoadMemoryText[] = "Memory error loading string.";
// "Failed to load string resource, number = <id>".
std::string StringLoadFailureText(long id);

// ReportErrorMessage with no message.
void ReportError(const char* file, long line) noexcept;
// Reports "Error number = <number>".
void ReportErrorNumber(const char* file, long line, long number) noexcept;
// Composes "<file>, Line <line>: <message>" and hands it to WriteErrorLine.
// A null file reports under kReportingSourceName; a null message leaves the
// text after ": " empty, the blank kept.
void ReportErrorMessage(const char* message, const char* file, long line) noexcept;
// Converts the message to the ANSI code page, then as ReportErrorMessage. A
// message that does not convert is traced, not reported.
void ReportErrorWide(const wchar_t* message, const char* file, long line) noexcept;
// Reports kUnexpectedExceptionText: the body of every last catch-all.
void ReportUnexpectedException(const char* file, long line) noexcept;
// Reports an exception object with its own text as the message (no message
// when it has none): how a caught framework::FileException or
// std::bad_alloc is reported before the caller gives its failure value.
void ReportException(const std::exception& error, const char* file, long line) noexcept;

// ---- The sink ----------------------------------------------------------------

// Receives each composed line. By default a line goes to the file sink when
// the diagnostics switch is on, and nowhere otherwise. A handler replaces
// that, so tests (or a host that keeps its own log) see every line.
using ErrorLineHandler = std::function<void(const std::string& line)>;

// Installs `handler` (an empty one restores the default) and returns the one
// it replaces.
ErrorLineHandler SetErrorLineHandler(ErrorLineHandler handler);

// Installs a handler for the lifetime of the object, then puts back the old one.
class ScopedErrorLineHandler {
public:
    explicit ScopedErrorLineHandler(ErrorLineHandler handler)
        : previous_(SetErrorLineHandler(std::move(handler))) {}
    ~ScopedErrorLineHandler() { SetErrorLineHandler(std::move(previous_)); }
    ScopedErrorLineHandler(const ScopedErrorLineHandler&) = delete;
    ScopedErrorLineHandler& operator=(const ScopedErrorLineHandler&) = delete;

private:
    ErrorLineHandler previous_;
};

// The log sink. Lets nothing out.
void WriteErrorLine(const char* line) noexcept;

// Whether a field installation asked for the file sink. On Windows that is
// the DWORD value "LogErrors" = 1 under
// HKEY_CURRENT_USER\Software\Lumbrel\Diagnostics, read once, at the first
// line that needs it; any other value, type or a missing key is off.
// Elsewhere it is always off.
bool IsErrorLogSwitchedOn() noexcept;
// Forgets the switch, so that the next line reads it again.
void ForgetErrorLogSwitch() noexcept;

// The file sink: appends `line` and CR LF to the file at `path`, creating it.
// False when the file cannot be opened or written.
bool AppendErrorLogLine(const std::string& path, const std::string& line) noexcept;

// ---- Traces ---------------------------------------------------------------------

// Receives each formatted trace in a build with traces on. By default traces
// go to the debugger's output on Windows and to standard error elsewhere.
using TraceHandler = std::function<void(const std::string& text)>;
TraceHandler SetTraceHandler(TraceHandler handler);

#if defined(__MINGW_PRINTF_FORMAT)
#define LUMBREL_PRINTF_FORMAT(f, a) __attribute__((format(__MINGW_PRINTF_FORMAT, f, a)))
#else
#define LUMBREL_PRINTF_FORMAT(f, a) __attribute__((format(printf, f, a)))
#endif

// Formats and hands the text to the trace handler; lets nothing out. Called
// through the macros below, never directly.
LUMBREL_PRINTF_FORMAT(1, 2) void TraceFormat(const char* format, ...) noexcept;

// The platform's last error code (GetLastError on Windows, errno elsewhere).
long LastErrorCode() noexcept;

}  // namespace foundation

// ---- Macros of the calling sites --------------------------------------------

#ifndef LUMBREL_TRACE_ON
#define LUMBREL_TRACE_ON 0
#endif

// The discarded branch is still compiled, so formats and arguments are
// checked in every build, but nothing of it runs when traces are off.
#define LUMBREL_TRACE(...)                                                      \
    do {                                                                        \
        if constexpr (LUMBREL_TRACE_ON) ::foundation::TraceFormat(__VA_ARGS__); \
    } while (0)

// A reporting function's own catch-all.
#define LUMBREL_TRACE_REPORT_FAILURE(file, line) \
    LUMBREL_TRACE("ERROR: File = %s, Line = %ld\n", (file), static_cast<long>(line))
// ReportErrorWide's catch of a thrown line number.
#define LUMBREL_TRACE_WIDE_FAILURE(file, line)                                                    \
    LUMBREL_TRACE("ERROR: File = %s, Line = %ld\n, Error = %ld", (file), static_cast<long>(line), \
                  ::foundation::LastErrorCode())
// A careful function's catch of a thrown line number.
#define LUMBREL_TRACE_THROWN_LINE(file, line)                                                            \
    LUMBREL_TRACE("Error in file = %s, line = %ld, last error = %ld\n", (file), static_cast<long>(line), \
                  ::foundation::LastErrorCode())
// A careful function refusing its arguments.
#define LUMBREL_TRACE_INVALID_ARGUMENTS(file, line) \
    LUMBREL_TRACE("Invalid arguments file = %s, line = %ld\n", (file), static_cast<long>(line))

// Throws the current source line as a plain int.
#define THROW_LINE() throw static_cast<int>(__LINE__)
// Throws the int 1, for sites whose catch-all only returns failure.
#define THROW_FAILURE() throw static_cast<int>(1)

namespace foundation::detail {

template <std::size_t N>
struct SourceName {
    char text[N] = {};
};

// The file name of a source path without directory or extension:
// ".../browser/GraphicDlg.cpp" gives "GraphicDlg".
template <std::size_t N>
constexpr SourceName<N> MakeSourceName(const char (&path)[N]) {
    std::size_t begin = 0;
    for (std::size_t i = 0; i + 1 < N && path[i] != '\0'; ++i)
        if (path[i] == '/' || path[i] == '\\') begin = i + 1;
    std::size_t end = begin;
    while (end + 1 < N && path[end] != '\0') ++end;
    for (std::size_t i = end; i > begin; --i) {
        if (path[i - 1] == '.') {
            end = i - 1;
            break;
        }
    }
    SourceName<N> name{};
    for (std::size_t i = begin; i < end; ++i) name.text[i - begin] = path[i];
    return name;
}

}  // namespace foundation::detail

// The calling source's name as reports carry it ("GraphicDlg"), made at
// compile time.
#define LUMBREL_SOURCE_NAME                                                                \
    ([]() -> const char* {                                                                 \
        static constexpr auto sourceName = ::foundation::detail::MakeSourceName(__FILE__); \
        return sourceName.text;                                                            \
    }())

#define REPORT_ERROR() ::foundation::ReportError(LUMBREL_SOURCE_NAME, __LINE__)
#define REPORT_ERROR_NUMBER(number) ::foundation::ReportErrorNumber(LUMBREL_SOURCE_NAME, __LINE__, (number))
#define REPORT_ERROR_MESSAGE(message) \
    ::foundation::ReportErrorMessage((message), LUMBREL_SOURCE_NAME, __LINE__)
