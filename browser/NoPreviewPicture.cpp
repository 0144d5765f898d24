#include "browser/NoPreviewPicture.h"

#include <cstring>
#include <string>
#include <utility>

#include "browser/NoPreviewFace.h"
#include "browser/PreviewBitmapOwner.h"
#include "framework/win32/GdiHandles.h"
#include "thumbnails/Imaging.h"

namespace browser {

namespace {

using framework::win32::SelectionGuard;
using framework::win32::UniqueFont;

// A context of CreateBitmapContext; deleting it is what copies the drawing
// into the bitmap, so the normal path deletes it explicitly and checks.
class BitmapContext {
public:
    explicit BitmapContext(imaging::BitmapDescriptor* bitmap) : dc_(imaging::CreateBitmapContext(bitmap)) {}
    ~BitmapContext() { Delete(); }
    BitmapContext(const BitmapContext&) = delete;
    BitmapContext& operator=(const BitmapContext&) = delete;

    HDC Get() const { return dc_; }
    int Delete() {
        if (dc_ == nullptr) return imaging::kSuccess;
        return imaging::DeleteBitmapContext(std::exchange(dc_, nullptr));
    }

private:
    HDC dc_;
};

constexpr int32_t kBookmanStoredWidth = 128;

bool IsStoredTurned(int32_t viewPerspective) {
    return viewPerspective == 4 || viewPerspective == 5 || viewPerspective == 7 || viewPerspective == 8;
}

}  // namespace

SIZE DisplayedSize(const imaging::BitmapDescriptor& bitmap) {
    if (IsStoredTurned(bitmap.viewPerspective)) return SIZE{bitmap.height, bitmap.width};
    return SIZE{bitmap.width, bitmap.height};
}

NoPreviewLayout LayoutNoPreviewPicture(const imaging::BitmapDescriptor& bitmap) {
    const SIZE shown = DisplayedSize(bitmap);
    const int w = shown.cx;
    const int h = shown.cy;
    NoPreviewLayout layout{};
    layout.width = w;
    layout.height = h;
    // The test is on the stored width, not the displayed one.
    if (bitmap.width == kBookmanStoredWidth) {
        layout.fontHeight = h / 5;
        layout.face = kLargeNoPreviewFace;
    } else {
        layout.fontHeight = h / 4;
        layout.face = kSmallNoPreviewFace;
    }
    const int top = h / 8;
    layout.lines[0] = NoPreviewTextLine{kNoPreviewFirstLine, w / 3, top};
    layout.lines[1] = NoPreviewTextLine{kNoPreviewSecondLine, w / 6, top + layout.fontHeight};
    layout.lines[2] = NoPreviewTextLine{kNoPreviewThirdLine, w / 8, top + 2 * layout.fontHeight};
    return layout;
}

LOGFONTA NoPreviewFont(HDC dc, const NoPreviewLayout& layout) {
    LOGFONTA font{};
    font.lfHeight = layout.fontHeight;
    const std::string face = ResolveSerifFace(dc, layout.face, layout.fontHeight);
    ::lstrcpynA(font.lfFaceName, face.c_str(), LF_FACESIZE);
    return font;
}

int DrawNoPreviewText(imaging::BitmapDescriptor* bitmap) {
    if (bitmap == nullptr) return imaging::kErrorInvalidParameter;
    const NoPreviewLayout layout = LayoutNoPreviewPicture(*bitmap);
    BitmapContext context(bitmap);
    const HDC dc = context.Get();
    if (dc == nullptr) return imaging::kErrorPlatform;
    {
        const LOGFONTA request = NoPreviewFont(dc, layout);
        UniqueFont font(::CreateFontIndirectA(&request));
        if (!font) return imaging::kErrorPlatform;
        // Declared after the font, so the old font is back before it is deleted.
        SelectionGuard selection(dc, font.Get());
        if (!selection.Succeeded()) return imaging::kErrorPlatform;
        for (const NoPreviewTextLine& line : layout.lines) {
            const int length = static_cast<int>(std::strlen(line.text));
            if (!::TextOutA(dc, line.x, line.y, line.text, length)) return imaging::kErrorPlatform;
        }
    }
    return context.Delete();
}

int MakeNoPreviewPicture(int32_t size, imaging::BitmapDescriptor* bitmap) {
    if (bitmap == nullptr) return imaging::kErrorInvalidParameter;
    PreviewBitmapOwner picture;
    int result = imaging::CreateBitmap(picture.Get(), imaging::kMemoryConventional, size, size, 24,
                                       imaging::kColorOrderBgr, nullptr, 0, nullptr, 0);
    if (result != imaging::kSuccess) return result;
    result = imaging::FillBitmap(picture.Get(), 0xFFFFFF);
    if (result != imaging::kSuccess) return result;
    result = DrawNoPreviewText(picture.Get());
    if (result != imaging::kSuccess) return result;
    *bitmap = picture.Release();
    return imaging::kSuccess;
}

}  // namespace browser
