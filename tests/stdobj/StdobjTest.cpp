#include "foundation/Stdobj.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "StdobjTestStrings.h"
#include "StdobjTestSupport.h"
#include "foundation/AssertException.h"
#include "foundation/SharedPalette.h"
#include "foundation/resstr.h"

namespace {

using stdobjtest::DibCanvas;
using stdobjtest::SysColorsOverride;

class StdobjTest : public stdobjtest::FreshStdObjects {};

LOGBRUSH BrushInfo(HBRUSH brush) {
    LOGBRUSH info = {};
    EXPECT_EQ(::GetObjectA(brush, sizeof info, &info), static_cast<int>(sizeof info));
    return info;
}

LOGPEN PenInfo(HPEN pen) {
    LOGPEN info = {};
    EXPECT_EQ(::GetObjectA(pen, sizeof info, &info), static_cast<int>(sizeof info));
    return info;
}

LOGFONTA FontInfo(HFONT font) {
    LOGFONTA info = {};
    EXPECT_EQ(::GetObjectA(font, sizeof info, &info), static_cast<int>(sizeof info));
    return info;
}

COLORREF TestColor(int i) {
    return RGB(i * 7, 255 - i, (i * 31) & 0xFF);
}

struct MetricsAnswers {
    int dbcs = 0;
    int width = 1234;
    int height = 567;
    int screenQueries = 0;
};
MetricsAnswers g_metrics;

int FakeMetrics(int index) {
    switch (index) {
        case SM_DBCSENABLED: return g_metrics.dbcs;
        case SM_CXSCREEN: ++g_metrics.screenQueries; return g_metrics.width;
        case SM_CYSCREEN: ++g_metrics.screenQueries; return g_metrics.height;
        default: return ::GetSystemMetrics(index);
    }
}

class MetricsOverride {
public:
    MetricsOverride() : previous_(foundation::SetStdObjectsMetricsQuery(&FakeMetrics)) { g_metrics = {}; }
    ~MetricsOverride() { foundation::SetStdObjectsMetricsQuery(previous_); }
    MetricsOverride(const MetricsOverride&) = delete;
    MetricsOverride& operator=(const MetricsOverride&) = delete;

private:
    foundation::SystemMetricsQuery previous_;
};

bool FailingLoader(long, std::string&) {
    return false;
}

HINSTANCE ThisModule() {
    return ::GetModuleHandleA(nullptr);
}

}  // namespace

// ---- System colours ----------------------------------------------------------

TEST_F(StdobjTest, SysColorBrushIsMadeOnceAndKeepsItsColour) {
    const COLORREF before = ::GetSysColor(COLOR_HIGHLIGHT);
    const HBRUSH first = foundation::GetSysColorBrush(COLOR_HIGHLIGHT);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(BrushInfo(first).lbStyle, static_cast<UINT>(BS_SOLID));
    EXPECT_EQ(BrushInfo(first).lbColor, before);
    EXPECT_EQ(foundation::GetSysColorBrush(COLOR_HIGHLIGHT), first);

    const COLORREF changed = before == RGB(1, 2, 3) ? RGB(4, 5, 6) : RGB(1, 2, 3);
    SysColorsOverride colors({COLOR_HIGHLIGHT}, {changed});
    ASSERT_TRUE(colors.Succeeded());
    ASSERT_EQ(::GetSysColor(COLOR_HIGHLIGHT), changed);
    EXPECT_EQ(foundation::GetSysColorBrush(COLOR_HIGHLIGHT), first);
    EXPECT_EQ(BrushInfo(foundation::GetSysColorBrush(COLOR_HIGHLIGHT)).lbColor, before)
        << "the shared brush does not follow a change of colours";
}

TEST_F(StdobjTest, SysColorPenIsSolidOfWidthZero) {
    const HPEN pen = foundation::GetSysColorPen(COLOR_BTNSHADOW);
    ASSERT_NE(pen, nullptr);
    const LOGPEN info = PenInfo(pen);
    EXPECT_EQ(info.lopnStyle, static_cast<UINT>(PS_SOLID));
    EXPECT_EQ(info.lopnWidth.x, 0);
    EXPECT_EQ(info.lopnColor, ::GetSysColor(COLOR_BTNSHADOW));
    EXPECT_EQ(foundation::GetSysColorPen(COLOR_BTNSHADOW), pen);
    EXPECT_NE(foundation::GetSysColorPen(COLOR_BTNFACE), pen);
}

