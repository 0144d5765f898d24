#include "RecordingControl.h"

#include <new>

#include "ControlTestIds.h"

RecordingControl::RecordingControl() : standIn_(IDD_TEST_BROWSER) {}

RecordingControl::~RecordingControl() {
    standIn_.DestroyWindow();
}

bool RecordingControl::CreateBrowserWindow(HWND parent) {
    calls.push_back("CreateBrowserWindow");
    if (createFails) return false;
    return standIn_.Create(parent);
}

void RecordingControl::SetDoubleClickFlag(BOOL flag) {
    calls.push_back("SetDoubleClickFlag(" + std::to_string(flag) + ")");
    CLumbrelCtrl::SetDoubleClickFlag(flag);
}

void RecordingControl::SetLargeThumbnails(BOOL large) {
    calls.push_back("SetLargeThumbnails(" + std::to_string(large) + ")");
    CLumbrelCtrl::SetLargeThumbnails(large);
}

void RecordingControl::NavigateToPath(const std::string& path, long position) {
    calls.push_back("NavigateToPath(" + path + "," + std::to_string(position) + ")");
    itemPathAtNavigation = itemPath;
    FailIfAsked("NavigateToPath");
}

void RecordingControl::ResetDriveCombo(const std::string& text) {
    calls.push_back("ResetDriveCombo(" + text + ")");
    FailIfAsked("ResetDriveCombo");
}

void RecordingControl::RebuildFromDriveCombo() {
    calls.push_back("RebuildFromDriveCombo");
    FailIfAsked("RebuildFromDriveCombo");
}

void RecordingControl::ClearGallery() {
    calls.push_back("ClearGallery");
}

void RecordingControl::RedrawThumbnails() {
    calls.push_back("RedrawThumbnails");
    FailIfAsked("RedrawThumbnails");
}

void RecordingControl::OnLargeThumbnails() {
    calls.push_back("OnLargeThumbnails");
}

void RecordingControl::OnSmallThumbnails() {
    calls.push_back("OnSmallThumbnails");
}

bool RecordingControl::GetSelectedPath(std::string* path) {
    calls.push_back("GetSelectedPath");
    if (!hasSelectedPath) return false;
    *path = selectedPath;
    return true;
}

void RecordingControl::PrepareDoubleClick(const std::string& path) {
    calls.push_back("PrepareDoubleClick(" + path + ")");
    itemInfo.itemNumber = preparedItemNumber;
}

void RecordingControl::SetGalleryCurrentIndex(int index) {
    calls.push_back("SetGalleryCurrentIndex(" + std::to_string(index) + ")");
    galleryPosition.currentIndex = index;
}

void RecordingControl::SetGallerySelection(int index) {
    calls.push_back("SetGallerySelection(" + std::to_string(index) + ")");
    galleryPosition.selectedIndex = index;
}

bool RecordingControl::IsGalleryCellVisible(int) const {
    return cellsVisible;
}

void RecordingControl::EnsureGalleryCellVisible(int index) {
    calls.push_back("EnsureGalleryCellVisible(" + std::to_string(index) + ")");
}

void RecordingControl::SetGalleryTopRow(int row, bool repaint) {
    calls.push_back("SetGalleryTopRow(" + std::to_string(row) + "," + (repaint ? "repaint" : "quiet") + ")");
}

void RecordingControl::OnGalleryCommand() {
    calls.push_back("OnGalleryCommand");
    FailIfAsked("OnGalleryCommand");
}

size_t RecordingControl::Count(const std::string& prefix) const {
    size_t count = 0;
    for (const std::string& call : calls)
        if (call.compare(0, prefix.size(), prefix) == 0) ++count;
    return count;
}

void RecordingControl::FailIfAsked(const std::string& call) const {
    if (call != failingCall) return;
    if (failWithBadAlloc) throw std::bad_alloc();
    throw 42;
}
