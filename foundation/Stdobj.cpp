#include "foundation/Stdobj.h"

#include <array>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include "foundation/AssertException.h"
#include "foundation/SharedPalette.h"
#include "foundation/resstr.h"
#include "framework/win32/GdiHandles.h"

namespace foundation {

namespace {

using framework::win32::UniqueBitmap;
using framework::win32::UniqueBrush;
using framework::win32::UniqueFont;
using framework::win32::UniquePen;
using framework::win32::WindowDc;

// The assertion of a 31st colour is known in the log by this source and line.
constexpr char kSourceName[] = "Stdobj";
constexpr long kColorTableFullLine = 223;

constexpr char kToolBarClassName[] = "KToolBar";

constexpr const char* kClipboardFormatNames[kClipboardFormatCount] = {
    "Native",       "OwnerLink",   "ObjectLink",        "Embedded Object",
    "Embed Source", "Link Source", "Object Descriptor", "Link Source Descriptor",
    "FileName",     "FileNameW",
};

constexpr LONG kFontWeight = 400;
constexpr BYTE kFontPitchAndFamily = VARIABLE_PITCH | FF_SWISS;  // 0x22

constexpr DWORD kHalftoneRowA = 0x5555AAAA;
constexpr DWORD kHalftoneRowB = 0xAAAA5555;

struct ColorEntry {
    ColorRef color = 0;
    UniquePen pen;
    UniqueBrush brush;
};

// A shared font: either one of ours, or the stock system font, which is
// nobody's to delete.
struct SharedFont {
    UniqueFont owned;
    HFONT handle = nullptr;
};

enum FontSlot { kFontSmall, kFontLarge, kFontFixedHeight, kFontCount };

struct FontRequest {
    LONG height;
    BYTE charSet;
    long faceId;
};

constexpr FontRequest kFontRequests[kFontCount] = {
    {14, DEFAULT_CHARSET, kStdFontFaceId},
    {18, DEFAULT_CHARSET, kStdFontFaceId},
    {-12, ANSI_CHARSET, kStdFontFixedHeightFaceId},
};

struct Tables {
    std::array<UniqueBrush, kSysColorTableSize> sysColorBrushes;
    std::array<UniquePen, kSysColorTableSize> sysColorPens;
    std::array<ColorEntry, kColorEntryTableSize> colorEntries;
    int colorEntryCount = 0;
    std::array<SharedFont, kFontCount> fonts;
    UniqueBrush halftoneBrush;
    std::unique_ptr<CSharedPalette> palette;
    std::unique_ptr<std::array<UINT, kClipboardFormatCount>> clipboardFormats;
    bool hasScreenRect = false;
    RECT screenRect = {};
    bool toolBarClassRegistered = false;
    bool released = false;
};

// Never destroyed: ReleaseStdObjects is the one end of the tables. A
// destructor at exit would run after the imaging layer's own state is gone,
// and the system takes back what is left of a process anyway.
Tables& StdTables() {
    static Tables* const tables = new Tables;
    return *tables;
}

// Controls on several user-interface threads share the tables: every getter
// makes and reads its object under this lock. The handles it gives out are
// the process's, usable on any thread. Recursive, since a getter may report
// through code that asks for another object.
std::recursive_mutex& StdLock() {
    static std::recursive_mutex* const lock = new std::recursive_mutex;
    return *lock;
}

using StdHold = std::lock_guard<std::recursive_mutex>;

SystemMetricsQuery g_metricsQuery = nullptr;

int SystemMetric(int index) {
    return g_metricsQuery != nullptr ? g_metricsQuery(index) : ::GetSystemMetrics(index);
}

bool IsSysColorIndex(int index) {
    return index >= 0 && index < kSysColorTableSize;
}

ColorEntry& EntryForColor(ColorRef color) {
    Tables& tables = StdTables();
    for (int i = 0; i < tables.colorEntryCount; ++i)
        if (tables.colorEntries[static_cast<std::size_t>(i)].color == color)
            return tables.colorEntries[static_cast<std::size_t>(i)];
    if (tables.colorEntryCount >= kColorEntryTableSize) ThrowAssert(kSourceName, kColorTableFullLine);
    ColorEntry& entry = tables.colorEntries[static_cast<std::size_t>(tables.colorEntryCount++)];
    entry.color = color;
    return entry;
}

HFONT SharedFontFor(FontSlot slot) {
    const StdHold hold(StdLock());
    SharedFont& font = StdTables().fonts[slot];
    if (font.handle != nullptr) return font.handle;
    if (SystemMetric(SM_DBCSENABLED) == 0) {
        const FontRequest& request = kFontRequests[slot];
        LOGFONTA logFont = {};
        logFont.lfHeight = request.height;
        logFont.lfWeight = kFontWeight;
        logFont.lfCharSet = request.charSet;
        logFont.lfPitchAndFamily = kFontPitchAndFamily;
        // A missing face name is reported and left empty: the font mapper
        // still finds a swiss face.
        CResString face(request.faceId);
        const std::string& name = face.GetText();
        const std::size_t length = name.size() < LF_FACESIZE - 1 ? name.size() : LF_FACESIZE - 1;
        std::memcpy(logFont.lfFaceName, name.data(), length);
        font.owned.Reset(::CreateFontIndirectA(&logFont));
    }
    font.handle = font.owned ? font.owned.Get() : static_cast<HFONT>(::GetStockObject(SYSTEM_FONT));
    return font.handle;
}

RGBQUAD QuadOf(COLORREF color) {
    return RGBQUAD{GetBValue(color), GetGValue(color), GetRValue(color), 0};
}

HINSTANCE CodeModule() {
    HMODULE module = nullptr;
    ::GetModuleHandleExA(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCSTR>(&CodeModule), &module);
    return module;
}

}  // namespace

HBRUSH GetSysColorBrush(int index) {
    const StdHold hold(StdLock());
    if (!IsSysColorIndex(index)) return nullptr;
    UniqueBrush& brush = StdTables().sysColorBrushes[static_cast<std::size_t>(index)];
    if (!brush) brush.Reset(::CreateSolidBrush(::GetSysColor(index)));
    return brush.Get();
}

HPEN GetSysColorPen(int index) {
    const StdHold hold(StdLock());
    if (!IsSysColorIndex(index)) return nullptr;
    UniquePen& pen = StdTables().sysColorPens[static_cast<std::size_t>(index)];
    if (!pen) pen.Reset(::CreatePen(PS_SOLID, 0, ::GetSysColor(index)));
    return pen.Get();
}

HBRUSH GetColorBrush(ColorRef color) {
    const StdHold hold(StdLock());
    ColorEntry& entry = EntryForColor(color);
    if (!entry.brush) entry.brush.Reset(::CreateSolidBrush(color));
    return entry.brush.Get();
}

HPEN GetColorPen(ColorRef color) {
    const StdHold hold(StdLock());
    ColorEntry& entry = EntryForColor(color);
    if (!entry.pen) entry.pen.Reset(::CreatePen(PS_SOLID, 0, color));
    return entry.pen.Get();
}

int GetColorEntryCount() {
    const StdHold hold(StdLock());
    return StdTables().colorEntryCount;
}

HFONT GetStdFontSmall() {
    return SharedFontFor(kFontSmall);
}

HFONT GetStdFontLarge() {
    return SharedFontFor(kFontLarge);
}

HFONT GetStdFontFixedHeight() {
    return SharedFontFor(kFontFixedHeight);
}

HBRUSH GetHalftoneBrush() {
    const StdHold hold(StdLock());
    UniqueBrush& halftone = StdTables().halftoneBrush;
    if (halftone) return halftone.Get();

    struct {
        BITMAPINFOHEADER header;
        RGBQUAD colors[2];
    } info = {};
    info.header.biSize = sizeof(BITMAPINFOHEADER);
    info.header.biWidth = 8;
    info.header.biHeight = 8;
    info.header.biPlanes = 1;
    info.header.biBitCount = 1;
    info.header.biCompression = BI_RGB;
    info.colors[0] = QuadOf(::GetSysColor(COLOR_BTNFACE));
    info.colors[1] = QuadOf(::GetSysColor(COLOR_BTNHIGHLIGHT));
    DWORD rows[8];
    for (std::size_t row = 0; row < 8; ++row) rows[row] = row % 2 == 0 ? kHalftoneRowA : kHalftoneRowB;

    WindowDc screen(nullptr);
    if (!screen) return nullptr;
    const UniqueBitmap bitmap(::CreateDIBitmap(screen.Get(), &info.header, CBM_INIT, rows,
                                               reinterpret_cast<const BITMAPINFO*>(&info), DIB_RGB_COLORS));
    if (!bitmap) return nullptr;
    // The brush keeps its own copy of the pattern.
    halftone.Reset(::CreatePatternBrush(bitmap.Get()));
    return halftone.Get();
}

const char* GetToolBarClassName() {
    const StdHold hold(StdLock());
    Tables& tables = StdTables();
    if (!tables.toolBarClassRegistered) {
        const HINSTANCE module = CodeModule();
        WNDCLASSA existing = {};
        if (::GetClassInfoA(module, kToolBarClassName, &existing)) {
            tables.toolBarClassRegistered = true;
        } else {
            WNDCLASSA windowClass = {};
            windowClass.style = CS_DBLCLKS;
            windowClass.lpfnWndProc = &::DefWindowProcA;
            windowClass.hInstance = module;
            windowClass.hCursor = ::LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));  // IDC_ARROW
            windowClass.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
            windowClass.lpszClassName = kToolBarClassName;
            tables.toolBarClassRegistered = ::RegisterClassA(&windowClass) != 0;
        }
    }
    return kToolBarClassName;
}

