// Automation: the type library against the dispatch table, names and
// DISPIDs, the checks of Invoke, and the control-side behaviour of each of
// the eight members, with BSTR arguments of every kind.
#include <cstring>
#include <vector>

#include "ControlTestEnvironment.h"
#include "control/LumbrelIds.h"
#include "framework/ole/Dispatch.h"
#include "framework/ole/Strings.h"

namespace controltest {
namespace {

using framework::ole::Bstr;
using framework::ole::DispatchMember;
using framework::ole::Variant;

class DispatchTest : public ControlFixture {
protected:
    ComPtr<IDispatch> Dispatch() const { return As<IDispatch>(IID_IDispatch); }

    HRESULT Call(DISPID id, std::vector<VARIANT> arguments, VARIANT* result = nullptr,
                 UINT* argError = nullptr) {
        // DISPPARAMS holds the arguments last first.
        std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
        DISPPARAMS params = {reversed.empty() ? nullptr : reversed.data(), nullptr,
                             static_cast<UINT>(reversed.size()), 0};
        UINT error = 0;
        return Dispatch()->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, result,
                                  nullptr, argError != nullptr ? argError : &error);
    }
    HRESULT Put(DISPID id, VARIANT value) {
        DISPID named = DISPID_PROPERTYPUT;
        DISPPARAMS params = {&value, &named, 1, 1};
        return Dispatch()->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &params, nullptr,
                                  nullptr, nullptr);
    }
    HRESULT Get(DISPID id, VARIANT* result) {
        DISPPARAMS params = {nullptr, nullptr, 0, 0};
        return Dispatch()->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &params, result,
                                  nullptr, nullptr);
    }
    LRESULT Check(int id) const { return ::SendMessageA(control->Item(id), BM_GETCHECK, 0, 0); }

    static VARIANT Bool(bool value) {
        VARIANT v;
        v.vt = VT_BOOL;
        v.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
        return v;
    }
    static VARIANT Long(LONG value) {
        VARIANT v;
        v.vt = VT_I4;
        v.lVal = value;
        return v;
    }
    static VARIANT Text(const Bstr& text) {
        VARIANT v;
        v.vt = VT_BSTR;
        v.bstrVal = text.Get();
        return v;
    }
};

DISPID IdOf(IDispatch* dispatch, const wchar_t* name) {
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    DISPID id = DISPID_UNKNOWN;
    EXPECT_EQ(S_OK, dispatch->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)) << "name";
    return id;
}

TEST_F(DispatchTest, ExposesTheDispatchInterfaceOfTheTypeLibrary) {
    UINT count = 0;
    ASSERT_EQ(S_OK, Dispatch()->GetTypeInfoCount(&count));
    EXPECT_EQ(1u, count);
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(S_OK, Dispatch()->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Put()));
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(S_OK, info->GetTypeAttr(&attributes));
    EXPECT_TRUE(IsEqualIID(DIID__DLumbrel, attributes->guid));
    EXPECT_EQ(TKIND_DISPATCH, attributes->typekind);
    info->ReleaseTypeAttr(attributes);
    EXPECT_EQ(DISP_E_BADINDEX, Dispatch()->GetTypeInfo(1, LOCALE_USER_DEFAULT, info.Put()));
}

