// Pictures made by the tests themselves: encoded with WIC, metafiles drawn
// with GDI, icons assembled by hand (WIC has no icon encoder). Windows only.
#pragma once

#include <wincodec.h>
#include <windows.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "framework/win32/ComPtr.h"
#include "framework/win32/GdiHandles.h"
#include "framework/win32/MemoryHandles.h"

namespace picturefactory {

using Bytes = std::vector<uint8_t>;
using framework::win32::ComPtr;

struct Bgra {
    uint8_t b, g, r, a;
};

// A picture described by a function of the pixel position.
using Pattern = std::function<Bgra(int32_t x, int32_t y)>;

inline Bgra Colourful(int32_t x, int32_t y) {
    return Bgra{static_cast<uint8_t>(x * 37 + y * 11), static_cast<uint8_t>(x * 5 + y * 29),
                static_cast<uint8_t>(200 - x * 3 - y * 7), 255};
}

inline Bytes ReadGlobalStream(IStream* stream) {
    HGLOBAL global = nullptr;
    if (FAILED(::GetHGlobalFromStream(stream, &global))) return {};
    STATSTG stat{};
    if (FAILED(stream->Stat(&stat, STATFLAG_NONAME))) return {};
    framework::win32::GlobalLockView view(global);
    if (!view) return {};
    const auto* data = static_cast<const uint8_t*>(view.Data());
    return Bytes(data, data + static_cast<size_t>(stat.cbSize.QuadPart));
}

struct Encoding {
    Bytes bytes;
    WICPixelFormatGUID format{};  // what the encoder agreed to write
    std::string error;
};

// Encodes width x height pixels with the given container and pixel format.
// `pixels` holds rows in that pixel format, `stride` bytes apart; `palette`
// (0xAARRGGBB) is set for indexed formats.
inline Encoding Encode(const GUID& container, const WICPixelFormatGUID& format, uint32_t width,
                       uint32_t height, const Bytes& pixels, uint32_t stride,
                       const std::vector<WICColor>& palette = {}, float jpegQuality = 0.95f) {
    Encoding out;
    framework::win32::ComInitialization com;
    ComPtr<IWICImagingFactory> factory;
    if (FAILED(::CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_IWICImagingFactory, factory.PutVoid()))) {
        out.error = "factory";
        return out;
    }
    ComPtr<IStream> stream;
    ComPtr<IWICBitmapEncoder> encoder;
    ComPtr<IWICBitmapFrameEncode> frame;
    ComPtr<IPropertyBag2> properties;
    if (FAILED(::CreateStreamOnHGlobal(nullptr, TRUE, stream.Put())) ||
        FAILED(factory->CreateEncoder(container, nullptr, encoder.Put())) ||
        FAILED(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache)) ||
        FAILED(encoder->CreateNewFrame(frame.Put(), properties.Put()))) {
        out.error = "encoder";
        return out;
    }
    if (IsEqualGUID(container, GUID_ContainerFormatJpeg) && properties) {
        PROPBAG2 option{};
        option.pstrName = const_cast<LPOLESTR>(L"ImageQuality");
        VARIANT value;
        ::VariantInit(&value);
        value.vt = VT_R4;
        value.fltVal = jpegQuality;
        properties->Write(1, &option, &value);
    }
    if (FAILED(frame->Initialize(properties.Get())) || FAILED(frame->SetSize(width, height))) {
        out.error = "frame";
        return out;
    }
    out.format = format;
    if (FAILED(frame->SetPixelFormat(&out.format))) {
        out.error = "pixel format";
        return out;
    }
    if (!IsEqualGUID(out.format, format)) {
        out.error = "the encoder changed the pixel format";
        return out;
    }
    if (!palette.empty()) {
        ComPtr<IWICPalette> wicPalette;
        if (FAILED(factory->CreatePalette(wicPalette.Put())) ||
            FAILED(wicPalette->InitializeCustom(const_cast<WICColor*>(palette.data()),
                                                static_cast<UINT>(palette.size()))) ||
            FAILED(frame->SetPalette(wicPalette.Get()))) {
            out.error = "palette";
            return out;
        }
    }
    if (FAILED(frame->WritePixels(height, stride, static_cast<UINT>(pixels.size()),
                                  const_cast<BYTE*>(pixels.data()))) ||
        FAILED(frame->Commit()) || FAILED(encoder->Commit())) {
        out.error = "write";
        return out;
    }
    out.bytes = ReadGlobalStream(stream.Get());
    return out;
}

inline uint32_t Stride(uint32_t width, uint32_t bits) {
    return (width * bits + 31) / 32 * 4;
}

// Rows of 24-bit blue-green-red from a pattern.
inline Bytes Bgr24(uint32_t width, uint32_t height, const Pattern& pattern) {
    const uint32_t stride = Stride(width, 24);
    Bytes rows(static_cast<size_t>(stride) * height, 0);
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            const Bgra c = pattern(static_cast<int32_t>(x), static_cast<int32_t>(y));
            uint8_t* p = rows.data() + static_cast<size_t>(y) * stride + 3 * x;
            p[0] = c.b;
            p[1] = c.g;
            p[2] = c.r;
        }
    return rows;
}

