// Items from the pictures of a folder, through the imaging layer: each file
// is read whole, recognised by its content, decoded once at 24 bits and
// resampled from that decoding into each rendition's box.
#include <windows.h>

#include <algorithm>

#include "containers/ArtFormat.h"
#include "foundation/SortStrings.h"
#include "framework/win32/UniqueHandle.h"
#include "thumbnails/Imaging.h"
#include "tools/qlt/FolderSource.h"
#include "tools/qlt/KeywordFile.h"
#include "tools/qlt/Manifest.h"
#include "tools/qlt/RenditionEncoder.h"
#include "tools/qlt/RenditionFit.h"

namespace qlt {

namespace {

struct FindHandleTraits {
    using Handle = HANDLE;
    static Handle Invalid() { return INVALID_HANDLE_VALUE; }
    static void Release(Handle handle) { ::FindClose(handle); }
};
using UniqueFind = framework::win32::UniqueHandle<FindHandleTraits>;

// A descriptor whose pixels are given back when the scope ends.
class OwnedBitmap {
public:
    OwnedBitmap() = default;
    ~OwnedBitmap() { imaging::FreeBitmap(&bitmap_); }
    OwnedBitmap(const OwnedBitmap&) = delete;
    OwnedBitmap& operator=(const OwnedBitmap&) = delete;

    imaging::BitmapDescriptor* Get() { return &bitmap_; }
    const imaging::BitmapDescriptor& operator*() const { return bitmap_; }

private:
    imaging::BitmapDescriptor bitmap_{};
};

std::string SystemText(DWORD code) {
    char buffer[512] = {};
    const DWORD length = ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                          code, 0, buffer, sizeof buffer, nullptr);
    std::string text(buffer, length);
    while (!text.empty() &&
           (text.back() == '\n' || text.back() == '\r' || text.back() == '.' || text.back() == ' '))
        text.pop_back();
    return text.empty() ? "system error " + std::to_string(code) : text;
}

std::string JoinPath(const std::string& folder, const std::string& name) {
    if (folder.empty()) return name;
    const char last = folder.back();
    if (last == '\\' || last == '/' || last == ':') return folder + name;
    // The folder's own separator, so that messages show one style of path.
    const bool slashes = folder.find('/') != std::string::npos && folder.find('\\') == std::string::npos;
    return folder + (slashes ? "/" : "\\") + name;
}

// Why the imaging layer refused a picture of a format it knows.
std::string ImagingFailure(int result) {
    switch (result) {
        case imaging::kErrorCorrupt: return "its data is damaged";
        case imaging::kErrorTooLarge:
            return "it is larger than the imaging layer takes (16384 pixels a side, 64 megapixels)";
        case imaging::kErrorNoMemory: return "there is not enough memory for it";
        case imaging::kErrorUnsupported: return "it uses a variant of its format that is not supported";
        case imaging::kErrorFileRead: return "it can't be read";
        default: return "the imaging layer answers " + std::to_string(result);
    }
}

// The file names of the folder, subfolders left out, in a stable order:
// without regard to case as the system sorts names, and names that differ
// only in case by their bytes.
bool ListFolder(const std::string& folder, std::vector<std::string>& names, std::string& error) {
    const DWORD attributes = ::GetFileAttributesA(folder.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        error = folder + ": " + SystemText(::GetLastError());
        return false;
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        error = folder + ": not a folder";
        return false;
    }
    WIN32_FIND_DATAA found{};
    UniqueFind find(::FindFirstFileA(JoinPath(folder, "*").c_str(), &found));
    if (!find) {
        const DWORD code = ::GetLastError();
        if (code == ERROR_FILE_NOT_FOUND || code == ERROR_NO_MORE_FILES) return true;
        error = folder + ": " + SystemText(code);
        return false;
    }
    do {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) continue;
        names.emplace_back(found.cFileName);
    } while (::FindNextFileA(find.Get(), &found));
    const DWORD code = ::GetLastError();
    if (code != ERROR_NO_MORE_FILES) {
        error = folder + ": " + SystemText(code);
        return false;
    }
    std::sort(names.begin(), names.end());
    foundation::SortStrings(names);
    return true;
}

