// What the control owes the container that embeds it, with the real browser
// dialog inside: it shows only the part of itself that the container's clip
// rectangle leaves visible; a click or the focus arriving in any of its
// windows UI-activates it and tells the site (IOleControlSite::OnFocus);
// its modal windows turn the frame's modeless windows off; and a container
// that saves and loads it gets it back at its size.
#include <map>

#include "ControlTestEnvironment.h"
#include "PersistTestSupport.h"
#include "browser/BrowserIds.h"
#include "control/LumbrelIds.h"
#include "framework/ole/OleControl.h"

namespace controltest {
namespace {

class ContainerDutiesTest : public ::testing::Test {
protected:
    void SetUp() override {
        control = new CLumbrelCtrl();
        site = new TestSite();
    }
    void TearDown() override {
        Unembed(Unknown());
        control->Release();
        site->Release();
        PumpMessages();
        EXPECT_EQ(0, framework::ole::ObjectCount());
    }

    IUnknown* Unknown() const { return static_cast<IOleObject*>(control); }
    void Activate(LONG verb) {
        ASSERT_EQ(S_OK, Embed(Unknown(), site, verb));
        window = control->ControlWindow().Handle();
        ASSERT_NE(nullptr, window);
        dialog = control->BrowserWindow();
        ASSERT_NE(nullptr, dialog);
    }
    HWND Item(int id) const { return ::GetDlgItem(dialog, id); }
    ComPtr<IOleInPlaceObject> InPlace() const {
        ComPtr<IOleInPlaceObject> inPlace;
        Unknown()->QueryInterface(IID_IOleInPlaceObject, inPlace.PutVoid());
        return inPlace;
    }
    // The window's region, in window coordinates: its kind (ERROR when it
    // has none) and its bounds.
    int Region(RECT* bounds) const {
        HRGN region = ::CreateRectRgn(0, 0, 0, 0);
        const int kind = ::GetWindowRgn(window, region);
        *bounds = RECT{};
        if (kind != ERROR) ::GetRgnBox(region, bounds);
        ::DeleteObject(region);
        return kind;
    }
    size_t Count(const std::string& call) const {
        size_t count = 0;
        for (const std::string& made : site->calls)
            if (made == call) ++count;
        return count;
    }

