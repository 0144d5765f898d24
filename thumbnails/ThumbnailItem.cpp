#include "thumbnails/ThumbnailItem.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <vector>

#include "framework/win32/MemoryHandles.h"
#include "thumbnails/FileError.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/ThmFile.h"
#include "thumbnails/ThumbnailFit.h"

namespace thumbnails {

foundation::CFilePath thumbnailRoot;

namespace {

std::mutex& ThumbnailRootLock() {
    static std::mutex lock;
    return lock;
}

using framework::win32::GlobalLockView;
using framework::win32::UniqueFile;
using framework::win32::UniqueGlobal;

[[noreturn]] void ThrowFileError(const std::string& path) {
    const DWORD error = ::GetLastError();
    throw FileError(FileErrorCauseFromOsError(error), error, path);
}

// Reads a whole file through ReadFile, however large the requests.
class ThmFileSource : public ThmByteSource {
public:
    ThmFileSource(HANDLE file, uint64_t size) : file_(file), remaining_(size) {}

    size_t Read(void* buffer, size_t count) override {
        size_t done = 0;
        auto* bytes = static_cast<uint8_t*>(buffer);
        while (done < count) {
            const DWORD chunk = static_cast<DWORD>(std::min<size_t>(count - done, 1u << 30));
            DWORD read = 0;
            if (!::ReadFile(file_, bytes + done, chunk, &read, nullptr) || read == 0) break;
            done += read;
        }
        remaining_ -= std::min<uint64_t>(remaining_, done);
        return done;
    }
    uint64_t Remaining() const override { return remaining_; }

private:
    HANDLE file_;
    uint64_t remaining_;
};

void WriteAll(HANDLE file, const uint8_t* data, size_t size, const std::string& path) {
    size_t done = 0;
    while (done < size) {
        const DWORD chunk = static_cast<DWORD>(std::min<size_t>(size - done, 1u << 30));
        DWORD written = 0;
        if (!::WriteFile(file, data + done, chunk, &written, nullptr)) ThrowFileError(path);
        // A write that takes fewer bytes than it was given ran out of room.
        if (written != chunk) throw FileError(kCauseDiskFull, ERROR_DISK_FULL, path);
        done += written;
    }
}

}  // namespace

foundation::CFilePath ThumbnailRoot() {
    const std::lock_guard<std::mutex> hold(ThumbnailRootLock());
    return thumbnailRoot;
}

void SetThumbnailRoot(const foundation::CFilePath& root) {
    const std::lock_guard<std::mutex> hold(ThumbnailRootLock());
    thumbnailRoot = root;
}

CThumbnailItem::CThumbnailItem() : bitmap{} {}

CThumbnailItem::~CThumbnailItem() {
    if (filePath.path.empty() && !relativeName.empty()) return;
    imaging::ReleaseBitmap(&bitmap);
    imaging::FreeBitmap(&bitmap);
}

bool CThumbnailItem::LoadFromFile(const foundation::CFilePath* picture) {
    if (picture == nullptr) return false;
    filePath = *picture;
    return LoadAndFit(picture);
}

bool CThumbnailItem::LoadFromFileRelative(const foundation::CFilePath* picture) {
    if (picture == nullptr) return false;
    const std::string& path = picture->path;
    const size_t rootLength = ThumbnailRoot().path.size();
    relativeName = rootLength <= path.size() ? path.substr(rootLength) : std::string();
    return LoadAndFit(picture);
}

bool CThumbnailItem::LoadAndFit(const foundation::CFilePath* picture) {
    if (picture == nullptr) return false;
    if (imaging::LoadBitmapFile(picture->path.c_str(), &bitmap, 24, imaging::kColorOrderBgr, nullptr) !=
        imaging::kSuccess)
        return false;
    const ThumbnailSize size = FitIntoThumbnailBox(bitmap.width, bitmap.height);
    return imaging::SizeBitmap(&bitmap, size.width, size.height, imaging::kSizeResample) == imaging::kSuccess;
}

void CThumbnailItem::GetFullPath(foundation::CFilePath& out) const {
    if (!filePath.path.empty())
        out = filePath;
    else
        out.path = ThumbnailRoot().path + relativeName;
}

void CThumbnailItem::GetTitle(std::string& out) const {
    out = foundation::ExtractFileTitle(filePath.path.empty() ? relativeName : filePath.path);
}

bool CThumbnailItem::ReadThm(const foundation::CFilePath* thmPath) {
    if (thmPath == nullptr) throw FileError(kCauseBadPath, ERROR_INVALID_PARAMETER, std::string());
    const std::string& path = thmPath->path;
    // Others may read the file meanwhile, but not change it.
    UniqueFile file(::CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) ThrowFileError(path);
    LARGE_INTEGER length{};
    if (!::GetFileSizeEx(file.Get(), &length) || length.QuadPart < 0) return false;

    ThmFileSource source(file.Get(), static_cast<uint64_t>(length.QuadPart));
    ThmContents contents;
    const ThmReadStatus status = ReadThmContents(source, contents);
    if (contents.pathRead) filePath.path = contents.path;
    if (contents.nameRead) relativeName = contents.name;
    if (status != ThmReadStatus::kComplete) return false;

    const uint8_t none = 0;
    const uint8_t* image = contents.image.empty() ? &none : contents.image.data();
    return imaging::LoadBitmapMemory(image, &bitmap, 24, imaging::kColorOrderBgr,
                                     static_cast<uint32_t>(contents.image.size()),
                                     nullptr) == imaging::kSuccess;
}

bool CThumbnailItem::WriteThm(const foundation::CFilePath* thmPath) {
    if (thmPath == nullptr) throw FileError(kCauseBadPath, ERROR_INVALID_PARAMETER, std::string());
    const std::string& path = thmPath->path;
    // Created or truncated, and no one else's while it is written.
    UniqueFile file(::CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) ThrowFileError(path);

    HGLOBAL memory = nullptr;
    uint32_t size = 0;
    // Whatever the save answers, the file gets the image it produced: none
    // at all for a bitmap that cannot be saved.
    imaging::SaveBitmapMemory(&memory, &bitmap, imaging::kFormatBmp, 24, 0, &size, nullptr);
    UniqueGlobal image(memory);
    GlobalLockView view(image.Get());
    const auto* bytes = static_cast<const uint8_t*>(view.Data());
    const size_t imageSize = bytes != nullptr ? std::min<size_t>(size, view.Size()) : 0;

    const std::vector<uint8_t> header =
        EncodeThmHeader(filePath.path, relativeName, static_cast<uint32_t>(imageSize));
    WriteAll(file.Get(), header.data(), header.size(), path);
    WriteAll(file.Get(), bytes, imageSize, path);
    return true;
}

}  // namespace thumbnails