CSharedPalette* GetSharedPalette() {
    const StdHold hold(StdLock());
    std::unique_ptr<CSharedPalette>& palette = StdTables().palette;
    if (!palette) {
        palette.reset(new (std::nothrow) CSharedPalette);
        if (palette) {
            try {
                palette->Create();
            } catch (const std::bad_alloc&) {
                // The palette stays as far as it got; callers draw with it.
            }
        }
    }
    return palette.get();
}

const UINT* GetClipboardFormats() {
    const StdHold hold(StdLock());
    auto& formats = StdTables().clipboardFormats;
    if (!formats) {
        formats.reset(new (std::nothrow) std::array<UINT, kClipboardFormatCount>);
        if (!formats) return nullptr;
        for (std::size_t i = 0; i < formats->size(); ++i)
            (*formats)[i] = ::RegisterClipboardFormatA(kClipboardFormatNames[i]);
    }
    return formats->data();
}

const RECT* GetScreenRect() {
    const StdHold hold(StdLock());
    Tables& tables = StdTables();
    if (!tables.hasScreenRect) {
        tables.screenRect = RECT{0, 0, SystemMetric(SM_CXSCREEN), SystemMetric(SM_CYSCREEN)};
        tables.hasScreenRect = true;
    }
    return &tables.screenRect;
}

