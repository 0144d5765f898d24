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

#include "foundation/SharedPalette.h"
#include "foundation/Stdobj.h"
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
    // Each side is timed one operation at a time and its best time kept:
    // batches of unequal length (a repaint takes ten copies' time) would let
    // the other processes of a busy machine weigh on one side more than on
    // the other.
    const double blit = benchsupport::BestSeconds(
        [&] {
            ::BitBlt(target, 0, 0, client.right, client.bottom, memory, 0, 0, SRCCOPY);
            ::GdiFlush();
        },
        201);

    bool allMet = true;
    bench.Fill(kColumns * kRows);
    bench.gallery.SetSelection(7);
    const double repaint = benchsupport::BestSeconds(
        [&] {
            bench.gallery.PaintInto(target);
            ::GdiFlush();
        },
        101);
    allMet &= benchsupport::ReportRatio("full repaint of a page / one BitBlt", repaint, blit, kTarget);

    // Where the time goes: the steps of one paint as PaintInto takes them,
    // each on a buffer like the paint's own, and one cell's picture through
    // the imaging layer.
    {
        const auto timed = [](const auto& step) {
            return benchsupport::BestSeconds(
                [&] {
                    step();
                    ::GdiFlush();
                },
                101);
        };
        const HBRUSH face = ::GetSysColorBrush(COLOR_BTNFACE);
        foundation::CSharedPalette* shared = foundation::GetSharedPalette();
        const HPALETTE sharedPalette = shared != nullptr ? shared->Handle() : nullptr;
        const double palette = timed([&] {
            const HPALETTE old = ::SelectPalette(target, sharedPalette, FALSE);
            ::RealizePalette(target);
            ::SelectPalette(target, old, TRUE);
        });
        const double buffer = timed([&] {
            const HDC dc = ::CreateCompatibleDC(target);
            const HBITMAP pixels = ::CreateCompatibleBitmap(target, client.right, client.bottom);
            const HGDIOBJ kept = ::SelectObject(dc, pixels);
            ::FillRect(dc, &client, face);
            ::SelectObject(dc, kept);
            ::DeleteObject(pixels);
            ::DeleteDC(dc);
        });
        const HDC dc = ::CreateCompatibleDC(target);
        const HBITMAP pixels = ::CreateCompatibleBitmap(target, client.right, client.bottom);
        const HGDIOBJ kept = ::SelectObject(dc, pixels);
        const double fill = timed([&] { ::FillRect(dc, &client, face); });
        const double grid = timed([&] { bench.gallery.DrawGrid(dc); });
        const double cells = timed([&] { bench.gallery.DrawCells(dc); });
        const double highlight = timed([&] { bench.gallery.DrawHighlight(dc, TRUE); });
        const RECT cell = {0, 0, kCell.cx - 1, kCell.cy - 1};
        const double draw = timed([&] { bench.gallery.GetItem(0)->Draw(dc, &cell, SRCCOPY, FALSE); });
        const thumbnails::CThumbnailItem* thumbnail = bench.thumbnails[0].get();
        const RECT picture = {0, 0, thumbnail->bitmap.width, thumbnail->bitmap.height};
        const double paint = timed([&] {
            imaging::PaintBitmap(dc, &thumbnail->bitmap, nullptr, nullptr, &picture, nullptr, SRCCOPY);
        });
        std::printf(
            "  in BitBlts: palette %.2f, buffer made, filled and dropped %.2f (of which the fill %.2f), grid "
            "%.2f, cells %.2f, highlight %.2f, copy to the window 1\n",
            palette / blit, buffer / blit, fill / blit, grid / blit, cells / blit, highlight / blit);
        std::printf("  one cell %.1f us, of which its %ldx%ld picture through PaintBitmap %.1f us\n",
                    draw * 1e6, picture.right, picture.bottom, paint * 1e6);
        ::SelectObject(dc, kept);
        ::DeleteObject(pixels);
        ::DeleteDC(dc);
    }

    bench.Fill(kScrollCells);
    const int rows = (kScrollCells + bench.gallery.Columns() - 1) / bench.gallery.Columns();
    // Three runs; the one of least time is reported, with its own split
    // between the scroll messages and the repaints.
    int steps = 0;
    double scroll = 1e30;
    double inMessages = 0;
    double inRepaints = 0;
    for (int run = 0; run < 3; ++run) {
        bench.gallery.SetTopRow(0, FALSE);
        steps = 0;
        double messages = 0;
        double repaints = 0;
        const auto began = std::chrono::steady_clock::now();
        for (int row = 0; row < rows; ++row) {
            const auto start = std::chrono::steady_clock::now();
            bench.gallery.Send(WM_VSCROLL, MAKEWPARAM(SB_LINEDOWN, 0), 0);
            const auto sent = std::chrono::steady_clock::now();
            bench.gallery.PaintInto(target);
            ::GdiFlush();
            const auto painted = std::chrono::steady_clock::now();
            messages += std::chrono::duration<double>(sent - start).count();
            repaints += std::chrono::duration<double>(painted - sent).count();
            ++steps;
        }
        ::ValidateRect(hwnd, nullptr);
        ::GdiFlush();
        const double total = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
        if (total < scroll) {
            scroll = total;
            inMessages = messages;
            inRepaints = repaints;
        }
    }
    std::printf(
        "scrolled through %d cells in %d steps, to row %d: %.1f ms, of which %.1f ms in the scroll "
        "messages\n",
        kScrollCells, steps, bench.gallery.GetTopRow(), scroll * 1e3, inMessages * 1e3);
    std::printf("  (the platform redraws its scroll bar at each SetScrollPos with redraw)\n");
    allMet &=
        benchsupport::ReportRatio("scroll step with repaint / one BitBlt", scroll / steps, blit, kTarget);
    allMet &= benchsupport::ReportRatio("scroll step's repaint alone / one BitBlt", inRepaints / steps, blit,
                                        kTarget);

    ::SelectObject(memory, previous);
    ::DeleteObject(bitmap);
    ::DeleteDC(memory);
    ::ReleaseDC(hwnd, target);
    return allMet ? 0 : 1;
}
