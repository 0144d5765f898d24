// Pictures and metafiles made by the thumbnail tests themselves: 24-bit BMP
// files written byte by byte, JPEG files encoded with WIC (support/PictureFactory.h), metafiles drawn
// with GDI. Windows only.
#pragma once

#include <wincodec.h>
#include <windows.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "framework/win32/ComPtr.h"
#include "framework/win32/GdiHandles.h"
#include "framework/win32/MemoryHandles.h"
#include "support/PictureFactory.h"

namespace testpictures {

using Bytes = std::vector<uint8_t>;

struct Rgb {
    uint8_t r, g, b;
};
using Pattern = std::function<Rgb(int32_t x, int32_t y)>;

inline Rgb Gradient(int32_t x, int32_t y) {
    return Rgb{static_cast<uint8_t>(x * 3), static_cast<uint8_t>(y * 5), static_cast<uint8_t>(x + y)};
}

inline void Put16(Bytes& out, uint32_t value) {
    out.push_back(static_cast<uint8_t>(value));
    out.push_back(static_cast<uint8_t>(value >> 8));
}
inline void Put32(Bytes& out, uint32_t value) {
    Put16(out, value & 0xFFFF);
    Put16(out, value >> 16);
}

// A whole bottom-up 24-bit BMP file.
inline Bytes Bmp24(int32_t width, int32_t height, const Pattern& pattern = Gradient) {
    const uint32_t stride = (static_cast<uint32_t>(width) * 3 + 3) / 4 * 4;
    const uint32_t pixels = stride * static_cast<uint32_t>(height);
    Bytes out;
    out.push_back('B');
    out.push_back('M');
    Put32(out, 54 + pixels);
    Put32(out, 0);
    Put32(out, 54);
    Put32(out, 40);
    Put32(out, static_cast<uint32_t>(width));
    Put32(out, static_cast<uint32_t>(height));
    Put16(out, 1);
    Put16(out, 24);
    for (uint32_t v : {0u, pixels, 2835u, 2835u, 0u, 0u}) Put32(out, v);
    for (int32_t row = height - 1; row >= 0; --row) {
        for (int32_t x = 0; x < width; ++x) {
            const Rgb c = pattern(x, row);
            out.push_back(c.b);
            out.push_back(c.g);
            out.push_back(c.r);
        }
        for (uint32_t pad = static_cast<uint32_t>(width) * 3; pad < stride; ++pad) out.push_back(0);
    }
    return out;
}

// A JPEG file of the pattern, encoded with WIC; empty if WIC fails.
inline Bytes Jpeg(uint32_t width, uint32_t height, const Pattern& pattern = Gradient) {
    return picturefactory::EncodeBgr24(GUID_ContainerFormatJpeg, width, height, [&](int32_t x, int32_t y) {
        const Rgb c = pattern(x, y);
        return picturefactory::Bgra{c.b, c.g, c.r, 255};
    });
}

// What every sample metafile draws: a pen and brush of their own, shapes,
// a polygon, text and a small bitmap.
inline void DrawSample(HDC dc) {
    framework::win32::UniquePen pen(::CreatePen(PS_SOLID, 3, RGB(200, 0, 0)));
    framework::win32::UniqueBrush brush(::CreateSolidBrush(RGB(0, 120, 0)));
    framework::win32::UniqueBrush hatch(::CreateHatchBrush(HS_DIAGCROSS, RGB(0, 0, 200)));
    const HGDIOBJ oldPen = ::SelectObject(dc, pen.Get());
    const HGDIOBJ oldBrush = ::SelectObject(dc, brush.Get());
    ::Rectangle(dc, 10, 10, 200, 120);
    ::SelectObject(dc, hatch.Get());
    ::Ellipse(dc, 220, 20, 380, 140);
    const POINT triangle[] = {{50, 200}, {150, 290}, {10, 290}};
    ::Polygon(dc, triangle, 3);
    ::MoveToEx(dc, 0, 0, nullptr);
    ::LineTo(dc, 399, 299);
    ::SetBkMode(dc, TRANSPARENT);
    ::TextOutA(dc, 200, 200, "Lumbrel", 7);
    // A 4 x 4 bitmap stretched over a corner.
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = 4;
    info.bmiHeader.biHeight = 4;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    uint8_t bits[4 * 12];
    info.bmiHeader.biSizeImage = sizeof bits;
    for (size_t i = 0; i < sizeof bits; ++i) bits[i] = static_cast<uint8_t>(i * 5);
    ::StretchDIBits(dc, 300, 200, 80, 80, 0, 0, 4, 4, bits, &info, DIB_RGB_COLORS, SRCCOPY);
    ::SelectObject(dc, oldBrush);
    ::SelectObject(dc, oldPen);
}

// The bits of a GDI-made enhanced metafile of the sample, 400 x 300 pixels
// on the screen.
inline Bytes SampleEnhancedMetafileBits() {
    framework::win32::WindowDc screen(nullptr);
    const int mmX = ::GetDeviceCaps(screen.Get(), HORZSIZE), pixelsX = ::GetDeviceCaps(screen.Get(), HORZRES);
    const int mmY = ::GetDeviceCaps(screen.Get(), VERTSIZE), pixelsY = ::GetDeviceCaps(screen.Get(), VERTRES);
    const RECT frame{0, 0, 400 * mmX * 100 / pixelsX, 300 * mmY * 100 / pixelsY};
    const HDC dc = ::CreateEnhMetaFileA(screen.Get(), nullptr, &frame, "Lumbrel\0Sample\0");
    if (dc == nullptr) return {};
    DrawSample(dc);
    framework::win32::UniqueEnhMetaFile metafile(::CloseEnhMetaFile(dc));
    const UINT size = ::GetEnhMetaFileBits(metafile.Get(), 0, nullptr);
    Bytes bits(size);
    if (size == 0 || ::GetEnhMetaFileBits(metafile.Get(), size, bits.data()) != size) return {};
    return bits;
}

// The bits of a GDI-made Windows metafile of the sample (or another
// drawing), in a window of 400 x 300 (or another size).
inline Bytes SampleWindowsMetafileBits(const std::function<void(HDC)>& draw = DrawSample, int width = 400,
                                       int height = 300) {
    const HDC dc = ::CreateMetaFileA(nullptr);
    if (dc == nullptr) return {};
    ::SetWindowOrgEx(dc, 0, 0, nullptr);
    ::SetWindowExtEx(dc, width, height, nullptr);
    draw(dc);
    framework::win32::UniqueMetaFile metafile(::CloseMetaFile(dc));
    const UINT size = ::GetMetaFileBitsEx(metafile.Get(), 0, nullptr);
    Bytes bits(size);
    if (size == 0 || ::GetMetaFileBitsEx(metafile.Get(), size, bits.data()) != size) return {};
    return bits;
}

// A placeable header for a Windows metafile: its bounding box in units of
// `inch` per inch, and the XOR checksum of its first ten words.
inline Bytes WithPlaceableHeader(const Bytes& wmf, int16_t right, int16_t bottom, uint16_t inch) {
    Bytes out;
    Put32(out, 0x9AC6CDD7);
    Put16(out, 0);
    Put16(out, 0);
    Put16(out, 0);
    Put16(out, static_cast<uint16_t>(right));
    Put16(out, static_cast<uint16_t>(bottom));
    Put16(out, inch);
    Put32(out, 0);
    uint32_t checksum = 0;
    for (size_t i = 0; i < 20; i += 2) checksum ^= static_cast<uint32_t>(out[i] | out[i + 1] << 8);
    Put16(out, checksum);
    out.insert(out.end(), wmf.begin(), wmf.end());
    return out;
}

inline std::string WriteFile(const std::string& path, const Bytes& bytes) {
    framework::win32::UniqueFile file(::CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    if (file) ::WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    return path;
}

inline Bytes ReadFile(const std::string& path) {
    framework::win32::UniqueFile file(
        ::CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file) return {};
    LARGE_INTEGER size{};
    ::GetFileSizeEx(file.Get(), &size);
    Bytes bytes(static_cast<size_t>(size.QuadPart));
    DWORD read = 0;
    if (!bytes.empty())
        ::ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    bytes.resize(read);
    return bytes;
}

inline bool FileExists(const std::string& path) {
    const DWORD attributes = ::GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

inline bool DirectoryExists(const std::string& path) {
    const DWORD attributes = ::GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

}  // namespace testpictures
