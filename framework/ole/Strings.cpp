#include "framework/ole/Strings.h"

#include <objbase.h>

#include <climits>
#include <cstring>

namespace framework::ole {

namespace {

// Converted piece by piece so that no length handed to the platform can
// overflow its int, whatever the text's size.
constexpr size_t kChunk = 1 << 20;

bool IsHighSurrogate(wchar_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}

}  // namespace

std::string WideToAnsi(const wchar_t* text, size_t length) {
    std::string result;
    if (text == nullptr || length == 0) return result;
    size_t done = 0;
    while (done < length) {
        size_t piece = length - done < kChunk ? length - done : kChunk;
        // A surrogate pair stays whole, so that it converts as one character.
        if (done + piece < length && piece > 1 && IsHighSurrogate(text[done + piece - 1])) --piece;
        const int pieceLength = static_cast<int>(piece);
        const int needed =
            ::WideCharToMultiByte(CP_ACP, 0, text + done, pieceLength, nullptr, 0, nullptr, nullptr);
        if (needed <= 0) break;
        const size_t start = result.size();
        result.resize(start + static_cast<size_t>(needed));
        const int written = ::WideCharToMultiByte(CP_ACP, 0, text + done, pieceLength, &result[start], needed,
                                                  nullptr, nullptr);
        result.resize(start + static_cast<size_t>(written > 0 ? written : 0));
        done += piece;
    }
    return result;
}

std::string BstrToAnsi(BSTR text) {
    if (text == nullptr) return std::string();
    return WideToAnsi(text, ::SysStringLen(text));
}

std::wstring AnsiToWide(const std::string& text) {
    std::wstring result;
    size_t done = 0;
    while (done < text.size()) {
        size_t piece = text.size() - done < kChunk ? text.size() - done : kChunk;
        // Never split a double-byte character: step back to a lead-byte boundary.
        if (done + piece < text.size()) {
            size_t boundary = done;
            while (boundary < done + piece) {
                const size_t step = ::IsDBCSLeadByte(static_cast<BYTE>(text[boundary])) ? 2 : 1;
                if (boundary + step > done + piece) break;
                boundary += step;
            }
            if (boundary > done) piece = boundary - done;
        }
        const int pieceLength = static_cast<int>(piece);
        const int needed = ::MultiByteToWideChar(CP_ACP, 0, text.data() + done, pieceLength, nullptr, 0);
        if (needed <= 0) break;
        const size_t start = result.size();
        result.resize(start + static_cast<size_t>(needed));
        const int written =
            ::MultiByteToWideChar(CP_ACP, 0, text.data() + done, pieceLength, &result[start], needed);
        result.resize(start + static_cast<size_t>(written > 0 ? written : 0));
        done += piece;
    }
    return result;
}

Bstr Bstr::FromAnsi(const std::string& text) {
    const std::wstring wide = AnsiToWide(text);
    if (wide.size() > UINT_MAX / 2) return Bstr();
    return Bstr(wide.data(), static_cast<UINT>(wide.size()));
}

LPOLESTR CoTaskStringFromAnsi(const std::string& text) {
    const std::wstring wide = AnsiToWide(text);
    const size_t bytes = (wide.size() + 1) * sizeof(wchar_t);
    auto* copy = static_cast<LPOLESTR>(::CoTaskMemAlloc(bytes));
    if (copy == nullptr) return nullptr;
    std::memcpy(copy, wide.c_str(), bytes);
    return copy;
}

}  // namespace framework::ole
