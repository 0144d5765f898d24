// Plain BMP files through our own reader (thumbnails/BmpReader.h), giving
// the information record and the bitmap that the WIC path gives for them.
// A container's renditions are such files by default, and WIC's set-up for
// each of them cost more than the copy of their pixels.
#include "thumbnails/BitmapKernel.h"
#include "thumbnails/BmpReader.h"
#include "thumbnails/ImagingInternal.h"

namespace imaging::detail {

namespace {

// WIC's BMP decoder gives 96 dots per inch where either resolution is missing.
double Resolution(int32_t pelsPerMeter, int32_t otherPelsPerMeter) {
    if (pelsPerMeter == 0 || otherPelsPerMeter == 0) return 96.0;
    return pelsPerMeter * 0.0254;
}

// The depth a load at the file's own depth gives: palette pictures keep
// theirs, 32-bit files stay 32, the others become 24.
int32_t OwnDepth(const BmpLayout& layout) {
    return layout.bitsPerPixel == 16 ? 24 : layout.bitsPerPixel;
}

}  // namespace

int DecodePlainBmp(const uint8_t* data, size_t size, const BmpLayout& layout, const DecodeRequest& request) {
    const int32_t dpiX = Dpi(Resolution(layout.xPelsPerMeter, layout.yPelsPerMeter));
    const int32_t dpiY = Dpi(Resolution(layout.yPelsPerMeter, layout.xPelsPerMeter));
    if (request.info != nullptr) {
        FileInfo* info = request.info;
        BeginInfo(info, kFormatBmp, "BMP", size);
        info->width = layout.width;
        info->height = layout.height;
        info->xResolution = dpiX;
        info->yResolution = dpiY;
        info->fileBitsPerPixel = OwnDepth(layout);
        info->storedBitsPerPixel = layout.bitsPerPixel;
        if (layout.bitsPerPixel <= 8) {
            info->colorCount = static_cast<int32_t>(layout.paletteCount);
            bool grey = true;
            for (uint32_t i = 0; i < layout.paletteCount && grey; ++i) {
                const RgbQuad c = BmpPaletteEntry(data, layout, i);
                grey = c.red == c.green && c.green == c.blue;
            }
            info->isGrayScale = grey ? 1 : 0;
        }
    }
    if (request.bitmap == nullptr) return kSuccess;

    DecodeRequest load = request;
    if (load.bitsPerPixel == 0) load.bitsPerPixel = OwnDepth(layout);
    ScopedBitmap native;
    const int result = DecodeBmp(data, size, layout, load.bitsPerPixel == 32, native.Get());
    if (result != kSuccess) return result;
    native.Get()->xResolution = dpiX;
    native.Get()->yResolution = dpiY;
    return DeliverBitmap(native.Get(), load);
}

}  // namespace imaging::detail
