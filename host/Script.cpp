#include "host/Script.h"

#include <windows.h>

#include <commctrl.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>

#include "control/LumbrelIds.h"
#include "host/ContainerWindow.h"
#include "host/Json.h"
#include "host/Screenshot.h"

namespace host {

namespace {

constexpr int kOk = 0;
constexpr int kFailed = 1;
constexpr int kRejected = 2;

void WriteLine(DWORD stream, const std::string& line) {
    const HANDLE handle = ::GetStdHandle(stream);
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) return;
    const std::string text = line + "\n";
    DWORD written = 0;
    ::WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    ::FlushFileBuffers(handle);
}

void Out(const std::string& line) {
    WriteLine(STD_OUTPUT_HANDLE, line);
}

std::string Trim(const std::string& text) {
    const size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string::npos) return std::string();
    const size_t end = text.find_last_not_of(" \t\r\n");
    return text.substr(begin, end - begin + 1);
}

std::string Unquote(const std::string& text) {
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') return text.substr(1, text.size() - 2);
    return text;
}

bool ParseNumber(const std::string& text, long* value) {
    if (text.empty()) return false;
    char* end = nullptr;
    *value = std::strtol(text.c_str(), &end, 10);
    return end != nullptr && *end == '\0';
}

bool ParseFlag(const std::string& text, bool* value) {
    long number = 0;
    if (ParseNumber(text, &number)) {
        *value = number != 0;
        return true;
    }
    if (text == "true" || text == "TRUE") return (*value = true), true;
    if (text == "false" || text == "FALSE") return (*value = false), true;
    return false;
}

// Gives every waiting message to the hook and the window procedures, as a
// host's loop would. Keys are not translated: the control's filter sees
// them before dispatch, and no WM_SYSCHAR may open the container's menus.
void Pump() {
    MSG msg;
    while (::PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        if (msg.message == WM_QUIT) {
            ::PostQuitMessage(static_cast<int>(msg.wParam));
            return;
        }
        ::DispatchMessageA(&msg);
    }
}

void PumpFor(DWORD milliseconds) {
    const ULONGLONG end = ::GetTickCount64() + milliseconds;
    for (;;) {
        Pump();
        const ULONGLONG now = ::GetTickCount64();
        if (now >= end) break;
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
    }
}

struct Search {
    int id;
    const char* className;
    HWND found;
};

BOOL CALLBACK FindDescendant(HWND window, LPARAM parameter) {
    auto* search = reinterpret_cast<Search*>(parameter);
    if (search->id != 0 && ::GetDlgCtrlID(window) != search->id) return TRUE;
    if (search->className != nullptr) {
        char name[64] = {};
        ::GetClassNameA(window, name, sizeof name);
        if (::lstrcmpiA(name, search->className) != 0) return TRUE;
    }
    search->found = window;
    return FALSE;
}

