// What every in-process control test needs: OLE on the thread and the
// module's start-up work (the common control classes).
#pragma once

#include <gtest/gtest.h>

#include "OleTestSupport.h"
#include "RecordingControl.h"
#include "control/LumbrelCtrl.h"
#include "framework/ole/ModuleLock.h"

namespace controltest {

// A control with a recording stand-in for its browser, embedded in a
// TestSite on demand.
class ControlFixture : public ::testing::Test {
protected:
    void SetUp() override {
        control = new RecordingControl();
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
    HWND ControlWindow() const { return control->ControlWindow().Handle(); }
    // The framework's entry to the keyboard map: the control window's
    // PreTranslateMessage, as the message filter and the loop call it.
    BOOL PreTranslate(MSG* msg) const { return control->ControlWindow().PreTranslateMessage(msg); }

    RecordingControl* control = nullptr;
    TestSite* site = nullptr;
};

}  // namespace controltest
