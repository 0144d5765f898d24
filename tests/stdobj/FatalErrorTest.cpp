#include "foundation/FatalError.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

// What the replaced actions saw, each with the depth at that moment.
struct Recorder {
    std::vector<std::string> events;
    int answer = IDIGNORE;
    // Called from inside the box, as a message dispatched by its loop would.
    void (*insideBox)() = nullptr;
    void (*insideCapture)() = nullptr;
    void (*insideBreak)() = nullptr;
    void (*insideExit)() = nullptr;
};
Recorder g_record;

std::string At(const std::string& event) {
    return event + "@" + std::to_string(foundation::FatalErrorDepth());
}

void RecordDebug(const char* text) {
    g_record.events.push_back(At("debug:" + std::string(text)));
}

void RecordCapture() {
    g_record.events.push_back(At("capture"));
    if (auto inside = g_record.insideCapture) {
        g_record.insideCapture = nullptr;
        inside();
    }
}

int RecordBox(const char* text, unsigned type) {
    char typeText[16];
    std::snprintf(typeText, sizeof typeText, "%#x", type);
    g_record.events.push_back(At("box:" + std::string(text) + ":" + typeText));
    if (auto inside = g_record.insideBox) {
        g_record.insideBox = nullptr;
        inside();
    }
    return g_record.answer;
}

void RecordBreak() {
    g_record.events.push_back(At("break"));
    if (auto inside = g_record.insideBreak) {
        g_record.insideBreak = nullptr;
        inside();
    }
}

void RecordAbort() {
    g_record.events.push_back(At("abort"));
}

void RecordExit(const char* text) {
    g_record.events.push_back(At("exit:" + std::string(text)));
    if (auto inside = g_record.insideExit) {
        g_record.insideExit = nullptr;
        inside();
    }
}

void FaultAgain() {
    foundation::FatalError("inner %d", 2);
}

class FatalErrorTest : public ::testing::Test {
protected:
    void SetUp() override {
        g_record = Recorder{};
        previous_ = foundation::SetFatalErrorActions(FatalErrorActions{
            &RecordDebug, &RecordCapture, &RecordBox, &RecordBreak, &RecordAbort, &RecordExit});
    }
    void TearDown() override {
        foundation::SetFatalErrorActions(previous_);
        EXPECT_EQ(foundation::FatalErrorDepth(), 0);
    }

    using FatalErrorActions = foundation::FatalErrorActions;
    FatalErrorActions previous_ = {};
};

using Events = std::vector<std::string>;

const Events kDepthOneTail = {
    "capture@2", "debug:Fatal within Fatal\n@3", "break@4", "abort@5", "exit:Fatal within Fatal\n@6",
};

Events Concat(Events head, const Events& tail) {
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

}  // namespace

TEST_F(FatalErrorTest, IgnoreShowsTheMessageAndReturns) {
    g_record.answer = IDIGNORE;
    foundation::FatalError("Disk %s failed %d times", "C", 5);
    EXPECT_EQ(g_record.events, (Events{
                                   "debug:Disk C failed 5 times\n@1",
                                   "capture@1",
                                   "box:Disk C failed 5 times\n:0x12012@1",
                               }));
}

TEST_F(FatalErrorTest, RetryBreaksIntoTheDebuggerAndReturns) {
    g_record.answer = IDRETRY;
    foundation::FatalError("x");
    EXPECT_EQ(g_record.events, (Events{"debug:x\n@1", "capture@1", "box:x\n:0x12012@1", "break@1"}));
}

TEST_F(FatalErrorTest, AbortAndAFailedBoxAbort) {
    for (int answer : {IDABORT, 0, IDOK, IDCANCEL}) {
        g_record.events.clear();
        g_record.answer = answer;
        foundation::FatalError("y");
        EXPECT_EQ(g_record.events, (Events{"debug:y\n@1", "capture@1", "box:y\n:0x12012@1", "abort@1"}))
            << answer;
        EXPECT_EQ(foundation::FatalErrorDepth(), 0);
    }
}

