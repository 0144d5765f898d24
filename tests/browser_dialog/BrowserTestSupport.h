// What the browser dialog's tests share: the dialog hosted in a plain window
// with a sink that records every event with its whole record; the registry
// value of the primary folder set for a test and restored after it; drives
// of every type made in Wine's mount manager for a test and removed after
// it; answers to the drive prompt; and the disk layouts, pictures and
// containers that the tests build in a temporary directory.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "browser/GraphicDlg.h"
#include "browser/GraphicItemInfo.h"
#include "framework/win32/Window.h"
#include "support/TempDir.h"
#include "thumbnails/BitmapDescriptor.h"

namespace browsertest {

using Bytes = std::vector<uint8_t>;
using browser::GraphicItemInfo;

// ---- Events ------------------------------------------------------------------

struct SinkEvent {
    enum Kind { kItemSel, kItemDBClick } kind = kItemSel;
    GraphicItemInfo record = {};      // a copy of all 532 bytes, for ItemSel
    const void* reference = nullptr;  // what the record was passed as
};

class RecordingSink : public browser::ItemEventSink {
public:
    virtual ~RecordingSink() = default;
    void FireItemSel(GraphicItemInfo& info) override;
    void FireItemDBClick() override;

    // The records of the ItemSel events, in order.
    std::vector<GraphicItemInfo> Records() const;
    void Clear() { events.clear(); }

    std::vector<SinkEvent> events;
    // Runs inside each ItemSel, after it is recorded.
    std::function<void(GraphicItemInfo&)> onItemSel;
};

// A record as the host must see it: zero-filled, then the fields.
GraphicItemInfo Record(int32_t valid, int32_t itemNumber, const std::string& path,
                       const std::string& name = std::string());
GraphicItemInfo NothingSelected();
std::string Describe(const GraphicItemInfo& record);
// Equal when every one of the 532 bytes of each record is equal, in order.
::testing::AssertionResult SameRecords(const std::vector<GraphicItemInfo>& expected,
                                       const std::vector<GraphicItemInfo>& actual);

// ---- The registry --------------------------------------------------------------

constexpr char kDirectoriesKey[] = "SOFTWARE\\Tessaly\\Orrimond\\1.0\\Directories";
constexpr char kPrimaryFolderValue[] = "Primary Graphics Folder";

// Sets (or, with no value, removes) "Primary Graphics Folder" under
// HKEY_LOCAL_MACHINE for the lifetime of the object; what was there before
// comes back afterwards, the key removed again when the test made it.
class ScopedPrimaryFolder {
public:
    explicit ScopedPrimaryFolder(std::optional<std::string> value);
    ~ScopedPrimaryFolder();
    ScopedPrimaryFolder(const ScopedPrimaryFolder&) = delete;
    ScopedPrimaryFolder& operator=(const ScopedPrimaryFolder&) = delete;

    void Set(std::optional<std::string> value);
    // Removes the key itself (and so every value in it).
    void RemoveKey();

private:
    bool keyExisted_ = false;
    std::optional<Bytes> previous_;
    DWORD previousType_ = REG_SZ;
};

// Points the shell's Desktop folder (CSIDL_DESKTOPDIRECTORY) at `folder`
// for the lifetime of the object, through the user's shell folders.
class ScopedDesktopFolder {
public:
    explicit ScopedDesktopFolder(const std::string& folder);
    ~ScopedDesktopFolder();
    ScopedDesktopFolder(const ScopedDesktopFolder&) = delete;
    ScopedDesktopFolder& operator=(const ScopedDesktopFolder&) = delete;

private:
    std::optional<Bytes> previous_;
    DWORD previousType_ = REG_EXPAND_SZ;
};

// ---- Drives ---------------------------------------------------------------------

// The Unix path of a Windows path under Wine; empty elsewhere.
std::string UnixPathOf(const std::string& windowsPath);
// A drive letter that no drive uses, counted down from 'Y'; 0 when none is free.
char FreeDriveLetter();
// The root strings of the system's drives ("C:\\"), in the system's order,
// read with room to spare.
std::vector<std::string> SystemDriveRoots();
// The drive list's image for a root, from the drive's type: 5 removable,
// 4 fixed, 7 remote, 6 CD-ROM, 4 for anything else.
int ExpectedDriveImage(const std::string& root);

// A drive letter mapped to a folder through Wine's mount manager, with the
// type GetDriveType reports (DRIVE_CDROM, DRIVE_REMOVABLE, ...); removed
// again afterwards. Ok() is false where there is no mount manager.
class ScopedDrive {
public:
    ScopedDrive(char letter, const std::string& folder, UINT type);
    ~ScopedDrive();
    ScopedDrive(const ScopedDrive&) = delete;
    ScopedDrive& operator=(const ScopedDrive&) = delete;

    bool Ok() const { return ok_; }
    char Letter() const { return letter_; }
    // "E:"
    std::string Text() const { return std::string(1, letter_) + ":"; }
    // The media leave (the folder is moved aside) and come back.
    void Eject();
    void Insert();

private:
    char letter_;
    std::string folder_;
    bool ok_ = false;
    bool ejected_ = false;
};

// Answers the drive prompt in the user's place: the answers in order, then
// Cancel; each question's text and style is kept. `beforeAnswer` runs
// before each answer is given, with the question's number from 0.
class PromptAnswers {
public:
    explicit PromptAnswers(std::vector<int> answers,
                           std::function<void(size_t)> beforeAnswer = std::function<void(size_t)>());
    ~PromptAnswers();
    PromptAnswers(const PromptAnswers&) = delete;
    PromptAnswers& operator=(const PromptAnswers&) = delete;

