// The gallery's paint against the cheapest possible paint of the same area,
// one BitBlt of the whole client area from memory, in the same run:
//  - one full repaint of a page of large cells (6 x 4 cells of 145 x 179,
//    each with a thumbnail and a caption), as WM_PAINT composes it;
//  - scrolling line by line through 10,000 cells, each step a scroll message
//    and the repaint that follows it.
// Both are measured on the gallery window's own device context.
//
// Run from the win64 build:
//   tools/wine-run --prefix build/win64/wineprefix build/win64/bench/gallery/bench_gallery.exe
#include <windows.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <vector>

#include "gallery/GalleryPictures.h"
#include "gallery/ThumbnailGalleryItem.h"
#include "gallery/ThumbnailGalleryWindow.h"
#include "support/BenchTimer.h"

namespace {

using gallery::CThumbnailGalleryItem;
using gallery::CThumbnailGalleryWindow;

constexpr SIZE kCell = {145, 179};
constexpr int kColumns = 6;
constexpr int kRows = 4;
constexpr int kScrollCells = 10000;
constexpr double kTarget = 6.0;

class HostWindow : public framework::win32::Window {};

struct Bench {
    HostWindow host;
    CThumbnailGalleryWindow gallery{kCell, FALSE, 3};
    std::vector<std::unique_ptr<thumbnails::CThumbnailItem>> thumbnails;
    SIZE client = {kCell.cx * kColumns, kCell.cy* kRows};

    bool Create() {
        if (!host.CreateEx(0, framework::win32::Window::RegisterWindowClass(0), "bench",
                           WS_OVERLAPPEDWINDOW | WS_VISIBLE, RECT{0, 0, 1000, 800}, nullptr, 0))
            return false;
        const SIZE outer = CThumbnailGalleryWindow::CalcWindowSize(kCell, kRows, kColumns);
        if (!gallery.Create(RECT{0, 0, outer.cx, outer.cy}, host.Handle(), 1000,
                            ::LoadCursor(nullptr, IDC_ARROW), 0, 0))
            return false;
        // The thumbnails the browser would have made: fitted to the cell's picture box.
        for (int i = 0; i < kColumns * kRows; ++i) {
            int w = 0, h = 0;
            gallerypictures::FittedSize(i, 135, 134, &w, &h);
            thumbnails.push_back(gallerypictures::MakeThumbnail(w, h, i));
        }
        return true;
    }

    void Fill(int count) {
        gallery.RemoveAllItems();
        for (int i = 0; i < count; ++i)
            gallery.AddItem(std::make_unique<CThumbnailGalleryItem>(thumbnails[i % thumbnails.size()].get(),
                                                                    kCell, "", FALSE),
                            FALSE);
        gallery.UpdateScrollRange();
        gallery.SetTopRow(0, FALSE);
    }
};

}  // namespace

