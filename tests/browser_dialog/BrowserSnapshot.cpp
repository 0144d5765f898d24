// Writes PNGs of the browser dialog in a few states, so that a person can
// look at what it shows: a container in large and in small cells, a single
// picture, and the no-preview picture in both sizes. The dialog runs over
// the tests' own disk layout, with the primary folder set in the registry
// for the run and put back afterwards.
//
//   tools/wine-run --prefix build/win64/wineprefix build/win64/tests/browser_dialog/browser_snapshot.exe
//   [folder]
//
// The files go to the working directory unless a folder is given.
#include <windows.h>

#include <commctrl.h>

#include <cstdio>
#include <string>
#include <vector>

#include "ArtLayout.h"
#include "BrowserTestSupport.h"
#include "host/Screenshot.h"
#include "support/Canvas.h"

namespace {

using browsertest::DialogHarness;
using testsupport::Canvas;

// Draws `window` into `target` at its place relative to `origin` (screen
// coordinates of the target's top left), then its visible children from the
// bottom of the z-order up, each into a picture of its own that is copied
// in, clipped to its parent's client area. Under a display that keeps no
// pixels (Wine's null driver) WM_PRINT is the only way to see a window; some
// controls (buttons, the extended combo box) draw nothing or nothing right
// into a context shared with other windows and moved by a viewport origin,
// so each draws into its own.
void DrawTree(HWND window, HDC target, POINT origin, const RECT& clip) {
    RECT rect = {};
    ::GetWindowRect(window, &rect);
    const int cx = rect.right - rect.left;
    const int cy = rect.bottom - rect.top;
    if (cx <= 0 || cy <= 0) return;
    Canvas own(cx, cy);
    if (!own.Ok()) return;
    ::PatBlt(own.Dc(), 0, 0, cx, cy, WHITENESS);
    ::SendMessageA(window, WM_PRINT, reinterpret_cast<WPARAM>(own.Dc()),
                   PRF_NONCLIENT | PRF_CLIENT | PRF_ERASEBKGND);
    const int saved = ::SaveDC(target);
    ::IntersectClipRect(target, clip.left - origin.x, clip.top - origin.y, clip.right - origin.x,
                        clip.bottom - origin.y);
    ::BitBlt(target, rect.left - origin.x, rect.top - origin.y, cx, cy, own.Dc(), 0, 0, SRCCOPY);
    ::RestoreDC(target, saved);

    RECT client = {};
    ::GetClientRect(window, &client);
    ::MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&client), 2);
    RECT inner = {};
    if (!::IntersectRect(&inner, &client, &clip)) return;
    for (HWND child = ::GetWindow(::GetWindow(window, GW_CHILD), GW_HWNDLAST); child != nullptr;
         child = ::GetWindow(child, GW_HWNDPREV))
        if (::IsWindowVisible(child)) DrawTree(child, target, origin, inner);
}

bool Shoot(const DialogHarness& harness, const std::string& folder, const char* name) {
    // On screen the gallery paints after the white placeholder above it and
    // covers it; a picture made by drawing every window once, bottom up,
    // would show the placeholder instead, so it is left out.
    ::ShowWindow(harness.Item(IDC_GALLERY_PLACEHOLDER), SW_HIDE);
    const HWND dialog = harness.dialog->Handle();
    RECT rect = {};
    ::GetWindowRect(dialog, &rect);
    const int width = rect.right - rect.left;
    const int height = rect.bottom - rect.top;
    const std::string path = folder.empty() ? std::string(name) : folder + "\\" + name;
    Canvas canvas(width, height);
    bool written = false;
    if (width > 0 && height > 0 && canvas.Ok()) {
        ::PatBlt(canvas.Dc(), 0, 0, width, height, WHITENESS);
        DrawTree(dialog, canvas.Dc(), POINT{rect.left, rect.top}, rect);
        written = host::WritePng(path, width, height, canvas.Rgb());
    }
    ::ShowWindow(harness.Item(IDC_GALLERY_PLACEHOLDER), SW_SHOW);
    if (!written) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        return false;
    }
    std::printf("wrote %s (%d x %d)\n", path.c_str(), width, height);
    return true;
}

HTREEITEM Below(const DialogHarness& harness, const std::string& folder, const std::string& name) {
    const HTREEITEM parent = harness.At({folder});
    harness.Expand(parent);
    return harness.Find(parent, name);
}

}  // namespace

int main(int argc, char** argv) {
    const std::string folder = argc > 1 ? argv[1] : std::string();
    INITCOMMONCONTROLSEX classes = {};
    classes.dwSize = sizeof classes;
    classes.dwICC = ICC_STANDARD_CLASSES | ICC_TREEVIEW_CLASSES | ICC_USEREX_CLASSES | ICC_BAR_CLASSES;
    ::InitCommonControlsEx(&classes);

    browsertest::ArtLayout& layout = browsertest::SharedLayout();
    browsertest::ScopedPrimaryFolder primary{layout.Primary()};
    DialogHarness harness;
    if (!harness.Create()) {
        std::fprintf(stderr, "no dialog\n");
        return 1;
    }
    harness.ResizeBy(120, 60);
    harness.DropDown();
    harness.Choose("Orrimond");

    bool ok = true;
    harness.Select(harness.At({"Animals"}));
    harness.ClickCell(1);
    ok = Shoot(harness, folder, "browser_container_large.png") && ok;
    harness.ClickRadio(IDC_SMALL_THUMBNAILS);
    ok = Shoot(harness, folder, "browser_container_small.png") && ok;
    harness.ClickRadio(IDC_LARGE_THUMBNAILS);
    harness.Select(Below(harness, "Types", "big.bmp"));
    ok = Shoot(harness, folder, "browser_picture.png") && ok;
    harness.Select(Below(harness, "Types", "image.png"));
    ok = Shoot(harness, folder, "browser_no_preview_large.png") && ok;
    harness.ClickRadio(IDC_SMALL_THUMBNAILS);
    ok = Shoot(harness, folder, "browser_no_preview_small.png") && ok;
    return ok ? 0 : 1;
}