TEST_F(DispatchTest, NamesGiveTheirDispids) {
    auto dispatch = Dispatch();
    EXPECT_EQ(1, IdOf(dispatch.Get(), L"AspectRatio"));
    EXPECT_EQ(2, IdOf(dispatch.Get(), L"thumbNailState"));
    EXPECT_EQ(3, IdOf(dispatch.Get(), L"RefreshCombo"));
    EXPECT_EQ(4, IdOf(dispatch.Get(), L"SetItemPath"));
    EXPECT_EQ(5, IdOf(dispatch.Get(), L"DoubleClickFlag"));
    EXPECT_EQ(6, IdOf(dispatch.Get(), L"RefreshControl"));
    EXPECT_EQ(7, IdOf(dispatch.Get(), L"RedrawBitmaps"));
    EXPECT_EQ(-552, IdOf(dispatch.Get(), L"AboutBox"));
    EXPECT_EQ(1, IdOf(dispatch.Get(), L"aspectratio")) << "names are not case-sensitive";

    LPOLESTR withArguments[] = {const_cast<LPOLESTR>(L"SetItemPath"), const_cast<LPOLESTR>(L"lImageCount"),
                                const_cast<LPOLESTR>(L"szPath")};
    DISPID ids[3] = {};
    ASSERT_EQ(S_OK, dispatch->GetIDsOfNames(IID_NULL, withArguments, 3, LOCALE_USER_DEFAULT, ids));
    EXPECT_EQ(4, ids[0]);
    EXPECT_EQ(1, ids[1]);
    EXPECT_EQ(0, ids[2]);

    LPOLESTR unknown[] = {const_cast<LPOLESTR>(L"NoSuchMember")};
    DISPID id = 0;
    EXPECT_EQ(DISP_E_UNKNOWNNAME, dispatch->GetIDsOfNames(IID_NULL, unknown, 1, LOCALE_USER_DEFAULT, &id));
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE,
              dispatch->GetIDsOfNames(IID_IDispatch, unknown, 1, LOCALE_USER_DEFAULT, &id));
}

TEST_F(DispatchTest, TheDispatchTableAgreesWithTheTypeLibrary) {
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(S_OK, Dispatch()->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Put()));
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(S_OK, info->GetTypeAttr(&attributes));
    const UINT functions = attributes->cFuncs;
    const UINT variables = attributes->cVars;
    info->ReleaseTypeAttr(attributes);

    size_t count = 0;
    const DispatchMember* members = CLumbrelCtrl::Members(&count);
    EXPECT_EQ(count, functions + variables);
    // Functions: methods with their argument types and names; the library
    // has no IDispatch methods of its own in a dispinterface's list.
    UINT methodsSeen = 0;
    for (UINT i = 0; i < functions; ++i) {
        FUNCDESC* function = nullptr;
        ASSERT_EQ(S_OK, info->GetFuncDesc(i, &function));
        const DispatchMember* member = framework::ole::FindDispatchMember(members, count, function->memid);
        ASSERT_NE(nullptr, member) << "DISPID " << function->memid;
        EXPECT_EQ(DispatchMember::kMethod, member->kind);
        EXPECT_EQ(FUNC_DISPATCH, function->funckind);
        EXPECT_EQ(VT_VOID, function->elemdescFunc.tdesc.vt);
        ASSERT_EQ(static_cast<SHORT>(member->argumentCount), function->cParams);
        BSTR names[8] = {};
        UINT named = 0;
        ASSERT_EQ(S_OK, info->GetNames(function->memid, names, 8, &named));
        EXPECT_STREQ(member->name, names[0]);
        for (SHORT p = 0; p < function->cParams; ++p)
            EXPECT_EQ(member->argumentTypes[static_cast<size_t>(p)], function->lprgelemdescParam[p].tdesc.vt);
        if (member->id == control::kDispidRefreshCombo) {
            EXPECT_STREQ(L"szDrive", names[1]);
            EXPECT_STREQ(L"bInsert", names[2]);
        } else if (member->id == control::kDispidSetItemPath) {
            EXPECT_STREQ(L"szPath", names[1]);
            EXPECT_STREQ(L"lImageCount", names[2]);
        } else if (member->id == control::kDispidDoubleClickFlag) {
            EXPECT_STREQ(L"bDbClick", names[1]);
        }
        for (UINT n = 0; n < named; ++n) ::SysFreeString(names[n]);
        info->ReleaseFuncDesc(function);
        ++methodsSeen;
    }
    EXPECT_EQ(6u, methodsSeen);
    for (UINT i = 0; i < variables; ++i) {
        VARDESC* variable = nullptr;
        ASSERT_EQ(S_OK, info->GetVarDesc(i, &variable));
        const DispatchMember* member = framework::ole::FindDispatchMember(members, count, variable->memid);
        ASSERT_NE(nullptr, member);
        EXPECT_EQ(DispatchMember::kProperty, member->kind);
        EXPECT_EQ(VT_BOOL, variable->elemdescVar.tdesc.vt);
        EXPECT_EQ(member->type, variable->elemdescVar.tdesc.vt);
        BSTR name = nullptr;
        UINT named = 0;
        ASSERT_EQ(S_OK, info->GetNames(variable->memid, &name, 1, &named));
        EXPECT_STREQ(member->name, name);
        ::SysFreeString(name);
        info->ReleaseVarDesc(variable);
    }
}