inline Bytes Bgra32(uint32_t width, uint32_t height, const Pattern& pattern) {
    Bytes rows(static_cast<size_t>(width) * 4 * height, 0);
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            const Bgra c = pattern(static_cast<int32_t>(x), static_cast<int32_t>(y));
            uint8_t* p = rows.data() + (static_cast<size_t>(y) * width + x) * 4;
            p[0] = c.b;
            p[1] = c.g;
            p[2] = c.r;
            p[3] = c.a;
        }
    return rows;
}

// Packed indices (1, 2, 4 or 8 bits), leftmost pixel in the high bits.
inline Bytes Indices(uint32_t width, uint32_t height, uint32_t bits,
                     const std::function<uint32_t(int32_t, int32_t)>& index) {
    const uint32_t stride = Stride(width, bits);
    Bytes rows(static_cast<size_t>(stride) * height, 0);
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            const uint32_t value =
                index(static_cast<int32_t>(x), static_cast<int32_t>(y)) & ((1u << bits) - 1);
            const uint32_t bit = x * bits;
            uint8_t& byte = rows[static_cast<size_t>(y) * stride + bit / 8];
            byte = static_cast<uint8_t>(byte | value << (8 - bits - bit % 8));
        }
    return rows;
}

inline Bytes EncodeBgr24(const GUID& container, uint32_t width, uint32_t height, const Pattern& pattern,
                         float jpegQuality = 0.95f) {
    return Encode(container, GUID_WICPixelFormat24bppBGR, width, height, Bgr24(width, height, pattern),
                  Stride(width, 24), {}, jpegQuality)
        .bytes;
}

// An icon file of the given images: each entry is a PNG file or a DIB (a
// BITMAPINFOHEADER with doubled height, 32-bit rows bottom-up, then an AND mask).
struct IconImage {
    uint32_t width;
    uint32_t height;
    Bytes data;
};

inline IconImage DibIconImage(uint32_t width, uint32_t height, const Pattern& pattern) {
    IconImage image{width, height, {}};
    Bytes& d = image.data;
    d.resize(40);
    auto put32 = [&](size_t at, uint32_t v) { std::memcpy(d.data() + at, &v, 4); };
    put32(0, 40);
    put32(4, width);
    put32(8, height * 2);
    d[12] = 1;
    d[14] = 32;
    for (uint32_t row = 0; row < height; ++row) {
        const uint32_t y = height - 1 - row;
        for (uint32_t x = 0; x < width; ++x) {
            const Bgra c = pattern(static_cast<int32_t>(x), static_cast<int32_t>(y));
            d.push_back(c.b);
            d.push_back(c.g);
            d.push_back(c.r);
            d.push_back(c.a);
        }
    }
    d.resize(d.size() + static_cast<size_t>(Stride(width, 1)) * height, 0);  // AND mask: all shown
    return image;
}

inline Bytes IconFile(const std::vector<IconImage>& images) {
    Bytes file(6 + 16 * images.size(), 0);
    file[2] = 1;
    file[4] = static_cast<uint8_t>(images.size());
    for (size_t i = 0; i < images.size(); ++i) {
        uint8_t* entry = file.data() + 6 + 16 * i;
        entry[0] = static_cast<uint8_t>(images[i].width >= 256 ? 0 : images[i].width);
        entry[1] = static_cast<uint8_t>(images[i].height >= 256 ? 0 : images[i].height);
        entry[4] = 1;
        entry[6] = 32;
        const uint32_t size = static_cast<uint32_t>(images[i].data.size());
        const uint32_t offset = static_cast<uint32_t>(file.size());
        std::memcpy(entry + 8, &size, 4);
        std::memcpy(entry + 12, &offset, 4);
        file.insert(file.end(), images[i].data.begin(), images[i].data.end());
    }
    return file;
}

// An enhanced metafile of `widthMm` x `heightMm` hundredths of a millimetre
// whose left half is a black rectangle.
inline Bytes BlackLeftHalfEmf(int32_t width, int32_t height) {
    const RECT frame{0, 0, width, height};
    HDC dc = ::CreateEnhMetaFileA(nullptr, nullptr, &frame, nullptr);
    if (dc == nullptr) return {};
    // Logical units of the recording context are its device pixels.
    const int pixelsX = ::MulDiv(width, ::GetDeviceCaps(dc, HORZRES), ::GetDeviceCaps(dc, HORZSIZE) * 100);
    const int pixelsY = ::MulDiv(height, ::GetDeviceCaps(dc, VERTRES), ::GetDeviceCaps(dc, VERTSIZE) * 100);
    const RECT left{0, 0, pixelsX / 2, pixelsY};
    ::FillRect(dc, &left, static_cast<HBRUSH>(::GetStockObject(BLACK_BRUSH)));
    const framework::win32::UniqueEnhMetaFile metafile(::CloseEnhMetaFile(dc));
    if (!metafile) return {};
    const UINT size = ::GetEnhMetaFileBits(metafile.Get(), 0, nullptr);
    Bytes bytes(size);
    if (size == 0 || ::GetEnhMetaFileBits(metafile.Get(), size, bytes.data()) != size) return {};
    return bytes;
}

