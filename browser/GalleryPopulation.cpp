// Filling the gallery. A container's thumbnails are read ready-made from the
// container and loaded in full; a single picture arrives from the preview
// renderer at its own size and is sized here for its cell. Every cell is a
// thumbnail item in this browser's library plus a gallery item pointing at
// it; both routes begin by emptying the library and the gallery.
#include <cstring>
#include <memory>

#include "browser/GraphicDlg.h"
#include "browser/PreviewRender.h"
#include "browser/WaitCursor.h"
#include "containers/ArtContainer.h"
#include "foundation/ReportError.h"
#include "gallery/ThumbnailGalleryItem.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/ThumbnailLibrary.h"

namespace browser {

namespace {

int32_t Truncated(int64_t numerator, int64_t denominator) {
    if (denominator == 0) THROW_LINE();
    const int64_t quotient = numerator / denominator;
    if (quotient > INT32_MAX || quotient < INT32_MIN) THROW_LINE();
    return static_cast<int32_t>(quotient);
}

// Appends `item` to the library, which owns it from then on; the item's
// address, which the gallery's cell keeps.
thumbnails::CThumbnailItem* AppendToLibrary(thumbnails::CThumbnailLibrary& library,
                                            std::unique_ptr<thumbnails::CThumbnailItem> item) {
    library.items.Add(item.get());
    return item.release();
}

// How many of the header's items can have an entry record in the file at
// all. A file that is no container can claim any count; the numbers beyond
// this one would each be read and found missing, one by one, which for a
// count in the billions never ends. Stopping there skips exactly the items
// that would have been skipped.
int32_t ReadableItemCount(const containers::CArtContainer& container, const std::string& path) {
    const int32_t count = container.GetItemCount();
    const containers::ArtEntryDirectory* directory = container.EntryDirectory();
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (count <= 0 || directory == nullptr ||
        !::GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data))
        return 0;
    const int64_t size = static_cast<int64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
    const int64_t room = size - int64_t{directory->entryTableOffset};
    // Item n's record begins (n - 1) records into the table. A record that
    // begins inside the file counts even when the file ends within it: the
    // reader reads what is there, and its rendition offsets may well be.
    const int64_t records =
        room > 0 ? (room + containers::kEntryRecordSize - 1) / containers::kEntryRecordSize : 0;
    return static_cast<int32_t>(records < count ? records : count);
}

// Keeps a visible gallery from drawing while it is filled. Every item still
// sets the scroll range, but the platform redraws the bar at once each time
// the range changes, which under some window systems costs more than loading
// the thumbnail; the bar and the cells are drawn once, when the handler
// returns to the message loop, as the cells always were.
class RedrawSuspension {
public:
    explicit RedrawSuspension(HWND window)
        : window_(window != nullptr && ::IsWindowVisible(window) ? window : nullptr) {
        if (window_ != nullptr) ::SendMessageA(window_, WM_SETREDRAW, FALSE, 0);
    }
    ~RedrawSuspension() {
        if (window_ == nullptr) return;
        ::SendMessageA(window_, WM_SETREDRAW, TRUE, 0);
        ::RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME);
    }
    RedrawSuspension(const RedrawSuspension&) = delete;
    RedrawSuspension& operator=(const RedrawSuspension&) = delete;

private:
    HWND window_;
};

// The gallery is invalidated, with erase, after every item it gets. With no
// message pump in between, the invalidations of a whole fill make one update
// region, the whole gallery, so one invalidation when the fill ends (also
// when it ends early) leaves the window exactly as they do, and spares a
// round trip to the window system per item.
class InvalidationAtEnd {
public:
    explicit InvalidationAtEnd(const gallery::CBrowserGalleryWindow& window) : window_(window) {}
    ~InvalidationAtEnd() {
        if (pending_) window_.Invalidate(true);
    }
    InvalidationAtEnd(const InvalidationAtEnd&) = delete;
    InvalidationAtEnd& operator=(const InvalidationAtEnd&) = delete;

    void Add() { pending_ = true; }

private:
    const gallery::CBrowserGalleryWindow& window_;
    bool pending_ = false;
};

}  // namespace

// The 30 and the 20 come off the source height before the division; that
// asymmetry is how single pictures have always been sized.
SIZE LargePreviewSize(int width, int height) {
    if (width <= 0 || height <= 0) THROW_LINE();
    if (static_cast<int64_t>(width) * kLargeCell.cy > static_cast<int64_t>(height) * kLargeCell.cx)
        return SIZE{135, Truncated((static_cast<int64_t>(height) - 30) * 135, width)};
    return SIZE{Truncated(static_cast<int64_t>(width) * 140, height), 140};
}

SIZE SmallPreviewSize(int width, int height) {
    if (width <= 0 || height <= 0) THROW_LINE();
    if (static_cast<int64_t>(width) * kSmallPictureCell.cy >
        static_cast<int64_t>(height) * kSmallPictureCell.cx)
        return SIZE{57, Truncated((static_cast<int64_t>(height) - 20) * 57, width)};
    return SIZE{Truncated(static_cast<int64_t>(width) * 78, height), 78};
}

std::string ContainerItemPath(const std::string& containerPath, const std::string& itemPath) {
    const size_t dot = containerPath.find('.');
    const std::string stem = dot == std::string::npos ? containerPath : containerPath.substr(0, dot);
    const size_t slash = itemPath.rfind('\\');
    const std::string fileName = slash == std::string::npos ? itemPath : itemPath.substr(slash + 1);
    return stem + "\\" + fileName;
}

