// What the script mode reads of the control's gallery: its cell count,
// selection, current index, cell size, columns and first row.
//
// The gallery answers them one by one to its registered state query, so the
// container needs nothing of the window object's layout and works with any
// build of the control that answers the query.
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
