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

#include "ArtLayout.h"
#include "BrowserTestSupport.h"
#include "host/Screenshot.h"

namespace {

using browsertest::DialogHarness;

bool Shoot(const DialogHarness& harness, const std::string& folder, const char* name) {
    // On screen the gallery paints after the white placeholder above it and
    // covers it; a picture made by drawing every window once, bottom up,
    // would show the placeholder instead, so it is left out.
    ::ShowWindow(harness.Item(IDC_GALLERY_PLACEHOLDER), SW_HIDE);
    ::RedrawWindow(harness.dialog->Handle(), nullptr, nullptr,
                   RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    int width = 0, height = 0;
    std::vector<uint8_t> rgb;
    const std::string path = folder.empty() ? std::string(name) : folder + "\\" + name;
    if (!host::CaptureWindow(harness.dialog->Handle(), &width, &height, &rgb) ||
        !host::WritePng(path, width, height, rgb)) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        return false;
    }
    std::printf("wrote %s (%d x %d)\n", path.c_str(), width, height);
    ::ShowWindow(harness.Item(IDC_GALLERY_PLACEHOLDER), SW_SHOW);
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