TEST_F(FatalErrorTest, FaultInsideTheMessageBoxTakesTheDepthOnePath) {
    g_record.answer = IDIGNORE;
    g_record.insideBox = &FaultAgain;
    foundation::FatalError("outer");
    EXPECT_EQ(g_record.events,
              Concat({"debug:outer\n@1", "capture@1", "box:outer\n:0x12012@1"}, kDepthOneTail));
}

TEST_F(FatalErrorTest, FaultDuringReleaseCaptureOfDepthOneEntersDepthTwo) {
    // The box of the outer call sets the depth-1 call going, whose
    // ReleaseCapture faults once more.
    g_record.insideBox = [] {
        g_record.insideCapture = &FaultAgain;
        FaultAgain();
    };
    foundation::FatalError("outer");
    const Events fromStageTwo = {"debug:Fatal within Fatal\n@3", "break@4", "abort@5",
                                 "exit:Fatal within Fatal\n@6"};
    // First the depth-2 call from stage 2 down, then the rest of the
    // depth-1 call.
    EXPECT_EQ(
        g_record.events,
        Concat(Concat({"debug:outer\n@1", "capture@1", "box:outer\n:0x12012@1", "capture@2"}, fromStageTwo),
               fromStageTwo));
}

TEST_F(FatalErrorTest, EachStageStoresTheRaisedDepthFirst) {
    // A fault during the DebugBreak of stage 3 enters stage 4.
    g_record.insideBox = &FaultAgain;
    g_record.insideBreak = &FaultAgain;
    foundation::FatalError("outer");
    EXPECT_EQ(g_record.events, (Events{
                                   "debug:outer\n@1",
                                   "capture@1",
                                   "box:outer\n:0x12012@1",
                                   "capture@2",
                                   "debug:Fatal within Fatal\n@3",
                                   "break@4",
                                   "abort@5",  // the nested call, entered at depth 4
                                   "exit:Fatal within Fatal\n@6",
                                   "abort@5",  // the depth-1 call goes on
                                   "exit:Fatal within Fatal\n@6",
                               }));
}

TEST_F(FatalErrorTest, DepthFiveAndBeyondOnlyExit) {
    g_record.insideBox = &FaultAgain;
    g_record.insideExit = [] { FaultAgain(); };
    foundation::FatalError("outer");
    // The exit of the depth-1 call runs at depth 6; a fault there enters at 6.
    EXPECT_EQ(g_record.events,
              Concat(Concat({"debug:outer\n@1", "capture@1", "box:outer\n:0x12012@1"}, kDepthOneTail),
                     {"exit:Fatal within Fatal\n@7"}));
}

TEST_F(FatalErrorTest, ARetryThatFaultsGoesDownTheTable) {
    g_record.answer = IDRETRY;
    g_record.insideBreak = &FaultAgain;
    foundation::FatalError("outer");
    EXPECT_EQ(g_record.events,
              Concat({"debug:outer\n@1", "capture@1", "box:outer\n:0x12012@1", "break@1"}, kDepthOneTail));
}

TEST_F(FatalErrorTest, LongMessagesAreCutToWhatWvsprintfWrites) {
    const std::string longText(3000, 'a');
    g_record.answer = IDIGNORE;
    foundation::FatalError("%s", longText.c_str());
    ASSERT_EQ(g_record.events.size(), 3u);
    const std::string& debug = g_record.events[0];
    ASSERT_GT(debug.size(), 6u + 3u);
    EXPECT_EQ(debug.substr(0, 6), "debug:");
    EXPECT_EQ(debug.substr(debug.size() - 3), "\n@1") << "the line feed survives the cut";
    const std::string text = debug.substr(6, debug.size() - 9);
    EXPECT_EQ(text.find_first_not_of('a'), std::string::npos);
    EXPECT_GE(text.size(), 1023u);
    EXPECT_LE(text.size(), 1024u);
}

