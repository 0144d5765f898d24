#include "foundation/FilePath.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using foundation::CFilePath;
using foundation::ExtractExtension;
using foundation::ExtractFileName;
using foundation::ExtractFileTitle;
using foundation::ExtractTitledPath;
using foundation::MakePath;

// ---- ExtractFileName ---------------------------------------------------------

TEST(ExtractFileName, TakesTheTextAfterTheLastBackslash) {
    EXPECT_EQ(ExtractFileName(R"(c:\a.txt)"), "a.txt");
    EXPECT_EQ(ExtractFileName(R"(c:\dir.d\b\c.jpg)"), "c.jpg");
    EXPECT_EQ(ExtractFileName(R"(\\srv\share\x.qlt)"), "x.qlt");
}

TEST(ExtractFileName, FallsBackOnTheLastColon) {
    EXPECT_EQ(ExtractFileName("c:a.txt"), "a.txt");
}

TEST(ExtractFileName, WithoutSeparatorIsEmpty) {
    EXPECT_EQ(ExtractFileName("a.txt"), "");
    EXPECT_EQ(ExtractFileName("a.b"), "");
    EXPECT_EQ(ExtractFileName(""), "");
}

TEST(ExtractFileName, OfADirectoryWithTrailingBackslashIsEmpty) {
    EXPECT_EQ(ExtractFileName(R"(c:\dir\)"), "");
}

// ---- ExtractFileTitle ----------------------------------------------------------

TEST(ExtractFileTitle, CutsTheFileNameAtItsFirstDot) {
    EXPECT_EQ(ExtractFileTitle(R"(c:\a.b)"), "a");
    EXPECT_EQ(ExtractFileTitle(R"(c:\dir\a.b.jpg)"), "a");
    EXPECT_EQ(ExtractFileTitle("c:a.b"), "a");
}

TEST(ExtractFileTitle, FileNameWithoutDotHasTheEmptyTitle) {
    EXPECT_EQ(ExtractFileTitle(R"(c:\a)"), "");
    EXPECT_EQ(ExtractFileTitle(R"(c:\readme)"), "");
    EXPECT_EQ(ExtractFileTitle(R"(c:\dir\)"), "");
}

TEST(ExtractFileTitle, WithoutSeparatorIsTheWholePath) {
    EXPECT_EQ(ExtractFileTitle("a.b"), "a.b");
    EXPECT_EQ(ExtractFileTitle("readme"), "readme");
    EXPECT_EQ(ExtractFileTitle(""), "");
}

TEST(ExtractFileTitle, DotFirstGivesTheEmptyTitle) {
    EXPECT_EQ(ExtractFileTitle(R"(c:\.hidden)"), "");
}

TEST(ExtractFileTitle, LooksOnlyAtTheFileName) {
    EXPECT_EQ(ExtractFileTitle(R"(c:\x.y\z)"), "") << "the dot of the directory does not count";
}

// ---- ExtractExtension ----------------------------------------------------------

TEST(ExtractExtension, TakesTheTextAfterTheLastDotOfTheWholePath) {
    EXPECT_EQ(ExtractExtension(R"(c:\a\b.txt)"), "txt");
    EXPECT_EQ(ExtractExtension("a.b.jpg"), "jpg");
    EXPECT_EQ(ExtractExtension(R"(c:\x.y\z)"), R"(y\z)");
    EXPECT_EQ(ExtractExtension(R"(c:\dir.d\file)"), R"(d\file)");
}

TEST(ExtractExtension, WithoutDotIsEmpty) {
    EXPECT_EQ(ExtractExtension(R"(c:\a\b)"), "");
    EXPECT_EQ(ExtractExtension(""), "");
}

TEST(ExtractExtension, TrailingDotGivesTheEmptyText) {
    EXPECT_EQ(ExtractExtension(R"(c:\a.)"), "");
}

// ---- ExtractTitledPath ---------------------------------------------------------

TEST(ExtractTitledPath, IsThePathAsItIs) {
    EXPECT_EQ(ExtractTitledPath(R"(c:\a\b.c.txt)"), R"(c:\a\b.c.txt)");
    EXPECT_EQ(ExtractTitledPath("readme"), "readme");
    EXPECT_EQ(ExtractTitledPath(""), "");
}

