// What the gallery's window tests share: a host window that owns a gallery
// and records every command it receives, a probe that opens the gallery's
// state and records its messages, items that draw a plain colour, a canvas
// to paint into and read back, message pumping with a deadline, and a guard
// for the wheel setting in the registry.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "framework/win32/Application.h"
#include "framework/win32/GdiHandles.h"
#include "gallery/BrowserGalleryWindow.h"
#include "gallery/ThumbnailGalleryWindow.h"
#include "support/Canvas.h"
#include "support/MessageSequence.h"

namespace gallerytest {

using framework::win32::Window;
using gallery::CBrowserGalleryWindow;
using gallery::CThumbnailGalleryWindow;
using gallery::CTPGalleryItem;

constexpr UINT kGalleryId = 1000;
constexpr SIZE kLargeCell = {145, 179};
constexpr SIZE kSmallCell = {72, 90};

// ---- Messages -------------------------------------------------------------------

// Dispatches what arrives for `ms` milliseconds, timers included.
inline void PumpFor(DWORD ms) {
    const ULONGLONG deadline = ::GetTickCount64() + ms;
    for (;;) {
        const ULONGLONG now = ::GetTickCount64();
        if (now >= deadline) break;
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(deadline - now), QS_ALLINPUT);
        framework::win32::PumpWaitingMessages();
    }
    framework::win32::PumpWaitingMessages();
}

// Dispatches until `done` holds or `ms` milliseconds have passed; whether it held.
inline bool PumpUntil(const std::function<bool()>& done, DWORD ms) {
    const ULONGLONG deadline = ::GetTickCount64() + ms;
    while (!done()) {
        const ULONGLONG now = ::GetTickCount64();
        if (now >= deadline) return false;
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE,
                                    static_cast<DWORD>(std::min<ULONGLONG>(deadline - now, 20)), QS_ALLINPUT);
        framework::win32::PumpWaitingMessages();
    }
    return true;
}

inline LPARAM Point(int x, int y) {
    return MAKELPARAM(static_cast<WORD>(x), static_cast<WORD>(y));
}

// The command id and code packed as WM_COMMAND packs them, for a sequence.
inline WPARAM CommandParam(UINT id, int code) {
    return MAKEWPARAM(id, static_cast<WORD>(code));
}

// ---- The host -------------------------------------------------------------------

struct Command {
    UINT id = 0;
    int code = 0;
    Window* notifying = nullptr;
    int lastAction = 0;
    int currentIndex = 0;
    int selectedIndex = 0;
};

// A plain top-level window that owns one gallery (owner kind 3 notifies its
// parent) and records every command it receives through its command route.
class Host : public Window {
public:
    explicit Host(RECT rect = {40, 30, 840, 730}) {
        EXPECT_TRUE(CreateEx(
            0,
            RegisterWindowClass(0, ::LoadCursor(nullptr, IDC_ARROW),
                                reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_WINDOW + 1))),
            "gallery host", WS_OVERLAPPED | WS_CAPTION | WS_VISIBLE | WS_CLIPCHILDREN, rect, nullptr, 0));
    }

    CThumbnailGalleryWindow* gallery = nullptr;
    std::vector<Command> commands;
    testsupport::MessageSequence* sequence = nullptr;
    std::function<void(const Command&)> onCommand;

    bool OnCmdMsg(UINT id, int code, void*, void*) override {
        Command command;
        command.id = id;
        command.code = code;
        command.notifying = gallery::GetNotifyingControl();
        if (gallery != nullptr) {
            command.lastAction = gallery->GetLastAction();
            command.currentIndex = gallery->CurrentIndex();
            command.selectedIndex = gallery->SelectedIndex();
        }
        commands.push_back(command);
        if (sequence != nullptr) sequence->Add({WM_COMMAND, CommandParam(id, code), 0, "owner"});
        if (onCommand) onCommand(command);
        return true;
    }
};

// ---- Items --------------------------------------------------------------------------

struct DrawCall {
    HDC dc;
    RECT rect;
    DWORD rop;
    BOOL dragImage;
};

// An item that fills what it is given with one colour and remembers each call.
class SolidItem : public CTPGalleryItem {
public:
    SolidItem(COLORREF colour, SIZE cell = kLargeCell, SIZE picture = {100, 80}, int* destroyed = nullptr)
        : colour_(colour), cell_(cell), picture_(picture), destroyed_(destroyed) {}
    ~SolidItem() override {
        if (destroyed_ != nullptr) ++*destroyed_;
    }

