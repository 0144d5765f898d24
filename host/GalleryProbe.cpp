#include "host/GalleryProbe.h"

#include "gallery/GalleryStateQuery.h"

namespace host {

namespace {

LRESULT Ask(HWND gallery, gallery::GalleryStateField field) {
    return ::SendMessageA(gallery, gallery::GalleryStateMessage(), field, 0);
}

int AskInt(HWND gallery, gallery::GalleryStateField field) {
    return static_cast<int>(Ask(gallery, field));
}

}  // namespace

bool ReadGalleryState(HWND gallery, GalleryState* state, std::string* why) {
    if (gallery == nullptr || !::IsWindow(gallery)) {
        *why = "the control has no gallery window";
        return false;
    }
    if (gallery::GalleryStateMessage() == 0 ||
        Ask(gallery, gallery::kGalleryStateSignatureField) != gallery::kGalleryStateSignature) {
        *why = "the gallery window does not answer the gallery state query";
        return false;
    }
    state->cells = AskInt(gallery, gallery::kGalleryStateCells);
    state->selectedIndex = AskInt(gallery, gallery::kGalleryStateSelectedIndex);
    state->currentIndex = AskInt(gallery, gallery::kGalleryStateCurrentIndex);
    state->cellSize = SIZE{AskInt(gallery, gallery::kGalleryStateCellWidth),
                           AskInt(gallery, gallery::kGalleryStateCellHeight)};
    state->columns = AskInt(gallery, gallery::kGalleryStateColumns);
    state->topRow = AskInt(gallery, gallery::kGalleryStateTopRow);
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