// ---- MakePath ------------------------------------------------------------------------

TEST(MakePath, JoinsDirectoryFileAndExtension) {
    EXPECT_EQ(MakePath(R"(c:\a\)", R"(\\b.txt)", ".bak"), R"(c:\a\b.bak)");
    EXPECT_EQ(MakePath(R"(c:\a)", "b.txt", nullptr), R"(c:\a\b.txt)");
    EXPECT_EQ(MakePath(R"(c:\a)", "b", "txt"), R"(c:\a\b.txt)");
}

TEST(MakePath, MissingPartsAreLeftOut) {
    EXPECT_EQ(MakePath(nullptr, "b", "txt"), "b.txt");
    EXPECT_EQ(MakePath(R"(c:\a)", nullptr, nullptr), R"(c:\a)");
    EXPECT_EQ(MakePath(nullptr, nullptr, nullptr), "");
    EXPECT_EQ(MakePath("", R"(\b)", nullptr), "b") << "no backslash in front of an empty directory";
}

TEST(MakePath, AnEmptyFileStillGetsItsBackslash) {
    EXPECT_EQ(MakePath(R"(c:\a)", "", nullptr), R"(c:\a\)");
    EXPECT_EQ(MakePath(R"(c:\a\)", "", nullptr), R"(c:\a\)");
}

TEST(MakePath, ExtensionReplacesTheOldOne) {
    EXPECT_EQ(MakePath(R"(c:\a\b.txt)", nullptr, "thm"), R"(c:\a\b.thm)");
    EXPECT_EQ(MakePath(R"(c:\a\b.c.txt)", nullptr, "thm"), R"(c:\a\b.c.thm)");
}

TEST(MakePath, AllLeadingDotsOfTheExtensionAreDropped) {
    EXPECT_EQ(MakePath(R"(c:\a\b)", nullptr, "...bak"), R"(c:\a\b.bak)");
}

TEST(MakePath, EmptyExtensionRemovesTheOldOne) {
    EXPECT_EQ(MakePath(R"(c:\a\b.txt)", nullptr, ""), R"(c:\a\b)");
    EXPECT_EQ(MakePath(R"(c:\a\b.txt)", nullptr, "..."), R"(c:\a\b)");
}

TEST(MakePath, ExtensionCutsWhatExtractExtensionSees) {
    EXPECT_EQ(MakePath(R"(c:\dir.d\file)", nullptr, "x"), R"(c:\dir.x)");
}

TEST(MakePath, TrailingDotIsNotAnExtension) {
    EXPECT_EQ(MakePath(R"(c:\a.)", nullptr, "bak"), R"(c:\a..bak)");
}

TEST(MakePath, IntoABufferCopiesTheWholeText) {
    char out[32];
    std::memset(out, 'x', sizeof out);
    EXPECT_TRUE(MakePath(out, sizeof out, R"(c:\a\)", R"(\\b.txt)", ".bak"));
    EXPECT_STREQ(out, R"(c:\a\b.bak)");
}

TEST(MakePath, IntoASmallBufferTruncatesAndTerminates) {
    char out[8];
    std::memset(out, 'x', sizeof out);
    EXPECT_FALSE(MakePath(out, 6, R"(c:\a)", "bcdef", nullptr));
    EXPECT_STREQ(out, R"(c:\a\)");
    EXPECT_EQ(out[6], 'x') << "nothing written past the size given";
    char exact[5];
    EXPECT_TRUE(MakePath(exact, sizeof exact, "abcd", nullptr, nullptr));
    EXPECT_STREQ(exact, "abcd");
}

TEST(MakePath, IntoNoBufferWritesNothing) {
    EXPECT_FALSE(MakePath(nullptr, 10, "a", "b", "c"));
    char out[1] = {'x'};
    EXPECT_FALSE(MakePath(out, 0, "a", nullptr, nullptr));
    EXPECT_EQ(out[0], 'x');
    EXPECT_TRUE(MakePath(out, 1, "", nullptr, nullptr));
    EXPECT_EQ(out[0], '\0');
}

