// A host may end the control inside its ItemSel or ItemDBClick handler: a
// picker closes as soon as the user picks. Each road that fires an event is
// run with a host that, at one of the road's events, releases the control,
// closes and releases it, destroys its own window, or calls SetItemPath or
// RefreshControl; and each is run at every event the road fires. No road may
// fault or write to what the host's reaction freed: the heaps are checked
// after each run, and the test's ctest entry runs under Wine's heap checking,
// which fills freed memory and keeps it back so that the check finds writes.
#include <cstdio>
#include <map>

#include "ArtLayout.h"
#include "EmbeddedControl.h"
#include "browser/GraphicDlg.h"
#include "control/LumbrelIds.h"
#include "framework/ole/ModuleLock.h"

namespace browsertest {
namespace {

enum class Road {
    kTreeClickOnPicture,
    kTreeClickOnContainer,
    kGalleryClick,
    kGalleryDoubleClick,
    kTreeDoubleClick,
    kKeyboardMove,
    kKeyboardRefresh,
    kSetItemPath,
    kSizeSwitch,
};

enum class Reaction {
    kRelease,
    kCloseAndRelease,
    kDestroyHostWindow,
    kSetItemPath,
    kRefreshControl,
};

const char* Name(Road road) {
    switch (road) {
        case Road::kTreeClickOnPicture: return "TreeClickOnPicture";
        case Road::kTreeClickOnContainer: return "TreeClickOnContainer";
        case Road::kGalleryClick: return "GalleryClick";
        case Road::kGalleryDoubleClick: return "GalleryDoubleClick";
        case Road::kTreeDoubleClick: return "TreeDoubleClick";
        case Road::kKeyboardMove: return "KeyboardMove";
        case Road::kKeyboardRefresh: return "KeyboardRefresh";
        case Road::kSetItemPath: return "SetItemPath";
        case Road::kSizeSwitch: return "SizeSwitch";
    }
    return "?";
}

const char* Name(Reaction reaction) {
    switch (reaction) {
        case Reaction::kRelease: return "Release";
        case Reaction::kCloseAndRelease: return "CloseAndRelease";
        case Reaction::kDestroyHostWindow: return "DestroyHostWindow";
        case Reaction::kSetItemPath: return "SetItemPath";
        case Reaction::kRefreshControl: return "RefreshControl";
    }
    return "?";
}

// Puts the browser where the road starts; the events of getting there are
// not the road's.
void Prepare(EmbeddedControl& host, Road road) {
    browser::CGraphicDlg& dialog = host.Dialog();
    // The product's entry in the drive list, so that a rebuild of the tree
    // shows the primary folder again.
    dialog.ResetDriveCombo("");
    dialog.RebuildFromDriveCombo();
    switch (road) {
        case Road::kGalleryClick:
        case Road::kGalleryDoubleClick:
        case Road::kKeyboardMove: {
            // Through another node: the tree may have selected Animals, its
            // first node, when it took the focus.
            dialog.tree.SelectItem(host.TreeItem("Blank"));
            dialog.tree.SelectItem(host.TreeItem("Animals"));
            if (road == Road::kKeyboardMove) host.ClickGalleryCell(0);
            break;
        }
        case Road::kTreeDoubleClick:
        case Road::kSizeSwitch: dialog.tree.SelectItem(host.TreeItem("single.bmp")); break;
        default: break;
    }
    host.Events().clear();
}

void TakeRoad(EmbeddedControl& host, Road road, const ArtLayout& layout) {
    switch (road) {
        case Road::kTreeClickOnPicture: host.ClickTreeItem(host.TreeItem("single.bmp")); break;
        case Road::kTreeClickOnContainer: host.ClickTreeItem(host.TreeItem("Patchy")); break;
        case Road::kGalleryClick: host.ClickGalleryCell(2); break;
        case Road::kGalleryDoubleClick: host.DoubleClickGalleryCell(1); break;
        case Road::kTreeDoubleClick: host.DoubleClickTreeItem(host.TreeItem("single.bmp")); break;
        case Road::kKeyboardMove: host.PressKey(control::kGalleryId, VK_RIGHT); break;
        case Road::kKeyboardRefresh: host.PressKey(control::kTreeId, VK_F5); break;
        case Road::kSetItemPath: host.SetItemPath(layout.Path("lower\\cats"), 2); break;
        case Road::kSizeSwitch: host.ClickItem(control::kSmallThumbnailsRadio); break;
    }
    controltest::PumpMessages();
}

// How many events the road fires with a host that only listens; counted
// once for each road.
size_t EventsOfRoad(Road road, const ArtLayout& layout) {
    static std::map<Road, size_t> counted;
    const auto known = counted.find(road);
    if (known != counted.end()) return known->second;
    EmbeddedControl host(true, OLEIVERB_INPLACEACTIVATE);
    if (!host.Ok()) return 0;
    Prepare(host, road);
    TakeRoad(host, road, layout);
    counted[road] = host.Events().size();
    return host.Events().size();
}

using Scenario = std::tuple<Road, Reaction>;

class EventExitTest : public ::testing::TestWithParam<Scenario> {
protected:
    ArtLayout& layout = SharedLayout();
    ScopedPrimaryFolder primary{layout.Primary()};
};

TEST_P(EventExitTest, TheRoadSurvivesTheHostsReactionAtEachOfItsEvents) {
    const Road road = std::get<0>(GetParam());
    const Reaction reaction = std::get<1>(GetParam());
    const size_t events = EventsOfRoad(road, layout);
    ASSERT_GT(events, 0u) << Name(road) << " fires nothing to react to";
    ASSERT_EQ(0, framework::ole::ObjectCount());
    for (size_t at = 0; at < events; ++at) {
        SCOPED_TRACE(std::string(Name(road)) + ", " + Name(reaction) + " at event " + std::to_string(at));
        {
            // Active in place only, so that the host's reference is the only one.
            EmbeddedControl host(true, OLEIVERB_INPLACEACTIVATE);
            ASSERT_TRUE(host.Ok());
            Prepare(host, road);
            bool reacted = false;
            long objectsAfterRelease = -1;
            host.onEvent = [&] {
                if (reacted || host.Events().size() != at + 1) return;
                reacted = true;
                switch (reaction) {
                    case Reaction::kRelease:
                        host.Release();
                        objectsAfterRelease = framework::ole::ObjectCount();
                        break;
                    case Reaction::kCloseAndRelease: host.CloseAndRelease(); break;
                    case Reaction::kDestroyHostWindow: host.DestroyHostWindow(); break;
                    case Reaction::kSetItemPath: host.SetItemPath(layout.Path("Patchy"), 1); break;
                    case Reaction::kRefreshControl: host.RefreshControl(); break;
                }
            };
            TakeRoad(host, road, layout);
            host.onEvent = nullptr;
            EXPECT_TRUE(reacted);
            EXPECT_TRUE(HeapsAreIntact()) << "a freed block was written to";
            if (reaction == Reaction::kDestroyHostWindow || reaction == Reaction::kCloseAndRelease) {
                EXPECT_EQ(at + 1, host.Events().size())
                    << "a browser whose window is gone tells the host nothing more";
            }
            if (reaction == Reaction::kRelease) {
                EXPECT_GT(objectsAfterRelease, 0)
                    << "the control went while the road that fired the event was under way";
            }
            if (reaction == Reaction::kRelease || reaction == Reaction::kCloseAndRelease) {
                EXPECT_EQ(0, framework::ole::ObjectCount())
                    << "the released control is gone once the road is";
            } else if (reaction != Reaction::kDestroyHostWindow) {
                // The control goes on working where the host left it.
                host.ClickTreeItem(host.TreeItem("Blank"));
                host.Events().clear();
                host.ClickTreeItem(host.TreeItem("Animals"));
                EXPECT_TRUE(SameRecords({NothingSelected(), Record(1, 1, layout.Path("Animals.QLT"))},
                                        host.Records()));
                ASSERT_TRUE(host.Dialog().gallery);
                EXPECT_EQ(5, host.Dialog().gallery->GetItemCount());
            }
        }
        EXPECT_TRUE(HeapsAreIntact()) << "a freed block was written to at the end";
        EXPECT_EQ(0, framework::ole::ObjectCount());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Roads, EventExitTest,
    ::testing::Combine(::testing::Values(Road::kTreeClickOnPicture, Road::kTreeClickOnContainer,
                                         Road::kGalleryClick, Road::kGalleryDoubleClick,
                                         Road::kTreeDoubleClick, Road::kKeyboardMove, Road::kKeyboardRefresh,
                                         Road::kSetItemPath, Road::kSizeSwitch),
                       ::testing::Values(Reaction::kRelease, Reaction::kCloseAndRelease,
                                         Reaction::kDestroyHostWindow, Reaction::kSetItemPath,
                                         Reaction::kRefreshControl)),
    [](const ::testing::TestParamInfo<Scenario>& scenario) {
        return std::string(Name(std::get<0>(scenario.param))) + "_" + Name(std::get<1>(scenario.param));
    });

}  // namespace
}  // namespace browsertest
