// The gallery as the browser makes it: dragging on from the start, and the
// popup menu's commands 4 to 7 passed on to the owner, the fifth only after
// the user has agreed.
#pragma once

#include "gallery/ThumbnailGalleryWindow.h"

namespace gallery {

class CBrowserGalleryWindow : public CThumbnailGalleryWindow {
public:
    // The string resource of the question that guards command 5.
    static constexpr UINT kConfirmCommandPrompt = 1198;

    CBrowserGalleryWindow(const SIZE& cellSize, BOOL hasPopupMenu, int ownerKind);

    // Enables commands 4, 5, 6 and 7, whatever the item.
    void UpdateMenu(int index) override;
    // Commands 4 to 7 become the last action and go to the owner; 1 when
    // passed on. Anything else is 0, and not offered further.
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override;
};

}  // namespace gallery
