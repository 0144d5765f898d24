#include "browser/ShellAccess.h"

#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>

#include <cstring>

#include "foundation/ReportError.h"

namespace browser {

namespace {

// An item list of the shell, given back with CoTaskMemFree.
class ItemList {
public:
    ItemList() = default;
    ~ItemList() {
        if (list_ != nullptr) ::CoTaskMemFree(list_);
    }
    ItemList(const ItemList&) = delete;
    ItemList& operator=(const ItemList&) = delete;
    LPITEMIDLIST* Put() { return &list_; }
    LPCITEMIDLIST Get() const { return list_; }

private:
    LPITEMIDLIST list_ = nullptr;
};

ShellFileInfoFunction& CurrentShellFileInfo() {
    static ShellFileInfoFunction function = nullptr;
    return function;
}

DWORD_PTR ShellFileInfo(const std::string& path, SHFILEINFOA* info, UINT flags) {
    const ShellFileInfoFunction function = CurrentShellFileInfo();
    if (function != nullptr) return function(path.c_str(), 0, info, sizeof *info, flags);
    return ::SHGetFileInfoA(path.c_str(), 0, info, sizeof *info, flags);
}

}  // namespace

ShellFileInfoFunction SetShellFileInfoFunction(ShellFileInfoFunction function) {
    const ShellFileInfoFunction previous = CurrentShellFileInfo();
    CurrentShellFileInfo() = function;
    return previous;
}

std::string GetSpecialFolderPath(int folder) {
    ItemList list;
    if (FAILED(::SHGetSpecialFolderLocation(nullptr, folder, list.Put())) || list.Get() == nullptr)
        THROW_LINE();
    char path[MAX_PATH + 1] = {};
    if (!::SHGetPathFromIDListA(list.Get(), path)) THROW_LINE();
    path[MAX_PATH] = '\0';
    return path;
}

HRESULT QuerySpecialFolderLocation(int folder) {
    ItemList list;
    return ::SHGetSpecialFolderLocation(nullptr, folder, list.Put());
}

std::vector<std::string> LogicalDriveRoots(DWORD bufferSize) {
    std::vector<std::string> roots;
    if (bufferSize == 0) return roots;
    std::vector<char> buffer(bufferSize + 1, '\0');
    const DWORD written = ::GetLogicalDriveStringsA(bufferSize, buffer.data());
    if (written == 0) return roots;
    // Beyond the room it was given the system writes nothing, so a larger
    // answer leaves only what fits.
    const size_t end = written < bufferSize ? written : bufferSize;
    size_t position = 0;
    while (position < end && buffer[position] != '\0') {
        const size_t length = strnlen(buffer.data() + position, end - position);
        roots.emplace_back(buffer.data() + position, length);
        position += length + 1;
    }
    return roots;
}

int ShellIconIndex(const std::string& path, UINT flags, bool* answered) {
    SHFILEINFOA info = {};
    const DWORD_PTR result = ShellFileInfo(path, &info, flags);
    if (answered != nullptr) *answered = result != 0;
    if (info.hIcon != nullptr) ::DestroyIcon(info.hIcon);
    return info.iIcon;
}

HIMAGELIST SystemSmallImageList(const std::string& path) {
    SHFILEINFOA info = {};
    const DWORD_PTR list = ShellFileInfo(path, &info, kSystemSmallIconIndex);
    if (info.hIcon != nullptr) ::DestroyIcon(info.hIcon);
    return reinterpret_cast<HIMAGELIST>(list);
}

}  // namespace browser
