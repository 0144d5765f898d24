#include "BrowserTestSupport.h"

#include <winioctl.h>

#include <cstdio>
#include <cstring>
#include <sstream>

#include "browser/DrivePrompt.h"
#include "containers/writer/ArtContainerWriter.h"
#include "foundation/UserMessage.h"
#include "framework/win32/MemoryHandles.h"
#include "gallery/ThumbnailGalleryItem.h"
#include "support/PictureFactory.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/ThumbnailItem.h"

namespace browsertest {

namespace {

// The common controls of the dialog's template, registered once for the
// whole test program, as the control module does when it is loaded.
class CommonControlsEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        INITCOMMONCONTROLSEX classes = {};
        classes.dwSize = sizeof classes;
        classes.dwICC = ICC_STANDARD_CLASSES | ICC_TREEVIEW_CLASSES | ICC_USEREX_CLASSES | ICC_BAR_CLASSES;
        ::InitCommonControlsEx(&classes);
    }
};

const auto* const g_environment = ::testing::AddGlobalTestEnvironment(new CommonControlsEnvironment);

std::string Printable(const char* field, size_t size) {
    const size_t length = strnlen(field, size);
    std::string text(field, length);
    for (size_t i = length; i < size; ++i)
        if (field[i] != '\0') return text + " <bytes after the terminator>";
    return text;
}

}  // namespace

// ---- Events ------------------------------------------------------------------

void RecordingSink::FireItemSel(GraphicItemInfo& info) {
    SinkEvent event;
    event.kind = SinkEvent::kItemSel;
    event.record = info;
    event.reference = &info;
    events.push_back(event);
    if (onItemSel) onItemSel(info);
}

void RecordingSink::FireItemDBClick() {
    SinkEvent event;
    event.kind = SinkEvent::kItemDBClick;
    events.push_back(event);
}

std::vector<GraphicItemInfo> RecordingSink::Records() const {
    std::vector<GraphicItemInfo> records;
    for (const SinkEvent& event : events)
        if (event.kind == SinkEvent::kItemSel) records.push_back(event.record);
    return records;
}

GraphicItemInfo Record(int32_t valid, int32_t itemNumber, const std::string& path, const std::string& name) {
    return browser::MakeItemInfo(valid, itemNumber, path, name);
}

GraphicItemInfo NothingSelected() {
    return browser::EmptyItemInfo();
}

std::string Describe(const GraphicItemInfo& record) {
    std::ostringstream out;
    out << "{valid " << record.valid << ", item " << record.itemNumber << ", path \""
        << Printable(record.path, sizeof record.path) << "\", name \""
        << Printable(record.name, sizeof record.name) << "\"}";
    return out.str();
}

::testing::AssertionResult SameRecords(const std::vector<GraphicItemInfo>& expected,
                                       const std::vector<GraphicItemInfo>& actual) {
    bool same = expected.size() == actual.size();
    for (size_t i = 0; same && i < expected.size(); ++i)
        same = std::memcmp(&expected[i], &actual[i], sizeof(GraphicItemInfo)) == 0;
    if (same) return ::testing::AssertionSuccess();
    std::ostringstream out;
    out << "\nexpected " << expected.size() << " ItemSel:\n";
    for (const GraphicItemInfo& record : expected) out << "  " << Describe(record) << "\n";
    out << "actual " << actual.size() << " ItemSel:\n";
    for (const GraphicItemInfo& record : actual) out << "  " << Describe(record) << "\n";
    return ::testing::AssertionFailure() << out.str();
}

// ---- The registry --------------------------------------------------------------

