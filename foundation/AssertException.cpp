#include "foundation/AssertException.h"

#include <cstring>
#include <new>

#include "foundation/resstr.h"

namespace foundation {

namespace {
CKAssertException g_assertException;
}  // namespace

CKAssertException& AssertException() {
    return g_assertException;
}

void CKAssertException::SetLocation(const char* file, long line) {
    file_ = file;
    line_ = line;
}

std::string CKAssertException::Message() const {
    if (file_ == nullptr) return CResString(kAssertMessageWithoutFile).GetText();
    return FormatResourceString(kAssertMessageWithFile, file_, std::to_string(line_).c_str());
}

bool CKAssertException::GetErrorMessage(char* buffer, unsigned maxChars, unsigned* helpContext) const {
    if (helpContext != nullptr) *helpContext = 0;
    if (buffer == nullptr || maxChars == 0) return true;
    buffer[0] = '\0';
    try {
        const std::string message = Message();
        const std::size_t count = message.size() < maxChars - 1 ? message.size() : maxChars - 1;
        std::memcpy(buffer, message.data(), count);
        buffer[count] = '\0';
    } catch (const std::bad_alloc&) {
        // The buffer keeps the empty text: the caller still gets an answer.
    }
    return true;
}

const char* CKAssertException::what() const noexcept {
    try {
        whatText_ = Message();
    } catch (const std::bad_alloc&) {
        whatText_.clear();
    }
    return whatText_.c_str();
}

void ThrowAssert(const char* file, long line) {
    g_assertException.SetLocation(file, line);
    throw &g_assertException;
}

}  // namespace foundation
