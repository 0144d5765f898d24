// BSTR and CoTaskMem strings, and their conversion to and from the ANSI text
// that the rest of the system uses.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>
#include <utility>

namespace framework::ole {

// Owns one BSTR.
class Bstr {
public:
    Bstr() noexcept = default;
    explicit Bstr(const wchar_t* text) : value_(::SysAllocString(text)) {}
    // `length` characters of `text`, which may hold NULs.
    Bstr(const wchar_t* text, UINT length) : value_(::SysAllocStringLen(text, length)) {}
    ~Bstr() { ::SysFreeString(value_); }
    Bstr(Bstr&& other) noexcept : value_(std::exchange(other.value_, nullptr)) {}
    Bstr& operator=(Bstr&& other) noexcept {
        if (this != &other) {
            ::SysFreeString(value_);
            value_ = std::exchange(other.value_, nullptr);
        }
        return *this;
    }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;

    // The ANSI text in the process's code page, as a BSTR.
    static Bstr FromAnsi(const std::string& text);

    BSTR Get() const noexcept { return value_; }
    UINT Length() const noexcept { return ::SysStringLen(value_); }
    BSTR Detach() noexcept { return std::exchange(value_, nullptr); }
    // For out parameters: frees what is held and gives the address to write to.
    BSTR* Put() noexcept {
        ::SysFreeString(value_);
        value_ = nullptr;
        return &value_;
    }

private:
    BSTR value_ = nullptr;
};

// Converts every character of `text` (its SysStringLen, embedded NULs
// included) to the ANSI code page; characters that the code page lacks
// become its default character. A null BSTR is the empty text. Works on any
// length: nothing is converted through a fixed buffer.
std::string BstrToAnsi(BSTR text);

// Converts `length` UTF-16 units to the ANSI code page, as BstrToAnsi does.
std::string WideToAnsi(const wchar_t* text, size_t length);
// Converts ANSI text to UTF-16.
std::wstring AnsiToWide(const std::string& text);

// A copy of `text` in memory from CoTaskMemAlloc, for out parameters whose
// caller frees them with CoTaskMemFree; null when memory is short.
LPOLESTR CoTaskStringFromAnsi(const std::string& text);

}  // namespace framework::ole