thumbnails::CThumbnailLibrary& CGraphicDlg::ThumbnailLibrary() {
    if (!thumbnailLibrary_) thumbnailLibrary_ = thumbnails::CThumbnailLibrary::Create();
    return *thumbnailLibrary_;
}

// ---- A container -------------------------------------------------------------------

void CGraphicDlg::ShowContainer(const std::string& path) {
    if (!gallery) return;
    try {
        WaitCursor wait;
        ThumbnailLibrary().ClearItems();
        gallery->RemoveAllItems();
        const bool large = largeThumbnails == 1;
        const SIZE cell = large ? kLargeCell : kSmallContainerCell;
        gallery->AssignCellSize(cell);

        containers::CArtContainer container;
        container.Init();
        // A container that will not open has told the user why; it shows nothing.
        const int32_t count = container.Open(path) ? ReadableItemCount(container, path) : 0;
        const RedrawSuspension quiet(gallery->Handle());
        // Declared after the suspension, so it ends first: the invalidation
        // comes before drawing is allowed again, as the last item's did.
        InvalidationAtEnd invalidation(*gallery);
        for (int32_t number = 1; number <= count; ++number) {
            int32_t size = 0;
            std::unique_ptr<uint8_t[]> rendition =
                container.ReadRendition(number, large ? kLargeRendition : kSmallRendition, &size);
            containers::ArtItemInfo info;
            container.GetItemInfo(number, info);
            imaging::FileInfo fileInfo = {};
            if (rendition == nullptr || size <= 0 ||
                imaging::QueryMemoryInfo(rendition.get(), &fileInfo, static_cast<uint32_t>(size), 0,
                                         nullptr) != imaging::kSuccess)
                continue;  // the item is missing; the cells after it move up
            auto item = std::make_unique<thumbnails::CThumbnailItem>();
            if (imaging::LoadBitmapMemory(rendition.get(), &item->bitmap, fileInfo.fileBitsPerPixel,
                                          fileInfo.fileOrder, static_cast<uint32_t>(size),
                                          nullptr) != imaging::kSuccess)
                continue;  // nothing to show, and no memory to write the path into
            // The item's path overlays the start of the picture's memory, as
            // it always has; the copy stays within the storage and ends there.
            if (item->bitmap.storage != nullptr && item->bitmap.storageSize > 0) {
                const size_t room = item->bitmap.storageSize;
                const size_t length = info.path.size() < room ? info.path.size() : room - 1;
                std::memcpy(item->bitmap.storage, info.path.data(), length);
                static_cast<char*>(item->bitmap.storage)[length] = '\0';
            }
            item->filePath.path = ContainerItemPath(path, info.path);
            thumbnails::CThumbnailItem* thumbnail = AppendToLibrary(ThumbnailLibrary(), std::move(item));
            gallery->AddItem(
                std::make_unique<gallery::CThumbnailGalleryItem>(thumbnail, cell, std::string(), FALSE),
                TRUE);
            invalidation.Add();
        }
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
    }
}

// ---- A single picture --------------------------------------------------------------

LRESULT CGraphicDlg::OnPreviewReady(WPARAM, LPARAM lParam) {
    // Set once the picture's pixels belong to a thumbnail item: from then on
    // the renderer must not free them, whatever happens here.
    LRESULT taken = 0;
    try {
        GraphicItemInfo local = EmptyItemInfo();
        ThumbnailLibrary().ClearItems();
        if (!gallery) THROW_LINE();
        gallery->RemoveAllItems();
        gallery->SetSelection(-1);
        const bool large = largeThumbnails == 1;
        gallery->AssignCellSize(large ? kLargeCell : kSmallPictureCell);
        if (lParam == 0) THROW_LINE();
        auto* record = reinterpret_cast<PreviewBitmapRecord*>(lParam);
        const int width = record->bitmap.width;
        const int height = record->bitmap.height;
        if (large) {
            const SIZE target = LargePreviewSize(width, height);
            imaging::SizeBitmap(&record->bitmap, target.cx, target.cy, imaging::kSizeResample);
        }

        const std::string path = GetSelectedPath();
        auto item = std::make_unique<thumbnails::CThumbnailItem>();
        item->bitmap = record->bitmap;
        taken = kPreviewTaken;
        item->filePath.path = path;
        thumbnails::CThumbnailItem* thumbnail = AppendToLibrary(ThumbnailLibrary(), std::move(item));

        SIZE cell = kLargeCell;
        if (!large) {
            const SIZE target = SmallPreviewSize(width, height);
            imaging::SizeBitmap(&record->bitmap, target.cx, target.cy, imaging::kSizeResample);
            // The resize gave the pixels new storage; the item follows it.
            thumbnail->bitmap = record->bitmap;
            cell = kSmallPictureCell;
        }
        gallery->AddItem(
            std::make_unique<gallery::CThumbnailGalleryItem>(thumbnail, cell, std::string(), FALSE), TRUE);
        gallery->Invalidate(true);
        gallery->SetSelection(0);
        ResetGalleryScrollBar();

        local = MakeItemInfo(1, 0, path);
        itemInfo = local;
        FireItemSel(local);
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
    }
    return taken;
}

}  // namespace browser