TEST_F(StdobjTest, EveryIndexOfTheTableHasItsObjects) {
    for (int index = 0; index < foundation::kSysColorTableSize; ++index) {
        EXPECT_NE(foundation::GetSysColorBrush(index), nullptr) << index;
        EXPECT_NE(foundation::GetSysColorPen(index), nullptr) << index;
    }
}

TEST_F(StdobjTest, IndicesOutsideTheTableGiveNull) {
    EXPECT_EQ(foundation::GetSysColorBrush(-1), nullptr);
    EXPECT_EQ(foundation::GetSysColorBrush(30), nullptr);
    EXPECT_EQ(foundation::GetSysColorPen(-1), nullptr);
    EXPECT_EQ(foundation::GetSysColorPen(30), nullptr);
    EXPECT_EQ(foundation::GetSysColorPen(0x7FFFFFFF), nullptr);
}

// ---- Colour entries --------------------------------------------------------------

TEST_F(StdobjTest, ColorBrushAndPenOfAColour) {
    const COLORREF color = RGB(12, 34, 56);
    const HBRUSH brush = foundation::GetColorBrush(color);
    const HPEN pen = foundation::GetColorPen(color);
    ASSERT_NE(brush, nullptr);
    ASSERT_NE(pen, nullptr);
    EXPECT_EQ(BrushInfo(brush).lbColor, color);
    EXPECT_EQ(BrushInfo(brush).lbStyle, static_cast<UINT>(BS_SOLID));
    EXPECT_EQ(PenInfo(pen).lopnColor, color);
    EXPECT_EQ(PenInfo(pen).lopnWidth.x, 0);
    EXPECT_EQ(PenInfo(pen).lopnStyle, static_cast<UINT>(PS_SOLID));
    EXPECT_EQ(foundation::GetColorBrush(color), brush);
    EXPECT_EQ(foundation::GetColorPen(color), pen);
}

TEST_F(StdobjTest, PenAndBrushOfAColourShareTheirEntry) {
    foundation::GetColorBrush(RGB(1, 1, 1));
    EXPECT_EQ(foundation::GetColorEntryCount(), 1);
    foundation::GetColorPen(RGB(1, 1, 1));
    EXPECT_EQ(foundation::GetColorEntryCount(), 1);
    foundation::GetColorPen(RGB(2, 2, 2));
    foundation::GetColorBrush(RGB(2, 2, 2));
    EXPECT_EQ(foundation::GetColorEntryCount(), 2);
}

TEST_F(StdobjTest, ThirtyColoursWorkAndTheThirtyFirstIsAnAssertion) {
    std::vector<HBRUSH> brushes;
    for (int i = 0; i < foundation::kColorEntryTableSize; ++i) {
        brushes.push_back(foundation::GetColorBrush(TestColor(i)));
        ASSERT_NE(brushes.back(), nullptr) << i;
    }
    EXPECT_EQ(foundation::GetColorEntryCount(), 30);

    foundation::CKAssertException* caught = nullptr;
    try {
        foundation::GetColorBrush(RGB(250, 251, 252));
    } catch (foundation::CKAssertException* e) {
        caught = e;
    }
    ASSERT_NE(caught, nullptr);
    EXPECT_EQ(caught, &foundation::AssertException());
    EXPECT_STREQ(caught->File(), "Stdobj");
    EXPECT_EQ(caught->Line(), 223);
    EXPECT_EQ(foundation::GetColorEntryCount(), 30) << "the failed colour took no entry";

    // Earlier colours go on working, for pens as well, which they had none of.
    EXPECT_EQ(foundation::GetColorBrush(TestColor(0)), brushes[0]);
    const HPEN pen = foundation::GetColorPen(TestColor(3));
    ASSERT_NE(pen, nullptr);
    EXPECT_EQ(PenInfo(pen).lopnColor, TestColor(3));

    // A pen of a new colour is the same assertion.
    EXPECT_THROW(foundation::GetColorPen(RGB(250, 251, 252)), foundation::CKAssertException*);
    EXPECT_THROW(foundation::GetColorBrush(RGB(250, 251, 253)), foundation::CKAssertException*);
}

