#include "host/Script.h"

#include <windows.h>

#include <commctrl.h>

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "host/BrowserWindows.h"
#include "host/ContainerWindow.h"
#include "host/GalleryProbe.h"
#include "host/Json.h"
#include "host/Screenshot.h"
#include "host/UserInput.h"

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
        if (verb == "click" || verb == "dblclick") return Cell(verb, rest);
        if (verb == "state") return rest.empty() ? State() : Reject("state takes no argument");
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
        PressKey(target, code, alt);
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

    // The dialog's windows; false with `status` set to a rejection naming
    // `command` when the control has no browser dialog.
    bool Browser(const std::string& command, BrowserWindows* windows, int* status) {
        *windows = FindBrowserWindows(window_.ControlWindow());
        if (windows->tree != nullptr && windows->combo != nullptr && windows->gallery != nullptr) return true;
        *status =
            Reject(command + " needs the browser dialog, which this build of the control does not have");
        return false;
    }

    int Tree(const std::string& path) {
        BrowserWindows windows;
        int status = kOk;
        if (!Browser("tree", &windows, &status)) return status;
        if (path.empty()) return Reject("tree needs a path");
        std::string missing;
        const HTREEITEM item = ExpandAlongPath(windows.tree, path, &missing);
        if (item == nullptr) return Fail("tree: no node '" + missing + "'");
        POINT centre = {};
        if (!TreeLabelCentre(windows.tree, item, &centre))
            return Fail("tree: the node '" + path + "' cannot be shown");
        Click(windows.tree, centre);
        const auto selected =
            reinterpret_cast<HTREEITEM>(::SendMessageA(windows.tree, TVM_GETNEXTITEM, TVGN_CARET, 0));
        if (selected != item)
            return Fail("tree: the click selected '" + TreeItemPath(windows.tree, selected) + "', not '" +
                        path + "'");
        return kOk;
    }

    // Opens the list as its button does (the browser builds the full list at
    // the first drop-down) and clicks the entry in it.
    int Combo(const std::string& text) {
        BrowserWindows windows;
        int status = kOk;
        if (!Browser("combo", &windows, &status)) return status;
        if (text.empty()) return Reject("combo needs the text of an entry");
        const auto inner = reinterpret_cast<HWND>(::SendMessageA(windows.combo, CBEM_GETCOMBOCONTROL, 0, 0));
        if (inner == nullptr) return Fail("combo: the drive list has no combo box inside");
        ::SetFocus(inner);
        ::SendMessageA(inner, CB_SHOWDROPDOWN, TRUE, 0);
        Pump();
        const int index = FindComboEntry(windows.combo, text);
        COMBOBOXINFO info = {};
        info.cbSize = sizeof info;
        if (index < 0 || !::GetComboBoxInfo(inner, &info) || info.hwndList == nullptr) {
            ::SendMessageA(inner, CB_SHOWDROPDOWN, FALSE, 0);
            Pump();
            return Fail("combo: no entry '" + text + "'");
        }
        ::SendMessageA(info.hwndList, LB_SETTOPINDEX, static_cast<WPARAM>(index), 0);
        RECT rect = {};
        ::SendMessageA(info.hwndList, LB_GETITEMRECT, static_cast<WPARAM>(index),
                       reinterpret_cast<LPARAM>(&rect));
        Click(info.hwndList, POINT{(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2});
        if (::SendMessageA(inner, CB_GETDROPPEDSTATE, 0, 0)) {
            ::SendMessageA(inner, CB_SHOWDROPDOWN, FALSE, 0);
            Pump();
        }
        if (::SendMessageA(windows.combo, CB_GETCURSEL, 0, 0) != index)
            return Fail("combo: the click did not choose '" + text + "'");
        return kOk;
    }

    int DoubleClickTree() {
        BrowserWindows windows;
        int status = kOk;
        if (!Browser("dblclick-tree", &windows, &status)) return status;
        const auto item =
            reinterpret_cast<HTREEITEM>(::SendMessageA(windows.tree, TVM_GETNEXTITEM, TVGN_CARET, 0));
        if (item == nullptr) return Fail("dblclick-tree: no node is selected");
        POINT centre = {};
        if (!TreeLabelCentre(windows.tree, item, &centre))
            return Fail("dblclick-tree: the selected node is not visible");
        DoubleClick(windows.tree, centre);
        return kOk;
    }

    int Cell(const std::string& verb, const std::string& argument) {
        BrowserWindows windows;
        int status = kOk;
        if (!Browser(verb, &windows, &status)) return status;
        long index = 0;
        if (!ParseNumber(argument, &index) || index < 0) return Reject(verb + " needs a cell number from 0");
        GalleryState state;
        std::string why;
        if (!ReadGalleryState(windows.gallery, &state, &why)) return Fail(verb + ": " + why);
        if (index >= state.cells)
            return Fail(verb + ": the gallery has " + std::to_string(state.cells) + " cells, no cell " +
                        std::to_string(index));
        POINT centre = {};
        if (!CellCentre(windows.gallery, state, static_cast<int>(index), &centre)) {
            // A cell off the page is scrolled to first, as the user would.
            const int row = state.columns > 0 ? static_cast<int>(index) / state.columns : 0;
            ::SendMessageA(windows.gallery, WM_VSCROLL, MAKEWPARAM(SB_THUMBPOSITION, row), 0);
            Pump();
            if (!ReadGalleryState(windows.gallery, &state, &why)) return Fail(verb + ": " + why);
            if (!CellCentre(windows.gallery, state, static_cast<int>(index), &centre))
                return Fail(verb + ": cell " + std::to_string(index) + " cannot be shown");
        }
        if (verb == "click")
            Click(windows.gallery, centre);
        else
            DoubleClick(windows.gallery, centre);
        return kOk;
    }

    int State() {
        BrowserWindows windows;
        int status = kOk;
        if (!Browser("state", &windows, &status)) return status;
        GalleryState state;
        std::string why;
        if (!ReadGalleryState(windows.gallery, &state, &why)) return Fail("state: " + why);
        const auto item =
            reinterpret_cast<HTREEITEM>(::SendMessageA(windows.tree, TVM_GETNEXTITEM, TVGN_CARET, 0));
        Out("{\"state\":\"browser\",\"cells\":" + std::to_string(state.cells) + ",\"selectedIndex\":" +
            std::to_string(state.selectedIndex) + ",\"currentIndex\":" + std::to_string(state.currentIndex) +
            ",\"cellWidth\":" + std::to_string(state.cellSize.cx) +
            ",\"cellHeight\":" + std::to_string(state.cellSize.cy) +
            ",\"treePath\":" + JsonString(TreeItemPath(windows.tree, item)) + "}");
        return kOk;
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