    CLumbrelCtrl* control = nullptr;
    TestSite* site = nullptr;
    HWND window = nullptr;
    HWND dialog = nullptr;
};

bool SameRect(const RECT& a, const RECT& b) {
    return ::EqualRect(&a, &b) != FALSE;
}

// ---- Clipping ------------------------------------------------------------------------

TEST_F(ContainerDutiesTest, ActivationShowsOnlyThePartInsideTheClipRectangle) {
    site->position = RECT{10, 10, 550, 364};
    site->clip = RECT{0, 0, 300, 200};
    Activate(OLEIVERB_INPLACEACTIVATE);
    RECT bounds = {};
    EXPECT_EQ(SIMPLEREGION, Region(&bounds));
    EXPECT_TRUE(SameRect(RECT{0, 0, 290, 190}, bounds))
        << bounds.left << "," << bounds.top << "," << bounds.right << "," << bounds.bottom;
}

TEST_F(ContainerDutiesTest, SetObjectRectsClipsAndAClipThatCoversAllRemovesTheRegion) {
    Activate(OLEIVERB_INPLACEACTIVATE);
    RECT bounds = {};
    ASSERT_EQ(ERROR, Region(&bounds)) << "the whole control is visible at first";

    // Scrolled up by 100 pixels: the top 100 rows lie above the visible area.
    const RECT scrolled = {10, -90, 550, 264};
    const RECT visibleArea = {0, 0, 600, 400};
    ASSERT_EQ(S_OK, InPlace()->SetObjectRects(&scrolled, &visibleArea));
    EXPECT_EQ(SIMPLEREGION, Region(&bounds));
    EXPECT_TRUE(SameRect(RECT{0, 90, 540, 354}, bounds));

    // Scrolled out of sight altogether.
    const RECT hidden = {10, 500, 550, 854};
    ASSERT_EQ(S_OK, InPlace()->SetObjectRects(&hidden, &visibleArea));
    EXPECT_EQ(NULLREGION, Region(&bounds));

    // Back in full view: no region at all.
    const RECT whole = {10, 10, 550, 364};
    ASSERT_EQ(S_OK, InPlace()->SetObjectRects(&whole, &visibleArea));
    EXPECT_EQ(ERROR, Region(&bounds));

    // A container that gives no clip clips nothing.
    ASSERT_EQ(S_OK, InPlace()->SetObjectRects(&scrolled, &visibleArea));
    ASSERT_EQ(SIMPLEREGION, Region(&bounds));
    ASSERT_EQ(S_OK, InPlace()->SetObjectRects(&whole, nullptr));
    EXPECT_EQ(ERROR, Region(&bounds));
}

// ---- UI activation and the focus ---------------------------------------------------------

TEST_F(ContainerDutiesTest, AClickIntoTheTreeUiActivatesTheControlAndTellsTheSite) {
    Activate(OLEIVERB_INPLACEACTIVATE);
    ::SetFocus(site->Frame());
    PumpMessages();
    ASSERT_FALSE(control->IsUIActive());
    site->calls.clear();
    site->focusCalls.clear();

    // What the system sends the window under the pointer before the button
    // message: the tree passes it up through the dialog to the control.
    const HWND tree = Item(IDC_FOLDER_TREE);
    const LRESULT answer = ::SendMessageA(tree, WM_MOUSEACTIVATE, reinterpret_cast<WPARAM>(site->Frame()),
                                          MAKELPARAM(HTCLIENT, WM_LBUTTONDOWN));
    EXPECT_EQ(MA_ACTIVATE, answer);
    PumpMessages();
    EXPECT_TRUE(control->IsUIActive());
    EXPECT_EQ(1u, Count("OnUIActivate"));
    EXPECT_EQ(1u, Count("SetActiveObject"));
    EXPECT_EQ(std::vector<std::string>{"OnFocus(1)"}, site->focusCalls);
    const HWND focus = ::GetFocus();
    EXPECT_TRUE(focus == window || ::IsChild(window, focus)) << "the focus is in the control";

    // A second click changes nothing.
    ::SendMessageA(tree, WM_MOUSEACTIVATE, reinterpret_cast<WPARAM>(site->Frame()),
                   MAKELPARAM(HTCLIENT, WM_LBUTTONDOWN));
    PumpMessages();
    EXPECT_EQ(1u, Count("OnUIActivate"));
    EXPECT_EQ(std::vector<std::string>{"OnFocus(1)"}, site->focusCalls);
}

TEST_F(ContainerDutiesTest, TheFocusArrivingInAChildUiActivatesAndLeavingTellsTheSite) {
    Activate(OLEIVERB_INPLACEACTIVATE);
    ::SetFocus(site->Frame());
    PumpMessages();
    site->calls.clear();
    site->focusCalls.clear();

    // The host tabs into the control: the gallery takes the focus.
    ::SetFocus(Item(IDC_GALLERY));
    PumpMessages();
    EXPECT_TRUE(control->IsUIActive());
    EXPECT_EQ(1u, Count("OnUIActivate"));
    EXPECT_EQ(std::vector<std::string>{"OnFocus(1)"}, site->focusCalls);
    EXPECT_EQ(Item(IDC_GALLERY), ::GetFocus()) << "UI activation leaves the focus where it arrived";

    // Moving between the control's own windows tells nothing.
    ::SetFocus(Item(IDC_FOLDER_TREE));
    PumpMessages();
    EXPECT_EQ(std::vector<std::string>{"OnFocus(1)"}, site->focusCalls);

    // Out to the host, and back in.
    ::SetFocus(site->Frame());
    PumpMessages();
    EXPECT_EQ((std::vector<std::string>{"OnFocus(1)", "OnFocus(0)"}), site->focusCalls);
    EXPECT_TRUE(control->IsUIActive()) << "UI deactivation is the container's to decide";
    ::SetFocus(Item(IDC_DRIVE_COMBO));
    PumpMessages();
    EXPECT_EQ((std::vector<std::string>{"OnFocus(1)", "OnFocus(0)", "OnFocus(1)"}), site->focusCalls);
    EXPECT_EQ(1u, Count("OnUIActivate"));
}

TEST_F(ContainerDutiesTest, DeactivationWithTheFocusInsideTellsTheSiteItLeft) {
    Activate(OLEIVERB_UIACTIVATE);
    ::SetFocus(Item(IDC_FOLDER_TREE));
    PumpMessages();
    ASSERT_EQ(std::vector<std::string>{"OnFocus(1)"}, site->focusCalls);
    ASSERT_EQ(S_OK, InPlace()->InPlaceDeactivate());
    PumpMessages();
    EXPECT_EQ((std::vector<std::string>{"OnFocus(1)", "OnFocus(0)"}), site->focusCalls);
}

TEST_F(ContainerDutiesTest, TheKeyboardMapStillFollowsTheFocusAfterAClick) {
    Activate(OLEIVERB_INPLACEACTIVATE);
    ::SetFocus(site->Frame());
    PumpMessages();
    const HWND tree = Item(IDC_FOLDER_TREE);
    ::SendMessageA(tree, WM_MOUSEACTIVATE, reinterpret_cast<WPARAM>(site->Frame()),
                   MAKELPARAM(HTCLIENT, WM_LBUTTONDOWN));
    ::SetFocus(tree);
    PumpMessages();
    // F6 on the tree: the gallery takes the focus, and the key goes on.
    MSG msg = {};
    msg.hwnd = tree;
    msg.message = WM_KEYDOWN;
    msg.wParam = VK_F6;
    msg.lParam = 1;
    EXPECT_FALSE(control->ControlWindow().PreTranslateMessage(&msg));
    EXPECT_EQ(Item(IDC_GALLERY), ::GetFocus());
    PumpMessages();
    EXPECT_EQ(std::vector<std::string>{"OnFocus(1)"}, site->focusCalls);
}

// ---- Modal windows ---------------------------------------------------------------------

// Closes the About box from inside its loop, noting what the frame had been
// told by then.
struct AboutBoxWatch {
    static AboutBoxWatch* current;
    TestSite* site = nullptr;
    bool seen = false;
    std::vector<std::string> modalCallsWhileOpen;
    static void CALLBACK OnTimer(HWND, UINT, UINT_PTR id, DWORD) {
        const HWND box = ::GetActiveWindow();
        if (box != nullptr && ::GetDlgItem(box, 1001) != nullptr) {
            current->seen = true;
            current->modalCallsWhileOpen = current->site->modalCalls;
            ::PostMessageA(box, WM_COMMAND, IDOK, 0);
            ::KillTimer(nullptr, id);
        }
    }
};
AboutBoxWatch* AboutBoxWatch::current = nullptr;

TEST_F(ContainerDutiesTest, TheAboutBoxTurnsTheFramesModelessWindowsOffWhileItIsOpen) {
    Activate(OLEIVERB_UIACTIVATE);
    AboutBoxWatch watch;
    watch.site = site;
    AboutBoxWatch::current = &watch;
    const UINT_PTR timer = ::SetTimer(nullptr, 0, 50, &AboutBoxWatch::OnTimer);
    ComPtr<IDispatch> dispatch;
    ASSERT_EQ(S_OK, Unknown()->QueryInterface(IID_IDispatch, dispatch.PutVoid()));
    DISPPARAMS none = {nullptr, nullptr, 0, 0};
    ASSERT_EQ(S_OK, dispatch->Invoke(control::kDispidAboutBox, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr,
                                     nullptr, nullptr));
    ::KillTimer(nullptr, timer);
    ASSERT_TRUE(watch.seen);
    EXPECT_EQ(std::vector<std::string>{"EnableModeless(0)"}, watch.modalCallsWhileOpen);
    EXPECT_EQ((std::vector<std::string>{"EnableModeless(0)", "EnableModeless(1)"}), site->modalCalls);
}

// ---- Persistence -----------------------------------------------------------------------

LUMBREL_COM_CLASS_BEGIN
class VariantBag : public StackPropertyBag {
public:
    virtual ~VariantBag() {
        for (auto& value : values) ::VariantClear(&value.second);
    }
    HRESULT STDMETHODCALLTYPE Read(LPCOLESTR name, VARIANT* value, IErrorLog*) override {
        auto found = values.find(name);
        if (found == values.end()) return E_INVALIDARG;
        // As a bag of text does: the stored type, whatever the caller asked.
        ::VariantInit(value);
        return ::VariantCopy(value, &found->second);
    }
    HRESULT STDMETHODCALLTYPE Write(LPCOLESTR name, VARIANT* value) override {
        VARIANT copy;
        ::VariantInit(&copy);
        const HRESULT hr = ::VariantCopy(&copy, value);
        if (FAILED(hr)) return hr;
        ::VariantClear(&values[name]);
        values[name] = copy;
        return S_OK;
    }
    void SetText(const wchar_t* name, const wchar_t* text) {
        ::VariantClear(&values[name]);
        values[name].vt = VT_BSTR;
        values[name].bstrVal = ::SysAllocString(text);
    }
    void SetNumber(const wchar_t* name, LONG number) {
        ::VariantClear(&values[name]);
        values[name].vt = VT_I4;
        values[name].lVal = number;
    }
    std::map<std::wstring, VARIANT> values;
};
LUMBREL_COM_CLASS_END

TEST_F(ContainerDutiesTest, AContainerThatSavesAndLoadsGetsTheControlBackAtItsSize) {
    Activate(OLEIVERB_INPLACEACTIVATE);
    const RECT place = {10, 10, 410, 310};
    ASSERT_EQ(S_OK, InPlace()->SetObjectRects(&place, &place));
    SIZEL saved = {};
    ComPtr<IOleObject> object;
    ASSERT_EQ(S_OK, Unknown()->QueryInterface(IID_IOleObject, object.PutVoid()));
    ASSERT_EQ(S_OK, object->GetExtent(DVASPECT_CONTENT, &saved));
    ASSERT_EQ(400, framework::ole::OleControl::HimetricToPixels(saved).cx);

    ComPtr<IPersistStreamInit> persist;
    ASSERT_EQ(S_OK, Unknown()->QueryInterface(IID_IPersistStreamInit, persist.PutVoid()));
    auto stream = NewStream();
    ASSERT_EQ(S_OK, persist->Save(stream.Get(), TRUE));
    VariantBag bag;
    ComPtr<IPersistPropertyBag> persistBag;
    ASSERT_EQ(S_OK, Unknown()->QueryInterface(IID_IPersistPropertyBag, persistBag.PutVoid()));
    ASSERT_EQ(S_OK, persistBag->Save(&bag, TRUE, TRUE));

    for (int kind = 0; kind < 2; ++kind) {
        SCOPED_TRACE(kind == 0 ? "stream" : "property bag");
        // The page is opened again: a new control, loaded before it is shown,
        // placed where its extent says.
        auto* again = new CLumbrelCtrl();
        IUnknown* unknown = static_cast<IOleObject*>(again);
        if (kind == 0) {
            ComPtr<IPersistStreamInit> load;
            ASSERT_EQ(S_OK, unknown->QueryInterface(IID_IPersistStreamInit, load.PutVoid()));
            Rewind(stream.Get());
            ASSERT_EQ(S_OK, load->Load(stream.Get()));
        } else {
            ComPtr<IPersistPropertyBag> load;
            ASSERT_EQ(S_OK, unknown->QueryInterface(IID_IPersistPropertyBag, load.PutVoid()));
            ASSERT_EQ(S_OK, load->Load(&bag, nullptr));
        }
        SIZEL loaded = {};
        ComPtr<IOleObject> loadedObject;
        ASSERT_EQ(S_OK, unknown->QueryInterface(IID_IOleObject, loadedObject.PutVoid()));
        ASSERT_EQ(S_OK, loadedObject->GetExtent(DVASPECT_CONTENT, &loaded));
        EXPECT_EQ(saved.cx, loaded.cx);
        EXPECT_EQ(saved.cy, loaded.cy);
        const SIZE pixels = framework::ole::OleControl::HimetricToPixels(loaded);
        auto* otherSite = new TestSite();
        otherSite->position = RECT{20, 20, 20 + pixels.cx, 20 + pixels.cy};
        ASSERT_EQ(S_OK, Embed(unknown, otherSite));
        RECT client = {};
        ::GetClientRect(again->ControlWindow().Handle(), &client);
        EXPECT_EQ(400, client.right);
        EXPECT_EQ(300, client.bottom);
        loadedObject.Reset();
        Unembed(unknown);
        again->Release();
        otherSite->Release();
    }
}

TEST_F(ContainerDutiesTest, TheStreamHoldsTheVersionThenTheExtent) {
    ComPtr<IOleObject> object;
    ASSERT_EQ(S_OK, Unknown()->QueryInterface(IID_IOleObject, object.PutVoid()));
    SIZEL extent = {12345, 6789};
    ASSERT_EQ(S_OK, object->SetExtent(DVASPECT_CONTENT, &extent));
    ComPtr<IPersistStreamInit> persist;
    ASSERT_EQ(S_OK, Unknown()->QueryInterface(IID_IPersistStreamInit, persist.PutVoid()));
    ULARGE_INTEGER size = {};
    ASSERT_EQ(S_OK, persist->GetSizeMax(&size));
    EXPECT_EQ(12u, size.QuadPart);
    auto stream = NewStream();
    ASSERT_EQ(S_OK, persist->Save(stream.Get(), TRUE));
    Rewind(stream.Get());
    DWORD words[4] = {};
    ULONG read = 0;
    stream->Read(words, sizeof words, &read);
    ASSERT_EQ(12u, read);
    EXPECT_EQ(0x00010000u, words[0]) << "major 1 in the high word, minor 0 in the low";
    EXPECT_EQ(12345u, words[1]);
    EXPECT_EQ(6789u, words[2]);
}

// What a stream from elsewhere may hold after the version: the extent that
// the control keeps (the initial one unless the stream gives a good one).
TEST_F(ContainerDutiesTest, AStreamsExtentIsTakenOnlyWhenItIsWholeAndPossible) {
    struct Case {
        const char* what;
        std::vector<DWORD> words;
        size_t extraBytes;  // bytes of a word cut short, after the words
        HRESULT result;
        bool takesExtent;
    };
    const DWORD version = 0x00010000;
    const std::vector<Case> cases = {
        {"the version alone, as written before the extent", {version}, 0, S_OK, false},
        {"the width without the height", {version, 5000}, 0, S_OK, false},
        {"the height cut short", {version, 5000}, 2, S_OK, false},
        {"a negative width", {version, static_cast<DWORD>(-5), 5000}, 0, S_OK, false},
        {"a negative height", {version, 5000, 0x80000000u}, 0, S_OK, false},
        {"a width beyond any window", {version, 2000000, 5000}, 0, S_OK, false},
        {"a height beyond any window", {version, 5000, 0x7FFFFFFFu}, 0, S_OK, false},
        {"less than the version", {}, 3, E_FAIL, false},
        {"an empty control", {version, 0, 0}, 0, S_OK, true},
        {"a good extent", {version, 5000, 4000}, 0, S_OK, true},
        {"the largest extent", {version, 1000000, 1000000}, 0, S_OK, true},
    };
    ComPtr<IOleObject> object;
    ASSERT_EQ(S_OK, Unknown()->QueryInterface(IID_IOleObject, object.PutVoid()));
    ComPtr<IPersistStreamInit> persist;
    ASSERT_EQ(S_OK, Unknown()->QueryInterface(IID_IPersistStreamInit, persist.PutVoid()));
    const SIZEL initial =
        framework::ole::OleControl::PixelsToHimetric(control::kInitialWidth, control::kInitialHeight);
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        SIZEL reset = initial;
        ASSERT_EQ(S_OK, object->SetExtent(DVASPECT_CONTENT, &reset));
        auto stream = NewStream();
        if (!test.words.empty())
            stream->Write(test.words.data(), static_cast<ULONG>(test.words.size() * sizeof(DWORD)), nullptr);
        const unsigned char partial[4] = {0x11, 0x22, 0x33, 0x44};
        if (test.extraBytes > 0) stream->Write(partial, static_cast<ULONG>(test.extraBytes), nullptr);
        Rewind(stream.Get());
        const HRESULT hr = persist->Load(stream.Get());
        EXPECT_EQ(test.result, hr);
        SIZEL extent = {};
        ASSERT_EQ(S_OK, object->GetExtent(DVASPECT_CONTENT, &extent));
        if (test.takesExtent) {
            EXPECT_EQ(static_cast<LONG>(test.words[1]), extent.cx);
            EXPECT_EQ(static_cast<LONG>(test.words[2]), extent.cy);
        } else {
            EXPECT_EQ(initial.cx, extent.cx);
            EXPECT_EQ(initial.cy, extent.cy);
        }
    }
}

TEST_F(ContainerDutiesTest, ABagsExtentMayBeTextAndIsTakenOnlyWhenPossible) {
    ComPtr<IOleObject> object;
    ASSERT_EQ(S_OK, Unknown()->QueryInterface(IID_IOleObject, object.PutVoid()));
    ComPtr<IPersistPropertyBag> persist;
    ASSERT_EQ(S_OK, Unknown()->QueryInterface(IID_IPersistPropertyBag, persist.PutVoid()));
    const SIZEL initial =
        framework::ole::OleControl::PixelsToHimetric(control::kInitialWidth, control::kInitialHeight);
    auto loadedExtent = [&](VariantBag& bag) {
        SIZEL reset = initial;
        object->SetExtent(DVASPECT_CONTENT, &reset);
        EXPECT_EQ(S_OK, persist->Load(&bag, nullptr));
        SIZEL extent = {};
        object->GetExtent(DVASPECT_CONTENT, &extent);
        return extent;
    };
    {
        VariantBag text;
        text.SetText(L"_ExtentX", L"7000");
        text.SetText(L"_ExtentY", L"3000");
        const SIZEL extent = loadedExtent(text);
        EXPECT_EQ(7000, extent.cx);
        EXPECT_EQ(3000, extent.cy);
    }
    {
        VariantBag words;
        words.SetText(L"_ExtentX", L"wide");
        words.SetText(L"_ExtentY", L"3000");
        const SIZEL extent = loadedExtent(words);
        EXPECT_EQ(initial.cx, extent.cx) << "a width that is no number";
        EXPECT_EQ(initial.cy, extent.cy);
    }
    {
        VariantBag negative;
        negative.SetNumber(L"_ExtentX", 7000);
        negative.SetNumber(L"_ExtentY", -1);
        const SIZEL extent = loadedExtent(negative);
        EXPECT_EQ(initial.cx, extent.cx) << "a negative height";
        EXPECT_EQ(initial.cy, extent.cy);
    }
    {
        VariantBag half;
        half.SetNumber(L"_ExtentX", 7000);
        const SIZEL extent = loadedExtent(half);
        EXPECT_EQ(initial.cx, extent.cx) << "a width without a height";
        EXPECT_EQ(initial.cy, extent.cy);
    }
    {
        VariantBag saved;
        SIZEL extent = {4321, 1234};
        object->SetExtent(DVASPECT_CONTENT, &extent);
        ASSERT_EQ(S_OK, persist->Save(&saved, TRUE, TRUE));
        EXPECT_EQ(3u, saved.values.size());
        EXPECT_EQ(VT_I4, saved.values[L"_ExtentX"].vt);
        EXPECT_EQ(4321, saved.values[L"_ExtentX"].lVal);
        EXPECT_EQ(1234, saved.values[L"_ExtentY"].lVal);
        EXPECT_EQ(0x00010000, saved.values[L"_Version"].lVal);
    }
}

}  // namespace
}  // namespace controltest