TEST_F(StdobjTest, ColoursAreTakenByTheirWholeValue) {
    foundation::GetColorBrush(0x00102030);
    foundation::GetColorBrush(0x01000002);  // a palette index is another colour
    EXPECT_EQ(foundation::GetColorEntryCount(), 2);
}

// ---- Fonts ----------------------------------------------------------------------------

TEST_F(StdobjTest, SmallAndLargeFontsTakeTheFaceOf6104) {
    MetricsOverride metrics;
    const HFONT small = foundation::GetStdFontSmall();
    ASSERT_NE(small, nullptr);
    LOGFONTA info = FontInfo(small);
    EXPECT_EQ(info.lfHeight, 14);
    EXPECT_EQ(info.lfWeight, 400);
    EXPECT_EQ(info.lfCharSet, 1);
    EXPECT_EQ(info.lfPitchAndFamily, 0x22);
    EXPECT_STREQ(info.lfFaceName, "Arial");
    EXPECT_EQ(info.lfItalic, 0);
    EXPECT_EQ(info.lfWidth, 0);

    const HFONT large = foundation::GetStdFontLarge();
    ASSERT_NE(large, nullptr);
    info = FontInfo(large);
    EXPECT_EQ(info.lfHeight, 18);
    EXPECT_EQ(info.lfWeight, 400);
    EXPECT_EQ(info.lfCharSet, 1);
    EXPECT_EQ(info.lfPitchAndFamily, 0x22);
    EXPECT_STREQ(info.lfFaceName, "Arial");

    EXPECT_EQ(foundation::GetStdFontSmall(), small);
    EXPECT_EQ(foundation::GetStdFontLarge(), large);
    EXPECT_NE(small, large);
}

TEST_F(StdobjTest, FixedHeightFontTakesTheFaceOf6110) {
    MetricsOverride metrics;
    const HFONT fixed = foundation::GetStdFontFixedHeight();
    ASSERT_NE(fixed, nullptr);
    const LOGFONTA info = FontInfo(fixed);
    EXPECT_EQ(info.lfHeight, -12);
    EXPECT_EQ(info.lfWeight, 400);
    EXPECT_EQ(info.lfCharSet, 0);
    EXPECT_EQ(info.lfPitchAndFamily, 0x22);
    EXPECT_STREQ(info.lfFaceName, "Tahoma");
    EXPECT_EQ(foundation::GetStdFontFixedHeight(), fixed);
}

TEST_F(StdobjTest, DoubleByteSystemUsesTheSystemFont) {
    MetricsOverride metrics;
    g_metrics.dbcs = 1;
    const HGDIOBJ system = ::GetStockObject(SYSTEM_FONT);
    EXPECT_EQ(foundation::GetStdFontSmall(), system);
    EXPECT_EQ(foundation::GetStdFontLarge(), system);
    EXPECT_EQ(foundation::GetStdFontFixedHeight(), system);
    foundation::ReleaseStdObjects();
    EXPECT_EQ(::GetObjectType(system), static_cast<DWORD>(OBJ_FONT))
        << "the stock font is nobody's to delete";
}

TEST_F(StdobjTest, MissingFaceNameStillMakesTheFont) {
    MetricsOverride metrics;
    const foundation::ResourceStringLoader previous = foundation::SetResourceStringLoader(&FailingLoader);
    stdobjtest::CapturedReports reports;
    const HFONT font = foundation::GetStdFontSmall();
    foundation::SetResourceStringLoader(previous);
    ASSERT_NE(font, nullptr);
    EXPECT_NE(font, ::GetStockObject(SYSTEM_FONT));
    EXPECT_STREQ(FontInfo(font).lfFaceName, "");
    EXPECT_EQ(FontInfo(font).lfHeight, 14);
    ASSERT_EQ(reports.lines.size(), 1u);
    EXPECT_EQ(reports.lines[0], "resstr, Line 53: Failed to load string resource, number = 6104");
}

// ---- Halftone brush -----------------------------------------------------------------------