TEST_F(DispatchTest, TheTypeLibraryCarriesItsNamesAndHelp) {
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(S_OK, Dispatch()->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Put()));
    ComPtr<ITypeLib> library;
    UINT index = 0;
    ASSERT_EQ(S_OK, info->GetContainingTypeLib(library.Put(), &index));
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(S_OK, library->GetLibAttr(&attributes));
    EXPECT_TRUE(IsEqualGUID(LIBID_LUMBRELLib, attributes->guid));
    EXPECT_EQ(1, attributes->wMajorVerNum);
    EXPECT_EQ(0, attributes->wMinorVerNum);
    library->ReleaseTLibAttr(attributes);

    auto documentation = [&](INT member, const wchar_t* name, const wchar_t* help) {
        BSTR gotName = nullptr, gotHelp = nullptr, file = nullptr;
        ASSERT_EQ(S_OK, library->GetDocumentation(member, &gotName, &gotHelp, nullptr, &file));
        EXPECT_STREQ(name, gotName);
        EXPECT_STREQ(help, gotHelp);
        EXPECT_NE(nullptr, wcsstr(file != nullptr ? file : L"", L"Lumbrel.hlp"));
        ::SysFreeString(gotName);
        ::SysFreeString(gotHelp);
        ::SysFreeString(file);
    };
    documentation(-1, L"LUMBRELLib", L"Lumbrel ActiveX Control module");
    const struct {
        const GUID* guid;
        const wchar_t* name;
        const wchar_t* help;
    } kinds[] = {{&DIID__DLumbrel, L"_DLumbrel", L"Dispatch interface for Lumbrel Control"},
                 {&DIID__DLumbrelEvents, L"_DLumbrelEvents", L"Event interface for Lumbrel Control"},
                 {&CLSID_Lumbrel, L"Lumbrel", L"Lumbrel Control"}};
    for (const auto& kind : kinds) {
        ComPtr<ITypeInfo> type;
        ASSERT_EQ(S_OK, library->GetTypeInfoOfGuid(*kind.guid, type.Put()));
        UINT position = library->GetTypeInfoCount();
        for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
            ComPtr<ITypeInfo> candidate;
            library->GetTypeInfo(i, candidate.Put());
            if (candidate.Get() == type.Get()) position = i;
        }
        ASSERT_LT(position, library->GetTypeInfoCount());
        documentation(static_cast<INT>(position), kind.name, kind.help);
    }

    // The events: ItemSel with one VARIANT, ItemDBClick with none.
    ComPtr<ITypeInfo> events;
    ASSERT_EQ(S_OK, library->GetTypeInfoOfGuid(DIID__DLumbrelEvents, events.Put()));
    FUNCDESC* function = nullptr;
    ASSERT_EQ(S_OK, events->GetFuncDesc(0, &function));
    EXPECT_EQ(control::kDispidItemSel, function->memid);
    ASSERT_EQ(1, function->cParams);
    EXPECT_EQ(VT_VARIANT, function->lprgelemdescParam[0].tdesc.vt);
    events->ReleaseFuncDesc(function);
    ASSERT_EQ(S_OK, events->GetFuncDesc(1, &function));
    EXPECT_EQ(control::kDispidItemDBClick, function->memid);
    EXPECT_EQ(0, function->cParams);
    events->ReleaseFuncDesc(function);
    BSTR name = nullptr;
    UINT named = 0;
    BSTR names[2] = {};
    ASSERT_EQ(S_OK, events->GetNames(control::kDispidItemSel, names, 2, &named));
    EXPECT_STREQ(L"ItemSel", names[0]);
    EXPECT_STREQ(L"itemInfo", names[1]);
    ::SysFreeString(names[0]);
    ::SysFreeString(names[1]);
    ASSERT_EQ(S_OK, events->GetNames(control::kDispidItemDBClick, &name, 1, &named));
    EXPECT_STREQ(L"ItemDBClick", name);
    ::SysFreeString(name);
}

