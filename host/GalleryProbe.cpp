#include "host/GalleryProbe.h"

#include <cstring>

#include "gallery/ThumbnailGalleryWindow.h"

namespace host {

namespace {

bool IsFrameworkClass(HWND window) {
    char name[96] = {};
    ::GetClassNameA(window, name, sizeof name);
    return std::strncmp(name, "Lumbrel:", 8) == 0 &&
           ::GetClassLongA(window, GCL_CBWNDEXTRA) >= static_cast<LONG>(sizeof(LONG_PTR));
}

bool IsThumbnailGallery(const framework::Object& object) {
    for (const framework::RuntimeClass* record = object.GetRuntimeClass(); record != nullptr;
         record = record->Base())
        if (std::strcmp(record->Name(), "CThumbnailGalleryWindow") == 0) return true;
    return false;
}

}  // namespace

bool ReadGalleryState(HWND gallery, GalleryState* state, std::string* why) {
    if (gallery == nullptr || !::IsWindow(gallery)) {
        *why = "the control has no gallery window";
        return false;
    }
    if (!IsFrameworkClass(gallery)) {
        *why = "the gallery window is not one of the control's framework windows";
        return false;
    }
    auto* window = reinterpret_cast<framework::win32::Window*>(::GetWindowLongPtrA(gallery, 0));
    if (window == nullptr || window->Handle() != gallery || !IsThumbnailGallery(*window)) {
        *why = "the gallery window is bound to no gallery of this build";
        return false;
    }
    const auto* object = static_cast<const gallery::CThumbnailGalleryWindow*>(window);
    state->cells = object->GetItemCount();
    state->selectedIndex = object->SelectedIndex();
    state->currentIndex = object->CurrentIndex();
    state->cellSize = object->GetCellSize();
    state->columns = object->Columns();
    state->topRow = ::GetScrollPos(gallery, SB_VERT);
    return true;
}

bool CellCentre(HWND gallery, const GalleryState& state, int index, POINT* centre) {
    if (index < 0 || index >= state.cells || state.columns <= 0 || state.cellSize.cx <= 0 ||
        state.cellSize.cy <= 0)
        return false;
    const int row = index / state.columns - state.topRow;
    const POINT point = {(index % state.columns) * state.cellSize.cx + state.cellSize.cx / 2,
                         row * state.cellSize.cy + state.cellSize.cy / 2};
    RECT client = {};
    ::GetClientRect(gallery, &client);
    if (row < 0 || !::PtInRect(&client, point)) return false;
    *centre = point;
    return true;
}

}  // namespace host