    int GetWidth(BOOL actual) const override { return actual ? picture_.cx : cell_.cx; }
    int GetHeight(BOOL actual) const override { return actual ? picture_.cy : cell_.cy; }
    void Draw(HDC dc, const RECT* rect, DWORD rop, BOOL dragImage) override {
        calls.push_back({dc, *rect, rop, dragImage});
        if (drawLog != nullptr) drawLog->push_back(this);
        const HBRUSH brush = ::CreateSolidBrush(colour_);
        ::FillRect(dc, rect, brush);
        ::DeleteObject(brush);
    }

    COLORREF Colour() const { return colour_; }
    std::vector<DrawCall> calls;
    std::vector<const SolidItem*>* drawLog = nullptr;

private:
    COLORREF colour_;
    SIZE cell_;
    SIZE picture_;
    int* destroyed_;
};

// A distinct, recognisable colour for item `index`.
inline COLORREF ItemColour(int index) {
    return RGB(20 + (index * 37) % 200, 40 + (index * 91) % 180, 60 + (index * 53) % 160);
}

// ---- The probe -----------------------------------------------------------------------

// A gallery with its state open to the tests and its messages recorded.
template <class Base>
class Probe : public Base {
public:
    explicit Probe(SIZE cell = kLargeCell, BOOL withPopupMenu = FALSE, int ownerKind = 3)
        : Base(cell, withPopupMenu, ownerKind) {}

    using Base::BeginDrag;
    using Base::buttonDown;
    using Base::cellSize;
    using Base::columns;
    using Base::createParam1;
    using Base::createParam2;
    using Base::currentIndex;
    using Base::dragActive;
    using Base::dragEnabled;
    using Base::dragPatternBrush;
    using Base::dragRect;
    using Base::dropPoint;
    using Base::EndDrag;
    using Base::hasDragListener;
    using Base::hasPopupMenu;
    using Base::inputLocked;
    using Base::lastAction;
    using Base::mouseState;
    using Base::MoveDrag;
    using Base::OnLButtonDown;
    using Base::partialRow;
    using Base::popupMenu;
    using Base::pressedAnywhere;
    using Base::pressPoint;
    using Base::pressReleased;
    using Base::selectedIndex;
    using Base::selectedItem;
    using Base::timerId;
    using Base::timerRunning;
    using Base::topRow;
    using Base::totalRows;
    using Base::visibleRows;
    using Base::wheelScrollLines;

    testsupport::MessageSequence* sequence = nullptr;
    int buildMenuCalls = 0;
    std::vector<int> updateMenuCalls;
    std::function<void()> buildMenu;

    bool Create(HWND parent, const RECT& rect, HCURSOR cursor = ::LoadCursor(nullptr, IDC_ARROW),
                uint32_t param1 = 0, uint32_t param2 = 0) {
        return Base::Create(rect, parent, kGalleryId, cursor, param1, param2) != FALSE;
    }

    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (sequence != nullptr) sequence->Add({message, wParam, lParam, "gallery"});
        return Base::WindowProc(message, wParam, lParam);
    }
    void BuildMenu() override {
        ++buildMenuCalls;
        if (buildMenu) buildMenu();
        Base::BuildMenu();
    }
    void UpdateMenu(int index) override {
        updateMenuCalls.push_back(index);
        Base::UpdateMenu(index);
    }

    // Adds `count` solid items, each of its own colour; returns the first.
    SolidItem* Fill(int count, SIZE cell = kLargeCell, SIZE picture = {100, 80}, BOOL updateScroll = TRUE) {
        SolidItem* first = nullptr;
        for (int i = 0; i < count; ++i) {
            auto item = std::make_unique<SolidItem>(ItemColour(this->GetItemCount()), cell, picture);
            if (first == nullptr) first = item.get();
            this->AddItem(std::move(item), updateScroll);
        }
        return first;
    }
    SolidItem* Solid(int index) const { return static_cast<SolidItem*>(this->GetItem(index)); }

    // The same as the platform would send on a resize to a client of cx x cy.
    void SendSize(int cx, int cy) { this->Send(WM_SIZE, SIZE_RESTORED, Point(cx, cy)); }
};

using Gallery = Probe<CThumbnailGalleryWindow>;
using BrowserGallery = Probe<CBrowserGalleryWindow>;

