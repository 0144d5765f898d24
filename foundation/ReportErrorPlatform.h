// What the reporting functions ask of the platform; one definition per
// platform (ReportErrorWin32.cpp, ReportErrorPosix.cpp).
#pragma once

namespace foundation {

// Converts `wideCount` characters of `text` (its terminator included) to the
// ANSI code page in at most `ansiSize` bytes. Returns the bytes written, 0
// when the text does not fit or does not convert.
int ConvertToAnsi(const wchar_t* text, int wideCount, char* ansi, int ansiSize) noexcept;

// Where a trace goes when no handler is installed.
void WritePlatformTrace(const char* text) noexcept;

}  // namespace foundation
