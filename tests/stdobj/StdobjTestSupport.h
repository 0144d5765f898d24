// Helpers of the tests of the shared drawing objects: a canvas of known
// pixels, captured error reports, and a clean set of tables per test.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "foundation/ReportError.h"
#include "foundation/Stdobj.h"
#include "framework/win32/GdiHandles.h"

namespace stdobjtest {

// A 32-bit top-down DIB section selected into a memory context, so that
// every pixel can be read back exactly.
class DibCanvas {
public:
    DibCanvas(int width, int height, COLORREF fill = RGB(255, 255, 255))
        : width_(width), height_(height), dc_(::CreateCompatibleDC(nullptr)) {
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
        info.bmiHeader.biWidth = width;
        info.bmiHeader.biHeight = -height;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        void* bits = nullptr;
        bitmap_.Reset(::CreateDIBSection(dc_.Get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
        bits_ = static_cast<std::uint32_t*>(bits);
        previous_ = ::SelectObject(dc_.Get(), bitmap_.Get());
        Fill(fill);
    }
    ~DibCanvas() {
        if (previous_ != nullptr) ::SelectObject(dc_.Get(), previous_);
    }
    DibCanvas(const DibCanvas&) = delete;
    DibCanvas& operator=(const DibCanvas&) = delete;

    bool IsValid() const { return dc_ && bitmap_ && bits_ != nullptr && previous_ != nullptr; }
    HDC Dc() const { return dc_.Get(); }
    int Width() const { return width_; }
    int Height() const { return height_; }

    void Fill(COLORREF color) {
        ::GdiFlush();
        for (int i = 0; i < width_ * height_; ++i) bits_[i] = ToPixel(color);
    }

    // The pixel as a COLORREF.
    COLORREF At(int x, int y) const {
        ::GdiFlush();
        const std::uint32_t pixel = bits_[y * width_ + x];
        return RGB((pixel >> 16) & 0xFF, (pixel >> 8) & 0xFF, pixel & 0xFF);
    }

    // How many pixels of `rect` (clipped to the canvas) have `color`.
    int CountIn(const RECT& rect, COLORREF color) const {
        int count = 0;
        for (int y = rect.top; y < rect.bottom; ++y)
            for (int x = rect.left; x < rect.right; ++x)
                if (x >= 0 && y >= 0 && x < width_ && y < height_ && At(x, y) == color) ++count;
        return count;
    }
    int Count(COLORREF color) const { return CountIn(RECT{0, 0, width_, height_}, color); }

    // A picture of the canvas, one character a pixel: `mark` where the pixel
    // has `color`, '.' elsewhere; rows end with '\n'.
    std::string Map(COLORREF color, char mark = '#') const {
        std::string map;
        for (int y = 0; y < height_; ++y) {
            for (int x = 0; x < width_; ++x) map += At(x, y) == color ? mark : '.';
            map += '\n';
        }
        return map;
    }

private:
    static std::uint32_t ToPixel(COLORREF color) {
        return (static_cast<std::uint32_t>(GetRValue(color)) << 16) |
               (static_cast<std::uint32_t>(GetGValue(color)) << 8) | GetBValue(color);
    }

    int width_;
    int height_;
    framework::win32::UniqueDc dc_;
    framework::win32::UniqueBitmap bitmap_;
    std::uint32_t* bits_ = nullptr;
    HGDIOBJ previous_ = nullptr;
};

// Every line handed to the error log while it lives.
class CapturedReports {
public:
    CapturedReports() : scope_([this](const std::string& line) { lines.push_back(line); }) {}
    std::vector<std::string> lines;

private:
    foundation::ScopedErrorLineHandler scope_;
};

// Each test starts and ends with empty tables.
class FreshStdObjects : public ::testing::Test {
protected:
    void SetUp() override { foundation::ReleaseStdObjects(); }
    void TearDown() override { foundation::ReleaseStdObjects(); }
};

// Sets system colours for the lifetime of the object, then puts the old ones
// back.
class SysColorsOverride {
public:
    SysColorsOverride(std::vector<int> indices, std::vector<COLORREF> colors) : indices_(std::move(indices)) {
        for (int index : indices_) saved_.push_back(::GetSysColor(index));
        succeeded_ =
            ::SetSysColors(static_cast<int>(indices_.size()), indices_.data(), colors.data()) != FALSE;
    }
    ~SysColorsOverride() {
        ::SetSysColors(static_cast<int>(indices_.size()), indices_.data(), saved_.data());
    }
    SysColorsOverride(const SysColorsOverride&) = delete;
    SysColorsOverride& operator=(const SysColorsOverride&) = delete;

    bool Succeeded() const { return succeeded_; }

private:
    std::vector<int> indices_;
    std::vector<COLORREF> saved_;
    bool succeeded_ = false;
};

}  // namespace stdobjtest