HWND Descendant(HWND root, int id, const char* className) {
    if (root == nullptr) return nullptr;
    Search search = {id, className, nullptr};
    ::EnumChildWindows(root, &FindDescendant, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

UINT KeyCode(const std::string& name) {
    static const struct {
        const char* name;
        UINT code;
    } kKeys[] = {{"F1", VK_F1},         {"F2", VK_F2},        {"F3", VK_F3},         {"F4", VK_F4},
                 {"F5", VK_F5},         {"F6", VK_F6},        {"F7", VK_F7},         {"F8", VK_F8},
                 {"F9", VK_F9},         {"F10", VK_F10},      {"F11", VK_F11},       {"F12", VK_F12},
                 {"Tab", VK_TAB},       {"Left", VK_LEFT},    {"Right", VK_RIGHT},   {"Up", VK_UP},
                 {"Down", VK_DOWN},     {"Enter", VK_RETURN}, {"Return", VK_RETURN}, {"Escape", VK_ESCAPE},
                 {"Space", VK_SPACE},   {"Home", VK_HOME},    {"End", VK_END},       {"PageUp", VK_PRIOR},
                 {"PageDown", VK_NEXT}, {"Delete", VK_DELETE}};
    for (const auto& key : kKeys)
        if (::lstrcmpiA(key.name, name.c_str()) == 0) return key.code;
    if (name.size() == 1 && std::isalnum(static_cast<unsigned char>(name[0])))
        return static_cast<UINT>(std::toupper(static_cast<unsigned char>(name[0])));
    return 0;
}

class Runner {
public:
    explicit Runner(ContainerWindow& window) : window_(window) {}

    int Run(const std::string& path) {
        std::ifstream file(path);
        if (!file) return Reject("cannot read the script " + path);
        window_.SetEventObserver([](const ControlEvent& event) { Out(EventJson(event)); });
        std::string line;
        int number = 0;
        while (std::getline(file, line)) {
            ++number;
            line_ = number;
            const std::string command = Trim(line);
            if (command.empty() || command[0] == '#') continue;
            const int status = Execute(command);
            Pump();
            if (status != kOk) {
                window_.SetEventObserver(nullptr);
                return status;
            }
        }
        window_.SetEventObserver(nullptr);
        return kOk;
    }

private:
    int Reject(const std::string& why) {
        WriteLine(STD_ERROR_HANDLE, "script line " + std::to_string(line_) + ": " + why);
        return kRejected;
    }
    int Fail(const std::string& why) {
        WriteLine(STD_ERROR_HANDLE, "script line " + std::to_string(line_) + ": " + why);
        return kFailed;
    }
    int Checked(const wchar_t* member, HRESULT hr) {
        return FAILED(hr) ? Fail(ControlClient::Describe(member, hr)) : kOk;
    }

    int Execute(const std::string& command) {
        const size_t space = command.find_first_of(" \t");
        const std::string verb = command.substr(0, space);
        const std::string rest = space == std::string::npos ? std::string() : Trim(command.substr(space));
        ControlClient& client = window_.Client();

        if (verb == "SetItemPath" || verb == "RefreshCombo") {
            std::string text, last;
            if (!SplitLastWord(rest, &text, &last)) return Reject(verb + " needs a text and a number");
            text = Unquote(text);
            if (verb == "SetItemPath") {
                long position = 0;
                if (!ParseNumber(last, &position)) return Reject("SetItemPath: '" + last + "' is no number");
                return Checked(L"SetItemPath", client.SetItemPath(text, position));
            }
            bool insert = false;
            if (!ParseFlag(last, &insert)) return Reject("RefreshCombo: '" + last + "' is no flag");
            return Checked(L"RefreshCombo", client.RefreshCombo(text, insert));
        }
        if (verb == "DoubleClickFlag") {
            bool flag = false;
            if (!ParseFlag(rest, &flag)) return Reject("DoubleClickFlag needs 0 or 1");
            return Checked(L"DoubleClickFlag", client.DoubleClickFlag(flag));
        }
        if (verb == "RefreshControl" || verb == "RedrawBitmaps") {
            if (!rest.empty()) return Reject(verb + " takes no argument");
            return Checked(verb == "RefreshControl" ? L"RefreshControl" : L"RedrawBitmaps",
                           client.Call(verb == "RefreshControl" ? L"RefreshControl" : L"RedrawBitmaps"));
        }
        if (verb == "set" || verb == "get") return Property(verb, rest);
        if (verb == "wait") {
            long milliseconds = 0;
            if (!ParseNumber(rest, &milliseconds) || milliseconds < 0)
                return Reject("wait needs milliseconds");
            PumpFor(static_cast<DWORD>(milliseconds));
            return kOk;
        }
        if (verb == "key") return Key(rest, false);
        if (verb == "alt") return Key(rest, true);
        if (verb == "screenshot") return Screenshot(Unquote(rest));
        if (verb == "tree") return Tree(Unquote(rest));
        if (verb == "combo") return Combo(Unquote(rest));
        if (verb == "dblclick-tree") return DoubleClickTree();
        if (verb == "click" || verb == "dblclick" || verb == "state") return Gallery(verb);
        return Reject("unknown command '" + verb + "'");
    }

    int Property(const std::string& verb, const std::string& rest) {
        std::string name = rest, value;
        if (verb == "set" && !SplitLastWord(rest, &name, &value))
            return Reject("set needs a property and a value");
        const wchar_t* property = name == "AspectRatio"      ? L"AspectRatio"
                                  : name == "thumbNailState" ? L"thumbNailState"
                                                             : nullptr;
        if (property == nullptr) return Reject("no property '" + name + "'");
        if (verb == "set") {
            bool flag = false;
            if (!ParseFlag(value, &flag)) return Reject("set " + name + ": '" + value + "' is no flag");
            return Checked(property, window_.Client().Put(property, flag));
        }
        int current = 0;
        const HRESULT hr = window_.Client().Get(property, &current);
        if (FAILED(hr)) return Fail(ControlClient::Describe(property, hr));
        Out("{\"property\":" + JsonString(name) + ",\"value\":" + std::to_string(current) + "}");
        return kOk;
    }

    // The window of the control that a key goes to: the focus when it is
    // inside the control, else the control's own window.
    HWND KeyTarget() const {
        const HWND control = window_.ControlWindow();
        const HWND focus = ::GetFocus();
        if (control != nullptr && focus != nullptr && (focus == control || ::IsChild(control, focus)))
            return focus;
        return control;
    }

    int Key(const std::string& name, bool alt) {
        const UINT code = KeyCode(name);
        if (code == 0 || (alt && name.size() != 1)) return Reject("no key '" + name + "'");
        const HWND target = KeyTarget();
        if (target == nullptr) return Fail("the control has no window");
        const UINT scan = ::MapVirtualKeyA(code, MAPVK_VK_TO_VSC);
        LPARAM down = 1 | static_cast<LPARAM>(scan << 16);
        if (alt) down |= static_cast<LPARAM>(1) << 29;
        const LPARAM up = down | (static_cast<LPARAM>(3) << 30);
        ::PostMessageA(target, alt ? WM_SYSKEYDOWN : WM_KEYDOWN, code, down);
        ::PostMessageA(target, alt ? WM_SYSKEYUP : WM_KEYUP, code, up);
        Pump();
        return kOk;
    }

    int Screenshot(const std::string& file) {
        if (file.empty()) return Reject("screenshot needs a file name");
        ::SetWindowPos(window_.Handle(), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
        ::RedrawWindow(window_.Handle(), nullptr, nullptr,
                       RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_UPDATENOW | RDW_ALLCHILDREN);
        Pump();
        int width = 0, height = 0;
        std::vector<uint8_t> rgb;
        if (!CaptureWindow(window_.Handle(), &width, &height, &rgb))
            return Fail("the window could not be drawn");
        if (!WritePng(file, width, height, rgb)) return Fail("cannot write " + file);
        return kOk;
    }

    HWND Tree() const { return Descendant(window_.ControlWindow(), control::kTreeId, nullptr); }

    int MissingBrowser(const std::string& what) {
        return Reject(what + " needs the browser dialog, which this build of the control does not have");
    }

    static std::string ItemText(HWND tree, HTREEITEM item) {
        char text[MAX_PATH + 1] = {};
        TVITEMA data = {};
        data.mask = TVIF_TEXT;
        data.hItem = item;
        data.pszText = text;
        data.cchTextMax = MAX_PATH;
        ::SendMessageA(tree, TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&data));
        return text;
    }

    int Tree(const std::string& path) {
        const HWND tree = Tree();
        if (tree == nullptr) return MissingBrowser("tree");
        if (path.empty()) return Reject("tree needs a path");
        // Walks the names of the path from the first root, expanding on the
        // way, and selects the last node as a click does.
        HTREEITEM item = reinterpret_cast<HTREEITEM>(::SendMessageA(tree, TVM_GETNEXTITEM, TVGN_ROOT, 0));
        HTREEITEM found = nullptr;
        size_t start = 0;
        while (start <= path.size()) {
            size_t end = path.find('\\', start);
            if (end == std::string::npos) end = path.size();
            const std::string name = path.substr(start, end - start);
            start = end + 1;
            if (name.empty()) continue;
            while (item != nullptr && ::lstrcmpiA(ItemText(tree, item).c_str(), name.c_str()) != 0)
                item = reinterpret_cast<HTREEITEM>(
                    ::SendMessageA(tree, TVM_GETNEXTITEM, TVGN_NEXT, reinterpret_cast<LPARAM>(item)));
            if (item == nullptr) return Fail("tree: no node '" + name + "'");
            found = item;
            ::SendMessageA(tree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(item));
            item = reinterpret_cast<HTREEITEM>(
                ::SendMessageA(tree, TVM_GETNEXTITEM, TVGN_CHILD, reinterpret_cast<LPARAM>(item)));
        }
        if (found == nullptr) return Reject("tree needs a path");
        ::SendMessageA(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(found));
        return kOk;
    }

    int Combo(const std::string& text) {
        HWND combo = Descendant(window_.ControlWindow(), 0, WC_COMBOBOXEXA);
        if (combo == nullptr) combo = Descendant(window_.ControlWindow(), 0, "ComboBox");
        if (combo == nullptr) return MissingBrowser("combo");
        const LRESULT index = ::SendMessageA(combo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                             reinterpret_cast<LPARAM>(text.c_str()));
        if (index == CB_ERR) return Fail("combo: no entry '" + text + "'");
        ::SendMessageA(combo, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
        ::SendMessageA(::GetParent(combo), WM_COMMAND, MAKEWPARAM(::GetDlgCtrlID(combo), CBN_SELCHANGE),
                       reinterpret_cast<LPARAM>(combo));
        return kOk;
    }

    int DoubleClickTree() {
        const HWND tree = Tree();
        if (tree == nullptr) return MissingBrowser("dblclick-tree");
        const auto item = reinterpret_cast<HTREEITEM>(::SendMessageA(tree, TVM_GETNEXTITEM, TVGN_CARET, 0));
        if (item == nullptr) return Fail("dblclick-tree: no node is selected");
        RECT rect = {};
        // TVM_GETITEMRECT takes the item in the rectangle's first bytes.
        std::memcpy(&rect, &item, sizeof item);
        if (!::SendMessageA(tree, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&rect)))
            return Fail("dblclick-tree: the selected node is not visible");
        POINT point = {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
        const LPARAM at = MAKELPARAM(point.x, point.y);
        ::ClientToScreen(tree, &point);
        // The control compares the message's screen point with the tree.
        ::SetCursorPos(point.x, point.y);
        ::PostMessageA(tree, WM_LBUTTONDOWN, MK_LBUTTON, at);
        ::PostMessageA(tree, WM_LBUTTONUP, 0, at);
        ::PostMessageA(tree, WM_LBUTTONDBLCLK, MK_LBUTTON, at);
        ::PostMessageA(tree, WM_LBUTTONUP, 0, at);
        Pump();
        return kOk;
    }

    int Gallery(const std::string& verb) {
        if (Descendant(window_.ControlWindow(), control::kGalleryId, nullptr) == nullptr)
            return MissingBrowser(verb);
        return Reject(verb + " needs the gallery's cell layout, which this container does not know yet");
    }

    ContainerWindow& window_;
    int line_ = 0;
};

}  // namespace

bool SplitLastWord(const std::string& text, std::string* head, std::string* last) {
    const std::string trimmed = Trim(text);
    const size_t space = trimmed.find_last_of(" \t");
    if (space == std::string::npos) return false;
    *head = Trim(trimmed.substr(0, space));
    *last = trimmed.substr(space + 1);
    return !head->empty() && !last->empty();
}

int RunScript(ContainerWindow& window, const std::string& path) {
    Runner runner(window);
    return runner.Run(path);
}

}  // namespace host