TEST_F(DispatchTest, InvokeChecksItsCall) {
    DISPPARAMS none = {nullptr, nullptr, 0, 0};
    auto dispatch = Dispatch();
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, dispatch->Invoke(99, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                                      &none, nullptr, nullptr, nullptr));
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE, dispatch->Invoke(6, IID_IDispatch, LOCALE_USER_DEFAULT,
                                                        DISPATCH_METHOD, &none, nullptr, nullptr, nullptr));
    EXPECT_EQ(E_INVALIDARG, dispatch->Invoke(6, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, nullptr,
                                             nullptr, nullptr, nullptr));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, Call(control::kDispidSetItemPath, {Long(1)}));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, Call(control::kDispidRefreshControl, {Long(1)}));
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, Put(control::kDispidRefreshControl, Long(1)));

    // A type mismatch names the argument by its place in rgvarg.
    Bstr path(L"C:\\art");
    Bstr notANumber(L"many");
    UINT argError = 99;
    EXPECT_EQ(DISP_E_TYPEMISMATCH,
              Call(control::kDispidSetItemPath, {Text(path), Text(notANumber)}, nullptr, &argError));
    EXPECT_EQ(0u, argError);
    EXPECT_TRUE(control->calls.empty());
}

TEST_F(DispatchTest, NamedArgumentsArriveInTheirPlaces) {
    Bstr path(L"C:\\art\\cats");
    VARIANT arguments[2] = {Text(path), Long(5)};
    DISPID names[2] = {0, 1};  // szPath, lImageCount: in the order the caller chose
    DISPPARAMS params = {arguments, names, 2, 2};
    ASSERT_EQ(S_OK, Dispatch()->Invoke(control::kDispidSetItemPath, IID_NULL, LOCALE_USER_DEFAULT,
                                       DISPATCH_METHOD, &params, nullptr, nullptr, nullptr));
    EXPECT_EQ("C:\\art\\cats", control->itemPath);
    EXPECT_EQ(5, control->initialPosition);
}

TEST_F(DispatchTest, ArgumentsAreCoercedToTheirDeclaredTypes) {
    Bstr path(L"C:\\x");
    Bstr seven(L"7");
    ASSERT_EQ(S_OK, Call(control::kDispidSetItemPath, {Text(path), Text(seven)}));
    EXPECT_EQ(7, control->initialPosition);
    VARIANT real;
    real.vt = VT_R8;
    real.dblVal = 3.0;
    ASSERT_EQ(S_OK, Call(control::kDispidSetItemPath, {Text(path), real}));
    EXPECT_EQ(3, control->initialPosition);
    // By reference, as Visual Basic passes variables.
    LONG value = 9;
    VARIANT byRef;
    byRef.vt = VT_I4 | VT_BYREF;
    byRef.plVal = &value;
    ASSERT_EQ(S_OK, Call(control::kDispidSetItemPath, {Text(path), byRef}));
    EXPECT_EQ(9, control->initialPosition);
    ASSERT_EQ(S_OK, Call(control::kDispidDoubleClickFlag, {Long(1)}));
    EXPECT_TRUE(control->doubleClickFlag);
}

