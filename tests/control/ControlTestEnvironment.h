// What every in-process control test needs: OLE on the thread and the
// module's start-up work (the common control classes).
#pragma once

#include <memory>

#include <gtest/gtest.h>

#include "OleTestSupport.h"
#include "RecordingBrowser.h"
#include "control/LumbrelCtrl.h"
#include "framework/ole/ModuleLock.h"

namespace controltest {

// A control with a recording browser, embedded in a TestSite on demand.
class ControlFixture : public ::testing::Test {
protected:
    void SetUp() override {
        auto recording = std::make_unique<RecordingBrowser>();
        browser = recording.get();
        control = new CLumbrelCtrl(std::move(recording));
        site = new TestSite();
    }
    void TearDown() override {
        if (control != nullptr) {
            Unembed(Unknown());
            control->Release();
        }
        site->Release();
        EXPECT_EQ(0, framework::ole::ObjectCount()) << "an object of the control outlived its test";
    }

    IUnknown* Unknown() const { return static_cast<IOleObject*>(control); }
    template <class T>
    ComPtr<T> As(REFIID iid) const {
        ComPtr<T> result;
        Unknown()->QueryInterface(iid, result.PutVoid());
        return result;
    }
    void Activate(LONG verb = OLEIVERB_INPLACEACTIVATE) { ASSERT_EQ(S_OK, Embed(Unknown(), site, verb)); }
    HWND ControlWindow() const { return control->Handle(); }

    CLumbrelCtrl* control = nullptr;
    RecordingBrowser* browser = nullptr;
    TestSite* site = nullptr;
};

}  // namespace controltest
