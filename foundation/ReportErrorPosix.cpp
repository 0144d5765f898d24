#include <cerrno>
#include <cstdio>

#include "foundation/ReportError.h"
#include "foundation/ReportErrorPlatform.h"

namespace foundation {

// Without a registry there is nobody to ask for the file sink.
bool IsErrorLogSwitchedOn() noexcept {
    return false;
}

void ForgetErrorLogSwitch() noexcept {}

long LastErrorCode() noexcept {
    return errno;
}

// Stands in for the ANSI code page: ASCII as it is, anything else as the
// code page's default character.
int ConvertToAnsi(const wchar_t* text, int wideCount, char* ansi, int ansiSize) noexcept {
    if (text == nullptr || ansi == nullptr || wideCount <= 0 || ansiSize < wideCount) return 0;
    for (int i = 0; i < wideCount; ++i) {
        const auto c = static_cast<unsigned long>(text[i]);
        ansi[i] = c < 0x80 ? static_cast<char>(c) : '?';
    }
    return wideCount;
}

void WritePlatformTrace(const char* text) noexcept {
    std::fputs(text, stderr);
}

}  // namespace foundation
