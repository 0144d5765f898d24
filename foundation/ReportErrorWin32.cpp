#include <windows.h>

#include <atomic>
#include <memory>
#include <type_traits>

#include "foundation/ReportError.h"
#include "foundation/ReportErrorPlatform.h"

namespace foundation {

namespace {

struct KeyCloser {
    void operator()(HKEY key) const { RegCloseKey(key); }
};
using UniqueKey = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyCloser>;

constexpr char kDiagnosticsKey[] = "Software\\Lumbrel\\Diagnostics";
constexpr char kLogErrorsValue[] = "LogErrors";

bool ReadLogErrorsSwitch() {
    HKEY opened = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, kDiagnosticsKey, 0, KEY_QUERY_VALUE, &opened) != ERROR_SUCCESS)
        return false;
    UniqueKey key(opened);
    DWORD type = 0;
    DWORD value = 0;
    DWORD size = sizeof value;
    if (RegQueryValueExA(key.get(), kLogErrorsValue, nullptr, &type, reinterpret_cast<BYTE*>(&value),
                         &size) != ERROR_SUCCESS)
        return false;
    return type == REG_DWORD && size == sizeof value && value == 1;
}

// -1 until the first line that needs it. Lines come from every
// user-interface thread; two threads that read the value at once store the
// same answer.
std::atomic<int> logErrorsSwitch{-1};

}  // namespace

bool IsErrorLogSwitchedOn() noexcept {
    int state = logErrorsSwitch.load();
    if (state < 0) {
        state = ReadLogErrorsSwitch() ? 1 : 0;
        logErrorsSwitch.store(state);
    }
    return state == 1;
}

void ForgetErrorLogSwitch() noexcept {
    logErrorsSwitch.store(-1);
}

long LastErrorCode() noexcept {
    return static_cast<long>(GetLastError());
}

int ConvertToAnsi(const wchar_t* text, int wideCount, char* ansi, int ansiSize) noexcept {
    if (text == nullptr || ansi == nullptr || wideCount <= 0 || ansiSize <= 0) return 0;
    return WideCharToMultiByte(CP_ACP, 0, text, wideCount, ansi, ansiSize, nullptr, nullptr);
}

void WritePlatformTrace(const char* text) noexcept {
    OutputDebugStringA(text);
}

}  // namespace foundation