namespace {

struct KeyTraits {
    using Handle = HKEY;
    static Handle Invalid() { return nullptr; }
    static void Release(Handle handle) { ::RegCloseKey(handle); }
};
using UniqueKey = framework::win32::UniqueHandle<KeyTraits>;

bool KeyExists(const char* name) {
    HKEY key = nullptr;
    if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, name, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    ::RegCloseKey(key);
    return true;
}

// The keys between SOFTWARE and the directories key, outermost first, and
// whether each was there before the test.
const char* const kKeyChain[] = {"SOFTWARE\\Tessaly", "SOFTWARE\\Tessaly\\Orrimond",
                                 "SOFTWARE\\Tessaly\\Orrimond\\1.0", kDirectoriesKey};

std::vector<bool>& ChainExisted() {
    static std::vector<bool> existed;
    return existed;
}

}  // namespace

ScopedPrimaryFolder::ScopedPrimaryFolder(std::optional<std::string> value) {
    std::vector<bool>& existed = ChainExisted();
    existed.clear();
    for (const char* name : kKeyChain) existed.push_back(KeyExists(name));
    keyExisted_ = existed.back();
    HKEY opened = nullptr;
    if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, kDirectoriesKey, 0, KEY_READ, &opened) == ERROR_SUCCESS) {
        const UniqueKey key(opened);
        DWORD size = 0;
        if (::RegQueryValueExA(key.Get(), kPrimaryFolderValue, nullptr, &previousType_, nullptr, &size) ==
            ERROR_SUCCESS) {
            Bytes bytes(size);
            if (::RegQueryValueExA(key.Get(), kPrimaryFolderValue, nullptr, &previousType_, bytes.data(),
                                   &size) == ERROR_SUCCESS)
                previous_ = bytes;
        }
    }
    Set(std::move(value));
}

ScopedPrimaryFolder::~ScopedPrimaryFolder() {
    HKEY created = nullptr;
    if (::RegCreateKeyExA(HKEY_LOCAL_MACHINE, kDirectoriesKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                          &created, nullptr) == ERROR_SUCCESS) {
        const UniqueKey key(created);
        if (previous_)
            ::RegSetValueExA(key.Get(), kPrimaryFolderValue, 0, previousType_, previous_->data(),
                             static_cast<DWORD>(previous_->size()));
        else
            ::RegDeleteValueA(key.Get(), kPrimaryFolderValue);
    }
    const std::vector<bool>& existed = ChainExisted();
    for (size_t i = existed.size(); i-- > 0;)
        if (!existed[i]) ::RegDeleteKeyA(HKEY_LOCAL_MACHINE, kKeyChain[i]);
}

void ScopedPrimaryFolder::Set(std::optional<std::string> value) {
    HKEY created = nullptr;
    if (!value) {
        if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, kDirectoriesKey, 0, KEY_ALL_ACCESS, &created) !=
            ERROR_SUCCESS)
            return;
        const UniqueKey key(created);
        ::RegDeleteValueA(key.Get(), kPrimaryFolderValue);
        return;
    }
    if (::RegCreateKeyExA(HKEY_LOCAL_MACHINE, kDirectoriesKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                          &created, nullptr) != ERROR_SUCCESS)
        return;
    const UniqueKey key(created);
    ::RegSetValueExA(key.Get(), kPrimaryFolderValue, 0, REG_SZ, reinterpret_cast<const BYTE*>(value->c_str()),
                     static_cast<DWORD>(value->size() + 1));
}

void ScopedPrimaryFolder::RemoveKey() {
    ::RegDeleteKeyA(HKEY_LOCAL_MACHINE, kDirectoriesKey);
}