// ---- CFilePath: construction and copies ------------------------------------------

TEST(CFilePath, EmptyByDefault) {
    EXPECT_EQ(CFilePath().path, "");
}

TEST(CFilePath, FromText) {
    EXPECT_EQ(CFilePath(R"(c:\a.txt)").path, R"(c:\a.txt)");
    EXPECT_EQ(CFilePath(static_cast<const char*>(nullptr)).path, "");
    EXPECT_EQ(CFilePath(std::string(R"(c:\b)")).path, R"(c:\b)");
}

TEST(CFilePath, FromTextAndLength) {
    EXPECT_EQ(CFilePath("abcdef", 3).path, "abc");
    EXPECT_EQ(CFilePath("abcdef", 6).path, "abcdef");
    EXPECT_EQ(CFilePath("abc", 0).path, "");
}

TEST(CFilePath, FromTextAndLengthStopsAtTheTerminatorAndRefusesNonsense) {
    const char text[] = "ab\0cd";
    EXPECT_EQ(CFilePath(text, 5).path, "ab");
    EXPECT_EQ(CFilePath("abc", -1).path, "");
    EXPECT_EQ(CFilePath(nullptr, 4).path, "");
}

TEST(CFilePath, FromThreePartsAsSetPath) {
    EXPECT_EQ(CFilePath(R"(c:\a\)", R"(\\b.txt)", ".bak").path, R"(c:\a\b.bak)");
}

TEST(CFilePath, CopyingCopiesTheText) {
    CFilePath original(R"(c:\a.txt)");
    CFilePath copy = original;
    copy.path += "x";
    EXPECT_EQ(original.path, R"(c:\a.txt)");
    CFilePath assigned;
    assigned = original;
    EXPECT_EQ(assigned.path, original.path);
}

TEST(CFilePath, DestructorIsVirtual) {
    static_assert(std::has_virtual_destructor_v<CFilePath>);
    struct Derived : CFilePath {
        explicit Derived(int* destroyed) : CFilePath("x"), destroyed_(destroyed) {}
        ~Derived() override { ++*destroyed_; }
        int* destroyed_;
    };
    int destroyed = 0;
    std::unique_ptr<CFilePath> owned = std::make_unique<Derived>(&destroyed);
    owned.reset();
    EXPECT_EQ(destroyed, 1);
}

TEST(CFilePath, GettersAnswerForItsPath) {
    const CFilePath file(R"(c:\dir.d\a.b.jpg)");
    EXPECT_EQ(file.GetExtension(), "jpg");
    EXPECT_EQ(file.GetFileName(), "a.b.jpg");
    EXPECT_EQ(file.GetFileTitle(), "a");
    EXPECT_EQ(file.GetTitledPath(), R"(c:\dir.d\a.b.jpg)");
}

// ---- SetPath ----------------------------------------------------------------------------

TEST(SetPath, BecomesMakePath) {
    CFilePath file("old");
    file.SetPath(R"(c:\a\)", R"(\\b.txt)", ".bak");
    EXPECT_EQ(file.path, R"(c:\a\b.bak)");
    file.SetPath(nullptr, nullptr, nullptr);
    EXPECT_EQ(file.path, "");
}

TEST(SetPath, KeepsAtMost259Characters) {
    const std::string directory(200, 'd');
    const std::string name(100, 'n');
    CFilePath file;
    file.SetPath(directory.c_str(), name.c_str(), nullptr);
    EXPECT_EQ(file.path, (directory + "\\" + name).substr(0, 259));
    const std::string fits(258, 'f');
    file.SetPath(fits.c_str(), "g", nullptr);
    EXPECT_EQ(file.path.size(), 259u);
    EXPECT_EQ(file.path.back(), '\\') << "the 260th character is cut";
}

// ---- SetExtension ----------------------------------------------------------------------