// A Windows metafile drawing a black rectangle over the left half of a
// `width` x `height` window, plain or behind a placeable header that says
// the picture is `width` x `height` units at `unitsPerInch`.
inline Bytes BlackLeftHalfWmf(int16_t width, int16_t height, bool placeable, uint16_t unitsPerInch = 1440) {
    HDC dc = ::CreateMetaFileA(nullptr);
    if (dc == nullptr) return {};
    ::SetWindowOrgEx(dc, 0, 0, nullptr);
    ::SetWindowExtEx(dc, width, height, nullptr);
    const RECT left{0, 0, width / 2, height};
    ::FillRect(dc, &left, static_cast<HBRUSH>(::GetStockObject(BLACK_BRUSH)));
    const framework::win32::UniqueMetaFile metafile(::CloseMetaFile(dc));
    if (!metafile) return {};
    const UINT size = ::GetMetaFileBitsEx(metafile.Get(), 0, nullptr);
    Bytes body(size);
    if (size == 0 || ::GetMetaFileBitsEx(metafile.Get(), size, body.data()) != size) return {};
    if (!placeable) return body;
    Bytes header(22, 0);
    const uint16_t words[] = {
        0xCDD7,       0x9AC6, 0, 0, 0, static_cast<uint16_t>(width), static_cast<uint16_t>(height),
        unitsPerInch, 0,      0};
    uint16_t checksum = 0;
    for (uint16_t w : words) checksum ^= w;
    std::memcpy(header.data(), words, sizeof words);
    std::memcpy(header.data() + 20, &checksum, 2);
    header.insert(header.end(), body.begin(), body.end());
    return header;
}

// Records of many kinds on one recording context: objects made, selected
// and deleted, shapes, polygons, text and a bitmap.
inline void DrawSampler(HDC dc) {
    const framework::win32::UniqueBrush brush(::CreateSolidBrush(RGB(200, 30, 30)));
    const framework::win32::UniquePen pen(::CreatePen(PS_DASH, 1, RGB(0, 90, 0)));
    const HGDIOBJ oldBrush = ::SelectObject(dc, brush.Get());
    const HGDIOBJ oldPen = ::SelectObject(dc, pen.Get());
    ::Rectangle(dc, 5, 5, 60, 40);
    ::Ellipse(dc, 10, 10, 50, 30);
    const POINT points[4] = {{1, 1}, {30, 5}, {20, 40}, {2, 30}};
    ::Polygon(dc, points, 4);
    ::Polyline(dc, points, 4);
    ::TextOutA(dc, 3, 3, "Hi", 2);
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = 2;
    info.bmiHeader.biHeight = 2;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    info.bmiHeader.biSizeImage = 16;  // some recorders copy only as many bytes as this says
    const uint8_t pixels[16] = {255, 0, 0, 0, 255, 0, 0, 0, 0, 0, 255, 0, 255, 255, 255, 0};
    ::StretchDIBits(dc, 40, 20, 8, 8, 0, 0, 2, 2, pixels, &info, DIB_RGB_COLORS, SRCCOPY);
    ::SelectObject(dc, oldPen);
    ::SelectObject(dc, oldBrush);
}

inline Bytes SamplerEmf() {
    HDC dc = ::CreateEnhMetaFileA(nullptr, nullptr, nullptr, nullptr);
    if (dc == nullptr) return {};
    DrawSampler(dc);
    const framework::win32::UniqueEnhMetaFile metafile(::CloseEnhMetaFile(dc));
    const UINT size = metafile ? ::GetEnhMetaFileBits(metafile.Get(), 0, nullptr) : 0;
    Bytes bytes(size);
    if (size == 0 || ::GetEnhMetaFileBits(metafile.Get(), size, bytes.data()) != size) return {};
    return bytes;
}

inline Bytes SamplerWmf() {
    HDC dc = ::CreateMetaFileA(nullptr);
    if (dc == nullptr) return {};
    ::SetWindowExtEx(dc, 64, 48, nullptr);
    DrawSampler(dc);
    const framework::win32::UniqueMetaFile metafile(::CloseMetaFile(dc));
    const UINT size = metafile ? ::GetMetaFileBitsEx(metafile.Get(), 0, nullptr) : 0;
    Bytes bytes(size);
    if (size == 0 || ::GetMetaFileBitsEx(metafile.Get(), size, bytes.data()) != size) return {};
    return bytes;
}

}  // namespace picturefactory