namespace {
constexpr char kUserShellFolders[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
}  // namespace

ScopedDesktopFolder::ScopedDesktopFolder(const std::string& folder) {
    HKEY created = nullptr;
    if (::RegCreateKeyExA(HKEY_CURRENT_USER, kUserShellFolders, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                          &created, nullptr) != ERROR_SUCCESS)
        return;
    const UniqueKey key(created);
    DWORD size = 0;
    if (::RegQueryValueExA(key.Get(), "Desktop", nullptr, &previousType_, nullptr, &size) == ERROR_SUCCESS) {
        Bytes bytes(size);
        if (::RegQueryValueExA(key.Get(), "Desktop", nullptr, &previousType_, bytes.data(), &size) ==
            ERROR_SUCCESS)
            previous_ = bytes;
    }
    ::RegSetValueExA(key.Get(), "Desktop", 0, REG_EXPAND_SZ, reinterpret_cast<const BYTE*>(folder.c_str()),
                     static_cast<DWORD>(folder.size() + 1));
}

ScopedDesktopFolder::~ScopedDesktopFolder() {
    HKEY opened = nullptr;
    if (::RegOpenKeyExA(HKEY_CURRENT_USER, kUserShellFolders, 0, KEY_ALL_ACCESS, &opened) != ERROR_SUCCESS)
        return;
    const UniqueKey key(opened);
    if (previous_)
        ::RegSetValueExA(key.Get(), "Desktop", 0, previousType_, previous_->data(),
                         static_cast<DWORD>(previous_->size()));
    else
        ::RegDeleteValueA(key.Get(), "Desktop");
}

// ---- Drives ---------------------------------------------------------------------

namespace {

// Wine's mount manager extension, as its drive configuration uses it.
constexpr DWORD kDefineUnixDrive =
    CTL_CODE(static_cast<DWORD>('m'), 32, METHOD_BUFFERED, FILE_READ_ACCESS | FILE_WRITE_ACCESS);
struct UnixDriveDefinition {
    ULONG size;
    ULONG type;
    ULONG fsType;
    DWORD serial;
    ULONGLONG unixDevice;
    WCHAR letter;
    USHORT mountPointOffset;
    USHORT deviceOffset;
    USHORT labelOffset;
};

bool DefineUnixDrive(char letter, const std::string& unixPath, UINT type) {
    Bytes buffer(sizeof(UnixDriveDefinition) + unixPath.size() + 1, 0);
    UnixDriveDefinition definition = {};
    definition.letter = static_cast<WCHAR>(letter | 0x20);
    definition.type = unixPath.empty() ? DRIVE_NO_ROOT_DIR : type;
    if (!unixPath.empty()) {
        definition.mountPointOffset = static_cast<USHORT>(sizeof definition);
        std::memcpy(buffer.data() + sizeof definition, unixPath.c_str(), unixPath.size() + 1);
    } else {
        buffer.resize(sizeof definition);
    }
    definition.size = static_cast<ULONG>(buffer.size());
    std::memcpy(buffer.data(), &definition, sizeof definition);
    const framework::win32::UniqueFile manager(
        ::CreateFileW(L"\\\\.\\MountPointManager", GENERIC_READ | GENERIC_WRITE,
                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!manager) return false;
    DWORD returned = 0;
    return ::DeviceIoControl(manager.Get(), kDefineUnixDrive, buffer.data(),
                             static_cast<DWORD>(buffer.size()), nullptr, 0, &returned, nullptr) != FALSE;
}

}  // namespace

std::string UnixPathOf(const std::string& windowsPath) {
    using UnixFileName = char*(CDECL*)(LPCWSTR);
    const HMODULE kernel = ::GetModuleHandleA("kernel32.dll");
    const auto convert = reinterpret_cast<UnixFileName>(
        reinterpret_cast<void*>(::GetProcAddress(kernel, "wine_get_unix_file_name")));
    if (convert == nullptr) return std::string();
    std::wstring wide(windowsPath.size() + 1, L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, windowsPath.c_str(), -1, wide.data(), static_cast<int>(wide.size()));
    char* unix = convert(wide.c_str());
    if (unix == nullptr) return std::string();
    std::string result(unix);
    ::HeapFree(::GetProcessHeap(), 0, unix);
    return result;
}

char FreeDriveLetter() {
    const DWORD used = ::GetLogicalDrives();
    for (char letter = 'Y'; letter >= 'D'; --letter)
        if ((used & (1u << (letter - 'A'))) == 0) return letter;
    return 0;
}

std::vector<std::string> SystemDriveRoots() {
    std::vector<char> buffer(4096, '\0');
    const DWORD written = ::GetLogicalDriveStringsA(static_cast<DWORD>(buffer.size() - 2), buffer.data());
    std::vector<std::string> roots;
    if (written == 0 || written >= buffer.size() - 2) return roots;
    for (const char* root = buffer.data(); *root != '\0'; root += std::strlen(root) + 1)
        roots.emplace_back(root);
    return roots;
}

int ExpectedDriveImage(const std::string& root) {
    switch (::GetDriveTypeA(root.c_str())) {
        case DRIVE_REMOVABLE: return 5;
        case DRIVE_FIXED: return 4;
        case DRIVE_REMOTE: return 7;
        case DRIVE_CDROM: return 6;
        default: return 4;
    }
}

ScopedDrive::ScopedDrive(char letter, const std::string& folder, UINT type)
    : letter_(letter), folder_(folder) {
    const std::string unix = UnixPathOf(folder);
    ok_ = letter != 0 && !unix.empty() && DefineUnixDrive(letter, unix, type);
}

ScopedDrive::~ScopedDrive() {
    if (ejected_) Insert();
    if (ok_) DefineUnixDrive(letter_, std::string(), 0);
}

void ScopedDrive::Eject() {
    if (!ejected_ && ::MoveFileA(folder_.c_str(), (folder_ + ".ejected").c_str())) ejected_ = true;
}

void ScopedDrive::Insert() {
    if (ejected_ && ::MoveFileA((folder_ + ".ejected").c_str(), folder_.c_str())) ejected_ = false;
}

PromptAnswers::PromptAnswers(std::vector<int> answers, std::function<void(size_t)> beforeAnswer)
    : answers_(std::move(answers)), beforeAnswer_(std::move(beforeAnswer)) {
    browser::SetDrivePromptHandler([this](const std::string& text, UINT style) {
        const size_t number = texts.size();
        texts.push_back(text);
        styles.push_back(style);
        if (beforeAnswer_) beforeAnswer_(number);
        return number < answers_.size() ? answers_[number] : IDCANCEL;
    });
}

PromptAnswers::~PromptAnswers() {
    browser::SetDrivePromptHandler(browser::DrivePromptHandler());
}

ShownMessages::ShownMessages() {
    foundation::SetUserMessageHandler([this](const std::string& text) { texts.push_back(text); });
}

ShownMessages::~ShownMessages() {
    foundation::SetUserMessageHandler(foundation::UserMessageHandler());
}

namespace {
thread_local SentMessages* t_sentMessages = nullptr;
}  // namespace

SentMessages::SentMessages(HWND window, UINT message) : window_(window), message_(message) {
    previous_ = t_sentMessages;
    t_sentMessages = this;
    hook_ = ::SetWindowsHookExA(WH_CALLWNDPROC, &SentMessages::Hook, nullptr, ::GetCurrentThreadId());
}

SentMessages::~SentMessages() {
    if (hook_ != nullptr) ::UnhookWindowsHookEx(hook_);
    t_sentMessages = previous_;
}

LRESULT CALLBACK SentMessages::Hook(int code, WPARAM wParam, LPARAM lParam) {
    SentMessages* self = t_sentMessages;
    if (code == HC_ACTION && self != nullptr) {
        const auto* sent = reinterpret_cast<const CWPSTRUCT*>(lParam);
        if (sent->hwnd == self->window_ && sent->message == self->message_)
            self->seen.push_back(Seen{sent->wParam, sent->lParam});
    }
    return ::CallNextHookEx(self != nullptr ? self->hook_ : nullptr, code, wParam, lParam);
}

// ---- Pictures and containers -----------------------------------------------------------

Bytes BmpPicture(int width, int height, uint32_t colour) {
    imaging::BitmapDescriptor bitmap = {};
    if (imaging::CreateBitmap(&bitmap, imaging::kMemoryConventional, width, height, 24,
                              imaging::kColorOrderBgr, nullptr, imaging::kViewTopLeft, nullptr,
                              0) != imaging::kSuccess)
        return {};
    imaging::FillBitmap(&bitmap, colour);
    HGLOBAL memory = nullptr;
    uint32_t size = 0;
    const int saved = imaging::SaveBitmapMemory(&memory, &bitmap, imaging::kFormatBmp, 24, 0, &size, nullptr);
    imaging::FreeBitmap(&bitmap);
    if (saved != imaging::kSuccess) return {};
    const framework::win32::UniqueGlobal owner(memory);
    const framework::win32::GlobalLockView view(memory);
    if (!view) return {};
    const auto* bytes = static_cast<const uint8_t*>(view.Data());
    return Bytes(bytes, bytes + size);
}

Bytes JpegPicture(int width, int height) {
    return picturefactory::EncodeBgr24(GUID_ContainerFormatJpeg, static_cast<uint32_t>(width),
                                       static_cast<uint32_t>(height), picturefactory::Colourful);
}

Bytes PngPicture(int width, int height) {
    return picturefactory::EncodeBgr24(GUID_ContainerFormatPng, static_cast<uint32_t>(width),
                                       static_cast<uint32_t>(height), picturefactory::Colourful);
}

Bytes TiffPicture(int width, int height) {
    return picturefactory::EncodeBgr24(GUID_ContainerFormatTiff, static_cast<uint32_t>(width),
                                       static_cast<uint32_t>(height), picturefactory::Colourful);
}

Bytes WmfPicture(bool placeable) {
    return picturefactory::BlackLeftHalfWmf(400, 300, placeable);
}

Bytes EmfPicture() {
    return picturefactory::BlackLeftHalfEmf(4000, 3000);
}

Bytes JunkBytes(size_t size) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>((i * 7 + 3) ^ 0x5A);
    return bytes;
}

ContainerEntry PictureEntry(const std::string& fileName, uint32_t colour) {
    return ContainerEntry{fileName, "C:\\Artwork\\" + fileName, BmpPicture(120, 90, colour),
                          BmpPicture(60, 45, colour)};
}

ContainerEntry UnreadableEntry(const std::string& fileName) {
    return ContainerEntry{fileName, "C:\\Artwork\\" + fileName, JunkBytes(300), JunkBytes(200)};
}

ContainerEntry BareEntry(const std::string& fileName) {
    return ContainerEntry{fileName, "C:\\Artwork\\" + fileName, Bytes(), Bytes()};
}

Bytes ContainerFile(const std::vector<ContainerEntry>& entries) {
    containers::ArtContainerWriter writer;
    for (const ContainerEntry& entry : entries) {
        containers::ArtItemSource item;
        item.name = entry.name;
        item.path = entry.path;
        if (!entry.large.empty()) {
            containers::ArtRenditionSource rendition;
            rendition.kind = 0x80;
            rendition.payload = entry.large;
            item.renditions.push_back(rendition);
        }
        if (!entry.small.empty()) {
            containers::ArtRenditionSource rendition;
            rendition.kind = 0x40;
            rendition.payload = entry.small;
            item.renditions.push_back(rendition);
        }
        writer.AddItem(item);
    }
    Bytes bytes;
    std::string error;
    if (!writer.Build(bytes, error)) ADD_FAILURE() << "container not built: " << error;
    return bytes;
}

// ---- The disk --------------------------------------------------------------------------

const std::string& Disk::Root() const {
    if (root_.empty()) root_ = dir_.Path().string();
    return root_;
}

std::string Disk::Path(const std::string& relative) const {
    return relative.empty() ? Root() : Root() + "\\" + relative;
}

void Disk::Folder(const std::string& relative) const {
    std::string partial;
    std::string rest = relative;
    while (!rest.empty()) {
        const size_t slash = rest.find('\\');
        partial += (partial.empty() ? "" : "\\") + rest.substr(0, slash);
        rest = slash == std::string::npos ? std::string() : rest.substr(slash + 1);
        ::CreateDirectoryA(Path(partial).c_str(), nullptr);
    }
}

void Disk::File(const std::string& relative, const Bytes& bytes) const {
    const size_t slash = relative.rfind('\\');
    if (slash != std::string::npos) Folder(relative.substr(0, slash));
    const framework::win32::UniqueFile file(::CreateFileA(Path(relative).c_str(), GENERIC_WRITE, 0, nullptr,
                                                          CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(file) << "cannot write " << Path(relative);
    DWORD written = 0;
    if (!bytes.empty()) {
        ASSERT_TRUE(
            ::WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    }
}

void Disk::Remove(const std::string& relative) const {
    const std::string path = Path(relative);
    if (!::DeleteFileA(path.c_str())) ::RemoveDirectoryA(path.c_str());
}

// ---- The dialog ------------------------------------------------------------------------

DialogHarness::DialogHarness() : dialog(std::make_unique<browser::CGraphicDlg>(nullptr)) {}

DialogHarness::~DialogHarness() {
    Destroy();
}

bool DialogHarness::CreateInProductView() {
    if (!Create()) return false;
    DropDown();
    Choose("Orrimond");
    return true;
}

bool DialogHarness::Create() {
    if (host.Handle() == nullptr &&
        !host.CreateEx(0, framework::win32::Window::RegisterWindowClass(0, ::LoadCursor(nullptr, IDC_ARROW)),
                       "browser test", WS_OVERLAPPEDWINDOW | WS_VISIBLE | WS_CLIPCHILDREN,
                       RECT{0, 0, 1000, 700}, nullptr, 0))
        return false;
    dialog->AttachEvents(&sink);
    return dialog->CreateBrowserWindow(host.Handle()) && dialog->Handle() != nullptr;
}

void DialogHarness::Destroy() {
    if (dialog) dialog->AttachEvents(nullptr);
    dialog.reset();
    if (host.Handle() != nullptr) host.DestroyWindow();
}

std::vector<std::string> DialogHarness::Texts(HTREEITEM parent) const {
    std::vector<std::string> texts;
    const HTREEITEM first = parent == TVI_ROOT ? Tree().GetRootItem() : Tree().GetChildItem(parent);
    for (HTREEITEM item = first; item != nullptr; item = Tree().GetNextSiblingItem(item))
        texts.push_back(Tree().GetItemText(item));
    return texts;
}

HTREEITEM DialogHarness::Find(HTREEITEM parent, const std::string& text) const {
    const HTREEITEM first = parent == TVI_ROOT ? Tree().GetRootItem() : Tree().GetChildItem(parent);
    for (HTREEITEM item = first; item != nullptr; item = Tree().GetNextSiblingItem(item))
        if (Tree().GetItemText(item) == text) return item;
    return nullptr;
}

HTREEITEM DialogHarness::At(const std::vector<std::string>& texts) const {
    HTREEITEM item = TVI_ROOT;
    for (const std::string& text : texts) {
        item = Find(item, text);
        if (item == nullptr) return nullptr;
    }
    return item == TVI_ROOT ? nullptr : item;
}

void DialogHarness::Select(HTREEITEM item) const {
    if (item == nullptr) {
        ADD_FAILURE() << "no such tree item to select";
        return;
    }
    Tree().SelectItem(item);
}

void DialogHarness::Expand(HTREEITEM item) const {
    Tree().Expand(item, TVE_EXPAND);
}

void DialogHarness::Collapse(HTREEITEM item) const {
    Tree().Expand(item, TVE_COLLAPSE);
}

void DialogHarness::UserCollapse(HTREEITEM item) const {
    Tree().SelectItem(item);
    ::SendMessageA(Tree().Handle(), WM_KEYDOWN, VK_SUBTRACT, 1);
}

void DialogHarness::UserExpand(HTREEITEM item) const {
    Tree().SelectItem(item);
    ::SendMessageA(Tree().Handle(), WM_KEYDOWN, VK_ADD, 1);
}

int DialogHarness::ImageOf(HTREEITEM item) const {
    int image = -1;
    Tree().GetItemImages(item, &image, nullptr);
    return image;
}

int DialogHarness::SelectedImageOf(HTREEITEM item) const {
    int selected = -1;
    Tree().GetItemImages(item, nullptr, &selected);
    return selected;
}

std::vector<std::string> DialogHarness::ComboTexts() const {
    std::vector<std::string> texts;
    const int count = dialog->driveCombo.GetCount();
    for (int i = 0; i < count; ++i) texts.push_back(dialog->driveCombo.GetItemText(i));
    return texts;
}

void DialogHarness::Choose(const std::string& text) const {
    const int count = dialog->driveCombo.GetCount();
    int index = -1;
    for (int i = 0; i < count && index < 0; ++i)
        if (dialog->driveCombo.GetItemText(i) == text) index = i;
    ASSERT_GE(index, 0) << "no entry " << text;
    dialog->driveCombo.SetCurSel(index);
    const HWND combo = dialog->driveCombo.Handle();
    ::SendMessageA(dialog->Handle(), WM_COMMAND, MAKEWPARAM(IDC_DRIVE_COMBO, CBN_SELCHANGE),
                   reinterpret_cast<LPARAM>(combo));
}

void DialogHarness::DropDown() const {
    const HWND combo = dialog->driveCombo.Handle();
    ::SendMessageA(dialog->Handle(), WM_COMMAND, MAKEWPARAM(IDC_DRIVE_COMBO, CBN_DROPDOWN),
                   reinterpret_cast<LPARAM>(combo));
}

void DialogHarness::ClickCell(int index) const {
    browser::BrowserGallery& gallery = *dialog->gallery;
    const SIZE cell = gallery.GetCellSize();
    const int columns = gallery.Columns() > 0 ? gallery.Columns() : 1;
    const int row = index / columns - gallery.GetTopRow();
    const int x = (index % columns) * cell.cx + cell.cx / 2;
    const int y = row * cell.cy + cell.cy / 2;
    ::SendMessageA(gallery.Handle(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, y));
    ::SendMessageA(gallery.Handle(), WM_LBUTTONUP, 0, MAKELPARAM(x, y));
}

void DialogHarness::ResizeBy(int dx, int dy) const {
    RECT rect = {};
    ::GetWindowRect(dialog->Handle(), &rect);
    ::SetWindowPos(dialog->Handle(), nullptr, 0, 0, rect.right - rect.left + dx, rect.bottom - rect.top + dy,
                   SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

RECT DialogHarness::ChildRect(HWND child) const {
    RECT rect = {};
    ::GetWindowRect(child, &rect);
    ::MapWindowPoints(nullptr, dialog->Handle(), reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

const imaging::BitmapDescriptor* DialogHarness::CellBitmap(int index) const {
    const auto* item = dynamic_cast<const gallery::CThumbnailGalleryItem*>(dialog->gallery->GetItem(index));
    if (item == nullptr || item->Thumbnail() == nullptr) return nullptr;
    return &item->Thumbnail()->bitmap;
}

void DialogHarness::ClickRadio(int id) const {
    const HWND radio = Item(id);
    ::SendMessageA(radio, BM_SETCHECK, BST_CHECKED, 0);
    const int other = id == IDC_LARGE_THUMBNAILS ? IDC_SMALL_THUMBNAILS : IDC_LARGE_THUMBNAILS;
    ::SendMessageA(Item(other), BM_SETCHECK, BST_UNCHECKED, 0);
    ::SendMessageA(dialog->Handle(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(radio));
}

}  // namespace browsertest
