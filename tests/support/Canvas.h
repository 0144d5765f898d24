// A 32-bit top-down DIB section in a memory context: tests paint into it and
// read it back pixel by pixel, and snapshot tools take its pixels for a PNG.
// Windows only.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

#include "framework/win32/GdiHandles.h"

namespace testsupport {

class Canvas {
public:
    Canvas(int width, int height, COLORREF fill = RGB(255, 0, 255)) : width_(width), height_(height) {
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
        info.bmiHeader.biWidth = width;
        info.bmiHeader.biHeight = -height;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        bitmap_.Reset(::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits_, nullptr, 0));
        dc_.Reset(::CreateCompatibleDC(nullptr));
        if (bitmap_ && dc_) previous_ = ::SelectObject(dc_.Get(), bitmap_.Get());
        if (Ok()) Fill(fill);
    }
    ~Canvas() {
        if (previous_ != nullptr) ::SelectObject(dc_.Get(), previous_);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    bool Ok() const { return previous_ != nullptr && bits_ != nullptr; }
    HDC Dc() const { return dc_.Get(); }
    int Width() const { return width_; }
    int Height() const { return height_; }
    void Fill(COLORREF colour) {
        ::GdiFlush();
        for (int i = 0; i < width_ * height_; ++i) Pixels()[i] = ToBgrx(colour);
    }
    // CLR_INVALID outside the canvas.
    COLORREF Pixel(int x, int y) const {
        ::GdiFlush();
        if (x < 0 || y < 0 || x >= width_ || y >= height_) return CLR_INVALID;
        const uint32_t v = Pixels()[y * width_ + x];
        return RGB((v >> 16) & 0xFF, (v >> 8) & 0xFF, v & 0xFF);
    }
    const uint32_t* Pixels() const { return static_cast<const uint32_t*>(bits_); }
    uint32_t* Pixels() { return static_cast<uint32_t*>(bits_); }
    // How many pixels of the rectangle have `colour`.
    int Count(const RECT& rect, COLORREF colour) const {
        int n = 0;
        for (int y = rect.top; y < rect.bottom; ++y)
            for (int x = rect.left; x < rect.right; ++x)
                if (Pixel(x, y) == colour) ++n;
        return n;
    }
    // Every pixel as red, green and blue bytes, row after row from the top.
    std::vector<uint8_t> Rgb() const {
        ::GdiFlush();
        std::vector<uint8_t> rgb(static_cast<size_t>(width_) * static_cast<size_t>(height_) * 3);
        for (size_t i = 0; i < rgb.size() / 3; ++i) {
            const uint32_t v = Pixels()[i];
            rgb[i * 3] = static_cast<uint8_t>(v >> 16);
            rgb[i * 3 + 1] = static_cast<uint8_t>(v >> 8);
            rgb[i * 3 + 2] = static_cast<uint8_t>(v);
        }
        return rgb;
    }

private:
    static uint32_t ToBgrx(COLORREF c) { return (GetRValue(c) << 16) | (GetGValue(c) << 8) | GetBValue(c); }

    int width_;
    int height_;
    void* bits_ = nullptr;
    framework::win32::UniqueBitmap bitmap_;
    framework::win32::UniqueDc dc_;
    HGDIOBJ previous_ = nullptr;
};

}  // namespace testsupport