TEST_F(DispatchTest, AspectRatioIsTheCheckBox) {
    Activate();
    ASSERT_EQ(S_OK, Put(control::kDispidAspectRatio, Bool(true)));
    EXPECT_EQ(BST_CHECKED, Check(control::kAspectRatioBox));
    Variant value;
    ASSERT_EQ(S_OK, Get(control::kDispidAspectRatio, value.Get()));
    EXPECT_EQ(VT_BOOL, value.Type());
    EXPECT_EQ(VARIANT_TRUE, value.Get()->boolVal);
    ASSERT_EQ(S_OK, Put(control::kDispidAspectRatio, Bool(false)));
    EXPECT_EQ(BST_UNCHECKED, Check(control::kAspectRatioBox));
    value.Clear();
    ASSERT_EQ(S_OK, Get(control::kDispidAspectRatio, value.Get()));
    EXPECT_EQ(VARIANT_FALSE, value.Get()->boolVal);
    // A box that the user checked reads as checked.
    ::SendMessageA(control->Item(control::kAspectRatioBox), BM_SETCHECK, BST_CHECKED, 0);
    EXPECT_TRUE(control->GetAspectRatio());
    // Not part of the persistent state.
    EXPECT_EQ(S_FALSE, As<IPersistStreamInit>(IID_IPersistStreamInit)->IsDirty());
}

TEST_F(DispatchTest, PropertiesBeforeTheWindowExistReadFalseAndChangeNothing) {
    Variant value;
    ASSERT_EQ(S_OK, Get(control::kDispidAspectRatio, value.Get()));
    EXPECT_EQ(VARIANT_FALSE, value.Get()->boolVal);
    EXPECT_EQ(S_OK, Put(control::kDispidAspectRatio, Bool(true)));
    value.Clear();
    ASSERT_EQ(S_OK, Get(control::kDispidThumbNailState, value.Get()));
    EXPECT_EQ(VARIANT_FALSE, value.Get()->boolVal);
}

TEST_F(DispatchTest, ThumbNailStateSwitchesTheRadiosAndRedraws) {
    Activate();
    ASSERT_EQ(S_OK, Put(control::kDispidThumbNailState, Bool(false)));
    EXPECT_EQ(BST_CHECKED, Check(control::kSmallThumbnailsRadio));
    EXPECT_EQ(BST_UNCHECKED, Check(control::kLargeThumbnailsRadio));
    EXPECT_EQ((std::vector<std::string>{"CreateBrowserWindow", "SetLargeThumbnails(0)", "RedrawThumbnails"}),
              control->calls);
    EXPECT_EQ(0, control->largeThumbnails);
    EXPECT_EQ(S_OK, As<IPersistStreamInit>(IID_IPersistStreamInit)->IsDirty());

    control->ClearCalls();
    ASSERT_EQ(S_OK, Put(control::kDispidThumbNailState, Bool(true)));
    EXPECT_EQ(BST_CHECKED, Check(control::kLargeThumbnailsRadio));
    EXPECT_EQ(BST_UNCHECKED, Check(control::kSmallThumbnailsRadio));
    EXPECT_EQ((std::vector<std::string>{"SetLargeThumbnails(1)", "RedrawThumbnails"}), control->calls);
    EXPECT_EQ(1, control->largeThumbnails);
    Variant value;
    ASSERT_EQ(S_OK, Get(control::kDispidThumbNailState, value.Get()));
    EXPECT_EQ(VARIANT_TRUE, value.Get()->boolVal);

    // The state it already has still redraws.
    control->ClearCalls();
    ASSERT_EQ(S_OK, Put(control::kDispidThumbNailState, Bool(true)));
    EXPECT_EQ(1u, control->Count("RedrawThumbnails"));
}

TEST_F(DispatchTest, RefreshComboWithoutInsertChangesNothing) {
    Activate();
    control->ClearCalls();
    Bstr drive(L"E:");
    ASSERT_EQ(S_OK, Call(control::kDispidRefreshCombo, {Text(drive), Bool(false)}));
    EXPECT_TRUE(control->calls.empty());
}