TEST(SetExtension, WithAndWithoutTheDotGiveTheSameResult) {
    CFilePath plain(R"(c:\a\b.txt)");
    CFilePath dotted(R"(c:\a\b.txt)");
    plain.SetExtension("thm");
    dotted.SetExtension(".thm");
    EXPECT_EQ(plain.path, R"(c:\a\b.thm)");
    EXPECT_EQ(dotted.path, plain.path);
}

TEST(SetExtension, EmptyOrNoneRemovesTheExtension) {
    CFilePath file(R"(c:\a\b.txt)");
    file.SetExtension("");
    EXPECT_EQ(file.path, R"(c:\a\b)");
    CFilePath other(R"(c:\a\b.txt)");
    other.SetExtension(nullptr);
    EXPECT_EQ(other.path, R"(c:\a\b)");
}

TEST(SetExtension, AddsWhereThereWasNone) {
    CFilePath file(R"(c:\a\b)");
    file.SetExtension("thm");
    EXPECT_EQ(file.path, R"(c:\a\b.thm)");
    CFilePath empty;
    empty.SetExtension("thm");
    EXPECT_EQ(empty.path, ".thm");
}

TEST(SetExtension, OnlyOneLeadingDotIsTakenUnlikeMakePath) {
    CFilePath file(R"(c:\a\b.txt)");
    file.SetExtension("..thm");
    EXPECT_EQ(file.path, R"(c:\a\b..thm)");
    EXPECT_EQ(MakePath(R"(c:\a\b.txt)", nullptr, "..thm"), R"(c:\a\b.thm)");
}

TEST(SetExtension, CutsWhatExtractExtensionSees) {
    CFilePath file(R"(c:\dir.d\file)");
    file.SetExtension("x");
    EXPECT_EQ(file.path, R"(c:\dir.x)");
}

// ---- SetFileName -------------------------------------------------------------------------

TEST(SetFileName, CutsOnlyAsManyCharactersAsTheTitleHas) {
    CFilePath file(R"(c:\a\b.txt)");
    file.SetFileName("n");
    EXPECT_EQ(file.path, R"(c:\a\b.txn)");
}

TEST(SetFileName, LongerTitle) {
    CFilePath file(R"(c:\a\photo.jpg)");
    file.SetFileName("x.bmp");
    EXPECT_EQ(file.path, R"(c:\a\photx.bmp)") << "five characters go, as many as \"photo\" has";
}

TEST(SetFileName, FileNameWithoutDotHasNothingCut) {
    CFilePath file(R"(c:\a\b)");
    file.SetFileName("n");
    EXPECT_EQ(file.path, R"(c:\a\bn)");
}

TEST(SetFileName, PathWithoutSeparatorIsReplacedWhole) {
    CFilePath file("b.txt");
    file.SetFileName("n.jpg");
    EXPECT_EQ(file.path, "n.jpg");
}

TEST(SetFileName, EmptyPathBecomesTheName) {
    CFilePath file;
    file.SetFileName(R"(\\n.txt)");
    EXPECT_EQ(file.path, "n.txt") << "leading backslashes are dropped";
}

TEST(SetFileName, LeadingBackslashesOfTheNameAreDropped) {
    CFilePath file(R"(c:\a\b.txt)");
    file.SetFileName(R"(\\\n)");
    EXPECT_EQ(file.path, R"(c:\a\b.txn)");
}

TEST(SetFileName, EmptyNameOnlyCuts) {
    CFilePath file(R"(c:\a\bc.txt)");
    file.SetFileName("");
    EXPECT_EQ(file.path, R"(c:\a\bc.t)");
    CFilePath other(R"(c:\a\b.txt)");
    other.SetFileName(nullptr);
    EXPECT_EQ(other.path, R"(c:\a\b.tx)");
}

// ---- SetFileNameKeepExtension ---------------------------------------------------------

TEST(SetFileNameKeepExtension, AppendsTheCurrentExtensionThenSetsTheName) {
    CFilePath file(R"(c:\a\b.txt)");
    file.SetFileNameKeepExtension("n");
    EXPECT_EQ(file.path, R"(c:\a\b.txn.txt)");
}

