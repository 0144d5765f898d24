// A test of one real control, embedded as a host embeds it over the shared
// art layout (made the primary folder first, so that the control's browser
// starts there). When the test ends the host lets the control go, and no
// object of the control's module may be left.
#pragma once

#include <optional>

#include "ArtLayout.h"
#include "BrowserTestSupport.h"
#include "EmbeddedControl.h"
#include "framework/ole/ModuleLock.h"

namespace browsertest {

class EmbeddedControlTest : public ::testing::Test {
protected:
    // The verb the host activates the control with.
    explicit EmbeddedControlTest(LONG verb = OLEIVERB_UIACTIVATE) : verb_(verb) {}

    void SetUp() override {
        host.emplace(true, verb_);
        ASSERT_TRUE(host->Ok());
        control = host->Control();
        dialog = control;
    }
    void TearDown() override {
        ReleaseHost();
        EXPECT_EQ(0, framework::ole::ObjectCount()) << "an object of the control outlived its test";
    }
    void ReleaseHost() {
        host.reset();
        control = nullptr;
        dialog = nullptr;
    }

    ArtLayout& layout = SharedLayout();
    ScopedPrimaryFolder primary{layout.Primary()};
    std::optional<EmbeddedControl> host;
    // The host's control and the browser dialog it is, while the host has it.
    CLumbrelCtrl* control = nullptr;
    browser::CGraphicDlg* dialog = nullptr;

private:
    LONG verb_;
};

}  // namespace browsertest