TEST_F(DispatchTest, RefreshComboResetsTheComboAndNavigates) {
    Activate();
    control->ClearCalls();
    Bstr drive(L"E:");
    ASSERT_EQ(S_OK, Call(control::kDispidRefreshCombo, {Text(drive), Bool(true)}));
    EXPECT_EQ((std::vector<std::string>{"ResetDriveCombo(E:)", "NavigateToPath(E:,0)"}), control->calls);
}

TEST_F(DispatchTest, SetItemPathBeforeActivationOnlyStores) {
    Bstr path(L"C:\\art\\cats");
    ASSERT_EQ(S_OK, Call(control::kDispidSetItemPath, {Text(path), Long(3)}));
    // The dialog side keeps them for OnInitDialog; there is nothing to navigate.
    EXPECT_EQ("C:\\art\\cats", control->itemPath);
    EXPECT_EQ(3, control->initialPosition);
    EXPECT_TRUE(control->calls.empty());
}

TEST_F(DispatchTest, SetItemPathStoresThenNavigates) {
    Activate();
    control->ClearCalls();
    Bstr path(L"C:\\art\\cats");
    ASSERT_EQ(S_OK, Call(control::kDispidSetItemPath, {Text(path), Long(3)}));
    EXPECT_EQ((std::vector<std::string>{"NavigateToPath(C:\\art\\cats,3)"}), control->calls);
    EXPECT_EQ("C:\\art\\cats", control->itemPathAtNavigation) << "stored before the navigation";
    EXPECT_EQ("C:\\art\\cats", control->itemPath);
    EXPECT_EQ(3, control->initialPosition);
}

TEST_F(DispatchTest, DoubleClickFlagIsStored) {
    ASSERT_EQ(S_OK, Call(control::kDispidDoubleClickFlag, {Bool(true)}));
    EXPECT_TRUE(control->doubleClickFlag);
    ASSERT_EQ(S_OK, Call(control::kDispidDoubleClickFlag, {Bool(false)}));
    EXPECT_FALSE(control->doubleClickFlag);
}

TEST_F(DispatchTest, RefreshControlRebuildsAndEmptiesTheGallery) {
    Activate();
    const HWND gallery = control->Item(control::kGalleryId);
    SCROLLINFO info = {sizeof info, SIF_RANGE | SIF_PAGE | SIF_POS, 0, 500, 50, 120, 0};
    ::SetScrollInfo(gallery, SB_VERT, &info, TRUE);
    control->ClearCalls();
    ASSERT_EQ(S_OK, Call(control::kDispidRefreshControl, {}));
    EXPECT_EQ((std::vector<std::string>{"RebuildFromDriveCombo", "ClearGallery"}), control->calls);
    SCROLLINFO after = {sizeof after, SIF_RANGE | SIF_PAGE | SIF_POS, 0, 0, 0, 0, 0};
    ::GetScrollInfo(gallery, SB_VERT, &after);
    EXPECT_EQ(0, after.nMin);
    EXPECT_EQ(0, after.nMax);
    EXPECT_EQ(0, after.nPos);
    EXPECT_EQ(0u, after.nPage);
    // The empty bar is disabled, not hidden.
    EXPECT_TRUE(::GetWindowLongA(gallery, GWL_STYLE) & WS_VSCROLL);
    SCROLLBARINFO bar = {};
    bar.cbSize = sizeof bar;
    ASSERT_TRUE(::GetScrollBarInfo(gallery, OBJID_VSCROLL, &bar));
    EXPECT_FALSE(bar.rgstate[0] & STATE_SYSTEM_INVISIBLE);
    EXPECT_TRUE(bar.rgstate[0] & STATE_SYSTEM_UNAVAILABLE);
}

TEST_F(DispatchTest, RedrawBitmapsRedrawsTheThumbnails) {
    ASSERT_EQ(S_OK, Call(control::kDispidRedrawBitmaps, {}));
    EXPECT_EQ((std::vector<std::string>{"RedrawThumbnails"}), control->calls);
}