TEST(SetFileNameKeepExtension, WithoutExtensionIsSetFileName) {
    CFilePath file(R"(c:\a\b)");
    file.SetFileNameKeepExtension("n");
    EXPECT_EQ(file.path, R"(c:\a\bn)");
    CFilePath empty;
    empty.SetFileNameKeepExtension("n");
    EXPECT_EQ(empty.path, "n");
}

TEST(SetFileNameKeepExtension, PathWithoutSeparator) {
    CFilePath file("b.txt");
    file.SetFileNameKeepExtension("n");
    EXPECT_EQ(file.path, "n.txt");
}

// ---- IsRelative -----------------------------------------------------------------------------

TEST(IsRelative, LooksBehindTheFirstColonOrAtTheFirstCharacter) {
    EXPECT_FALSE(CFilePath(R"(c:\x)").IsRelative());
    EXPECT_TRUE(CFilePath("c:x").IsRelative());
    EXPECT_TRUE(CFilePath(R"(x\y)").IsRelative());
    EXPECT_FALSE(CFilePath(R"(\x)").IsRelative());
    EXPECT_FALSE(CFilePath(R"(\\srv\share)").IsRelative());
}

TEST(IsRelative, EmptyPathIsNotRelative) {
    EXPECT_FALSE(CFilePath("").IsRelative());
}

TEST(IsRelative, ForwardSlashCountsAsRelative) {
    EXPECT_TRUE(CFilePath("/x").IsRelative());
    EXPECT_TRUE(CFilePath("c:/x").IsRelative());
}

TEST(IsRelative, DriveAloneIsRelative) {
    EXPECT_TRUE(CFilePath("c:").IsRelative());
}

// ---- ToUncPath and ToDrivePath on a made-up network -------------------------------------

namespace {

// Connections by drive letter, answering as WNetGetConnectionA does, and a
// record of each question with the room it was told.
class FakeNetwork {
public:
    std::map<char, std::string> connections;
    // Some providers give back the name's length on success.
    bool reportsLengthOnSuccess = false;
    std::vector<std::pair<std::string, std::uint32_t>> calls;

    foundation::NetworkNameQuery Query() {
        return [this](const char* drive, char* name, std::uint32_t* length) {
            calls.emplace_back(drive, *length);
            const auto found =
                connections.find(static_cast<char>(std::toupper(static_cast<unsigned char>(drive[0]))));
            if (found == connections.end()) return false;
            const std::uint32_t needed = static_cast<std::uint32_t>(found->second.size() + 1);
            if (needed > *length) {
                *length = needed;
                return false;
            }
            std::memcpy(name, found->second.c_str(), needed);
            if (reportsLengthOnSuccess) *length = needed - 1;
            return true;
        };
    }
};

}  // namespace

TEST(ToUncPath, ReplacesAConnectedDriveByItsNetworkName) {
    FakeNetwork network;
    network.connections['Z'] = R"(\\srv\share)";
    EXPECT_EQ(foundation::ToUncPath(R"(z:\art\a.qlt)", network.Query()), R"(\\srv\share\art\a.qlt)");
    ASSERT_EQ(network.calls.size(), 1u);
    EXPECT_EQ(network.calls[0].first, "z:") << "the drive as the path has it";
    EXPECT_EQ(network.calls[0].second, 260u);
    EXPECT_EQ(foundation::ToUncPath("Z:", network.Query()), R"(\\srv\share)");
    EXPECT_EQ(foundation::ToUncPath("z:rel", network.Query()), R"(\\srv\sharerel)");
}

TEST(ToUncPath, LeavesAnUnconnectedDriveAlone) {
    FakeNetwork network;
    network.connections['Z'] = R"(\\srv\share)";
    EXPECT_EQ(foundation::ToUncPath(R"(c:\a)", network.Query()), R"(c:\a)");
}

TEST(ToUncPath, LeavesPathsWithoutADriveAlone) {
    FakeNetwork network;
    network.connections['Z'] = R"(\\srv\share)";
    for (const char* path : {R"(\\srv\share\a)", "a", "", R"(ab\c:)"})
        EXPECT_EQ(foundation::ToUncPath(path, network.Query()), path);
    EXPECT_TRUE(network.calls.empty());
}