TEST_F(StdobjTest, HalftoneBrushIsACheckerboardOfButtonFaceAndHighlight) {
    // Colours of distinct channels show that red and blue are not swapped.
    const COLORREF face = RGB(10, 20, 200);
    const COLORREF highlight = RGB(250, 240, 5);
    SysColorsOverride colors({COLOR_BTNFACE, COLOR_BTNHIGHLIGHT}, {face, highlight});
    ASSERT_TRUE(colors.Succeeded());
    const HBRUSH halftone = foundation::GetHalftoneBrush();
    ASSERT_NE(halftone, nullptr);
    EXPECT_EQ(BrushInfo(halftone).lbStyle, static_cast<UINT>(BS_PATTERN));
    EXPECT_EQ(foundation::GetHalftoneBrush(), halftone);

    DibCanvas canvas(16, 16, RGB(0, 0, 0));
    ASSERT_TRUE(canvas.Ok());
    {
        framework::win32::SelectionGuard selection(canvas.Dc(), halftone);
        ::PatBlt(canvas.Dc(), 0, 0, 16, 16, PATCOPY);
    }
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x)
            ASSERT_EQ(canvas.Pixel(x, y), (x + y) % 2 == 0 ? face : highlight) << x << "," << y;
}

TEST_F(StdobjTest, HalftoneBrushKeepsItsColoursWhenTheSystemsChange) {
    const HBRUSH halftone = foundation::GetHalftoneBrush();
    ASSERT_NE(halftone, nullptr);
    DibCanvas before(2, 1);
    {
        framework::win32::SelectionGuard selection(before.Dc(), halftone);
        ::PatBlt(before.Dc(), 0, 0, 2, 1, PATCOPY);
    }
    SysColorsOverride colors({COLOR_BTNFACE, COLOR_BTNHIGHLIGHT}, {RGB(1, 2, 3), RGB(4, 5, 6)});
    EXPECT_EQ(foundation::GetHalftoneBrush(), halftone);
    DibCanvas after(2, 1);
    {
        framework::win32::SelectionGuard selection(after.Dc(), foundation::GetHalftoneBrush());
        ::PatBlt(after.Dc(), 0, 0, 2, 1, PATCOPY);
    }
    EXPECT_EQ(after.Pixel(0, 0), before.Pixel(0, 0));
    EXPECT_EQ(after.Pixel(1, 0), before.Pixel(1, 0));
}

// ---- Window class, clipboard formats, screen --------------------------------------------------

TEST_F(StdobjTest, ToolBarClassIsRegisteredOnce) {
    EXPECT_STREQ(foundation::GetToolBarClassName(), "KToolBar");
    EXPECT_STREQ(foundation::GetToolBarClassName(), "KToolBar");

    WNDCLASSA info = {};
    ASSERT_TRUE(::GetClassInfoA(ThisModule(), "KToolBar", &info));
    EXPECT_EQ(info.style, static_cast<UINT>(CS_DBLCLKS));
    EXPECT_EQ(info.hbrBackground, reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(0x10)));
    EXPECT_EQ(info.hCursor, ::LoadCursorA(nullptr, MAKEINTRESOURCEA(0x7F00)));
    EXPECT_EQ(info.hInstance, ThisModule());
    EXPECT_EQ(info.cbWndExtra, 0);

    const HWND window =
        ::CreateWindowExA(0, "KToolBar", "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, ThisModule(), nullptr);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(::SendMessageA(window, WM_GETTEXTLENGTH, 0, 0), 0) << "the default procedure answers";
    ::SetWindowTextA(window, "abc");
    EXPECT_EQ(::SendMessageA(window, WM_GETTEXTLENGTH, 0, 0), 3);
    ::DestroyWindow(window);

    // The class outlives the tables.
    foundation::ReleaseStdObjects();
    EXPECT_STREQ(foundation::GetToolBarClassName(), "KToolBar");
    EXPECT_TRUE(::GetClassInfoA(ThisModule(), "KToolBar", &info));
}

