#include "foundation/ReportError.h"

#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "foundation/ReportErrorPlatform.h"

namespace foundation {

std::string errorLogPath = kDefaultErrorLogPath;

namespace {

ErrorLineHandler& CurrentLineHandler() {
    static ErrorLineHandler handler;
    return handler;
}

TraceHandler& CurrentTraceHandler() {
    static TraceHandler handler;
    return handler;
}

// The log's path and its file are shared by every user-interface thread:
// lines are appended whole, one at a time, under this lock.
std::mutex& LogLock() {
    static std::mutex lock;
    return lock;
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

bool SetErrorLogPath(const char* path) noexcept {
    try {
        if (path == nullptr) return false;
        const std::lock_guard<std::mutex> hold(LogLock());
        errorLogPath = path;
        return true;
    } catch (...) {
        LUMBREL_TRACE_REPORT_FAILURE(kReportingSourceName, __LINE__);
        return false;
    }
}

std::string StringLoadFailureText(long id) {
    char text[64];
    std::snprintf(text, sizeof text, "Failed to load string resource, number = %ld", id);
    return text;
}

void ReportError(const char* file, long line) noexcept {
    ReportErrorMessage(nullptr, file, line);
}

void ReportErrorNumber(const char* file, long line, long number) noexcept {
    try {
        // Wide enough for any long; the bound keeps it so whatever the platform.
        char message[256];
        std::snprintf(message, sizeof message, "Error number = %ld", number);
        message[sizeof message - 1] = '\0';
        ReportErrorMessage(message, file, line);
    } catch (...) {
        LUMBREL_TRACE_REPORT_FAILURE(kReportingSourceName, __LINE__);
    }
}

void ReportErrorMessage(const char* message, const char* file, long line) noexcept {
    try {
        // The line carries no date or time: readers match lines by their text.
        std::string composed = file != nullptr ? file : kReportingSourceName;
        composed += ", Line ";
        composed += std::to_string(line);
        composed += ": ";
        if (message != nullptr) composed += message;
        WriteErrorLine(composed.c_str());
    } catch (...) {
        LUMBREL_TRACE_REPORT_FAILURE(kReportingSourceName, __LINE__);
    }
}

void ReportErrorWide(const wchar_t* message, const char* file, long line) noexcept {
    try {
        if (message == nullptr) {
            ReportErrorMessage(nullptr, file, line);
            return;
        }
        const std::size_t length = std::wcslen(message);
        // The conversion counts in int; a longer text cannot be converted.
        if (length >= static_cast<std::size_t>(INT_MAX)) THROW_LINE();
        // One byte per character: a text that needs more in the ANSI code page
        // fails to convert and is traced instead of reported.
        std::unique_ptr<char[]> converted(new (std::nothrow) char[length + 1]);
        if (!converted) THROW_LINE();
        const int count = static_cast<int>(length) + 1;
        if (ConvertToAnsi(message, count, converted.get(), count) == 0) THROW_LINE();
        converted[length] = '\0';
        ReportErrorMessage(converted.get(), file, line);
    } catch (int thrownLine) {
        LUMBREL_TRACE_WIDE_FAILURE(kReportingSourceName, thrownLine);
    } catch (...) {
        LUMBREL_TRACE_REPORT_FAILURE(kReportingSourceName, __LINE__);
    }
}

void ReportUnexpectedException(const char* file, long line) noexcept {
    ReportErrorMessage(kUnexpectedExceptionText, file, line);
}

void ReportException(const std::exception& error, const char* file, long line) noexcept {
    const char* text = error.what();
    ReportErrorMessage(text != nullptr && *text != '\0' ? text : nullptr, file, line);
}

ErrorLineHandler SetErrorLineHandler(ErrorLineHandler handler) {
    return std::exchange(CurrentLineHandler(), std::move(handler));
}

void WriteErrorLine(const char* line) noexcept {
    if (line == nullptr) return;
    try {
        const ErrorLineHandler& handler = CurrentLineHandler();
        if (handler) {
            handler(line);
            return;
        }
        if (IsErrorLogSwitchedOn()) {
            const std::lock_guard<std::mutex> hold(LogLock());
            AppendErrorLogLine(errorLogPath, line);
        }
    } catch (...) {
        LUMBREL_TRACE_REPORT_FAILURE(kReportingSourceName, __LINE__);
    }
}

bool AppendErrorLogLine(const std::string& path, const std::string& line) noexcept {
    std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "ab"));
    if (!file) return false;
    const bool written = std::fwrite(line.data(), 1, line.size(), file.get()) == line.size() &&
                         std::fwrite("\r\n", 1, 2, file.get()) == 2;
    return std::fclose(file.release()) == 0 && written;
}

TraceHandler SetTraceHandler(TraceHandler handler) {
    return std::exchange(CurrentTraceHandler(), std::move(handler));
}

void TraceFormat(const char* format, ...) noexcept {
    if (format == nullptr) return;
    try {
        char text[1024];
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(text, sizeof text, format, arguments);
        va_end(arguments);
        const TraceHandler& handler = CurrentTraceHandler();
        if (handler)
            handler(text);
        else
            WritePlatformTrace(text);
    } catch (...) {
        // A trace has nowhere further to go.
    }
}

}  // namespace foundation
