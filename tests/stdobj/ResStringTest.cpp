#include "foundation/resstr.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <new>
#include <string>

#include "StdobjTestStrings.h"
#include "StdobjTestSupport.h"
#include "framework/win32/Window.h"

namespace {

using foundation::CResString;
using stdobjtest::CapturedReports;

std::string LongText() {
    std::string text;
    char number[8];
    for (int i = 0; i < 120; ++i) {
        std::snprintf(number, sizeof number, "%04d-", i);
        text += number;
    }
    return text;
}

// Installs a loader for the lifetime of the object.
class LoaderOverride {
public:
    explicit LoaderOverride(foundation::ResourceStringLoader loader)
        : previous_(foundation::SetResourceStringLoader(loader)) {}
    ~LoaderOverride() { foundation::SetResourceStringLoader(previous_); }
    LoaderOverride(const LoaderOverride&) = delete;
    LoaderOverride& operator=(const LoaderOverride&) = delete;

private:
    foundation::ResourceStringLoader previous_;
};

int g_loads = 0;

bool CountingLoader(long id, std::string& text) {
    ++g_loads;
    return foundation::LoadResourceString(id, text);
}

bool ThrowingLoader(long, std::string&) {
    throw std::bad_alloc();
}

class SilentBadAlloc : public std::bad_alloc {
public:
    const char* what() const noexcept override { return ""; }
};

bool SilentlyThrowingLoader(long, std::string&) {
    throw SilentBadAlloc();
}

}  // namespace

TEST(CResString, LoadsFromTheResourceModule) {
    CResString face(IDS_STD_FONT_FACE);
    EXPECT_EQ(face.Id(), IDS_STD_FONT_FACE);
    CapturedReports reports;
    EXPECT_EQ(face.GetText(), "Arial");
    EXPECT_TRUE(reports.lines.empty());
}

TEST(CResString, KeepsALineFeed) {
    CResString text(IDS_TEST_TWO_LINES);
    EXPECT_EQ(text.GetText(), "First line\nSecond line");
}

TEST(CResString, LoadsATextLongerThanTheFirstBuffer) {
    CResString text(IDS_TEST_LONG);
    EXPECT_EQ(text.GetText().size(), 600u);
    EXPECT_EQ(text.GetText(), LongText());
}

TEST(CResString, LoadsTheHighestId) {
    CResString text(IDS_TEST_HIGHEST);
    EXPECT_EQ(text.GetText(), "last id");
}

TEST(CResString, LoadsOnceAndKeepsTheText) {
    g_loads = 0;
    LoaderOverride counting(&CountingLoader);
    CResString text(IDS_STD_FONT_FIXED_FACE);
    EXPECT_EQ(text.GetText(), "Tahoma");
    EXPECT_EQ(text.GetText(), "Tahoma");
    EXPECT_EQ(g_loads, 1);
}

TEST(CResString, MissingStringIsEmptyAndReported) {
    CapturedReports reports;
    CResString missing(IDS_TEST_MISSING);
    EXPECT_EQ(missing.GetText(), "");
    ASSERT_EQ(reports.lines.size(), 1u);
    EXPECT_EQ(reports.lines[0], "resstr, Line 53: Failed to load string resource, number = 6049");
}

TEST(CResString, MissingStringIsTriedAndReportedAtEachCall) {
    g_loads = 0;
    LoaderOverride counting(&CountingLoader);
    CapturedReports reports;
    CResString missing(IDS_TEST_MISSING);
    missing.GetText();
    missing.GetText();
    EXPECT_EQ(g_loads, 2);
    EXPECT_EQ(reports.lines.size(), 2u);
}

TEST(CResString, DefaultHasIdZeroAndLoadsNothing) {
    CapturedReports reports;
    CResString none;
    EXPECT_EQ(none.Id(), 0);
    EXPECT_EQ(none.GetText(), "");
    ASSERT_EQ(reports.lines.size(), 1u);
    EXPECT_EQ(reports.lines[0], "resstr, Line 53: Failed to load string resource, number = 0");
}