    std::vector<std::string> texts;
    std::vector<UINT> styles;

private:
    std::vector<int> answers_;
    std::function<void(size_t)> beforeAnswer_;
};

// Keeps every message that the readers would show the user.
class ShownMessages {
public:
    ShownMessages();
    ~ShownMessages();
    ShownMessages(const ShownMessages&) = delete;
    ShownMessages& operator=(const ShownMessages&) = delete;
    std::vector<std::string> texts;
};

// Every `message` sent to `window` on this thread while the object lives,
// with its parameters, seen before the window's procedure runs.
class SentMessages {
public:
    SentMessages(HWND window, UINT message);
    ~SentMessages();
    SentMessages(const SentMessages&) = delete;
    SentMessages& operator=(const SentMessages&) = delete;

    struct Seen {
        WPARAM wParam;
        LPARAM lParam;
    };
    std::vector<Seen> seen;

private:
    static LRESULT CALLBACK Hook(int code, WPARAM wParam, LPARAM lParam);
    HWND window_;
    UINT message_;
    HHOOK hook_ = nullptr;
    SentMessages* previous_ = nullptr;
};

// ---- Pictures and containers -----------------------------------------------------------

// A 24-bit BMP file made by the imaging layer, filled with `colour` (0x00BBGGRR).
Bytes BmpPicture(int width, int height, uint32_t colour);
Bytes JpegPicture(int width, int height);
Bytes PngPicture(int width, int height);
Bytes TiffPicture(int width, int height);
// Windows metafiles recorded with GDI's metafile calls, placeable or plain.
Bytes WmfPicture(bool placeable);
Bytes EmfPicture();
// Bytes that no decoder takes for a picture.
Bytes JunkBytes(size_t size);

struct ContainerEntry {
    std::string name;
    std::string path;
    // Picture files of rendition kinds 0x80 and 0x40; empty for none.
    Bytes large;
    Bytes small;
};

// One entry whose renditions are readable pictures of the given colour.
ContainerEntry PictureEntry(const std::string& fileName, uint32_t colour);
// One entry whose renditions are there but are no picture.
ContainerEntry UnreadableEntry(const std::string& fileName);
// One entry with no renditions at all.
ContainerEntry BareEntry(const std::string& fileName);
Bytes ContainerFile(const std::vector<ContainerEntry>& entries);

// ---- The disk --------------------------------------------------------------------------

class Disk {
public:
    Disk() = default;
    const std::string& Root() const;
    // A path under the root: Path("a\\b").
    std::string Path(const std::string& relative) const;
    void Folder(const std::string& relative) const;
    void File(const std::string& relative, const Bytes& bytes) const;
    void Remove(const std::string& relative) const;

private:
    testsupport::TempDir dir_;
    mutable std::string root_;
};

// ---- The dialog ------------------------------------------------------------------------

class HostWindow : public framework::win32::Window {};

// A CGraphicDlg in a plain top-level window, with a recording sink attached.
class DialogHarness {
public:
    DialogHarness();
    ~DialogHarness();
    DialogHarness(const DialogHarness&) = delete;
    DialogHarness& operator=(const DialogHarness&) = delete;

    // Makes the dialog (after the test has set fields it wants OnInitDialog
    // to see); false when the window could not be made.
    bool Create();
    // Create, then the product's view chosen in the combo as a user would.
    bool CreateInProductView();
    void Destroy();

    browser::CGraphicDlg& Dialog() { return *dialog; }
    browser::BrowserGallery& Gallery() { return *dialog->gallery; }
    browser::CDriveComboBox& Combo() { return dialog->driveCombo; }
    const browser::TreeControl& Tree() const { return dialog->tree; }
    HWND Item(int id) const { return ::GetDlgItem(dialog->Handle(), id); }

    // ---- The tree
    std::vector<std::string> Texts(HTREEITEM parent) const;
    // The child of `parent` (TVI_ROOT for the top) with this text; null when none.
    HTREEITEM Find(HTREEITEM parent, const std::string& text) const;
    // The item at the end of the texts, from the top.
    HTREEITEM At(const std::vector<std::string>& texts) const;
    // Selects through the tree control, which notifies the dialog.
    void Select(HTREEITEM item) const;
    // TVM_EXPAND, which tells the dialog only the first time.
    void Expand(HTREEITEM item) const;
    void Collapse(HTREEITEM item) const;
    // The user's collapse and expansion with the keyboard, on the item made
    // current first: the tree tells the dialog every time.
    void UserCollapse(HTREEITEM item) const;
    void UserExpand(HTREEITEM item) const;
    int ImageOf(HTREEITEM item) const;
    int SelectedImageOf(HTREEITEM item) const;

    // ---- The combo
    std::vector<std::string> ComboTexts() const;
    // The entry with this text made current and CBN_SELCHANGE sent as the
    // control sends it.
    void Choose(const std::string& text) const;
    // CBN_DROPDOWN as the control sends it.
    void DropDown() const;

    // ---- The gallery
    // A press and release at the centre of cell `index` as it is laid out now.
    void ClickCell(int index) const;
    // Resizes the dialog by the given amounts, as its parent would.
    void ResizeBy(int dx, int dy) const;
    // A rectangle of a child in the dialog's client coordinates.
    RECT ChildRect(HWND child) const;
    // The thumbnail bitmap of gallery cell `index`, or null.
    const imaging::BitmapDescriptor* CellBitmap(int index) const;
    void ClickRadio(int id) const;

    HostWindow host;
    std::unique_ptr<browser::CGraphicDlg> dialog;
    RecordingSink sink;
};

}  // namespace browsertest