TEST(ToUncPath, WithoutAQueryLeavesThePath) {
    EXPECT_EQ(foundation::ToUncPath(R"(z:\a)", foundation::NetworkNameQuery()), R"(z:\a)");
}

TEST(ToDrivePath, ReplacesANetworkNameByItsDrive) {
    FakeNetwork network;
    network.connections['Z'] = R"(\\srv\share)";
    EXPECT_EQ(foundation::ToDrivePath(R"(\\SRV\Share\art\a.qlt)", network.Query()), R"(Z:\art\a.qlt)")
        << "compared without case";
}

TEST(ToDrivePath, LeavesAPathWithADriveAloneWithoutAsking) {
    FakeNetwork network;
    network.connections['Z'] = R"(\\srv\share)";
    EXPECT_EQ(foundation::ToDrivePath(R"(c:\a)", network.Query()), R"(c:\a)");
    EXPECT_TRUE(network.calls.empty());
}

TEST(ToDrivePath, AsksEveryDriveFromAToZWithoutAHit) {
    FakeNetwork network;
    network.connections['Q'] = R"(\\other\share)";
    EXPECT_EQ(foundation::ToDrivePath(R"(\\srv\share\a)", network.Query()), R"(\\srv\share\a)");
    ASSERT_EQ(network.calls.size(), 26u);
    EXPECT_EQ(network.calls.front().first, "A:");
    EXPECT_EQ(network.calls.back().first, "Z:");
}

TEST(ToDrivePath, FirstDriveFromAWins) {
    FakeNetwork network;
    network.connections['F'] = R"(\\srv\share)";
    network.connections['D'] = R"(\\srv\share)";
    EXPECT_EQ(foundation::ToDrivePath(R"(\\srv\share\a)", network.Query()), R"(D:\a)");
    EXPECT_EQ(network.calls.size(), 4u);
}

TEST(ToDrivePath, DoesNotLookWhereTheNetworkNameEnds) {
    FakeNetwork network;
    network.connections['Z'] = R"(\\srv\share)";
    EXPECT_EQ(foundation::ToDrivePath(R"(\\srv\share2\a)", network.Query()), R"(Z:2\a)");
}

TEST(ToDrivePath, APathShorterThanTheNameIsNoHit) {
    FakeNetwork network;
    network.connections['Z'] = R"(\\srv\share)";
    EXPECT_EQ(foundation::ToDrivePath(R"(\\srv)", network.Query()), R"(\\srv)");
    EXPECT_EQ(foundation::ToDrivePath("", network.Query()), "");
}

TEST(ToDrivePath, TheRoomIsSetOnceBeforeTheWalk) {
    FakeNetwork network;
    network.reportsLengthOnSuccess = true;
    network.connections['C'] = R"(\\a\b)";
    network.connections['D'] = R"(\\srv\share)";
    network.connections['E'] = R"(\\srv\share)";
    EXPECT_EQ(foundation::ToDrivePath(R"(\\srv\share\x)", network.Query()), R"(E:\x)")
        << "C: leaves 5 in the room, too little for D:, which asks for 12";
    ASSERT_EQ(network.calls.size(), 5u);
    EXPECT_EQ(network.calls[2].second, 260u);
    EXPECT_EQ(network.calls[3].second, 5u);
    EXPECT_EQ(network.calls[4].second, 12u);
}

TEST(ToDrivePath, TheRoomToldNeverExceedsTheBuffer) {
    FakeNetwork network;
    network.connections['B'] = std::string(R"(\\srv\)") + std::string(300, 'x');
    network.connections['C'] = R"(\\srv\share)";
    EXPECT_EQ(foundation::ToDrivePath(R"(\\srv\share\x)", network.Query()), R"(C:\x)");
    ASSERT_EQ(network.calls.size(), 3u);
    EXPECT_EQ(network.calls[2].second, 260u) << "B: asked for 306 bytes";
}

TEST(ToDrivePath, WithoutAQueryLeavesThePath) {
    EXPECT_EQ(foundation::ToDrivePath(R"(\\srv\share)", foundation::NetworkNameQuery()), R"(\\srv\share)");
}
