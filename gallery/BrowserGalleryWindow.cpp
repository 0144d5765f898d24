#include "gallery/BrowserGalleryWindow.h"

#include "gallery/GalleryQuestion.h"

namespace gallery {

namespace {
constexpr WPARAM kFirstMenuCommand = 4;
constexpr WPARAM kLastMenuCommand = 7;
constexpr WPARAM kConfirmedCommand = 5;
}  // namespace

CBrowserGalleryWindow::CBrowserGalleryWindow(const SIZE& cellSize_, BOOL hasPopupMenu_, int ownerKind)
    : CThumbnailGalleryWindow(cellSize_, hasPopupMenu_, ownerKind) {
    ownerLink.SetWindow(this);
    dragEnabled = TRUE;
}

void CBrowserGalleryWindow::UpdateMenu(int) {
    for (UINT id = kFirstMenuCommand; id <= kLastMenuCommand; ++id)
        ::EnableMenuItem(popupMenu.Get(), id, MF_BYCOMMAND | MF_ENABLED);
}

BOOL CBrowserGalleryWindow::OnCommand(WPARAM wParam, LPARAM) {
    if (wParam < kFirstMenuCommand || wParam > kLastMenuCommand) return 0;
    if (wParam == kConfirmedCommand && AskQuestion(kConfirmCommandPrompt, MB_YESNO) != IDYES) return 0;
    lastAction = static_cast<int>(wParam);
    Notify();
    return 1;
}

}  // namespace gallery
