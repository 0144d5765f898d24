// What the module gives back when it is unloaded from a process that goes
// on: the control's window class and the shared drawing objects, which live
// in its tables.
#include "ControlTestEnvironment.h"
#include "control/ControlModule.h"
#include "foundation/Stdobj.h"

namespace controltest {
namespace {

TEST(ModuleUnloadTest, StoppingTheModuleReleasesTheSharedDrawingObjects) {
    const HBRUSH brush = foundation::GetColorBrush(foundation::MakeColorRef(12, 34, 56));
    const HPEN pen = foundation::GetColorPen(foundation::MakeColorRef(65, 43, 21));
    ASSERT_NE(nullptr, brush);
    ASSERT_NE(nullptr, pen);
    ASSERT_EQ(static_cast<DWORD>(OBJ_BRUSH), ::GetObjectType(brush));
    ASSERT_GT(foundation::GetColorEntryCount(), 0);

    control::StopModule();
    EXPECT_TRUE(foundation::AreStdObjectsReleased());
    EXPECT_EQ(0, foundation::GetColorEntryCount());
    EXPECT_EQ(0u, ::GetObjectType(brush)) << "deleted";
    EXPECT_EQ(0u, ::GetObjectType(pen)) << "deleted";

    // A module loaded again starts over: a control still comes to life.
    control::StartModule();
    auto* again = new RecordingControl();
    auto* site = new TestSite();
    ASSERT_EQ(S_OK, Embed(static_cast<IOleObject*>(again), site));
    EXPECT_NE(nullptr, again->ControlWindow().Handle());
    EXPECT_NE(nullptr, again->BrowserWindow());
    Unembed(static_cast<IOleObject*>(again));
    again->Release();
    site->Release();
    EXPECT_EQ(0, framework::ole::ObjectCount());
}

}  // namespace
}  // namespace controltest
