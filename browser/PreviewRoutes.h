// The parts of the preview renderer (PreviewRender.h) one by one: the choice
// of route, the metafile layout, the packed thumbnail size, the two routes
// and the message that carries a bitmap. The dialog needs only
// PreviewRender.h; these are here so that each step can be driven on its own,
// and so that the metafile route's platform calls can be replaced to reach
// the failures that a healthy system never shows. Windows only.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "browser/PreviewRender.h"
#include "thumbnails/BitmapDescriptor.h"

namespace browser {

// The source name under which the renderer's failures are logged: the
// dialog's module, whose name the log has always carried for them.
inline constexpr char kPreviewSourceName[] = "GraphicDlg";

// The device bitmap of the metafile route is this square, whatever the
// thumbnail size.
constexpr int kMetafileBitmapSide = 128;
constexpr COLORREF kMetafileBackground = 0xFFFFFF;

enum class PreviewRoute {
    kMetafile,     // "WMF"
    kPlaceholder,  // "EPS", "TIF", "PNG"
    kImaging,      // anything else
};

// The characters of fileName up to its first NUL, at most sizeof
// PreviewRequest::fileName of them.
size_t PreviewFileNameLength(const PreviewRequest& request);

// The last four characters of the name (all of a shorter one) with leading
// dots removed: "x.jpeg" gives "jpeg", "pic.wmf" "wmf", "a.b" "a.b".
std::string PreviewFileType(const PreviewRequest& request);
PreviewRoute ChoosePreviewRoute(const PreviewRequest& request);

// How the metafile route reads the first word of the data.
enum class MetafileLayoutKind {
    kUnknown,    // fewer than four bytes, or a first word of neither kind
    kPlaceable,  // 0x9AC6CDD7: a 22-byte header before the metafile
    kPlain,      // 0x00090001: the metafile's own header at once
};

struct MetafileLayout {
    MetafileLayoutKind kind = MetafileLayoutKind::kUnknown;
    size_t headerBytes = 0;  // bytes to skip before the bits that GDI takes
};

constexpr uint32_t kPlaceableMetafileWord = 0x9AC6CDD7u;
constexpr uint32_t kPlainMetafileWord = 0x00090001u;
constexpr size_t kPlaceableHeaderSize = 22;

// The layout by the first four bytes, read little-endian; kUnknown for null
// data or fewer than four bytes.
MetafileLayout ReadMetafileLayout(const uint8_t* data, uint32_t length);

// The size that the platform's packed-size constructor makes of a 32-bit
// value: the low 16 bits as width, the high 16 bits as height, each
// sign-extended. 128 gives 128 x 0.
SIZE PackedSize(int32_t value);

// The platform calls of the metafile route. The defaults are the real ones;
// a test replaces some to see the route's answer to their failures.
struct MetafileRouteOperations {
    // A metafile from its bits (its own header first), made only when the
    // bits pass the structure check.
    HMETAFILE (*createMetafile)(const uint8_t* bits, size_t size);
    // The screen's context, which the route does not release.
    HDC (*screenContext)();
    HBITMAP (*renderToBitmap)(HMETAFILE metafile, HDC reference, int width, int height, COLORREF background);
    int (*convertFromDeviceBitmap)(HDC dc, imaging::BitmapDescriptor* bitmap, HBITMAP deviceBitmap,
                                   uint32_t flags);
    bool (*scaleBitmapToFit)(imaging::BitmapDescriptor* bitmap, int width, int height);
    BOOL (*deleteMetafile)(HMETAFILE metafile);
    BOOL (*deleteBitmap)(HGDIOBJ bitmap);
};

const MetafileRouteOperations& DefaultMetafileRouteOperations();

// The metafile route: true when it sent the picture, false when the
// no-preview picture is wanted. Its failures are logged under
// kPreviewSourceName: a thrown step with GetLastError, the conversion with
// the imaging layer's result, the scaling bare, a failed deletion with
// GetLastError. Exceptions other than a thrown step pass through, after the
// metafile and the device bitmap are deleted.
bool RenderMetafilePreview(const PreviewRequest& request, const MetafileRouteOperations& operations);

// The imaging layer's route: true when it sent the picture, false when the
// no-preview picture is wanted. Nothing is logged.
bool RenderImagingPreview(const PreviewRequest& request);

// Draws the no-preview picture at the request's thumbnail size and sends it.
// Throws when the picture cannot be made (a size the layer refuses, a
// failing drawing call); nothing is sent then.
void SendNoPreviewPicture(const PreviewRequest& request);

// RenderPreview with the metafile route's calls given.
int RenderPreviewWith(const PreviewRequest& request, const MetafileRouteOperations& operations) noexcept;

// Fills a record from the request and the bitmap and sends it. `bitmap`'s
// pixels pass to the receiver when it answers non-zero (kPreviewTaken), and
// are freed here when it answers 0; `bitmap` is left empty in both cases.
void SendPreviewBitmap(const PreviewRequest& request, imaging::BitmapDescriptor* bitmap);

}  // namespace browser
