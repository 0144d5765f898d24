#include "thumbnails/FileError.h"

#include <utility>

namespace thumbnails {

namespace {

struct CauseOfError {
    uint32_t osError;
    int cause;
};

// Windows system error codes by number, so that the table needs no Windows
// header and is tested on every platform.
constexpr CauseOfError kCauses[] = {
    {2, kCauseFileNotFound},        // ERROR_FILE_NOT_FOUND
    {3, kCauseBadPath},             // ERROR_PATH_NOT_FOUND
    {4, kCauseTooManyOpenFiles},    // ERROR_TOO_MANY_OPEN_FILES
    {5, kCauseAccessDenied},        // ERROR_ACCESS_DENIED
    {6, kCauseFileNotFound},        // ERROR_INVALID_HANDLE
    {11, kCauseInvalidFile},        // ERROR_BAD_FORMAT
    {12, kCauseAccessDenied},       // ERROR_INVALID_ACCESS
    {15, kCauseBadPath},            // ERROR_INVALID_DRIVE
    {16, kCauseRemoveCurrentDir},   // ERROR_CURRENT_DIRECTORY
    {17, kCauseBadPath},            // ERROR_NOT_SAME_DEVICE
    {18, kCauseFileNotFound},       // ERROR_NO_MORE_FILES
    {19, kCauseAccessDenied},       // ERROR_WRITE_PROTECT
    {20, kCauseHardIo},             // ERROR_BAD_UNIT
    {21, kCauseHardIo},             // ERROR_NOT_READY
    {22, kCauseHardIo},             // ERROR_BAD_COMMAND
    {23, kCauseHardIo},             // ERROR_CRC
    {24, kCauseBadSeek},            // ERROR_BAD_LENGTH
    {25, kCauseBadSeek},            // ERROR_SEEK
    {26, kCauseInvalidFile},        // ERROR_NOT_DOS_DISK
    {27, kCauseBadSeek},            // ERROR_SECTOR_NOT_FOUND
    {29, kCauseAccessDenied},       // ERROR_WRITE_FAULT
    {30, kCauseBadSeek},            // ERROR_READ_FAULT
    {32, kCauseSharingViolation},   // ERROR_SHARING_VIOLATION
    {33, kCauseLockViolation},      // ERROR_LOCK_VIOLATION
    {34, kCauseBadSeek},            // ERROR_WRONG_DISK
    {36, kCauseSharingViolation},   // ERROR_SHARING_BUFFER_EXCEEDED
    {38, kCauseEndOfFile},          // ERROR_HANDLE_EOF
    {39, kCauseDiskFull},           // ERROR_HANDLE_DISK_FULL
    {52, kCauseBadPath},            // ERROR_DUP_NAME
    {53, kCauseBadPath},            // ERROR_BAD_NETPATH
    {54, kCauseAccessDenied},       // ERROR_NETWORK_BUSY
    {55, kCauseBadPath},            // ERROR_DEV_NOT_EXIST
    {57, kCauseHardIo},             // ERROR_ADAP_HDW_ERR
    {58, kCauseAccessDenied},       // ERROR_BAD_NET_RESP
    {59, kCauseHardIo},             // ERROR_UNEXP_NET_ERR
    {60, kCauseInvalidFile},        // ERROR_BAD_REM_ADAP
    {62, kCauseDirectoryFull},      // ERROR_NO_SPOOL_SPACE
    {64, kCauseAccessDenied},       // ERROR_NETNAME_DELETED
    {65, kCauseAccessDenied},       // ERROR_NETWORK_ACCESS_DENIED
    {66, kCauseInvalidFile},        // ERROR_BAD_DEV_TYPE
    {67, kCauseBadPath},            // ERROR_BAD_NET_NAME
    {68, kCauseTooManyOpenFiles},   // ERROR_TOO_MANY_NAMES
    {70, kCauseBadPath},            // ERROR_SHARING_PAUSED
    {71, kCauseAccessDenied},       // ERROR_REQ_NOT_ACCEP
    {80, kCauseAccessDenied},       // ERROR_FILE_EXISTS
    {82, kCauseAccessDenied},       // ERROR_CANNOT_MAKE
    {85, kCauseBadPath},            // ERROR_ALREADY_ASSIGNED
    {86, kCauseAccessDenied},       // ERROR_INVALID_PASSWORD
    {88, kCauseHardIo},             // ERROR_NET_WRITE_FAULT
    {107, kCauseFileNotFound},      // ERROR_DISK_CHANGE
    {108, kCauseLockViolation},     // ERROR_DRIVE_LOCKED
    {111, kCauseBadPath},           // ERROR_BUFFER_OVERFLOW
    {112, kCauseDiskFull},          // ERROR_DISK_FULL
    {113, kCauseTooManyOpenFiles},  // ERROR_NO_MORE_SEARCH_HANDLES
    {114, kCauseInvalidFile},       // ERROR_INVALID_TARGET_HANDLE
    {117, kCauseHardIo},            // ERROR_INVALID_CATEGORY
    {123, kCauseBadPath},           // ERROR_INVALID_NAME
    {124, kCauseBadPath},           // ERROR_INVALID_LEVEL
    {125, kCauseBadPath},           // ERROR_NO_VOLUME_LABEL
    {131, kCauseBadSeek},           // ERROR_NEGATIVE_SEEK
    {132, kCauseBadSeek},           // ERROR_SEEK_ON_DEVICE
    {144, kCauseBadPath},           // ERROR_DIR_NOT_ROOT
    {145, kCauseRemoveCurrentDir},  // ERROR_DIR_NOT_EMPTY
    {154, kCauseBadPath},           // ERROR_LABEL_TOO_LONG
    {161, kCauseBadPath},           // ERROR_BAD_PATHNAME
    {167, kCauseLockViolation},     // ERROR_LOCK_FAILED
    {170, kCauseAccessDenied},      // ERROR_BUSY
    {182, kCauseInvalidFile},       // ERROR_INVALID_ORDINAL
    {183, kCauseAccessDenied},      // ERROR_ALREADY_EXISTS
    {191, kCauseInvalidFile},       // ERROR_INVALID_EXE_SIGNATURE
    {193, kCauseInvalidFile},       // ERROR_BAD_EXE_FORMAT
    {206, kCauseBadPath},           // ERROR_FILENAME_EXCED_RANGE
    {208, kCauseBadPath},           // ERROR_META_EXPANSION_TOO_LONG
    {267, kCauseBadPath},           // ERROR_DIRECTORY
    {995, kCauseHardIo},            // ERROR_OPERATION_ABORTED
    {996, kCauseHardIo},            // ERROR_IO_INCOMPLETE
    {997, kCauseHardIo},            // ERROR_IO_PENDING
    {999, kCauseAccessDenied},      // ERROR_SWAPERROR
};

std::string Describe(int cause, uint32_t osError, const std::string& path) {
    return "file error " + std::to_string(cause) + " (system error " + std::to_string(osError) + ") on \"" +
           path + "\"";
}

}  // namespace

int FileErrorCauseFromOsError(uint32_t osError) {
    for (const CauseOfError& entry : kCauses)
        if (entry.osError == osError) return entry.cause;
    return kCauseGeneric;
}

FileError::FileError(int cause, uint32_t osError, const std::string& path)
    : framework::FileException(Describe(cause, osError, path)),
      cause_(cause),
      osError_(osError),
      path_(path) {}

}  // namespace thumbnails