int main() {
    Bench bench;
    if (!bench.Create()) {
        std::fprintf(stderr, "cannot make the gallery\n");
        return 1;
    }
    const HWND hwnd = bench.gallery.Handle();
    const HDC target = ::GetDC(hwnd);
    const RECT client = bench.gallery.GetClientRect();
    std::printf("client area %ld x %ld, %d x %d large cells\n", client.right, client.bottom,
                bench.gallery.Columns(), bench.gallery.VisibleRows());

    // The reference: the whole client area copied from memory in one step.
    const HDC memory = ::CreateCompatibleDC(target);
    const HBITMAP bitmap = ::CreateCompatibleBitmap(target, client.right, client.bottom);
    const HGDIOBJ previous = ::SelectObject(memory, bitmap);
    ::PatBlt(memory, 0, 0, client.right, client.bottom, WHITENESS);
    constexpr int kCopies = 50;
    const double blit =
        benchsupport::BestSeconds(
            [&] {
                for (int i = 0; i < kCopies; ++i)
                    ::BitBlt(target, 0, 0, client.right, client.bottom, memory, 0, 0, SRCCOPY);
                ::GdiFlush();
            },
            7) /
        kCopies;

    bool allMet = true;
    bench.Fill(kColumns * kRows);
    bench.gallery.SetSelection(7);
    constexpr int kRepaints = 20;
    const double repaint = benchsupport::BestSeconds(
                               [&] {
                                   for (int i = 0; i < kRepaints; ++i) bench.gallery.PaintInto(target);
                                   ::GdiFlush();
                               },
                               15) /
                           kRepaints;
    allMet &= benchsupport::ReportRatio("full repaint of a page / one BitBlt", repaint, blit, kTarget);

    // Where the time goes: the grid, and one cell's picture through the
    // imaging layer, on a buffer like the paint's own.
    {
        const HDC buffer = ::CreateCompatibleDC(target);
        const HBITMAP pixels = ::CreateCompatibleBitmap(target, client.right, client.bottom);
        const HGDIOBJ kept = ::SelectObject(buffer, pixels);
        constexpr int kRounds = 200;
        const double grid = benchsupport::BestSeconds(
                                [&] {
                                    for (int i = 0; i < kRounds; ++i) bench.gallery.DrawGrid(buffer);
                                    ::GdiFlush();
                                },
                                7) /
                            kRounds;
        const RECT cell = {0, 0, kCell.cx - 1, kCell.cy - 1};
        const double draw = benchsupport::BestSeconds(
                                [&] {
                                    for (int i = 0; i < kRounds; ++i)
                                        bench.gallery.GetItem(0)->Draw(buffer, &cell, SRCCOPY, FALSE);
                                    ::GdiFlush();
                                },
                                7) /
                            kRounds;
        const thumbnails::CThumbnailItem* thumbnail = bench.thumbnails[0].get();
        const RECT picture = {0, 0, thumbnail->bitmap.width, thumbnail->bitmap.height};
        const double paint = benchsupport::BestSeconds(
                                 [&] {
                                     for (int i = 0; i < kRounds; ++i)
                                         imaging::PaintBitmap(buffer, &thumbnail->bitmap, nullptr, nullptr,
                                                              &picture, nullptr, SRCCOPY);
                                     ::GdiFlush();
                                 },
                                 7) /
                             kRounds;
        std::printf(
            "  grid %.1f us; one cell %.1f us, of which its %ldx%ld picture through PaintBitmap %.1f us\n",
            grid * 1e6, draw * 1e6, picture.right, picture.bottom, paint * 1e6);
        ::SelectObject(buffer, kept);
        ::DeleteObject(pixels);
        ::DeleteDC(buffer);
    }

    bench.Fill(kScrollCells);
    const int rows = (kScrollCells + bench.gallery.Columns() - 1) / bench.gallery.Columns();
    int steps = 0;
    double inMessages = 0;
    const double scroll = benchsupport::BestSeconds(
        [&] {
            bench.gallery.SetTopRow(0, FALSE);
            steps = 0;
            double messages = 0;
            for (int row = 0; row < rows; ++row) {
                const auto start = std::chrono::steady_clock::now();
                bench.gallery.Send(WM_VSCROLL, MAKEWPARAM(SB_LINEDOWN, 0), 0);
                messages += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
                bench.gallery.PaintInto(target);
                ++steps;
            }
            ::ValidateRect(hwnd, nullptr);
            ::GdiFlush();
            inMessages = messages;
        },
        3);
    std::printf(
        "scrolled through %d cells in %d steps, to row %d: %.1f ms, of which %.1f ms in the scroll "
        "messages\n",
        kScrollCells, steps, bench.gallery.GetTopRow(), scroll * 1e3, inMessages * 1e3);
    std::printf("  (the platform redraws its scroll bar at each SetScrollPos with redraw)\n");
    allMet &=
        benchsupport::ReportRatio("scroll step with repaint / one BitBlt", scroll / steps, blit, kTarget);
    allMet &= benchsupport::ReportRatio("scroll step's repaint alone / one BitBlt",
                                        (scroll - inMessages) / steps, blit, kTarget);

    ::SelectObject(memory, previous);
    ::DeleteObject(bitmap);
    ::DeleteDC(memory);
    ::ReleaseDC(hwnd, target);
    return allMet ? 0 : 1;
}
