#include "thumbnails/ThumbnailLibrary.h"

#include <windows.h>

#include <direct.h>
#include <io.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>

#include "foundation/SortStrings.h"
#include "thumbnails/CategoryScan.h"
#include "thumbnails/FileError.h"
#include "thumbnails/Imaging.h"

namespace thumbnails {

namespace {

// The process-wide instance. Controls on several user-interface threads may
// ask for it at once; the lock keeps it one.
std::mutex g_instanceLock;
CThumbnailLibrary* g_instance = nullptr;

void DestroyAtExit() {
    CThumbnailLibrary::DestroyInstance();
}

// The instance's items give their pixels back to the imaging layer when it is
// deleted at process end, so the layer's process-wide registers must outlive
// it. Objects are destroyed after the exit handlers registered once they were
// made, so the registers are made (by one bitmap's whole life) before the
// handler is registered.
void RegisterCleanupAtExit() {
    static const bool registered = [] {
        imaging::BitmapDescriptor probe{};
        if (imaging::CreateBitmap(&probe, imaging::kMemoryConventional, 1, 1, 24, imaging::kColorOrderBgr,
                                  nullptr, 0, nullptr, 0) == imaging::kSuccess) {
            imaging::ReleaseBitmap(&probe);
            imaging::FreeBitmap(&probe);
        }
        return std::atexit(&DestroyAtExit) == 0;
    }();
    static_cast<void>(registered);
}

constexpr DWORD kDirectoryAttribute = 0x10;

struct FindCloser {
    void operator()(HANDLE search) const {
        if (search != INVALID_HANDLE_VALUE) ::FindClose(search);
    }
};
using UniqueSearch = std::unique_ptr<void, FindCloser>;

std::string UpperCase(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

// Cuts the path at its last backslash, keeping the backslash or not; a path
// without one becomes empty.
void CutAtLastBackslash(foundation::CFilePath& path, bool keepBackslash) {
    const size_t at = path.path.rfind('\\');
    if (at == std::string::npos)
        path.path.clear();
    else
        path.path.resize(keepBackslash ? at + 1 : at);
}

void RemoveFile(const std::string& path) {
    if (!::DeleteFileA(path.c_str())) {
        const DWORD error = ::GetLastError();
        throw FileError(FileErrorCauseFromOsError(error), error, path);
    }
}

}  // namespace

CThumbnailLibrary* CThumbnailLibrary::GetInstance() {
    const std::lock_guard<std::mutex> hold(g_instanceLock);
    if (g_instance == nullptr) {
        RegisterCleanupAtExit();
        g_instance = Create().release();
    }
    return g_instance;
}

void CThumbnailLibrary::DestroyInstance() {
    CThumbnailLibrary* instance = nullptr;
    {
        const std::lock_guard<std::mutex> hold(g_instanceLock);
        instance = g_instance;
        g_instance = nullptr;
    }
    delete instance;
}

std::unique_ptr<CThumbnailLibrary> CThumbnailLibrary::Create() {
    std::unique_ptr<CThumbnailLibrary> library(new CThumbnailLibrary());
    library->Init();
    return library;
}

CThumbnailLibrary::~CThumbnailLibrary() {
    ClearItems();
}

std::string CThumbnailLibrary::GetKey() {
    return std::string();
}

void CThumbnailLibrary::LoadFromKey(const std::string&) {}

void CThumbnailLibrary::InitFromKey(const std::string& key) {
    currentCategory = -1;

    // The parent of the program's directory is worked out and then dropped on
    // purpose: where thumbnails live is not this control's to decide, so both
    // directories stay as LoadFromKey leaves them.
    char module[MAX_PATH + 1] = {};
    ::GetModuleFileNameA(nullptr, module, MAX_PATH);
    foundation::CFilePath programParent(module);
    CutAtLastBackslash(programParent, false);
    CutAtLastBackslash(programParent, true);

    LoadFromKey(key);
    LoadFromKey(key);
    SetThumbnailRoot(baseDirectory);
    ScanCategories();
    if (!categoryNames.empty()) SetCurrentCategory(0);
}

void CThumbnailLibrary::SetRootDirectory(const std::string& path) {
    ClearCategories();
    ClearItems();
    rootDirectory.path = path;
    ScanCategories();
}

void CThumbnailLibrary::SetRootDirectoryOnly(const std::string& path) {
    rootDirectory.path = path;
}

void CThumbnailLibrary::ScanCategories() {
    const std::string pattern = rootDirectory.path + "\\*.*";
    UniqueSearch search(INVALID_HANDLE_VALUE);
    WIN32_FIND_DATAA found;
    auto take = [&found](DirectoryEntry& entry) {
        entry.name = found.cFileName;
        entry.isDirectory = (found.dwFileAttributes & kDirectoryAttribute) != 0;
    };
    const NextDirectoryEntry first = [&](DirectoryEntry& entry) {
        search.reset(::FindFirstFileA(pattern.c_str(), &found));
        if (search.get() == INVALID_HANDLE_VALUE) return false;
        take(entry);
        return true;
    };
    const NextDirectoryEntry next = [&](DirectoryEntry& entry) {
        if (!::FindNextFileA(search.get(), &found)) return false;
        take(entry);
        return true;
    };
    if (!CollectCategoryNames(first, next, categoryNames)) return;
    search.reset(INVALID_HANDLE_VALUE);
    foundation::SortStrings(categoryNames);
}

void CThumbnailLibrary::ClearCategories() {
    categoryNames.clear();
    currentCategory = -1;
}

long CThumbnailLibrary::AddCategory(const std::string& name) {
    const std::string directory = rootDirectory.path + "\\" + name;
    ::_mkdir(directory.c_str());
    ClearItems();
    categoryNames.push_back(name);
    currentCategory = static_cast<long>(categoryNames.size()) - 1;
    return currentCategory;
}

void CThumbnailLibrary::DeleteCurrentCategory() {
    if (currentCategory < 0) return;
    ClearItems();
    const std::string directory = rootDirectory.path + "\\" + CategoryName(currentCategory);
    {
        WIN32_FIND_DATAA found;
        UniqueSearch search(::FindFirstFileA((directory + "\\*.thm").c_str(), &found));
        if (search.get() != INVALID_HANDLE_VALUE) {
            do {
                ::_unlink((directory + "\\" + found.cFileName).c_str());
            } while (::FindNextFileA(search.get(), &found));
        }
    }
    // Files of other kinds stay, and with them the directory.
    ::_rmdir(directory.c_str());
    if (currentCategory < static_cast<long>(categoryNames.size()))
        categoryNames.erase(categoryNames.begin() + currentCategory);
    currentCategory = categoryNames.empty() ? -1 : 0;
}

void CThumbnailLibrary::SetCurrentCategory(long index) {
    if (index == currentCategory) return;
    ClearItems();
    currentCategory = index;
}

std::string CThumbnailLibrary::CategoryName(long index) const {
    if (index < 0 || index >= static_cast<long>(categoryNames.size())) return std::string();
    return categoryNames[static_cast<size_t>(index)];
}

void CThumbnailLibrary::GetCategoryDirectory(foundation::CFilePath& out) const {
    out.path = rootDirectory.path + "\\" + CategoryName(currentCategory);
}

std::string CThumbnailLibrary::GetCategoryPath(long index) const {
    if (index < 0) {
        foundation::CFilePath directory;
        GetCategoryDirectory(directory);
        return directory.path;
    }
    if (index < static_cast<long>(categoryNames.size()))
        return rootDirectory.path + "\\" + CategoryName(index);
    return std::string();
}

int CThumbnailLibrary::AddItem(const foundation::CFilePath* picture, bool relative) {
    if (picture == nullptr) return kAddItemNotAPicture;
    // The query wants a writable buffer of at least 255 characters.
    std::vector<char> path(std::max<size_t>(picture->path.size() + 1, 256), '\0');
    std::memcpy(path.data(), picture->path.data(), picture->path.size());
    imaging::FileInfo info{};
    if (imaging::QueryFileInfo(path.data(), &info, 0, nullptr) == imaging::kErrorUnknownFormat)
        return kAddItemNotAPicture;
    if (currentCategory < 0) return kAddItemNoCategory;

    auto owned = std::make_unique<CThumbnailItem>();
    if (relative)
        owned->LoadFromFileRelative(picture);
    else
        owned->LoadFromFile(picture);
    CThumbnailItem* item = owned.get();
    items.Add(item);
    owned.release();

    foundation::CFilePath thm;
    GetCategoryDirectory(thm);
    thm.path += "\\";
    thm.path += picture->GetFileTitle();
    thm.SetExtension("thm");
    item->WriteThm(&thm);
    return kAddItemStored;
}

CThumbnailItem* CThumbnailLibrary::GetItem(ptrdiff_t index) const {
    if (index < 0 || index >= items.GetSize()) return nullptr;
    return items[index];
}

std::string CThumbnailLibrary::GetItemPath(ptrdiff_t index) const {
    const CThumbnailItem* item = GetItem(index);
    if (item == nullptr) return std::string();
    foundation::CFilePath path;
    item->GetFullPath(path);
    return path.path;
}

std::string CThumbnailLibrary::GetItemFilePath(ptrdiff_t index) const {
    const CThumbnailItem* item = GetItem(index);
    return item != nullptr ? item->filePath.path : std::string();
}

int CThumbnailLibrary::DeleteItemFile(ptrdiff_t index) {
    const CThumbnailItem* item = GetItem(index);
    if (item == nullptr) return kDeleteItemFileNoItem;
    try {
        RemoveFile(item->filePath.path);
        return kDeleteItemFileRemoved;
    } catch (const FileError& error) {
        return error.Cause();
    }
}

ptrdiff_t CThumbnailLibrary::FindItem(const std::string& path) const {
    const std::string wanted = UpperCase(path);
    for (ptrdiff_t index = 0; index < items.GetSize(); ++index) {
        // Compared as terminated texts, as the paths were kept.
        if (std::strcmp(UpperCase(GetItemPath(index)).c_str(), wanted.c_str()) == 0) return index;
    }
    return -1;
}

void CThumbnailLibrary::ClearItems() {
    for (ptrdiff_t index = 0; index < items.GetSize(); ++index) {
        delete items[index];
        items[index] = nullptr;
    }
    items.RemoveAll();
}

}  // namespace thumbnails