// Closes the modal About box from inside its loop, after checking its texts.
struct AboutBoxCheck {
    static AboutBoxCheck* current;
    bool seen = false;
    std::string caption;
    std::string title;
    std::string note;
    int icons = 0;
    int texts = 0;
    static BOOL CALLBACK CountStatics(HWND child, LPARAM) {
        char name[32] = {};
        ::GetClassNameA(child, name, sizeof name);
        if (::lstrcmpiA(name, "Static") != 0) return TRUE;
        if ((::GetWindowLongA(child, GWL_STYLE) & SS_TYPEMASK) == SS_ICON) {
            if (::SendMessageA(child, STM_GETICON, 0, 0) != 0) ++current->icons;
        } else {
            ++current->texts;
        }
        return TRUE;
    }
    static void CALLBACK OnTimer(HWND, UINT, UINT_PTR id, DWORD) {
        HWND dialog = ::GetActiveWindow();
        char text[128] = {};
        if (dialog != nullptr && ::GetDlgItem(dialog, 1001) != nullptr) {
            current->seen = true;
            ::GetWindowTextA(dialog, text, sizeof text);
            current->caption = text;
            ::GetDlgItemTextA(dialog, 1001, text, sizeof text);
            current->title = text;
            ::GetDlgItemTextA(dialog, 1002, text, sizeof text);
            current->note = text;
            ::EnumChildWindows(dialog, &CountStatics, 0);
            ::PostMessageA(dialog, WM_COMMAND, IDOK, 0);
        }
        ::KillTimer(nullptr, id);
    }
};
AboutBoxCheck* AboutBoxCheck::current = nullptr;

TEST_F(DispatchTest, AboutBoxShowsDialogTwo) {
    Activate();
    AboutBoxCheck check;
    AboutBoxCheck::current = &check;
    ::SetTimer(nullptr, 0, 100, &AboutBoxCheck::OnTimer);
    ASSERT_EQ(S_OK, Call(control::kDispidAboutBox, {}));
    EXPECT_TRUE(check.seen);
    EXPECT_EQ("About Lumbrel Control", check.caption);
    EXPECT_EQ("Lumbrel Control, Version 1.0 B1", check.title);
    // An icon and two lines of text.
    EXPECT_EQ(1, check.icons);
    EXPECT_EQ(2, check.texts);
    EXPECT_NE("", check.note);
}

// ---- Failures inside the members ---------------------------------------------------------

TEST_F(DispatchTest, AFailedNavigationIsNoAutomationError) {
    Activate();
    control->ClearCalls();
    control->failingCall = "NavigateToPath";
    Bstr path(L"C:\\art\\cats");
    EXPECT_EQ(S_OK, Call(control::kDispidSetItemPath, {Text(path), Long(3)}));
    EXPECT_EQ((std::vector<std::string>{"NavigateToPath(C:\\art\\cats,3)"}), control->calls);
    EXPECT_EQ("C:\\art\\cats", control->itemPath) << "the stored path stays";
    EXPECT_EQ(3, control->initialPosition);

    control->ClearCalls();
    Bstr drive(L"E:");
    EXPECT_EQ(S_OK, Call(control::kDispidRefreshCombo, {Text(drive), Bool(true)}));
    EXPECT_EQ((std::vector<std::string>{"ResetDriveCombo(E:)", "NavigateToPath(E:,0)"}), control->calls);

    control->ClearCalls();
    control->failingCall = "ResetDriveCombo";
    EXPECT_EQ(S_OK, Call(control::kDispidRefreshCombo, {Text(drive), Bool(true)}));
    EXPECT_EQ((std::vector<std::string>{"ResetDriveCombo(E:)"}), control->calls);
}

