// A browser::BrowserSurface for tests: it makes a stand-in dialog with the
// controls that the control addresses, records every call it receives, and
// answers with whatever the test sets. The test fires the browser's events
// through Events(), as the browser will.
#pragma once

#include <string>
#include <vector>

#include "browser/BrowserSurface.h"
#include "framework/win32/Dialog.h"

class RecordingBrowser : public browser::BrowserSurface {
public:
    RecordingBrowser();
    ~RecordingBrowser() override;

    void AttachEvents(browser::ItemEventSink* sink) override { events_ = sink; }
    bool CreateBrowserWindow(HWND parent) override;
    HWND BrowserWindow() const override { return dialog_.Handle(); }

    void SetItemPath(const std::string& path, long initialPosition) override;
    void SetDoubleClickFlag(BOOL flag) override;
    void SetLargeThumbnails(BOOL large) override;
    void NavigateToPath(const std::string& path, long position) override;
    void ResetDriveCombo(const std::string& text) override;
    void RebuildFromDriveCombo() override;
    void ClearGallery() override;
    void RedrawThumbnails() override;
    void OnLargeThumbnails() override;
    void OnSmallThumbnails() override;

    browser::GraphicItemInfo& ItemInfo() override { return itemInfo; }
    bool GetSelectedPath(std::string* path) override;
    void PrepareDoubleClick(const std::string& path) override;

    browser::GalleryPosition GetGalleryPosition() const override { return gallery; }
    void SetGalleryCurrentIndex(int index) override;
    void SetGallerySelection(int index) override;
    bool IsGalleryCellVisible(int index) const override;
    void EnsureGalleryCellVisible(int index) override;
    void SetGalleryTopRow(int row, bool repaint) override;
    void OnGalleryCommand() override;

    browser::ItemEventSink* Events() const { return events_; }
    HWND Item(int id) const { return ::GetDlgItem(dialog_.Handle(), id); }
    // How many recorded calls begin with `prefix`.
    size_t Count(const std::string& prefix) const;
    void ClearCalls() { calls.clear(); }

    // What the test sets and reads.
    std::vector<std::string> calls;
    browser::GraphicItemInfo itemInfo = {};
    browser::GalleryPosition gallery;
    bool cellsVisible = true;
    bool hasSelectedPath = false;
    std::string selectedPath;
    // What PrepareDoubleClick writes to itemInfo.itemNumber.
    int preparedItemNumber = 0;
    std::string storedPath;
    long storedPosition = 0;
    BOOL doubleClickFlag = FALSE;
    BOOL largeThumbnails = FALSE;
    bool createFails = false;

private:
    browser::ItemEventSink* events_ = nullptr;
    framework::win32::Dialog dialog_;
};
