// Owners for GDI objects and device contexts, and guards that undo a change
// to a device context (a selected object, a saved state) when they go out of
// scope. Every owner is move-only; a guard is neither copied nor moved, since
// it belongs to the block in which the change is made.
#pragma once

#include <windows.h>

#include <utility>

#include "framework/win32/UniqueHandle.h"

namespace framework::win32 {

namespace detail {

template <class H>
struct GdiObjectTraits {
    using Handle = H;
    static Handle Invalid() { return nullptr; }
    static void Release(Handle handle) { ::DeleteObject(handle); }
};

struct MemoryDcTraits {
    using Handle = HDC;
    static Handle Invalid() { return nullptr; }
    static void Release(Handle handle) { ::DeleteDC(handle); }
};

struct EnhMetaFileTraits {
    using Handle = HENHMETAFILE;
    static Handle Invalid() { return nullptr; }
    static void Release(Handle handle) { ::DeleteEnhMetaFile(handle); }
};

struct MetaFileTraits {
    using Handle = HMETAFILE;
    static Handle Invalid() { return nullptr; }
    static void Release(Handle handle) { ::DeleteMetaFile(handle); }
};

}  // namespace detail

// Objects released with DeleteObject. An object must not be selected into a
// context when its owner goes; pair it with a SelectionGuard declared after it.
using UniqueGdiObject = UniqueHandle<detail::GdiObjectTraits<HGDIOBJ>>;
using UniqueBitmap = UniqueHandle<detail::GdiObjectTraits<HBITMAP>>;
using UniquePalette = UniqueHandle<detail::GdiObjectTraits<HPALETTE>>;
using UniqueFont = UniqueHandle<detail::GdiObjectTraits<HFONT>>;
using UniqueBrush = UniqueHandle<detail::GdiObjectTraits<HBRUSH>>;
using UniquePen = UniqueHandle<detail::GdiObjectTraits<HPEN>>;

// A context made by CreateCompatibleDC or CreateDC, released with DeleteDC.
using UniqueDc = UniqueHandle<detail::MemoryDcTraits>;

using UniqueEnhMetaFile = UniqueHandle<detail::EnhMetaFileTraits>;
using UniqueMetaFile = UniqueHandle<detail::MetaFileTraits>;

// A context of a window (or of the screen, for a null window) from GetDC,
// given back with ReleaseDC, which needs the window as well as the context.
class WindowDc {
public:
    WindowDc() noexcept = default;
    explicit WindowDc(HWND window) noexcept : window_(window), dc_(::GetDC(window)) {}
    ~WindowDc() { Reset(); }

    WindowDc(WindowDc&& other) noexcept
        : window_(std::exchange(other.window_, nullptr)), dc_(std::exchange(other.dc_, nullptr)) {}
    WindowDc& operator=(WindowDc&& other) noexcept {
        if (this != &other) {
            Reset();
            window_ = std::exchange(other.window_, nullptr);
            dc_ = std::exchange(other.dc_, nullptr);
        }
        return *this;
    }
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;

    HDC Get() const noexcept { return dc_; }
    explicit operator bool() const noexcept { return dc_ != nullptr; }

    void Reset() noexcept {
        if (dc_ != nullptr) ::ReleaseDC(window_, dc_);
        dc_ = nullptr;
        window_ = nullptr;
    }

private:
    HWND window_ = nullptr;
    HDC dc_ = nullptr;
};

// Selects an object into a context and selects the previous one back on
// destruction, so that the object can be deleted afterwards. Check Succeeded():
// SelectObject returns null (or HGDI_ERROR for regions) when it fails.
class SelectionGuard {
public:
    SelectionGuard(HDC dc, HGDIOBJ object) noexcept : dc_(dc), previous_(::SelectObject(dc, object)) {}
    ~SelectionGuard() {
        if (Succeeded()) ::SelectObject(dc_, previous_);
    }
    SelectionGuard(const SelectionGuard&) = delete;
    SelectionGuard& operator=(const SelectionGuard&) = delete;

    bool Succeeded() const noexcept { return previous_ != nullptr && previous_ != HGDI_ERROR; }
    HGDIOBJ Previous() const noexcept { return previous_; }

private:
    HDC dc_;
    HGDIOBJ previous_;
};

// Selects a palette (in the background or foreground) and puts the previous
// one back on destruction.
class PaletteSelectionGuard {
public:
    PaletteSelectionGuard(HDC dc, HPALETTE palette, bool background) noexcept
        : dc_(dc), previous_(::SelectPalette(dc, palette, background ? TRUE : FALSE)) {}
    ~PaletteSelectionGuard() {
        if (previous_ != nullptr) ::SelectPalette(dc_, previous_, TRUE);
    }
    PaletteSelectionGuard(const PaletteSelectionGuard&) = delete;
    PaletteSelectionGuard& operator=(const PaletteSelectionGuard&) = delete;

    bool Succeeded() const noexcept { return previous_ != nullptr; }

private:
    HDC dc_;
    HPALETTE previous_;
};

// SaveDC on construction, RestoreDC on destruction: everything changed in
// between (clip region, modes, selections) is undone at once.
class SavedDcState {
public:
    explicit SavedDcState(HDC dc) noexcept : dc_(dc), level_(::SaveDC(dc)) {}
    ~SavedDcState() {
        if (level_ != 0) ::RestoreDC(dc_, level_);
    }
    SavedDcState(const SavedDcState&) = delete;
    SavedDcState& operator=(const SavedDcState&) = delete;

    bool Succeeded() const noexcept { return level_ != 0; }

private:
    HDC dc_;
    int level_;
};

}  // namespace framework::win32