TEST_F(DispatchTest, NoMembersFailureReachesTheHost) {
    Activate();
    control->failWithBadAlloc = true;
    control->failingCall = "RebuildFromDriveCombo";
    EXPECT_EQ(S_OK, Call(control::kDispidRefreshControl, {}));
    control->failingCall = "RedrawThumbnails";
    EXPECT_EQ(S_OK, Call(control::kDispidRedrawBitmaps, {}));
    EXPECT_EQ(S_OK, Put(control::kDispidThumbNailState, Bool(false)));
    // The radios were set before the redraw failed.
    EXPECT_EQ(BST_CHECKED, Check(control::kSmallThumbnailsRadio));
    EXPECT_EQ(BST_UNCHECKED, Check(control::kLargeThumbnailsRadio));
    EXPECT_EQ(1u, control->Count("RebuildFromDriveCombo"));
    EXPECT_EQ(2u, control->Count("RedrawThumbnails"));
    // The control goes on answering.
    Variant value;
    ASSERT_EQ(S_OK, Get(control::kDispidThumbNailState, value.Get()));
    EXPECT_EQ(VT_BOOL, value.Type());
    EXPECT_EQ(VARIANT_FALSE, value.Get()->boolVal);
}

// ---- BSTR arguments -------------------------------------------------------------------

TEST_F(DispatchTest, AnEmptyPathIsTheEmptyText) {
    control->itemPath = "C:\\before";
    Bstr empty(L"");
    ASSERT_EQ(S_OK, Call(control::kDispidSetItemPath, {Text(empty), Long(0)}));
    EXPECT_EQ("", control->itemPath);
    control->itemPath = "C:\\before";
    VARIANT nullText;
    nullText.vt = VT_BSTR;
    nullText.bstrVal = nullptr;
    ASSERT_EQ(S_OK, Call(control::kDispidSetItemPath, {nullText, Long(0)}));
    EXPECT_EQ("", control->itemPath);
}

TEST_F(DispatchTest, AVeryLongPathArrivesWhole) {
    Activate();
    std::wstring longPath = L"C:\\";
    longPath.append(200000, L'x');
    Bstr path(longPath.c_str());
    ASSERT_EQ(S_OK, Call(control::kDispidSetItemPath, {Text(path), Long(1)}));
    ASSERT_EQ(longPath.size(), control->itemPath.size());
    EXPECT_EQ(std::string(200000, 'x'), control->itemPath.substr(3));
    Bstr drive(longPath.c_str());
    ASSERT_EQ(S_OK, Call(control::kDispidRefreshCombo, {Text(drive), Bool(true)}));
    EXPECT_EQ(1u, control->Count("ResetDriveCombo(C:\\xxx"));
}

TEST_F(DispatchTest, AnEmbeddedNulEndsThePath) {
    const wchar_t withNul[] = {L'a', L'b', L'\0', L'c', L'd'};
    Bstr path(withNul, 5);
    ASSERT_EQ(5u, path.Length());
    ASSERT_EQ(S_OK, Call(control::kDispidSetItemPath, {Text(path), Long(1)}));
    EXPECT_EQ("ab", control->itemPath);
    EXPECT_EQ("ab", CLumbrelCtrl::TextArgument(path.Get()));
}

TEST_F(DispatchTest, NonLatinCharactersConvertThroughTheAnsiCodePage) {
    const wchar_t text[] = L"C:\\\u00e9t\u00e9\\\u03a9\u6f22\\\U0001F600";
    Bstr path(text);
    ASSERT_EQ(S_OK, Call(control::kDispidSetItemPath, {Text(path), Long(1)}));
    const std::string& stored = control->itemPath;
    EXPECT_EQ(std::string::npos, stored.find('\0'));
    EXPECT_EQ("C:\\", stored.substr(0, 3));
    if (::GetACP() == 1252) {
        // Windows-1252 has the accented e; Greek, Han and the emoji become
        // the code page's nearest or default characters, one byte each (two
        // at most for the surrogate pair).
        EXPECT_EQ("C:\\\xe9t\xe9\\", stored.substr(0, 7));
        EXPECT_EQ('\\', stored[9]);
        EXPECT_GE(stored.size(), 11u);
        EXPECT_LE(stored.size(), 12u);
    }
    // Whatever the code page: what comes back converts to what went in or
    // to the code page's default character, never to more or less text.
    const std::wstring back = framework::ole::AnsiToWide(stored);
    EXPECT_EQ(L"C:\\", back.substr(0, 3));
}

}  // namespace
}  // namespace controltest
