// The preview of one picture file: the file, whole in memory, becomes a
// bitmap that goes to the browser dialog in kPreviewReadyMessage. Whatever
// cannot be turned into a picture becomes the no-preview picture
// (NoPreviewPicture.h), so that every picture leaf has a cell. Windows only.
//
// Routes, chosen by the last four characters of the file name (leading dots
// removed), compared case-insensitively:
//   "WMF"               the metafile route: the metafile is played into a
//                       128 x 128 device bitmap, whatever the thumbnail size
//   "EPS", "TIF", "PNG" none: always the no-preview picture, even when the
//                       imaging layer could read the file
//   anything else       the imaging layer's route (BMP, JPG, JPEG, EMF, CMP)
// The bitmap keeps its own size; the dialog sizes it for the cell.
//
// Ownership of the pixels that kPreviewReadyMessage carries:
//   The message is sent, never posted: the record lives on the renderer's
//   stack and is valid only while the receiver runs. A receiver that keeps
//   the picture copies `record->bitmap` and returns kPreviewTaken (1, any
//   non-zero value counts): from then on it alone gives the pixels back
//   (FreeBitmap), and the renderer forgets them. An answer of 0 leaves the
//   pixels with the renderer, which frees the descriptor as it stands in the
//   record when SendMessage returns: so does a window without a handler
//   (DefWindowProc answers 0) and a window that is gone. A receiver that
//   answers 0 keeps no copy, and leaves `record->bitmap` describing the
//   pixels it was given, or the ones an in-place resize put there.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

#include "thumbnails/BitmapDescriptor.h"

namespace browser {

// Sent to PreviewRequest::targetWindow with wParam 0 and lParam a
// PreviewBitmapRecord*.
constexpr UINT kPreviewReadyMessage = WM_USER + 5;

// What the receiver of kPreviewReadyMessage returns when it has taken over
// the record's pixels; 0 leaves them to the renderer, which frees them.
constexpr LRESULT kPreviewTaken = 1;

// The thumbnail sizes that the dialog asks for.
constexpr int32_t kLargeThumbnailSize = 128;
constexpr int32_t kSmallThumbnailSize = 64;

// One picture file handed to RenderPreview; cleared to zero before use.
struct PreviewRequest {
    uint32_t dataLength;      // bytes at fileData
    int32_t thumbnailSize;    // kLargeThumbnailSize or kSmallThumbnailSize
    char fileName[512];       // the file-name part of the path; need not be terminated
    const uint8_t* fileData;  // the whole file; stays the caller's
    HWND targetWindow;        // receives kPreviewReadyMessage
};

// The lParam of kPreviewReadyMessage; cleared before use.
struct PreviewBitmapRecord {
    uint32_t reserved;                 // 0, not read
    int32_t thumbnailSize;             // the request's, not read by the dialog
    char fileName[520];                // the request's, always terminated; not read by the dialog
    imaging::BitmapDescriptor bitmap;  // the rendered picture
};

#if UINTPTR_MAX == 0xFFFFFFFFu
static_assert(sizeof(PreviewBitmapRecord) == 684, "the record is 684 bytes on 32-bit builds");
static_assert(offsetof(PreviewBitmapRecord, bitmap) == 528, "the descriptor follows the name");
static_assert(sizeof(PreviewRequest) == 528, "the request is 528 bytes on 32-bit builds");
#else
// The descriptor's two pointers widen it to 176 bytes; it stays at 528.
static_assert(sizeof(PreviewBitmapRecord) == 704, "the record is 704 bytes on 64-bit builds");
static_assert(offsetof(PreviewBitmapRecord, bitmap) == 528, "the descriptor follows the name");
static_assert(sizeof(PreviewRequest) == 536, "the request is 536 bytes on 64-bit builds");
#endif

// Renders the request's file and sends kPreviewReadyMessage before it
// returns. 1 when the message went out with the no-preview picture; 0 when a
// picture went out on its own route, or when nothing was sent (an exception
// escaped the routes: it is logged as "Exception" under the source name
// "GraphicDlg"). Callers may ignore the result. Lets nothing out.
int RenderPreview(const PreviewRequest& request) noexcept;

// Resizes the bitmap in place to `width` x `height` fitted to its own aspect
// (FitRectToAspect), with kSizeResampleFavourBlack for a 1-bit grey picture
// and kSizeResample otherwise. True when the resize reports kSuccess; false
// at once for a null bitmap. With a height of 0, as both routes pass, the
// bitmap keeps its size: only the resize itself runs.
bool ScaleBitmapToFit(imaging::BitmapDescriptor* bitmap, int width, int height);

// Sets the rectangle's right and bottom so that its size has the aspect
// numerator : denominator, within its width and height: the height is kept
// and the width follows by MulDiv, unless that is too wide, when the width is
// kept and the height follows. A width below 1 becomes the numerator and a
// height below 1 the denominator, so an empty rectangle takes the size of the
// aspect itself. The results are clamped to the int range. Null is ignored.
void FitRectToAspect(RECT* rect, int numerator, int denominator);

}  // namespace browser
