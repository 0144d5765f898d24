#include "foundation/ResizableDialog.h"

namespace foundation {

namespace {
int Width(const RECT& rect) {
    return rect.right - rect.left;
}
int Height(const RECT& rect) {
    return rect.bottom - rect.top;
}
}  // namespace

BOOL CResizableDialog::OnInitDialog() {
    Dialog::OnInitDialog();
    // The anchors describe the children of one window: a dialog object that
    // is given a new window registers them anew.
    anchors.clear();
    ::GetWindowRect(hwnd_, &lastRect);
    minSize = SIZE{Width(lastRect), Height(lastRect)};
    initialized = true;
    return TRUE;
}

void CResizableDialog::SetResizable(bool horizontal, bool vertical) {
    resizeHorizontally = horizontal ? 1 : 0;
    resizeVertically = vertical ? 1 : 0;
}

void CResizableDialog::AddAnchor(int controlId, int horizontalMode, int verticalMode, bool clipOnErase) {
    ResizeAnchor anchor;
    const HWND child = ::GetDlgItem(hwnd_, controlId);
    if (child != nullptr) {
        ::GetWindowRect(child, &anchor.rect);
        ::MapWindowPoints(nullptr, hwnd_, reinterpret_cast<POINT*>(&anchor.rect), 2);
    }
    anchor.controlId = controlId;
    anchor.horizontalMode = horizontalMode;
    anchor.verticalMode = verticalMode;
    anchor.clipOnErase = clipOnErase;
    // Proportional stretching places its near edge like a proportional move,
    // so it takes the same ratio.
    if (horizontalMode == kAnchorProportionalMove || horizontalMode == kAnchorProportionalStretch)
        anchor.ratioX = ProportionalRatio(anchor.rect.left, Width(lastRect));
    if (verticalMode == kAnchorProportionalMove || verticalMode == kAnchorProportionalStretch)
        anchor.ratioY = ProportionalRatio(anchor.rect.top, Height(lastRect));
    anchors.push_back(anchor);
}

void CResizableDialog::Recompute(ResizeAnchor& anchor, const RECT& window, HDWP& batch) {
    const int dW = Width(window) - Width(lastRect);
    const int dH = Height(window) - Height(lastRect);
    const AnchorEdges horizontal = ApplyAnchorMode({anchor.rect.left, anchor.rect.right},
                                                   anchor.horizontalMode, dW, Width(window), anchor.ratioX);
    const AnchorEdges vertical = ApplyAnchorMode({anchor.rect.top, anchor.rect.bottom}, anchor.verticalMode,
                                                 dH, Height(window), anchor.ratioY);
    const RECT moved = {horizontal.nearEdge, vertical.nearEdge, horizontal.farEdge, vertical.farEdge};
    if (::EqualRect(&moved, &anchor.rect)) return;
    const HWND child = ::GetDlgItem(hwnd_, anchor.controlId);
    if (child != nullptr && batch != nullptr)
        batch = ::DeferWindowPos(batch, child, nullptr, moved.left, moved.top, Width(moved), Height(moved),
                                 SWP_NOZORDER);
    anchor.rect = moved;
}

void CResizableDialog::OnSize(UINT type, int cx, int cy) {
    Dialog::OnSize(type, cx, cy);
    RECT window = {};
    ::GetWindowRect(hwnd_, &window);
    if (!anchors.empty()) {
        HDWP batch = ::BeginDeferWindowPos(20);
        for (ResizeAnchor& anchor : anchors) Recompute(anchor, window, batch);
        if (batch != nullptr) ::EndDeferWindowPos(batch);
    }
    lastRect = window;
}

void CResizableDialog::OnGetMinMaxInfo(MINMAXINFO* info) {
    if (!initialized || info == nullptr) return;
    info->ptMinTrackSize.x = minSize.cx;
    info->ptMinTrackSize.y = minSize.cy;
    if (resizeHorizontally == 0) {
        info->ptMaxSize.x = minSize.cx;
        info->ptMaxTrackSize.x = minSize.cx;
    }
    if (resizeVertically == 0) {
        info->ptMaxSize.y = minSize.cy;
        info->ptMaxTrackSize.y = minSize.cy;
    }
}

BOOL CResizableDialog::OnEraseBkgnd(HDC dc) {
    for (const ResizeAnchor& anchor : anchors)
        if (anchor.clipOnErase)
            ::ExcludeClipRect(dc, anchor.rect.left, anchor.rect.top, anchor.rect.right, anchor.rect.bottom);
    Default();
    return 0;
}

}  // namespace foundation