std::string StemOf(const std::string& name) {
    const size_t dot = name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

class FolderScan {
public:
    FolderScan(const FolderRequest& request, FolderResult& result) : request_(request), result_(result) {}

    bool Run(std::vector<containers::ArtItemSource>& items);

private:
    void LoadKeywords();
    // Makes the item of one file; false when the file is passed over or fails.
    bool MakeItem(const std::string& name, containers::ArtItemSource& item);
    void Note(const std::string& text) { result_.notes.push_back(text); }
    void Fail(FolderStatus status, const std::string& message) {
        result_.messages.push_back(message);
        if (result_.status == FolderStatus::kOk || status == FolderStatus::kUnreadable)
            result_.status = status;
    }

    const FolderRequest& request_;
    FolderResult& result_;
    RenditionEncoder encoder_;
    KeywordFile keywords_;
};

void FolderScan::LoadKeywords() {
    if (request_.keywordFile.empty()) return;
    std::vector<uint8_t> bytes;
    std::string error;
    if (!ReadWholeFile(request_.keywordFile, bytes, error)) {
        Fail(FolderStatus::kUnreadable, error);
        return;
    }
    keywords_ = ParseKeywordFile(std::string(bytes.begin(), bytes.end()), request_.keywordFile);
    for (const std::string& message : keywords_.messages) Fail(FolderStatus::kProblems, message);
}

bool FolderScan::MakeItem(const std::string& name, containers::ArtItemSource& item) {
    const std::string path = JoinPath(request_.folder, name);
    std::vector<uint8_t> bytes;
    std::string error;
    if (!ReadWholeFile(path, bytes, error)) {
        Fail(FolderStatus::kUnreadable, error);
        return false;
    }
    if (bytes.empty()) {
        Note(path + ": an empty file, not a picture; passed over");
        return false;
    }
    if (bytes.size() > imaging::kMaxInputBytes) {
        Fail(FolderStatus::kProblems, path + ": too large for the imaging layer");
        return false;
    }
    const uint32_t size = static_cast<uint32_t>(bytes.size());
    imaging::FileInfo info{};
    const int query = imaging::QueryMemoryInfo(bytes.data(), &info, size, 0, nullptr);
    if (query == imaging::kErrorUnknownFormat) {
        Note(path + ": not a picture; passed over");
        return false;
    }
    if (query != imaging::kSuccess) {
        Fail(FolderStatus::kProblems, path + ": a picture that can't be read: " + ImagingFailure(query));
        return false;
    }
    const std::string format = info.formatName;
    OwnedBitmap picture;
    const int load =
        imaging::LoadBitmapMemory(bytes.data(), picture.Get(), 24, imaging::kColorOrderBgr, size, nullptr);
    if (load != imaging::kSuccess) {
        Fail(FolderStatus::kProblems, path + ": can't be decoded as " + format + ": " + ImagingFailure(load));
        return false;
    }
    if (name.size() > containers::kMaxEntryTextLength) {
        Fail(FolderStatus::kProblems, path + ": the file name is longer than " +
                                          std::to_string(containers::kMaxEntryTextLength) +
                                          " characters, more than an entry holds");
        return false;
    }
    item.name = StemOf(name);
    item.path = name;
    item.method = request_.method;
    for (int32_t kind : containers::kRenditionKinds) {
        const RenditionSize fit = FitIntoBox((*picture).width, (*picture).height, RenditionBoxEdge(kind));
        OwnedBitmap rendition;
        int sized = imaging::CopyBitmap(rendition.Get(), &*picture);
        if (sized == imaging::kSuccess)
            sized = imaging::SizeBitmap(rendition.Get(), fit.width, fit.height, imaging::kSizeResample);
        if (sized != imaging::kSuccess) {
            Fail(FolderStatus::kProblems, path + ": the rendition of " + std::to_string(fit.width) + " x " +
                                              std::to_string(fit.height) +
                                              " can't be made: " + ImagingFailure(sized));
            return false;
        }
        containers::ArtRenditionSource source;
        source.kind = kind;
        if (!encoder_.Encode(*rendition, request_.format, source.payload, error)) {
            Fail(FolderStatus::kProblems,
                 path + ": the rendition of kind " + std::to_string(kind) + " can't be encoded: " + error);
            return false;
        }
        item.renditions.push_back(std::move(source));
    }
    item.data = std::move(bytes);
    return true;
}

bool FolderScan::Run(std::vector<containers::ArtItemSource>& items) {
    // A bad keyword file doesn't end the scan: every problem is listed at once.
    LoadKeywords();
    std::vector<std::string> names;
    std::string error;
    if (!ListFolder(request_.folder, names, error)) {
        Fail(FolderStatus::kUnreadable, error);
        return false;
    }
    std::vector<std::string> itemFiles;
    std::vector<std::string> skippedFiles;
    for (const std::string& name : names) {
        containers::ArtItemSource item;
        const size_t failures = result_.messages.size();
        if (MakeItem(name, item)) {
            items.push_back(std::move(item));
            itemFiles.push_back(name);
        } else if (result_.messages.size() == failures) {
            skippedFiles.push_back(name);
        }
    }
    if (result_.status != FolderStatus::kOk) return false;
    if (items.empty()) {
        Fail(FolderStatus::kProblems, request_.folder + ": no pictures in the folder");
        return false;
    }
    std::vector<std::string> messages;
    const std::vector<std::vector<std::string>> words =
        AssignKeywords(keywords_, itemFiles, skippedFiles, request_.keywordFile, messages);
    for (const std::string& message : messages) Fail(FolderStatus::kProblems, message);
    for (size_t i = 0; i < items.size(); ++i) items[i].keywords = words[i];
    return result_.status == FolderStatus::kOk;
}

}  // namespace

bool CanCreateFromFolder() {
    return true;
}

FolderResult AddFolderItems(const FolderRequest& request, containers::ArtContainerWriter& writer) {
    FolderResult result;
    std::vector<containers::ArtItemSource> items;
    if (!FolderScan(request, result).Run(items)) return result;
    for (containers::ArtItemSource& item : items) writer.AddItem(std::move(item));
    return result;
}

}  // namespace qlt