TEST(CResString, IdsBeyondSixteenBitsFailWithoutAskingTheSystem) {
    CapturedReports reports;
    // Block numbers above 0xFFFF would be taken for a resource name pointer.
    CResString high(0x100000);
    EXPECT_EQ(high.GetText(), "");
    CResString negative(-1);
    EXPECT_EQ(negative.GetText(), "");
    CResString justAbove(65536);
    EXPECT_EQ(justAbove.GetText(), "");
    ASSERT_EQ(reports.lines.size(), 3u);
    EXPECT_EQ(reports.lines[0], "resstr, Line 53: Failed to load string resource, number = 1048576");
    EXPECT_EQ(reports.lines[1], "resstr, Line 53: Failed to load string resource, number = -1");
    EXPECT_EQ(reports.lines[2], "resstr, Line 53: Failed to load string resource, number = 65536");
}

TEST(CResString, CopiesAndAssignmentsCarryIdAndText) {
    g_loads = 0;
    LoaderOverride counting(&CountingLoader);
    CResString original(IDS_STD_FONT_FACE);
    original.GetText();
    CResString copy(original);
    EXPECT_EQ(copy.Id(), IDS_STD_FONT_FACE);
    EXPECT_EQ(copy.GetText(), "Arial");
    CResString assigned(IDS_TEST_TWO_LINES);
    assigned = original;
    EXPECT_EQ(assigned.Id(), IDS_STD_FONT_FACE);
    EXPECT_EQ(assigned.GetText(), "Arial");
    EXPECT_EQ(g_loads, 1) << "copies take the loaded text along";

    CResString unloaded(IDS_STD_FONT_FIXED_FACE);
    CResString later(unloaded);
    EXPECT_EQ(later.GetText(), "Tahoma");
}

TEST(CResString, MemoryErrorIsReportedWithItsOwnText) {
    LoaderOverride throwing(&ThrowingLoader);
    CapturedReports reports;
    CResString text(IDS_STD_FONT_FACE);
    EXPECT_EQ(text.GetText(), "");
    ASSERT_EQ(reports.lines.size(), 1u);
    EXPECT_EQ(reports.lines[0], std::string("resstr, Line 65: ") + std::bad_alloc().what());
}

TEST(CResString, MemoryErrorWithoutTextIsReportedAsSuch) {
    LoaderOverride throwing(&SilentlyThrowingLoader);
    CapturedReports reports;
    CResString text(IDS_STD_FONT_FACE);
    EXPECT_EQ(text.GetText(), "");
    ASSERT_EQ(reports.lines.size(), 1u);
    EXPECT_EQ(reports.lines[0], "resstr, Line 69: Memory error loading string.");
}

TEST(CResString, LoadsAgainAfterAMemoryError) {
    CResString text(IDS_STD_FONT_FACE);
    {
        LoaderOverride throwing(&ThrowingLoader);
        CapturedReports reports;
        EXPECT_EQ(text.GetText(), "");
    }
    EXPECT_EQ(text.GetText(), "Arial");
}

TEST(CResString, FollowsTheResourceModule) {
    // A module without a string table: the text is missing, and reported.
    const HINSTANCE own = framework::win32::ResourceModule();
    framework::win32::SetResourceModule(::GetModuleHandleA("gdi32.dll"));
    CapturedReports reports;
    CResString text(IDS_TEST_TWO_LINES);
    const std::string loaded = text.GetText();
    framework::win32::SetResourceModule(own);
    EXPECT_EQ(loaded, "");
    EXPECT_EQ(reports.lines.size(), 1u);
    EXPECT_EQ(text.GetText(), "First line\nSecond line");
}

TEST(LoadResourceString, LeavesTheTextAloneOnFailure) {
    std::string text = "before";
    EXPECT_FALSE(foundation::LoadResourceString(IDS_TEST_MISSING, text));
    EXPECT_EQ(text, "before");
    EXPECT_TRUE(foundation::LoadResourceString(IDS_STD_FONT_FACE, text));
    EXPECT_EQ(text, "Arial");
}

TEST(FormatResourceString, FillsTheNumberedPlaces) {
    EXPECT_EQ(foundation::FormatResourceString(IDS_TEST_INSERTS, "one", "two"), "one and two,  %% %x");
    EXPECT_EQ(foundation::FormatResourceString(IDS_TEST_INSERTS, nullptr), " and ,  %% %x");
}

TEST(FormatResourceString, MissingPatternIsEmptyAndReported) {
    CapturedReports reports;
    EXPECT_EQ(foundation::FormatResourceString(IDS_TEST_MISSING, "x", "y"), "");
    EXPECT_EQ(reports.lines.size(), 1u);
}
