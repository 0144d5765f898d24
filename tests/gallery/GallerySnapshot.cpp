// Writes a PNG of two filled galleries side by side, so that a person can
// look at what the gallery paints: large cells (145 x 179) on the left, small
// ones (72 x 90) on the right, each with a selected cell, a partly visible
// last row and the strip right of the last column.
//
//   tools/wine-run --prefix build/win64/wineprefix build/win64/tests/gallery/gallery_snapshot.exe [out.png]
//
// The file goes to the working directory as gallery_snapshot.png unless a
// path is given.
#include <windows.h>

#include <wincodec.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "GalleryPictures.h"
#include "gallery/ThumbnailGalleryItem.h"
#include "gallery/ThumbnailGalleryWindow.h"
#include "support/Canvas.h"
#include "support/PictureFactory.h"

namespace {

using gallery::CThumbnailGalleryItem;
using gallery::CThumbnailGalleryWindow;
using testsupport::Canvas;

constexpr int kMargin = 16;

class HostWindow : public framework::win32::Window {};

struct Panel {
    std::unique_ptr<CThumbnailGalleryWindow> gallery;
    std::vector<std::unique_ptr<thumbnails::CThumbnailItem>> thumbnails;
    SIZE client;
};

// A gallery of `count` thumbnails in cells of `cell`, with a client area of
// `client`, cell `selected` highlighted.
Panel MakePanel(HWND host, SIZE cell, SIZE client, int count, int selected, int seed) {
    Panel panel;
    panel.client = client;
    panel.gallery = std::make_unique<CThumbnailGalleryWindow>(cell, FALSE, 3);
    const int width = client.cx + 2 * ::GetSystemMetrics(SM_CXEDGE) + ::GetSystemMetrics(SM_CXVSCROLL);
    const int height = client.cy + 2 * ::GetSystemMetrics(SM_CYEDGE);
    if (!panel.gallery->Create(RECT{0, 0, width, height}, host, 1000, ::LoadCursor(nullptr, IDC_ARROW), 0, 0))
        return panel;
    // The box the browser fits pictures into: the cell less its caption and margins.
    const int boxWidth = cell.cx - 10;
    const int boxHeight = cell.cy - 25 - (cell.cx < 100 ? 24 : 30) + 10;
    for (int i = 0; i < count; ++i) {
        int w = 0, h = 0;
        gallerypictures::FittedSize(seed + i, boxWidth, boxHeight, &w, &h);
        panel.thumbnails.push_back(gallerypictures::MakeThumbnail(w, h, seed + i));
        panel.gallery->AddItem(
            std::make_unique<CThumbnailGalleryItem>(panel.thumbnails.back().get(), cell, "", FALSE), TRUE);
    }
    panel.gallery->SetSelection(selected);
    return panel;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string out = argc > 1 ? argv[1] : "gallery_snapshot.png";
    HostWindow host;
    if (!host.CreateEx(0, framework::win32::Window::RegisterWindowClass(0), "snapshot", WS_OVERLAPPEDWINDOW,
                       RECT{0, 0, 1200, 800}, nullptr, 0)) {
        std::fprintf(stderr, "no host window\n");
        return 1;
    }
    Panel large = MakePanel(host.Handle(), SIZE{145, 179}, SIZE{470, 460}, 8, 4, 0);
    Panel small = MakePanel(host.Handle(), SIZE{72, 90}, SIZE{300, 460}, 22, 6, 5);
    if (!large.gallery || !large.gallery->Handle() || !small.gallery || !small.gallery->Handle()) {
        std::fprintf(stderr, "no gallery\n");
        return 1;
    }

    const int width = kMargin * 3 + large.client.cx + small.client.cx;
    const int height = kMargin * 2 + large.client.cy;
    Canvas picture(width, height, RGB(128, 128, 128));
    int x = kMargin;
    for (Panel* panel : {&large, &small}) {
        Canvas part(panel->client.cx, panel->client.cy);
        panel->gallery->PaintInto(part.Dc());
        ::BitBlt(picture.Dc(), x, kMargin, panel->client.cx, panel->client.cy, part.Dc(), 0, 0, SRCCOPY);
        x += panel->client.cx + kMargin;
    }
    ::GdiFlush();

    const uint32_t stride = picturefactory::Stride(static_cast<uint32_t>(width), 24);
    picturefactory::Bytes rows(static_cast<size_t>(stride) * height);
    const auto* pixels = reinterpret_cast<const uint8_t*>(picture.Pixels());
    for (int y = 0; y < height; ++y)
        for (int i = 0; i < width; ++i)
            for (int c = 0; c < 3; ++c)
                rows[static_cast<size_t>(y) * stride + 3 * i + c] =
                    pixels[(static_cast<size_t>(y) * width + i) * 4 + c];
    const picturefactory::Encoding png =
        picturefactory::Encode(GUID_ContainerFormatPng, GUID_WICPixelFormat24bppBGR,
                               static_cast<uint32_t>(width), static_cast<uint32_t>(height), rows, stride);
    if (png.bytes.empty()) {
        std::fprintf(stderr, "PNG encoding failed: %s\n", png.error.c_str());
        return 1;
    }
    FILE* file = std::fopen(out.c_str(), "wb");
    if (file == nullptr || std::fwrite(png.bytes.data(), 1, png.bytes.size(), file) != png.bytes.size()) {
        std::fprintf(stderr, "cannot write %s\n", out.c_str());
        if (file != nullptr) std::fclose(file);
        return 1;
    }
    std::fclose(file);
    std::printf("wrote %s (%d x %d)\n", out.c_str(), width, height);
    return 0;
}
