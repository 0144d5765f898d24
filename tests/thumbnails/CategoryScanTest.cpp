// The walk that finds a thumbnail root's category directories.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "thumbnails/CategoryScan.h"

using thumbnails::CollectCategoryNames;
using thumbnails::DirectoryEntry;

namespace {

// A directory search over a fixed listing, as FindFirstFileA and
// FindNextFileA would give it.
struct Listing {
    std::vector<DirectoryEntry> entries;
    size_t position = 0;
    int calls = 0;

    bool Next(DirectoryEntry& entry) {
        ++calls;
        if (position >= entries.size()) return false;
        entry = entries[position++];
        return true;
    }
};

std::vector<std::string> Collect(Listing& listing, bool* walked = nullptr) {
    std::vector<std::string> names;
    auto next = [&listing](DirectoryEntry& entry) { return listing.Next(entry); };
    const bool result = CollectCategoryNames(next, next, names);
    if (walked != nullptr) *walked = result;
    return names;
}

DirectoryEntry Directory(const std::string& name) {
    return DirectoryEntry{name, true};
}
DirectoryEntry File(const std::string& name) {
    return DirectoryEntry{name, false};
}

}  // namespace

TEST(CategoryScan, DirectoriesAfterDotAndDotDot) {
    Listing listing{
        {Directory("."), Directory(".."), Directory("Animals"), File("readme.txt"), Directory("Boats")}};
    bool walked = false;
    EXPECT_EQ(Collect(listing, &walked), (std::vector<std::string>{"Animals", "Boats"}));
    EXPECT_TRUE(walked);
}

TEST(CategoryScan, TheFirstTwoEntriesAreDroppedWhateverTheyAre) {
    // The root of a drive has no "." and "..": two real categories go.
    Listing listing{{Directory("Animals"), Directory("Boats"), Directory("Cars"), Directory("Dogs")}};
    EXPECT_EQ(Collect(listing), (std::vector<std::string>{"Cars", "Dogs"}));
    Listing files{{File("a.thm"), File("b.thm"), Directory("Cars")}};
    EXPECT_EQ(Collect(files), (std::vector<std::string>{"Cars"}));
}

TEST(CategoryScan, ShortListingsStopBeforeTheWalk) {
    Listing none;
    bool walked = true;
    EXPECT_TRUE(Collect(none, &walked).empty());
    EXPECT_FALSE(walked);
    EXPECT_EQ(none.calls, 1) << "no second call after a failed first";
    Listing one{{Directory(".")}};
    EXPECT_TRUE(Collect(one, &walked).empty());
    EXPECT_FALSE(walked);
    Listing two{{Directory("."), Directory("..")}};
    EXPECT_TRUE(Collect(two, &walked).empty());
    EXPECT_TRUE(walked) << "the walk ran and found nothing";
}

TEST(CategoryScan, NamesAreAppendedInTheListingsOrder) {
    Listing listing{{Directory("."), Directory(".."), Directory("zeta"), Directory("Alpha")}};
    std::vector<std::string> names = {"kept"};
    auto next = [&listing](DirectoryEntry& entry) { return listing.Next(entry); };
    EXPECT_TRUE(CollectCategoryNames(next, next, names));
    EXPECT_EQ(names, (std::vector<std::string>{"kept", "zeta", "Alpha"}));
}

TEST(CategoryScan, NoSearchNoNames) {
    std::vector<std::string> names;
    EXPECT_FALSE(CollectCategoryNames(nullptr, nullptr, names));
    EXPECT_TRUE(names.empty());
}