TEST_F(FatalErrorTest, NullFormatShowsAnEmptyLine) {
    foundation::FatalError(nullptr);
    ASSERT_FALSE(g_record.events.empty());
    EXPECT_EQ(g_record.events[0], "debug:\n@1");
}

TEST(FatalErrorActions, NullMembersStandForTheSystem) {
    const foundation::FatalErrorActions system = foundation::DefaultFatalErrorActions();
    EXPECT_NE(system.outputDebugString, nullptr);
    EXPECT_NE(system.releaseCapture, nullptr);
    EXPECT_NE(system.messageBox, nullptr);
    EXPECT_NE(system.debugBreak, nullptr);
    EXPECT_NE(system.abort, nullptr);
    EXPECT_NE(system.fatalAppExit, nullptr);

    const foundation::FatalErrorActions previous =
        foundation::SetFatalErrorActions(foundation::FatalErrorActions{});
    const foundation::FatalErrorActions installed = foundation::SetFatalErrorActions(previous);
    EXPECT_EQ(installed.outputDebugString, system.outputDebugString);
    EXPECT_EQ(installed.messageBox, system.messageBox);
    EXPECT_EQ(installed.fatalAppExit, system.fatalAppExit);
    EXPECT_EQ(installed.abort, system.abort);
}

namespace {

struct BoxSeen {
    HWND box = nullptr;
    std::string caption;
    bool hasAbortRetryIgnore = false;
    int depthInside = -1;
};
BoxSeen g_box;

BOOL CALLBACK FindDialog(HWND window, LPARAM found) {
    char className[16] = {};
    ::GetClassNameA(window, className, sizeof className);
    if (std::string(className) == "#32770" && ::IsWindowVisible(window)) {
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }
    return TRUE;
}

// Runs inside the system box's message loop: a message dispatched there
// that faults again, then the user's answer.
void CALLBACK WhileTheBoxIsUp(HWND, UINT, UINT_PTR id, DWORD) {
    ::KillTimer(nullptr, id);
    HWND box = nullptr;
    ::EnumThreadWindows(::GetCurrentThreadId(), &FindDialog, reinterpret_cast<LPARAM>(&box));
    g_box.box = box;
    g_box.depthInside = foundation::FatalErrorDepth();
    if (box != nullptr) {
        char caption[64] = {};
        ::GetWindowTextA(box, caption, sizeof caption);
        g_box.caption = caption;
        g_box.hasAbortRetryIgnore = ::GetDlgItem(box, IDABORT) != nullptr &&
                                    ::GetDlgItem(box, IDRETRY) != nullptr &&
                                    ::GetDlgItem(box, IDIGNORE) != nullptr;
    }
    FaultAgain();
    if (box != nullptr) ::PostMessageA(box, WM_COMMAND, IDIGNORE, 0);
}

}  // namespace

TEST_F(FatalErrorTest, FaultFromTheSystemBoxsMessageLoopTakesTheDepthOnePath) {
    foundation::FatalErrorActions actions{&RecordDebug, &RecordCapture, nullptr,
                                          &RecordBreak, &RecordAbort,   &RecordExit};
    foundation::SetFatalErrorActions(actions);
    g_box = BoxSeen{};
    ASSERT_NE(::SetTimer(nullptr, 0, 50, &WhileTheBoxIsUp), 0u);
    foundation::FatalError("outer");
    EXPECT_NE(g_box.box, nullptr) << "the system box was up while the timer ran";
    EXPECT_EQ(g_box.depthInside, 1);
    EXPECT_EQ(g_box.caption, "Error") << "no title of its own";
    EXPECT_TRUE(g_box.hasAbortRetryIgnore);
    // Ignore was the answer: nothing after the nested call's stages.
    EXPECT_EQ(g_record.events, Concat({"debug:outer\n@1", "capture@1"}, kDepthOneTail));
}
