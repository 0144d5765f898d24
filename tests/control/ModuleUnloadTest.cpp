// What the module gives back when it is unloaded from a process that goes
// on: every window class it registered and the shared drawing objects, which live
// in its tables.
#include "ControlTestEnvironment.h"
#include "control/ControlModule.h"
#include "foundation/Stdobj.h"
#include "framework/win32/Window.h"

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

TEST(ModuleUnloadTest, StoppingTheModuleUnregistersEveryWindowClassItRegistered) {
    // The control's class, as activation registers it, and two more of the
    // framework's, as toolkit windows of other styles would.
    auto* control = new RecordingControl();
    auto* site = new TestSite();
    ASSERT_EQ(S_OK, Embed(static_cast<IOleObject*>(control), site));
    char controlClass[128] = {};
    ::GetClassNameA(control->ControlWindow().Handle(), controlClass, sizeof controlClass);
    Unembed(static_cast<IOleObject*>(control));
    control->Release();
    site->Release();
    const std::string plain = framework::win32::Window::RegisterWindowClass(0);
    const std::string framed = framework::win32::Window::RegisterWindowClass(
        CS_HREDRAW | CS_VREDRAW, ::LoadCursor(nullptr, IDC_CROSS),
        reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1));
    const HINSTANCE module = ::GetModuleHandleA(nullptr);
    for (const std::string& name : {std::string(controlClass), plain, framed}) {
        WNDCLASSA info = {};
        ASSERT_TRUE(::GetClassInfoA(module, name.c_str(), &info)) << name;
    }

    control::StopModule();
    for (const std::string& name : {std::string(controlClass), plain, framed}) {
        WNDCLASSA info = {};
        EXPECT_FALSE(::GetClassInfoA(module, name.c_str(), &info)) << name << " outlived the module's end";
    }

    control::StartModule();
    EXPECT_EQ(plain, framework::win32::Window::RegisterWindowClass(0)) << "a later start registers it again";
    WNDCLASSA info = {};
    EXPECT_TRUE(::GetClassInfoA(module, plain.c_str(), &info));
    EXPECT_EQ(0, framework::ole::ObjectCount());
}

}  // namespace
}  // namespace controltest
