// A dialog that keeps its children in place as it is resized. Each child
// registered with AddAnchor gets a mode per axis (see AnchorLayout.h); on a
// size change every anchored child is moved by the change since the last
// one, all in one deferred batch. The dialog's size at OnInitDialog is its
// minimum for user sizing.
#pragma once

#include <windows.h>

#include <vector>

#include "foundation/AnchorLayout.h"
#include "framework/win32/Dialog.h"

namespace foundation {

struct ResizeAnchor {
    int controlId = 0;
    int horizontalMode = kAnchorStay;
    int verticalMode = kAnchorStay;
    RECT rect = {};  // the child's last rectangle, in the dialog's client coordinates
    bool clipOnErase = false;
    double ratioX = 0.0;
    double ratioY = 0.0;
};

class CResizableDialog : public framework::win32::Dialog {
public:
    explicit CResizableDialog(UINT templateId) : Dialog(templateId) {}

    // Call from a subclass's OnInitDialog, after this class's.
    void AddAnchor(int controlId, int horizontalMode, int verticalMode, bool clipOnErase = false);
    void SetResizable(bool horizontal, bool vertical);

    const std::vector<ResizeAnchor>& Anchors() const { return anchors; }
    const RECT& LastRect() const { return lastRect; }
    SIZE MinSize() const { return minSize; }
    bool IsInitialized() const { return initialized; }

protected:
    BOOL OnInitDialog() override;
    void OnSize(UINT type, int cx, int cy) override;
    void OnGetMinMaxInfo(MINMAXINFO* info) override;
    BOOL OnEraseBkgnd(HDC dc) override;

    std::vector<ResizeAnchor> anchors;
    RECT lastRect = {};
    SIZE minSize = {};
    int resizeHorizontally = 1;
    int resizeVertically = 1;
    bool initialized = false;

private:
    // The anchor's rectangle for a dialog now at `window`; moves it in `batch`
    // when it changed.
    void Recompute(ResizeAnchor& anchor, const RECT& window, HDWP& batch);
};

}  // namespace foundation