void ReleaseStdObjects() {
    const StdHold hold(StdLock());
    Tables& tables = StdTables();
    tables.hasScreenRect = false;
    tables.screenRect = RECT{};
    tables.halftoneBrush.Reset();
    tables.palette.reset();
    tables.clipboardFormats.reset();
    for (SharedFont& font : tables.fonts) {
        font.owned.Reset();
        font.handle = nullptr;
    }
    for (UniqueBrush& brush : tables.sysColorBrushes) brush.Reset();
    for (UniquePen& pen : tables.sysColorPens) pen.Reset();
    for (ColorEntry& entry : tables.colorEntries) {
        entry.brush.Reset();
        entry.pen.Reset();
        entry.color = 0;
    }
    tables.colorEntryCount = 0;
    // The class is the module's: a module loaded again registers its own.
    if (tables.toolBarClassRegistered) ::UnregisterClassA(kToolBarClassName, CodeModule());
    tables.toolBarClassRegistered = false;
    tables.released = true;
}

bool AreStdObjectsReleased() {
    const StdHold hold(StdLock());
    return StdTables().released;
}

SystemMetricsQuery SetStdObjectsMetricsQuery(SystemMetricsQuery query) {
    const StdHold hold(StdLock());
    const SystemMetricsQuery previous = g_metricsQuery;
    g_metricsQuery = query;
    return previous;
}

}  // namespace foundation
