#include "browser/PreviewRender.h"

#include <climits>
#include <cstring>
#include <string>

#include "browser/NoPreviewPicture.h"
#include "browser/PreviewBitmapOwner.h"
#include "browser/PreviewRoutes.h"
#include "foundation/ReportError.h"
#include "thumbnails/BitmapHelpers.h"
#include "thumbnails/Imaging.h"

namespace browser {

namespace {

// A handle that the metafile route deletes whatever happened, logging a
// failed deletion. Declared outside the route's try block, so that a thrown
// step is logged before the deletions are.
template <class Handle>
class LoggedDeletion {
public:
    using Deleter = BOOL (*)(Handle);
    LoggedDeletion(Deleter deleter, long line) noexcept : deleter_(deleter), line_(line) {}
    ~LoggedDeletion() {
        if (handle_ == nullptr) return;
        if (!deleter_(handle_))
            foundation::ReportErrorNumber(kPreviewSourceName, line_, static_cast<long>(::GetLastError()));
    }
    LoggedDeletion(const LoggedDeletion&) = delete;
    LoggedDeletion& operator=(const LoggedDeletion&) = delete;

    void Reset(Handle handle) noexcept { handle_ = handle; }
    Handle Get() const noexcept { return handle_; }

private:
    Deleter deleter_;
    long line_;
    Handle handle_ = nullptr;
};

HMETAFILE CreateCheckedMetafile(const uint8_t* bits, size_t size) {
    return thumbnails::CreateCheckedMetaFile(bits, size);
}

// Not released, on purpose: the metafile route has always kept the screen
// context it takes, and keeps doing so.
HDC ScreenContext() {
    return ::GetDC(nullptr);
}

BOOL DeleteMetafileHandle(HMETAFILE metafile) {
    return ::DeleteMetaFile(metafile);
}
BOOL DeleteBitmapHandle(HGDIOBJ bitmap) {
    return ::DeleteObject(bitmap);
}

bool EqualsIgnoringCase(const std::string& text, const char* word) {
    return ::lstrcmpiA(text.c_str(), word) == 0;
}

int ClampToInt(long long value) {
    if (value > INT_MAX) return INT_MAX;
    if (value < INT_MIN) return INT_MIN;
    return static_cast<int>(value);
}

}  // namespace

// ---- Parts ------------------------------------------------------------------

size_t PreviewFileNameLength(const PreviewRequest& request) {
    const void* end = std::memchr(request.fileName, '\0', sizeof request.fileName);
    if (end == nullptr) return sizeof request.fileName;
    return static_cast<size_t>(static_cast<const char*>(end) - request.fileName);
}

std::string PreviewFileType(const PreviewRequest& request) {
    const size_t length = PreviewFileNameLength(request);
    const size_t start = length > 4 ? length - 4 : 0;
    std::string type(request.fileName + start, length - start);
    const size_t firstKept = type.find_first_not_of('.');
    return firstKept == std::string::npos ? std::string() : type.substr(firstKept);
}

PreviewRoute ChoosePreviewRoute(const PreviewRequest& request) {
    const std::string type = PreviewFileType(request);
    if (EqualsIgnoringCase(type, "WMF")) return PreviewRoute::kMetafile;
    // These get the no-preview picture even when the layer could read them.
    if (EqualsIgnoringCase(type, "EPS") || EqualsIgnoringCase(type, "TIF") || EqualsIgnoringCase(type, "PNG"))
        return PreviewRoute::kPlaceholder;
    return PreviewRoute::kImaging;
}

MetafileLayout ReadMetafileLayout(const uint8_t* data, uint32_t length) {
    MetafileLayout layout;
    if (data == nullptr || length < 4) return layout;
    const uint32_t word = static_cast<uint32_t>(data[0]) | static_cast<uint32_t>(data[1]) << 8 |
                          static_cast<uint32_t>(data[2]) << 16 | static_cast<uint32_t>(data[3]) << 24;
    if (word == kPlaceableMetafileWord) {
        layout.kind = MetafileLayoutKind::kPlaceable;
        layout.headerBytes = kPlaceableHeaderSize;
    } else if (word == kPlainMetafileWord) {
        layout.kind = MetafileLayoutKind::kPlain;
        layout.headerBytes = 0;
    }
    return layout;
}

SIZE PackedSize(int32_t value) {
    const uint32_t bits = static_cast<uint32_t>(value);
    const int32_t low = static_cast<int32_t>(bits & 0xFFFFu);
    const int32_t high = static_cast<int32_t>(bits >> 16);
    return SIZE{low >= 0x8000 ? low - 0x10000 : low, high >= 0x8000 ? high - 0x10000 : high};
}

const MetafileRouteOperations& DefaultMetafileRouteOperations() {
    static const MetafileRouteOperations operations{&CreateCheckedMetafile,
                                                    &ScreenContext,
                                                    &thumbnails::RenderMetafileToBitmap,
                                                    &imaging::ConvertFromDeviceBitmap,
                                                    &ScaleBitmapToFit,
                                                    &DeleteMetafileHandle,
                                                    &DeleteBitmapHandle};
    return operations;
}

void SendPreviewBitmap(const PreviewRequest& request, imaging::BitmapDescriptor* bitmap) {
    PreviewBitmapRecord record;
    std::memset(&record, 0, sizeof record);
    record.thumbnailSize = request.thumbnailSize;
    // The record's field is longer than the request's, so the name always
    // fits with its terminator.
    static_assert(sizeof record.fileName > sizeof request.fileName, "room for the terminator");
    std::memcpy(record.fileName, request.fileName, PreviewFileNameLength(request));
    record.bitmap = *bitmap;
    *bitmap = imaging::BitmapDescriptor{};
    const LRESULT answer =
        ::SendMessageA(request.targetWindow, kPreviewReadyMessage, 0, reinterpret_cast<LPARAM>(&record));
    if (answer == 0) imaging::FreeBitmap(&record.bitmap);
}

// ---- The routes ---------------------------------------------------------------

bool RenderMetafilePreview(const PreviewRequest& request, const MetafileRouteOperations& operations) {
    bool sent = false;
    // Declared in this order so that the metafile goes first, then the bitmap,
    // and outside the try block so that a failed step is logged before them.
    LoggedDeletion<HGDIOBJ> deviceBitmap(operations.deleteBitmap, __LINE__);
    LoggedDeletion<HMETAFILE> metafile(operations.deleteMetafile, __LINE__);
    // Taken at the failing call, before unwinding can touch it.
    DWORD stepError = 0;
    const auto failStep = [&stepError](int line) {
        stepError = ::GetLastError();
        throw line;
    };
    try {
        const MetafileLayout layout = ReadMetafileLayout(request.fileData, request.dataLength);
        if (layout.kind == MetafileLayoutKind::kUnknown) failStep(__LINE__);
        if (request.dataLength <= layout.headerBytes) failStep(__LINE__);
        metafile.Reset(operations.createMetafile(request.fileData + layout.headerBytes,
                                                 request.dataLength - layout.headerBytes));
        if (metafile.Get() == nullptr) failStep(__LINE__);
        const HDC screen = operations.screenContext();
        if (screen == nullptr) failStep(__LINE__);
        const HBITMAP played = operations.renderToBitmap(metafile.Get(), screen, kMetafileBitmapSide,
                                                         kMetafileBitmapSide, kMetafileBackground);
        deviceBitmap.Reset(played);
        if (played == nullptr) failStep(__LINE__);

        PreviewBitmapOwner bitmap;
        const int converted = operations.convertFromDeviceBitmap(screen, bitmap.Get(), played, 0);
        if (converted != imaging::kSuccess) {
            foundation::ReportErrorNumber(kPreviewSourceName, __LINE__, converted);
        } else {
            const SIZE size = PackedSize(request.thumbnailSize);
            if (!operations.scaleBitmapToFit(bitmap.Get(), size.cx, size.cy)) {
                foundation::ReportError(kPreviewSourceName, __LINE__);
            } else {
                imaging::BitmapDescriptor picture = bitmap.Release();
                SendPreviewBitmap(request, &picture);
                sent = true;
            }
        }
    } catch (int line) {
        foundation::ReportErrorNumber(kPreviewSourceName, line, static_cast<long>(stepError));
        sent = false;
    }
    return sent;
}

bool RenderImagingPreview(const PreviewRequest& request) {
    if (request.fileData == nullptr || request.dataLength == 0) return false;
    imaging::FileInfo info;
    std::memset(&info, 0, sizeof info);
    if (imaging::QueryMemoryInfo(request.fileData, &info, request.dataLength, 0, nullptr) !=
        imaging::kSuccess)
        return false;
    PreviewBitmapOwner bitmap;
    if (imaging::LoadBitmapMemory(request.fileData, bitmap.Get(), info.fileBitsPerPixel, info.fileOrder,
                                  request.dataLength, nullptr) != imaging::kSuccess)
        return false;
    const SIZE size = PackedSize(request.thumbnailSize);
    if (!ScaleBitmapToFit(bitmap.Get(), size.cx, size.cy)) return false;
    imaging::BitmapDescriptor picture = bitmap.Release();
    SendPreviewBitmap(request, &picture);
    return true;
}

void SendNoPreviewPicture(const PreviewRequest& request) {
    imaging::BitmapDescriptor picture{};
    if (MakeNoPreviewPicture(request.thumbnailSize, &picture) != imaging::kSuccess) THROW_LINE();
    SendPreviewBitmap(request, &picture);
}

int RenderPreviewWith(const PreviewRequest& request, const MetafileRouteOperations& operations) noexcept {
    try {
        bool placeholderWanted = true;
        switch (ChoosePreviewRoute(request)) {
            case PreviewRoute::kMetafile:
                placeholderWanted = !RenderMetafilePreview(request, operations);
                break;
            case PreviewRoute::kImaging: placeholderWanted = !RenderImagingPreview(request); break;
            case PreviewRoute::kPlaceholder: break;
        }
        if (!placeholderWanted) return 0;
        SendNoPreviewPicture(request);
        return 1;
    } catch (...) {
        foundation::ReportErrorMessage(foundation::kExceptionText, kPreviewSourceName, __LINE__);
        return 0;
    }
}

// ---- The seam -------------------------------------------------------------------

int RenderPreview(const PreviewRequest& request) noexcept {
    return RenderPreviewWith(request, DefaultMetafileRouteOperations());
}

bool ScaleBitmapToFit(imaging::BitmapDescriptor* bitmap, int width, int height) {
    RECT rect{0, 0, width, height};
    if (bitmap == nullptr) return false;
    FitRectToAspect(&rect, bitmap->width, bitmap->height);
    const uint32_t mode = (bitmap->bitsPerPixel > 1 || imaging::IsGrayScaleBitmap(bitmap) == 0)
                              ? imaging::kSizeResample
                              : imaging::kSizeResampleFavourBlack;
    const int fittedWidth = ClampToInt(static_cast<long long>(rect.right) - rect.left);
    const int fittedHeight = ClampToInt(static_cast<long long>(rect.bottom) - rect.top);
    return imaging::SizeBitmap(bitmap, fittedWidth, fittedHeight, mode) == imaging::kSuccess;
}

void FitRectToAspect(RECT* rect, int numerator, int denominator) {
    if (rect == nullptr) return;
    const int rectWidth = ClampToInt(static_cast<long long>(rect->right) - rect->left);
    // MulDiv answers -1 for a zero divisor and for an overflow: never a fault,
    // and a side below 1 falls back to the aspect's own term below.
    int h = ClampToInt(static_cast<long long>(rect->bottom) - rect->top);
    int w = ::MulDiv(h, numerator, denominator);
    if (w > rectWidth) {
        w = rectWidth;
        h = ::MulDiv(w, denominator, numerator);
    }
    if (w < 1) w = numerator;
    if (h < 1) h = denominator;
    rect->right = ClampToInt(static_cast<long long>(rect->left) + w);
    rect->bottom = ClampToInt(static_cast<long long>(rect->top) + h);
}

}  // namespace browser
