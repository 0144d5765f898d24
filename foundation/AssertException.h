// The assertion of the shared drawing objects: ThrowAssert throws a pointer
// to the one CKAssertException of the process, which says where the
// assertion failed. The object is not allocated per throw, so that an
// assertion can be thrown when memory is gone; Delete() does nothing.
//
//   try { ... } catch (foundation::CKAssertException* e) { ...; e->Delete(); }
#pragma once

#include <exception>
#include <string>

#include "foundation/FoundationStrings.h"

namespace foundation {

class CKAssertException : public std::exception {
public:
    CKAssertException() = default;
    CKAssertException(const CKAssertException&) = delete;
    CKAssertException& operator=(const CKAssertException&) = delete;

    const char* File() const { return file_; }
    long Line() const { return line_; }
    void SetLocation(const char* file, long line);

    // The message in `buffer` (`maxChars` with the terminator, cut to fit):
    // with a file, resource 6051 with the file as %1 and the line as %2;
    // without, resource 6052. The help context is 0. Always true.
    bool GetErrorMessage(char* buffer, unsigned maxChars, unsigned* helpContext = nullptr) const;
    // The same message.
    const char* what() const noexcept override;

    bool IsAutoDelete() const { return false; }
    void Delete() noexcept {}

private:
    std::string Message() const;

    const char* file_ = nullptr;
    long line_ = 0;
    mutable std::string whatText_;
};

inline constexpr long kAssertMessageWithFile = IDS_ASSERT_WITH_FILE;
inline constexpr long kAssertMessageWithoutFile = IDS_ASSERT_WITHOUT_FILE;

// The process's one instance, built at load time.
CKAssertException& AssertException();

// Stores file and line in AssertException() and throws a pointer to it.
[[noreturn]] void ThrowAssert(const char* file, long line);

}  // namespace foundation
