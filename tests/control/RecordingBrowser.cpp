#include "RecordingBrowser.h"

#include "ControlTestIds.h"

RecordingBrowser::RecordingBrowser() : dialog_(IDD_TEST_BROWSER) {}

RecordingBrowser::~RecordingBrowser() {
    dialog_.DestroyWindow();
}

bool RecordingBrowser::CreateBrowserWindow(HWND parent) {
    calls.push_back("CreateBrowserWindow");
    if (createFails) return false;
    return dialog_.Create(parent);
}

void RecordingBrowser::SetItemPath(const std::string& path, long initialPosition) {
    calls.push_back("SetItemPath(" + path + "," + std::to_string(initialPosition) + ")");
    storedPath = path;
    storedPosition = initialPosition;
}

void RecordingBrowser::SetDoubleClickFlag(BOOL flag) {
    calls.push_back("SetDoubleClickFlag(" + std::to_string(flag) + ")");
    doubleClickFlag = flag;
}

void RecordingBrowser::SetLargeThumbnails(BOOL large) {
    calls.push_back("SetLargeThumbnails(" + std::to_string(large) + ")");
    largeThumbnails = large;
}

void RecordingBrowser::NavigateToPath(const std::string& path, long position) {
    calls.push_back("NavigateToPath(" + path + "," + std::to_string(position) + ")");
}

void RecordingBrowser::ResetDriveCombo(const std::string& text) {
    calls.push_back("ResetDriveCombo(" + text + ")");
}

void RecordingBrowser::RebuildFromDriveCombo() {
    calls.push_back("RebuildFromDriveCombo");
}

void RecordingBrowser::ClearGallery() {
    calls.push_back("ClearGallery");
}

void RecordingBrowser::RedrawThumbnails() {
    calls.push_back("RedrawThumbnails");
}

void RecordingBrowser::OnLargeThumbnails() {
    calls.push_back("OnLargeThumbnails");
}

void RecordingBrowser::OnSmallThumbnails() {
    calls.push_back("OnSmallThumbnails");
}

bool RecordingBrowser::GetSelectedPath(std::string* path) {
    calls.push_back("GetSelectedPath");
    if (!hasSelectedPath) return false;
    *path = selectedPath;
    return true;
}

void RecordingBrowser::PrepareDoubleClick(const std::string& path) {
    calls.push_back("PrepareDoubleClick(" + path + ")");
    itemInfo.itemNumber = preparedItemNumber;
}

void RecordingBrowser::SetGalleryCurrentIndex(int index) {
    calls.push_back("SetGalleryCurrentIndex(" + std::to_string(index) + ")");
    gallery.currentIndex = index;
}

void RecordingBrowser::SetGallerySelection(int index) {
    calls.push_back("SetGallerySelection(" + std::to_string(index) + ")");
    gallery.selectedIndex = index;
}

bool RecordingBrowser::IsGalleryCellVisible(int) const {
    return cellsVisible;
}

void RecordingBrowser::EnsureGalleryCellVisible(int index) {
    calls.push_back("EnsureGalleryCellVisible(" + std::to_string(index) + ")");
}

void RecordingBrowser::SetGalleryTopRow(int row, bool repaint) {
    calls.push_back("SetGalleryTopRow(" + std::to_string(row) + "," + (repaint ? "repaint" : "quiet") + ")");
}

void RecordingBrowser::OnGalleryCommand() {
    calls.push_back("OnGalleryCommand");
}

size_t RecordingBrowser::Count(const std::string& prefix) const {
    size_t count = 0;
    for (const std::string& call : calls)
        if (call.compare(0, prefix.size(), prefix) == 0) ++count;
    return count;
}
