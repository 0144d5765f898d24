// The browser's small rules, on their own: names that count as containers,
// the titles that the tree shows, the file-name part of a preview request,
// the pseudo-paths of a container's items, the sizing arithmetic of single
// pictures and the size correction.
#include "BrowserTestSupport.h"

namespace browsertest {
namespace {

bool SameSize(SIZE size, int cx, int cy) {
    return size.cx == cx && size.cy == cy;
}

TEST(BrowserRules, AContainerNameHoldsQltFromPositionOneOn) {
    EXPECT_TRUE(browser::IsContainerFileName("cats.qlt"));
    EXPECT_TRUE(browser::IsContainerFileName("CATS.QLT"));
    EXPECT_TRUE(browser::IsContainerFileName("a.qlt.txt")) << "a substring test";
    EXPECT_TRUE(browser::IsContainerFileName("x.QlT"));
    EXPECT_FALSE(browser::IsContainerFileName(".qlt")) << "position 0";
    EXPECT_FALSE(browser::IsContainerFileName(".qlt.qlt")) << "the first occurrence counts";
    EXPECT_FALSE(browser::IsContainerFileName("qlt"));
    EXPECT_FALSE(browser::IsContainerFileName("cats.ql"));
    EXPECT_FALSE(browser::IsContainerFileName(""));
}

TEST(BrowserRules, AFoundFilesTitleLosesItsLastExtension) {
    EXPECT_EQ("cats", browser::FoundFileTitle("cats.qlt"));
    EXPECT_EQ("a.qlt", browser::FoundFileTitle("a.qlt.txt"));
    EXPECT_EQ("holiday.2000", browser::FoundFileTitle("holiday.2000.qlt"));
    EXPECT_EQ("noext", browser::FoundFileTitle("noext"));
    EXPECT_EQ("", browser::FoundFileTitle(".qlt"));
}

TEST(BrowserRules, TheHostsNamesAtTheTopAreComparedWithoutCase) {
    for (const char* name : {"Textures", "TEXTURES", "borders", "BackGrounds"})
        EXPECT_TRUE(browser::IsHiddenTopLevelFolder(name)) << name;
    for (const char* name : {"Texture", "Borders2", "", "Background"})
        EXPECT_FALSE(browser::IsHiddenTopLevelFolder(name)) << name;
    for (const char* name : {"backgrounds.qlt", "BORDERS.QLT", "Borders.Qlt"})
        EXPECT_TRUE(browser::IsHiddenTopLevelContainer(name)) << name;
    for (const char* name : {"textures.qlt", "borders.qlt.txt", "borders"})
        EXPECT_FALSE(browser::IsHiddenTopLevelContainer(name)) << name;
}

TEST(BrowserRules, ThePreviewFileNameIsCountedFromTheFirstDotOfTheWholePath) {
    EXPECT_EQ("holiday.jpg", browser::PreviewFileNamePart("C:\\pics\\holiday.jpg"));
    EXPECT_EQ("x.jpeg", browser::PreviewFileNamePart("C:\\pics\\x.jpeg"));
    // The first dot stands in a folder name, at index 5: at most 6
    // characters are taken from behind the last backslash.
    EXPECT_EQ("abc.jp", browser::PreviewFileNamePart("C:\\my.pics\\abc.jpg"));
    EXPECT_EQ("", browser::PreviewFileNamePart("C:\\pics\\both")) << "no dot at all gives no characters";
    EXPECT_EQ("a.", browser::PreviewFileNamePart("a.b")) << "no backslash: from the start, 2 characters";
    EXPECT_EQ("", browser::PreviewFileNamePart("C:\\pics\\")) << "nothing behind the last backslash";
    EXPECT_EQ("", browser::PreviewFileNamePart(""));
}

TEST(BrowserRules, AContainersItemsArePathsBelowTheContainersStem) {
    EXPECT_EQ("C:\\art\\cats\\tabby.jpg",
              browser::ContainerItemPath("C:\\art\\cats.QLT", "D:\\orig\\tabby.jpg"));
    EXPECT_EQ("C:\\my\\tabby.jpg", browser::ContainerItemPath("C:\\my.art\\cats.QLT", "tabby.jpg"))
        << "up to the first dot of the whole path";
    EXPECT_EQ("C:\\art\\cats\\", browser::ContainerItemPath("C:\\art\\cats.QLT", "D:\\orig\\"));
    EXPECT_EQ("nodot\\x", browser::ContainerItemPath("nodot", "x"));
}

TEST(BrowserRules, LargePicturesFitTheLargeCellWithThirtyOffTheHeight) {
    EXPECT_TRUE(SameSize(browser::LargePreviewSize(1000, 800), 135, 103));
    EXPECT_TRUE(SameSize(browser::LargePreviewSize(128, 128), 135, 103));
    EXPECT_TRUE(SameSize(browser::LargePreviewSize(100, 200), 70, 140));
    // Exactly on the cell's aspect: 145 * 179 against 179 * 145 is not greater.
    EXPECT_TRUE(SameSize(browser::LargePreviewSize(145, 179), 113, 140));
    EXPECT_TRUE(SameSize(browser::LargePreviewSize(10, 5), 135, -337))
        << "the 30 comes off before the division";
    EXPECT_TRUE(SameSize(browser::LargePreviewSize(1, 1000000), 0, 140));
}

TEST(BrowserRules, SmallPicturesFitTheSmallCellWithTwentyOffTheHeight) {
    EXPECT_TRUE(SameSize(browser::SmallPreviewSize(64, 64), 57, 39));
    EXPECT_TRUE(SameSize(browser::SmallPreviewSize(200, 100), 57, 22));
    EXPECT_TRUE(SameSize(browser::SmallPreviewSize(100, 200), 39, 78));
    EXPECT_TRUE(SameSize(browser::SmallPreviewSize(77, 108), 55, 78));
}

TEST(BrowserRules, SizingRefusesAnEmptyPicture) {
    EXPECT_THROW(browser::LargePreviewSize(0, 10), int);
    EXPECT_THROW(browser::LargePreviewSize(10, 0), int);
    EXPECT_THROW(browser::SmallPreviewSize(-1, 10), int);
    EXPECT_THROW(browser::SmallPreviewSize(10, -5), int);
    // Sizes whose products leave 32 bits are still computed exactly.
    EXPECT_TRUE(SameSize(browser::LargePreviewSize(2000000000, 2000000000), 135, 134));
}

TEST(BrowserRules, TheSizeCorrectionReplacesOnlyAHeightOf362) {
    EXPECT_EQ(MAKELPARAM(300, 358), browser::SizeCorrectionParam(300, 362));
    EXPECT_EQ(MAKELPARAM(300, 361), browser::SizeCorrectionParam(300, 361));
    EXPECT_EQ(MAKELPARAM(300, 363), browser::SizeCorrectionParam(300, 363));
    EXPECT_EQ(MAKELPARAM(362, 100), browser::SizeCorrectionParam(362, 100)) << "the width is never replaced";
}

TEST(BrowserRules, TextsAreComparedWithoutCase) {
    EXPECT_TRUE(browser::EqualsNoCase("Orrimond", "ORRIMOND"));
    EXPECT_TRUE(browser::EqualsNoCase("", ""));
    EXPECT_FALSE(browser::EqualsNoCase("Orrimond", "Orrimon"));
    EXPECT_FALSE(browser::EqualsNoCase("MyComputer", "My Computer"));
    EXPECT_FALSE(browser::EqualsNoCase(std::string("ab\0c", 4), std::string("ab\0d", 4)))
        << "an embedded NUL ends neither text";
}

// The same names as the user's code page writes them: the letters beyond
// ASCII must match their other case as they do in the file system.
TEST(BrowserRules, LettersBeyondAsciiAreComparedWithoutCase) {
    const auto ansi = [](const wchar_t* text) {
        BOOL lossy = FALSE;
        char buffer[64] = {};
        const int length = ::WideCharToMultiByte(CP_ACP, 0, text, -1, buffer, sizeof buffer, nullptr, &lossy);
        return length > 0 && !lossy ? std::string(buffer) : std::string();
    };
    const std::string upper = ansi(L"\u00C9COLE \u00D6L");
    const std::string lower = ansi(L"\u00E9cole \u00F6l");
    ASSERT_FALSE(upper.empty() || lower.empty()) << "the code page " << ::GetACP() << " writes these letters";
    EXPECT_TRUE(browser::EqualsNoCase(upper, lower));
    EXPECT_FALSE(browser::EqualsNoCase(upper, ansi(L"\u00E8cole \u00F6l")))
        << "another accent is another letter";
}

}  // namespace
}  // namespace browsertest
