#include <windows.h>
#include <winnetwk.h>

#include <memory>
#include <string>

#include "foundation/FilePath.h"

namespace foundation {

namespace {

struct FindCloser {
    void operator()(HANDLE handle) const {
        if (handle != nullptr && handle != INVALID_HANDLE_VALUE) FindClose(handle);
    }
};
using UniqueFind = std::unique_ptr<void, FindCloser>;

bool QueryNetworkName(const char* drive, char* name, std::uint32_t* length) {
    DWORD room = *length;
    const DWORD result = WNetGetConnectionA(drive, name, &room);
    *length = room;
    return result == NO_ERROR;
}

}  // namespace

bool IsNonEmptyFile(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA status = {};
    if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &status)) return false;
    // Directories are never files here, whatever else their attributes say.
    if ((status.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return false;
    return status.nFileSizeHigh != 0 || status.nFileSizeLow != 0;
}

CFilePath GetCurrentDirectoryPath() {
    const DWORD needed = GetCurrentDirectoryA(0, nullptr);
    if (needed == 0) return CFilePath();
    std::string directory(needed, '\0');
    const DWORD written = GetCurrentDirectoryA(needed, directory.data());
    if (written == 0 || written >= needed) return CFilePath();
    directory.resize(written);
    return CFilePath(directory);
}

CFilePath GetWindowsDirectoryPath() {
    std::string directory(kMaxPathText, '\0');
    UINT written = GetWindowsDirectoryA(directory.data(), static_cast<UINT>(directory.size()));
    if (written >= directory.size()) {
        directory.assign(written + 1, '\0');
        written = GetWindowsDirectoryA(directory.data(), static_cast<UINT>(directory.size()));
    }
    if (written == 0 || written >= directory.size()) return CFilePath();
    directory.resize(written);
    return CFilePath(directory);
}

CFilePath MakeTempFilePath(bool keep) {
    CFilePath temp;
    temp.SetTempName(keep);
    return temp;
}

std::string ToUncPath(const std::string& path) {
    return ToUncPath(path, QueryNetworkName);
}

std::string ToDrivePath(const std::string& path) {
    return ToDrivePath(path, QueryNetworkName);
}

void CFilePath::SetTempName(bool keep) {
    char directory[kMaxPathText] = {};
    // GetTempFileNameA writes up to MAX_PATH characters and the terminator.
    char name[MAX_PATH + 1] = {};
    const DWORD length = GetTempPathA(kMaxPathText, directory);
    if (length == 0 || length >= kMaxPathText || GetTempFileNameA(directory, kTempFilePrefix, 0, name) == 0) {
        path.clear();
        return;
    }
    path = name;
    if (!keep) DeleteFileA(name);
}

CFilePath CFilePath::GetShortPath() const {
    const DWORD needed = GetShortPathNameA(path.c_str(), nullptr, 0);
    std::string shortPath(static_cast<std::size_t>(needed) + 1, '\0');
    const DWORD written = GetShortPathNameA(path.c_str(), shortPath.data(), needed + 1);
    // A result as large as the buffer is the room the path has come to need
    // since the first call, not a path.
    if (written == 0 || written > needed) return *this;
    shortPath.resize(written);
    return CFilePath(shortPath);
}

CFilePath CFilePath::GetFoundName() const {
    WIN32_FIND_DATAA entry = {};
    const HANDLE handle = FindFirstFileA(path.c_str(), &entry);
    if (handle == nullptr) return *this;
    // A failed search is not 0 but the invalid handle, so it comes here:
    // with no entry found the name is empty.
    if (handle == INVALID_HANDLE_VALUE) return CFilePath();
    UniqueFind search(handle);
    entry.cFileName[MAX_PATH - 1] = '\0';
    return CFilePath(entry.cFileName);
}

}  // namespace foundation
