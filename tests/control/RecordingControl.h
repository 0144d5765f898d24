// The control with a stand-in for its browser, for tests of the control
// surface: it replaces the BrowserSurface virtuals that CLumbrelCtrl inherits
// from its dialog side, records every call that the control makes to them,
// answers with whatever the test sets, and makes a stand-in dialog with the
// controls that the control addresses. The fields that the host sets are the
// real ones of the dialog side (itemPath, initialPosition, doubleClickFlag,
// largeThumbnails, itemInfo); the stand-in changes nothing there but records.
#pragma once

#include <string>
#include <vector>

#include "control/LumbrelCtrl.h"
#include "framework/win32/Dialog.h"

class RecordingControl : public CLumbrelCtrl {
public:
    RecordingControl();
    ~RecordingControl() override;

    bool CreateBrowserWindow(HWND parent) override;
    HWND BrowserWindow() const override { return standIn_.Handle(); }

    void SetDoubleClickFlag(BOOL flag) override;
    void SetLargeThumbnails(BOOL large) override;
    void NavigateToPath(const std::string& path, long position) override;
    void ResetDriveCombo(const std::string& text) override;
    void RebuildFromDriveCombo() override;
    void ClearGallery() override;
    void RedrawThumbnails() override;
    void OnLargeThumbnails() override;
    void OnSmallThumbnails() override;

    bool GetSelectedPath(std::string* path) override;
    void PrepareDoubleClick(const std::string& path) override;

    browser::GalleryPosition GetGalleryPosition() const override { return galleryPosition; }
    void SetGalleryCurrentIndex(int index) override;
    void SetGallerySelection(int index) override;
    bool IsGalleryCellVisible(int index) const override;
    void EnsureGalleryCellVisible(int index) override;
    void SetGalleryTopRow(int row, bool repaint) override;
    void OnGalleryCommand() override;

    // ItemSel as the dialog fires it: through the sink that the control
    // attached to its dialog side.
    void FireItemSelFromDialog(browser::GraphicItemInfo& info) { CGraphicDlg::FireItemSel(info); }
    // The control as the dialog's event sink, for ItemDBClick.
    browser::ItemEventSink* Events() { return this; }

    HWND Item(int id) const { return ::GetDlgItem(standIn_.Handle(), id); }
    // How many recorded calls begin with `prefix`.
    size_t Count(const std::string& prefix) const;
    void ClearCalls() { calls.clear(); }

    // What the test sets and reads.
    std::vector<std::string> calls;
    browser::GalleryPosition galleryPosition;
    bool cellsVisible = true;
    bool hasSelectedPath = false;
    std::string selectedPath;
    // What PrepareDoubleClick writes to itemInfo.itemNumber.
    int preparedItemNumber = 0;
    // The dialog side's itemPath when NavigateToPath was last called.
    std::string itemPathAtNavigation;
    bool createFails = false;
    // The recorded call that throws once it is recorded: an int, as the
    // browser's careful functions throw their line, or std::bad_alloc.
    std::string failingCall;
    bool failWithBadAlloc = false;

private:
    void FailIfAsked(const std::string& call) const;

    framework::win32::Dialog standIn_;
};
