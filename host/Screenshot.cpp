#include "host/Screenshot.h"

#include <zlib.h>

#include <cstdio>
#include <memory>

#include "framework/win32/GdiHandles.h"

namespace host {

namespace {

void PutBigEndian(std::vector<uint8_t>* out, uint32_t value) {
    out->push_back(static_cast<uint8_t>(value >> 24));
    out->push_back(static_cast<uint8_t>(value >> 16));
    out->push_back(static_cast<uint8_t>(value >> 8));
    out->push_back(static_cast<uint8_t>(value));
}

void PutChunk(std::vector<uint8_t>* out, const char type[4], const std::vector<uint8_t>& data) {
    PutBigEndian(out, static_cast<uint32_t>(data.size()));
    const size_t start = out->size();
    out->insert(out->end(), type, type + 4);
    out->insert(out->end(), data.begin(), data.end());
    const uLong crc = ::crc32(0L, out->data() + start, static_cast<uInt>(out->size() - start));
    PutBigEndian(out, static_cast<uint32_t>(crc));
}

// Draws `window` and, above it, each visible child in z-order, each through
// WM_PRINT at its own place: a window draws into a device context that is
// no screen's even where the display driver keeps no pixels (headless
// Wine), and WM_PRINT's PRF_CHILDREN is not honoured everywhere.
void PrintTree(HWND window, const RECT& origin, HDC dc) {
    RECT rect = {};
    ::GetWindowRect(window, &rect);
    const int saved = ::SaveDC(dc);
    ::SetViewportOrgEx(dc, rect.left - origin.left, rect.top - origin.top, nullptr);
    ::IntersectClipRect(dc, 0, 0, rect.right - rect.left, rect.bottom - rect.top);
    ::SendMessageA(window, WM_PRINT, reinterpret_cast<WPARAM>(dc),
                   PRF_NONCLIENT | PRF_CLIENT | PRF_ERASEBKGND);
    ::RestoreDC(dc, saved);
    // Children from the bottom of the z-order up, clipped to this window.
    for (HWND child = ::GetWindow(::GetWindow(window, GW_CHILD), GW_HWNDLAST); child != nullptr;
         child = ::GetWindow(child, GW_HWNDPREV)) {
        if (!::IsWindowVisible(child)) continue;
        const int inner = ::SaveDC(dc);
        RECT client = {};
        ::GetClientRect(window, &client);
        ::MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&client), 2);
        ::IntersectClipRect(dc, client.left - origin.left, client.top - origin.top,
                            client.right - origin.left, client.bottom - origin.top);
        PrintTree(child, origin, dc);
        ::RestoreDC(dc, inner);
    }
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

bool WritePng(const std::string& path, int width, int height, const std::vector<uint8_t>& rgb) {
    if (width <= 0 || height <= 0) return false;
    const size_t row = static_cast<size_t>(width) * 3;
    if (rgb.size() < row * static_cast<size_t>(height)) return false;
    // Each row starts with filter type 0.
    std::vector<uint8_t> raw;
    raw.reserve((row + 1) * static_cast<size_t>(height));
    for (int y = 0; y < height; ++y) {
        raw.push_back(0);
        const auto begin = rgb.begin() + static_cast<std::ptrdiff_t>(row * static_cast<size_t>(y));
        raw.insert(raw.end(), begin, begin + static_cast<std::ptrdiff_t>(row));
    }
    uLongf packedSize = ::compressBound(static_cast<uLong>(raw.size()));
    std::vector<uint8_t> packed(packedSize);
    if (::compress2(packed.data(), &packedSize, raw.data(), static_cast<uLong>(raw.size()), 6) != Z_OK)
        return false;
    packed.resize(packedSize);

    std::vector<uint8_t> png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<uint8_t> header;
    PutBigEndian(&header, static_cast<uint32_t>(width));
    PutBigEndian(&header, static_cast<uint32_t>(height));
    header.insert(header.end(), {8, 2, 0, 0, 0});  // 8 bits, RGB, deflate, no filter, no interlace
    PutChunk(&png, "IHDR", header);
    PutChunk(&png, "IDAT", packed);
    PutChunk(&png, "IEND", {});

    std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "wb"));
    if (!file) return false;
    return std::fwrite(png.data(), 1, png.size(), file.get()) == png.size();
}

bool CaptureWindow(HWND window, int* width, int* height, std::vector<uint8_t>* rgb) {
    RECT rect = {};
    if (window == nullptr || !::GetWindowRect(window, &rect)) return false;
    const int cx = rect.right - rect.left;
    const int cy = rect.bottom - rect.top;
    if (cx <= 0 || cy <= 0) return false;

    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = cx;
    info.bmiHeader.biHeight = -cy;  // top-down rows
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    framework::win32::UniqueBitmap bitmap(
        ::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    framework::win32::UniqueDc dc(::CreateCompatibleDC(nullptr));
    if (!bitmap || !dc || bits == nullptr) return false;
    const HGDIOBJ old = ::SelectObject(dc.Get(), bitmap.Get());
    // What the screen shows, frame and menu included, where the display
    // keeps pixels; a headless display gives back a uniform nothing, and
    // then the windows draw themselves.
    bool fromScreen = false;
    if (HDC screen = ::GetDC(nullptr)) {
        ::BitBlt(dc.Get(), 0, 0, cx, cy, screen, rect.left, rect.top, SRCCOPY);
        ::ReleaseDC(nullptr, screen);
        ::GdiFlush();
        const auto* pixels = static_cast<const uint32_t*>(bits);
        const size_t count = static_cast<size_t>(cx) * static_cast<size_t>(cy);
        for (size_t i = 1; i < count && !fromScreen; ++i)
            fromScreen = (pixels[i] & 0xFFFFFF) != (pixels[0] & 0xFFFFFF);
    }
    if (!fromScreen) {
        ::PatBlt(dc.Get(), 0, 0, cx, cy, WHITENESS);
        PrintTree(window, rect, dc.Get());
    }
    ::GdiFlush();
    rgb->resize(static_cast<size_t>(cx) * static_cast<size_t>(cy) * 3);
    const auto* pixels = static_cast<const uint8_t*>(bits);
    for (size_t i = 0, count = static_cast<size_t>(cx) * static_cast<size_t>(cy); i < count; ++i) {
        (*rgb)[i * 3] = pixels[i * 4 + 2];
        (*rgb)[i * 3 + 1] = pixels[i * 4 + 1];
        (*rgb)[i * 3 + 2] = pixels[i * 4];
    }
    ::SelectObject(dc.Get(), old);
    *width = cx;
    *height = cy;
    return true;
}

}  // namespace host
