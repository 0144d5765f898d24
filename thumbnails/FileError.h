// The file failure of the thumbnail store: a framework file exception that
// also carries a cause number, which the library hands to its callers as a
// result (DeleteItemFile). Portable.
#pragma once

#include <cstdint>
#include <string>

#include "framework/File.h"

namespace thumbnails {

// Cause numbers, as file exceptions of the window framework number them.
enum FileErrorCause : int {
    kCauseNone = 0,
    kCauseGeneric = 1,
    kCauseFileNotFound = 2,
    kCauseBadPath = 3,
    kCauseTooManyOpenFiles = 4,
    kCauseAccessDenied = 5,
    kCauseInvalidFile = 6,
    kCauseRemoveCurrentDir = 7,
    kCauseDirectoryFull = 8,
    kCauseBadSeek = 9,
    kCauseHardIo = 10,
    kCauseSharingViolation = 11,
    kCauseLockViolation = 12,
    kCauseDiskFull = 13,
    kCauseEndOfFile = 14,
};

// The cause for a Windows system error code (GetLastError); codes without a
// cause of their own are kCauseGeneric.
int FileErrorCauseFromOsError(uint32_t osError);

class FileError : public framework::FileException {
public:
    FileError(int cause, uint32_t osError, const std::string& path);

    int Cause() const { return cause_; }
    uint32_t OsError() const { return osError_; }
    const std::string& Path() const { return path_; }

private:
    int cause_;
    uint32_t osError_;
    std::string path_;
};

}  // namespace thumbnails