TEST_F(StdobjTest, ClipboardFormatsAreRegisteredInOrder) {
    const UINT* formats = foundation::GetClipboardFormats();
    ASSERT_NE(formats, nullptr);
    const char* const names[] = {"Native",       "OwnerLink",   "ObjectLink",        "Embedded Object",
                                 "Embed Source", "Link Source", "Object Descriptor", "Link Source Descriptor",
                                 "FileName",     "FileNameW"};
    for (int i = 0; i < foundation::kClipboardFormatCount; ++i) {
        EXPECT_GE(formats[i], 0xC000u) << names[i];
        EXPECT_EQ(formats[i], ::RegisterClipboardFormatA(names[i])) << names[i];
        char name[64] = {};
        ASSERT_GT(::GetClipboardFormatNameA(formats[i], name, sizeof name), 0);
        EXPECT_STREQ(name, names[i]);
    }
    EXPECT_EQ(formats[foundation::kClipboardFileNameW], ::RegisterClipboardFormatA("FileNameW"));
    EXPECT_EQ(foundation::GetClipboardFormats(), formats);
}

TEST_F(StdobjTest, ScreenRectIsMeasuredOnceUntilReleased) {
    MetricsOverride metrics;
    const RECT* rect = foundation::GetScreenRect();
    ASSERT_NE(rect, nullptr);
    EXPECT_EQ(rect->left, 0);
    EXPECT_EQ(rect->top, 0);
    EXPECT_EQ(rect->right, 1234);
    EXPECT_EQ(rect->bottom, 567);
    EXPECT_EQ(g_metrics.screenQueries, 2);

    g_metrics.width = 800;
    g_metrics.height = 600;
    EXPECT_EQ(foundation::GetScreenRect(), rect);
    EXPECT_EQ(rect->right, 1234);
    EXPECT_EQ(g_metrics.screenQueries, 2);

    foundation::ReleaseStdObjects();
    rect = foundation::GetScreenRect();
    EXPECT_EQ(rect->right, 800);
    EXPECT_EQ(rect->bottom, 600);
}

TEST_F(StdobjTest, ScreenRectOfTheSystem) {
    const RECT* rect = foundation::GetScreenRect();
    ASSERT_NE(rect, nullptr);
    EXPECT_EQ(rect->right, ::GetSystemMetrics(SM_CXSCREEN));
    EXPECT_EQ(rect->bottom, ::GetSystemMetrics(SM_CYSCREEN));
}

// ---- Release -----------------------------------------------------------------------------------

TEST_F(StdobjTest, ReleaseDeletesEverythingAndEmptiesTheTables) {
    MetricsOverride metrics;
    const HGDIOBJ objects[] = {
        foundation::GetSysColorBrush(COLOR_WINDOW),
        foundation::GetSysColorPen(COLOR_WINDOWTEXT),
        foundation::GetColorBrush(RGB(9, 8, 7)),
        foundation::GetColorPen(RGB(9, 8, 7)),
        foundation::GetStdFontSmall(),
        foundation::GetStdFontLarge(),
        foundation::GetStdFontFixedHeight(),
        foundation::GetHalftoneBrush(),
    };
    for (HGDIOBJ object : objects) ASSERT_NE(::GetObjectType(object), 0u);
    ASSERT_NE(foundation::GetSharedPalette(), nullptr);
    const HPALETTE palette = foundation::GetSharedPalette()->Handle();
    ASSERT_NE(palette, nullptr);
    foundation::GetClipboardFormats();
    foundation::GetScreenRect();
    EXPECT_EQ(foundation::GetColorEntryCount(), 1);

    foundation::ReleaseStdObjects();
    EXPECT_TRUE(foundation::AreStdObjectsReleased());
    EXPECT_EQ(foundation::GetColorEntryCount(), 0);
    for (HGDIOBJ object : objects) EXPECT_EQ(::GetObjectType(object), 0u) << object;
    EXPECT_EQ(::GetObjectType(palette), 0u);

    // The colour entries are free again: thirty new colours fit.
    for (int i = 0; i < foundation::kColorEntryTableSize; ++i)
        EXPECT_NE(foundation::GetColorBrush(TestColor(i + 100)), nullptr);
    EXPECT_EQ(foundation::GetColorEntryCount(), 30);
}

TEST_F(StdobjTest, ReleaseOfEmptyTablesIsHarmless) {
    foundation::ReleaseStdObjects();
    foundation::ReleaseStdObjects();
    EXPECT_TRUE(foundation::AreStdObjectsReleased());
    EXPECT_EQ(foundation::GetColorEntryCount(), 0);
}
