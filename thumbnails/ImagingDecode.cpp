// Decoding of raster pictures with the Windows Imaging Component.
//
// The container format comes from our own probe, and the decoder for exactly
// that format is created: what a picture is never depends on which codecs
// happen to be installed. Pixels arrive in one of two shapes:
//   - palette and grey formats of up to 8 bits keep their indices (2-bit ones
//     widened to 4), so a palette file loads at its own depth unchanged;
//   - everything else becomes 24-bit blue-green-red, or 32-bit with alpha
//     when the format carries transparency,
// and the kernel converts from there to the depth and order asked for.
#include <wincodec.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "framework/win32/ComPtr.h"
#include "thumbnails/BitmapKernel.h"
#include "thumbnails/ImagingInternal.h"
#include "thumbnails/ImagingThread.h"

namespace imaging::detail {

namespace {

using framework::win32::ComPtr;

struct ContainerFormat {
    PictureKind kind;
    const GUID* container;
    int32_t format;
    const char* name;
};

const ContainerFormat kContainers[] = {
    {PictureKind::kBmp, &GUID_ContainerFormatBmp, kFormatBmp, "BMP"},
    {PictureKind::kJpeg, &GUID_ContainerFormatJpeg, kFormatJpeg, "JPEG"},
    {PictureKind::kPng, &GUID_ContainerFormatPng, kFormatPng, "PNG"},
    {PictureKind::kGif, &GUID_ContainerFormatGif, kFormatGif, "GIF"},
    {PictureKind::kTiff, &GUID_ContainerFormatTiff, kFormatTiff, "TIFF"},
    {PictureKind::kIcon, &GUID_ContainerFormatIco, kFormatIcon, "ICO"},
};

// The depth a load at the file's own depth gives.
int32_t LoadDepth(const PixelShape& shape, const WICPixelFormatGUID& format) {
    if (shape.indexed || shape.grey) return shape.bits == 2 ? 4 : shape.bits;
    if (shape.alpha || IsEqualGUID(format, GUID_WICPixelFormat32bppBGR)) return 32;
    return 24;
}

struct Palette {
    std::vector<RgbQuad> colors;
    bool grey = true;
};

// A WIC colour is 0xAARRGGBB; a partly transparent entry is laid on white,
// as transparent pixels are everywhere in the layer.
RgbQuad OnWhite(WICColor color) {
    const uint32_t alpha = color >> 24;
    auto channel = [&](int shift) {
        const uint32_t value = (color >> shift) & 0xFF;
        return static_cast<uint8_t>((value * alpha + 255 * (255 - alpha) + 127) / 255);
    };
    return RgbQuad{channel(0), channel(8), channel(16), 0};
}

int ReadPalette(IWICImagingFactory* factory, IWICBitmapDecoder* decoder, IWICBitmapFrameDecode* frame,
                Palette* palette) {
    ComPtr<IWICPalette> wicPalette;
    if (FAILED(factory->CreatePalette(wicPalette.Put()))) return kErrorPlatform;
    // A GIF image without a palette of its own uses the file's.
    if (FAILED(frame->CopyPalette(wicPalette.Get())) && FAILED(decoder->CopyPalette(wicPalette.Get())))
        return kErrorCorrupt;
    UINT count = 0;
    if (FAILED(wicPalette->GetColorCount(&count)) || count == 0) return kErrorCorrupt;
    count = std::min<UINT>(count, 256);
    std::vector<WICColor> colors(count);
    UINT got = 0;
    if (FAILED(wicPalette->GetColors(count, colors.data(), &got)) || got == 0 || got > count)
        return kErrorCorrupt;
    palette->colors.clear();
    for (UINT i = 0; i < got; ++i) {
        const RgbQuad c = OnWhite(colors[i]);
        palette->colors.push_back(c);
        if (c.red != c.green || c.green != c.blue) palette->grey = false;
    }
    return kSuccess;
}

// Indices or grey levels, at 1, 4 or 8 bits.
int DecodeLowDepth(IWICBitmapFrameDecode* frame, const PixelShape& shape, const Palette& palette, UINT width,
                   UINT height, BitmapDescriptor* bitmap) {
    const int32_t depth = shape.bits == 2 ? 4 : shape.bits;
    int result = kernel::AllocateBitmap(bitmap, static_cast<int32_t>(width), static_cast<int32_t>(height),
                                        depth, kColorOrderBgr);
    if (result != kSuccess) return result;
    const int32_t entries = 1 << depth;
    if (shape.grey) {
        const int32_t levels = 1 << shape.bits;
        for (int32_t i = 0; i < levels; ++i) {
            const uint8_t level = static_cast<uint8_t>(i * 255 / (levels - 1));
            bitmap->palette[i] = RgbQuad{level, level, level, 0};
        }
        bitmap->colorCount = levels;
    } else {
        const int32_t count = std::min<int32_t>(entries, static_cast<int32_t>(palette.colors.size()));
        std::copy(palette.colors.begin(), palette.colors.begin() + count, bitmap->palette);
        bitmap->colorCount = count;
    }
    if (shape.bits == depth) {
        if (FAILED(frame->CopyPixels(nullptr, static_cast<UINT>(bitmap->bytesPerLine), bitmap->storageSize,
                                     static_cast<BYTE*>(bitmap->storage))))
            return kErrorCorrupt;
        return kSuccess;
    }
    // Two bits a pixel: widen each to a nibble.
    const UINT stride = (width * 2 + 31) / 32 * 4;
    std::vector<uint8_t> packed(static_cast<size_t>(stride) * height);
    if (FAILED(frame->CopyPixels(nullptr, stride, static_cast<UINT>(packed.size()), packed.data())))
        return kErrorCorrupt;
    for (UINT y = 0; y < height; ++y) {
        const uint8_t* in = packed.data() + static_cast<size_t>(y) * stride;
        uint8_t* out = kernel::Row(*bitmap, static_cast<int32_t>(y));
        for (UINT x = 0; x < width; ++x) {
            const uint32_t index = (in[x >> 2] >> (6 - 2 * (x & 3))) & 3u;
            out[x >> 1] = static_cast<uint8_t>((x & 1) != 0 ? out[x >> 1] | index : index << 4);
        }
    }
    return kSuccess;
}

HRESULT CopyConverted(IWICImagingFactory* factory, IWICBitmapFrameDecode* frame,
                      const WICPixelFormatGUID& source, const WICPixelFormatGUID& wanted,
                      BitmapDescriptor* bitmap) {
    const UINT stride = static_cast<UINT>(bitmap->bytesPerLine);
    BYTE* pixels = static_cast<BYTE*>(bitmap->storage);
    if (IsEqualGUID(source, wanted)) return frame->CopyPixels(nullptr, stride, bitmap->storageSize, pixels);
    ComPtr<IWICFormatConverter> converter;
    HRESULT hr = factory->CreateFormatConverter(converter.Put());
    if (FAILED(hr)) return hr;
    hr = converter->Initialize(frame, wanted, WICBitmapDitherTypeNone, nullptr, 0.0,
                               WICBitmapPaletteTypeCustom);
    if (FAILED(hr)) return hr;
    return converter->CopyPixels(nullptr, stride, bitmap->storageSize, pixels);
}

// Everything else: 24-bit, or 32-bit when there is transparency or 32 bits
// are asked for.
int DecodeTrueColor(IWICImagingFactory* factory, IWICBitmapFrameDecode* frame,
                    const WICPixelFormatGUID& format, const PixelShape& shape, bool want32, UINT width,
                    UINT height, BitmapDescriptor* bitmap) {
    const int32_t w = static_cast<int32_t>(width);
    const int32_t h = static_cast<int32_t>(height);
    const bool wide = shape.alpha || want32;
    int result = kernel::AllocateBitmap(bitmap, w, h, wide ? 32 : 24, kColorOrderBgr);
    if (result != kSuccess) return result;
    HRESULT hr = CopyConverted(factory, frame, format,
                               wide ? GUID_WICPixelFormat32bppBGRA : GUID_WICPixelFormat24bppBGR, bitmap);
    if (FAILED(hr) && !wide) {
        // Some converters reach 24 bits only by way of 32.
        FreeBitmap(bitmap);
        result = kernel::AllocateBitmap(bitmap, w, h, 32, kColorOrderBgr);
        if (result != kSuccess) return result;
        hr = CopyConverted(factory, frame, format, GUID_WICPixelFormat32bppBGRA, bitmap);
    }
    if (FAILED(hr)) {
        FreeBitmap(bitmap);
        return hr == WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT || hr == WINCODEC_ERR_UNSUPPORTEDOPERATION
                   ? kErrorUnsupported
                   : kErrorCorrupt;
    }
    return kSuccess;
}

}  // namespace

// A query keeps its decoder for the load of the same bytes that usually
// follows, up to this many pixels: a decoder may hold the whole picture.
constexpr uint64_t kKeptPixels = 4ull * 1024 * 1024;

int DecodeWithWic(const uint8_t* data, size_t size, const PictureProbe& probe, const DecodeRequest& request) {
    const ContainerFormat* container = nullptr;
    for (const ContainerFormat& candidate : kContainers) {
        if (candidate.kind == probe.kind) container = &candidate;
    }
    if (container == nullptr) return kErrorUnknownFormat;
    if (size > 0xFFFFFFFFu) return kErrorTooLarge;

    ImagingThread* thread = ImagingThread::Current();
    if (thread == nullptr) return kErrorPlatform;
    IWICImagingFactory* factory = thread->Factory();
    KeptDecoder& kept = thread->Kept();
    ComPtr<IWICStream> stream;
    ComPtr<IWICBitmapDecoder> decoder;
    ComPtr<IWICBitmapFrameDecode> frame;
    std::vector<uint8_t> keptBytes;  // what a kept stream reads, alive to the end of the load
    const bool query = request.bitmap == nullptr;
    const bool keep =
        query && static_cast<uint64_t>(probe.width) * static_cast<uint64_t>(probe.height) <= kKeptPixels;
    if (!query && kept.Holds(data, size)) {
        // The bytes the last query read: its decoder has done the reading.
        keptBytes.swap(kept.bytes);
        stream = std::move(kept.stream);
        decoder = std::move(kept.decoder);
        frame = std::move(kept.frame);
        kept.Clear();
    } else {
        kept.Clear();
        const BYTE* bytes = data;
        if (keep) {
            // The stream reads a copy: the caller's buffer may be gone or
            // reused by the time the load comes.
            kept.bytes.assign(data, data + size);
            bytes = kept.bytes.data();
        }
        if (FAILED(factory->CreateStream(stream.Put())) ||
            // WIC only reads through the stream; the cast is for its signature.
            FAILED(stream->InitializeFromMemory(const_cast<BYTE*>(bytes), static_cast<DWORD>(size))))
            return kErrorPlatform;
        if (FAILED(factory->CreateDecoder(*container->container, nullptr, decoder.Put())))
            return kErrorUnsupported;
        if (FAILED(decoder->Initialize(stream.Get(), WICDecodeMetadataCacheOnDemand))) return kErrorCorrupt;
    }
    UINT frames = 0;
    if (FAILED(decoder->GetFrameCount(&frames)) || frames == 0) return kErrorCorrupt;
    const UINT index = probe.kind == PictureKind::kIcon
                           ? std::min<UINT>(static_cast<UINT>(std::max(probe.bestFrame, 0)), frames - 1)
                           : 0;
    if (!frame && FAILED(decoder->GetFrame(index, frame.Put()))) return kErrorCorrupt;
    UINT width = 0, height = 0;
    if (FAILED(frame->GetSize(&width, &height)) || width == 0 || height == 0) return kErrorCorrupt;
    if (width > static_cast<UINT>(kMaxSide) || height > static_cast<UINT>(kMaxSide) ||
        static_cast<uint64_t>(width) * height > kMaxDecodedPixels)
        return kErrorTooLarge;
    WICPixelFormatGUID format{};
    if (FAILED(frame->GetPixelFormat(&format))) return kErrorCorrupt;
    const PixelShape shape = thread->ShapeOf(format);
    Palette palette;
    if (shape.indexed) {
        const int read = ReadPalette(factory, decoder.Get(), frame.Get(), &palette);
        if (read != kSuccess) return read;
    }
    double dpiX = 0.0, dpiY = 0.0;
    if (FAILED(frame->GetResolution(&dpiX, &dpiY))) dpiX = dpiY = 0.0;

    if (request.info != nullptr) {
        FileInfo* info = request.info;
        BeginInfo(info, container->format, container->name, size);
        info->width = static_cast<int32_t>(width);
        info->height = static_cast<int32_t>(height);
        info->pageCount = static_cast<int32_t>(frames);
        info->pageNumber = static_cast<int32_t>(index);
        info->xResolution = Dpi(dpiX);
        info->yResolution = Dpi(dpiY);
        info->fileBitsPerPixel = LoadDepth(shape, format);
        info->storedBitsPerPixel = shape.bits;
        info->hasAlpha = shape.alpha ? 1 : 0;
        if (shape.indexed) {
            info->colorCount = static_cast<int32_t>(palette.colors.size());
            info->isGrayScale = palette.grey ? 1 : 0;
        } else if (shape.grey) {
            info->colorCount = 1 << shape.bits;
            info->isGrayScale = 1;
        } else {
            // Deeper grey formats (16-bit grey) have the same channel count.
            info->isGrayScale = shape.channels == 1 ? 1 : 0;
        }
    }
    if (query) {
        if (keep) {
            kept.stream = std::move(stream);
            kept.decoder = std::move(decoder);
            kept.frame = std::move(frame);
        }
        return kSuccess;
    }

    DecodeRequest load = request;
    if (load.bitsPerPixel == 0) load.bitsPerPixel = LoadDepth(shape, format);
    ScopedBitmap native;
    int result = kSuccess;
    if (shape.indexed || shape.grey) {
        result = DecodeLowDepth(frame.Get(), shape, palette, width, height, native.Get());
    } else {
        result = DecodeTrueColor(factory, frame.Get(), format, shape, load.bitsPerPixel == 32, width, height,
                                 native.Get());
        // Transparency is kept only where there is room for it.
        if (result == kSuccess && load.bitsPerPixel != 32) kernel::CompositeOnWhite(native.Get());
    }
    if (result != kSuccess) return result;
    native.Get()->xResolution = Dpi(dpiX);
    native.Get()->yResolution = Dpi(dpiY);
    return DeliverBitmap(native.Get(), load);
}

}  // namespace imaging::detail
