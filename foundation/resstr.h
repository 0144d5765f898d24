// Resource strings that load themselves from the string table of the
// resource module (framework::win32::ResourceModule()) at first use. A string
// that the table does not hold is reported and reads as the empty text:
// windows that show one show an empty text, never fail.
#pragma once

#include <string>

namespace foundation {

class CResString {
public:
    CResString() = default;
    explicit CResString(long id) : id_(id) {}
    CResString(const CResString&) = default;
    CResString& operator=(const CResString&) = default;

    long Id() const { return id_; }

    // The text, loaded if it is still empty. A failed load is reported
    // under "resstr" and leaves the text empty, so the next call tries (and
    // reports) again.
    const std::string& GetText();

private:
    long id_ = 0;
    std::string text_;
};

// The resource text `id` with "%1" and "%2" replaced (FormatInserts); a
// missing string gives the empty text, reported as by GetText.
std::string FormatResourceString(long id, const char* insert1, const char* insert2 = nullptr);

// Reads string `id` of the resource module into `text`; false, with `text`
// untouched, when the table has no such string. May throw std::bad_alloc.
using ResourceStringLoader = bool (*)(long id, std::string& text);

// The loader behind GetText: LoadStringA on the resource module. Ids outside
// 0..65535 are no string ids and fail without asking the system.
bool LoadResourceString(long id, std::string& text);

// Replaces the loader (null restores LoadResourceString) and returns the one
// it replaces, so that tests can make a load fail as the system would not.
ResourceStringLoader SetResourceStringLoader(ResourceStringLoader loader);

}  // namespace foundation
