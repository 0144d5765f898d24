// What the script mode reads of the control's gallery: its cell count,
// selection, current index, cell size, columns and first row.
//
// The control lives in this process (it is an in-process server), and its
// gallery window is bound to its object the way this project's window
// framework binds every window: the object's address in the window's extra
// bytes. The container is built from the same sources in the same build, so
// it reads the object's counters through the class's own inline accessors.
// Before it trusts the object it checks that the window's class is one of
// the framework's, that the object names this very window as its own, and
// that its runtime class record says it is a thumbnail gallery.
#pragma once

#include <windows.h>

#include <string>

namespace host {

struct GalleryState {
    int cells = 0;
    int selectedIndex = -1;
    int currentIndex = -1;
    SIZE cellSize = {0, 0};
    int columns = 0;
    // The scroll bar's position, which painting and hit testing use.
    int topRow = 0;
};

// Reads the gallery of window `gallery`; false with `why` set when the
// window is not a gallery of this build.
bool ReadGalleryState(HWND gallery, GalleryState* state, std::string* why);

// The centre of cell `index` in the gallery's client area; false when the
// cell is not on the visible page.
bool CellCentre(HWND gallery, const GalleryState& state, int index, POINT* centre);

}  // namespace host