// The outer rectangle at (x, y) of a gallery whose client area is cx x cy.
inline RECT RectForClient(int cx, int cy, int x = 0, int y = 0) {
    const int width = cx + 2 * ::GetSystemMetrics(SM_CXEDGE) + ::GetSystemMetrics(SM_CXVSCROLL);
    const int height = cy + 2 * ::GetSystemMetrics(SM_CYEDGE);
    return RECT{x, y, x + width, y + height};
}

// A host with a gallery of `cell` in a client area of cx x cy.
template <class G = Gallery>
struct Fixture {
    explicit Fixture(int cx = 500, int cy = 400, SIZE cell = kLargeCell, BOOL withPopupMenu = FALSE)
        : gallery(cell, withPopupMenu, 3) {
        host.gallery = &gallery;
        EXPECT_TRUE(gallery.Create(host.Handle(), RectForClient(cx, cy, 10, 10)));
        const RECT client = gallery.GetClientRect();
        EXPECT_EQ(client.right, cx);
        EXPECT_EQ(client.bottom, cy);
    }
    Host host;
    G gallery;
};

// ---- A canvas to paint into -------------------------------------------------------------

using testsupport::Canvas;

inline std::string Hex(COLORREF c) {
    char text[16];
    std::snprintf(text, sizeof text, "%02X%02X%02X", GetRValue(c), GetGValue(c), GetBValue(c));
    return text;
}

// Replaces the gallery's drawing calls for one test.
class DrawingFunctionsScope {
public:
    explicit DrawingFunctionsScope(const gallery::GalleryDrawingFunctions& functions)
        : previous_(gallery::SetGalleryDrawingFunctions(functions)) {}
    ~DrawingFunctionsScope() { gallery::SetGalleryDrawingFunctions(previous_); }
    DrawingFunctionsScope(const DrawingFunctionsScope&) = delete;
    DrawingFunctionsScope& operator=(const DrawingFunctionsScope&) = delete;

private:
    gallery::GalleryDrawingFunctions previous_;
};

// ---- The wheel setting -----------------------------------------------------------------

// Sets or removes "WheelScrollLines" under HKCU "Control Panel\Desktop" for
// one test and puts the value as it was back afterwards.
class WheelSettingGuard {
public:
    WheelSettingGuard() {
        HKEY key = nullptr;
        if (::RegOpenKeyExA(HKEY_CURRENT_USER, kKey, 0, KEY_QUERY_VALUE, &key) == ERROR_SUCCESS) {
            BYTE data[256] = {};
            DWORD size = sizeof data;
            DWORD type = 0;
            if (::RegQueryValueExA(key, kValue, nullptr, &type, data, &size) == ERROR_SUCCESS) {
                existed_ = true;
                type_ = type;
                saved_.assign(data, data + size);
            }
            ::RegCloseKey(key);
        }
    }
    ~WheelSettingGuard() {
        if (existed_)
            Write(type_, saved_.data(), static_cast<DWORD>(saved_.size()));
        else
            Remove();
    }
    WheelSettingGuard(const WheelSettingGuard&) = delete;
    WheelSettingGuard& operator=(const WheelSettingGuard&) = delete;

    void Set(const char* text) {
        Write(REG_SZ, reinterpret_cast<const BYTE*>(text), static_cast<DWORD>(std::strlen(text) + 1));
    }
    void SetDword(DWORD value) { Write(REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value); }
    void Remove() {
        HKEY key = nullptr;
        if (::RegOpenKeyExA(HKEY_CURRENT_USER, kKey, 0, KEY_SET_VALUE, &key) == ERROR_SUCCESS) {
            ::RegDeleteValueA(key, kValue);
            ::RegCloseKey(key);
        }
    }

private:
    static constexpr const char* kKey = "Control Panel\\Desktop";
    static constexpr const char* kValue = "WheelScrollLines";

    static void Write(DWORD type, const BYTE* data, DWORD size) {
        HKEY key = nullptr;
        if (::RegCreateKeyExA(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key,
                              nullptr) == ERROR_SUCCESS) {
            ::RegSetValueExA(key, kValue, 0, type, data, size);
            ::RegCloseKey(key);
        }
    }

    bool existed_ = false;
    DWORD type_ = 0;
    std::vector<BYTE> saved_;
};

}  // namespace gallerytest
